#pragma once

#include <string>

namespace Quorvane::CameraCalibration {

/// The text that `cv::FileStorage` parses for this file name: of the file that it opens, and decompressed if the name
/// says so. Empty where there is no such regular file. More than a gigabyte gives a `cv::Exception`.
std::string DocumentText(const std::string& fileName);

}  // namespace Quorvane::CameraCalibration
