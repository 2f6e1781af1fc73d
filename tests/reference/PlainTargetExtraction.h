#pragma once

#include <opencv2/core/mat.hpp>
#include <vector>

namespace Quorvane::Reference {

/// The colour region with both colours of every comparison converted on their own, one pixel at a time.
std::vector<cv::Point> FindColourRegion(const cv::Mat& image, cv::Point seed, double maxDifference, int directionCount,
                                        int squareSize);

/// The widened contour, from the distances of the whole image.
std::vector<cv::Point> ExpandContour(const cv::Mat& image, const std::vector<cv::Point>& contour, int distance);

}  // namespace Quorvane::Reference
