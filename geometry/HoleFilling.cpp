#include <algorithm>
#include <cstdint>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "geometry/ColourRegions.h"
#include "geometry/ImageOperators.h"

namespace Quorvane::UtilityFunctions {

namespace {

using Contour = std::vector<cv::Point>;

/// The mean colour around a hole is taken over its box and this many pixels on each side.
constexpr int surroundings = 10;

cv::Mat EllipseKernel(int radius) {
    const int side = cv::saturate_cast<int>(2 * static_cast<std::int64_t>(radius) + 1);
    return cv::getStructuringElement(cv::MORPH_ELLIPSE, cv::Size(side, side), cv::Point(radius, radius));
}

cv::Mat Closed(const cv::Mat& mask, int radius) {
    cv::Mat closed;
    cv::morphologyEx(mask, closed, cv::MORPH_CLOSE, EllipseKernel(radius), cv::Point(radius, radius), 1,
                     cv::BORDER_CONSTANT, cv::morphologyDefaultBorderValue());
    return closed;
}

std::vector<Contour> OuterContours(const cv::Mat& mask) {
    std::vector<Contour> contours;
    cv::findContours(mask, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
    return contours;
}

cv::Rect WithSurroundings(const cv::Rect& box, const cv::Size& limits) {
    const int x = std::max(box.x - surroundings, 0);
    const int y = std::max(box.y - surroundings, 0);
    // The size counts from the limited corner, so a hole near the left or top sees farther to the right or bottom.
    return {x, y, std::min(box.width + 2 * surroundings, limits.width - x),
            std::min(box.height + 2 * surroundings, limits.height - y)};
}

Contour Shifted(Contour contour, const cv::Point& shift) {
    for (cv::Point& point : contour) point += shift;
    return contour;
}

/// The outline of the contour's area, widened by a disc.
Contour expandContour(const Contour& contour, int pixels) {
    if (contour.empty()) return contour;
    const cv::Rect box = cv::boundingRect(contour);
    const cv::Point toCanvas(pixels - box.x, pixels - box.y);
    cv::Mat canvas = cv::Mat::zeros(box.height + 2 * pixels, box.width + 2 * pixels, CV_8UC1);
    cv::drawContours(canvas, std::vector<Contour>{Shifted(contour, toCanvas)}, 0, cv::Scalar(255), cv::FILLED);
    cv::dilate(canvas, canvas, EllipseKernel(pixels), cv::Point(pixels, pixels), 1, cv::BORDER_CONSTANT,
               cv::morphologyDefaultBorderValue());
    const std::vector<Contour> widened = OuterContours(canvas);
    return widened.empty() ? contour : Shifted(widened.front(), -toCanvas);
}

}  // namespace

cv::Mat fillHolesMorphologicalEnhanced(const cv::Mat& source, double colorTolerance, int areaLimit, int closeRadius,
                                       int expandRadius) {
    cv::Mat result = source.clone();
    if (source.empty()) return result;
    CV_Assert(source.dims <= 2);
    cv::Mat lab;
    cv::cvtColor(source, lab, cv::COLOR_BGR2Lab);
    const cv::Mat regions = LargeColourRegions(lab, colorTolerance, areaLimit);
    cv::Mat holes;
    cv::subtract(Closed(regions, closeRadius), regions, holes);
    for (const Contour& hole : OuterContours(holes)) {
        const double area = cv::contourArea(hole);
        if (area >= areaLimit) continue;
        const cv::Rect around = WithSurroundings(cv::boundingRect(hole), source.size());
        const cv::Scalar colour = cv::mean(result(around), regions(around));
        const bool isWide = area > 2.0 * expandRadius * expandRadius;
        const std::vector<Contour> painted{isWide ? expandContour(hole, expandRadius) : hole};
        cv::drawContours(result, painted, 0, colour, cv::FILLED, cv::LINE_8);
    }
    return result;
}

}  // namespace Quorvane::UtilityFunctions
