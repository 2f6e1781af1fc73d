// A ChArUco board drawn to print, and shots of it found and rated.

#include <filesystem>
#include <opencv2/calib3d.hpp>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "examples/demo/AlgorithmRun.h"
#include "examples/demo/Sections.h"
#include "tests/support/Boards.h"
#include "tests/support/Pictures.h"
#include "tests/support/Scene.h"

namespace Demo {

namespace {

namespace Calibration = Quorvane::CameraCalibration;
using namespace Quorvane::TestSupport;

const cv::Size squares(7, 5);
constexpr float squareLength = 20.0f;  // millimetres
constexpr float markerLength = 15.0f;  // millimetres

void ShowPrint(Report& report) {
    constexpr int dpi = 100;
    const std::string path = (std::filesystem::temp_directory_path() / "quorvane-demo-board.tif").string();
    // Any board will do to begin with; the call replaces both.
    cv::aruco::Dictionary dictionary = cv::aruco::getPredefinedDictionary(cv::aruco::DICT_4X4_50);
    cv::aruco::CharucoBoard board(squares, squareLength, markerLength, dictionary);
    const cv::Mat print = Calibration::GenerateChArUcoBoard(path, squares.width, squares.height, squareLength,
                                                            markerLength, dictionary, board, dpi);
    std::filesystem::remove(path);
    report.Heading("GenerateChArUcoBoard");
    report.Pictures({{print, "7 by 5 squares of 20 mm, drawn at 100 dots per inch"}});
    report.Table("The board", {{"picture", std::to_string(print.cols) + " x " + std::to_string(print.rows) + " pixels"},
                               {"square, metres", Number(static_cast<double>(board.getSquareLength()), 4)},
                               {"marker, metres", Number(static_cast<double>(board.getMarkerLength()), 4)},
                               {"markers in the dictionary", std::to_string(dictionary.bytesList.rows)}});
}

struct Found {
    Picture picture;
    std::vector<std::string> line;
};

Found FindBoard(const std::string& name, const cv::Mat& shot) {
    std::vector<cv::Point2f> imagePoints;
    std::vector<cv::Point3f> objectPoints;
    std::vector<int> ids;
    double quality = 0.0;
    cv::Mat shown;
    bool success = false;
    const double time = MillisecondsOf([&] {
        success = Calibration::FindChArUcoBoard(shot, squares.width, squares.height, squareLength, markerLength, false,
                                                imagePoints, objectPoints, ids, quality, shown, true);
    });
    return {{success ? shown : shot, name},
            {name, std::to_string(imagePoints.size() / 4), std::to_string(ids.size()), Number(quality, 3),
             Milliseconds(time), success ? "" : Calibration::GetLastError()}};
}

void ShowShots(Report& report) {
    const CameraModel camera = PinholeCamera();
    const Board board = CharucoBoardPrint(squares, squareLength);
    const Pose pose = PoseOf(board.centre, {0.0, -5.0, 190.0}, 20.0, -18.0, 5.0);
    const cv::Mat clean = Photograph(camera, board, pose);
    const Board half = Covered(board, {0.0, 0.0}, {70.0, 100.0});
    const std::pair<std::string, cv::Mat> shots[] = {
        {"A good shot", Scene(clean).Blur(0.5).Noise(2.0, 1).Colour()},
        {"Out of focus, noisy, light down to 40 %", Scene(clean).Blur(1.3).Light(1.0, 0.4).Noise(5.0, 2).Colour()},
        {"A photograph of a board with markers of another set", LoadColourPicture("charuco.jpg")},
        {"Half of the board covered", Scene(Photograph(camera, half, pose)).Blur(0.5).Colour()},
    };
    std::vector<Picture> pictures;
    std::vector<std::vector<std::string>> lines{{"shot", "markers", "corners", "rating, pixels", "time", "last error"}};
    for (const auto& [name, shot] : shots) {
        const Found found = FindBoard(name, shot);
        pictures.push_back(found.picture);
        lines.push_back(found.line);
    }
    report.Heading("FindChArUcoBoard: the corners drawn, and the rating of each shot");
    report.Pictures(pictures);
    report.Grid("The shots", lines);
}

void ShowCircleShots(Report& report) {
    const CameraModel camera = FisheyeCamera();
    const Board board = CircleBoard({7, 5});
    std::vector<Picture> pictures;
    std::vector<std::vector<std::string>> lines{{"shot", "circles", "rating, pixels", "time", "last error"}};
    const cv::Mat clean = Photograph(camera, board, PosesOverThePicture(camera, board, 7.0)[4]);
    const std::pair<std::string, cv::Mat> shots[] = {{"A good shot", clean},
                                                     {"Noisy", Scene(clean).Blur(0.8).Noise(3.0, 3).Gray()},
                                                     {"Too dark", Scene(clean).Light(0.17, 0.17).Gray()}};
    for (const auto& [name, shot] : shots) {
        std::vector<cv::Point2f> centers;
        double quality = 0.0;
        bool success = false;
        cv::setRNGSeed(1);  // OpenCV's search for the grid draws at random
        const double time = MillisecondsOf([&] {
            success = Calibration::FindCalibrationBoard(shot, {7, 5}, centers, quality, cv::CALIB_CB_SYMMETRIC_GRID,
                                                        cv::SimpleBlobDetector::create());
        });
        cv::Mat shown;
        cv::cvtColor(shot, shown, cv::COLOR_GRAY2BGR);
        for (const cv::Point2f& center : centers) cv::drawMarker(shown, center, {0, 0, 255}, cv::MARKER_CROSS, 10, 2);
        pictures.push_back({shown, name});
        lines.push_back({name, std::to_string(centers.size()), Number(quality, 3), Milliseconds(time),
                         success ? "" : Calibration::GetLastError()});
    }
    report.Heading("FindCalibrationBoard: circle boards under a fisheye");
    report.Pictures(pictures);
    report.Grid("The shots", lines);
}

}  // namespace

void CameraBoardsSection(Report& report) {
    report.Section("Calibration boards",
                   "A board is drawn to print, and shots of boards are found and rated: the rating is the reprojection "
                   "error of a calibration made from the one shot, and tells the operator whether to shoot again.");
    ShowPrint(report);
    ShowShots(report);
    ShowCircleShots(report);
}

}  // namespace Demo
