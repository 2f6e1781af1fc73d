#include "geometry/ChangeDetection.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "tests/support/CapturedStream.h"
#include "tests/support/Pictures.h"
#include "tests/support/RandomInput.h"
#include "tests/support/Scene.h"

namespace Quorvane::UtilityFunctions {

using TestSupport::CapturedStream;
using TestSupport::RandomInput;

namespace {

const std::string invalidHash = "Error: Invalid hash string. It must be 64 bits long and contain only '0' and '1'.\n";

/// The least threshold for which the picture counts as unchanged.
int DistanceOf(const cv::Mat& previous, const cv::Mat& current) {
    int threshold = -1;
    while (IsMatChanged_HammingDistance(previous, current, threshold)) ++threshold;
    return threshold;
}

TEST(IsMatChangedGrayDiff, IdenticalPicturesAreUnchanged) {
    const cv::Mat picture = TestSupport::LoadColourPicture("coffee.png");
    EXPECT_FALSE(IsMatChanged_GrayDiff(picture, picture.clone()));
}

TEST(IsMatChangedGrayDiff, OnePixelByOneLevelIsAChange) {
    const cv::Mat picture = TestSupport::LoadGrayPicture("coins.png");
    cv::Mat other = picture.clone();
    ++other.at<uchar>(150, 200);
    EXPECT_TRUE(IsMatChanged_GrayDiff(picture, other));
    EXPECT_TRUE(IsMatChanged_GrayDiff(other, picture));
}

TEST(IsMatChangedGrayDiff, ComparesTheGrayPictures) {
    const cv::Mat gray = TestSupport::LoadGrayPicture("coins.png");
    cv::Mat colour;
    cv::cvtColor(gray, colour, cv::COLOR_GRAY2BGR);
    cv::Mat withAlpha;
    cv::cvtColor(gray, withAlpha, cv::COLOR_GRAY2BGRA);
    withAlpha.forEach<cv::Vec4b>([](cv::Vec4b& pixel, const int*) { pixel[3] = 7; });
    EXPECT_FALSE(IsMatChanged_GrayDiff(colour, gray));
    EXPECT_FALSE(IsMatChanged_GrayDiff(gray, withAlpha));
}

TEST(IsMatChangedGrayDiff, TwoEmptyPicturesAreUnchangedAndOneIsAChange) {
    const cv::Mat picture = TestSupport::LoadGrayPicture("coins.png");
    EXPECT_FALSE(IsMatChanged_GrayDiff(cv::Mat(), cv::Mat()));
    EXPECT_FALSE(IsMatChanged_GrayDiff(cv::Mat(), cv::Mat(0, 0, CV_8UC3)));
    EXPECT_TRUE(IsMatChanged_GrayDiff(cv::Mat(), picture));
    EXPECT_TRUE(IsMatChanged_GrayDiff(picture, cv::Mat()));
}

TEST(IsMatChangedGrayDiff, RefusesDifferentSizesAndDepths) {
    const cv::Mat picture = cv::Mat::zeros(20, 30, CV_8UC1);
    EXPECT_THROW(IsMatChanged_GrayDiff(picture, cv::Mat::zeros(20, 31, CV_8UC1)), cv::Exception);
    EXPECT_THROW(IsMatChanged_GrayDiff(picture, cv::Mat::zeros(20, 30, CV_16UC1)), cv::Exception);
}

TEST(IsMatChangedGrayDiff, PassesOtherChannelCountsToTheComparison) {
    const cv::Mat gray = cv::Mat::zeros(20, 30, CV_8UC1);
    const cv::Mat two = cv::Mat::zeros(20, 30, CV_8UC2);
    EXPECT_THROW(IsMatChanged_GrayDiff(gray, two), cv::Exception);
    EXPECT_THROW(IsMatChanged_GrayDiff(two, gray), cv::Exception);
    EXPECT_THROW(IsMatChanged_GrayDiff(two, two), cv::Exception);  // they cannot be counted
}

TEST(IsMatChangedGrayDiff, LeavesItsInputAlone) {
    const cv::Mat picture = TestSupport::LoadColourPicture("coffee.png");
    const cv::Mat before = picture.clone();
    IsMatChanged_GrayDiff(picture, 255 - picture);
    EXPECT_EQ(cv::norm(picture, before, cv::NORM_INF), 0.0);
}

TEST(IsMatChangedHammingDistance, IdenticalPicturesAreAtDistanceZero) {
    const cv::Mat picture = TestSupport::LoadColourPicture("coffee.png");
    EXPECT_FALSE(IsMatChanged_HammingDistance(picture, picture, 0));
    EXPECT_FALSE(IsMatChanged_HammingDistance(picture, picture, 64));
    EXPECT_TRUE(IsMatChanged_HammingDistance(picture, picture, -1));
}

TEST(IsMatChangedHammingDistance, UniformPicturesAreEqualThoughTheirGrayIsNot) {
    const cv::Mat dark(20, 30, CV_8UC1, cv::Scalar(10));
    const cv::Mat bright(20, 30, CV_8UC1, cv::Scalar(240));
    EXPECT_EQ(DistanceOf(dark, bright), 0);
    EXPECT_TRUE(IsMatChanged_GrayDiff(dark, bright));
}

TEST(IsMatChangedHammingDistance, AColourPictureEqualsItsGrayVersion) {
    const cv::Mat colour = TestSupport::LoadColourPicture("coffee.png");
    cv::Mat gray;
    cv::cvtColor(colour, gray, cv::COLOR_BGR2GRAY);
    EXPECT_EQ(DistanceOf(colour, gray), 0);
    EXPECT_FALSE(IsMatChanged_GrayDiff(colour, gray));
}

TEST(IsMatChangedHammingDistance, ANegativeIsFarAway) {
    for (const std::string& name : TestSupport::PictureNames()) {
        const cv::Mat picture = TestSupport::LoadGrayPicture(name);
        EXPECT_GE(DistanceOf(picture, 255 - picture), 56) << name;
    }
}

TEST(IsMatChangedHammingDistance, ForgivesNoiseAndSize) {
    const cv::Mat picture = TestSupport::LoadGrayPicture("photographer.png");
    const cv::Mat noisy = TestSupport::Scene(picture).Noise(3.0, 110).Gray();
    EXPECT_FALSE(IsMatChanged_HammingDistance(picture, noisy, 4));
    cv::Mat half;
    cv::resize(picture, half, cv::Size(), 0.5, 0.5, cv::INTER_AREA);
    EXPECT_FALSE(IsMatChanged_HammingDistance(picture, half, 4));
}

TEST(IsMatChangedHammingDistance, TheThresholdIsStrict) {
    cv::Mat picture = cv::Mat::zeros(8, 8, CV_8UC1);
    picture.at<uchar>(0, 0) = 255;
    cv::Mat other = picture.clone();
    other.at<uchar>(4, 4) = 255;
    other.at<uchar>(5, 5) = 255;
    EXPECT_TRUE(IsMatChanged_HammingDistance(picture, other, 1));
    EXPECT_FALSE(IsMatChanged_HammingDistance(picture, other, 2));
}

TEST(IsMatChangedHammingDistance, RefusesEmptyPictures) {
    const cv::Mat picture = TestSupport::LoadGrayPicture("coins.png");
    EXPECT_THROW(IsMatChanged_HammingDistance(cv::Mat(), cv::Mat(), 5), cv::Exception);
    EXPECT_THROW(IsMatChanged_HammingDistance(picture, cv::Mat(), 5), cv::Exception);
    EXPECT_THROW(IsMatChanged_HammingDistance(cv::Mat(), picture, 5), cv::Exception);
}

TEST(IsMatChangedHammingDistance, APreviousOfOtherChannelCountsIsReportedAndCountsAsMinusOne) {
    const cv::Mat two = cv::Mat::zeros(20, 30, CV_8UC2);
    const cv::Mat picture = TestSupport::LoadGrayPicture("coins.png");
    const CapturedStream errors(std::cerr);
    EXPECT_FALSE(IsMatChanged_HammingDistance(two, picture, -1));
    EXPECT_EQ(errors.Text(), invalidHash);
    EXPECT_FALSE(IsMatChanged_HammingDistance(two, picture, 10));
    EXPECT_TRUE(IsMatChanged_HammingDistance(two, two, -2));
    EXPECT_EQ(errors.Text(), invalidHash + invalidHash + invalidHash);
}

TEST(IsMatChangedHammingDistance, ACurrentOfOtherChannelCountsCountsAsZeros) {
    cv::Mat picture = cv::Mat::zeros(8, 8, CV_8UC1);
    picture.row(0).setTo(255);
    const CapturedStream errors(std::cerr);
    EXPECT_EQ(DistanceOf(picture, cv::Mat::zeros(20, 30, CV_8UC2)), 8);
    EXPECT_EQ(errors.Text(), "");
}

}  // namespace
}  // namespace Quorvane::UtilityFunctions
