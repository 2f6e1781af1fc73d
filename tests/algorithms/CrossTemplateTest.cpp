#include "algorithms/CrossTemplate.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>

#include "tests/support/Matchers.h"

namespace Quorvane {

using TestSupport::EqualsMat;

namespace {

TEST(MakeCrossTemplate, OfOnePixelIsWhite) {
    EXPECT_THAT(MakeCrossTemplate(1, 1), EqualsMat(cv::Mat(1, 1, CV_8UC1, cv::Scalar(255))));
}

TEST(MakeCrossTemplate, HasItsArmsInTheMiddle) {
    const cv::Mat expected = (cv::Mat_<uchar>(3, 5) << 0, 0, 255, 0, 0,  //
                              255, 255, 255, 255, 255,                   //
                              0, 0, 255, 0, 0);
    EXPECT_THAT(MakeCrossTemplate(5, 3), EqualsMat(expected));
}

TEST(MakeCrossTemplate, RoundsTheMiddleOfEvenSizesUpToTheHalf) {
    const cv::Mat expected = (cv::Mat_<uchar>(2, 4) << 0, 0, 255, 0,  //
                              255, 255, 255, 255);
    EXPECT_THAT(MakeCrossTemplate(4, 2), EqualsMat(expected));
}

TEST(MakeCrossTemplate, IsOnePixelThickAtEverySize) {
    for (int width = 1; width < 20; ++width) {
        for (int height = 1; height < 20; ++height) {
            const cv::Mat cross = MakeCrossTemplate(width, height);
            ASSERT_EQ(cross.size(), cv::Size(width, height));
            ASSERT_EQ(cross.type(), CV_8UC1);
            ASSERT_EQ(cv::countNonZero(cross), width + height - 1);
            ASSERT_EQ(cv::countNonZero(cross.col(width / 2) == 255), height);
            ASSERT_EQ(cv::countNonZero(cross.row(height / 2) == 255), width);
        }
    }
}

}  // namespace
}  // namespace Quorvane
