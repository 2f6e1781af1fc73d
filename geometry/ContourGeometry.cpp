#include "geometry/ContourGeometry.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "geometry/ContourRotation.h"
#include "geometry/PointDistance.h"

namespace Quorvane::UtilityFunctions {

namespace {

/// The corner that follows corner i of a closed polygon.
const cv::Point2f& Next(const std::vector<cv::Point2f>& contour, std::size_t i) {
    return contour[(i + 1) % contour.size()];
}

struct Span {
    int begin = 0;
    int length = 0;
};

/// A span around a centre: shifted to begin at 0 at the least, cut off at `extent`.
Span SpanAround(float center, int length, int extent) {
    const int half = length / 2;
    const double begin = std::trunc(static_cast<double>(center)) - half;
    // Beyond every image lie a centre that is not a number and positions that no int holds.
    constexpr int beyond = std::numeric_limits<int>::max();
    Span span{begin < 0.0 ? 0 : begin < beyond ? static_cast<int>(begin) : beyond, length};
    if (static_cast<std::int64_t>(span.begin) + span.length > extent) span.length = extent - span.begin;
    return span;
}

cv::Mat rotationMatrixAsMat(cv::Point2f center, double angle, double scale) {
    return cv::getRotationMatrix2D(center, angle, scale);
}

cv::Point2f Transformed(const cv::Mat& matrix, double x, double y) {
    const auto* m = matrix.ptr<double>(0);
    const auto* n = matrix.ptr<double>(1);
    return {static_cast<float>(m[0] * x + m[1] * y + m[2]), static_cast<float>(n[0] * x + n[1] * y + n[2])};
}

/// Lopsided on purpose: the tolerance helps only a point whose x is not the lesser one, so of two points that lie
/// closer than it, each may be less than the other. The order of existing results hangs on it.
bool contourPointLess(const cv::Point2f& a, const cv::Point2f& b) {
    constexpr double sameColumn = 0.0001;
    if (a.x < b.x) return true;
    if (std::abs(a.x - b.x) < sameColumn) return a.y < b.y;
    return false;
}

}  // namespace

void AlignPoints(const std::vector<cv::Point2f>& source, const std::vector<cv::Point2f>& target, cv::Point2f& offset,
                 cv::Point2f& sourceCenter, double& angle) {
    const cv::Point2f centerOfSource = pointCentroid(source);
    const cv::Point2f centerOfTarget = pointCentroid(target);
    // Before any output is written: an output may be a point of a list, and memory may run out.
    angle = CalculateContourRotation(source, target, centerOfSource, centerOfTarget);
    sourceCenter = centerOfSource;
    offset = centerOfSource - centerOfTarget;
}

double CalPerimeterOfContour(const std::vector<cv::Point2f>& contour) {
    double perimeter = 0.0;
    for (std::size_t i = 0; i < contour.size(); ++i) perimeter += pointDistance(contour[i], Next(contour, i));
    return perimeter;
}

float CalculateAverageAngle(const std::vector<cv::Point2f>& contour) {
    float sum = 0.0f;
    for (std::size_t i = 0; i < contour.size(); ++i) {
        const cv::Point2f edge = Next(contour, i) - contour[i];
        sum += static_cast<float>(static_cast<double>(std::atan2(edge.y, edge.x)) * 180.0 / CV_PI);
    }
    return sum / static_cast<float>(contour.size());
}

cv::Mat CalculateExpansionHomography(const cv::Mat& homography, double scale) {
    if (homography.rows != 3 || homography.cols != 3) return {};
    cv::Mat expanded;
    homography.convertTo(expanded, CV_64F);
    for (int r = 0; r < 2; ++r) {
        auto* row = expanded.ptr<double>(r);
        for (int c = 0; c < 3; ++c) row[c] *= scale;
    }
    return expanded;
}

cv::Mat CutImageBasePoint(const cv::Mat& image, const cv::Point2f& center, const int& width, const int& height,
                          const bool& keepImageSize) {
    if (image.empty()) return {};
    const Span columns = SpanAround(center.x, width, image.cols);
    const Span rows = SpanAround(center.y, height, image.rows);
    const cv::Rect rectangle(columns.begin, rows.begin, columns.length, rows.length);
    cv::Mat crop = image(rectangle).clone();
    if (!keepImageSize) return crop;

    cv::Mat whole = cv::Mat::zeros(image.size(), image.type());
    cv::Mat place = whole(rectangle);
    crop.copyTo(place);
    return whole;
}

void FindFarthestPairPointInContour(const std::vector<cv::Point2f>& contour, cv::Point2f& first, cv::Point2f& second,
                                    float& distance) {
    distance = 0.0f;
    for (std::size_t i = 0; i < contour.size(); ++i) {
        for (std::size_t j = i + 1; j < contour.size(); ++j) {
            const float candidate = pointDistance(contour[i], contour[j]);
            if (candidate > distance) {
                distance = candidate;
                first = contour[i];
                second = contour[j];
            }
        }
    }
}

cv::RotatedRect GetMinAreaRectAtAngle(const std::vector<cv::Point2f>& points, float angle) {
    const cv::Mat turn = rotationMatrixAsMat({0.0f, 0.0f}, angle, 1.0);
    std::vector<cv::Point2f> turned;
    turned.reserve(points.size());
    for (const cv::Point2f& point : points) turned.push_back(Transformed(turn, point.x, point.y));

    const cv::Rect box = cv::boundingRect(turned);
    const cv::Size half = box.size() / 2;  // whole pixels
    const double centerX = static_cast<double>(box.x) + half.width;
    const double centerY = static_cast<double>(box.y) + half.height;
    const cv::Mat turnBack = rotationMatrixAsMat({0.0f, 0.0f}, -static_cast<double>(angle), 1.0);
    return {Transformed(turnBack, centerX, centerY), cv::Size2f(box.size()), angle};
}

cv::Rect2f GetMinimumBoundingRectangle(const std::vector<cv::Point2f>& points) {
    float minX = std::numeric_limits<float>::max();
    float minY = minX;
    // The least positive number, not the lowest one: coordinates below zero do not count for the maxima. Deliberate.
    float maxX = std::numeric_limits<float>::min();
    float maxY = maxX;
    for (const cv::Point2f& point : points) {
        minX = std::min(minX, point.x);
        minY = std::min(minY, point.y);
        maxX = std::max(maxX, point.x);
        maxY = std::max(maxY, point.y);
    }
    // The size stands where the constructor takes a corner. Deliberate too: hosts reckon with what comes out.
    return {cv::Point2f(minX, minY), cv::Point2f(maxX - minX, maxY - minY)};
}

cv::Point2f GetRotateRectConner(cv::RotatedRect rect, int index) {
    cv::Point2f corners[4];
    rect.points(corners);
    return corners[static_cast<unsigned>(index) % 4];
}

std::vector<cv::Point2f> SortContour(const std::vector<cv::Point2f>& contour) {
    // Where points are less than each other, std::sort may run over the ends of its range. A point before the range
    // that no other is less than, and one behind it that is less than no other, stop it there.
    constexpr float infinity = std::numeric_limits<float>::infinity();
    std::vector<cv::Point2f> guarded;
    guarded.reserve(contour.size() + 2);
    guarded.emplace_back(-infinity, -infinity);
    guarded.insert(guarded.end(), contour.begin(), contour.end());
    guarded.emplace_back(infinity, infinity);
    std::sort(guarded.begin() + 1, guarded.end() - 1, contourPointLess);
    return {guarded.begin() + 1, guarded.end() - 1};
}

}  // namespace Quorvane::UtilityFunctions
