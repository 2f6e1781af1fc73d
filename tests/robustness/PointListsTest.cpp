// Lists of points of every kind through the geometry and the calibrator.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <iostream>
#include <limits>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "calibration/CameraCalibrator.h"
#include "framework/AlgorithmFactory.h"
#include "geometry/UtilityFunctions.h"
#include "tests/robustness/OutcomeTable.h"
#include "tests/support/CapturedStream.h"
#include "tests/support/RandomInput.h"

namespace Quorvane::Robustness {
namespace {

using namespace UtilityFunctions;
using CameraCalibration::CameraCalibrator;
using Points = std::vector<cv::Point2f>;

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinite = std::numeric_limits<float>::infinity();
constexpr float largest = std::numeric_limits<float>::max();

struct PointList {
    enum class Kind { Empty, One, Two, Good, Equal, Collinear, Many, Huge, Tiny, NotNumbers, Infinite, Mixed };
    Kind kind;
    const char* name;
    Points points;

    bool IsFinite() const { return kind < Kind::NotNumbers; }
    bool Is(std::initializer_list<Kind> kinds) const {
        return std::find(kinds.begin(), kinds.end(), kind) != kinds.end();
    }
};
using Kind = PointList::Kind;

Points RandomPoints(std::size_t count, double most) {
    TestSupport::RandomInput random(3);
    Points points(count);
    for (cv::Point2f& point : points) {
        point = {static_cast<float>(random.Real(-most, most)), static_cast<float>(random.Real(-most, most))};
    }
    return points;
}

std::vector<PointList> PointLists() {
    Points collinear;
    for (int i = 0; i < 8; ++i) collinear.emplace_back(static_cast<float>(i), static_cast<float>(2 * i));
    return {
        {Kind::Empty, "none", {}},
        {Kind::One, "one", {{3.0f, 4.0f}}},
        {Kind::Two, "two", {{3.0f, 4.0f}, {6.0f, 8.0f}}},
        {Kind::Good, "ten", RandomPoints(10, 100.0)},
        {Kind::Equal, "ten equal ones", Points(10, {5.0f, 6.0f})},
        {Kind::Collinear, "eight in a line", collinear},
        {Kind::Many, "two thousand", RandomPoints(2000, 1000.0)},
        {Kind::Huge,
         "huge ones",
         {{largest, -largest},
          {-largest, largest},
          {largest, largest},
          {1e30f, -1e30f},
          {-1e30f, 0.0f},
          {0.0f, -largest},
          {1e20f, 1e25f}}},
        {Kind::Tiny,
         "tiny ones",
         {{1e-38f, -1e-38f},
          {1e-40f, 0.0f},
          {0.0f, -0.0f},
          {-1e-45f, 1e-45f},
          {1e-30f, 1e-35f},
          {-1e-30f, 0.0f},
          {0.0f, 1e-41f}}},
        {Kind::NotNumbers, "not-a-numbers", Points(8, {notANumber, notANumber})},
        {Kind::Infinite,
         "infinities",
         {{infinite, 0.0f},
          {-infinite, 1.0f},
          {infinite, infinite},
          {2.0f, -infinite},
          {infinite, 0.0f},
          {-infinite, 1.0f},
          {infinite, infinite}}},
        {Kind::Mixed,
         "all of them",
         {{1.0f, 2.0f},
          {notANumber, 3.0f},
          {infinite, -infinite},
          {-5.0f, notANumber},
          {4.0f, 8.0f},
          {1e-40f, largest},
          {7.0f, -9.0f}}},
    };
}

struct ListOperation {
    const char* name;
    std::function<std::string(const Points&)> tried;
    std::function<std::string(const PointList&)> told;
};

void TryOnAllLists(const std::vector<ListOperation>& operations) {
    for (const ListOperation& operation : operations) {
        for (const PointList& list : PointLists()) {
            const Points given = list.points;
            const TestSupport::CapturedStream errors(std::cerr);
            const std::string outcome = OutcomeOf([&] { return operation.tried(given); });
            OutcomeTable::Instance().Count(operation.name, list.name, outcome, operation.told(list));
        }
    }
}

std::string NumberText(double value) {
    if (std::isnan(value)) return "not a number";
    return std::isinf(value) ? "infinite" : value == 0.0 ? "zero" : "a number";
}

/// Floats that grow beyond all floats on the way.
bool Overflows(const PointList& list) { return list.kind == Kind::Huge; }

std::string PerimeterTold(const PointList& list) {
    // The difference of two equal infinities is not a number.
    if (!list.IsFinite()) return "not a number";
    if (Overflows(list)) return "infinite";
    if (list.Is({Kind::Empty, Kind::One, Kind::Equal})) return "zero";
    // Distances below the least float vanish, but 1e-30 is more than that; its square is a double.
    return "a number";
}

std::string AverageAngleTold(const PointList& list) {
    if (list.Is({Kind::Empty}) || !list.IsFinite()) return "not a number";
    return list.Is({Kind::One, Kind::Equal}) ? "zero" : "a number";
}

std::string TryFarthestPair(const Points& points) {
    cv::Point2f first(-1.0f, -2.0f);
    cv::Point2f second(-3.0f, -4.0f);
    float distance = -5.0f;
    FindFarthestPairPointInContour(points, first, second, distance);
    const bool untouched = first == cv::Point2f(-1.0f, -2.0f) && second == cv::Point2f(-3.0f, -4.0f);
    return NumberText(static_cast<double>(distance)) + (untouched ? ", no pair" : ", a pair");
}

std::string FarthestPairTold(const PointList& list) {
    if (list.Is({Kind::Empty, Kind::One, Kind::Equal, Kind::NotNumbers})) return "zero, no pair";
    if (Overflows(list) || list.Is({Kind::Infinite, Kind::Mixed})) return "infinite, a pair";
    return "a number, a pair";
}

std::string TryRectangle(const Points& points) {
    const cv::RotatedRect rectangle = GetMinAreaRectAtAngle(points, 30.0f);
    EXPECT_EQ(rectangle.angle, 30.0f);
    if (rectangle.size.width == 0.0f && rectangle.size.height == 0.0f) return "nothing";
    const bool isFinite = std::isfinite(rectangle.center.x) && std::isfinite(rectangle.size.width);
    return isFinite ? "a rectangle" : "no numbers";
}

std::string TryBox(const Points& points) {
    const cv::Rect2f box = GetMinimumBoundingRectangle(points);
    const bool isFinite =
        std::isfinite(box.x) && std::isfinite(box.y) && std::isfinite(box.width) && std::isfinite(box.height);
    return isFinite ? "finite" : "not finite";
}

/// Every point is still there, once.
std::string TrySort(const Points& points) {
    Points sorted = SortContour(points);
    if (sorted.size() != points.size()) return "another count";
    double sum = 0.0;
    for (const cv::Point2f& point : points) sum += std::isfinite(point.x) ? static_cast<double>(point.x) / 1e9 : 1.0;
    for (const cv::Point2f& point : sorted) sum -= std::isfinite(point.x) ? static_cast<double>(point.x) / 1e9 : 1.0;
    return std::abs(sum) <= 1e-6 * 1e30 ? "the same points" : "other points";
}

std::string TryAlignment(const Points& points, const Points& other) {
    cv::Point2f offset(-1.0f, -1.0f);
    cv::Point2f center(-1.0f, -1.0f);
    double angle = -1.0;
    AlignPoints(points, other, offset, center, angle);
    return "offset " + NumberText(static_cast<double>(offset.x)) + ", angle " + NumberText(angle);
}

CameraCalibrator Calibrated() {
    const Points image{{0, 0}, {10, 0}, {0, 10}, {10, 10}, {5, 5}, {20, 10}, {10, 20}};
    Points machine;
    for (const cv::Point2f& point : image) machine.push_back(point * 2.0f);
    CameraCalibrator calibrator;
    double error = 0.0;
    EXPECT_TRUE(calibrator.Calibrate(image, machine, 20, 20, error));
    return calibrator;
}

std::string TryCalibrate(const Points& image, const Points& machine) {
    CameraCalibrator calibrator;
    double error = -7.0;
    if (!calibrator.Calibrate(image, machine, 640, 480, error)) {
        return error == -7.0 && !calibrator.IsCalibrateVaild() ? "false" : "false, with changed outputs";
    }
    return calibrator.IsCalibrateVaild() && error >= 0.0 ? "true" : "a wrong state";
}

TEST(PointListMatrix, Geometry) {
    TryOnAllLists({
        {"CalPerimeterOfContour", [](const Points& p) { return NumberText(CalPerimeterOfContour(p)); }, PerimeterTold},
        {"CalculateAverageAngle",
         [](const Points& p) { return NumberText(static_cast<double>(CalculateAverageAngle(p))); }, AverageAngleTold},
        {"FindFarthestPairPointInContour", TryFarthestPair, FarthestPairTold},
        {"GetMinAreaRectAtAngle", TryRectangle,
         [](const PointList& list) { return list.kind == Kind::Empty ? "nothing" : "a rectangle"; }},
        {"GetMinimumBoundingRectangle", TryBox,
         [](const PointList& list) {
             // Without any number the box is turned inside out, from the largest float to the least.
             const bool isTurned = list.Is({Kind::Empty, Kind::NotNumbers});
             return isTurned || list.Is({Kind::Huge, Kind::Infinite, Kind::Mixed}) ? "not finite" : "finite";
         }},
        {"SortContour", TrySort, [](const PointList&) { return "the same points"; }},
    });
}

TEST(PointListMatrix, Alignment) {
    const Points three{{0.0f, 0.0f}, {4.0f, 0.0f}, {4.0f, 3.0f}};
    TryOnAllLists({
        {"AlignPoints, to itself turned",
         [](const Points& p) {
             Points turned = p;
             for (cv::Point2f& point : turned) point = {-point.y, point.x + 1.0f};
             return TryAlignment(p, turned);
         },
         [](const PointList& list) -> std::string {
             if (list.kind == Kind::Empty) return "offset not a number, angle zero";
             if (list.kind == Kind::One) return "offset a number, angle zero";
             if (!list.IsFinite()) return "offset not a number, angle not a number";
             // The sums of its products are infinite.
             if (list.kind == Kind::Huge) return "offset a number, angle not a number";
             return "offset a number, angle a number";
         }},
        {"AlignPoints, unequal lists", [&](const Points& p) { return TryAlignment(p, three); },
         [](const PointList& list) -> std::string {
             const bool hasCenter = list.kind != Kind::Empty && list.IsFinite();
             return hasCenter ? "offset a number, angle zero" : "offset not a number, angle zero";
         }},
    });
}

TEST(PointListMatrix, Calibrator) {
    CameraCalibrator calibrated = Calibrated();
    TryOnAllLists({
        {"Calibrate, unequal lists",
         [](const Points& p) {
             Points other = p;
             other.emplace_back(1.0f, 1.0f);
             return TryCalibrate(p, other);
         },
         [](const PointList&) { return "false"; }},
        {"Calibrate, to twice the size",
         [](const Points& p) {
             Points machine;
             for (const cv::Point2f& point : p) machine.push_back(point * 2.0f);
             return TryCalibrate(p, machine);
         },
         [](const PointList& list) {
             return list.Is({Kind::Good, Kind::Many}) ? "true" : "false";
         }},
        {"CalcMaxError, unequal lists",
         [&](const Points& p) {
             Points other = p;
             other.emplace_back(1.0f, 1.0f);
             return std::to_string(calibrated.CalcMaxError(p, other));
         },
         [](const PointList&) { return "-1.000000"; }},
        {"CalcMaxError", [&](const Points& p) { return NumberText(calibrated.CalcMaxError(p, p)); },
         [](const PointList& list) {
             // What is not a number is never the largest.
             return list.Is({Kind::NotNumbers, Kind::Infinite}) ? "zero" : "a number";
         }},
        {"ImageToMachine",
         [&](const Points& p) {
             for (const cv::Point2f& point : p) {
                 calibrated.ImageToMachine(point);
                 calibrated.MachineToImage(point);
                 calibrated.WarpPerspectivePoint(point, 3);
             }
             return std::string("points");
         },
         [](const PointList&) { return "points"; }},
    });
}

}  // namespace
}  // namespace Quorvane::Robustness
