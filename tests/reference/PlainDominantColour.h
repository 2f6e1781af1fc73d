#pragma once

#include <opencv2/core/mat.hpp>
#include <vector>

namespace Quorvane::Reference {

/// The dominant colour's pixel from its definition: the whole image in Lab, and an ordered map of lists of pixels.
cv::Point DominantColourPoint(const cv::Mat& image, const std::vector<cv::Point>& contour);

}  // namespace Quorvane::Reference
