#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>

#include "calibration/CameraCalibrator.h"
#include "calibration/Homography.h"
#include "geometry/ContourGeometry.h"
#include "tests/calibration/CalibratorScenes.h"
#include "tests/support/Boards.h"
#include "tests/support/Matchers.h"
#include "tests/support/Pictures.h"

namespace Quorvane::CameraCalibration {

using namespace TestSupport;

namespace {

TEST(WarpPerspectiveImage, ShowsTheBedFromAboveAtTheToldScale) {
    constexpr int expansion = 2;
    CameraCalibrator calibrator = CalibratedOverTheBed();
    const Board board = BedBoard();
    const cv::Mat photograph = Photograph(BedCamera(), board, BedPose());
    const cv::Mat top = calibrator.WarpPerspectiveImage(photograph, expansion);
    ASSERT_FALSE(top.empty());

    // Circles lie where the mapping says, and squarely: one grid step apart in x and in y.
    const std::vector<cv::Point2d> inPicture = TruePoints(BedCamera(), board, BedPose());
    double largest = 0.0;
    int seen = 0;
    for (const cv::Point2d& point : inPicture) {
        const cv::Point2f expected = calibrator.WarpPerspectivePoint(point, expansion);
        const cv::Rect around(cvRound(expected.x) - 20, cvRound(expected.y) - 20, 41, 41);
        // The canvas has the shape of the photograph and may cut the view off; beyond the photograph it is black.
        if ((around & cv::Rect({}, top.size())) != around || cv::countNonZero(top(around)) != around.area()) continue;
        const cv::Moments moments = cv::moments(top(around) < 125, true);
        const cv::Point2f found(static_cast<float>(moments.m10 / moments.m00 + around.x),
                                static_cast<float>(moments.m01 / moments.m00 + around.y));
        largest = std::max(largest, Distance(found, expected));
        ++seen;
    }
    EXPECT_GT(seen, 40);
    std::cout << "top view: circles off by at most " << largest << " px of " << 1.0 / expansion << " mm\n";
    EXPECT_LT(largest, 0.6);
    const cv::Point2f step = calibrator.WarpPerspectivePoint(inPicture[1], expansion) -
                             calibrator.WarpPerspectivePoint(inPicture[0], expansion);
    EXPECT_NEAR(std::abs(step.x), expansion * bedStep, 0.05);
    EXPECT_NEAR(step.y, 0.0f, 0.05);
}

TEST(WarpPerspectiveImage, IsOpenCVsWarpOntoTheFittedCanvas) {
    CameraCalibrator calibrator = CalibratedOverTheBed();
    cv::Mat picture;
    cv::resize(LoadColourPicture("coffee.png"), picture, {640, 480});
    const cv::Mat scaled = UtilityFunctions::CalculateExpansionHomography(HomographyOf(calibrator), 3.0);
    const Canvas canvas = FitToCanvas(scaled, picture.size());
    cv::Mat expected;
    cv::warpPerspective(picture, expected, canvas.homography, canvas.size, cv::INTER_LANCZOS4, cv::BORDER_CONSTANT);
    EXPECT_THAT(calibrator.WarpPerspectiveImage(picture, 3), EqualsMat(expected));
    EXPECT_NEAR(expected.cols * 3.0 / 4.0, expected.rows, 1.0) << "the shape of the photograph";
}

TEST(WarpPerspectiveImage, AnUncalibratedObjectGivesACopy) {
    const cv::Mat picture = LoadColourPicture("coffee.png");
    const cv::Mat copy = CameraCalibrator().WarpPerspectiveImage(picture, 3);
    EXPECT_THAT(copy, EqualsMat(picture));
    EXPECT_NE(copy.data, picture.data);
    EXPECT_TRUE(CameraCalibrator().WarpPerspectiveImage(cv::Mat(), 3).empty());
}

TEST(WarpPerspectiveImage, LetsExceptionsPass) {
    CameraCalibrator calibrator = CalibratedOverTheBed();
    EXPECT_THROW(calibrator.WarpPerspectiveImage(cv::Mat(), 2), cv::Exception);
    const int sizes[] = {4, 5, 6};
    EXPECT_THROW(calibrator.WarpPerspectiveImage(cv::Mat(3, sizes, CV_8U, cv::Scalar(7)), 2), cv::Exception);
    EXPECT_THROW(WithHomography(cv::Mat::eye(2, 3, CV_64F)).WarpPerspectiveImage(cv::Mat::zeros(9, 9, CV_8U), 2),
                 cv::Exception);
    EXPECT_THROW(WithHomography(cv::Mat::eye(2, 2, CV_64F)).ImageToMachine({1.0f, 1.0f}), cv::Exception);
    EXPECT_THROW(WithHomography(cv::Mat::eye(3, 3, CV_32F)).ImageToMachine({1.0f, 1.0f}), cv::Exception);
    EXPECT_THROW(WithHomography(cv::Mat::eye(2, 3, CV_64F)).MachineToImage({1.0f, 1.0f}), cv::Exception);
}

TEST(WarpPerspectivePoint, FollowsTheCalibratedSizeAndNotThePictures) {
    CameraCalibrator calibrator = CalibratedOverTheBed();
    const cv::Mat scaled = UtilityFunctions::CalculateExpansionHomography(HomographyOf(calibrator), 2.0);
    EXPECT_EQ(calibrator.WarpPerspectivePoint({100.0f, 50.0f}, 2),
              Mapped(FitToCanvas(scaled, {640, 480}).homography, {100.0f, 50.0f}));
}

TEST(WarpPerspectivePoint, MissesInAPictureOfAnotherSize) {
    // Calibrated for 40 x 30 pixels: upside down, so that the picture's far corner comes to the origin.
    CameraCalibrator calibrator = WithHomography((cv::Mat_<double>(3, 3) << -1, 0, 0, 0, -1, 0, 0, 0, 1), {40, 30});
    const auto dotAt = [&](cv::Size size) {
        cv::Mat picture(size, CV_8UC1, cv::Scalar(0));
        picture.at<uchar>(10, 20) = 255;
        cv::Point brightest;
        cv::minMaxLoc(calibrator.WarpPerspectiveImage(picture, 1), nullptr, nullptr, nullptr, &brightest);
        return brightest;
    };
    const cv::Point2f told = calibrator.WarpPerspectivePoint({20.0f, 10.0f}, 1);
    EXPECT_EQ(told, cv::Point2f(20.0f, 20.0f));
    EXPECT_EQ(dotAt({40, 30}), cv::Point(20, 20));
    EXPECT_EQ(dotAt({80, 60}), cv::Point(60, 50)) << "not where the point is told to be";
}

// A photograph of a chessboard that a person holds: the machine units are its squares.
TEST(CameraCalibrator, MapsAPhotographedChessboard) {
    const cv::Mat photograph = LoadGrayPicture("chessboard.png");
    std::vector<cv::Point2f> corners;
    ASSERT_TRUE(cv::findChessboardCorners(photograph, {9, 6}, corners));
    cv::cornerSubPix(photograph, corners, {5, 5}, {-1, -1},
                     cv::TermCriteria(cv::TermCriteria::COUNT + cv::TermCriteria::EPS, 30, 1e-3));
    std::vector<cv::Point2f> machine;
    for (int row = 0; row < 6; ++row) {
        for (int column = 0; column < 9; ++column) {
            machine.emplace_back(static_cast<float>(column), static_cast<float>(row));
        }
    }
    CameraCalibrator calibrator;
    double maxError = 42.0;
    ASSERT_TRUE(calibrator.Calibrate(corners, machine, photograph.cols, photograph.rows, maxError));
    std::cout << "photographed chessboard: corners off by at most " << maxError << " squares\n";
    EXPECT_LT(maxError, 0.1) << "what is left is the lens";
    EXPECT_NEAR(calibrator.ImageToMachine_Distance(cv::norm(corners[1] - corners[0]), (corners[0] + corners[1]) / 2.0f,
                                                   CameraCalibrator::Horizontal),
                1.0, 0.05);

    // From above the squares are square: their corners lie on a grid of whole steps.
    constexpr int expansion = 40;
    const cv::Mat top = calibrator.WarpPerspectiveImage(photograph, expansion);
    const cv::Point2f origin = calibrator.WarpPerspectivePoint(corners[0], expansion);
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const cv::Point2f step = calibrator.WarpPerspectivePoint(corners[i], expansion) - origin;
        EXPECT_THAT(step, NearPoint(cv::Point2f(machine[i] * expansion), 0.2 * expansion));
    }
    EXPECT_NEAR(top.cols * 3.0 / 4.0, top.rows, 1.0) << "the shape of the photograph";
}

}  // namespace
}  // namespace Quorvane::CameraCalibration
