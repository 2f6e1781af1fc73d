#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <opencv2/core.hpp>
#include <type_traits>

#include "geometry/UtilityFunctions.h"
#include "tests/support/Matchers.h"
#include "tests/support/Scene.h"

namespace Quorvane {

using TestSupport::Both;
using TestSupport::HalfPlane;
using TestSupport::Scene;
using UtilityFunctions::MeasureLine;

namespace {

const cv::Point2f middle(80, 60);

/// The sample before the edge's own may be taken for it, which costs some hundredths of a pixel to a tenth.
constexpr double nearEnough = 0.12;

/// Dark on the left, light on the right, blurred as by a lens.
cv::Mat UprightEdge(double x) {
    return Scene({160, 120}, 40.0).Paint(HalfPlane({x, 60.0}, 0.0), 200.0).Blur(1.0).Gray();
}

Line Measured(const cv::Mat& image, EdgePolarity polarity, SearchDirection direction, double width = 60.0,
              double height = 80.0, double step = 1.0) {
    Line line(1.0f, 1.0f);
    MeasureLine(image, middle, width, height, line, polarity, direction, 1.0, 30.0, step);
    return line;
}

MATCHER(IsDefaultLine, "is the line that stands for none") {
    return arg.a == 0.0f && arg.b == -1.0f && arg.c == 0.0f && arg.linePoint == cv::Point2f(0, 0) &&
           arg.direction == cv::Point2f(1, 0) && arg.slope == 0.0f && arg.intercept == 0.0f && !arg.isVertical;
}

// Hosts store these numbers, and use the names of both namespaces.
static_assert(static_cast<int>(EdgePolarity::All) == 0 && static_cast<int>(EdgePolarity::Positive) == 1 &&
              static_cast<int>(EdgePolarity::Negative) == 2);
static_assert(static_cast<int>(SearchDirection::Outward) == 0 && static_cast<int>(SearchDirection::Inward) == 1 &&
              static_cast<int>(SearchDirection::LeftToRight) == 2 &&
              static_cast<int>(SearchDirection::RightToLeft) == 3 &&
              static_cast<int>(SearchDirection::TopToBottom) == 4 &&
              static_cast<int>(SearchDirection::BottomToTop) == 5);
static_assert(std::is_same_v<EdgePolarity, UtilityFunctions::EdgePolarity> &&
              std::is_same_v<SearchDirection, UtilityFunctions::SearchDirection> &&
              std::is_same_v<Line, UtilityFunctions::Line> && std::is_same_v<Curve, UtilityFunctions::Curve>);

TEST(MeasureLine, FindsAnUprightEdgeToAFractionOfAPixel) {
    for (const double x : {79.5, 80.0, 80.25, 83.7}) {
        const Line line = Measured(UprightEdge(x), EdgePolarity::Positive, SearchDirection::LeftToRight);
        EXPECT_TRUE(line.isVertical);
        EXPECT_NEAR(line.intercept, x, nearEnough);
    }
}

TEST(MeasureLine, FindsTheSameEdgeFromTheOtherSideWithTheOtherPolarity) {
    const cv::Mat image = UprightEdge(80.25);
    const Line line = Measured(image, EdgePolarity::Negative, SearchDirection::RightToLeft);
    EXPECT_TRUE(line.isVertical);
    EXPECT_NEAR(line.intercept, 80.25, nearEnough);
    EXPECT_THAT(Measured(image, EdgePolarity::Positive, SearchDirection::RightToLeft), IsDefaultLine());
    EXPECT_THAT(Measured(image, EdgePolarity::Negative, SearchDirection::LeftToRight), IsDefaultLine());
    EXPECT_NEAR(Measured(image, EdgePolarity::All, SearchDirection::RightToLeft).intercept, 80.25, nearEnough);
}

TEST(MeasureLine, FindsALevelEdgeFromAboveAndFromBelow) {
    const cv::Mat image = Scene({160, 120}, 40.0).Paint(HalfPlane({80.0, 60.75}, 90.0), 200.0).Blur(1.0).Gray();
    const Line down = Measured(image, EdgePolarity::Positive, SearchDirection::TopToBottom);
    EXPECT_NEAR(down.slope, 0.0, 1e-4);
    EXPECT_NEAR(down.intercept, 60.75, nearEnough);
    const Line up = Measured(image, EdgePolarity::Negative, SearchDirection::BottomToTop);
    EXPECT_NEAR(up.intercept, 60.75, nearEnough);
    EXPECT_THAT(Measured(image, EdgePolarity::Negative, SearchDirection::TopToBottom), IsDefaultLine());
}

TEST(MeasureLine, FindsATiltedEdge) {
    const cv::Mat image = Scene({160, 120}, 200.0).Paint(HalfPlane({80.0, 60.0}, 20.0), 40.0).Blur(1.0).Gray();
    const Line line = Measured(image, EdgePolarity::Negative, SearchDirection::LeftToRight);
    EXPECT_NEAR(std::abs(std::atan(line.direction.x / line.direction.y)) * 180.0 / CV_PI, 20.0, 0.1);
    EXPECT_LT(line.distanceToPoint({80, 60}), 0.1);
}

TEST(MeasureLine, TakesPolaritiesOffTheListAsAll) {
    const cv::Mat image = UprightEdge(80.25);
    for (const int polarity : {0, 3, -1, 77}) {
        const Line line = Measured(image, static_cast<EdgePolarity>(polarity), SearchDirection::RightToLeft);
        EXPECT_NEAR(line.intercept, 80.25, nearEnough) << polarity;
    }
}

TEST(MeasureLine, ScansUpwardsForTheDirectionsOfCircles) {
    const cv::Mat image = Scene({160, 120}, 40.0).Paint(HalfPlane({80.0, 60.75}, 90.0), 200.0).Blur(1.0).Gray();
    const Line expected = Measured(image, EdgePolarity::Negative, SearchDirection::BottomToTop);
    ASSERT_NEAR(expected.intercept, 60.75, nearEnough);
    for (const int direction : {0, 1, 6, -1}) {
        const Line line = Measured(image, EdgePolarity::Negative, static_cast<SearchDirection>(direction));
        EXPECT_EQ(line.toVec4f(), expected.toVec4f()) << direction;
    }
}

TEST(MeasureLine, LeavesStrayPointsToTheFit) {
    // A bright spot on the dark side hides the edge from a few calipers.
    const cv::Mat image = Scene({160, 120}, 40.0)
                              .Paint(HalfPlane({80.25, 60.0}, 0.0), 200.0)
                              .Paint(TestSupport::Disc({64.0, 52.0}, 5.0), 200.0)
                              .Blur(1.0)
                              .Gray();
    const Line line = Measured(image, EdgePolarity::Positive, SearchDirection::LeftToRight);
    EXPECT_LT(line.distanceToPoint({80.25f, 30.0f}), 0.1);
    EXPECT_LT(line.distanceToPoint({80.25f, 90.0f}), 0.1);
}

TEST(MeasureLine, GivesTheDefaultLineWithoutCalipers) {
    const cv::Mat image = UprightEdge(80.0);
    const auto measured = [&](double width, double height, double step) {
        return Measured(image, EdgePolarity::Positive, SearchDirection::LeftToRight, width, height, step);
    };
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_THAT(measured(0.0, 0.0, 1.0), IsDefaultLine());
    EXPECT_THAT(measured(60.0, 80.0, 0.0), IsDefaultLine());
    EXPECT_THAT(measured(60.0, 80.0, -1.0), IsDefaultLine());
    EXPECT_THAT(measured(60.0, -80.0, -1.0), IsDefaultLine());
    EXPECT_THAT(measured(60.0, 80.0, 80.5), IsDefaultLine());
    EXPECT_THAT(measured(60.0, -80.0, 1.0), IsDefaultLine());
    EXPECT_THAT(measured(-60.0, 80.0, 1.0), IsDefaultLine());
    EXPECT_THAT(measured(nan, 80.0, 1.0), IsDefaultLine());
    EXPECT_THAT(measured(60.0, nan, 1.0), IsDefaultLine());
    EXPECT_THAT(measured(60.0, 80.0, nan), IsDefaultLine());
    EXPECT_THAT(measured(60.0, 80.0, 1e-300), IsDefaultLine()) << "more calipers than an int can count";
}

TEST(MeasureLine, NeedsTwoEdgePoints) {
    const cv::Mat image = UprightEdge(80.0);
    EXPECT_THAT(Measured(image, EdgePolarity::Positive, SearchDirection::LeftToRight, 60.0, 80.0, 80.0),
                IsDefaultLine());
    EXPECT_NEAR(Measured(image, EdgePolarity::Positive, SearchDirection::LeftToRight, 60.0, 80.0, 40.0).intercept, 80.0,
                nearEnough);
}

TEST(MeasureLine, FindsNothingInPicturesWithoutEdges) {
    const auto measured = [](const cv::Mat& image) {
        return Measured(image, EdgePolarity::All, SearchDirection::LeftToRight);
    };
    EXPECT_THAT(measured(cv::Mat()), IsDefaultLine());
    EXPECT_THAT(measured(cv::Mat(0, 0, CV_8UC3)), IsDefaultLine());
    EXPECT_THAT(measured(cv::Mat(120, 160, CV_8UC1, cv::Scalar(90))), IsDefaultLine());
    EXPECT_THAT(measured(cv::Mat(1, 1, CV_8UC1, cv::Scalar(90))), IsDefaultLine());
    EXPECT_THAT(measured(cv::Mat(120, 160, CV_8UC2, cv::Scalar(0, 90))), IsDefaultLine());
    EXPECT_THAT(measured(cv::Mat(120, 160, CV_32SC1, cv::Scalar(90))), IsDefaultLine());
    const int cube[] = {4, 120, 160};
    EXPECT_THAT(measured(cv::Mat(3, cube, CV_8UC1, cv::Scalar(9))), IsDefaultLine());
}

TEST(MeasureLine, PassesOnTheRefusalOfAColourDepth) {
    EXPECT_THROW(Measured(cv::Mat::zeros(120, 160, CV_64FC3), EdgePolarity::All, SearchDirection::LeftToRight),
                 cv::Exception);
    Line line;
    EXPECT_THROW(MeasureLine(cv::Mat::zeros(120, 160, CV_32SC4), {1e6f, 1e6f}, 0.0, 0.0, line, EdgePolarity::All,
                             SearchDirection::LeftToRight, 1.0, 30.0, 1.0),
                 cv::Exception);
}

TEST(MeasureLine, ReadsColourAndWiderDepths) {
    const Scene scene = Scene({160, 120}, 40.0).Paint(HalfPlane({80.25, 60.0}, 0.0), 200.0).Blur(1.0);
    const auto intercept = [](const cv::Mat& image) {
        return Measured(image, EdgePolarity::Positive, SearchDirection::LeftToRight).intercept;
    };
    const float expected = intercept(scene.Gray());
    EXPECT_NEAR(intercept(scene.Colour()), expected, 1e-3);
    EXPECT_NEAR(intercept(scene.ColourWithAlpha()), expected, 1e-3);
    for (const int depth : {CV_16U, CV_32F, CV_64F}) {
        cv::Mat image;
        scene.Gray().convertTo(image, depth);
        EXPECT_EQ(intercept(image), expected) << cv::depthToString(depth);
    }
}

TEST(MeasureLine, TakesARectangleFarLargerThanThePicture) {
    const cv::Mat image = UprightEdge(80.25);
    Line line;
    MeasureLine(image, middle, 2e8, 40.0, line, EdgePolarity::Positive, SearchDirection::LeftToRight, 1.0, 200.0, 1.0);
    EXPECT_FALSE(line.isVertical && line.intercept > 70.0f) << "the border of the picture is met first";
    MeasureLine(image, middle, 2e8, 40.0, line, EdgePolarity::Negative, SearchDirection::RightToLeft, 1.0, 100.0, 1.0);
    EXPECT_NEAR(line.intercept, 80.25, nearEnough);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    MeasureLine(image, {nan, 60.0f}, 2e8, 40.0, line, EdgePolarity::All, SearchDirection::LeftToRight, 1.0, 0.0, 1.0);
    EXPECT_THAT(line, IsDefaultLine());
    MeasureLine(image, {1e9f, 1e9f}, 2e8, 40.0, line, EdgePolarity::All, SearchDirection::LeftToRight, 1.0, 0.0, 1.0);
    EXPECT_THAT(line, IsDefaultLine());
}

TEST(MeasureLine, SurvivesPixelsThatAreNotNumbers) {
    cv::Mat image;
    UprightEdge(80.25).convertTo(image, CV_32F);
    image.at<float>(50, 60) = std::numeric_limits<float>::quiet_NaN();
    image.at<float>(55, 90) = std::numeric_limits<float>::infinity();
    const Line line = Measured(image, EdgePolarity::Positive, SearchDirection::LeftToRight);
    EXPECT_FALSE(std::isnan(line.slope)) << "calipers that see them find nothing";
}

TEST(MeasureLine, DoesNotChangeThePicture) {
    const cv::Mat image = UprightEdge(80.25);
    const cv::Mat copy = image.clone();
    Measured(image, EdgePolarity::Positive, SearchDirection::LeftToRight);
    EXPECT_THAT(image, TestSupport::EqualsMat(copy));
}

}  // namespace
}  // namespace Quorvane
