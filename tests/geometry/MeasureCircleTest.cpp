#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <opencv2/core.hpp>
#include <stdexcept>

#include "geometry/EdgeCaliper.h"
#include "geometry/UtilityFunctions.h"
#include "tests/support/Matchers.h"
#include "tests/support/Scene.h"

namespace Quorvane {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;
using TestSupport::Disc;
using TestSupport::Scene;
using UtilityFunctions::MeasureCircle;

namespace {

const cv::Point2d discCenter(100.3, 79.8);
constexpr double discRadius = 40.0;

cv::Mat DarkDisc() { return Scene({200, 160}, 210.0).Paint(Disc(discCenter, discRadius), 30.0).Blur(1.0).Gray(); }

struct Circle {
    cv::Point2f center{-1, -2};
    double radius = -3.0;
    double score = -4.0;
};

Circle Measured(const cv::Mat& image, double radius, EdgePolarity polarity, SearchDirection direction,
                double angleStep = 1.0) {
    Circle circle;
    MeasureCircle(image, {100, 80}, radius, circle.center, circle.radius, circle.score, polarity, direction, 1.0, 30.0,
                  angleStep);
    return circle;
}

void ExpectTheDisc(const Circle& circle) {
    EXPECT_THAT(circle.center, TestSupport::NearPoint(discCenter, 0.2));
    EXPECT_NEAR(circle.radius, discRadius, 0.3);
    EXPECT_GT(circle.score, 0.99);
    EXPECT_LE(circle.score, 1.0);
}

void ExpectUntouched(const Circle& circle) {
    EXPECT_EQ(circle.center, cv::Point2f(-1, -2));
    EXPECT_EQ(circle.radius, -3.0);
    EXPECT_EQ(circle.score, -4.0);
}

TEST(MeasureCircle, FindsADarkDiscFromItsCentre) {
    ExpectTheDisc(Measured(DarkDisc(), 60.0, EdgePolarity::Positive, SearchDirection::Outward));
}

TEST(MeasureCircle, FindsTheSameDiscFromOutside) {
    ExpectTheDisc(Measured(DarkDisc(), 60.0, EdgePolarity::Negative, SearchDirection::Inward));
    ExpectUntouched(Measured(DarkDisc(), 60.0, EdgePolarity::Positive, SearchDirection::Inward));
}

TEST(MeasureCircle, ScansOutwardForEveryOtherDirection) {
    const Circle expected = Measured(DarkDisc(), 60.0, EdgePolarity::Positive, SearchDirection::Outward);
    for (const int direction : {2, 5, 6, -1}) {
        const Circle circle =
            Measured(DarkDisc(), 60.0, EdgePolarity::Positive, static_cast<SearchDirection>(direction));
        EXPECT_EQ(circle.center, expected.center);
        EXPECT_EQ(circle.radius, expected.radius);
        EXPECT_EQ(circle.score, expected.score);
    }
}

TEST(MeasureCircle, TakesTheEdgeNearestTheStartOfTheScan) {
    const cv::Mat ring = Scene({200, 160}, 30.0)
                             .Paint(Disc({100.0, 80.0}, 50.0), 210.0)
                             .Paint(Disc({100.0, 80.0}, 30.0), 30.0)
                             .Blur(1.0)
                             .Gray();
    EXPECT_NEAR(Measured(ring, 65.0, EdgePolarity::All, SearchDirection::Outward).radius, 30.0, 0.3);
    EXPECT_NEAR(Measured(ring, 65.0, EdgePolarity::All, SearchDirection::Inward).radius, 50.0, 0.3);
}

TEST(MeasureCircle, LeavesTheOutputsAloneWithoutEdges) {
    ExpectUntouched(Measured(DarkDisc(), 30.0, EdgePolarity::All, SearchDirection::Outward));
    ExpectUntouched(Measured(DarkDisc(), 0.0, EdgePolarity::All, SearchDirection::Outward));
    ExpectUntouched(Measured(cv::Mat(), 60.0, EdgePolarity::All, SearchDirection::Outward));
    ExpectUntouched(Measured(cv::Mat(0, 0, CV_8UC4), 60.0, EdgePolarity::All, SearchDirection::Outward));
    ExpectUntouched(
        Measured(cv::Mat(160, 200, CV_8UC2, cv::Scalar(9, 99)), 60.0, EdgePolarity::All, SearchDirection::Outward));
}

TEST(MeasureCircle, LeavesTheOutputsAloneWithLessThanThreeEdges) {
    ExpectUntouched(Measured(DarkDisc(), 60.0, EdgePolarity::Positive, SearchDirection::Outward, 180.0));
    ExpectUntouched(Measured(DarkDisc(), 60.0, EdgePolarity::Positive, SearchDirection::Outward, 360.0));
    EXPECT_NEAR(Measured(DarkDisc(), 60.0, EdgePolarity::Positive, SearchDirection::Outward, 120.0).radius, 40.0, 0.2);
}

TEST(MeasureCircle, SaysThatAnAngleStepMustBePositive) {
    for (const double angleStep : {0.0, -1.0, 1e-60}) {
        CaptureStderr();
        const Circle circle = Measured(DarkDisc(), 60.0, EdgePolarity::Positive, SearchDirection::Outward, angleStep);
        EXPECT_EQ(GetCapturedStderr(), "错误：角度步长必须是正数\n") << angleStep;
        ExpectUntouched(circle);
    }
}

TEST(MeasureCircle, SaysNothingOtherwise) {
    CaptureStderr();
    Measured(DarkDisc(), 60.0, EdgePolarity::Positive, SearchDirection::Outward);
    Measured(DarkDisc(), 60.0, EdgePolarity::Positive, SearchDirection::Outward,
             std::numeric_limits<double>::quiet_NaN());
    Measured(DarkDisc(), std::numeric_limits<double>::quiet_NaN(), EdgePolarity::Positive, SearchDirection::Outward);
    Measured(DarkDisc(), 1e300, EdgePolarity::Positive, SearchDirection::Outward);
    EXPECT_EQ(GetCapturedStderr(), "");
}

TEST(MeasureCircle, RefusesAStepThatNoMemoryHolds) {
    EXPECT_THROW(Measured(DarkDisc(), 60.0, EdgePolarity::Positive, SearchDirection::Outward, 1e-42),
                 std::length_error);
}

TEST(MeasureCircle, TakesOneVariableForArgumentAndResult) {
    const Circle expected = Measured(DarkDisc(), 60.0, EdgePolarity::Positive, SearchDirection::Outward);
    cv::Point2f center(100, 80);
    double radius = 60.0;
    double score = 0.0;
    MeasureCircle(DarkDisc(), center, radius, center, radius, score, EdgePolarity::Positive, SearchDirection::Outward,
                  1.0, 30.0, 1.0);
    EXPECT_EQ(center, expected.center);
    EXPECT_EQ(radius, expected.radius);
    EXPECT_EQ(score, expected.score);
}

TEST(MeasureCircle, KeepsWildPointsAndScoresThemLower) {
    const cv::Mat image = Scene({200, 160}, 210.0)
                              .Paint(Disc(discCenter, discRadius), 30.0)
                              .Paint(Disc({80.0, 80.0}, 6.0), 210.0)
                              .Blur(1.0)
                              .Gray();
    const Circle circle = Measured(image, 60.0, EdgePolarity::Positive, SearchDirection::Outward);
    EXPECT_LT(circle.score, 0.95);
    EXPECT_GT(circle.center.x, discCenter.x + 0.5);
}

/// The strongest edge within 20 pixels of the centre, seen at an angle in degrees.
double AmplitudeNearTheCentre(const cv::Mat& image, const cv::Point2d& center, double degrees) {
    const double theta = degrees * CV_PI / 180.0;
    UtilityFunctions::EdgeCaliper caliper;
    caliper.configure(center.y + 10.0 * std::sin(theta), center.x + 10.0 * std::cos(theta), theta, 10.0, 5.0, image,
                      "bilinear");
    std::vector<double> rows, columns, amplitudes, distances;
    caliper.measure(image, 1.0, 1.0, "all", "all", rows, columns, amplitudes, distances);
    double strongest = 0.0;
    for (const double amplitude : amplitudes) strongest = std::max(strongest, std::abs(amplitude));
    return strongest;
}

TEST(MeasureCircle, DeliversACircleOfALowScore) {
    // A small square inside a wide ring. Calipers across its corners meet the weakest edges, and the threshold lets
    // just these pass and reach the ring: a heap of points and four far away are no circle.
    const cv::Point2d middle(200.0, 200.0);
    const cv::Mat image = Scene({401, 401}, 240.0)
                              .Paint(Disc(middle, 180.0), 40.0)
                              .Paint(TestSupport::Rectangle(middle, {9.0, 9.0}, 0.0), 200.0)
                              .Blur(1.0)
                              .Gray();
    const double atCorner = AmplitudeNearTheCentre(image, middle, 45.0);
    const double besideIt = AmplitudeNearTheCentre(image, middle, 46.0);
    ASSERT_LT(atCorner, besideIt);
    Circle circle;
    MeasureCircle(image, middle, 195.0, circle.center, circle.radius, circle.score, EdgePolarity::All,
                  SearchDirection::Outward, 1.0, (atCorner + besideIt) / 2.0, 1.0);
    EXPECT_LT(circle.score, 0.3);
    EXPECT_THAT(circle.center, TestSupport::NearPoint(middle, 2.0));
    EXPECT_GT(circle.radius, 10.0);
    EXPECT_LT(circle.radius, 25.0);
}

TEST(MeasureCircle, TakesACircleThatReachesBeyondThePicture) {
    const cv::Mat image = Scene({200, 160}, 210.0).Paint(Disc({5.0, 80.0}, 40.0), 30.0).Blur(1.0).Gray();
    Circle circle;
    MeasureCircle(image, {5, 80}, 60.0, circle.center, circle.radius, circle.score, EdgePolarity::Positive,
                  SearchDirection::Outward, 1.0, 100.0, 1.0);
    EXPECT_THAT(circle.center, TestSupport::NearPoint(cv::Point2f(5, 80), 0.5));
    EXPECT_NEAR(circle.radius, 40.0, 0.5);
}

}  // namespace
}  // namespace Quorvane
