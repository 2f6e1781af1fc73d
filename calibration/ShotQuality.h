#pragma once

#include <opencv2/core.hpp>
#include <vector>

/// How good one picture of a board is: the root-mean-square reprojection error, in pixels, of a calibration made from
/// it alone. The camera found that way is of no use and is dropped; a blurred or bent board fits no camera well.
///
/// `objectPoints` lie on the board, in any unit, and correspond to `imagePoints` by index. Lists that do not fit each
/// other, or that no camera fits, give a `cv::Exception`.
namespace Quorvane::CameraCalibration {

/// By the fisheye model.
double FisheyeShotQuality(const std::vector<cv::Point3f>& objectPoints, const std::vector<cv::Point2f>& imagePoints,
                          cv::Size imageSize);

/// By the pinhole model with rational and thin-prism terms, in two passes of which the first holds most terms back.
double PinholeShotQuality(const std::vector<cv::Point3f>& objectPoints, const std::vector<cv::Point2f>& imagePoints,
                          cv::Size imageSize);

}  // namespace Quorvane::CameraCalibration
