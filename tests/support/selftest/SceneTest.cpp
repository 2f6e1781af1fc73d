#include "tests/support/Scene.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>

#include "tests/support/Matchers.h"
#include "tests/support/Pictures.h"

namespace Quorvane::TestSupport {
namespace {

/// The area that a shape covers, from the gray levels of a picture of it.
double PaintedArea(const Shape& shape) { return cv::sum(Scene({100, 80}, 0.0).Paint(shape, 255.0).Gray())[0] / 255.0; }

TEST(Scene, DiscCoversItsArea) { EXPECT_NEAR(PaintedArea(Disc({50.3, 40.7}, 20.0)), CV_PI * 400.0, 1.0); }

TEST(Scene, RectangleCoversItsAreaAtEveryAngle) {
    for (double angle = 0.0; angle < 180.0; angle += 17.0) {
        EXPECT_NEAR(PaintedArea(Rectangle({50.1, 40.2}, {30.5, 12.25}, angle)), 30.5 * 12.25, 1.5) << angle;
    }
}

TEST(Scene, PolygonAndRectangleAgree) {
    const Shape polygon = Polygon({{20.5, 10.5}, {60.5, 10.5}, {60.5, 30.5}, {20.5, 30.5}});
    EXPECT_THAT(Scene({100, 80}, 10.0).Paint(polygon, 200.0).Gray(),
                EqualsMat(Scene({100, 80}, 10.0).Paint(Rectangle({40.5, 20.5}, {40.0, 20.0}), 200.0).Gray()));
}

TEST(Scene, HalfPlaneSharesThePixelThatItsEdgeCrosses) {
    const cv::Mat picture = Scene({10, 3}, 0.0).Paint(HalfPlane({4.25, 0.0}, 0.0), 160.0).Gray();
    EXPECT_EQ(picture.at<uchar>(1, 3), 0);
    EXPECT_EQ(picture.at<uchar>(1, 4), 40);  // a quarter of the pixel from 3.5 to 4.5
    EXPECT_EQ(picture.at<uchar>(1, 5), 160);
}

TEST(Scene, CrossRingAndDifferenceCoverTheirAreas) {
    EXPECT_NEAR(PaintedArea(Cross({50.0, 40.0}, 40.0, 6.0)), 40.0 * 6.0 * 2.0 - 36.0, 1.0);
    EXPECT_NEAR(PaintedArea(Ring({50.0, 40.0}, 20.0, 4.0)), CV_PI * (22.0 * 22.0 - 18.0 * 18.0), 1.0);
    EXPECT_NEAR(PaintedArea(Without(Disc({50.0, 40.0}, 20.0), Disc({50.0, 40.0}, 10.0))), CV_PI * 300.0, 1.0);
    EXPECT_NEAR(PaintedArea(Both(Disc({50.0, 40.0}, 20.0), HalfPlane({50.0, 40.0}, 30.0))), CV_PI * 200.0, 1.0);
    EXPECT_NEAR(PaintedArea(Stroke({{20.0, 20.0}, {60.0, 20.0}}, 4.0)), 160.0 + CV_PI * 4.0, 1.0);
}

TEST(Scene, PlacedTurnsThenShifts) {
    const Shape bar = Rectangle({10.0, 0.0}, {8.0, 2.0});
    EXPECT_LT(Placed(bar, 90.0, {50.0, 40.0})({50.0, 50.0}), 0.0);
    EXPECT_GT(Placed(bar, 90.0, {50.0, 40.0})({60.0, 40.0}), 0.0);
}

TEST(Scene, NoiseIsTheSameForTheSameSeedAndHasItsDeviation) {
    const auto noisy = [](std::uint32_t seed) { return Scene({200, 100}, 128.0).Noise(5.0, seed).Colour(); };
    EXPECT_THAT(noisy(3), EqualsMat(noisy(3)));
    EXPECT_GT(cv::norm(noisy(3), noisy(4)), 0.0);
    cv::Scalar mean;
    cv::Scalar deviation;
    cv::meanStdDev(noisy(3), mean, deviation);
    EXPECT_NEAR(mean[0], 128.0, 0.2);
    EXPECT_NEAR(deviation[0], 5.0, 0.1);
}

TEST(Scene, LightFallsOffFromLeftToRight) {
    const cv::Mat picture = Scene({101, 2}, 200.0).Light(1.0, 0.5).Gray();
    EXPECT_EQ(picture.at<uchar>(0, 0), 200);
    EXPECT_EQ(picture.at<uchar>(1, 50), 150);
    EXPECT_EQ(picture.at<uchar>(1, 100), 100);
}

TEST(Pictures, AreAllThere) {
    for (const std::string& name : PictureNames()) {
        EXPECT_EQ(LoadColourPicture(name).type(), CV_8UC3) << name;
        EXPECT_EQ(LoadGrayPicture(name).type(), CV_8UC1) << name;
    }
}

TEST(Matchers, EqualsMatNamesTheFirstDifference) {
    cv::Mat a = cv::Mat::zeros(4, 5, CV_8UC1);
    cv::Mat b = a.clone();
    b.at<uchar>(2, 3) = 7;
    EXPECT_FALSE(MatsAreEqual(a, b));
    EXPECT_NE(std::string(MatsAreEqual(a, b).message()).find("column 3, row 2"), std::string::npos);
    EXPECT_FALSE(MatsAreEqual(a, cv::Mat::zeros(4, 5, CV_8SC1)));
    EXPECT_TRUE(MatsAreEqual(a, a.clone()));
}

}  // namespace
}  // namespace Quorvane::TestSupport
