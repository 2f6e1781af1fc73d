#include "calibration/CameraCalibrator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>
#include <type_traits>

#include "calibration/CameraCalibration.h"
#include "calibration/Homography.h"
#include "calibration/LastError.h"
#include "geometry/ContourGeometry.h"
#include "tests/calibration/CalibratorScenes.h"
#include "tests/support/Boards.h"
#include "tests/support/CapturedStream.h"
#include "tests/support/Matchers.h"
#include "tests/support/Pictures.h"
#include "tests/support/RandomInput.h"
#include "tests/support/ScratchFolder.h"

namespace Quorvane::CameraCalibration {

using testing::IsEmpty;
using testing::SizeIs;
using namespace TestSupport;

namespace {

constexpr auto Diagonal = CameraCalibrator::Diagonal;
constexpr auto Horizontal = CameraCalibrator::Horizontal;
constexpr auto Vertical = CameraCalibrator::Vertical;

TEST(CameraCalibrator, StartsUncalibrated) {
    CameraCalibrator calibrator;
    EXPECT_FALSE(calibrator.IsCalibrateVaild());
    EXPECT_EQ(calibrator.ImageToMachine({3.0f, 4.0f}), cv::Point2f(-1.0f, -1.0f));
    EXPECT_EQ(calibrator.MachineToImage({3.0f, 4.0f}), cv::Point2f(-1.0f, -1.0f));
    EXPECT_EQ(calibrator.WarpPerspectivePoint({3.0f, 4.0f}, 2), cv::Point2f(-1.0f, -1.0f));
    EXPECT_EQ(calibrator.ImageToMachine_Distance(5.0, {3.0f, 4.0f}, Horizontal), -1.0);
    EXPECT_EQ(calibrator.MachineToImage_Distance(5.0, {3.0f, 4.0f}, Horizontal), -1.0);
    EXPECT_EQ(calibrator.CalcMaxError({{1.0f, 1.0f}}, {{1.0f, 1.0f}}), 0.0);
    EXPECT_EQ(calibrator.CalcMaxError({}, {}), 0.0) << "not -1.0";
}

TEST(CameraCalibrator, ModesAreInts) {
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<CameraCalibrator::DistanceMode>, int>));
    EXPECT_EQ(static_cast<int>(Diagonal), 0);
    EXPECT_EQ(static_cast<int>(Horizontal), 1);
    EXPECT_EQ(static_cast<int>(Vertical), 2);
}

TEST(CameraCalibrator, HasNoVirtualOperations) { EXPECT_FALSE(std::is_polymorphic_v<CameraCalibrator>); }

TEST(GenerateCailbratePointGrid, RunsFromTheUpperLeftRowByRow) {
    const std::vector<cv::Point2f> grid = CameraCalibrator().GenerateCailbratePointGrid(100.0, 80.0, 5);
    ASSERT_THAT(grid, SizeIs(25));
    EXPECT_EQ(grid[0], cv::Point2f(-50.0f, 40.0f));
    EXPECT_EQ(grid[1], cv::Point2f(-25.0f, 40.0f));
    EXPECT_EQ(grid[5], cv::Point2f(-50.0f, 20.0f));
    EXPECT_EQ(grid[12], cv::Point2f(0.0f, 0.0f));
    EXPECT_EQ(grid[24], cv::Point2f(50.0f, -40.0f));
}

TEST(GenerateCailbratePointGrid, NeedsAnOddNumberOfAtLeastThree) {
    CameraCalibrator calibrator;
    for (const int count : {4, 2, 1, 0, -1, -3, 100}) {
        EXPECT_THAT(calibrator.GenerateCailbratePointGrid(100.0, 80.0, count), IsEmpty()) << count;
    }
    EXPECT_THAT(calibrator.GenerateCailbratePointGrid(100.0, 80.0, 3), SizeIs(9));
}

TEST(Calibrate, RefusesTooFewEmptyAndUnequalListsAndChangesNothing) {
    const PointPairs pairs = BedPairs();
    const auto first = [](const std::vector<cv::Point2f>& points, std::size_t count) {
        return std::vector<cv::Point2f>(points.begin(), points.begin() + static_cast<std::ptrdiff_t>(count));
    };
    const std::pair<std::vector<cv::Point2f>, std::vector<cv::Point2f>> refused[] = {
        {{}, {}},
        {pairs.image, {}},
        {{}, pairs.machine},
        {first(pairs.image, 5), first(pairs.machine, 5)},
        {first(pairs.image, 7), first(pairs.machine, 6)},
        {first(pairs.image, 6), first(pairs.machine, 7)},
    };
    for (const auto& [image, machine] : refused) {
        CameraCalibrator calibrator;
        double maxError = 42.0;
        EXPECT_FALSE(calibrator.Calibrate(image, machine, 640, 480, maxError));
        EXPECT_FALSE(calibrator.IsCalibrateVaild());
        EXPECT_EQ(maxError, 42.0);

        CameraCalibrator calibrated = CalibratedOverTheBed();
        const cv::Point2f before = calibrated.ImageToMachine({100.0f, 200.0f});
        EXPECT_FALSE(calibrated.Calibrate(image, machine, 640, 480, maxError));
        EXPECT_TRUE(calibrated.IsCalibrateVaild());
        EXPECT_EQ(calibrated.ImageToMachine({100.0f, 200.0f}), before);
    }
}

TEST(Calibrate, SixPairsAreEnough) {
    PointPairs pairs = BedPairs();
    pairs.image = {pairs.image[0], pairs.image[4], pairs.image[12], pairs.image[20], pairs.image[24], pairs.image[7]};
    pairs.machine = {pairs.machine[0],  pairs.machine[4],  pairs.machine[12],
                     pairs.machine[20], pairs.machine[24], pairs.machine[7]};
    CameraCalibrator calibrator;
    double maxError = 42.0;
    EXPECT_TRUE(calibrator.Calibrate(pairs.image, pairs.machine, 640, 480, maxError));
    EXPECT_LT(maxError, 1e-3);
}

TEST(Calibrate, RecoversTheMappingOfAKnownCamera) {
    for (const double noise : {0.0, 0.1, 0.5}) {
        RandomInput random(3);
        PointPairs pairs = BedPairs();
        for (cv::Point2f& point : pairs.image) {
            point +=
                cv::Point2f(static_cast<float>(noise * random.Normal()), static_cast<float>(noise * random.Normal()));
        }
        CameraCalibrator calibrator;
        double maxError = 42.0;
        ASSERT_TRUE(calibrator.Calibrate(pairs.image, pairs.machine, 640, 480, maxError));
        EXPECT_TRUE(calibrator.IsCalibrateVaild());
        EXPECT_LE(maxError, 1.0) << "pairs farther off are outliers";

        const PointPairs truth = BedPairs(9);
        double largest = 0.0;
        double back = 0.0;
        for (std::size_t i = 0; i < truth.image.size(); ++i) {
            largest = std::max(largest, Distance(calibrator.ImageToMachine(truth.image[i]), truth.machine[i]));
            back = std::max(back, Distance(calibrator.MachineToImage(truth.machine[i]), truth.image[i]));
        }
        std::cout << "noise " << noise << " px: machine off by at most " << largest << " mm, picture by " << back
                  << " px, told " << maxError << " mm (a pixel is " << bedWidth / 560.0 << " mm)\n";
        EXPECT_LT(largest, 2e-3 + 2.0 * noise * bedWidth / 560.0);
        EXPECT_LT(back, 2e-3 + 2.0 * noise);
    }
}

TEST(Calibrate, OutliersReachNeitherTheMappingNorTheError) {
    PointPairs pairs = BedPairs();
    pairs.machine[3] += cv::Point2f(40.0f, -3.0f);
    pairs.machine[11] += cv::Point2f(-15.0f, 22.0f);
    pairs.machine[18] += cv::Point2f(0.0f, 8.0f);
    CameraCalibrator calibrator;
    double maxError = 42.0;
    ASSERT_TRUE(calibrator.Calibrate(pairs.image, pairs.machine, 640, 480, maxError));
    EXPECT_LT(maxError, 1e-3);
    const PointPairs truth = BedPairs();
    EXPECT_LT(calibrator.CalcMaxError(truth.image, truth.machine), 1e-3);
    EXPECT_NEAR(calibrator.CalcMaxError(pairs.image, pairs.machine), std::hypot(40.0, 3.0), 1e-2);
}

TEST(Calibrate, SixPairsOnALineFindNoHomography) {
    const PointPairs line = PairsOnALine();
    CameraCalibrator calibrator;
    double maxError = 42.0;
    EXPECT_FALSE(calibrator.Calibrate(line.image, line.machine, 640, 480, maxError));
    EXPECT_FALSE(calibrator.IsCalibrateVaild());
    EXPECT_EQ(maxError, 42.0);
}

TEST(Calibrate, AFailureLeavesACalibratedObjectCalibratedWithoutAHomography) {
    CameraCalibrator calibrator = CalibratedButEmpty();
    EXPECT_TRUE(calibrator.IsCalibrateVaild());
    EXPECT_EQ(calibrator.ImageToMachine({3.0f, 4.0f}), cv::Point2f(-1.0f, -1.0f));
    EXPECT_EQ(calibrator.CalcMaxError({{1.0f, 1.0f}}, {{1.0f, 1.0f}}), -1.0);
    EXPECT_EQ(calibrator.WarpPerspectivePoint({3.0f, 4.0f}, 2), cv::Point2f(-1.0f, -1.0f));
    const cv::Mat picture = LoadColourPicture("coffee.png");
    const cv::Mat copy = calibrator.WarpPerspectiveImage(picture, 2);
    EXPECT_THAT(copy, EqualsMat(picture));
    EXPECT_NE(copy.data, picture.data);
    EXPECT_EQ(calibrator.ImageToMachine_Distance(5.0, {3.0f, 4.0f}, Horizontal), 0.0) << "both ends fail alike";
}

TEST(Calibrate, AFailureLeavesTheSizesOfThePicture) {
    CameraCalibrator calibrator = CalibratedOverTheBed();
    const PointPairs line = PairsOnALine();
    double maxError = 42.0;
    ASSERT_FALSE(calibrator.Calibrate(line.image, line.machine, 17, 19, maxError));
    EXPECT_EQ(maxError, 42.0);
    const ScratchFolder folder;
    ASSERT_TRUE(calibrator.SaveCalibration(folder.File("camera.yml"), false));
    const cv::FileStorage file(folder.File("camera.yml"), cv::FileStorage::READ);
    EXPECT_EQ(static_cast<int>(file["SourceImageWidth"]), 640);
    EXPECT_EQ(static_cast<int>(file["SourceImageHeight"]), 480);
}

TEST(CameraCalibrator, AHomographyAloneDoesNotMakeItCalibrated) {
    CameraCalibrator calibrator = UncalibratedWith(cv::Mat::eye(3, 3, CV_64F));
    EXPECT_FALSE(calibrator.IsCalibrateVaild());
    EXPECT_EQ(calibrator.CalcMaxError({{1.0f, 1.0f}}, {{5.0f, 4.0f}}), 0.0);
    EXPECT_EQ(calibrator.CalcMaxError({}, {{5.0f, 4.0f}}), 0.0);
    EXPECT_EQ(calibrator.ImageToMachine({3.0f, 4.0f}), cv::Point2f(-1.0f, -1.0f));
    EXPECT_EQ(calibrator.MachineToImage({3.0f, 4.0f}), cv::Point2f(-1.0f, -1.0f));
    EXPECT_EQ(calibrator.ImageToMachine_Distance(5.0, {3.0f, 4.0f}, Horizontal), -1.0);
    EXPECT_EQ(calibrator.WarpPerspectivePoint({3.0f, 4.0f}, 2), cv::Point2f(-1.0f, -1.0f));
}

TEST(MachineToImage, TellsAMissingHomographyApart) {
    CameraCalibrator calibrator = CalibratedButEmpty();
    const CapturedStream errors(std::cerr);
    EXPECT_EQ(calibrator.MachineToImage({3.0f, 4.0f}), cv::Point2f(0.0f, 0.0f));
    EXPECT_EQ(errors.Text(), "Error: Homography matrix is not initialized!\n");
    EXPECT_EQ(calibrator.MachineToImage_Distance(5.0, {3.0f, 4.0f}, Vertical), 0.0);
}

TEST(MachineToImage, AnUncalibratedObjectSaysNothing) {
    const CapturedStream errors(std::cerr);
    EXPECT_EQ(CameraCalibrator().MachineToImage({3.0f, 4.0f}), cv::Point2f(-1.0f, -1.0f));
    EXPECT_EQ(errors.Text(), "");
}

TEST(CalcMaxError, IsTheLargestDistanceInMachineUnits) {
    CameraCalibrator calibrator = WithHomography(cv::Mat::eye(3, 3, CV_64F) * 1.0);
    EXPECT_EQ(
        calibrator.CalcMaxError({{1.0f, 1.0f}, {5.0f, 5.0f}, {2.0f, 2.0f}}, {{1.0f, 2.0f}, {8.0f, 9.0f}, {2.0f, 2.0f}}),
        5.0);
    EXPECT_EQ(calibrator.CalcMaxError({}, {}), -1.0);
    EXPECT_EQ(calibrator.CalcMaxError({{1.0f, 1.0f}}, {}), -1.0);
    EXPECT_EQ(calibrator.CalcMaxError({{1.0f, 1.0f}}, {{1.0f, 1.0f}, {2.0f, 2.0f}}), -1.0);
}

TEST(ImageToMachine_Distance, EveryModeOfAPureScalingScales) {
    CameraCalibrator calibrator = WithHomography((cv::Mat_<double>(3, 3) << 2, 0, 7, 0, 2, -9, 0, 0, 1));
    for (const auto mode : {Diagonal, Horizontal, Vertical}) {
        EXPECT_NEAR(calibrator.ImageToMachine_Distance(10.0, {100.0f, 50.0f}, mode), 20.0, 1e-4) << mode;
        EXPECT_NEAR(calibrator.MachineToImage_Distance(10.0, {100.0f, 50.0f}, mode), 5.0, 1e-4) << mode;
    }
}

TEST(ImageToMachine_Distance, LaysTheStretchAlongItsDirection) {
    // x is stretched by 3 and y by 5.
    CameraCalibrator calibrator = WithHomography((cv::Mat_<double>(3, 3) << 3, 0, 0, 0, 5, 0, 0, 0, 1));
    EXPECT_NEAR(calibrator.ImageToMachine_Distance(8.0, {20.0f, 30.0f}, Horizontal), 24.0, 1e-4);
    EXPECT_NEAR(calibrator.ImageToMachine_Distance(8.0, {20.0f, 30.0f}, Vertical), 40.0, 1e-4);
    EXPECT_NEAR(calibrator.ImageToMachine_Distance(8.0, {20.0f, 30.0f}, Diagonal), 8.0 * std::sqrt(17.0), 1e-4);
    EXPECT_NEAR(calibrator.MachineToImage_Distance(15.0, {20.0f, 30.0f}, Horizontal), 5.0, 1e-4);
    EXPECT_NEAR(calibrator.MachineToImage_Distance(15.0, {20.0f, 30.0f}, Vertical), 3.0, 1e-4);
}

TEST(ImageToMachine_Distance, IsMeasuredAboutTheCentre) {
    // Under a perspective a pixel far away is longer than one nearby.
    CameraCalibrator calibrator = CalibratedOverTheBed();
    const double nearby = calibrator.ImageToMachine_Distance(10.0, {320.0f, 40.0f}, Horizontal);
    const double far = calibrator.ImageToMachine_Distance(10.0, {320.0f, 440.0f}, Horizontal);
    EXPECT_GT(far, 1.1 * nearby);
    const cv::Point2f left = calibrator.ImageToMachine({315.0f, 440.0f});
    const cv::Point2f right = calibrator.ImageToMachine({325.0f, 440.0f});
    EXPECT_EQ(far, Distance(left, right));
}

TEST(ImageToMachine_Distance, AnUnknownModeGivesMinusOne) {
    CameraCalibrator calibrator = CalibratedOverTheBed();
    for (const int mode : {3, -1, 1000}) {
        const auto unknown = static_cast<CameraCalibrator::DistanceMode>(mode);
        EXPECT_EQ(calibrator.ImageToMachine_Distance(10.0, {320.0f, 40.0f}, unknown), -1.0);
        EXPECT_EQ(calibrator.MachineToImage_Distance(10.0, {0.0f, 0.0f}, unknown), -1.0);
    }
}

TEST(MachineToImage, UndoesImageToMachine) {
    CameraCalibrator calibrator = CalibratedOverTheBed();
    for (float y = 0.0f; y <= 480.0f; y += 60.0f) {
        for (float x = 0.0f; x <= 640.0f; x += 80.0f) {
            const cv::Point2f point(x, y);
            EXPECT_THAT(calibrator.MachineToImage(calibrator.ImageToMachine(point)), NearPoint(point, 2e-3));
        }
    }
}

TEST(CameraCalibrator, CopiesShareTheHomographyUntilOneIsCalibratedAnew) {
    CameraCalibrator original = CalibratedOverTheBed();
    CameraCalibrator copy(original);
    CameraCalibrator assigned;
    assigned = original;
    const cv::Point2f before = original.ImageToMachine({100.0f, 200.0f});
    EXPECT_TRUE(copy.IsCalibrateVaild());
    EXPECT_EQ(copy.ImageToMachine({100.0f, 200.0f}), before);
    EXPECT_EQ(assigned.ImageToMachine({100.0f, 200.0f}), before);
    EXPECT_EQ(assigned.WarpPerspectivePoint({100.0f, 200.0f}, 2), original.WarpPerspectivePoint({100.0f, 200.0f}, 2));
    EXPECT_EQ(HomographyOf(copy).data, HomographyOf(original).data);
    EXPECT_EQ(HomographyOf(assigned).data, HomographyOf(original).data);

    PointPairs shifted = BedPairs();
    for (cv::Point2f& point : shifted.machine) point += cv::Point2f(10.0f, 0.0f);
    double maxError = 0.0;
    ASSERT_TRUE(original.Calibrate(shifted.image, shifted.machine, 640, 480, maxError));
    EXPECT_NEAR(original.ImageToMachine({100.0f, 200.0f}).x, before.x + 10.0f, 1e-2);
    EXPECT_EQ(copy.ImageToMachine({100.0f, 200.0f}), before);
}

TEST(CameraCalibrator, WritesNoLastError) {
    SetLastError("left from before");
    CameraCalibrator calibrator = CalibratedButEmpty();
    const CapturedStream errors(std::cerr);
    calibrator.MachineToImage({1.0f, 1.0f});
    double maxError = 0.0;
    calibrator.Calibrate({}, {}, 1, 1, maxError);
    calibrator.LoadCalibration("no/such/folder/camera.yml");
    calibrator.SaveCalibration("no/such/folder/camera.yml", false);
    EXPECT_EQ(GetLastError(), "left from before");
}

TEST(BuildPolynomialTerms, AreTheSixTermsOfEachPoint) {
    const cv::Mat expected = (cv::Mat_<double>(2, 6) << 1, 2, 3, 4, 6, 9, 1, -0.5, 4, 0.25, -2, 16);
    EXPECT_THAT(PolynomialTermsOf({{2.0f, 3.0f}, {-0.5f, 4.0f}}), EqualsMat(expected));
    const double tenth = static_cast<double>(0.1f);
    EXPECT_EQ(PolynomialTermsOf({{0.1f, 0.0f}}).at<double>(0, 3), tenth * tenth) << "widened before it is squared";
    EXPECT_TRUE(PolynomialTermsOf({}).empty());
}

}  // namespace
}  // namespace Quorvane::CameraCalibration
