#pragma once

#include <cmath>
#include <opencv2/core/types.hpp>
#include <vector>

namespace Quorvane::TestSupport {

/// The points turned about the origin by `degrees`, from the x axis towards the y axis.
inline std::vector<cv::Point2f> Turned(const std::vector<cv::Point2f>& points, double degrees) {
    const double c = std::cos(degrees * CV_PI / 180.0);
    const double s = std::sin(degrees * CV_PI / 180.0);
    std::vector<cv::Point2f> turned;
    for (const cv::Point2f& p : points) {
        turned.emplace_back(static_cast<float>(c * p.x - s * p.y), static_cast<float>(s * p.x + c * p.y));
    }
    return turned;
}

}  // namespace Quorvane::TestSupport
