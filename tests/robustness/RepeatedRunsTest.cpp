// A machine runs for weeks: a thousand runs of each algorithm leave no memory behind. What the allocator has handed out
// is measured, not the size of the process, which grows and shrinks as the allocator likes.

#include <gtest/gtest.h>
#include <malloc.h>

#include <functional>
#include <iostream>
#include <opencv2/core.hpp>

#include "calibration/CameraCalibration.h"
#include "calibration/CameraCalibrator.h"
#include "geometry/UtilityFunctions.h"
#include "tests/robustness/SmallJobs.h"
#include "tests/support/CapturedStream.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/Tray.h"

// The sanitizers bring allocators of their own, which keep what was given back for a while and count nothing here.
// They look for leaks themselves, and fewer runs show them.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define QUORVANE_OTHER_ALLOCATOR
#endif

namespace Quorvane::Robustness {
namespace {

#if defined(QUORVANE_OTHER_ALLOCATOR)
constexpr int runs = 50;
#else
constexpr int runs = 1000;
#endif
/// The first runs fill what OpenCV and the standard library keep for good.
constexpr int firstRuns = 20;
/// What the allocator's own lists may differ by, once; one lost block a run would be eight times as much at the least.
constexpr std::size_t mostGrowth = 2000;

std::size_t BytesInUse() {
#if defined(QUORVANE_OTHER_ALLOCATOR)
    return 0;
#else
    const auto state = mallinfo2();
    return state.uordblks + state.hblkhd;
#endif
}

void ExpectNoGrowth(const std::function<void()>& run) {
    // One thread: others keep buffers of their own from the run on that they first take part in.
    const int threads = cv::getNumThreads();
    cv::setNumThreads(1);
    for (int i = 0; i < firstRuns; ++i) run();
    const std::size_t before = BytesInUse();
    for (int i = 0; i < runs; ++i) run();
    const std::size_t after = BytesInUse();
    cv::setNumThreads(threads);
    EXPECT_LE(after, before + mostGrowth);
}

TEST(AThousandRuns, OfTheHalftoneLeaveNothingBehind) {
    const auto algorithm = Create("BinaryForLaserMachine");
    const cv::Mat picture = Discs(0);
    ExpectNoGrowth([&] {
        cv::Mat destination;
        EXPECT_EQ(algorithm->Execute(picture, destination), 0);
        EXPECT_EQ(algorithm->Execute(cv::Mat(), destination), 2);
    });
}

TEST(AThousandRuns, OfTheMarkSearchLeaveNothingBehind) {
    const auto algorithm = Create("FindMarkPoint");
    algorithm->SetParameter("SimilarityMin", 0.5);
    const cv::Mat picture = Discs(0);
    ExpectNoGrowth([&] {
        cv::Mat destination;
        algorithm->SetParameter("Radius", 9);
        EXPECT_EQ(algorithm->Execute(picture, destination), 0);
        EXPECT_EQ(algorithm->GetResultValue("FindCount"), "2");
        algorithm->SetParameter("Radius", -1);
        EXPECT_EQ(algorithm->Execute(picture, destination), 3);
        algorithm->SetParameter("Radius", 9);
        EXPECT_THROW(algorithm->Execute(cv::Mat(9, 9, CV_32FC2), destination), cv::Exception);
    });
}

TEST(AThousandRuns, OfTheFillingLeaveNothingBehind) {
    constexpr double partSize = 40.0;
    TestSupport::TraySettings settings;
    settings.size = {128, 80};
    settings.partSize = partSize;
    settings.columns = 2;
    settings.rows = 1;
    settings.noise = 0.0;
    const TestSupport::Tray tray = TestSupport::RenderTray(settings);
    const cv::Point2d mark = tray.poses[0].Place(TestSupport::TrayPartMark(partSize));
    const auto algorithm = Create("IntelligentFilling");
    algorithm->SetParameter("SimilarityMin", 0.8);
    algorithm->SetParameter("TargetShapeCenter_X", mark.x);
    algorithm->SetParameter("TargetShapeCenter_Y", mark.y);
    algorithm->SetParameter("TargetShapePoints_X", std::vector<double>{mark.x, mark.x + 5.0});
    algorithm->SetParameter("TargetShapePoints_Y", std::vector<double>{mark.y, mark.y});
    const TestSupport::CapturedStream quiet(std::cout);
    std::cout.setstate(std::ios::badbit);  // a thousand runs of lines would be kept
    ExpectNoGrowth([&] {
        cv::Mat destination;
        EXPECT_EQ(algorithm->Execute(tray.picture, destination), 0);
        EXPECT_NE(algorithm->GetResultValue("OutputShapeCount"), "0");
    });
    std::cout.clear();
}

TEST(AThousandRuns, OfCreatingAndReleasingLeaveNothingBehind) {
    ExpectNoGrowth([] {
        AlgorithmFactory factory;
        for (const std::string& name : factory.GetAlgorithmList()) {
            Algorithm* const algorithm = factory.CreateAlgorithm(name);
            algorithm->SetParameter("Radius", std::vector<double>{1.0, 2.0});
            factory.ReleaseAlgorithm(algorithm);
        }
    });
}

TEST(AThousandRuns, OfTheMeasurementsLeaveNothingBehind) {
    cv::Mat picture(40, 60, CV_8UC3, cv::Scalar::all(30));
    picture.colRange(30, 60).setTo(cv::Scalar::all(200));
    ExpectNoGrowth([&] {
        Line line;
        Curve curve;
        cv::Point2f center;
        double radius = 0.0;
        double score = 0.0;
        UtilityFunctions::MeasureLine(picture, {30, 20}, 30, 20, line, EdgePolarity::All, SearchDirection::LeftToRight,
                                      1.0, 30.0, 1.0);
        UtilityFunctions::MeasureCurve(picture, {30, 20}, 30, 20, curve, EdgePolarity::All,
                                       SearchDirection::LeftToRight, 1.0, 30.0, 1.0, 0);
        UtilityFunctions::MeasureCircle(picture, {26, 20}, 9.0, center, radius, score, EdgePolarity::All,
                                        SearchDirection::Outward, 1.0, 30.0, 10.0);
        EXPECT_TRUE(curve.isValid());
    });
}

TEST(AThousandRuns, OfTheCalibrationLeaveNothingBehind) {
    const TestSupport::ScratchFolder folder;
    const std::string file = folder.File("camera.yml");
    const std::string foreign = folder.Write("foreign.yml", "%YAML:1.0\n---\nHomo: [ 1, 2\n");
    std::vector<cv::Point2f> image;
    std::vector<cv::Point2f> machine;
    for (int i = 0; i < 9; ++i) {
        image.emplace_back(static_cast<float>(i % 3 * 10), static_cast<float>(i / 3 * 10));
        machine.push_back(image.back() * 2.0f);
    }
    ExpectNoGrowth([&] {
        CameraCalibration::CameraCalibrator calibrator;
        double error = 0.0;
        EXPECT_TRUE(calibrator.Calibrate(image, machine, 30, 30, error));
        EXPECT_TRUE(calibrator.SaveCalibration(file, false));
        CameraCalibration::CameraCalibrator other(calibrator);
        EXPECT_TRUE(other.LoadCalibration(file));
        cv::Mat homography;
        EXPECT_FALSE(CameraCalibration::LoadHomography(foreign, homography));
        EXPECT_FALSE(CameraCalibration::LoadHomography(file, homography));
    });
}

}  // namespace
}  // namespace Quorvane::Robustness
