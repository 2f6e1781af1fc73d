#include "algorithms/LocalDeviationMap.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>

#include "tests/reference/PlainLocalDeviationMap.h"
#include "tests/support/Matchers.h"
#include "tests/support/Pictures.h"
#include "tests/support/RandomInput.h"

namespace Quorvane {

using TestSupport::EqualsMat;
using TestSupport::RandomInput;

namespace {

TEST(LocalDeviationMap, EqualsThePlainMapOnRandomImages) {
    RandomInput random(20);
    for (int i = 0; i < 1500; ++i) {
        const cv::Size size(random.Integer(1, 60), random.Integer(1, 40));
        const int side = random.Integer(0, 12) * 2 + 1;
        const int least = random.Integer(0, 250);
        const cv::Mat gray = random.Image(size, 1, least, random.Integer(least, 255));
        ASSERT_THAT(LocalDeviationMap(gray, side), EqualsMat(Reference::LocalDeviationMap(gray, side)))
            << "image " << i << ", " << size << ", side " << side;
    }
}

TEST(LocalDeviationMap, EqualsThePlainMapOnPictures) {
    for (const std::string& name : TestSupport::PictureNames()) {
        const cv::Mat gray = TestSupport::LoadGrayPicture(name);
        for (const int side : {1, 3, 5, 31}) {
            ASSERT_THAT(LocalDeviationMap(gray, side), EqualsMat(Reference::LocalDeviationMap(gray, side)))
                << name << ", side " << side;
        }
    }
}

TEST(LocalDeviationMap, EqualsThePlainMapWhereSumsOutgrowAnInt) {
    RandomInput random(21);
    for (const int side : {179, 181, 183, 259}) {
        const cv::Mat gray = random.Image({side + 9, side + 4}, 1, 200, 255);
        ASSERT_THAT(LocalDeviationMap(gray, side), EqualsMat(Reference::LocalDeviationMap(gray, side))) << side;
        const cv::Mat white(gray.size(), CV_8UC1, cv::Scalar(255));
        ASSERT_THAT(LocalDeviationMap(white, side), EqualsMat(Reference::LocalDeviationMap(white, side))) << side;
    }
}

TEST(LocalDeviationMap, TakesASubImage) {
    const cv::Mat whole = RandomInput(22).Image({90, 70});
    const cv::Mat part = whole(cv::Rect(7, 5, 41, 33));
    EXPECT_THAT(LocalDeviationMap(part, 5), EqualsMat(LocalDeviationMap(part.clone(), 5)));
}

TEST(LocalDeviationMap, TakesSixteenBits) {
    cv::Mat gray;
    RandomInput(23).Image({30, 20}).convertTo(gray, CV_16U, 257.0);
    EXPECT_THAT(LocalDeviationMap(gray, 5), EqualsMat(Reference::LocalDeviationMap(gray, 5)));
}

TEST(LocalDeviationMap, KeepsAZeroBandThatIsOneWiderAtTheBottomAndRight) {
    const cv::Mat gray = RandomInput(24).Image({20, 15});
    const cv::Mat map = LocalDeviationMap(gray, 5);
    cv::Mat inside = cv::Mat::zeros(gray.size(), CV_8UC1);
    inside(cv::Rect(cv::Point(2, 2), cv::Point(20 - 3, 15 - 3))).setTo(255);
    EXPECT_THAT(cv::Mat(map > 0.0f), EqualsMat(inside));
}

TEST(LocalDeviationMap, IsAllZeroWhereNoWindowFits) {
    const cv::Mat gray = RandomInput(25).Image({20, 15});
    for (const int side : {15, 17, 101, 2147483647}) {
        EXPECT_EQ(cv::countNonZero(LocalDeviationMap(gray, side)), 0) << side;
    }
    EXPECT_GT(cv::countNonZero(LocalDeviationMap(gray, 13)), 0);
}

TEST(LocalDeviationMap, IsAllZeroForAWindowOfOnePixel) {
    EXPECT_EQ(cv::countNonZero(LocalDeviationMap(RandomInput(26).Image({20, 15}), 1)), 0);
}

TEST(LocalDeviationMap, RefusesANegativeWindow) {
    const cv::Mat gray = RandomInput(27).Image({20, 15});
    for (const int side : {-1, -3, -2147483647}) {
        EXPECT_THROW(LocalDeviationMap(gray, side), cv::Exception) << side;
        EXPECT_THROW(LocalDeviationMap(cv::Mat(), side), cv::Exception) << side;
    }
}

TEST(LocalDeviationMap, OfNothingIsNothing) { EXPECT_TRUE(LocalDeviationMap(cv::Mat(), 5).empty()); }

}  // namespace
}  // namespace Quorvane
