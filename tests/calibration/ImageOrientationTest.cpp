#include "calibration/ImageOrientation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

#include "tests/support/Matchers.h"
#include "tests/support/RandomInput.h"
#include "tests/support/TwoCameras.h"

namespace Quorvane::CameraCalibration {

using namespace TestSupport;

namespace {

const cv::Mat& Source() {
    static const cv::Mat source = RandomInput(5).Image({7, 4}, 3);
    return source;
}

/// The orientation pixel by pixel, from what it means.
cv::Mat Turned(const cv::Mat& source, int rotateCode, bool horizontal, bool vertical) {
    const bool quarter = rotateCode == 0 || rotateCode == 2;
    cv::Mat turned(quarter ? cv::Size(source.rows, source.cols) : source.size(), source.type());
    for (int row = 0; row < turned.rows; ++row) {
        for (int column = 0; column < turned.cols; ++column) {
            const int r = vertical ? turned.rows - 1 - row : row;
            const int c = horizontal ? turned.cols - 1 - column : column;
            cv::Point from(c, r);
            if (rotateCode == 0) from = {r, source.rows - 1 - c};
            if (rotateCode == 1) from = {source.cols - 1 - c, source.rows - 1 - r};
            if (rotateCode == 2) from = {source.cols - 1 - r, c};
            turned.at<cv::Vec3b>(row, column) = source.at<cv::Vec3b>(from);
        }
    }
    return turned;
}

TEST(ImageDirFlags, HoldsWhatItsConstructorGot) {
    const ImageDirFlags flags(2, true, false);
    EXPECT_EQ(flags.rotateCode, 2);
    EXPECT_EQ(flags.flipHorizontal, 1u);
    EXPECT_EQ(flags.flipVertical, 0u);
    const ImageDirFlags others(0, false, true);
    EXPECT_EQ(others.rotateCode, 0);
    EXPECT_EQ(others.flipHorizontal, 0u);
    EXPECT_EQ(others.flipVertical, 1u);
}

TEST(ImageDirFlags, IsOneWordOfBits) {
    EXPECT_EQ(sizeof(ImageDirFlags), 4u);
    ImageDirFlags flags(0, false, false);
    flags.reservedBits = (1u << 27) - 1u;
    EXPECT_EQ(flags.reservedBits, (1u << 27) - 1u);
    EXPECT_EQ(flags.rotateCode, 0);
    EXPECT_FALSE(std::is_default_constructible_v<ImageDirFlags>);
}

TEST(ImageDirFlags, ItsFieldsLieInOrderFromTheLowestBit) {
    ImageDirFlags flags(2, false, true);
    flags.reservedBits = 5u;
    std::uint32_t word = 0;
    std::memcpy(&word, &flags, sizeof word);
    EXPECT_EQ(word, 2u | 1u << 4 | 5u << 5);
    flags.flipHorizontal = 1u;
    std::memcpy(&word, &flags, sizeof word);
    EXPECT_EQ(word, 2u | 1u << 3 | 1u << 4 | 5u << 5);
}

TEST(ImageDirFlags, TheRotationWrapsInThreeBitsWithASign) {
    EXPECT_EQ(ImageDirFlags(3, false, false).rotateCode, 3);
    EXPECT_EQ(ImageDirFlags(4, false, false).rotateCode, -4);
    EXPECT_EQ(ImageDirFlags(7, false, false).rotateCode, -1);
    EXPECT_EQ(ImageDirFlags(8, false, false).rotateCode, 0);
    EXPECT_EQ(ImageDirFlags(-1, false, false).rotateCode, -1);
    EXPECT_EQ(ImageDirFlags(-7, false, false).rotateCode, 1);
}

TEST(ImageDirFlags, AssignmentsCopyAllFieldsAlsoTheReservedOnes) {
    ImageDirFlags source(2, true, true);
    source.reservedBits = 0x5a5a5a5u;
    ImageDirFlags copied(0, false, false);
    copied = source;
    ImageDirFlags moved(1, false, false);
    moved = std::move(source);
    const ImageDirFlags constructed(copied);
    for (const ImageDirFlags& flags : {copied, moved, constructed}) {
        EXPECT_EQ(flags.rotateCode, 2);
        EXPECT_EQ(flags.flipHorizontal, 1u);
        EXPECT_EQ(flags.flipVertical, 1u);
        EXPECT_EQ(flags.reservedBits, 0x5a5a5a5u);
    }
}

TEST(OrientImage, RotatesThenFlipsInEveryCombination) {
    for (int rotate = -1; rotate <= 2; ++rotate) {
        for (const bool horizontal : {false, true}) {
            for (const bool vertical : {false, true}) {
                SCOPED_TRACE(testing::Message() << rotate << " " << horizontal << " " << vertical);
                const cv::Mat oriented = OrientImage(Source(), ImageDirFlags(rotate, horizontal, vertical));
                EXPECT_THAT(oriented, EqualsMat(Turned(Source(), rotate, horizontal, vertical)));
                EXPECT_THAT(OrientImage(Mounted(Source(), rotate, horizontal, vertical),
                                        ImageDirFlags(rotate, horizontal, vertical)),
                            EqualsMat(Source()));
            }
        }
    }
}

TEST(OrientImage, OtherCodesDoNotRotate) {
    for (const int code : {3, 4, 5, 6, 7, -1, -2, -3, -4}) {
        EXPECT_THAT(OrientImage(Source(), ImageDirFlags(code, false, false)), EqualsMat(Source())) << code;
    }
}

TEST(OrientImage, HalfATurnAndBothFlipsGiveBackTheSource) {
    EXPECT_THAT(OrientImage(Source(), ImageDirFlags(1, true, true)), EqualsMat(Source()));
}

TEST(OrientImage, RefusesAnArrayOfThreeDimensionsInEveryDirection) {
    const cv::Mat array({4, 5, 6}, CV_8UC3, cv::Scalar::all(9));
    for (int rotate = -1; rotate <= 2; ++rotate) {
        for (const bool flip : {false, true}) {
            EXPECT_THROW(OrientImage(array, ImageDirFlags(rotate, flip, flip)), cv::Exception) << rotate << flip;
        }
    }
}

TEST(OrientImage, NeverSharesPixelsWithTheSource) {
    const cv::Mat source = Source().clone();
    cv::Mat oriented = OrientImage(source, ImageDirFlags(-1, false, false));
    EXPECT_NE(oriented.data, source.data);
    oriented.setTo(0);
    EXPECT_THAT(source, EqualsMat(Source()));
}

}  // namespace
}  // namespace Quorvane::CameraCalibration
