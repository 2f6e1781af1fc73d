#include "geometry/CircleFit.h"

#include <algorithm>
#include <cmath>
#include <opencv2/core.hpp>

namespace Quorvane::UtilityFunctions {

namespace {

constexpr std::size_t leastPointsOfACircle = 3;

/// From this score on, downwards, the points are no circle.
constexpr double leastScore = 0.3;

/// Keeps the score finite for a circle without extent.
constexpr double leastRadius = 1e-5;

cv::Vec3d SolveCircleEquations(const std::vector<cv::Point2f>& points) {
    const auto count = static_cast<int>(points.size());
    cv::Mat a(count, 3, CV_64F);
    cv::Mat b(count, 1, CV_64F);
    for (int i = 0; i < count; ++i) {
        const double x = points[static_cast<std::size_t>(i)].x;
        const double y = points[static_cast<std::size_t>(i)].y;
        auto* row = a.ptr<double>(i);
        row[0] = x;
        row[1] = y;
        row[2] = 1.0;
        *b.ptr<double>(i) = x * x + y * y;
    }
    cv::Mat solution;
    cv::solve(a, b, solution, cv::DECOMP_SVD);
    return {solution.at<double>(0), solution.at<double>(1), solution.at<double>(2)};
}

/// The standard deviation of the points' distances to the circle.
double ResidualDeviation(const std::vector<cv::Point2f>& points, const cv::Point2d& center, double radius) {
    double sum = 0.0;
    double sumOfSquares = 0.0;
    for (const cv::Point2f& point : points) {
        const double dx = point.x - center.x;
        const double dy = point.y - center.y;
        const double residual = std::abs(std::sqrt(dx * dx + dy * dy) - radius);
        sum += residual;
        sumOfSquares += residual * residual;
    }
    const auto count = static_cast<double>(points.size());
    const double mean = sum / count;
    return std::sqrt(std::max(sumOfSquares / count - mean * mean, 0.0));
}

}  // namespace

bool fitCircleAlgebraic(const std::vector<cv::Point2f>& points, cv::Point2f& center, double& radius, double& score) {
    if (points.size() < leastPointsOfACircle) return false;
    const cv::Vec3d x = SolveCircleEquations(points);
    center = {static_cast<float>(x[0] / 2.0), static_cast<float>(x[1] / 2.0)};
    const float centerX2 = center.x * center.x;
    const float centerY2 = center.y * center.y;
    radius = static_cast<float>(std::sqrt(centerX2 + x[2] + centerY2));
    score = 1.0 - ResidualDeviation(points, center, radius) / (radius + leastRadius);
    return score > leastScore;
}

}  // namespace Quorvane::UtilityFunctions
