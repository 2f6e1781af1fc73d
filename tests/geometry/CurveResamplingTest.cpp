#include "geometry/CurveResampling.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <opencv2/core.hpp>

#include "tests/support/Matchers.h"

namespace Quorvane {

using testing::Contains;
using testing::ElementsAreArray;
using testing::Not;
using testing::SizeIs;
using UtilityFunctions::chooseCurveSampleCount;
using UtilityFunctions::meanDistanceToCurve;
using UtilityFunctions::removeCurvatureOutliers;
using UtilityFunctions::resampleCurveHermite;
using UtilityFunctions::smoothPoints;

namespace {

using Points = std::vector<cv::Point2f>;

Points Wave(int count) {
    Points points;
    for (int i = 0; i < count; ++i) {
        points.emplace_back(static_cast<float>(i), static_cast<float>(50.0 + 10.0 * std::sin(i / 8.0)));
    }
    return points;
}

TEST(RemoveCurvatureOutliers, DropsAWildPoint) {
    Points points = Wave(40);
    points[20].y += 9.0f;
    const Points kept = removeCurvatureOutliers(points, 3.0);
    EXPECT_THAT(kept, Not(Contains(points[20])));
    EXPECT_THAT(kept, Contains(points[5]));
}

/// Up and down by 1. The neighbours of point i + 1 are 2 * spacings[i] apart, so its curvature is 2 / spacings[i]^2.
Points Zigzag(const std::vector<float>& spacings) {
    Points points{{0, 0}, {0.5f, 1}};
    for (const float spacing : spacings) {
        const auto n = points.size();
        points.emplace_back(points[n - 2].x + 2.0f * spacing, static_cast<float>(n % 2));
    }
    return points;
}

TEST(RemoveCurvatureOutliers, ComparesWithTheMedianAndTheMedianDeviation) {
    // Curvatures of 0.5, 2, 8, 2 and 0.125: the median is 2, that of the deviations 1.5. The limit reaches 8 where the
    // factor is 6 / (1.4826 * 1.5) = 2.69796.
    const Points odd = Zigzag({1, 2, 1, 0.5f, 1, 4, 1});
    EXPECT_THAT(removeCurvatureOutliers(odd, 2.6979), testing::AllOf(SizeIs(8), Not(Contains(odd[4]))));
    EXPECT_THAT(removeCurvatureOutliers(odd, 2.6980), ElementsAreArray(odd));
    // 0.5, 2, 8 and 0.125: the upper ones of two middles are 2 and 1.875, and 6 / (1.4826 * 1.875) = 2.15837.
    const Points even = Zigzag({1, 2, 1, 0.5f, 4, 1});
    EXPECT_THAT(removeCurvatureOutliers(even, 2.1583), testing::AllOf(SizeIs(7), Not(Contains(even[4]))));
    EXPECT_THAT(removeCurvatureOutliers(even, 2.1584), ElementsAreArray(even));
}

TEST(RemoveCurvatureOutliers, KeepsAWildPointWhoseNeighboursCoincide) {
    Points points = Wave(40);
    points[20].y += 9.0f;
    points[21] = points[19];
    EXPECT_THAT(removeCurvatureOutliers(points, 3.0), Contains(points[20]));
    points[21].x += 0.0008f;
    EXPECT_THAT(removeCurvatureOutliers(points, 3.0), Not(Contains(points[20])));
}

TEST(RemoveCurvatureOutliers, KeepsTheTwoPointsAtEitherEnd) {
    Points points = Wave(40);
    points[1].y += 9.0f;
    points[0].y -= 9.0f;
    points[38].y += 9.0f;
    points[39].y -= 9.0f;
    const Points kept = removeCurvatureOutliers(points, 3.0);
    for (const std::size_t i : {0u, 1u, 38u, 39u}) EXPECT_THAT(kept, Contains(points[i])) << i;
}

TEST(RemoveCurvatureOutliers, ReturnsFewPointsAsTheyAre) {
    const Points points{{0, 0}, {1, 50}, {2, 0}, {3, 50}};
    EXPECT_THAT(removeCurvatureOutliers(points, 3.0), ElementsAreArray(points));
    EXPECT_THAT(removeCurvatureOutliers({}, 3.0), SizeIs(0));
}

TEST(RemoveCurvatureOutliers, KeepsPointsWithoutCurvature) {
    const Points same(9, cv::Point2f(4, 4));
    EXPECT_THAT(removeCurvatureOutliers(same, 3.0), ElementsAreArray(same));
    const float nan = std::numeric_limits<float>::quiet_NaN();
    Points broken = Wave(12);
    broken[6] = {nan, nan};
    EXPECT_THAT(removeCurvatureOutliers(broken, 3.0), SizeIs(testing::Ge(9u)));
}

TEST(RemoveCurvatureOutliers, KeepsAStraightLineWhole) {
    Points points;
    for (int i = 0; i < 30; ++i) points.emplace_back(static_cast<float>(i), 2.0f * static_cast<float>(i));
    EXPECT_THAT(removeCurvatureOutliers(points, 3.0), ElementsAreArray(points));
}

TEST(SmoothPoints, WeightsSevenNeighbours) {
    Points points(9, cv::Point2f(0, 0));
    points[4] = {1, 2};
    const double sum = 1.0 + 2.0 * (std::exp(-0.5) + std::exp(-2.0) + std::exp(-4.5));
    const Points smoothed = smoothPoints(points);
    ASSERT_THAT(smoothed, SizeIs(9));
    EXPECT_FLOAT_EQ(smoothed[4].x, static_cast<float>(1.0 / sum));
    EXPECT_FLOAT_EQ(smoothed[4].y, static_cast<float>(2.0 / sum));
    EXPECT_FLOAT_EQ(smoothed[3].x, static_cast<float>(std::exp(-0.5) / sum));
    // One step from the end two neighbours are missing, and the weights are those of the others.
    EXPECT_FLOAT_EQ(smoothed[7].x, static_cast<float>(std::exp(-4.5) / (sum - std::exp(-2.0) - std::exp(-4.5))));
    EXPECT_EQ(smoothed[0].x, 0.0f);
}

TEST(SmoothPoints, KeepsAConstant) {
    for (const cv::Point2f& p : smoothPoints(Points(6, cv::Point2f(3.5f, -2.0f)))) {
        EXPECT_THAT(p, TestSupport::NearPoint(cv::Point2f(3.5f, -2.0f), 1e-6));
    }
}

TEST(ChooseCurveSampleCount, FollowsLengthAndBend) {
    const auto polyline = [](double length, double bend) {
        const cv::Point2d corner(length / 2.0, 0.0);
        const cv::Point2d end = corner + length / 2.0 * cv::Point2d(std::cos(bend), std::sin(bend));
        return Points{{0, 0}, cv::Point2f(corner), cv::Point2f(end)};
    };
    EXPECT_EQ(chooseCurveSampleCount(polyline(200.0, 0.0), 3), 100);
    EXPECT_EQ(chooseCurveSampleCount(polyline(299.0, 0.3), 3), 200);
    EXPECT_EQ(chooseCurveSampleCount(polyline(199.5, 0.8), 3), 200);
    // The bends at which the spacing changes are a twelfth and a quarter of half a turn: 0.2618 and 0.7854.
    EXPECT_EQ(chooseCurveSampleCount(polyline(299.5, 0.261), 3), 150);
    EXPECT_EQ(chooseCurveSampleCount(polyline(299.5, 0.263), 3), 200);
    EXPECT_EQ(chooseCurveSampleCount(polyline(299.5, 0.785), 3), 200);
    EXPECT_EQ(chooseCurveSampleCount(polyline(299.5, 0.786), 3), 300);
    EXPECT_EQ(chooseCurveSampleCount(polyline(10.0, 0.0), 3), 40);
    EXPECT_EQ(chooseCurveSampleCount(polyline(10.0, 0.0), 0), 20);
    EXPECT_EQ(chooseCurveSampleCount(polyline(9000.0, 0.0), 3), 500);
    EXPECT_EQ(chooseCurveSampleCount(polyline(9000.0, 0.0), 99), 500);
}

TEST(ChooseCurveSampleCount, WrapsTheChangeOfDirection) {
    // From almost pi to almost -pi: a slight bend, not one of a whole turn.
    EXPECT_EQ(chooseCurveSampleCount({{300, 0}, {150, 5}, {0, 0}}, 3), 151);
}

TEST(ChooseCurveSampleCount, TakesAnyPoints) {
    EXPECT_EQ(chooseCurveSampleCount({}, 3), 20);
    EXPECT_EQ(chooseCurveSampleCount({{0, 0}, {900, 0}}, 3), 20);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(chooseCurveSampleCount({{0, 0}, {nan, 1}, {2, 2}}, 3), 40);
    EXPECT_EQ(chooseCurveSampleCount({{0, 0}, {1e30f, 1}, {2, 2}}, 3), 500);
}

TEST(ResampleCurveHermite, PassesThroughThePointsAtTheirPlaceAlongIt) {
    const Points points{{0, 0}, {10, 0}, {20, 0}, {30, 0}};
    const Points curve = resampleCurveHermite(points, 7);
    ASSERT_THAT(curve, SizeIs(7));
    for (int k = 0; k < 7; ++k) {
        EXPECT_THAT(curve[static_cast<std::size_t>(k)],
                    TestSupport::NearPoint(cv::Point2f(5.0f * static_cast<float>(k), 0), 1e-5));
    }
}

TEST(ResampleCurveHermite, DoesNotScaleItsTangents) {
    // Segments of 10 and 30: the tangent at the middle point is half of (40, 0), for both segments.
    const Points curve = resampleCurveHermite({{0, 0}, {10, 0}, {40, 0}}, 9);
    ASSERT_THAT(curve, SizeIs(9));
    // At 5 of 40, half way along the first segment: 0.125 m0 + 0.5 p1 - 0.125 m1 = 1.25 + 5 - 2.5.
    EXPECT_NEAR(curve[1].x, 3.75, 1e-5);
    EXPECT_NEAR(curve[2].x, 10.0, 1e-5);
}

TEST(ResampleCurveHermite, ReturnsOnePointAsItIs) {
    EXPECT_THAT(resampleCurveHermite({{3, 4}}, 40), ElementsAreArray(Points{{3, 4}}));
    EXPECT_THAT(resampleCurveHermite({}, 40), SizeIs(0));
}

TEST(ResampleCurveHermite, HasNoPlaceOnALineWithoutLength) {
    const Points curve = resampleCurveHermite({{3, 4}, {3, 4}, {3, 4}}, 40);
    ASSERT_THAT(curve, SizeIs(40));
    for (const cv::Point2f& point : curve) EXPECT_TRUE(std::isnan(point.x));
}

TEST(MeanDistanceToCurve, TakesTheNearestPoint) {
    EXPECT_DOUBLE_EQ(meanDistanceToCurve({{0, 3}, {10, 4}}, {{0, 0}, {10, 0}}), 3.5);
    EXPECT_DOUBLE_EQ(meanDistanceToCurve({{3, 4}}, {{0, 0}, {100, 0}}), 5.0);
}

TEST(MeanDistanceToCurve, BeginsWithTheLargestDouble) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(meanDistanceToCurve({{0, 0}}, {{nan, nan}}), std::numeric_limits<double>::max());
}

}  // namespace
}  // namespace Quorvane
