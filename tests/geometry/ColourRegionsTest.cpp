#include "geometry/ColourRegions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "tests/reference/PlainHoleFilling.h"
#include "tests/support/Matchers.h"
#include "tests/support/Pictures.h"
#include "tests/support/RandomInput.h"

namespace Quorvane::UtilityFunctions {

using TestSupport::EqualsMat;
using TestSupport::RandomInput;

namespace {

cv::Mat LabOf(const cv::Mat& picture) {
    cv::Mat lab;
    cv::cvtColor(picture, lab, cv::COLOR_BGR2Lab);
    return lab;
}

/// Patches of few colours, so that regions of all shapes and sizes come about.
cv::Mat Patches(RandomInput& random, cv::Size size, int spread) {
    cv::Mat picture(size, CV_8UC3);
    cv::Mat coarse =
        random.Image({random.Integer(1, size.width), random.Integer(1, size.height)}, 3, 128 - spread, 127 + spread);
    cv::resize(coarse, picture, size, 0.0, 0.0, random.Integer(0, 1) == 0 ? cv::INTER_NEAREST : cv::INTER_LINEAR);
    return picture;
}

TEST(LargeColourRegions, EqualsThePlainMaskOnRandomImages) {
    RandomInput random(70);
    for (int i = 0; i < 1500; ++i) {
        const cv::Size size(random.Integer(1, 80), random.Integer(1, 40));
        const cv::Mat picture = Patches(random, size, random.Integer(1, 128));
        const double tolerance = random.Real(-1.0, 60.0);
        const int areaLimit = random.Integer(-1, 60);
        ASSERT_THAT(LargeColourRegions(picture, tolerance, areaLimit),
                    EqualsMat(Reference::LargeColourRegions(picture, tolerance, areaLimit)))
            << "image " << i << ", " << size << ", tolerance " << tolerance << ", limit " << areaLimit;
    }
}

TEST(LargeColourRegions, EqualsThePlainMaskOnPictures) {
    for (const std::string& name : TestSupport::PictureNames()) {
        const cv::Mat lab = LabOf(TestSupport::LoadColourPicture(name));
        for (const double tolerance : {2.0, 12.5}) {
            ASSERT_THAT(LargeColourRegions(lab, tolerance, 50),
                        EqualsMat(Reference::LargeColourRegions(lab, tolerance, 50)))
                << name << ", tolerance " << tolerance;
        }
    }
}

TEST(LargeColourRegions, ToleranceIsComparedWithTheRootAndIncluded) {
    cv::Mat picture(1, 2, CV_8UC3, cv::Scalar(100, 100, 100));
    picture.at<cv::Vec3b>(0, 1) = {101, 101, 101};
    const double root = std::sqrt(3.0);
    EXPECT_EQ(cv::countNonZero(LargeColourRegions(picture, root, 1)), 2);
    EXPECT_EQ(cv::countNonZero(LargeColourRegions(picture, std::nextafter(root, 0.0), 1)), 0);
    picture.at<cv::Vec3b>(0, 1) = {103, 104, 100};
    EXPECT_EQ(cv::countNonZero(LargeColourRegions(picture, 5.0, 1)), 2);
    EXPECT_EQ(cv::countNonZero(LargeColourRegions(picture, std::nextafter(5.0, 0.0), 1)), 0);
}

TEST(LargeColourRegions, DistanceCountsInBothDirections) {
    cv::Mat picture(1, 2, CV_8UC3, cv::Scalar(100, 100, 100));
    for (const int other : {80, 120}) {
        picture.at<cv::Vec3b>(0, 1) = {static_cast<uchar>(other), 100, 100};
        EXPECT_EQ(cv::countNonZero(LargeColourRegions(picture, 19.9, 1)), 0) << other;
        EXPECT_EQ(cv::countNonZero(LargeColourRegions(picture, 20.0, 1)), 2) << other;
    }
}

TEST(LargeColourRegions, DistanceIsThatToTheFirstPixelOfTheRegion) {
    // A ramp: neighbours are alike, but the region ends where the first pixel is too far.
    cv::Mat picture(1, 30, CV_8UC3);
    for (int c = 0; c < 30; ++c) picture.at<cv::Vec3b>(0, c) = {static_cast<uchar>(100 + c), 100, 100};
    EXPECT_EQ(cv::countNonZero(LargeColourRegions(picture, 9.0, 9)), 30);
    EXPECT_EQ(cv::countNonZero(LargeColourRegions(picture, 9.0, 10)), 0);
}

TEST(LargeColourRegions, TheAreaLimitIsStrict) {
    const cv::Mat picture(6, 5, CV_8UC3, cv::Scalar(1, 2, 3));
    EXPECT_EQ(cv::countNonZero(LargeColourRegions(picture, 0.0, 29)), 30);
    EXPECT_EQ(cv::countNonZero(LargeColourRegions(picture, 0.0, 30)), 0);
}

TEST(LargeColourRegions, GrowsOverCorners) {
    cv::Mat picture(4, 4, CV_8UC3);
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) picture.at<cv::Vec3b>(r, c) = cv::Vec3b::all((r + c) % 2 == 0 ? 200 : 20);
    }
    EXPECT_EQ(cv::countNonZero(LargeColourRegions(picture, 1.0, 7)), 16);
    EXPECT_EQ(cv::countNonZero(LargeColourRegions(picture, 1.0, 8)), 0);
}

TEST(LargeColourRegions, ToleranceThatNothingMeetsLeavesSinglePixels) {
    const cv::Mat picture(6, 5, CV_8UC3, cv::Scalar(1, 2, 3));
    for (const double tolerance : {-1.0, -1e300, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(cv::countNonZero(LargeColourRegions(picture, tolerance, 0)), 30);
        EXPECT_EQ(cv::countNonZero(LargeColourRegions(picture, tolerance, 1)), 0);
    }
}

TEST(LargeColourRegions, ToleranceThatEverythingMeetsLeavesOneRegion) {
    RandomInput random(71);
    cv::Mat picture = random.Image({37, 21}, 3);
    picture.at<cv::Vec3b>(0, 0) = {0, 0, 0};
    picture.at<cv::Vec3b>(20, 36) = {255, 255, 255};
    const double farthest = std::sqrt(3.0 * 255.0 * 255.0);
    for (const double tolerance : {farthest, 1e9, std::numeric_limits<double>::infinity()}) {
        EXPECT_EQ(cv::countNonZero(LargeColourRegions(picture, tolerance, 37 * 21 - 1)), 37 * 21);
    }
    EXPECT_EQ(cv::countNonZero(LargeColourRegions(picture, std::nextafter(farthest, 0.0), 37 * 21 - 1)), 0);
}

TEST(LargeColourRegions, TakesASubImage) {
    RandomInput random(72);
    const cv::Mat part = Patches(random, {90, 70}, 60)(cv::Rect(7, 5, 61, 33));
    EXPECT_THAT(LargeColourRegions(part, 20.0, 10), EqualsMat(LargeColourRegions(part.clone(), 20.0, 10)));
}

TEST(LargeColourRegions, RefusesOtherKindsOfPicture) {
    EXPECT_THROW(LargeColourRegions(cv::Mat::zeros(4, 4, CV_8UC1), 1.0, 1), cv::Exception);
    EXPECT_THROW(LargeColourRegions(cv::Mat::zeros(4, 4, CV_32FC3), 1.0, 1), cv::Exception);
}

}  // namespace
}  // namespace Quorvane::UtilityFunctions
