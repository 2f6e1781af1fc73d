#include <gtest/gtest.h>

#include <limits>
#include <opencv2/core.hpp>

#include "geometry/ContourGeometry.h"
#include "tests/support/Matchers.h"
#include "tests/support/RandomInput.h"

namespace Quorvane::UtilityFunctions {

using TestSupport::EqualsMat;
using TestSupport::RandomInput;

namespace {

class CutImageBasePointTest : public testing::Test {
protected:
    const cv::Mat image_ = RandomInput(42).Image({60, 40}, 3);
};

TEST_F(CutImageBasePointTest, CutsAroundTheTruncatedCentre) {
    EXPECT_THAT(CutImageBasePoint(image_, {30.9f, 20.9f}, 11, 7, false), EqualsMat(image_(cv::Rect(25, 17, 11, 7))));
}

TEST_F(CutImageBasePointTest, ShiftsRatherThanShrinksAtTheTopLeft) {
    EXPECT_THAT(CutImageBasePoint(image_, {0, 0}, 10, 10, false), EqualsMat(image_(cv::Rect(0, 0, 10, 10))));
    EXPECT_THAT(CutImageBasePoint(image_, {-500, 3}, 10, 10, false), EqualsMat(image_(cv::Rect(0, 0, 10, 10))));
    EXPECT_THAT(CutImageBasePoint(image_, {6, 4}, 10, 10, false), EqualsMat(image_(cv::Rect(1, 0, 10, 10))));
}

TEST_F(CutImageBasePointTest, ShrinksAtTheBottomRight) {
    EXPECT_THAT(CutImageBasePoint(image_, {58, 39}, 10, 8, false), EqualsMat(image_(cv::Rect(53, 35, 7, 5))));
}

TEST_F(CutImageBasePointTest, LargerThanTheImageIsTheImage) {
    EXPECT_THAT(CutImageBasePoint(image_, {30, 20}, 1000, 1000, false), EqualsMat(image_));
    EXPECT_THAT(CutImageBasePoint(image_, {30, 20}, 2147483647, 2147483647, false), EqualsMat(image_));
}

TEST_F(CutImageBasePointTest, CanKeepTheSizeOfTheImage) {
    const cv::Rect rectangle(25, 17, 11, 7);
    cv::Mat expected = cv::Mat::zeros(image_.size(), image_.type());
    image_(rectangle).copyTo(expected(rectangle));
    EXPECT_THAT(CutImageBasePoint(image_, {30, 20}, 11, 7, true), EqualsMat(expected));
}

TEST_F(CutImageBasePointTest, GivesACopy) {
    cv::Mat crop = CutImageBasePoint(image_, {30, 20}, 1000, 1000, false);
    EXPECT_NE(crop.data, image_.data);
}

TEST_F(CutImageBasePointTest, OfNothingIsNothing) {
    EXPECT_TRUE(CutImageBasePoint(cv::Mat(), {0, 0}, 10, 10, false).empty());
    EXPECT_TRUE(CutImageBasePoint(cv::Mat(), {0, 0}, 10, 10, true).empty());
}

TEST_F(CutImageBasePointTest, OfNoSizeIsNothingOrBlack) {
    EXPECT_TRUE(CutImageBasePoint(image_, {30, 20}, 0, 0, false).empty());
    EXPECT_THAT(CutImageBasePoint(image_, {30, 20}, 0, 0, true),
                EqualsMat(cv::Mat(cv::Mat::zeros(image_.size(), image_.type()))));
}

TEST_F(CutImageBasePointTest, BehindTheLastColumnOrRowIsNothingOrBlack) {
    const cv::Mat black = cv::Mat::zeros(image_.size(), image_.type());
    for (const cv::Point2f& center : {cv::Point2f(65, 20), cv::Point2f(30, 45)}) {
        EXPECT_TRUE(CutImageBasePoint(image_, center, 10, 10, false).empty()) << center;
        EXPECT_THAT(CutImageBasePoint(image_, center, 10, 10, true), EqualsMat(black)) << center;
        EXPECT_THROW(CutImageBasePoint(image_, center + cv::Point2f(1, 1), 10, 10, false), cv::Exception) << center;
    }
}

TEST_F(CutImageBasePointTest, RefusesARectangleOutsideTheImage) {
    const float notANumber = std::numeric_limits<float>::quiet_NaN();
    for (const cv::Point2f& center : {cv::Point2f(80, 20), cv::Point2f(30, 60), cv::Point2f(3e9f, 20),
                                      cv::Point2f(30, 1e38f), cv::Point2f(notANumber, 20)}) {
        EXPECT_THROW(CutImageBasePoint(image_, center, 10, 10, false), cv::Exception) << center;
        EXPECT_THROW(CutImageBasePoint(image_, center, 10, 10, true), cv::Exception) << center;
    }
    EXPECT_THROW(CutImageBasePoint(image_, {30, 20}, -10, 10, false), cv::Exception);
    EXPECT_THROW(CutImageBasePoint(image_, {30, 20}, 10, -2147483647 - 1, false), cv::Exception);
}

}  // namespace
}  // namespace Quorvane::UtilityFunctions
