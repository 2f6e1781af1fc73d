#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "calibration/CameraCalibrator.h"
#include "tests/support/Boards.h"

/// A machine's bed under a pinhole camera that is known exactly, and calibrators in every state.
namespace Quorvane::CameraCalibration {

constexpr double bedWidth = 200.0;   // millimetres
constexpr double bedHeight = 150.0;  // millimetres
constexpr double bedStep = 25.0;     // millimetres between the circles of the board on the bed

TestSupport::CameraModel BedCamera();
TestSupport::Board BedBoard();
TestSupport::Pose BedPose();

struct PointPairs {
    std::vector<cv::Point2f> image;
    std::vector<cv::Point2f> machine;
};

/// Machine positions all over the bed and where the camera sees them.
PointPairs BedPairs(int pointsPerSide = 5);

/// Six pairs on one line, for which there is no homography.
PointPairs PairsOnALine();

CameraCalibrator CalibratedOverTheBed();
/// Calibrated, and then left without a homography by a failed calibration.
CameraCalibrator CalibratedButEmpty();
/// Loaded from a file with this matrix.
CameraCalibrator WithHomography(const cv::Mat& homography, cv::Size picture = {640, 480});

/// With this matrix, but without the calibrated state.
CameraCalibrator UncalibratedWith(const cv::Mat& homography);

// Private members, for which there is no other way to look.
cv::Mat HomographyOf(const CameraCalibrator& calibrator);
cv::Mat PolynomialTermsOf(const std::vector<cv::Point2f>& points);

}  // namespace Quorvane::CameraCalibration
