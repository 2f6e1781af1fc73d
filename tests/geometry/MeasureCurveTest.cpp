#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/core.hpp>

#include "geometry/UtilityFunctions.h"
#include "tests/support/Matchers.h"
#include "tests/support/Scene.h"

namespace Quorvane {

using testing::Each;
using testing::IsEmpty;
using testing::SizeIs;
using TestSupport::Scene;
using UtilityFunctions::MeasureCurve;

namespace {

double WaveAt(double x) { return 60.0 + 12.0 * std::sin(x / 15.0); }

/// Light below a wave, dark above it.
cv::Mat WavePicture() {
    std::vector<cv::Point2d> outline;
    for (int x = -20; x <= 220; ++x) outline.emplace_back(x, WaveAt(x));
    outline.emplace_back(220.0, 200.0);
    outline.emplace_back(-20.0, 200.0);
    return Scene({200, 120}, 40.0).Paint(TestSupport::Polygon(outline), 200.0).Blur(1.0).Gray();
}

Curve Measured(const cv::Mat& image, double width, double height, SearchDirection direction, double step,
               EdgePolarity polarity = EdgePolarity::Positive) {
    Curve curve;
    curve.measuredPoints = {{1, 1}};
    curve.curvePoints = {{2, 2}};
    curve.reservedPointsA = {{3, 3}};
    curve.reservedScalar = 4;
    curve.meanFitError = 5.0;
    MeasureCurve(image, {100, 60}, width, height, curve, polarity, direction, 1.0, 30.0, step, 0);
    return curve;
}

TEST(MeasureCurve, FollowsAWave) {
    const Curve curve = Measured(WavePicture(), 160.0, 60.0, SearchDirection::TopToBottom, 1.0);
    ASSERT_THAT(curve.measuredPoints, SizeIs(160));
    for (const cv::Point2f& p : curve.measuredPoints) EXPECT_NEAR(p.y, WaveAt(p.x), 0.6) << p;
    EXPECT_THAT(curve.curvePoints, SizeIs(testing::AllOf(testing::Ge(40u), testing::Le(500u))));
    for (const cv::Point2f& p : curve.curvePoints) EXPECT_NEAR(p.y, WaveAt(p.x), 0.6) << p;
    EXPECT_LT(curve.meanFitError, 0.6);
    EXPECT_GT(curve.meanFitError, 0.0);
    EXPECT_TRUE(curve.isValid());
}

TEST(MeasureCurve, DeliversItsPointsInTheOrderOfTheCalipers) {
    const Curve down = Measured(WavePicture(), 160.0, 60.0, SearchDirection::TopToBottom, 0.5);
    for (std::size_t i = 1; i < down.measuredPoints.size(); ++i) {
        EXPECT_LT(down.measuredPoints[i - 1].x, down.measuredPoints[i].x);
    }
    const Curve up = Measured(WavePicture(), 160.0, 60.0, SearchDirection::BottomToTop, 0.5, EdgePolarity::Negative);
    ASSERT_THAT(up.measuredPoints, SizeIs(320));
    EXPECT_LT(up.measuredPoints.front().x, up.measuredPoints.back().x);
}

TEST(MeasureCurve, LeavesReservedMembersAlone) {
    const Curve curve = Measured(WavePicture(), 160.0, 60.0, SearchDirection::TopToBottom, 1.0);
    EXPECT_THAT(curve.reservedPointsA, testing::ElementsAre(cv::Point2f(3, 3)));
    EXPECT_THAT(curve.reservedPointsB, IsEmpty());
    EXPECT_EQ(curve.reservedScalar, 4);
}

TEST(MeasureCurve, IgnoresItsLastArgument) {
    const cv::Mat image = WavePicture();
    Curve a;
    Curve b;
    MeasureCurve(image, {100, 60}, 160.0, 60.0, a, EdgePolarity::All, SearchDirection::TopToBottom, 1.0, 30.0, 1.0, 0);
    MeasureCurve(image, {100, 60}, 160.0, 60.0, b, EdgePolarity::All, SearchDirection::TopToBottom, 1.0, 30.0, 1.0,
                 -99);
    EXPECT_EQ(a.curvePoints, b.curvePoints);
    EXPECT_EQ(a.meanFitError, b.meanFitError);
}

TEST(MeasureCurve, DropsAWildPointFromTheCurveButNotFromTheMeasuredPoints) {
    // The calipers are 8 pixels apart and read 6: a bright speck above the wave is met first by the one at 96, where
    // the wave is straight. A neighbour is dropped with it, as it bends towards it.
    cv::Mat image = WavePicture();
    image(cv::Rect(95, 40, 3, 3)).setTo(255);
    const Curve curve = Measured(image, 160.0, 60.0, SearchDirection::TopToBottom, 8.0);
    const auto farthest = [](const std::vector<cv::Point2f>& points) {
        double distance = 0.0;
        for (const cv::Point2f& p : points) distance = std::max(distance, std::abs(p.y - WaveAt(p.x)));
        return distance;
    };
    ASSERT_THAT(curve.measuredPoints, SizeIs(20));
    EXPECT_GT(farthest(curve.measuredPoints), 8.0);
    EXPECT_LT(farthest(curve.curvePoints), 3.0) << "the smoothing alone would leave more";
}

TEST(MeasureCurve, ResamplesThreeOrFourPointsUnsmoothed) {
    for (const int count : {3, 4}) {
        const Curve curve = Measured(WavePicture(), 160.0, 60.0, SearchDirection::TopToBottom, 160.0 / count);
        ASSERT_THAT(curve.measuredPoints, SizeIs(static_cast<std::size_t>(count)));
        EXPECT_THAT(curve.curvePoints, SizeIs(testing::Ge(40u)));
        EXPECT_THAT(curve.curvePoints.front(), TestSupport::NearPoint(curve.measuredPoints.front(), 1e-4));
        EXPECT_THAT(curve.curvePoints.back(), TestSupport::NearPoint(curve.measuredPoints.back(), 1e-4));
    }
}

TEST(MeasureCurve, SmoothsFivePoints) {
    const Curve curve = Measured(WavePicture(), 160.0, 60.0, SearchDirection::TopToBottom, 32.0);
    ASSERT_THAT(curve.measuredPoints, SizeIs(5));
    EXPECT_GT(cv::norm(curve.curvePoints.front() - curve.measuredPoints.front()), 1.0);
}

TEST(MeasureCurve, KeepsFewerThanThreePointsWithoutACurve) {
    const Curve two = Measured(WavePicture(), 160.0, 60.0, SearchDirection::TopToBottom, 80.0);
    EXPECT_THAT(two.measuredPoints, SizeIs(2));
    EXPECT_THAT(two.curvePoints, IsEmpty());
    EXPECT_EQ(two.meanFitError, 5.0);
    EXPECT_TRUE(two.isValid());
    for (const Curve& none : {Measured(cv::Mat(), 160.0, 60.0, SearchDirection::TopToBottom, 1.0),
                              Measured(WavePicture(), 160.0, 60.0, SearchDirection::TopToBottom, 0.0),
                              Measured(WavePicture(), 0.0, 0.0, SearchDirection::TopToBottom, 1.0)}) {
        EXPECT_THAT(none.measuredPoints, IsEmpty());
        EXPECT_THAT(none.curvePoints, IsEmpty());
        EXPECT_EQ(none.meanFitError, 5.0);
        EXPECT_FALSE(none.isValid());
    }
}

TEST(MeasureCurve, FindsNothingMoreInARowFarLongerThanTheImage) {
    const cv::Mat picture = WavePicture();
    // The calipers lie at the same places, as all of these numbers are whole steps.
    for (const auto direction : {SearchDirection::TopToBottom, SearchDirection::BottomToTop}) {
        const Curve inside = Measured(picture, 256.0, 60.0, direction, 0.5, EdgePolarity::All);
        const Curve beyond = Measured(picture, 1073741820.0, 60.0, direction, 0.5, EdgePolarity::All);
        ASSERT_FALSE(inside.measuredPoints.empty());
        EXPECT_EQ(beyond.measuredPoints, inside.measuredPoints);
        EXPECT_EQ(beyond.curvePoints, inside.curvePoints);
    }
    // Two thousand million calipers, none of which comes near the image.
    Curve curve;
    MeasureCurve(picture, {1e10f, 60.0f}, 2e9, 60.0, curve, EdgePolarity::All, SearchDirection::TopToBottom, 1.0, -1.0,
                 1.0, 0);
    EXPECT_THAT(curve.measuredPoints, IsEmpty());
}

}  // namespace
}  // namespace Quorvane
