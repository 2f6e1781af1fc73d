#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <opencv2/core.hpp>

#include "geometry/ContourGeometry.h"
#include "tests/support/RandomInput.h"

namespace Quorvane::UtilityFunctions {

using TestSupport::RandomInput;

namespace {

using Points = std::vector<cv::Point2f>;

TEST(SortContour, SortsByColumnThenRow) {
    const Points expected{{0, 5}, {1, 1}, {1, 2}};
    EXPECT_EQ(SortContour({{1, 2}, {1, 1}, {0, 5}}), expected);
}

TEST(SortContour, LeavesItsInputAlone) {
    const Points contour{{1, 2}, {1, 1}, {0, 5}};
    SortContour(contour);
    EXPECT_EQ(contour, (Points{{1, 2}, {1, 1}, {0, 5}}));
    EXPECT_TRUE(SortContour({}).empty());
}

TEST(SortContour, ToleranceHelpsOnlyThePointOfTheLargerColumn) {
    // Nearly the same column. The second point's row is the lesser one, so it counts as less although its column is the
    // larger one; the other way round, the first point is less by its column alone.
    const cv::Point2f a(1.0f, 5.0f);
    const cv::Point2f b(1.00005f, 2.0f);
    EXPECT_EQ(SortContour({a, b}), (Points{b, a}));
    EXPECT_EQ(SortContour({b, a}), (Points{a, b}));
    const cv::Point2f beyondTheTolerance(1.00015f, 2.0f);
    EXPECT_EQ(SortContour({a, beyondTheTolerance}), (Points{a, beyondTheTolerance}));
}

TEST(SortContour, KeepsAllPointsWhereTheOrderContradictsItself) {
    RandomInput random(44);
    const auto plainLess = [](const cv::Point2f& a, const cv::Point2f& b) {
        return a.x < b.x || (a.x == b.x && a.y < b.y);
    };
    for (int i = 0; i < 300; ++i) {
        Points contour;
        for (int n = random.Integer(0, 400); n > 0; --n) {
            contour.emplace_back(static_cast<float>(random.Integer(0, 20)) * 0.00004f,
                                 static_cast<float>(random.Integer(0, 5)));
        }
        Points sorted = SortContour(contour);
        std::sort(sorted.begin(), sorted.end(), plainLess);
        std::sort(contour.begin(), contour.end(), plainLess);
        ASSERT_EQ(sorted, contour) << "list " << i;
    }
}

TEST(SortContour, StaysInItsListWhereCoordinatesAreNoNumbers) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    const std::array<float, 5> values{-infinity, infinity, std::numeric_limits<float>::quiet_NaN(), 1.0f, 1.00005f};
    RandomInput random(48);
    for (int i = 0; i < 200; ++i) {
        Points contour;
        std::size_t endless = 0;
        for (int n = random.Integer(0, 200); n > 0; --n) {
            contour.emplace_back(values[static_cast<std::size_t>(random.Integer(0, 4))],
                                 values[static_cast<std::size_t>(random.Integer(0, 4))]);
            endless += std::isinf(contour.back().x) ? 1u : 0u;
        }
        const Points sorted = SortContour(contour);
        ASSERT_EQ(sorted.size(), contour.size());
        const auto count = std::count_if(sorted.begin(), sorted.end(), [](auto& p) { return std::isinf(p.x); });
        ASSERT_EQ(static_cast<std::size_t>(count), endless) << "list " << i;
    }
}

TEST(SortContour, SortsRandomPoints) {
    RandomInput random(45);
    for (int i = 0; i < 100; ++i) {
        Points contour;
        for (int n = random.Integer(0, 200); n > 0; --n) {
            contour.emplace_back(static_cast<float>(random.Integer(0, 30)), static_cast<float>(random.Integer(0, 30)));
        }
        const Points sorted = SortContour(contour);
        std::sort(contour.begin(), contour.end(),
                  [](const cv::Point2f& a, const cv::Point2f& b) { return a.x != b.x ? a.x < b.x : a.y < b.y; });
        ASSERT_EQ(sorted, contour) << "list " << i;
    }
}

}  // namespace
}  // namespace Quorvane::UtilityFunctions
