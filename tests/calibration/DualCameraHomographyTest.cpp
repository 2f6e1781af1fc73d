#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <opencv2/calib3d.hpp>

#include "calibration/CameraCalibration.h"
#include "calibration/LastError.h"
#include "tests/support/Matchers.h"
#include "tests/support/RandomInput.h"
#include "tests/support/TwoCameras.h"

namespace Quorvane::CameraCalibration {

using testing::StartsWith;
using namespace TestSupport;

namespace {

const char* const untouched = "left from before";
const cv::Matx33d oblique(1.02, 0.03, -250.0, -0.02, 0.99, 12.0, 2e-5, -1e-5, 1.0);

/// Pairs and the homography that is fitted to them.
struct Fit {
    std::vector<cv::Point2f> points1;
    std::vector<cv::Point2f> points2;
    cv::Mat homography = cv::Mat::ones(2, 2, CV_8U);
    double meanError = 42.0;

    bool Run(double threshold = 3.0, int iterations = 2000, double confidence = 0.995) {
        SetLastError(untouched);
        return CreateHomography(points1, points2, homography, meanError, threshold, iterations, confidence);
    }
};

/// Points over a picture of 640 x 480 and where the homography puts them, with this noise.
Fit Pairs(int count, double noise, std::uint32_t seed) {
    RandomInput random(seed);
    Fit fit;
    for (int i = 0; i < count; ++i) {
        fit.points1.emplace_back(static_cast<float>(random.Real(0.0, 640.0)),
                                 static_cast<float>(random.Real(0.0, 480.0)));
        const cv::Vec3d p = oblique * cv::Vec3d(fit.points1.back().x, fit.points1.back().y, 1.0);
        fit.points2.emplace_back(static_cast<float>(p[0] / p[2] + noise * random.Normal()),
                                 static_cast<float>(p[1] / p[2] + noise * random.Normal()));
    }
    return fit;
}

TEST(CreateHomography, RecoversAKnownMapping) {
    for (const int count : {4, 5, 40}) {
        Fit fit = Pairs(count, 0.0, 3);
        ASSERT_TRUE(fit.Run());
        EXPECT_EQ(GetLastError(), untouched);
        EXPECT_EQ(fit.homography.type(), CV_64FC1);
        EXPECT_LT(LargestDistance(cv::Matx33d(fit.homography), oblique, {0, 0, 640, 480}), 0.01);
        EXPECT_GE(fit.meanError, 0.0);
        EXPECT_LT(fit.meanError, 0.001);
    }
}

TEST(CreateHomography, MeanErrorCountsThePairsThatWereUsedAlone) {
    Fit fit = Pairs(60, 0.3, 4);
    for (std::size_t i = 0; i < fit.points2.size(); i += 5) fit.points2[i] += cv::Point2f(40.0f, -70.0f);
    ASSERT_TRUE(fit.Run());
    EXPECT_LT(LargestDistance(cv::Matx33d(fit.homography), oblique, {0, 0, 640, 480}), 1.5);
    // The mean length of a normal deviation of 0.3 in x and y is 0.3 * sqrt(pi / 2).
    EXPECT_NEAR(fit.meanError, 0.3 * std::sqrt(CV_PI / 2.0), 0.08);
}

TEST(CreateHomography, IsOpenCVsFitWithTheArgumentsGiven) {
    for (std::uint32_t seed = 1; seed <= 20; ++seed) {
        RandomInput random(seed);
        Fit fit = Pairs(random.Integer(4, 80), 1.0, seed + 100);
        for (std::size_t i = 0; i < fit.points2.size(); i += 3) fit.points2[i].x += 25.0f;
        const double threshold = random.Real(0.5, 6.0);
        const int iterations = random.Integer(3, 500);
        const double confidence = random.Real(0.5, 0.999);
        const bool success = fit.Run(threshold, iterations, confidence);

        std::vector<uchar> mask;
        const cv::Mat expected =
            cv::findHomography(fit.points1, fit.points2, cv::RANSAC, threshold, mask, iterations, confidence);
        ASSERT_EQ(success, !expected.empty());
        if (!success) continue;
        EXPECT_THAT(fit.homography, EqualsMat(expected));
        std::vector<cv::Point2f> projected;
        cv::perspectiveTransform(fit.points1, projected, expected);
        double sum = 0.0;
        int count = 0;
        for (std::size_t i = 0; i < mask.size(); ++i) {
            if (mask[i] == 0) continue;
            const cv::Point2f d = projected[i] - fit.points2[i];
            sum += std::sqrt(static_cast<double>(d.x) * d.x + static_cast<double>(d.y) * d.y);
            ++count;
        }
        EXPECT_EQ(fit.meanError, count > 0 ? sum / count : 0.0);
    }
}

TEST(CreateHomography, FewerThanFourPairsFailWithoutAText) {
    for (const int count : {0, 1, 3}) {
        Fit fit = Pairs(count, 0.0, 5);
        EXPECT_FALSE(fit.Run());
        EXPECT_EQ(fit.meanError, -1.0);
        EXPECT_EQ(GetLastError(), untouched);
        EXPECT_THAT(fit.homography, EqualsMat(cv::Mat::ones(2, 2, CV_8U)));
    }
}

TEST(CreateHomography, ListsOfDifferentLengthFailWithoutAText) {
    Fit fit = Pairs(6, 0.0, 5);
    fit.points2.pop_back();
    EXPECT_FALSE(fit.Run());
    EXPECT_EQ(fit.meanError, -1.0);
    EXPECT_EQ(GetLastError(), untouched);
    EXPECT_THAT(fit.homography, EqualsMat(cv::Mat::ones(2, 2, CV_8U)));
}

TEST(CreateHomography, WhereNothingFitsOpenCVsTextIsTheLastError) {
    Fit fit;
    fit.points1.assign(8, {5.0f, 5.0f});
    fit.points2 = Pairs(8, 0.0, 6).points2;
    EXPECT_FALSE(fit.Run());
    EXPECT_EQ(fit.meanError, -1.0);
    EXPECT_TRUE(fit.homography.empty());
    EXPECT_THAT(GetLastError(), StartsWith("[Quorvane::CameraCalibration::CreateHomography]OpenCV("));
}

TEST(CreateHomography, PointsThatAreNoNumbersDoNoHarm) {
    Fit fit = Pairs(12, 0.0, 7);
    fit.points1[3].x = std::numeric_limits<float>::quiet_NaN();
    fit.points2[5].y = std::numeric_limits<float>::infinity();
    ASSERT_TRUE(fit.Run());
    EXPECT_LT(fit.meanError, 0.001);
    fit.points1.assign(12, {std::numeric_limits<float>::quiet_NaN(), 0.0f});
    EXPECT_FALSE(fit.Run());
    EXPECT_EQ(fit.meanError, -1.0);
}

struct Transformed {
    cv::Point2f point{-7.0f, -8.0f};

    bool Run(const cv::Mat& homography, const cv::Point2f& from) {
        SetLastError(untouched);
        return TransformPoint(homography, from, point);
    }
};

TEST(TransformPoint, AppliesTheHomography) {
    const cv::Point2f from(100.25f, 50.5f);
    const cv::Vec3d p = oblique * cv::Vec3d(100.25, 50.5, 1.0);
    const cv::Point2f expected(static_cast<float>(p[0] / p[2]), static_cast<float>(p[1] / p[2]));
    Transformed result;
    ASSERT_TRUE(result.Run(cv::Mat(oblique), from));
    EXPECT_THAT(result.point, NearPoint(expected, 1e-4));
    EXPECT_EQ(GetLastError(), untouched);
    std::vector<cv::Point2f> list;
    cv::perspectiveTransform(std::vector<cv::Point2f>{from}, list, oblique);
    EXPECT_EQ(result.point, list[0]) << "to the bit what OpenCV gives for a list of one";

    cv::Mat single;
    cv::Mat(oblique).convertTo(single, CV_32F);
    ASSERT_TRUE(result.Run(single, from));
    EXPECT_THAT(result.point, NearPoint(expected, 1e-3));
}

TEST(TransformPoint, APointOnTheHorizonGoesToTheOrigin) {
    const cv::Mat horizon = (cv::Mat_<double>(3, 3) << 1, 0, 0, 0, 1, 0, 0, 1, -5);
    Transformed result;
    EXPECT_TRUE(result.Run(horizon, {1.0f, 5.0f}));
    EXPECT_EQ(result.point, cv::Point2f(0.0f, 0.0f));
}

TEST(TransformPoint, AMatrixOfAnotherSizeFailsWithoutAText) {
    for (const cv::Mat& homography : {cv::Mat(), cv::Mat(cv::Mat::eye(2, 3, CV_64F)),
                                      cv::Mat(cv::Mat::eye(3, 4, CV_64F)), cv::Mat(cv::Mat::eye(4, 4, CV_64F))}) {
        Transformed result;
        EXPECT_FALSE(result.Run(homography, {1.0f, 2.0f}));
        EXPECT_EQ(GetLastError(), untouched);
        EXPECT_EQ(result.point, cv::Point2f(-7.0f, -8.0f));
    }
}

TEST(TransformPoint, AMatrixOfSeveralChannelsIsRefused) {
    Transformed result;
    EXPECT_FALSE(result.Run(cv::Mat(3, 3, CV_64FC2, cv::Scalar(1.0, 0.0)), {1.0f, 2.0f}));
    EXPECT_THAT(GetLastError(), StartsWith("[Quorvane::CameraCalibration::TransformPoint]OpenCV("));
    EXPECT_EQ(result.point, cv::Point2f(-7.0f, -8.0f));
}

}  // namespace
}  // namespace Quorvane::CameraCalibration
