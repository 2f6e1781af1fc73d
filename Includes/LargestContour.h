#pragma once

#include <cstddef>
#include <opencv2/core/types.hpp>
#include <vector>

namespace Quorvane {

/// The index of the contour with the largest `cv::contourArea`, the first of those that are equally large. Contours
/// without any area leave the choice at index 0, which is also the answer for an empty list.
std::size_t IndexOfLargestContour(const std::vector<std::vector<cv::Point>>& contours);

}  // namespace Quorvane
