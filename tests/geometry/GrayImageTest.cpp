#include "geometry/GrayImage.h"

#include <gtest/gtest.h>

#include <limits>
#include <opencv2/imgproc.hpp>

#include "tests/support/Matchers.h"
#include "tests/support/RandomInput.h"

namespace Quorvane {

using TestSupport::EqualsMat;
using TestSupport::RandomInput;
using UtilityFunctions::grayImageBetween;
using UtilityFunctions::toGrayImage;
using UtilityFunctions::toGrayImageStrictly;

namespace {

TEST(ToGrayImage, ConvertsThreeAndFourChannels) {
    const cv::Mat colour = RandomInput(1).Image({31, 17}, 3);
    const cv::Mat withAlpha = RandomInput(2).Image({31, 17}, 4);
    cv::Mat expected;
    cv::cvtColor(colour, expected, cv::COLOR_BGR2GRAY);
    EXPECT_THAT(toGrayImage(colour), EqualsMat(expected));
    cv::cvtColor(withAlpha, expected, cv::COLOR_BGRA2GRAY);
    EXPECT_THAT(toGrayImage(withAlpha), EqualsMat(expected));
}

TEST(ToGrayImage, ClonesOneChannel) {
    const cv::Mat gray = RandomInput(3).Image({31, 17});
    const cv::Mat clone = toGrayImage(gray);
    EXPECT_THAT(clone, EqualsMat(gray));
    EXPECT_NE(clone.data, gray.data);
}

TEST(ToGrayImage, ReturnsOtherChannelCountsAsTheyAre) {
    for (const int channels : {2, 5}) {
        const cv::Mat image = RandomInput(4).Image({31, 17}, channels);
        EXPECT_EQ(toGrayImage(image).data, image.data);
        EXPECT_EQ(toGrayImage(image).channels(), channels);
    }
}

TEST(ToGrayImage, ReturnsAnEmptyImageAsItIs) {
    EXPECT_TRUE(toGrayImage(cv::Mat()).empty());
    EXPECT_TRUE(toGrayImage(cv::Mat(0, 0, CV_8UC3)).empty());
}

TEST(ToGrayImage, PassesOnTheRefusalOfADepth) {
    EXPECT_THROW(toGrayImage(cv::Mat::zeros(4, 4, CV_64FC3)), cv::Exception);
    EXPECT_THROW(toGrayImage(cv::Mat::zeros(4, 4, CV_32SC4)), cv::Exception);
}

TEST(ToGrayImageStrictly, RefusesEmptyImagesOfThreeAndFourChannelsAlone) {
    EXPECT_THROW(toGrayImageStrictly(cv::Mat(0, 0, CV_8UC3)), cv::Exception);
    EXPECT_THROW(toGrayImageStrictly(cv::Mat(0, 7, CV_8UC4)), cv::Exception);
    EXPECT_TRUE(toGrayImageStrictly(cv::Mat()).empty());
    EXPECT_TRUE(toGrayImageStrictly(cv::Mat(0, 0, CV_8UC2)).empty());
    for (const int channels : {1, 2, 3, 4, 5}) {
        const cv::Mat image = RandomInput(8).Image({31, 17}, channels);
        EXPECT_THAT(toGrayImageStrictly(image), EqualsMat(toGrayImage(image))) << channels;
    }
}

TEST(GrayImageBetween, HoldsTheRowsThatItIsAskedFor) {
    RandomInput random(5);
    for (const int depth : {CV_8U, CV_16U, CV_32F}) {
        for (const int channels : {3, 4}) {
            cv::Mat image;
            random.Image({67, 40}, channels).convertTo(image, depth, depth == CV_8U ? 1.0 : 77.7);
            const cv::Mat whole = toGrayImage(image);
            for (int i = 0; i < 40; ++i) {
                const double top = random.Real(-20.0, 60.0);
                const double bottom = top + random.Real(0.0, 30.0);
                const cv::Mat part = grayImageBetween(image, top, bottom);
                ASSERT_EQ(part.size(), whole.size());
                ASSERT_EQ(part.type(), whole.type());
                const cv::Range rows(std::clamp(static_cast<int>(std::floor(top)) - 1, 0, 40),
                                     std::clamp(static_cast<int>(std::floor(bottom)) + 3, 0, 40));
                if (rows.size() <= 0) continue;
                ASSERT_THAT(part.rowRange(rows), EqualsMat(cv::Mat(whole.rowRange(rows)))) << top << " to " << bottom;
            }
        }
    }
}

TEST(GrayImageBetween, TakesLimitsThatAreNoRows) {
    const cv::Mat image = RandomInput(6).Image({67, 40}, 3);
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const cv::Mat whole = toGrayImage(image);
    EXPECT_THAT(grayImageBetween(image, -infinity, infinity), EqualsMat(whole));
    EXPECT_THAT(grayImageBetween(image, nan, nan), EqualsMat(whole));
    EXPECT_THAT(grayImageBetween(image, -1e300, 1e300), EqualsMat(whole));
    EXPECT_EQ(grayImageBetween(image, infinity, -infinity).size(), image.size());
    EXPECT_EQ(grayImageBetween(image, 1e300, 2e300).size(), image.size());
}

TEST(GrayImageBetween, RefusesADepthWhereverItIsAskedToLook) {
    EXPECT_THROW(grayImageBetween(cv::Mat::zeros(4, 4, CV_64FC3), 1000.0, 1000.0), cv::Exception);
}

TEST(GrayImageBetween, DoesNotCopyOneChannel) {
    const cv::Mat gray = RandomInput(7).Image({31, 17});
    EXPECT_EQ(grayImageBetween(gray, 3.0, 5.0).data, gray.data);
}

}  // namespace
}  // namespace Quorvane
