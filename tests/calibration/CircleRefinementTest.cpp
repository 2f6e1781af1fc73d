#include "calibration/CircleRefinement.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <opencv2/imgproc.hpp>

#include "geometry/CircleFit.h"
#include "tests/support/Matchers.h"
#include "tests/support/RandomInput.h"
#include "tests/support/Scene.h"

namespace Quorvane::CameraCalibration {

using namespace TestSupport;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double untouched = -77.0;

struct Refined {
    cv::Point2d center{untouched, untouched};
    double radius = untouched;
    double score = untouched;
};

Refined Refine(const cv::Mat& image, double x, double y, double r) {
    Refined refined;
    RefineCircle(image, x, y, r, refined.center.x, refined.center.y, refined.radius, refined.score);
    return refined;
}

bool Same(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

/// The circle as it was given, with the score 0.
void ExpectStartValues(const cv::Mat& image, double x, double y, double r) {
    SCOPED_TRACE(testing::Message() << "(" << x << ", " << y << "), radius " << r);
    const Refined refined = Refine(image, x, y, r);
    EXPECT_TRUE(Same(refined.center.x, x)) << refined.center.x;
    EXPECT_TRUE(Same(refined.center.y, y)) << refined.center.y;
    EXPECT_TRUE(Same(refined.radius, r)) << refined.radius;
    EXPECT_EQ(refined.score, 0.0);
}

void ExpectSame(const Refined& actual, const Refined& expected) {
    EXPECT_EQ(actual.center, expected.center);
    EXPECT_EQ(actual.radius, expected.radius);
    EXPECT_EQ(actual.score, expected.score);
}

Scene OnLightGround() { return {cv::Size(200, 160), 200.0}; }

TEST(RefineCircle, FitsTheOutlineOfADarkDisc) {
    const cv::Point2d center(98.4, 83.7);
    const Refined refined = Refine(OnLightGround().Paint(Disc(center, 30.0), 40.0).Blur(1.0).Gray(), 100, 82, 31.0);
    EXPECT_THAT(refined.center, NearPoint(center, 0.05));
    // The outline runs through the centres of the outermost dark pixels.
    EXPECT_NEAR(refined.radius, 29.6, 0.1);
    EXPECT_GT(refined.score, 0.99);
}

TEST(RefineCircle, FitsTheOutsideOfADarkRing) {
    const cv::Point2d center(98.4, 83.7);
    const Refined refined = Refine(OnLightGround().Paint(Ring(center, 27.0, 6.0), 40.0).Blur(1.0).Gray(), 99, 84, 24.0);
    EXPECT_THAT(refined.center, NearPoint(center, 0.05));
    EXPECT_NEAR(refined.radius, 30.0, 0.2);
}

TEST(RefineCircle, EqualsItsStepsToTheBit) {
    RandomInput random(82);
    for (int i = 0; i < 20; ++i) {
        SCOPED_TRACE(i);
        const cv::Point2d center(random.Real(40.0, 160.0), random.Real(40.0, 120.0));
        const double radius = random.Real(12.0, 36.0);
        const cv::Mat picture = OnLightGround()
                                    .Paint(Ring(center, radius, random.Real(4.0, 8.0)), 60.0)
                                    .Noise(5.0, 200u + static_cast<unsigned>(i))
                                    .Gray();
        const double x = center.x + random.Real(-2.0, 2.0);
        const double y = center.y + random.Real(-2.0, 2.0);

        const int half = static_cast<int>(radius * 2.5);
        const int left = std::max(static_cast<int>(x - half), 0);
        const int top = std::max(static_cast<int>(y - half), 0);
        const int right = std::min(static_cast<int>(half + x), picture.cols);
        const int bottom = std::min(static_cast<int>(half + y), picture.rows);
        cv::Mat gray = picture({left, top, right - left, bottom - top}).clone();
        cv::GaussianBlur(gray, gray, {5, 5}, 0.0, 0.0, cv::BORDER_DEFAULT);
        cv::threshold(gray, gray, 0, 255, cv::THRESH_BINARY_INV + cv::THRESH_OTSU);
        const cv::Mat kernel = cv::getStructuringElement(cv::MORPH_ELLIPSE, {3, 3});
        cv::morphologyEx(gray, gray, cv::MORPH_CLOSE, kernel, {-1, -1}, 2, cv::BORDER_CONSTANT);
        cv::morphologyEx(gray, gray, cv::MORPH_OPEN, kernel, {-1, -1}, 1, cv::BORDER_CONSTANT);
        std::vector<std::vector<cv::Point>> contours;
        cv::findContours(gray, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
        std::vector<cv::Point2f> best;
        double bestArea = 0.0;
        for (const auto& contour : contours) {
            const double area = cv::contourArea(contour);
            const double perimeter = cv::arcLength(contour, true);
            if (area < 10.0 || 4 * CV_PI * area / (perimeter * perimeter) <= 0.7 || area <= bestArea) continue;
            best.assign(contour.begin(), contour.end());
            bestArea = area;
        }
        cv::Point2f fit;
        Refined expected;
        ASSERT_TRUE(UtilityFunctions::fitCircleAlgebraic(best, fit, expected.radius, expected.score));
        expected.center = {static_cast<float>(left) + fit.x, static_cast<float>(top) + fit.y};
        ExpectSame(Refine(picture, x, y, radius), expected);
    }
}

TEST(RefineCircle, ConvertsColourWithAndWithoutAlphaAndRefusesTwoChannels) {
    const Scene scene = Scene({120, 100}, cv::Scalar(200, 90, 180)).Paint(Disc({60, 50}, 20.0), cv::Scalar(20, 80, 30));
    cv::Mat gray;
    cv::cvtColor(scene.Colour(), gray, cv::COLOR_BGR2GRAY);
    const Refined expected = Refine(gray, 60, 50, 20.0);
    EXPECT_GT(expected.score, 0.9);
    ExpectSame(Refine(scene.Colour(), 60, 50, 20.0), expected);
    ExpectSame(Refine(scene.ColourWithAlpha(), 60, 50, 20.0), expected);
    EXPECT_THROW(Refine(cv::Mat(100, 120, CV_8UC2, cv::Scalar::all(9)), 60, 50, 20.0), cv::Exception);
}

TEST(RefineCircle, LeavesThePictureAlone) {
    const cv::Mat picture = OnLightGround().Paint(Disc({100, 80}, 25.0), 40.0).Gray();
    const cv::Mat before = picture.clone();
    Refine(picture, 100, 80, 25.0);
    EXPECT_THAT(picture, EqualsMat(before));
}

TEST(RefineCircle, LooksNoFartherThanTwoAndAHalfRadii) {
    // The larger disc begins 60 pixels from the start's centre.
    const cv::Mat picture =
        OnLightGround().Paint(Disc({60, 80}, 20.0), 40.0).Paint(Disc({160, 80}, 40.0), 40.0).Blur(1.0).Gray();
    EXPECT_NEAR(Refine(picture, 60, 80, 20.0).radius, 19.6, 0.2);
    // From a larger start both discs are seen, and the largest counts.
    const Refined larger = Refine(picture, 60, 80, 60.0);
    EXPECT_THAT(larger.center, NearPoint(cv::Point2d(160, 80), 0.2));
    EXPECT_NEAR(larger.radius, 39.6, 0.2);
}

TEST(RefineCircle, SeesNothingBeyondItsWindow) {
    // What lies one pixel beyond the window must not enter its blur.
    const cv::Mat picture = OnLightGround().Paint(Disc({100, 80}, 20.0), 40.0).Blur(1.0).Gray();
    cv::Mat dark(picture.size(), CV_8UC1, cv::Scalar(0));
    const cv::Rect window(50, 30, 100, 100);
    picture(window).copyTo(dark(window));
    ExpectSame(Refine(dark, 100, 80, 20.0), Refine(picture, 100, 80, 20.0));
}

TEST(RefineCircle, IsCutOffByThePicturesBorder) {
    const Refined refined = Refine(OnLightGround().Paint(Disc({22.0, 140.0}, 18.0), 40.0).Gray(), 22, 140, 18.0);
    EXPECT_THAT(refined.center, NearPoint(cv::Point2d(22.0, 140.0), 0.3));
}

TEST(RefineCircle, KeepsTheStartWhereTheWindowMissesThePicture) {
    const cv::Mat picture = OnLightGround().Paint(Disc({100, 80}, 25.0), 40.0).Gray();
    ExpectStartValues(picture, -60.0, 80.0, 20.0);
    ExpectStartValues(picture, 260.0, 80.0, 20.0);
    ExpectStartValues(picture, 100.0, -51.0, 20.0);
    ExpectStartValues(picture, 100.0, 215.0, 20.0);
    ExpectStartValues(picture, 100.0, 80.0, 0.0);
    ExpectStartValues(picture, 100.0, 80.0, 0.39);  // half the window is 0 pixels
    ExpectStartValues(picture, 100.0, 80.0, -25.0);
    ExpectStartValues(cv::Mat(), 0.0, 0.0, 10.0);
}

TEST(RefineCircle, KeepsTheStartForNumbersBeyondAnyPicture) {
    const cv::Mat picture = OnLightGround().Paint(Disc({100, 80}, 25.0), 40.0).Gray();
    for (const double wild : {1e9, 1e300, infinity, -infinity, notANumber}) {
        ExpectStartValues(picture, wild, 80.0, 25.0);
        ExpectStartValues(picture, 100.0, wild, 25.0);
        ExpectStartValues(picture, 100.0, 80.0, wild);
        ExpectStartValues(picture, wild, wild, wild);
    }
    ExpectStartValues(picture, 2147483647.0, 2147483647.0, 858993459.0);
    ExpectStartValues(picture, -2147483648.0, -2147483648.0, 858993459.0);
}

TEST(RefineCircle, KeepsTheStartWithoutAContour) {
    ExpectStartValues(OnLightGround().Gray(), 100.0, 80.0, 20.0);
    ExpectStartValues(cv::Mat(1, 1, CV_8UC1, cv::Scalar(9)), 0.0, 0.0, 5.0);
}

TEST(RefineCircle, KeepsTheStartWithoutARoundContour) {
    ExpectStartValues(OnLightGround().Paint(Rectangle({100, 80}, {60.0, 10.0}), 40.0).Gray(), 100.0, 80.0, 30.0);
}

TEST(RefineCircle, KeepsTheStartWhereThereIsOnlyASpeck) {
    // Round, but of less than 10 square pixels between its outermost ones; one pixel more is enough.
    const auto speck = [](double side) {
        return OnLightGround().Paint(Rectangle({100, 80}, {side, side}), 0.0).Gray();
    };
    ExpectStartValues(speck(1.0), 100.0, 80.0, 30.0);
    EXPECT_GT(Refine(speck(3.0), 100.0, 80.0, 30.0).score, 0.9);
}

TEST(RefineCircle, PassesOverALargerShapeThatIsNotRound) {
    const cv::Mat picture = OnLightGround()
                                .Paint(Disc({80, 60}, 15.0), 40.0)
                                .Paint(Rectangle({100, 110}, {150.0, 20.0}), 40.0)
                                .Blur(1.0)
                                .Gray();
    EXPECT_THAT(Refine(picture, 82, 62, 40.0).center, NearPoint(cv::Point2d(80, 60), 0.1));
}

TEST(RefineCircle, TakesTheDarkGroundAroundALightDisc) {
    // The outline is then that of the window, a square of 100 pixels, and the circle runs through its corners. This is
    // the method's known weakness: dark is what it looks for.
    const cv::Mat picture = Scene({200, 160}, 40.0).Paint(Disc({100, 80}, 20.0), 200.0).Gray();
    const Refined refined = Refine(picture, 100, 80, 20.0);
    EXPECT_NEAR(refined.radius, 99.0 / std::sqrt(2.0), 0.1);
    EXPECT_THAT(refined.center, NearPoint(cv::Point2d(99.5, 79.5), 0.01));
}

TEST(FitOrEnclose, FitsWhatIsACircle) {
    const std::vector<cv::Point2f> points{{10, 0}, {0, 10}, {-10, 0}, {0, -10}};
    cv::Point2f center;
    double radius = 0.0;
    double score = 0.0;
    FitOrEnclose(points, center, radius, score);
    EXPECT_THAT(center, NearPoint(cv::Point2f(0, 0), 1e-5));
    EXPECT_NEAR(radius, 10.0, 1e-5);
    EXPECT_NEAR(score, 1.0, 1e-5);
}

TEST(FitOrEnclose, EnclosesTooFewPoints) {
    cv::Point2f center;
    double radius = 0.0;
    double score = 0.0;
    FitOrEnclose({{10, 4}, {20, 4}}, center, radius, score);
    EXPECT_THAT(center, NearPoint(cv::Point2f(15, 4), 1e-3));
    EXPECT_NEAR(radius, 5.0, 1e-3);
    EXPECT_EQ(score, 0.5);
}

TEST(FitOrEnclose, EnclosesPointsThatAreNoCircle) {
    // Nearly all points in the middle: the fitted radius is a tenth of the outer points' distance.
    std::vector<cv::Point2f> points{{100, 0}, {0, 100}, {-100, 0}, {0, -100}};
    points.resize(400);
    cv::Point2f center;
    double radius = 0.0;
    double score = 0.0;
    ASSERT_FALSE(UtilityFunctions::fitCircleAlgebraic(points, center, radius, score));
    ASSERT_NEAR(radius, 10.0, 1e-3);
    FitOrEnclose(points, center, radius, score);
    EXPECT_THAT(center, NearPoint(cv::Point2f(0, 0), 1e-2));
    EXPECT_NEAR(radius, 100.0, 1e-2);
    EXPECT_EQ(score, 0.5);
}

}  // namespace
}  // namespace Quorvane::CameraCalibration
