#pragma once

#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

namespace Quorvane::TestSupport {

/// The file names of the repository's real photographs.
std::vector<std::string> PictureNames();

/// One of them, in colour (three channels) or in gray (one). Throws `std::runtime_error` if it cannot be read.
cv::Mat LoadColourPicture(const std::string& name);
cv::Mat LoadGrayPicture(const std::string& name);

}  // namespace Quorvane::TestSupport
