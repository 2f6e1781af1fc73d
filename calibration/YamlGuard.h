#pragma once

#include <string>

namespace Quorvane::CameraCalibration {

/// Gives a `cv::Exception` for a YAML document that must not reach OpenCV's parser.
void RefuseUnsafeYaml(const std::string& text);

}  // namespace Quorvane::CameraCalibration
