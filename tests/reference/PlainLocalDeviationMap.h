#pragma once

#include <opencv2/core/mat.hpp>

namespace Quorvane::Reference {

/// The deviation map from its definition: one call of `cv::meanStdDev` for each window.
cv::Mat LocalDeviationMap(const cv::Mat& gray, int side);

}  // namespace Quorvane::Reference
