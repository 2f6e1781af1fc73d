#pragma once

#include <opencv2/core/mat.hpp>

namespace Quorvane::UtilityFunctions {

/// The large regions of like colour in a CV_8UC3 picture: a CV_8UC1 mask, 255 where a pixel belongs to a region of more
/// than `areaLimit` pixels, else 0.
///
/// From each pixel that belongs to no region yet, row by row, a region is grown over all eight neighbours: pixels of no
/// region whose Euclidean distance to the region's first pixel (not to their neighbour) is at most `tolerance`.
cv::Mat LargeColourRegions(const cv::Mat& picture, double tolerance, int areaLimit);

}  // namespace Quorvane::UtilityFunctions
