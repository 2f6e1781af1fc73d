#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <opencv2/imgproc.hpp>

#include "calibration/CameraCalibration.h"
#include "geometry/UtilityFunctions.h"
#include "tests/reference/PlainMeasurement.h"
#include "tests/support/Matchers.h"
#include "tests/support/RandomInput.h"
#include "tests/support/Scene.h"

namespace Quorvane::CameraCalibration {

using namespace TestSupport;

namespace {

const cv::Point2f noCenter(-7.0f, -8.0f);
constexpr double noRadius = -9.0;

struct Found {
    bool found = false;
    cv::Point2f center = noCenter;
    double radius = noRadius;
};

Found Find(const cv::Mat& image) {
    Found result;
    result.found = FindCircleCross(image, result.center, result.radius);
    return result;
}

Found CircleAlone(const cv::Mat& image) {
    Found result;
    double scale = 0.0;
    result.found = CalScalePixToMmUseCircle(image, 8.0, 0.0, result.center, result.radius, scale);
    return result;
}

void ExpectSame(const Found& actual, const Found& expected) {
    EXPECT_EQ(actual.found, expected.found);
    EXPECT_EQ(actual.center, expected.center);
    EXPECT_EQ(actual.radius, expected.radius);
}

const cv::Size pictureSize(320, 240);
const cv::Point2d crossCenter(156.7, 122.4);
constexpr double outerRadius = 90.0;
constexpr double innerRadius = 62.0;  // so that the corners of the square around it lie in the ring

Scene Target(double contrast = 160.0, double barWidth = 8.0, double turn = 0.0) {
    const double dark = 200.0 - contrast;
    return Scene(pictureSize, 200.0)
        .Paint(Ring(crossCenter, (outerRadius + innerRadius) / 2.0, outerRadius - innerRadius), dark)
        .Paint(Cross(crossCenter, 2.0 * innerRadius, barWidth, turn), dark)
        .Blur(1.0);
}

TEST(FindCircleCross, FindsWhereTheBarsMeetOverContrastsNoiseAndBars) {
    struct Kind {
        double contrast, noise, barWidth;
    };
    for (const Kind& kind : {Kind{160.0, 0.0, 8.0}, Kind{160.0, 0.0, 16.0}, Kind{160.0, 0.0, 5.0},
                             Kind{160.0, 8.0, 8.0}, Kind{80.0, 4.0, 8.0}, Kind{50.0, 0.0, 8.0}}) {
        SCOPED_TRACE(testing::Message() << "contrast " << kind.contrast << ", noise " << kind.noise << ", bars "
                                        << kind.barWidth);
        Scene scene = Target(kind.contrast, kind.barWidth);
        if (kind.noise > 0.0) scene.Noise(kind.noise, 3);
        const Found result = Find(scene.Gray());
        ASSERT_TRUE(result.found);
        EXPECT_THAT(result.center, NearPoint(crossCenter, 0.12));
        EXPECT_NEAR(result.radius, outerRadius, 0.5);
    }
}

TEST(FindCircleCross, BearsATurnOfSomeDegrees) {
    for (const double turn : {-8.0, -3.0, 0.7, 5.0}) {
        SCOPED_TRACE(turn);
        const Found result = Find(Target(160.0, 8.0, turn).Gray());
        ASSERT_TRUE(result.found);
        EXPECT_THAT(result.center, NearPoint(crossCenter, 0.12));
    }
}

TEST(FindCircleCross, EqualsItsStepsToTheBit) {
    for (const std::uint32_t seed : {1u, 2u, 3u}) {
        SCOPED_TRACE(seed);
        const Scene scene = Target(120.0, 9.0, seed - 2.0).Noise(6.0, seed);
        const cv::Mat picture = seed == 2u ? scene.Colour() : scene.Gray();
        const Found circle = CircleAlone(picture);
        ASSERT_TRUE(circle.found);
        cv::Point2f foundCenter(0.0f, 0.0f);
        double foundRadius = 0.0;
        double score = 0.0;
        Reference::MeasureCircle(picture, circle.center, circle.radius, foundCenter, foundRadius, score,
                                 EdgePolarity::Negative, SearchDirection::Outward, 1.0, 30.0,
                                 static_cast<double>(0.2f));
        ASSERT_NEAR(foundRadius, innerRadius, 4.0);
        const double side = foundRadius * 2.0;
        std::array<Line, 4> lines;
        const std::array<SearchDirection, 4> directions{SearchDirection::LeftToRight, SearchDirection::RightToLeft,
                                                        SearchDirection::TopToBottom, SearchDirection::BottomToTop};
        for (std::size_t i = 0; i < lines.size(); ++i) {
            Reference::MeasureLine(picture, foundCenter, side, side, lines[i], EdgePolarity::Negative, directions[i],
                                   1.0, 30.0, 0.5);
        }
        Found expected = circle;
        expected.found =
            UtilityFunctions::computeQuadrilateralCenterRobust(lines[0], lines[1], lines[2], lines[3], expected.center);
        ExpectSame(Find(picture), expected);
        EXPECT_TRUE(expected.found);
    }
}

TEST(FindCircleCross, GivesTheRadiusOfTheCircleAndNotOfTheInnerEdge) {
    const cv::Mat picture = Target().Gray();
    EXPECT_EQ(Find(picture).radius, CircleAlone(picture).radius);
}

TEST(FindCircleCross, TakesAColourPictureWithAndWithoutAlphaAsItsGray) {
    const Scene scene = Target();
    cv::Mat gray;
    cv::cvtColor(scene.Colour(), gray, cv::COLOR_BGR2GRAY);
    const Found expected = Find(gray);
    EXPECT_TRUE(expected.found);
    ExpectSame(Find(scene.Colour()), expected);
    ExpectSame(Find(scene.ColourWithAlpha()), expected);
}

TEST(FindCircleCross, TouchesNothingWithoutACircle) {
    cv::Mat stripes(100, 120, CV_8UC1, cv::Scalar(60));
    stripes.colRange(40, 60).setTo(200);
    ExpectSame(Find(stripes), {});
    ExpectSame(Find(RandomInput(4).Image({100, 80}, 2)), {});
    ExpectSame(Find(Scene(pictureSize, 200.0).Paint(Disc(crossCenter, 15.0), 40.0).Gray()), {});
}

TEST(FindCircleCross, KeepsTheCirclesCenterWhereNoEdgeIsFound) {
    // A disc alone: the way from its centre to its rim is dark throughout. The measured circle then stays without
    // extent, and its square without calipers.
    const cv::Mat disc = Scene(pictureSize, 200.0).Paint(Disc(crossCenter, 60.0), 40.0).Blur(1.0).Gray();
    Found expected = CircleAlone(disc);
    ASSERT_TRUE(expected.found);
    expected.found = false;
    ExpectSame(Find(disc), expected);
}

TEST(FindCircleCross, KeepsTheCirclesCenterWhereContrastIsTooLow) {
    const cv::Mat pale = Target(20.0).Gray();
    Found expected = CircleAlone(pale);
    ASSERT_TRUE(expected.found);
    expected.found = false;
    ExpectSame(Find(pale), expected);
}

TEST(FindCircleCross, LeavesThePictureTheStreamsAndTheLastErrorAlone) {
    const std::string error = GetLastError();
    const cv::Mat picture = Target().Colour();
    const cv::Mat before = picture.clone();
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const Found result = Find(picture);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(result.found);
    EXPECT_THAT(picture, EqualsMat(before));
    EXPECT_EQ(GetLastError(), error);
}

TEST(FindCircleCross, HandsExceptionsToTheCallerAndTouchesNothing) {
    for (const cv::Mat& picture :
         {cv::Mat(), cv::Mat(0, 0, CV_8UC3), cv::Mat(1, 1, CV_8UC1, cv::Scalar(5)),
          cv::Mat(90, 100, CV_8UC1, cv::Scalar(7)), cv::Mat(90, 100, CV_16UC1, cv::Scalar(7))}) {
        cv::Point2f center = noCenter;
        double radius = noRadius;
        EXPECT_THROW(FindCircleCross(picture, center, radius), cv::Exception);
        EXPECT_EQ(center, noCenter);
        EXPECT_EQ(radius, noRadius);
    }
}

TEST(FindCircleCross, GivesTheSameEachTime) {
    const cv::Mat picture = Target().Noise(8.0, 4).Gray();
    const Found first = Find(picture);
    for (int i = 0; i < 3; ++i) ExpectSame(Find(picture), first);
}

}  // namespace
}  // namespace Quorvane::CameraCalibration
