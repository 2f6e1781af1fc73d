// Two cameras that are mounted differently, joined into one picture.

#include <algorithm>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "examples/demo/AlgorithmRun.h"
#include "examples/demo/Sections.h"
#include "tests/support/Pictures.h"
#include "tests/support/TwoCameras.h"

namespace Demo {

namespace {

namespace Calibration = Quorvane::CameraCalibration;
using Calibration::ImageDirFlags;
using namespace Quorvane::TestSupport;

const cv::Scalar overlapColour(0, 220, 255);

// How the host turns the pictures upright.
const ImageDirFlags direction1(cv::ROTATE_90_CLOCKWISE, false, false);
const ImageDirFlags direction2(-1, true, false);

// What an operator would try first.
constexpr double ratioThreshold = 0.75;
constexpr double yDeviationFactor = 4.0;
constexpr double lengthTolerance = 0.3;
constexpr double ransacThreshold = 3.0;  // pixels
constexpr int ransacIterations = 2000;
constexpr double ransacConfidence = 0.995;

/// Two cameras over the cup: the left one sees less light and hangs on its side, the right one mirrors.
struct Machine {
    cv::Mat scene;
    TwoCameras cameras;
    TwoViews views;
    cv::Mat delivered1;
    cv::Mat delivered2;
};

Machine Mount(cv::Size view, double overlap, double shiftDown, double turn) {
    Machine machine;
    cv::resize(LoadColourPicture("coffee.png"), machine.scene, {}, 2.0, 2.0, cv::INTER_CUBIC);
    machine.cameras.view = view;
    machine.cameras.overlap = overlap;
    machine.cameras.shiftDown = shiftDown;
    machine.cameras.turn = turn;
    machine.cameras.light1 = 0.8;
    machine.cameras.noise = 1.5;
    machine.views = Photograph(machine.cameras, machine.scene);
    machine.delivered1 = Mounted(machine.views.picture1, cv::ROTATE_90_CLOCKWISE, false, false);
    machine.delivered2 = Mounted(machine.views.picture2, -1, true, false);
    return machine;
}

cv::Mat WithOverlap(const cv::Mat& upright, const cv::Rect& overlap) {
    cv::Mat drawn = upright.clone();
    cv::rectangle(drawn, overlap, overlapColour, 3);
    return drawn;
}

struct Joined {
    cv::Mat picture;
    double seamX = 0.0;
    double milliseconds = 0.0;
};

Joined Join(const Machine& machine, const cv::Mat& homography) {
    Joined joined;
    bool success = false;
    joined.milliseconds = MillisecondsOf([&] {
        success = Calibration::DoBlendingImageForDualCam(machine.delivered1, direction1, machine.delivered2, direction2,
                                                         1.0, 1.0, homography, joined.seamX, joined.picture);
    });
    if (!success) throw std::runtime_error(Calibration::GetLastError());
    return joined;
}

/// The joined picture with the seam's column marked at both ends.
cv::Mat WithSeam(const Joined& joined) {
    constexpr int length = 30;
    cv::Mat drawn = joined.picture.clone();
    const int column = cvRound(joined.seamX);
    cv::line(drawn, {column, 0}, {column, length}, overlapColour, 2);
    cv::line(drawn, {column, drawn.rows - 1 - length}, {column, drawn.rows - 1}, overlapColour, 2);
    return drawn;
}

void ShowJoining(Report& report) {
    const Machine machine = Mount({700, 740}, 260.0, 14.0, 1.0);
    report.Heading("The pictures");
    report.Pictures(
        {{machine.delivered1, "As camera 1 delivers it: on its side, turned by one degree more, at 80 % light"},
         {machine.delivered2, "As camera 2 delivers it: mirrored"},
         {WithOverlap(machine.views.picture1, machine.views.overlap1), "Camera 1 upright, with its overlap"},
         {WithOverlap(machine.views.picture2, machine.views.overlap2), "Camera 2 upright"}});

    std::vector<cv::Point2f> points1;
    std::vector<cv::Point2f> points2;
    bool success = false;
    cv::setRNGSeed(1);  // the matching draws from OpenCV's generator; so the page is the same every time
    const double matching = MillisecondsOf([&] {
        success = Calibration::CalibrationMatchPointsForDualCam(
            machine.delivered1, direction1, machine.views.overlap1, machine.delivered2, direction2,
            machine.views.overlap2, ratioThreshold, yDeviationFactor, lengthTolerance, points1, points2);
    });
    cv::Mat homography;
    double meanError = 0.0;
    cv::Mat matches;
    if (!success ||
        !Calibration::CreateHomography(points1, points2, homography, meanError, ransacThreshold, ransacIterations,
                                       ransacConfidence) ||
        !Calibration::CreateMatchesImage(machine.delivered1, direction1, machine.delivered2, direction2, points1,
                                         points2, matches)) {
        throw std::runtime_error("the two cameras cannot be matched: " + Calibration::GetLastError());
    }
    report.Heading("The matches");
    report.Pictures({{matches, "CreateMatchesImage: " + std::to_string(points1.size()) + " pairs"}});

    const Joined joined = Join(machine, homography);
    const cv::Rect nearSeam(cvRound(joined.seamX) - 60, joined.picture.rows / 2 - 30, 120, 80);
    const cv::Point toScene = machine.views.inScene2.br() - cv::Point(joined.picture.size());
    report.Heading("The joined picture");
    report.Pictures({{WithSeam(joined), "DoBlendingImageForDualCam; the seam stands between the two marks"}});
    report.Pictures({{Magnified(joined.picture, nearSeam, 4), "120 pixels about the seam, magnified"},
                     {Magnified(machine.scene, nearSeam + toScene, 4), "The same place in the photograph"}});

    const cv::Matx33d found(homography);
    const cv::Rect2d all(cv::Point2d(), cv::Size2d(machine.cameras.view));
    report.Table(
        "Outcome",
        {{"pairs", std::to_string(points1.size())},
         {"mean error of the pairs used", Number(meanError, 3) + " px"},
         {"mapping off by at most, in the overlap",
          Number(LargestDistance(found, machine.views.homography, cv::Rect2d(machine.views.overlap1)), 2) + " px"},
         {"mapping off by at most, in all of picture 1",
          Number(LargestDistance(found, machine.views.homography, all), 2) + " px"},
         {"seamX", Number(joined.seamX, 2)},
         {"time of the matching", Milliseconds(matching)},
         {"time of the joining", Milliseconds(joined.milliseconds)}});
}

void ShowLaidTogether(Report& report) {
    const Machine machine = Mount({600, 740}, 6.0, 0.0, 0.0);
    const Joined joined = Join(machine, cv::Mat(machine.views.homography));
    report.Heading("Hardly any overlap");
    report.Paragraph(
        "Where picture 1 reaches 10 pixels or less into picture 2 there is nothing to match and no room for a seam. "
        "With a mapping from elsewhere the pictures are laid together, and the step of light stays.");
    report.Pictures({{joined.picture, "Overlap of at most 10 pixels: no blending"}});
}

}  // namespace

void TwoCamerasSection(Report& report) {
    report.Section("Two cameras joined",
                   "CalibrationMatchPointsForDualCam finds pairs of points in the pictures of two cameras, "
                   "CreateHomography the mapping from camera 1 to camera 2, and DoBlendingImageForDualCam joins the "
                   "pictures at a seam in the middle of their overlap. The cameras look at one photograph, enlarged "
                   "twice, so the true mapping is known.");
    ShowJoining(report);
    ShowLaidTogether(report);
}

}  // namespace Demo
