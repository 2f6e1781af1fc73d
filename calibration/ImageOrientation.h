#pragma once

#include <opencv2/core.hpp>

#include "calibration/CameraCalibration.h"

namespace Quorvane::CameraCalibration {

/// The picture of a camera turned upright: first the rotation, then the vertical flip, then the horizontal one. The
/// result never shares pixels with `source`. An array of more than two dimensions gives a `cv::Exception`.
cv::Mat OrientImage(const cv::Mat& source, const ImageDirFlags& direction);

}  // namespace Quorvane::CameraCalibration
