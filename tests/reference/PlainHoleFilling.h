#pragma once

#include <opencv2/core/mat.hpp>

namespace Quorvane::Reference {

/// The mask of large regions of like colour from its definition: a queue of pixels, and one `cv::norm` for each
/// neighbour that is tested.
cv::Mat LargeColourRegions(const cv::Mat& lab, double tolerance, int areaLimit);

/// Hole filling with these regions.
cv::Mat FillHoles(const cv::Mat& source, double colorTolerance, int areaLimit, int closeRadius, int expandRadius);

}  // namespace Quorvane::Reference
