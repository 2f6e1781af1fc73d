// The geometry with numbers that hosts hand in by mistake.

#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "geometry/UtilityFunctions.h"
#include "tests/robustness/NumberMatrix.h"

namespace Quorvane::Robustness {
namespace {

using namespace UtilityFunctions;

/// Dark on the left of 14.5, light on the right.
cv::Mat Step() {
    cv::Mat picture(23, 31, CV_8UC1, cv::Scalar(20));
    picture.colRange(15, 31).setTo(120);
    return picture;
}

/// A field of one colour with a dark speck.
cv::Mat Speck() {
    cv::Mat picture(40, 40, CV_8UC3, cv::Scalar(60, 120, 180));
    cv::rectangle(picture, {18, 18}, {21, 21}, cv::Scalar(10, 10, 10), cv::FILLED);
    return picture;
}

struct LineCall {
    cv::Point2f center{15.0f, 11.0f};
    double width = 20.0;
    double height = 16.0;
    double sigma = 1.0;
    double threshold = 30.0;
    double step = 0.5;

    std::string Run() const {
        Line line(1.0f, 2.0f);
        MeasureLine(Step(), center, width, height, line, EdgePolarity::Positive, SearchDirection::LeftToRight, sigma,
                    threshold, step);
        if (line.toVec4f() == Line().toVec4f() && line.b == -1.0f) return "the default line";
        return std::abs(line.linePoint.x - 14.5f) < 1.5f && std::abs(line.direction.x) < 1e-3f ? "the edge"
                                                                                               : "another line";
    }
};

struct CircleCall {
    cv::Point2f center{10.0f, 11.0f};
    double radius = 9.0;
    double sigma = 1.0;
    double threshold = 30.0;
    double angleStep = 10.0;

    std::string Run() const {
        cv::Point2f found(-5.0f, -6.0f);
        double foundRadius = -7.0;
        double score = -8.0;
        MeasureCircle(Step(), center, radius, found, foundRadius, score, EdgePolarity::Positive,
                      SearchDirection::Outward, sigma, threshold, angleStep);
        const bool untouched = found == cv::Point2f(-5.0f, -6.0f) && foundRadius == -7.0 && score == -8.0;
        return untouched ? "untouched outputs" : "a circle";
    }
};

template <typename Call, typename Set>
std::function<std::string(double)> With(const Set& set) {
    return [set](double number) {
        Call call;
        set(call, number);
        return call.Run();
    };
}

std::string EdgeIfEveryday(double number) { return IsEveryday(number) ? "the edge" : "the default line"; }
std::string CircleIfEveryday(double number) { return IsEveryday(number) ? "a circle" : "untouched outputs"; }

TEST(NumberMatrix, MeasureLine) {
    TryWithAllNumbers({
        {"MeasureLine, centre x",
         With<LineCall>([](LineCall& call, double v) { call.center.x += static_cast<float>(v); }), EdgeIfEveryday},
        {"MeasureLine, centre y",
         With<LineCall>([](LineCall& call, double v) { call.center.y += static_cast<float>(v); }), EdgeIfEveryday},
        {"MeasureLine, width", With<LineCall>([](LineCall& call, double v) { call.width += v; }), EdgeIfEveryday},
        {"MeasureLine, height", With<LineCall>([](LineCall& call, double v) { call.height += v; }), EdgeIfEveryday},
        {"MeasureLine, sigma", With<LineCall>([](LineCall& call, double v) { call.sigma = v; }),
         // It is limited to what the caliper holds. A filter half as wide as the caliper turns beside the edge first.
         [](double v) { return v == 3.0 ? "another line" : "the edge"; }},
        {"MeasureLine, threshold", With<LineCall>([](LineCall& call, double v) { call.threshold = v; }),
         [](double v) { return v <= 3.0 ? "the edge" : "the default line"; }},
        {"MeasureLine, step", With<LineCall>([](LineCall& call, double v) { call.step = v; }),
         // A step that is nearly zero asks for more calipers than can be counted.
         [](double v) { return v >= 0.5 && v <= 3.0 ? "the edge" : "the default line"; }},
    });
}

TEST(NumberMatrix, MeasureCircle) {
    TryWithAllNumbers({
        {"MeasureCircle, centre x",
         With<CircleCall>([](CircleCall& call, double v) { call.center.x += static_cast<float>(v); }),
         CircleIfEveryday},
        {"MeasureCircle, centre y",
         With<CircleCall>([](CircleCall& call, double v) { call.center.y += static_cast<float>(v); }),
         CircleIfEveryday},
        {"MeasureCircle, radius", With<CircleCall>([](CircleCall& call, double v) { call.radius += v; }),
         CircleIfEveryday},
        {"MeasureCircle, sigma", With<CircleCall>([](CircleCall& call, double v) { call.sigma = v; }),
         [](double) { return "a circle"; }},
        {"MeasureCircle, threshold", With<CircleCall>([](CircleCall& call, double v) { call.threshold = v; }),
         [](double v) { return v <= 3.0 ? "a circle" : "untouched outputs"; }},
        {"MeasureCircle, angle step", With<CircleCall>([](CircleCall& call, double v) { call.angleStep = v; }),
         // As a float, what is nearly zero is zero.
         [](double v) { return v >= 0.5 && v <= 3.0 ? "a circle" : "untouched outputs"; }},
    });
}

/// The rectangle begins at the truncated centre minus two, at 0 at the least.
std::string CutTold(double center, double extent) {
    const double begin = std::max(std::trunc(center) - 2.0, 0.0);
    return center < 0.0 || begin < extent ? "a crop" : "cv::Exception";
}

TEST(NumberMatrix, ContoursAndLines) {
    const std::vector<cv::Point2f> points{{0.0f, 0.0f}, {9.0f, 1.0f}, {5.0f, 8.0f}};
    TryWithAllNumbers({
        {"CutImageBasePoint, centre x",
         [](double v) {
             const cv::Mat cut = CutImageBasePoint(Step(), {static_cast<float>(v), 8.0f}, 4, 4, false);
             return std::string(cut.empty() ? "nothing" : "a crop");
         },
         [](double v) { return CutTold(v, 31.0); }},
        {"GetMinAreaRectAtAngle, angle",
         [&](double v) {
             const float angle = static_cast<float>(v);
             const cv::RotatedRect rectangle = GetMinAreaRectAtAngle(points, angle);
             return std::string(rectangle.size.width > 0.0f ? "a rectangle" : "nothing");
         },
         [](double) { return "a rectangle"; }},
        {"CalculateExpansionHomography, scale",
         [](double v) {
             const cv::Mat expanded = CalculateExpansionHomography(cv::Mat::eye(3, 3, CV_64F), v);
             return std::string(expanded.at<double>(2, 2) == 1.0 ? "a homography" : "another matrix");
         },
         [](double) { return "a homography"; }},
        {"Line, every form",
         [](double v) {
             const auto f = static_cast<float>(v);
             const Line lines[] = {Line(f, 1.0f),       Line(1.0f, f),           Line({f, 1.0f}, {2.0f, 3.0f}),
                                   Line(f, 1.0f, 2.0f), Line(1.0f, 2.0f, f),     Line({1.0f, 2.0f}, {f, f}),
                                   Line(0.0f, f, 0.0f), Line({f, 0.0f, 0.0f, f})};
             for (const Line& line : lines) {
                 cv::Point2f first;
                 cv::Point2f second;
                 line.getEndPoints(first, second, f);
                 line.distanceToPoint({f, f});
                 if (line.getIntersectionWithImage({640, 480}).size() > 4) return std::string("too many points");
                 if (line.toString().rfind(line.isVertical ? "Vertical line: x = " : "Line: y = ", 0) != 0) {
                     return std::string("another text");
                 }
             }
             return std::string("texts");
         },
         [](double) { return "texts"; }},
        {"computeIntersection, epsilon",
         [](double v) {
             cv::Point2f point(-1.0f, -1.0f);
             const bool found =
                 computeIntersection(Line(0.0f, 1.0f, 0.0f), Line(1.0f, 0.0f, -3.0f), point, static_cast<float>(v));
             if (!found) return std::string(point == cv::Point2f(-1.0f, -1.0f) ? "none" : "a touched point");
             return std::string("a point");
         },
         // The determinant is 1, and what is not a number is not above it.
         [](double v) { return v > 1.0 ? "none" : "a point"; }},
    });
}

TEST(NumberMatrix, GeometryIntegers) {
    constexpr int most = 1 << 20;
    TryWithAllIntegers({
        {"CutImageBasePoint, width",
         [](int v) {
             const cv::Mat cut = CutImageBasePoint(Step(), {8.0f, 8.0f}, v, 4, false);
             return std::string(cut.empty() ? "nothing" : "a crop");
         },
         [](int v) { return v < 0    ? "cv::Exception"
                            : v == 0 ? "nothing"
                                     : "a crop"; }},
        {"CutImageBasePoint, height, size kept",
         [](int v) {
             const cv::Mat cut = CutImageBasePoint(Step(), {8.0f, 8.0f}, 4, v, true);
             return std::string(cut.size() == cv::Size(31, 23) ? "a crop" : "another size");
         },
         [](int v) { return v < 0 ? "cv::Exception" : "a crop"; }},
        {"GetRotateRectConner, index",
         [](int v) {
             const cv::Point2f corner = GetRotateRectConner({{5.0f, 5.0f}, {4.0f, 2.0f}, 0.0f}, v);
             return std::string(std::abs(corner.x - 5.0f) == 2.0f ? "a corner" : "no corner");
         },
         [](int) { return "a corner"; }},
        {"ApplySketchFilter, intensity",
         [](int v) {
             cv::Mat result;
             ApplySketchFilter(Step(), result, v);
             return std::string(result.size() == cv::Size(31, 23) ? "a sketch" : "nothing");
         },
         [](int) { return "a sketch"; }},
        {"ThresholdAndFindAllRegionCenter, lower",
         [](int v) {
             std::vector<cv::Mat> regions;
             std::vector<cv::Point2f> centers;
             ThresholdAndFindAllRegionCenter(Step(), v, 130, regions, centers);
             return std::to_string(regions.size());
         },
         [](int v) { return v <= 120 ? "1" : "0"; }},
        {"ThresholdAndFindAllRegionCenter, upper",
         [](int v) {
             std::vector<cv::Mat> regions;
             std::vector<cv::Point2f> centers;
             ThresholdAndFindAllRegionCenter(Step(), 10, v, regions, centers);
             return std::to_string(regions.size());
         },
         [](int v) { return v >= 20 ? "1" : "0"; }},
        {"IsMatChanged_HammingDistance, threshold",
         [](int v) { return std::to_string(IsMatChanged_HammingDistance(Step(), Step(), v)); },
         [](int v) { return v < 0 ? "1" : "0"; }},
        {"fillHolesMorphologicalEnhanced, area limit",
         [](int v) { return std::to_string(fillHolesMorphologicalEnhanced(Speck(), 5.0, v, 3, 1).size().area()); },
         [](int) { return "1600"; }},
        {"fillHolesMorphologicalEnhanced, closing radius",
         [](int v) { return std::to_string(fillHolesMorphologicalEnhanced(Speck(), 5.0, 100, v, 1).size().area()); },
         // A disc that no memory holds is OpenCV's to refuse.
         [most](int v) { return v < 0 || v > most ? "cv::Exception" : "1600"; }},
        {"fillHolesMorphologicalEnhanced, widening radius",
         [](int v) { return std::to_string(fillHolesMorphologicalEnhanced(Speck(), 5.0, 100, 5, v).size().area()); },
         // The speck is wide against -1, and against nothing else below zero.
         [](int v) { return v == -1 ? "cv::Exception" : "1600"; }},
    });
    TryWithAllNumbers({
        {"fillHolesMorphologicalEnhanced, tolerance",
         [](double v) { return std::to_string(fillHolesMorphologicalEnhanced(Speck(), v, 100, 3, 1).size().area()); },
         [](double) { return "1600"; }},
    });
}

}  // namespace
}  // namespace Quorvane::Robustness
