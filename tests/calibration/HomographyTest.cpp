#include "calibration/Homography.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/support/Matchers.h"
#include "tests/support/RandomInput.h"

namespace Quorvane::CameraCalibration {

using TestSupport::EqualsMat;

namespace {

cv::Mat RandomHomography(TestSupport::RandomInput& random) {
    return (cv::Mat_<double>(3, 3) << random.Real(0.5, 2.0), random.Real(-0.3, 0.3), random.Real(-50.0, 50.0),
            random.Real(-0.3, 0.3), random.Real(0.5, 2.0), random.Real(-50.0, 50.0), random.Real(-1e-4, 1e-4),
            random.Real(-1e-4, 1e-4), random.Real(0.9, 1.1));
}

TEST(Mapped, IsOpenCVsProductWithTheColumnDividedByItsThirdElement) {
    TestSupport::RandomInput random(17);
    for (int i = 0; i < 500; ++i) {
        const cv::Mat homography = RandomHomography(random);
        const cv::Point2f point(static_cast<float>(random.Real(-100.0, 2000.0)),
                                static_cast<float>(random.Real(-100.0, 2000.0)));
        const cv::Mat column = (cv::Mat_<double>(3, 1) << point.x, point.y, 1.0);
        const cv::Mat product = homography * column;
        const double* r = product.ptr<double>();
        const cv::Point2f mapped = Mapped(homography, point);
        EXPECT_EQ(mapped.x, static_cast<float>(r[0] / r[2]));
        EXPECT_EQ(mapped.y, static_cast<float>(r[1] / r[2]));
    }
}

TEST(Mapped, RefusesWhatIsNoHomographyOfDoubles) {
    EXPECT_THROW(Mapped(cv::Mat::eye(3, 3, CV_32F), {1.0f, 2.0f}), cv::Exception);
    EXPECT_THROW(Mapped(cv::Mat::eye(2, 3, CV_64F), {1.0f, 2.0f}), cv::Exception);
    EXPECT_THROW(Mapped(cv::Mat(3, 3, CV_64FC2), {1.0f, 2.0f}), cv::Exception);
    EXPECT_THROW(Mapped(cv::Mat(), {1.0f, 2.0f}), cv::Exception);
}

TEST(Mapped, APointOnTheHorizonIsNotANumberOrInfinite) {
    const cv::Mat singular = cv::Mat::zeros(3, 3, CV_64F);
    EXPECT_TRUE(std::isnan(Mapped(singular, {1.0f, 2.0f}).x));
    const cv::Mat horizon = (cv::Mat_<double>(3, 3) << 1, 0, 0, 0, 1, 0, 0, 1, -5);
    EXPECT_TRUE(std::isinf(Mapped(horizon, {1.0f, 5.0f}).x));
}

TEST(FitToCanvas, ShiftsTheBoundsToTheOriginAndKeepsTheAspectOfThePicture) {
    // Twice as wide and three times as high: spans 200 and 240, so the side is 240.
    const cv::Mat stretch = (cv::Mat_<double>(3, 3) << 2, 0, -30, 0, 3, 70, 0, 0, 1);
    const Canvas wide = FitToCanvas(stretch, {100, 80});
    EXPECT_EQ(wide.size, cv::Size(240, 192));  // 240 / (100 / 80)
    EXPECT_THAT(wide.homography, EqualsMat(cv::Mat((cv::Mat_<double>(3, 3) << 2, 0, 0, 0, 3, 0, 0, 0, 1))));
    const Canvas high = FitToCanvas(stretch, {80, 100});
    EXPECT_EQ(high.size, cv::Size(240, 300));  // spans 160 and 300
    EXPECT_EQ(FitToCanvas(stretch, {100, 100}).size, cv::Size(300, 300));
}

TEST(FitToCanvas, TruncatesSpansAndSides) {
    const cv::Mat scale = (cv::Mat_<double>(3, 3) << 0.999, 0, 0, 0, 0.999, 0, 0, 0, 1);
    EXPECT_EQ(FitToCanvas(scale, {100, 70}).size, cv::Size(99, 69));  // 99.9 and then 99 / 1.428571 = 69.3
    EXPECT_EQ(FitToCanvas(scale, {70, 100}).size, cv::Size(69, 99));
}

TEST(FitToCanvas, BoundsBelowZeroAreBoundsToo) {
    const cv::Mat mirror = (cv::Mat_<double>(3, 3) << -1, 0, -1000, 0, -1, -500, 0, 0, 1);
    const Canvas canvas = FitToCanvas(mirror, {100, 80});
    EXPECT_EQ(canvas.size, cv::Size(100, 80));
    EXPECT_EQ(Mapped(canvas.homography, {100.0f, 80.0f}), cv::Point2f(0.0f, 0.0f));
}

TEST(FitToCanvas, SurvivesWhatHasNoBounds) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_NO_THROW(FitToCanvas(cv::Mat(3, 3, CV_64F, cv::Scalar(nan)), {100, 80}));
    EXPECT_NO_THROW(FitToCanvas(cv::Mat::eye(3, 3, CV_64F), {0, 0}));
    EXPECT_NO_THROW(FitToCanvas(cv::Mat::eye(3, 3, CV_64F) * 1e30, {100, 80}));
    EXPECT_THROW(FitToCanvas(cv::Mat(), {100, 80}), cv::Exception);
}

TEST(Distance, IsEuclidean) { EXPECT_EQ(Distance({1.0f, 2.0f}, {4.0f, -2.0f}), 5.0); }

}  // namespace
}  // namespace Quorvane::CameraCalibration
