#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/objdetect/aruco_dictionary.hpp>

#include "calibration/CameraCalibration.h"
#include "calibration/LastError.h"
#include "tests/support/Matchers.h"
#include "tests/support/ScratchFolder.h"

namespace Quorvane::CameraCalibration {

using testing::StartsWith;
using namespace TestSupport;

namespace {

const char* const untouched = "left from before";
const cv::Size squares(7, 5);
constexpr float squareLength = 20.0f;  // millimetres
constexpr float markerLength = 15.0f;

/// A board drawn to a file, and what the caller gets.
struct Drawn {
    cv::aruco::Dictionary dictionary;
    cv::aruco::CharucoBoard board{cv::Size(2, 2), 2.0f, 1.0f,
                                  cv::aruco::getPredefinedDictionary(cv::aruco::DICT_4X4_50)};
    cv::Mat image;

    void Draw(const std::string& path, cv::Size boardSquares, float square, float marker, int dpi) {
        image =
            GenerateChArUcoBoard(path, boardSquares.width, boardSquares.height, square, marker, dictionary, board, dpi);
    }
};

TEST(GenerateChArUcoBoard, DrawsTheBoardAtItsTrueSizeTruncated) {
    const ScratchFolder folder;
    Drawn drawn;
    drawn.Draw(folder.File("board.png"), {10, 3}, 20.0f, 15.0f, 300);
    EXPECT_EQ(drawn.image.size(), cv::Size(2362, 708));  // 2362.2 and 708.66
    EXPECT_EQ(drawn.image.type(), CV_8UC1);
    cv::Mat expected;
    drawn.board.generateImage(drawn.image.size(), expected, 0, 1);
    EXPECT_THAT(drawn.image, EqualsMat(expected));
    EXPECT_THAT(cv::imread(folder.File("board.png"), cv::IMREAD_UNCHANGED), EqualsMat(expected));
}

TEST(GenerateChArUcoBoard, FillsTheDictionaryAndTheBoardInMetres) {
    const ScratchFolder folder;
    Drawn drawn;
    drawn.Draw(folder.File("board.png"), {7, 5}, 12.5f, 9.0f, 72);
    EXPECT_EQ(drawn.board.getChessboardSize(), cv::Size(7, 5));
    EXPECT_EQ(drawn.board.getSquareLength(), 12.5f / 1000);
    EXPECT_EQ(drawn.board.getMarkerLength(), 9.0f / 1000);
    EXPECT_EQ(drawn.dictionary.markerSize, 7);
    EXPECT_EQ(drawn.dictionary.bytesList.rows, 250);
    EXPECT_THAT(drawn.dictionary.bytesList,
                EqualsMat(cv::aruco::getPredefinedDictionary(cv::aruco::DICT_7X7_250).bytesList));
}

/// The value of a rational tag of a little-endian TIFF file's first directory.
double TiffRational(const std::string& file, std::uint16_t wanted) {
    const auto at = [&](std::size_t offset, auto value) {
        std::memcpy(&value, file.data() + offset, sizeof value);
        return value;
    };
    const std::size_t directory = at(4, std::uint32_t());
    const int entries = at(directory, std::uint16_t());
    for (int i = 0; i < entries; ++i) {
        const std::size_t entry = directory + 2 + static_cast<std::size_t>(i) * 12;
        if (at(entry, std::uint16_t()) != wanted) continue;
        const std::size_t value = at(entry + 8, std::uint32_t());
        return static_cast<double>(at(value, std::uint32_t())) / at(value + 4, std::uint32_t());
    }
    return std::numeric_limits<double>::quiet_NaN();
}

TEST(GenerateChArUcoBoard, ATiffFileCarriesTheResolution) {
    constexpr std::uint16_t xResolution = 282;
    constexpr std::uint16_t yResolution = 283;
    const ScratchFolder folder;
    Drawn drawn;
    drawn.Draw(folder.File("board.tif"), {5, 4}, 10.0f, 7.5f, 254);
    EXPECT_EQ(drawn.image.size(), cv::Size(500, 400));
    const std::string file = folder.Read("board.tif");
    ASSERT_THAT(file, StartsWith("II"));
    EXPECT_EQ(TiffRational(file, xResolution), 254.0);
    EXPECT_EQ(TiffRational(file, yResolution), 254.0);
}

TEST(GenerateChArUcoBoard, DoesNotTellWhetherTheFileCouldBeWritten) {
    const ScratchFolder folder;
    Drawn drawn;
    SetLastError(untouched);
    drawn.Draw(folder.File("no/such/folder/board.png"), squares, squareLength, markerLength, 72);
    EXPECT_FALSE(drawn.image.empty());
    EXPECT_EQ(GetLastError(), untouched);
}

TEST(GenerateChArUcoBoard, LetsExceptionsPass) {
    const ScratchFolder folder;
    const std::string path = folder.File("board.png");
    Drawn drawn;
    SetLastError(untouched);
    EXPECT_THROW(drawn.Draw(path, {1, 5}, 20.0f, 15.0f, 72), cv::Exception);
    EXPECT_THROW(drawn.Draw(path, {7, 5}, 15.0f, 20.0f, 72), cv::Exception);
    EXPECT_THROW(drawn.Draw(path, {7, 5}, 20.0f, 15.0f, 0), cv::Exception);
    EXPECT_THROW(drawn.Draw(path, {7, 5}, 20.0f, 15.0f, -300), cv::Exception);
    EXPECT_THROW(drawn.Draw(path, {7, 5}, 3e9f, 1e9f, 300), cv::Exception) << "a size that no int holds";
    drawn.dictionary = cv::aruco::Dictionary();
    EXPECT_THROW(drawn.Draw(path, {50000, 50000}, 20.0f, 15.0f, 72), cv::Exception);
    EXPECT_EQ(drawn.dictionary.markerSize, 7) << "filled before the board is laid";
    EXPECT_THROW(drawn.Draw(folder.File("board.nonsense"), squares, squareLength, markerLength, 72), cv::Exception);
    EXPECT_EQ(GetLastError(), untouched);
}

}  // namespace
}  // namespace Quorvane::CameraCalibration
