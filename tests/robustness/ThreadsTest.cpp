// Several threads at a time, each with objects of its own, and the operations that only ask on one object. Run by the
// thread sanitizer (preset tsan), this shows that the library shares nothing behind the hosts' backs.

#include <gtest/gtest.h>

#include <functional>
#include <opencv2/core.hpp>
#include <thread>
#include <vector>

#include "calibration/CameraCalibrator.h"
#include "framework/Param.h"
#include "geometry/UtilityFunctions.h"
#include "tests/robustness/SmallJobs.h"
#include "tests/support/Tray.h"

namespace Quorvane::Robustness {
namespace {

constexpr int threadCount = 4;
constexpr int runsPerThread = 8;

/// Runs `work(thread)` in several threads at a time. OpenCV's own threads are switched off: they are no code of ours,
/// and the sanitizer does not see what orders them.
void InThreads(const std::function<void(int)>& work) {
    const int openCvThreads = cv::getNumThreads();
    cv::setNumThreads(0);
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i) threads.emplace_back([&work, i] { work(i); });
    for (std::thread& thread : threads) thread.join();
    cv::setNumThreads(openCvThreads);
}

TEST(Threads, DriveAlgorithmsOfTheirOwn) {
    InThreads([](int thread) {
        const auto marks = Create("FindMarkPoint");
        const auto halftone = Create("BinaryForLaserMachine");
        const cv::Mat picture = Discs(thread);
        for (int run = 0; run < runsPerThread; ++run) {
            cv::Mat destination;
            marks->SetParameter("Radius", 9);
            marks->SetParameter("SimilarityMin", 0.5);
            EXPECT_EQ(marks->Execute(picture, destination), 0);
            EXPECT_EQ(marks->GetResultValue("FindCount"), "2");
            EXPECT_EQ(halftone->Execute(picture, destination), 0);
        }
    });
}

TEST(Threads, FillTraysOfTheirOwn) {
    constexpr double partSize = 40.0;
    TestSupport::TraySettings settings;
    settings.size = {128, 80};
    settings.partSize = partSize;
    settings.columns = 2;
    settings.rows = 1;
    const TestSupport::Tray tray = TestSupport::RenderTray(settings);
    const cv::Point2d mark = tray.poses[0].Place(TestSupport::TrayPartMark(partSize));
    InThreads([&](int) {
        const auto filling = Create("IntelligentFilling");
        filling->SetParameter("TargetShapeCenter_X", mark.x);
        filling->SetParameter("TargetShapeCenter_Y", mark.y);
        filling->SetParameter("TargetShapePoints_X", std::vector<double>{mark.x});
        filling->SetParameter("TargetShapePoints_Y", std::vector<double>{mark.y});
        cv::Mat destination;
        EXPECT_EQ(filling->Execute(tray.picture, destination), 0);
        EXPECT_NE(filling->GetResultValue("OutputShapeCount"), "0");
    });
}

TEST(Threads, MeasureOnOnePicture) {
    cv::Mat picture(40, 60, CV_8UC3, cv::Scalar::all(30));
    picture.colRange(30, 60).setTo(cv::Scalar::all(200));
    const std::vector<cv::Point> square{{5, 5}, {50, 5}, {50, 30}, {5, 30}};
    InThreads([&](int) {
        for (int run = 0; run < runsPerThread; ++run) {
            Line line;
            UtilityFunctions::MeasureLine(picture, {30, 20}, 30, 20, line, EdgePolarity::All,
                                          SearchDirection::LeftToRight, 1.0, 30.0, 1.0);
            EXPECT_NEAR(line.linePoint.x, 29.5f, 1.0f);
            UtilityFunctions::findDominantLABColorPointInContour(picture, square);
            UtilityFunctions::fillHolesMorphologicalEnhanced(picture, 5.0, 50, 2, 1);
            EXPECT_FALSE(UtilityFunctions::IsMatChanged_GrayDiff(picture, picture));
            EXPECT_FALSE(UtilityFunctions::IsMatChanged_HammingDistance(picture, picture, 0));
        }
    });
}

TEST(Threads, AskOneCalibrator) {
    std::vector<cv::Point2f> image;
    std::vector<cv::Point2f> machine;
    for (int i = 0; i < 9; ++i) {
        image.emplace_back(static_cast<float>(i % 3 * 10), static_cast<float>(i / 3 * 10));
        machine.push_back(image.back() * 2.0f);
    }
    CameraCalibration::CameraCalibrator calibrator;
    double error = 0.0;
    ASSERT_TRUE(calibrator.Calibrate(image, machine, 30, 30, error));
    const cv::Mat picture = Discs(0);
    InThreads([&](int) {
        for (int run = 0; run < runsPerThread; ++run) {
            EXPECT_NEAR(calibrator.ImageToMachine({5.0f, 7.0f}).x, 10.0f, 1e-3f);
            EXPECT_NEAR(calibrator.MachineToImage({10.0f, 14.0f}).y, 7.0f, 1e-3f);
            EXPECT_TRUE(calibrator.IsCalibrateVaild());
            EXPECT_LT(calibrator.CalcMaxError(image, machine), 1e-3);
            calibrator.WarpPerspectiveImage(picture, 2);
            calibrator.WarpPerspectivePoint({3.0f, 4.0f}, 2);
            const CameraCalibration::CameraCalibrator copy(calibrator);
        }
    });
}

TEST(Threads, CalibrateCopiesOfOneCalibrator) {
    std::vector<cv::Point2f> image;
    std::vector<cv::Point2f> machine;
    for (int i = 0; i < 9; ++i) {
        image.emplace_back(static_cast<float>(i % 3 * 10), static_cast<float>(i / 3 * 10));
        machine.push_back(image.back() * 2.0f);
    }
    CameraCalibration::CameraCalibrator first;
    double error = 0.0;
    ASSERT_TRUE(first.Calibrate(image, machine, 30, 30, error));
    InThreads([&](int) {
        CameraCalibration::CameraCalibrator copy(first);
        double errorOfCopy = 0.0;
        EXPECT_TRUE(copy.Calibrate(machine, image, 60, 60, errorOfCopy));
        EXPECT_NEAR(copy.ImageToMachine({10.0f, 10.0f}).x, 5.0f, 1e-3f);
        EXPECT_NEAR(first.ImageToMachine({10.0f, 10.0f}).x, 20.0f, 1e-3f);
    });
}

TEST(Threads, ConvertOneParam) {
    const Param param(std::vector<std::string>{"1.5", "2", "3"});
    InThreads([&](int) {
        for (int run = 0; run < runsPerThread; ++run) {
            EXPECT_EQ(param.ToInt(), 1);
            EXPECT_EQ(param.ToDoubleVec(), (std::vector<double>{1.5, 2.0, 3.0}));
            EXPECT_EQ(param.ToString(), "[1.5, 2, 3, ]");
            const Param copy(param);
            EXPECT_EQ(copy.ArraySize(), 3u);
        }
    });
}

}  // namespace
}  // namespace Quorvane::Robustness
