#pragma once

#include <cmath>
#include <opencv2/core/types.hpp>

namespace Quorvane::UtilityFunctions {

/// Euclidean distance of two points: differences in float, squares and root in double, the result narrowed to float.
inline float pointDistance(const cv::Point2f& a, const cv::Point2f& b) {
    const double dx = b.x - a.x;
    const double dy = b.y - a.y;
    return static_cast<float>(std::sqrt(dy * dy + dx * dx));
}

}  // namespace Quorvane::UtilityFunctions
