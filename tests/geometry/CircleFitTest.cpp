#include "geometry/CircleFit.h"

#include <gtest/gtest.h>

#include <opencv2/core/cvdef.h>
#include <cmath>

#include "tests/support/Matchers.h"

namespace Quorvane {

using UtilityFunctions::fitCircleAlgebraic;

namespace {

std::vector<cv::Point2f> PointsOfCircle(const cv::Point2d& center, double radius, int count) {
    std::vector<cv::Point2f> points;
    for (int i = 0; i < count; ++i) {
        const double theta = 2.0 * CV_PI * i / count;
        points.emplace_back(center + radius * cv::Point2d(std::cos(theta), std::sin(theta)));
    }
    return points;
}

TEST(FitCircleAlgebraic, FindsAnExactCircle) {
    cv::Point2f center;
    double radius = 0.0;
    double score = 0.0;
    EXPECT_TRUE(fitCircleAlgebraic(PointsOfCircle({320.25, 240.5}, 77.0, 50), center, radius, score));
    EXPECT_THAT(center, TestSupport::NearPoint(cv::Point2f(320.25f, 240.5f), 1e-4));
    EXPECT_NEAR(radius, 77.0, 1e-4);
    EXPECT_NEAR(score, 1.0, 1e-5);
    EXPECT_EQ(radius, static_cast<float>(radius)) << "the radius has the precision of a float";
}

TEST(FitCircleAlgebraic, SquaresTheCentreInFloat) {
    // Deliberate, and hosts see it far from the origin: of 3000.5 squared, 9003000.25, a float keeps 9003000. Twice
    // that quarter is missing from the squared radius of 100.
    std::vector<cv::Point2f> points;
    for (const cv::Point2f& d : {cv::Point2f(10, 0), cv::Point2f(8, 6), cv::Point2f(6, 8), cv::Point2f(0, 10)}) {
        for (const float sign : {-1.0f, 1.0f}) {
            points.emplace_back(3000.5f + d.x, 3000.5f + sign * d.y);
            points.emplace_back(3000.5f - d.x, 3000.5f + sign * d.y);
        }
    }
    cv::Point2f center;
    double radius = 0.0;
    double score = 0.0;
    EXPECT_TRUE(fitCircleAlgebraic(points, center, radius, score));
    EXPECT_EQ(center, cv::Point2f(3000.5f, 3000.5f));
    EXPECT_NEAR(radius, std::sqrt(99.5), 1e-4);
    EXPECT_NEAR(score, 1.0, 1e-4) << "all points are as far from the centre";
}

TEST(FitCircleAlgebraic, NeedsThreePoints) {
    cv::Point2f center(1, 2);
    double radius = 3.0;
    double score = 4.0;
    EXPECT_FALSE(fitCircleAlgebraic({}, center, radius, score));
    EXPECT_FALSE(fitCircleAlgebraic({{0, 0}, {1, 1}}, center, radius, score));
    EXPECT_EQ(center, cv::Point2f(1, 2));
    EXPECT_EQ(radius, 3.0);
    EXPECT_EQ(score, 4.0);
    EXPECT_TRUE(fitCircleAlgebraic({{0, 0}, {10, 0}, {0, 10}}, center, radius, score));
    EXPECT_THAT(center, TestSupport::NearPoint(cv::Point2f(5, 5), 1e-4));
    EXPECT_NEAR(radius, std::sqrt(50.0), 1e-4);
}

TEST(FitCircleAlgebraic, KeepsAWildPointAndScoresLower) {
    std::vector<cv::Point2f> points = PointsOfCircle({100, 100}, 50.0, 36);
    points[0] = {180, 100};
    cv::Point2f center;
    double radius = 0.0;
    double score = 0.0;
    EXPECT_TRUE(fitCircleAlgebraic(points, center, radius, score));
    EXPECT_GT(center.x, 101.0f);
    EXPECT_LT(score, 0.95);
}

TEST(FitCircleAlgebraic, RefusesAScatterButDeliversIt) {
    // Four corners around a heap of points: the squared radius is the mean of the squared distances, 4 * 50 / 404.
    std::vector<cv::Point2f> scatter(400, cv::Point2f(5, 5));
    scatter.insert(scatter.end(), {{0, 0}, {10, 0}, {0, 10}, {10, 10}});
    cv::Point2f center(-1, -1);
    double radius = -1.0;
    double score = -1.0;
    EXPECT_FALSE(fitCircleAlgebraic(scatter, center, radius, score));
    EXPECT_THAT(center, TestSupport::NearPoint(cv::Point2f(5, 5), 1e-4));
    EXPECT_NEAR(radius, std::sqrt(200.0 / 404.0), 1e-4);
    EXPECT_NEAR(score, 0.2, 0.02);
}

}  // namespace
}  // namespace Quorvane
