// The picture of a camera over the machine's bed mapped to machine coordinates, and the bed from above.

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "examples/demo/AlgorithmRun.h"
#include "examples/demo/BedScene.h"
#include "examples/demo/Sections.h"
#include "tests/support/Boards.h"
#include "tests/support/Pictures.h"
#include "tests/support/RandomInput.h"
#include "tests/support/Scene.h"

namespace Demo {

namespace {

using Quorvane::CameraCalibration::CameraCalibrator;
using namespace Quorvane::TestSupport;

const cv::Scalar gridColour(0, 200, 0);
const cv::Scalar axisColour(0, 0, 255);

/// The lines of the machine's grid over the top view; the axes in red.
cv::Mat WithMachineGrid(CameraCalibrator& calibrator, const cv::Mat& view, int expansion, const cv::Rect2f& area,
                        float step) {
    cv::Mat drawn;
    if (view.channels() == 1) {
        cv::cvtColor(view, drawn, cv::COLOR_GRAY2BGR);
    } else {
        drawn = view.clone();
    }
    const auto line = [&](const cv::Point2f& from, const cv::Point2f& to, bool axis) {
        cv::line(drawn, calibrator.WarpPerspectivePoint(calibrator.MachineToImage(from), expansion),
                 calibrator.WarpPerspectivePoint(calibrator.MachineToImage(to), expansion),
                 axis ? axisColour : gridColour, axis ? 2 : 1, cv::LINE_AA);
    };
    for (float x = area.x; x <= area.br().x; x += step) line({x, area.y}, {x, area.br().y}, x == 0.0f);
    for (float y = area.y; y <= area.br().y; y += step) line({area.x, y}, {area.br().x, y}, y == 0.0f);
    return drawn;
}

std::string Text(const cv::Point2f& point) { return "(" + Number(point.x, 2) + ", " + Number(point.y, 2) + ")"; }

void ShowBed(Report& report) {
    constexpr double width = 200.0;
    constexpr double height = 150.0;
    constexpr int pointsPerSide = 5;
    constexpr int expansion = 3;
    CameraCalibrator calibrator;
    const std::vector<cv::Point2f> machine = calibrator.GenerateCailbratePointGrid(width, height, pointsPerSide);
    const CameraModel camera = PinholeCamera({960, 720});
    const Board bed = BedWithAPhotograph(machine);
    const Pose pose = PoseOf({0.0, 0.0}, {4.0, -2.0, 330.0}, -24.0, 9.0, -4.0);
    const cv::Mat shot = Scene(Photograph(camera, bed, pose)).Blur(0.6).Noise(2.0, 5).Gray();

    // What a host would find in the picture: each dot to a fifth of a pixel, and one that it took for another.
    RandomInput random(8);
    std::vector<cv::Point2f> image;
    for (const cv::Point2d& point : TruePoints(camera, bed, pose)) {
        image.emplace_back(point + cv::Point2d(random.Normal(), random.Normal()) * 0.2);
    }
    image[7] += cv::Point2f(60.0f, -12.0f);

    double maxError = 0.0;
    if (!calibrator.Calibrate(image, machine, shot.cols, shot.rows, maxError)) {
        throw std::runtime_error("the bed cannot be calibrated");
    }
    cv::Mat top;
    const double time = MillisecondsOf([&] { top = calibrator.WarpPerspectiveImage(shot, expansion); });
    report.Heading("The bed of a machine, 25 dots burned at known places");
    report.Pictures({{shot, "What the camera sees"},
                     {WithMachineGrid(calibrator, top, expansion, {-100.0f, -75.0f, 200.0f, 150.0f}, 25.0f),
                      "From above, with the machine's grid of 25 mm drawn over it, the axes in red"}});
    report.Table(
        "Outcome",
        {{"largest error of the dots used", Number(maxError, 3) + " mm (one dot of 25 is wrong and left out)"},
         {"machine coordinates of the pixel (480, 360)", Text(calibrator.ImageToMachine({480.0f, 360.0f}))},
         {"pixel of the machine's (50, 25)", Text(calibrator.MachineToImage({50.0f, 25.0f}))},
         {"100 pixels about the pixel (480, 600), along x",
          Number(calibrator.ImageToMachine_Distance(100.0, {480.0f, 600.0f}, CameraCalibrator::Horizontal), 3) + " mm"},
         {"the same about (480, 120)",
          Number(calibrator.ImageToMachine_Distance(100.0, {480.0f, 120.0f}, CameraCalibrator::Horizontal), 3) + " mm"},
         {"time of the top view", Milliseconds(time)}});
}

void ShowChessboard(Report& report) {
    constexpr int expansion = 50;
    const cv::Size inner(9, 6);
    const cv::Mat photograph = LoadGrayPicture("chessboard.png");
    std::vector<cv::Point2f> corners;
    if (!cv::findChessboardCorners(photograph, inner, corners)) throw std::runtime_error("no chessboard");
    cv::cornerSubPix(photograph, corners, {5, 5}, {-1, -1},
                     cv::TermCriteria(cv::TermCriteria::COUNT + cv::TermCriteria::EPS, 30, 1e-3));
    std::vector<cv::Point2f> inSquares;
    for (int row = 0; row < inner.height; ++row) {
        for (int column = 0; column < inner.width; ++column) {
            inSquares.emplace_back(static_cast<float>(column), static_cast<float>(row));
        }
    }
    CameraCalibrator calibrator;
    double maxError = 0.0;
    if (!calibrator.Calibrate(corners, inSquares, photograph.cols, photograph.rows, maxError)) {
        throw std::runtime_error("the chessboard cannot be calibrated");
    }
    const cv::Mat top = calibrator.WarpPerspectiveImage(photograph, expansion);
    report.Heading("A photographed chessboard as the machine, one square a unit");
    report.Pictures({{photograph, "The photograph"},
                     {WithMachineGrid(calibrator, top, expansion, {0.0f, 0.0f, 8.0f, 5.0f}, 1.0f),
                      "From above, with the grid drawn over the squares"}});
    report.Table("Outcome", {{"largest error", Number(maxError, 3) + " squares (the lens bends the lines a little)"}});
}

}  // namespace

void CameraMapSection(Report& report) {
    report.Section("Camera and machine",
                   "A CameraCalibrator maps pixels to machine coordinates and back. WarpPerspectiveImage shows the bed "
                   "from above at a whole number of pixels per machine unit.");
    ShowBed(report);
    ShowChessboard(report);
}

}  // namespace Demo
