#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <opencv2/imgproc.hpp>
#include <opencv2/photo.hpp>
#include <stdexcept>

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
const ImageDirFlags upright(-1, false, false);

cv::Mat Shifted(double x, double y) { return (cv::Mat_<double>(3, 3) << 1, 0, x, 0, 1, y, 0, 0, 1); }

/// Random pixels, somewhat smoothed, as a camera's are.
cv::Mat Texture(cv::Size size, std::uint32_t seed) {
    cv::Mat picture;
    cv::GaussianBlur(RandomInput(seed).Image(size, 3), picture, {5, 5}, 0.0);
    return picture;
}

/// A blending and what came of it.
struct Blending {
    cv::Mat image1 = Texture({120, 90}, 1);
    cv::Mat image2 = Texture({100, 80}, 2);
    ImageDirFlags dir1 = upright;
    ImageDirFlags dir2 = upright;
    double scaleX = 1.0;
    double scaleY = 1.0;
    cv::Mat homography;
    double seamX = 42.0;
    cv::Mat blended = cv::Mat::ones(2, 2, CV_8U);

    explicit Blending(const cv::Mat& mapping) : homography(mapping) {}

    bool Run() {
        SetLastError(untouched);
        return DoBlendingImageForDualCam(image1, dir1, image2, dir2, scaleX, scaleY, homography, seamX, blended);
    }
    void ExpectRefusedByOpenCV() {
        EXPECT_FALSE(Run());
        EXPECT_THAT(GetLastError(), StartsWith("[Quorvane::CameraCalibration::DoBlendingImageForDualCam]OpenCV("));
        EXPECT_THAT(blended, EqualsMat(cv::Mat::ones(2, 2, CV_8U)));
    }
};

/// The branch with a seam step by step, for upright pictures, without the scaling.
cv::Mat ExpectedAtSeam(const Blending& blending, double& seamX) {
    const auto w = static_cast<float>(blending.image1.cols);
    const auto h = static_cast<float>(blending.image1.rows);
    std::vector<cv::Point2f> corners{{0, 0}, {w, 0}, {w, h}, {0, h}};
    cv::perspectiveTransform(corners, corners, blending.homography);
    const float minX = std::min({0.0f, corners[0].x, corners[1].x, corners[2].x, corners[3].x});
    const float minY = std::min({0.0f, corners[0].y, corners[1].y, corners[2].y, corners[3].y});
    const float maxX = std::max({corners[0].x, corners[1].x, corners[2].x, corners[3].x});
    const cv::Mat& right = blending.image2;
    const cv::Size size(static_cast<int>(std::round(static_cast<float>(right.cols) - minX)),
                        static_cast<int>(std::round(static_cast<float>(right.rows) - minY)));
    cv::Mat canvas;
    cv::warpPerspective(blending.image1, canvas, Shifted(-minX, -minY) * blending.homography, size);
    const int column = static_cast<int>(maxX * 0.5);
    const cv::Rect rightPart(column, 0, right.cols - column, right.rows);
    right(rightPart).copyTo(
        canvas(cv::Rect({column - static_cast<int>(minX), static_cast<int>(-minY)}, rightPart.size())));
    const cv::Mat strip = right(cv::Rect(column - 10, 0, 20, right.rows));
    const float seam = maxX * 0.5f - minX;
    seamX = seam;
    cv::Mat joined;
    cv::seamlessClone(
        strip, canvas, cv::Mat(strip.size(), CV_8U, cv::Scalar(255)),
        {static_cast<int>(std::round(seam)), static_cast<int>(std::round(static_cast<float>(right.rows / 2) - minY))},
        joined, cv::NORMAL_CLONE);
    return joined;
}

TEST(DoBlendingImageForDualCam, AnOverlapOfTenPixelsIsLaidTogetherWithoutBlending) {
    Blending blending(Shifted(-110.0, 0.0));
    blending.scaleX = 0.5;
    blending.scaleY = 3.0;
    ASSERT_TRUE(blending.Run()) << GetLastError();
    EXPECT_EQ(GetLastError(), untouched);
    EXPECT_EQ(blending.seamX, 42.0) << "there is no seam";
    cv::Mat expected = cv::Mat::zeros(80, 210, CV_8UC3);
    blending.image1(cv::Rect(0, 0, 120, 80)).copyTo(expected(cv::Rect(0, 0, 120, 80)));
    blending.image2.copyTo(expected(cv::Rect(110, 0, 100, 80)));
    EXPECT_THAT(blending.blended, EqualsMat(expected)) << "at full size";
}

TEST(DoBlendingImageForDualCam, PicturesApartAreLaidTogetherWithBlackBetween) {
    Blending blending(Shifted(-150.5, -20.25));
    ASSERT_TRUE(blending.Run()) << GetLastError();
    EXPECT_EQ(blending.blended.size(), cv::Size(251, 100)) << "250.5 and 100.25, rounded";
    EXPECT_THAT(cv::Mat(blending.blended(cv::Rect(150, 20, 100, 80))), EqualsMat(blending.image2))
        << "at 150.5 and 20.25, truncated";
    EXPECT_EQ(cv::countNonZero(blending.blended(cv::Rect(122, 0, 28, 100)).clone().reshape(1)), 0);
}

TEST(DoBlendingImageForDualCam, AHalfIsRoundedAwayFromZero) {
    Blending apart(Shifted(-150.5, -1.5));
    ASSERT_TRUE(apart.Run());
    EXPECT_EQ(apart.blended.size(), cv::Size(251, 82));
    apart.homography = Shifted(-151.5, -2.5);
    ASSERT_TRUE(apart.Run());
    EXPECT_EQ(apart.blended.size(), cv::Size(252, 83));
}

TEST(DoBlendingImageForDualCam, ASeamTooNearTheLeftEdgeFails) {
    for (const double overlap : {10.5, 15.0, 19.0, 19.9}) {
        Blending blending(Shifted(overlap - 120.0, 0.0));
        blending.ExpectRefusedByOpenCV();
        EXPECT_EQ(blending.seamX, 42.0);
    }
    EXPECT_TRUE(Blending(Shifted(20.0 - 120.0, 0.0)).Run()) << "the strip begins in column 0";
}

TEST(DoBlendingImageForDualCam, ASeamTooNearTheRightEdgeFails) {
    // Picture 2 has 100 columns.
    for (const double end : {182.0, 200.0, 202.0, 500.0, 1e9, 1e30}) {
        Blending blending((cv::Mat_<double>(3, 3) << end / 120.0, 0, 0, 0, 1, 0, 0, 0, 1));
        blending.ExpectRefusedByOpenCV();
        EXPECT_EQ(blending.seamX, 42.0);
    }
    EXPECT_TRUE(Blending((cv::Mat_<double>(3, 3) << 181.0 / 120.0, 0, 0, 0, 1, 0, 0, 0, 1)).Run());
}

TEST(DoBlendingImageForDualCam, APictureRightOfTheOriginShiftsNothing) {
    Blending blending(Shifted(15.0, 7.0));
    ASSERT_TRUE(blending.Run()) << GetLastError();
    EXPECT_EQ(blending.blended.size(), blending.image2.size());
    EXPECT_EQ(blending.seamX, 67.5);
    EXPECT_EQ(blending.blended.at<cv::Vec3b>(30, 5), cv::Vec3b(0, 0, 0)) << "left of picture 1 nothing is shown";
    EXPECT_EQ(blending.blended.at<cv::Vec3b>(30, 40), blending.image1.at<cv::Vec3b>(23, 25));
}

TEST(DoBlendingImageForDualCam, TheCanvasGrowsToTheLeftByWhatPictureOneReachesOut) {
    Blending blending(Shifted(-500.0, 0.0));
    blending.image1 = Texture({560, 90}, 3);
    ASSERT_TRUE(blending.Run()) << GetLastError();
    EXPECT_EQ(blending.blended.size(), cv::Size(600, 80));
    EXPECT_EQ(blending.seamX, 60.0 / 2.0 + 500.0);
}

TEST(DoBlendingImageForDualCam, LeavesBothPicturesAsTheyAreBesideTheStrip) {
    // The seam stands at 80 + 20; OpenCV's blending leaves the outermost of the 20 columns alone.
    Blending blending(Shifted(-80.0, 0.0));
    ASSERT_TRUE(blending.Run()) << GetLastError();
    EXPECT_EQ(GetLastError(), untouched);
    EXPECT_EQ(blending.seamX, 100.0);
    EXPECT_THAT(cv::Mat(blending.blended(cv::Rect(0, 0, 91, 80))),
                EqualsMat(cv::Mat(blending.image1(cv::Rect(0, 0, 91, 80)))));
    EXPECT_THAT(cv::Mat(blending.blended(cv::Rect(109, 0, 71, 80))),
                EqualsMat(cv::Mat(blending.image2(cv::Rect(29, 0, 71, 80)))));
    EXPECT_FALSE(MatsAreEqual(cv::Mat(blending.blended(cv::Rect(100, 0, 9, 80))),
                              cv::Mat(blending.image2(cv::Rect(20, 0, 9, 80)))));
}

TEST(DoBlendingImageForDualCam, SpreadsAStepOfLightOverTheStrip) {
    Blending blending(Shifted(-80.0, 0.0));
    blending.image1 = cv::Mat(90, 120, CV_8UC3, cv::Scalar(100, 100, 100));
    blending.image2 = cv::Mat(80, 100, CV_8UC3, cv::Scalar(140, 140, 140));
    ASSERT_TRUE(blending.Run());
    int steepest = 0;
    for (int column = 1; column < blending.blended.cols; ++column) {
        const int before = blending.blended.at<cv::Vec3b>(40, column - 1)[0];
        const int here = blending.blended.at<cv::Vec3b>(40, column)[0];
        EXPECT_GE(here, before);
        steepest = std::max(steepest, here - before);
    }
    EXPECT_EQ(blending.blended.at<cv::Vec3b>(40, 0)[0], 100);
    EXPECT_EQ(blending.blended.at<cv::Vec3b>(40, 179)[0], 140);
    EXPECT_LE(steepest, 5);
}

TEST(DoBlendingImageForDualCam, TakesTheStepsInOrderWithTheExactArguments) {
    RandomInput random(21);
    int seams = 0;
    for (int i = 0; i < 60; ++i) {
        Blending blending((cv::Mat_<double>(3, 3) << random.Real(0.9, 1.1), random.Real(-0.1, 0.1),
                           random.Real(-100.0, 20.0), random.Real(-0.1, 0.1), random.Real(0.9, 1.1),
                           random.Real(-30.0, 30.0), random.Real(-2e-4, 2e-4), random.Real(-2e-4, 2e-4), 1.0));
        blending.image1 = Texture({random.Integer(80, 140), random.Integer(60, 110)}, 300u + static_cast<unsigned>(i));
        blending.image2 = Texture({random.Integer(80, 140), random.Integer(20, 110)}, 400u + static_cast<unsigned>(i));
        if (!blending.Run()) continue;
        if (blending.seamX == 42.0) continue;
        double seamX = 0.0;
        EXPECT_THAT(blending.blended, EqualsMat(ExpectedAtSeam(blending, seamX)));
        EXPECT_EQ(blending.seamX, seamX);
        ++seams;
    }
    EXPECT_GT(seams, 30);
}

TEST(DoBlendingImageForDualCam, ScalesTheJoinedPictureLast) {
    Blending plain(Shifted(-80.0, -3.0));
    ASSERT_TRUE(plain.Run());
    EXPECT_EQ(plain.blended.size(), cv::Size(180, 83)) << "a scale of 1 changes no size";
    Blending scaled = plain;
    scaled.scaleX = 0.35;
    scaled.scaleY = 1.506;
    ASSERT_TRUE(scaled.Run());
    EXPECT_EQ(scaled.blended.size(), cv::Size(62, 124)) << "62.999... and 124.998, truncated";
    cv::Mat expected;
    cv::resize(plain.blended, expected, {62, 124}, 0.0, 0.0, cv::INTER_LINEAR);
    EXPECT_THAT(scaled.blended, EqualsMat(expected));
    EXPECT_EQ(scaled.seamX, plain.seamX) << "the seam is that before scaling";
}

TEST(DoBlendingImageForDualCam, AScaleThatLeavesNothingFailsAfterTheSeamWasWritten) {
    for (const double scale : {0.0, -1.0, 0.001, std::numeric_limits<double>::quiet_NaN(), 1e30}) {
        Blending blending(Shifted(-80.0, 0.0));
        blending.scaleX = scale;
        blending.ExpectRefusedByOpenCV();
        EXPECT_EQ(blending.seamX, 100.0);
    }
}

// OpenCV's own scaling writes outside its tables for such sizes, or asks for all memory there is.
TEST(DoBlendingImageForDualCam, AScaleToMoreColumnsThanOpenCVCountsFailsAfterTheSeamWasWritten) {
    constexpr double joinedColumns = 200.0;
    for (const double columns : {715'827'883.0, 1'431'655'800.0, 2'147'483'000.0}) {
        Blending blending(Shifted(-100, 0));
        blending.image1 = Texture({160, 80}, 1);
        blending.scaleX = columns / joinedColumns;
        blending.scaleY = 1.0 / 80.0;
        blending.ExpectRefusedByOpenCV();
        EXPECT_EQ(blending.seamX, 130.0);
    }
}

TEST(DoBlendingImageForDualCam, PicturesFartherApartThanOpenCVCountsFail) {
    for (const double columns : {-8e8, -2147483400.0}) {
        Blending apart(Shifted(columns, 0));
        apart.image2 = Texture({100, 1}, 2);
        apart.ExpectRefusedByOpenCV();
        EXPECT_EQ(apart.seamX, 42.0);
    }
}

TEST(DoBlendingImageForDualCam, JoinsTheSameInEveryMounting) {
    for (const double overlap : {8.0, 41.0}) {
        Blending straight(Shifted(overlap - 120.0, -4.0));
        ASSERT_TRUE(straight.Run());
        for (int rotate = -1; rotate <= 2; ++rotate) {
            for (const bool horizontal : {false, true}) {
                for (const bool vertical : {false, true}) {
                    Blending mounted = straight;
                    mounted.blended = cv::Mat();
                    mounted.image1 = Mounted(straight.image1, rotate, horizontal, vertical);
                    mounted.dir1 = ImageDirFlags(rotate, horizontal, vertical);
                    mounted.image2 = Mounted(straight.image2, 1 - rotate, vertical, horizontal);
                    mounted.dir2 = ImageDirFlags(1 - rotate, vertical, horizontal);
                    const cv::Mat before1 = mounted.image1.clone();
                    const cv::Mat before2 = mounted.image2.clone();
                    ASSERT_TRUE(mounted.Run());
                    EXPECT_THAT(mounted.blended, EqualsMat(straight.blended));
                    EXPECT_EQ(mounted.seamX, straight.seamX);
                    EXPECT_THAT(mounted.image1, EqualsMat(before1));
                    EXPECT_THAT(mounted.image2, EqualsMat(before2));
                }
            }
        }
    }
}

TEST(DoBlendingImageForDualCam, AnEmptyPictureIsToldInTheLastError) {
    for (const bool first : {true, false}) {
        Blending blending(cv::Mat{});
        (first ? blending.image1 : blending.image2) = cv::Mat();
        EXPECT_FALSE(blending.Run());
        EXPECT_EQ(GetLastError(), "Could not open or find the images!");
        EXPECT_EQ(blending.seamX, 42.0);
        EXPECT_THAT(blending.blended, EqualsMat(cv::Mat::ones(2, 2, CV_8U)));
    }
}

TEST(DoBlendingImageForDualCam, WhatIsNoHomographyIsRefused) {
    Blending(cv::Mat()).ExpectRefusedByOpenCV();
    Blending(cv::Mat(cv::Mat::eye(2, 3, CV_64F))).ExpectRefusedByOpenCV();
    Blending(cv::Mat(cv::Mat::eye(3, 3, CV_32F))).ExpectRefusedByOpenCV();
    Blending(cv::Mat(3, 3, CV_64FC2, cv::Scalar::all(1.0))).ExpectRefusedByOpenCV();
}

TEST(DoBlendingImageForDualCam, PicturesOfAnotherTypeAreRefused) {
    for (const int type : {CV_8UC1, CV_8UC4, CV_16UC3}) {
        for (const bool first : {true, false}) {
            for (const double overlap : {5.0, 40.0}) {
                Blending blending(Shifted(overlap - 120.0, 0.0));
                cv::Mat& image = first ? blending.image1 : blending.image2;
                image = cv::Mat(image.size(), type, cv::Scalar::all(9));
                blending.ExpectRefusedByOpenCV();
            }
        }
    }
}

TEST(DoBlendingImageForDualCam, APictureOfAFewRowsGetsWhatOpenCVMakesOfIt) {
    const auto ofRows = [](int rows) {
        Blending blending(Shifted(-80.0, 0.0));
        blending.image2 = Texture({100, rows}, 5);
        return blending;
    };
    for (const int refused : {1, 4}) {
        Blending blending = ofRows(refused);
        blending.ExpectRefusedByOpenCV();
        EXPECT_EQ(blending.seamX, 100.0) << "the seam was written before";
    }
    // Not an exception of OpenCV's own, and so it passes to the host.
    Blending three = ofRows(3);
    EXPECT_THROW(three.Run(), std::length_error);
    EXPECT_EQ(GetLastError(), untouched);
    EXPECT_THAT(three.blended, EqualsMat(cv::Mat::ones(2, 2, CV_8U)));
    for (const int rows : {2, 5, 6}) {
        Blending blending = ofRows(rows);
        EXPECT_TRUE(blending.Run()) << GetLastError();
        EXPECT_EQ(blending.blended.size(), cv::Size(180, rows));
    }
}

TEST(DoBlendingImageForDualCam, AHomographyOutOfAllBoundsDoesNoHarm) {
    EXPECT_TRUE(Blending(Shifted(-1e4, 0.0)).Run());
    for (const double far : {-1e10, -1e20, -1e300, -std::numeric_limits<double>::infinity()}) {
        EXPECT_FALSE(Blending(Shifted(far, 0.0)).Run());
        Blending(Shifted(30.0, far)).ExpectRefusedByOpenCV();
    }
    Blending(cv::Mat(3, 3, CV_64F, cv::Scalar(std::numeric_limits<double>::quiet_NaN()))).Run();
    Blending flat(cv::Mat::zeros(3, 3, CV_64F));
    EXPECT_TRUE(flat.Run()) << "all corners fall on the origin";
    EXPECT_THAT(flat.blended, EqualsMat(flat.image2));
}

TEST(DoBlendingImageForDualCam, MayOverwriteOneOfItsPictures) {
    for (const double overlap : {5.0, 40.0}) {
        Blending expected(Shifted(overlap - 120.0, 0.0));
        ASSERT_TRUE(expected.Run());
        Blending blending(expected.homography);
        ASSERT_TRUE(DoBlendingImageForDualCam(blending.image1, upright, blending.image2, upright, 1.0, 1.0,
                                              blending.homography, blending.seamX, blending.image2));
        EXPECT_THAT(blending.image2, EqualsMat(expected.blended));
    }
}

}  // namespace
}  // namespace Quorvane::CameraCalibration
