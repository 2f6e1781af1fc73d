#include "geometry/Line.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <limits>
#include <opencv2/core.hpp>
#include <utility>

namespace Quorvane::UtilityFunctions {

namespace {

/// Below this amount a line's run in x, or its coefficient of y, counts as zero. A double: the float is widened.
constexpr double verticalTolerance = 1e-7;

/// The determinant below which two sides of a quadrilateral are parallel.
constexpr float parallelTolerance = 1e-7f;

/// Two border points nearer than this, in pixels, are one.
constexpr double samePointDistance = 1.0;

constexpr float infinity = std::numeric_limits<float>::infinity();

bool IsNearZero(float value) { return static_cast<double>(std::abs(value)) < verticalTolerance; }

float Length(float x, float y) { return std::sqrt(x * x + y * y); }

cv::Point2f Normalised(const cv::Point2f& v) {
    const float length = Length(v.x, v.y);
    return length > 0.0f ? cv::Point2f(v.x / length, v.y / length) : v;
}

void RemoveNearRepetitions(std::vector<cv::Point2f>& points) {
    for (std::size_t i = 0; i < points.size(); ++i) {
        for (std::size_t j = i + 1; j < points.size();) {
            if (cv::norm(points[i] - points[j]) < samePointDistance) {
                points.erase(points.begin() + static_cast<std::ptrdiff_t>(j));
            } else {
                ++j;
            }
        }
    }
}

}  // namespace

Line::Line()
    : a(0.0f),
      b(-1.0f),
      c(0.0f),
      linePoint(0.0f, 0.0f),
      direction(1.0f, 0.0f),
      slope(0.0f),
      intercept(0.0f),
      isVertical(false) {}

Line::Line(const cv::Point2f& p1, const cv::Point2f& p2) : Line() { fromTwoPoints(p1, p2); }

Line::Line(const cv::Vec4f& v) : Line() { fromVec4f(v); }

Line::Line(float k, float m) : Line() { fromSlopeIntercept(k, m); }

Line::Line(float generalA, float generalB, float generalC) : Line() { fromGeneralForm(generalA, generalB, generalC); }

Line& Line::operator=(const Line& other) = default;
Line& Line::operator=(Line&& other) noexcept = default;

void Line::normalizeGeneralForm() {
    const float n = Length(a, b);
    if (!(n > 0.0f)) return;
    a /= n;
    b /= n;
    c /= n;
}

void Line::calculateSlopeIntercept() {
    isVertical = IsNearZero(b);
    slope = isVertical ? infinity : -a / b;
    intercept = isVertical ? -c / a : -c / b;
}

void Line::fromTwoPoints(const cv::Point2f& p1, const cv::Point2f& p2) {
    const float dx = p2.x - p1.x;
    const float dy = p2.y - p1.y;
    isVertical = IsNearZero(dx);
    if (isVertical) {
        slope = infinity;
        a = 1.0f;
        b = 0.0f;
        c = -p1.x;
        direction = {0.0f, 1.0f};
        intercept = p1.x;
    } else {
        slope = dy / dx;
        a = dy;
        b = -dx;
        c = p2.x * p1.y - p2.y * p1.x;
        normalizeGeneralForm();
        direction = Normalised({dx, dy});
        intercept = p1.y - p1.x * slope;
    }
    linePoint = p1;  // last, as p2 may be the line's own point
}

void Line::fromVec4f(const cv::Vec4f& v) {
    direction = {v[0], v[1]};
    linePoint = {v[2], v[3]};
    a = -v[1];
    b = v[0];
    c = v[2] * v[1] - v[3] * v[0];
    normalizeGeneralForm();
    calculateSlopeIntercept();
}

void Line::fromSlopeIntercept(float k, float m) {
    slope = k;
    intercept = m;
    a = k;
    b = -1.0f;
    c = m;
    isVertical = false;
    normalizeGeneralForm();
    const float length = Length(1.0f, k);
    direction = {1.0f / length, k / length};
    linePoint = {0.0f, m};
}

void Line::fromGeneralForm(float generalA, float generalB, float generalC) {
    a = generalA;
    b = generalB;
    c = generalC;
    normalizeGeneralForm();
    direction = Normalised({b, -a});
    linePoint = std::abs(b) > std::abs(a) ? cv::Point2f(0.0f, -c / b) : cv::Point2f(-c / a, 0.0f);
    calculateSlopeIntercept();
}

cv::Vec4f Line::toVec4f() const { return {direction.x, direction.y, linePoint.x, linePoint.y}; }

float Line::distanceToPoint(const cv::Point2f& p) const { return std::abs(a * p.x + b * p.y + c); }

void Line::getEndPoints(cv::Point2f& p1, cv::Point2f& p2, float t) const {
    p1 = {linePoint.x - t * direction.x, linePoint.y - t * direction.y};
    p2 = {linePoint.x + t * direction.x, linePoint.y + t * direction.y};
}

std::vector<cv::Point2f> Line::getIntersectionWithImage(const cv::Size& size) const {
    const auto width = static_cast<float>(size.width);
    const auto height = static_cast<float>(size.height);
    std::vector<cv::Point2f> points;
    const auto keepOnRow = [&](float x, float y) {
        if (x >= 0.0f && x <= width) points.emplace_back(x, y);
    };
    const auto keepOnColumn = [&](float x, float y) {
        if (y >= 0.0f && y <= height) points.emplace_back(x, y);
    };
    // The guards are crossed on purpose: each tests the coefficient that it does not divide by. So a horizontal or
    // vertical line runs into infinities and not-a-numbers, which fail the ranges above, and gets no point.
    if (b != 0.0f) {
        keepOnRow(-c / a, 0.0f);
        keepOnRow((-c - height * b) / a, height);
    }
    if (a != 0.0f) {
        keepOnColumn(0.0f, -c / b);
        keepOnColumn(width, (-c - width * a) / b);
    }
    if (points.size() >= 3) RemoveNearRepetitions(points);
    return points;
}

std::string Line::toString() const {
    std::array<char, 256> text{};
    if (isVertical) {
        std::snprintf(text.data(), text.size(), "Vertical line: x = %.2f", static_cast<double>(intercept));
    } else {
        std::snprintf(text.data(), text.size(), "Line: y = %.2fx + %.2f", static_cast<double>(slope),
                      static_cast<double>(intercept));
    }
    return text.data();
}

bool computeIntersection(const Line& l1, const Line& l2, cv::Point2f& point, float epsilon) {
    const float det = l1.a * l2.b - l2.a * l1.b;
    if (std::abs(det) < epsilon) return false;
    point = {(l2.c * l1.b - l1.c * l2.b) / det, (l1.c * l2.a - l2.c * l1.a) / det};
    return true;
}

bool computeQuadrilateralCenterRobust(const Line& l1, const Line& l2, const Line& l3, const Line& l4,
                                      cv::Point2f& center) {
    const std::array<std::pair<const Line*, const Line*>, 4> sidesOfCorners{
        {{&l3, &l1}, {&l3, &l2}, {&l4, &l1}, {&l4, &l2}}};
    cv::Point2f sum(0.0f, 0.0f);
    for (const auto& [first, second] : sidesOfCorners) {
        cv::Point2f corner;
        if (!computeIntersection(*first, *second, corner, parallelTolerance)) return false;
        sum += corner;
    }
    constexpr auto corners = static_cast<float>(sidesOfCorners.size());
    center = {sum.x / corners, sum.y / corners};
    return true;
}

}  // namespace Quorvane::UtilityFunctions
