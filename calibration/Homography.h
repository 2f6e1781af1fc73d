#pragma once

#include <opencv2/core.hpp>

/// Steps of the mapping between picture and machine that need no more than a homography.
namespace Quorvane::CameraCalibration {

/// A homography (3x3, CV_64F; anything else gives a `cv::Exception`) applied to a point.
cv::Point2f Mapped(const cv::Mat& homography, const cv::Point2f& point);

/// A homography whose output begins at the origin, and the size of the picture that it makes.
struct Canvas {
    cv::Mat homography;
    cv::Size size;
};

/// Shifts a homography so that the bounds of the warped picture begin at the origin. The canvas keeps the source
/// picture's aspect ratio, not the warped shape's: its longer side is the longer side of those bounds.
Canvas FitToCanvas(const cv::Mat& homography, cv::Size picture);

/// The distance of two points, from differences in float.
double Distance(const cv::Point2f& a, const cv::Point2f& b);

}  // namespace Quorvane::CameraCalibration
