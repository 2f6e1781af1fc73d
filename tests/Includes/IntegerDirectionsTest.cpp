#include "Includes/IntegerDirections.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <vector>

namespace line2Dup {
namespace {

/// What the angles of `cv::phase` become without any shortcut.
std::vector<uchar> OneHotByAngle(const cv::Mat& angle) {
    cv::Mat labels;
    angle.convertTo(labels, CV_8U, 16.0 / 360.0);
    std::vector<uchar> oneHot;
    for (int i = 0; i < labels.cols; ++i) oneHot.push_back(static_cast<uchar>(1 << labels.at<uchar>(i) % 8));
    return oneHot;
}

TEST(OneHotDirections, EqualsThePhaseForEveryPairOfDerivatives) {
    constexpr int count = 2 * greatestDerivative + 1;
    std::vector<short> dx(count);
    std::vector<short> dy(count);
    std::vector<uchar> oneHot(count);
    cv::Mat floatDx(1, count, CV_32F);
    for (int i = 0; i < count; ++i) {
        dx[static_cast<std::size_t>(i)] = static_cast<short>(i - greatestDerivative);
        floatDx.at<float>(i) = static_cast<float>(i - greatestDerivative);
    }
    for (int y = -greatestDerivative; y <= greatestDerivative; ++y) {
        std::fill(dy.begin(), dy.end(), static_cast<short>(y));
        const cv::Mat floatDy(1, count, CV_32F, cv::Scalar(y));
        oneHotDirections(dx.data(), dy.data(), oneHot.data(), count);
        cv::Mat angle;
        cv::phase(floatDx, floatDy, angle, true);
        ASSERT_EQ(oneHot, OneHotByAngle(angle)) << "dy " << y;
        // One pair at a time goes through the scalar code on both sides.
        cv::Mat single(1, count, CV_32F);
        for (int i = 0; i < count; ++i) {
            single.at<float>(i) = cv::fastAtan2(static_cast<float>(y), floatDx.at<float>(i));
        }
        ASSERT_EQ(oneHot, OneHotByAngle(single)) << "dy " << y << ", one at a time";
        if (y % 60 != 0) continue;
        for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
            uchar alone = 0;
            oneHotDirections(&dx[i], &dy[i], &alone, 1);
            ASSERT_EQ(alone, oneHot[i]) << dx[i] << ", " << y;
        }
    }
}

TEST(OneHotDirections, GivesNoGradientTheLabelZero) {
    const short none = 0;
    uchar oneHot = 0;
    oneHotDirections(&none, &none, &oneHot, 1);
    EXPECT_EQ(oneHot, 1);
}

}  // namespace
}  // namespace line2Dup
