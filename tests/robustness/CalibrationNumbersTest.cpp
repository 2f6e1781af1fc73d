// The calibration with numbers that hosts hand in by mistake.

#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/calib3d.hpp>
#include <opencv2/features2d.hpp>

#include "calibration/CameraCalibration.h"
#include "calibration/CameraCalibrator.h"
#include "calibration/LastError.h"
#include "tests/robustness/NumberMatrix.h"
#include "tests/support/ScratchFolder.h"

namespace Quorvane::Robustness {
namespace {

using namespace CameraCalibration;
using TestSupport::ScratchFolder;

CameraCalibrator TwoToOne() {
    std::vector<cv::Point2f> image;
    std::vector<cv::Point2f> machine;
    for (int i = 0; i < 9; ++i) {
        image.emplace_back(static_cast<float>(i % 3 * 10), static_cast<float>(i / 3 * 10));
        machine.push_back(image.back() * 2.0f);
    }
    CameraCalibrator calibrator;
    double error = 0.0;
    EXPECT_TRUE(calibrator.Calibrate(image, machine, 31, 23, error));
    return calibrator;
}

std::string Told(bool success, const char* function) {
    if (success) return "true";
    const std::string text = GetLastError();
    if (text.rfind("[" + QualifiedName(function) + "]", 0) == 0) return "false: an exception's text";
    return "false: " + text;
}

std::string NumberOr(double value) { return value == -1.0 ? "-1" : std::isfinite(value) ? "a distance" : "no number"; }

TEST(NumberMatrix, CalibratorNumbers) {
    CameraCalibrator calibrator = TwoToOne();
    TryWithAllNumbers({
        {"ImageToMachine_Distance, distance",
         [&](double v) {
             return NumberOr(calibrator.ImageToMachine_Distance(v, {5.0f, 5.0f}, CameraCalibrator::Horizontal));
         },
         [](double v) { return std::isfinite(static_cast<float>(v)) ? "a distance" : "no number"; }},
        {"MachineToImage_Distance, centre",
         [&](double v) {
             const cv::Point2f center(static_cast<float>(v), 5.0f);
             return NumberOr(calibrator.MachineToImage_Distance(2.0, center, CameraCalibrator::Vertical));
         },
         [](double v) { return std::isfinite(static_cast<float>(v)) ? "a distance" : "no number"; }},
        {"GenerateCailbratePointGrid, width",
         [&](double v) { return std::to_string(calibrator.GenerateCailbratePointGrid(v, 10.0, 3).size()); },
         [](double) { return "9"; }},
        {"UnDistortedImage, focal scale",
         [](double v) {
             cv::Mat K = (cv::Mat_<double>(3, 3) << 40, 0, 15, 0, 40, 11, 0, 0, 1);
             cv::Mat D = (cv::Mat_<double>(4, 1) << 0.1, 0.0, 0.0, 0.0);
             cv::Mat straight;
             return Told(UnDistortedImage(cv::Mat(23, 31, CV_8UC1, cv::Scalar(7)), K, D, v, 1.0, straight),
                         "UnDistortedImage");
         },
         [](double) { return "true"; }},
        {"UnDistortedImage, coefficient",
         [](double v) {
             cv::Mat K = (cv::Mat_<double>(3, 3) << 40, 0, 15, 0, 40, 11, 0, 0, 1);
             cv::Mat D = (cv::Mat_<double>(4, 1) << v, 0.0, -v, 0.0);
             cv::Mat straight;
             return Told(UnDistortedImage(cv::Mat(23, 31, CV_8UC1, cv::Scalar(7)), K, D, 1.0, 1.0, straight),
                         "UnDistortedImage");
         },
         [](double) { return "true"; }},
    });
}

TEST(NumberMatrix, CalibratorIntegers) {
    CameraCalibrator calibrator = TwoToOne();
    CameraCalibrator uncalibrated;
    const cv::Mat picture(23, 31, CV_8UC1, cv::Scalar(7));
    TryWithAllIntegers({
        {"ImageToMachine_Distance, mode",
         [&](int v) {
             const auto mode = static_cast<CameraCalibrator::DistanceMode>(v);
             return NumberOr(calibrator.ImageToMachine_Distance(2.0, {5.0f, 5.0f}, mode));
         },
         [](int v) { return v >= 0 && v <= 2 ? "a distance" : "-1"; }},
        {"MachineToImage_Distance, not calibrated",
         [&](int v) {
             const auto mode = static_cast<CameraCalibrator::DistanceMode>(v);
             return NumberOr(uncalibrated.MachineToImage_Distance(2.0, {5.0f, 5.0f}, mode));
         },
         [](int) { return "-1"; }},
        {"WarpPerspectiveImage, expansion",
         [&](int v) {
             const cv::Size size = calibrator.WarpPerspectiveImage(picture, v).size();
             return std::to_string(size.width) + " x " + std::to_string(size.height);
         },
         [](int v) -> std::string {
             // The picture is 62 units wide and stays 31 to 23. A size that is none OpenCV takes for the picture's own.
             if (v == 0 || std::abs(static_cast<double>(v)) > 1e6) return "31 x 23";
             const auto side = static_cast<float>(62 * std::abs(v));
             return std::to_string(static_cast<int>(side)) + " x " +
                    std::to_string(static_cast<int>(side / (31.0f / 23.0f)));
         }},
        {"WarpPerspectivePoint, expansion",
         [&](int v) {
             const cv::Point2f point = calibrator.WarpPerspectivePoint({0.0f, 0.0f}, v);
             return std::string(point == cv::Point2f(-1.0f, -1.0f) ? "none" : "a point");
         },
         [](int) { return "a point"; }},
        {"GenerateCailbratePointGrid, points per side",
         [&](int v) { return std::to_string(calibrator.GenerateCailbratePointGrid(10.0, 10.0, v).size()); },
         [](int v) -> std::string {
             if (v < 3 || v % 2 == 0) return "0";
             return v == 7 ? "49" : "std::length_error";  // more than any list holds
         }},
    });
}

TEST(NumberMatrix, Boards) {
    const ScratchFolder folder;
    const auto charuco = [](int squaresX, float square) {
        cv::Mat picture(40, 60, CV_8UC3, cv::Scalar(9, 80, 200));
        std::vector<cv::Point2f> imagePoints;
        std::vector<cv::Point3f> objectPoints;
        std::vector<int> ids;
        double quality = 0.0;
        cv::Mat drawn;
        const bool found = FindChArUcoBoard(picture, squaresX, 7, square, 0.4f, false, imagePoints, objectPoints, ids,
                                            quality, drawn, true);
        return quality == -1.0 ? Told(found, "FindChArUcoBoard") : "a wrong quality";
    };
    const auto print = [&](int squaresX, float square, int dpi) {
        auto dictionary = cv::aruco::getPredefinedDictionary(cv::aruco::DICT_4X4_50);
        cv::aruco::CharucoBoard board({2, 2}, 2.0f, 1.0f, dictionary);
        const cv::Mat image =
            GenerateChArUcoBoard(folder.File("board.png"), squaresX, 3, square, 0.75f * square, dictionary, board, dpi);
        return std::string(image.empty() ? "nothing" : "a board");
    };
    const std::string reshoot = "false: " + ReshootText("FindChArUcoBoard");
    const char* const refused = "false: an exception's text";
    TryWithAllIntegers({
        {"FindChArUcoBoard, squares", [&](int v) { return charuco(v, 1.0f); },
         [&](int v) { return v > 1 ? reshoot : refused; }},
        {"GenerateChArUcoBoard, squares", [&](int v) { return print(v, 20.0f, 300); },
         // More markers than there are, too, are refused.
         [](int v) { return v > 1 && v < 1000 ? "a board" : "cv::Exception"; }},
        {"GenerateChArUcoBoard, dots per inch", [&](int v) { return print(3, 20.0f, v); },
         // At 1, 2 and 7 dots per inch the squares have too few dots for a marker.
         [](int) { return "cv::Exception"; }},
        {"FindCalibrationBoard, circles",
         [](int v) {
             std::vector<cv::Point2f> centers;
             double quality = 0.0;
             const bool found = FindCalibrationBoard(cv::Mat(30, 40, CV_8UC1, cv::Scalar(90)), {v, 3}, centers, quality,
                                                     cv::CALIB_CB_SYMMETRIC_GRID, cv::SimpleBlobDetector::create());
             return quality == -1.0 ? Told(found, "FindCalibrationBoard") : "a wrong quality";
         },
         [&](int v) { return v >= 0 ? "false: " + ReshootText("FindCalibrationBoard") : refused; }},
    });
    TryWithAllNumbers({
        {"FindChArUcoBoard, square length", [&](double v) { return charuco(5, static_cast<float>(v)); },
         [&](double v) { return static_cast<float>(v) > 0.4f ? reshoot : refused; }},
        {"GenerateChArUcoBoard, square length", [&](double v) { return print(5, static_cast<float>(v), 300); },
         // Squares of less than a millimetre have too few dots for a marker.
         [](double v) { return v == 1.0 || v == 3.0 ? "a board" : "cv::Exception"; }},
    });
}

}  // namespace
}  // namespace Quorvane::Robustness
