#include <opencv2/core/cvdef.h>
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iostream>
#include <vector>

#include "geometry/CaliperGuard.h"
#include "geometry/CircleFit.h"
#include "geometry/FirstEdgeSearch.h"
#include "geometry/GrayImage.h"
#include "geometry/Measurement.h"

namespace Quorvane::UtilityFunctions {

namespace {

/// Half the width of every caliper of a circle, in pixels: eleven samples across.
constexpr double halfWidthOfSpoke = 5.0;

/// Points on the circle, from angle 0 towards +y in steps of `angleStep` degrees, below 360. A step so small that no
/// memory holds its points gives `std::length_error` or `std::bad_alloc` at once.
std::vector<cv::Point2f> sampleCirclePoints(const cv::Point2f& center, float radius, float angleStep) {
    constexpr double fullTurn = 360.0;
    std::vector<cv::Point2f> points;
    if (angleStep <= 0.0f) {
        std::cerr << "错误：角度步长必须是正数" << std::endl;
        return points;
    }
    const double count = std::min(fullTurn / angleStep, static_cast<double>(points.max_size()));
    if (count > 0.0) points.reserve(static_cast<std::size_t>(count) + 1);
    double angle = 0.0;
    while (angle < fullTurn) {
        const double theta = angle * CV_PI / 180.0;
        points.emplace_back(static_cast<float>(std::cos(theta) * radius + center.x),
                            static_cast<float>(std::sin(theta) * radius + center.y));
        angle += angleStep;
    }
    return points;
}

/// The caliper between the centre and a point of the rim.
CaliperPlace Spoke(const cv::Point2f& center, const cv::Point2f& rim, SearchDirection direction) {
    const float dx = rim.x - center.x;
    const float dy = rim.y - center.y;
    double angle = std::atan2(dy, dx);
    if (direction == SearchDirection::Inward) angle += CV_PI;
    const float length = std::sqrt(dx * dx + dy * dy);
    return {(center.y + rim.y) * 0.5, (center.x + rim.x) * 0.5, angle, 0.5 * length};
}

}  // namespace

void MeasureCircle(const cv::Mat& image, const cv::Point2f& center, const double& radius, cv::Point2f& foundCenter,
                   double& foundRadius, double& score, EdgePolarity polarity, SearchDirection direction,
                   const double& sigma, const double& threshold, const double& angleStep) {
    // Centre, radius and rim are floats, which takes a spoke beyond the radius by some units of their last place.
    constexpr double rounding = 1e-6;
    const double reach = (1.0 + rounding) * std::abs(radius) + halfWidthOfSpoke;
    const cv::Mat gray = grayImageBetween(image, center.y - reach, center.y + reach);
    FirstEdgeSearch search(gray, halfWidthOfSpoke, sigma, threshold, polarity);
    const std::vector<cv::Point2f> rim =
        sampleCirclePoints(center, static_cast<float>(radius), static_cast<float>(angleStep));
    std::vector<cv::Point2f> edges;
    for (std::size_t k = 0; k < rim.size(); ++k) {
        GuardCaliper("angle", static_cast<double>(k) * angleStep, [&] {
            cv::Point2f edge;
            if (search.Find(Spoke(center, rim[k], direction), edge)) edges.push_back(edge);
        });
    }
    fitCircleAlgebraic(edges, foundCenter, foundRadius, score);
}

}  // namespace Quorvane::UtilityFunctions
