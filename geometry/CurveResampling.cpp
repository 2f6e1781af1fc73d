#include "geometry/CurveResampling.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <opencv2/core.hpp>

namespace Quorvane::UtilityFunctions {

namespace {

/// The element that would stand at the middle of the sorted values; the upper one of two.
double UpperMedian(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// The curvature of the parabola through a point and its two neighbours; below zero where there is none.
double Curvature(const cv::Point2f& before, const cv::Point2f& here, const cv::Point2f& after) {
    constexpr double leastBase = 1e-6;
    constexpr double none = -1.0;
    const float dx = (after.x - before.x) / 2.0f;
    const float dy = (after.y - before.y) / 2.0f;
    const float ddx = after.x - 2.0f * here.x + before.x;
    const float ddy = after.y - 2.0f * here.y + before.y;
    const float base = std::sqrt(dx * dx + dy * dy);
    if (!(base > leastBase)) return none;
    const double curvature = std::abs(ddy * dx - ddx * dy) / std::pow(static_cast<double>(base), 3.0);
    return std::isnan(curvature) ? none : curvature;
}

/// The curvatures of all points but two at either end; below zero where there is none.
std::vector<double> Curvatures(const std::vector<cv::Point2f>& points) {
    std::vector<double> curvatures(points.size(), -1.0);
    for (std::size_t i = 2; i + 2 < points.size(); ++i) {
        curvatures[i] = Curvature(points[i - 1], points[i], points[i + 1]);
    }
    return curvatures;
}

/// The largest change of direction between neighbouring segments, in radians, at most pi.
double SharpestBend(const std::vector<cv::Point2f>& points) {
    double sharpest = 0.0;
    for (std::size_t i = 1; i + 1 < points.size(); ++i) {
        const cv::Point2f in = points[i] - points[i - 1];
        const cv::Point2f out = points[i + 1] - points[i];
        double change = std::abs(std::atan2(out.y, out.x) - std::atan2(in.y, in.x));
        if (change > CV_PI) change = 2.0 * CV_PI - change;
        sharpest = std::max(sharpest, change);
    }
    return sharpest;
}

/// The length of the polyline up to each of its points.
std::vector<double> CumulativeLengths(const std::vector<cv::Point2f>& points) {
    std::vector<double> lengths(points.size(), 0.0);
    for (std::size_t i = 1; i < points.size(); ++i) {
        lengths[i] = lengths[i - 1] + cv::norm(points[i] - points[i - 1]);
    }
    return lengths;
}

/// The point of the curve's segment from point s on, at u in 0 ... 1 along it.
cv::Point2f PointOnSegment(const std::vector<cv::Point2f>& points, std::size_t s, double u) {
    const cv::Point2d p0 = points[s];
    const cv::Point2d p1 = points[s + 1];
    const cv::Point2d m0 = s > 0 ? (p1 - cv::Point2d(points[s - 1])) / 2.0 : p1 - p0;
    const cv::Point2d m1 = s + 2 < points.size() ? (cv::Point2d(points[s + 2]) - p0) / 2.0 : p1 - p0;
    const double u2 = u * u;
    const double u3 = u2 * u;
    const double h00 = 2.0 * u3 - 3.0 * u2 + 1.0;
    const double h10 = u3 - 2.0 * u2 + u;
    const double h01 = 3.0 * u2 - 2.0 * u3;
    const double h11 = u3 - u2;
    return {static_cast<float>(h00 * p0.x + h10 * m0.x + h01 * p1.x + h11 * m1.x),
            static_cast<float>(h00 * p0.y + h10 * m0.y + h01 * p1.y + h11 * m1.y)};
}

}  // namespace

std::vector<cv::Point2f> removeCurvatureOutliers(const std::vector<cv::Point2f>& points, double factor) {
    constexpr std::size_t leastPoints = 5;
    // The standard deviation of normally distributed values, in units of their median deviation.
    constexpr double deviationPerMedianDeviation = 1.4826;
    if (points.size() < leastPoints) return points;

    const std::vector<double> curvatures = Curvatures(points);
    std::vector<double> known;
    std::copy_if(curvatures.begin(), curvatures.end(), std::back_inserter(known), [](double k) { return k >= 0.0; });
    if (known.empty()) return points;

    const double median = UpperMedian(known);
    for (double& curvature : known) curvature = std::abs(curvature - median);
    const double limit = factor * deviationPerMedianDeviation * UpperMedian(known) + median;
    std::vector<cv::Point2f> kept;
    kept.reserve(points.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (!(curvatures[i] >= 0.0 && curvatures[i] > limit)) kept.push_back(points[i]);
    }
    return kept;
}

std::vector<cv::Point2f> smoothPoints(const std::vector<cv::Point2f>& points) {
    constexpr int radius = 3;
    std::array<double, 2 * radius + 1> weights{};
    double* const middle = weights.data() + radius;
    for (int k = -radius; k <= radius; ++k) middle[k] = std::exp(-(k * k) / 2.0);

    const auto count = static_cast<int>(points.size());
    std::vector<cv::Point2f> smoothed;
    smoothed.reserve(points.size());
    for (int i = 0; i < count; ++i) {
        cv::Point2d sum;
        double sumOfWeights = 0.0;
        for (int k = std::max(-radius, -i); k <= radius && i + k < count; ++k) {
            const int neighbour = i + k;
            sum += cv::Point2d(points[static_cast<std::size_t>(neighbour)]) * middle[k];
            sumOfWeights += middle[k];
        }
        smoothed.emplace_back(static_cast<float>(sum.x / sumOfWeights), static_cast<float>(sum.y / sumOfWeights));
    }
    return smoothed;
}

int chooseCurveSampleCount(const std::vector<cv::Point2f>& points, int degree) {
    constexpr int leastCount = 20;
    constexpr int mostCount = 500;
    constexpr int countPerOrder = 10;
    constexpr double sharpBend = CV_PI / 4.0;
    constexpr double slightBend = CV_PI / 12.0;
    // Distances between the points of the new curve, in pixels.
    constexpr double spacingAtSharpBends = 1.0;
    constexpr double spacingAtSlightBends = 1.5;
    constexpr double spacingElsewhere = 2.0;

    if (points.size() < 3) return std::max(3 * static_cast<int>(points.size()), leastCount);
    const double length = CumulativeLengths(points).back();
    const double bend = SharpestBend(points);
    const double spacing = bend > sharpBend    ? spacingAtSharpBends
                           : bend > slightBend ? spacingAtSlightBends
                                               : spacingElsewhere;
    const double leastForDegree = (degree + 1.0) * countPerOrder;
    const double wanted = std::min<double>(std::max(leastForDegree, std::ceil(length / spacing)), mostCount);
    return std::max(static_cast<int>(wanted), leastCount);
}

std::vector<cv::Point2f> resampleCurveHermite(const std::vector<cv::Point2f>& points, int count) {
    if (points.size() < 2) return points;
    std::vector<double> place = CumulativeLengths(points);
    const double length = place.back();
    for (std::size_t i = 1; i < place.size(); ++i) place[i] /= length;

    // The first segment that holds t moves on with t; where none does, the search is at its end and stays there.
    const std::size_t segments = points.size() - 1;
    std::size_t search = 0;
    std::vector<cv::Point2f> curve;
    curve.reserve(static_cast<std::size_t>(std::max(count, 0)));
    for (int k = 0; k < count; ++k) {
        const double t = static_cast<double>(k) / (count - 1);
        while (search < segments && !(place[search] <= t && t <= place[search + 1])) ++search;
        const std::size_t s = search < segments ? search : 0;
        const double u = (t - place[s]) / (place[s + 1] - place[s]);
        curve.push_back(PointOnSegment(points, s, u));
    }
    return curve;
}

double meanDistanceToCurve(const std::vector<cv::Point2f>& points, const std::vector<cv::Point2f>& curve) {
    constexpr double farthest = std::numeric_limits<double>::max();
    double sum = 0.0;
    for (const cv::Point2f& point : points) {
        // The root keeps the order, so that of the least square is the least root.
        double least = farthest;
        for (const cv::Point2f& other : curve) {
            const double dx = point.x - other.x;
            const double dy = point.y - other.y;
            least = std::min(least, dx * dx + dy * dy);
        }
        sum += least < farthest ? std::sqrt(least) : farthest;
    }
    return sum / static_cast<double>(points.size());
}

}  // namespace Quorvane::UtilityFunctions
