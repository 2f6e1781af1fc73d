#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>

#include "calibration/CameraCalibration.h"
#include "calibration/LastError.h"
#include "tests/support/Boards.h"
#include "tests/support/Matchers.h"
#include "tests/support/Pictures.h"

namespace Quorvane::CameraCalibration {

using testing::StartsWith;
using namespace TestSupport;

namespace {

const cv::Size pattern(7, 5);
const char* const untouched = "left from before";

cv::Mat FisheyeShot() {
    static const cv::Mat shot = [] {
        const Board board = CircleBoard(pattern);
        return Photograph(FisheyeCamera(), board, PosesOverThePicture(FisheyeCamera(), board, 7.0)[0]);
    }();
    return shot;
}

/// The arguments of a straightening and what came of it.
struct Straightened {
    cv::Mat distorted = FisheyeShot();
    cv::Mat K = cv::Mat(FisheyeCamera().K);
    cv::Mat D = cv::Mat(FisheyeCamera().D);
    cv::Mat undistorted;

    bool Run(double fxScale = 1.0, double fyScale = 1.0) {
        SetLastError(untouched);
        return UnDistortedImage(distorted, K, D, fxScale, fyScale, undistorted);
    }
    void ExpectRefusedWith(const std::string& text) {
        undistorted = cv::Mat::ones(2, 2, CV_8U);
        EXPECT_FALSE(Run());
        EXPECT_EQ(GetLastError(), text);
        EXPECT_THAT(undistorted, EqualsMat(cv::Mat::ones(2, 2, CV_8U)));
    }
};

TEST(UnDistortedImage, ShowsTheBoardAsAPinholeCameraWould) {
    const CameraModel camera = FisheyeCamera();
    const Board board = CircleBoard(pattern);
    const Pose pose = PosesOverThePicture(camera, board, 7.0)[3];
    for (const cv::Point2d scale : {cv::Point2d(1.0, 1.0), cv::Point2d(0.75, 0.6)}) {
        Straightened run;
        run.distorted = Photograph(camera, board, pose);
        ASSERT_TRUE(run.Run(scale.x, scale.y));
        EXPECT_EQ(GetLastError(), untouched);

        CameraModel pinhole = camera;
        pinhole.fisheye = false;
        pinhole.K(0, 0) *= scale.x;
        pinhole.K(1, 1) *= scale.y;
        const cv::Mat truth = Photograph(pinhole, board, pose);
        std::vector<cv::Point2f> found;
        std::vector<cv::Point2f> expected;
        ASSERT_TRUE(cv::findCirclesGrid(run.undistorted, pattern, found));
        ASSERT_TRUE(cv::findCirclesGrid(truth, pattern, expected));
        double largest = 0.0;
        for (std::size_t i = 0; i < found.size(); ++i) largest = std::max(largest, cv::norm(found[i] - expected[i]));
        std::cout << "straightened at " << scale << ": circles off by at most " << largest << " px\n";
        EXPECT_LT(largest, 0.15);
    }
}

TEST(UnDistortedImage, IsOpenCVsRemapWithTheScaledCameraMatrix) {
    Straightened run;
    ASSERT_TRUE(run.Run(0.5, 0.7));
    cv::Matx33d newK = FisheyeCamera().K;
    newK(0, 0) *= 0.5;
    newK(1, 1) *= 0.7;
    cv::Mat map1;
    cv::Mat map2;
    cv::fisheye::initUndistortRectifyMap(run.K, run.D, cv::Matx33d::eye(), newK, run.distorted.size(), CV_16SC2, map1,
                                         map2);
    cv::Mat expected;
    cv::remap(run.distorted, expected, map1, map2, cv::INTER_LINEAR);
    EXPECT_THAT(run.undistorted, EqualsMat(expected));
    EXPECT_EQ(run.undistorted.at<uchar>(0, 0), 0) << "what no pixel shows is black";
}

TEST(UnDistortedImage, AtItsOwnScaleIsThePlainStraightening) {
    Straightened run;
    ASSERT_TRUE(run.Run(1.0, 1.0));
    cv::Mat map1;
    cv::Mat map2;
    cv::fisheye::initUndistortRectifyMap(run.K, run.D, cv::Matx33d::eye(), run.K, run.distorted.size(), CV_16SC2, map1,
                                         map2);
    cv::Mat expected;
    cv::remap(run.distorted, expected, map1, map2, cv::INTER_LINEAR);
    EXPECT_THAT(run.undistorted, EqualsMat(expected));
}

/// How far the corners of a photographed chessboard lie from the straight lines through their rows, in pixels.
double LargestBend(const cv::Mat& picture) {
    const cv::Size corners(9, 6);
    std::vector<cv::Point2f> found;
    if (!cv::findChessboardCorners(picture, corners, found)) return 1e9;
    cv::cornerSubPix(picture, found, {5, 5}, {-1, -1},
                     cv::TermCriteria(cv::TermCriteria::COUNT + cv::TermCriteria::EPS, 30, 1e-3));
    double largest = 0.0;
    for (auto row = found.begin(); row != found.end(); row += corners.width) {
        const std::vector<cv::Point2f> points(row, row + corners.width);
        cv::Vec4f line;
        cv::fitLine(points, line, cv::DIST_L2, 0.0, 0.01, 0.01);
        for (const cv::Point2f& point : points) {
            const cv::Point2f off = point - cv::Point2f(line[2], line[3]);
            largest = std::max(largest, std::abs(static_cast<double>(off.x * line[1] - off.y * line[0])));
        }
    }
    return largest;
}

TEST(UnDistortedImage, StraightensAPhotograph) {
    Straightened run;
    run.distorted = LoadGrayPicture("chessboard.png");
    run.K = cv::Mat(ChessboardCamera().K);
    run.D = cv::Mat(ChessboardCamera().D);
    ASSERT_TRUE(run.Run()) << GetLastError();
    const double before = LargestBend(run.distorted);
    const double after = LargestBend(run.undistorted);
    std::cout << "photographed chessboard: rows bent by " << before << " px, straightened " << after << " px\n";
    EXPECT_GT(before, 1.5);
    EXPECT_LT(after, 0.4);
}

TEST(UnDistortedImage, LeavesTheCameraAndThePictureAlone) {
    Straightened run;
    const cv::Mat picture = run.distorted.clone();
    ASSERT_TRUE(run.Run(0.5, 0.5));
    EXPECT_THAT(run.K, EqualsMat(cv::Mat(FisheyeCamera().K)));
    EXPECT_THAT(run.D, EqualsMat(cv::Mat(FisheyeCamera().D)));
    EXPECT_THAT(run.distorted, EqualsMat(picture));
}

TEST(UnDistortedImage, KeepsTheKindOfPictureAndMayWriteOverIt) {
    Straightened gray;
    ASSERT_TRUE(gray.Run());
    Straightened colour;
    cv::cvtColor(gray.distorted, colour.distorted, cv::COLOR_GRAY2BGR);
    ASSERT_TRUE(colour.Run());
    ASSERT_EQ(colour.undistorted.type(), CV_8UC3);
    cv::Mat firstChannel;
    cv::extractChannel(colour.undistorted, firstChannel, 0);
    EXPECT_THAT(firstChannel, EqualsMat(gray.undistorted));

    cv::Mat picture = gray.distorted.clone();
    ASSERT_TRUE(UnDistortedImage(picture, gray.K, gray.D, 1.0, 1.0, picture));
    EXPECT_THAT(picture, EqualsMat(gray.undistorted));
}

TEST(UnDistortedImage, TakesAFloatCamera) {
    Straightened run;
    run.K.convertTo(run.K, CV_32F);
    run.D.convertTo(run.D, CV_32F);
    ASSERT_TRUE(run.Run(0.5, 0.5)) << GetLastError();
    EXPECT_EQ(run.K.type(), CV_32F);
    Straightened widened;
    run.K.convertTo(widened.K, CV_64F);
    run.D.convertTo(widened.D, CV_64F);
    ASSERT_TRUE(widened.Run(0.5, 0.5)) << GetLastError();
    EXPECT_THAT(run.undistorted, EqualsMat(widened.undistorted));
}

TEST(UnDistortedImage, TakesACameraThatIsPartOfALargerMatrix) {
    Straightened plain;
    ASSERT_TRUE(plain.Run(0.5, 0.5));
    cv::Mat large(4, 5, CV_64F, cv::Scalar(0.7));
    Straightened part;
    part.K.copyTo(large(cv::Rect(1, 1, 3, 3)));
    part.D.copyTo(large.col(4));
    part.K = large(cv::Rect(1, 1, 3, 3));
    part.D = large.col(4);
    const cv::Mat before = large.clone();
    ASSERT_TRUE(part.Run(0.5, 0.5)) << GetLastError();
    EXPECT_THAT(part.undistorted, EqualsMat(plain.undistorted));
    EXPECT_THAT(large, EqualsMat(before));
}

TEST(UnDistortedImage, RefusesWhatItCannotUseInThisOrder) {
    Straightened run;
    run.distorted = cv::Mat();
    run.K = cv::Mat();
    run.D = cv::Mat::zeros(1, 4, CV_64F);
    run.ExpectRefusedWith("Input distorted image is empty");
    run.distorted = FisheyeShot();
    run.ExpectRefusedWith("Camera matrix or distortion coefficients are empty");
    run.K = cv::Mat::eye(3, 4, CV_64F);
    run.ExpectRefusedWith("Camera matrix size is incorrect");
    run.K = cv::Mat::eye(2, 3, CV_64F);
    run.ExpectRefusedWith("Camera matrix size is incorrect");
    run.K = cv::Mat::eye(3, 3, CV_64F);
    run.ExpectRefusedWith("Distortion coefficients size is incorrect");
    run.D = cv::Mat();
    run.ExpectRefusedWith("Camera matrix or distortion coefficients are empty");
}

TEST(UnDistortedImage, RefusesRowsAndOtherLengthsOfCoefficients) {
    for (const cv::Size size : {cv::Size(4, 1), cv::Size(1, 9), cv::Size(1, 3), cv::Size(1, 6), cv::Size(5, 1),
                                cv::Size(2, 4), cv::Size(1, 12)}) {
        Straightened run;
        run.D = cv::Mat::zeros(size, CV_64F);
        run.ExpectRefusedWith("Distortion coefficients size is incorrect");
    }
}

TEST(UnDistortedImage, FiveAndEightCoefficientsPassTheCheckAndAreLeftToOpenCV) {
    for (const int rows : {5, 8}) {
        Straightened run;
        run.D = cv::Mat::zeros(rows, 1, CV_64F);
        EXPECT_FALSE(run.Run());
        EXPECT_THAT(GetLastError(), StartsWith("[Quorvane::CameraCalibration::UnDistortedImage]OpenCV("));
    }
}

TEST(UnDistortedImage, RefusesAnArrayOfThreeDimensions) {
    const int sizes[] = {4, 5, 6};
    Straightened run;
    run.distorted = cv::Mat(3, sizes, CV_8U, cv::Scalar(7));
    EXPECT_FALSE(run.Run());
    EXPECT_THAT(GetLastError(), StartsWith("[Quorvane::CameraCalibration::UnDistortedImage]OpenCV("));
    EXPECT_TRUE(run.undistorted.empty());
}

TEST(UnDistortedImage, ReportsExceptionsOfTheLibrary) {
    Straightened run;
    run.K = cv::Mat::eye(3, 3, CV_32S);
    EXPECT_FALSE(run.Run());
    EXPECT_THAT(GetLastError(), StartsWith("[Quorvane::CameraCalibration::UnDistortedImage]OpenCV("));
}

}  // namespace
}  // namespace Quorvane::CameraCalibration
