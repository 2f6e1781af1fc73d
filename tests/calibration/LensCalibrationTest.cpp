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
#include "tests/support/Scene.h"

namespace Quorvane::CameraCalibration {

using testing::StartsWith;
using namespace TestSupport;

namespace {

const cv::Size pattern(7, 5);
const char* const untouched = "left from before";

/// The pictures of a circle board that an operator would take with this camera. They are made once.
const std::vector<cv::Mat>& FisheyeShots() {
    static const std::vector<cv::Mat> shots = [] {
        const CameraModel camera = FisheyeCamera();
        const Board board = CircleBoard(pattern);
        std::vector<cv::Mat> pictures;
        for (const Pose& pose : PosesOverThePicture(camera, board, 7.0)) {
            pictures.push_back(Photograph(camera, board, pose));
        }
        return pictures;
    }();
    return shots;
}

cv::Mat PlainPicture() { return cv::Mat(480, 640, CV_8UC1, cv::Scalar(128)); }

/// A lens calibration and what it left.
struct Calibrated {
    bool success = false;
    cv::Mat K = cv::Mat::ones(2, 2, CV_8U);
    cv::Mat D = cv::Mat::ones(3, 1, CV_8U);
    double rms = 42.0;
    std::string text;

    void ExpectOutputsUntouched() const {
        EXPECT_THAT(K, EqualsMat(cv::Mat::ones(2, 2, CV_8U)));
        EXPECT_THAT(D, EqualsMat(cv::Mat::ones(3, 1, CV_8U)));
        EXPECT_EQ(rms, 42.0);
    }
};

Calibrated Calibrate(const std::vector<cv::Mat>& images, cv::Size boardPattern = pattern) {
    Calibrated result;
    SetLastError(untouched);
    cv::setRNGSeed(1);  // the grid search draws from OpenCV's generator
    result.success = CalibrateDistortedCamera(images, boardPattern, result.K, result.D, result.rms);
    result.text = GetLastError();
    return result;
}

/// The largest distance, over the part of the picture that the boards filled, between where the true camera shows a
/// direction and where the recovered one does.
double LargestDeviation(const CameraModel& truth, const cv::Mat& K, const cv::Mat& D) {
    CameraModel recovered = truth;
    recovered.K = cv::Matx33d(K);
    recovered.D = cv::Vec4d(D);
    double largest = 0.0;
    for (double y = 0.15; y <= 0.85; y += 0.05) {
        for (double x = 0.15; x <= 0.85; x += 0.05) {
            const cv::Point2d pixel(x * truth.size.width, y * truth.size.height);
            largest = std::max(largest, cv::norm(recovered.Project(truth.Ray(pixel)) - pixel));
        }
    }
    return largest;
}

struct Figures {
    double focalLength;  ///< Largest relative error of the two.
    double centre;       ///< Distance in pixels.
    double deviation;    ///< Largest distance in pixels, as above.
    double rms;
};

Figures CompareAndPrint(const std::string& name, const Calibrated& result, const CameraModel& truth) {
    const cv::Matx33d K(result.K);
    Figures figures{};
    figures.focalLength = std::max(std::abs(K(0, 0) / truth.K(0, 0) - 1.0), std::abs(K(1, 1) / truth.K(1, 1) - 1.0));
    figures.centre = std::hypot(K(0, 2) - truth.K(0, 2), K(1, 2) - truth.K(1, 2));
    figures.deviation = LargestDeviation(truth, result.K, result.D);
    figures.rms = result.rms;
    std::cout << name << ": focal length off by " << 100.0 * figures.focalLength << " %, centre by " << figures.centre
              << " px, picture by at most " << figures.deviation << " px, reprojection error " << figures.rms
              << " px\n";
    return figures;
}

std::vector<cv::Mat> Worsened(double blur, double noise, double light) {
    std::vector<cv::Mat> shots;
    for (const cv::Mat& shot : FisheyeShots()) {
        Scene scene(shot);
        if (blur > 0.0) scene.Blur(blur);
        shots.push_back(scene.Light(1.0, light).Noise(noise, static_cast<std::uint32_t>(shots.size() + 1)).Gray());
    }
    return shots;
}

TEST(CalibrateDistortedCamera, RecoversAKnownCamera) {
    const Calibrated result = Calibrate(FisheyeShots());
    ASSERT_TRUE(result.success) << result.text;
    EXPECT_EQ(result.text, untouched);
    EXPECT_EQ(result.K.size(), cv::Size(3, 3));
    EXPECT_EQ(result.K.type(), CV_64FC1);
    EXPECT_EQ(result.D.size(), cv::Size(1, 4));
    EXPECT_EQ(result.D.type(), CV_64FC1);
    const Figures figures = CompareAndPrint("sharp pictures", result, FisheyeCamera());
    EXPECT_LT(figures.focalLength, 0.002);
    EXPECT_LT(figures.centre, 0.2);
    EXPECT_LT(figures.deviation, 0.3);
    EXPECT_LT(figures.rms, 0.05);
    EXPECT_GT(figures.rms, 0.0);
}

TEST(CalibrateDistortedCamera, RecoversAKnownCameraFromBlurredNoisyAndUnevenlyLitPictures) {
    const Calibrated blurred = Calibrate(Worsened(1.2, 0.0, 1.0));
    ASSERT_TRUE(blurred.success) << blurred.text;
    EXPECT_LT(CompareAndPrint("blur 1.2 px", blurred, FisheyeCamera()).deviation, 0.3);

    const Calibrated uneven = Calibrate(Worsened(0.8, 0.0, 0.45));
    ASSERT_TRUE(uneven.success) << uneven.text;
    EXPECT_LT(CompareAndPrint("blur 0.8 px, light down to 45 %", uneven, FisheyeCamera()).deviation, 0.6);

    const Calibrated noisy = Calibrate(Worsened(0.8, 3.0, 0.7));
    ASSERT_TRUE(noisy.success) << noisy.text;
    // The refinement is made for corners. Inside a dot it finds nothing in a clean picture and stays where it is, but
    // follows the noise of a noisy one.
    const Figures figures = CompareAndPrint("blur 0.8 px, light down to 70 %, noise 3", noisy, FisheyeCamera());
    EXPECT_LT(figures.focalLength, 0.03);
    EXPECT_LT(figures.deviation, 12.0);
    EXPECT_LT(figures.rms, 1.5);
}

TEST(CalibrateDistortedCamera, ColourPicturesGiveTheSameAsGrayOnes) {
    std::vector<cv::Mat> colour;
    for (const cv::Mat& shot : FisheyeShots()) {
        cv::cvtColor(shot, colour.emplace_back(), cv::COLOR_GRAY2BGR);
    }
    const Calibrated expected = Calibrate(FisheyeShots());
    const Calibrated result = Calibrate(colour);
    ASSERT_TRUE(result.success);
    EXPECT_THAT(result.K, EqualsMat(expected.K));
    EXPECT_THAT(result.D, EqualsMat(expected.D));
    EXPECT_EQ(result.rms, expected.rms);
}

bool ShowsGrid(const cv::Mat& picture, cv::Size grid) {
    std::vector<cv::Point2f> centers;
    return cv::findCirclesGrid(picture, grid, centers, cv::CALIB_CB_SYMMETRIC_GRID, cv::SimpleBlobDetector::create());
}

TEST(CalibrateDistortedCamera, ABoardTurnedByNinetyDegreesIsFoundAndItsGridFollows) {
    std::vector<cv::Mat> turned;
    for (const cv::Mat& shot : FisheyeShots()) cv::rotate(shot, turned.emplace_back(), cv::ROTATE_90_CLOCKWISE);
    const Calibrated result = Calibrate(turned);
    ASSERT_TRUE(result.success) << result.text;
    EXPECT_EQ(result.text, untouched) << "every picture is used";
    EXPECT_LT(result.rms, 0.05) << "a grid that did not follow would fit nowhere";
    EXPECT_NEAR(cv::Matx33d(result.K)(0, 0) / FisheyeCamera().K(1, 1), 1.0, 0.002);

    const Calibrated swapped = Calibrate(FisheyeShots(), {5, 7});
    ASSERT_TRUE(swapped.success) << swapped.text;
    EXPECT_LT(swapped.rms, 0.05);
    EXPECT_NEAR(cv::Matx33d(swapped.K)(0, 0) / FisheyeCamera().K(0, 0), 1.0, 0.002);
}

TEST(CalibrateDistortedCamera, ABoardThatOnlyTheEvenedPictureShowsIsUsed) {
    const cv::Mat dark = Scene(FisheyeShots()[0]).Light(0.17, 0.17).Gray();
    ASSERT_FALSE(ShowsGrid(dark, pattern));
    const Calibrated result = Calibrate({dark});
    EXPECT_TRUE(result.success) << result.text;
    EXPECT_EQ(result.text, untouched);
    EXPECT_TRUE(Calibrate({dark}, {5, 7}).success) << "also with the pattern told turned";
}

TEST(CalibrateDistortedCamera, OneUsablePictureIsEnough) {
    const Calibrated result = Calibrate({FisheyeShots()[1]});
    EXPECT_TRUE(result.success) << result.text;
    EXPECT_GE(result.rms, 0.0);
    EXPECT_EQ(result.text, untouched);
}

TEST(CalibrateDistortedCamera, WithoutAUsablePictureItFailsAndTouchesNoOutput) {
    for (const std::vector<cv::Mat>& images : {std::vector<cv::Mat>{}, {cv::Mat()}, {PlainPicture(), PlainPicture()}}) {
        const Calibrated result = Calibrate(images);
        EXPECT_FALSE(result.success);
        EXPECT_EQ(result.text, "Not enough points for calibration.");
        result.ExpectOutputsUntouched();
    }
}

TEST(CalibrateDistortedCamera, SkippedPicturesLeaveTheirNumberInTheLastErrorOfASuccess) {
    const cv::Mat good = FisheyeShots()[0];
    const Calibrated second = Calibrate({good, PlainPicture()});
    EXPECT_TRUE(second.success);
    EXPECT_EQ(second.text, "Could not find circles grid in the image[ 2]");
    const Calibrated last = Calibrate({PlainPicture(), good, PlainPicture(), PlainPicture()});
    EXPECT_TRUE(last.success);
    EXPECT_EQ(last.text, "Could not find circles grid in the image[ 4]");
}

TEST(CalibrateDistortedCamera, EmptyAndFourChannelPicturesAreSkippedSilentlyButCounted) {
    const cv::Mat good = FisheyeShots()[0];
    cv::Mat withAlpha;
    cv::cvtColor(good, withAlpha, cv::COLOR_GRAY2BGRA);
    const Calibrated silent = Calibrate({cv::Mat(), withAlpha, good});
    EXPECT_TRUE(silent.success);
    EXPECT_EQ(silent.text, untouched);
    const Calibrated counted = Calibrate({cv::Mat(), withAlpha, PlainPicture(), good, withAlpha});
    EXPECT_TRUE(counted.success);
    EXPECT_EQ(counted.text, "Could not find circles grid in the image[ 3]");
    EXPECT_EQ(Calibrate({withAlpha}).text, "Not enough points for calibration.");
}

TEST(CalibrateDistortedCamera, TheFirstPictureGivesTheSizeOfAll) {
    // A larger plain picture in front shifts the centre that the calibration starts from, and with one view it ends
    // elsewhere; behind, it changes nothing.
    const cv::Mat good = FisheyeShots()[1];
    const cv::Mat large(960, 1280, CV_8UC1, cv::Scalar(128));
    const Calibrated alone = Calibrate({good});
    EXPECT_THAT(Calibrate({good, large}).K, EqualsMat(alone.K));
    EXPECT_GT(cv::norm(Calibrate({large, good}).K, alone.K), 0.0);
}

TEST(CalibrateDistortedCamera, AnExceptionOfTheLibraryEndsItWithANegativeError) {
    cv::Mat deep;
    FisheyeShots()[0].convertTo(deep, CV_16U, 256.0);
    // Alone, too: with no usable picture the exception comes before the check for points.
    for (const std::vector<cv::Mat>& images : {std::vector<cv::Mat>{PlainPicture(), FisheyeShots()[0], deep}, {deep}}) {
        const Calibrated result = Calibrate(images);
        EXPECT_FALSE(result.success);
        EXPECT_EQ(result.rms, -1.0);
        EXPECT_THAT(result.text, StartsWith("[Quorvane::CameraCalibration::CalibrateDistortedCamera]OpenCV("));
    }
}

TEST(CalibrateDistortedCamera, APatternWithoutCirclesIsNotFound) {
    for (const cv::Size& grid : {cv::Size(0, 0), cv::Size(1, 1), cv::Size(0, 5)}) {
        const Calibrated result = Calibrate({FisheyeShots()[0]}, grid);
        EXPECT_FALSE(result.success);
        EXPECT_EQ(result.text, "Not enough points for calibration.");
        result.ExpectOutputsUntouched();
    }
    const Calibrated negative = Calibrate({FisheyeShots()[0]}, {-7, 5});
    EXPECT_EQ(negative.rms, -1.0);
    EXPECT_THAT(negative.text, StartsWith("[Quorvane::CameraCalibration::CalibrateDistortedCamera]OpenCV("));
}

TEST(CalibrateDistortedCamera, PhotographsWithoutItsBoardAreNotUsed) {
    const Calibrated result = Calibrate({LoadColourPicture("coffee.png"), LoadGrayPicture("chessboard.png")});
    EXPECT_FALSE(result.success);
    EXPECT_EQ(result.text, "Not enough points for calibration.");
    const Calibrated used = Calibrate({LoadGrayPicture("chessboard.png"), FisheyeShots()[1]});
    EXPECT_TRUE(used.success);
    EXPECT_EQ(used.text, "Could not find circles grid in the image[ 1]");
}

TEST(CalibrateDistortedCamera, LeavesThePicturesAlone) {
    const cv::Mat picture = FisheyeShots()[0].clone();
    Calibrate({picture});
    EXPECT_THAT(picture, EqualsMat(FisheyeShots()[0]));
}

}  // namespace
}  // namespace Quorvane::CameraCalibration
