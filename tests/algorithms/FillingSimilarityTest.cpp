#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <opencv2/core.hpp>
#include <string>

#include "framework/AlgorithmFactory.h"
#include "tests/algorithms/FillingFixture.h"
#include "tests/support/Matchers.h"

namespace Quorvane {

using TestSupport::EqualsMat;

namespace {

class FillingSimilarityTest : public FillingFixture {
protected:
    /// All places and turns that are found, in one text.
    std::string Found(const cv::Mat& picture = SmallTray().picture) {
        EXPECT_EQ(Run(picture), 0);
        std::string all;
        const int count = CopyCount();
        for (int n = 1; n <= count; ++n) {
            all += Copy(n, "OffsetX") + " " + Copy(n, "OffsetY") + " " + Copy(n, "OffsetAngle") + "\n";
        }
        return all;
    }

    /// The same with "SimilarityMin" set.
    std::string FoundAt(double similarity, const cv::Mat& picture = SmallTray().picture) {
        algorithm->SetParameter("SimilarityMin", similarity);
        return Found(picture);
    }
};

TEST_F(FillingSimilarityTest, ASimilarityOfOneFindsNothing) {
    EXPECT_EQ(FoundAt(1.0), "");
    EXPECT_EQ(algorithm->GetResultValue("OutputShapeCount"), "0");
    EXPECT_THAT(destination, EqualsMat(SmallTray().picture));
}

TEST_F(FillingSimilarityTest, SimilaritiesBeyondOneAndNotANumberFindNothing) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const double similarity : {1.001, 2.5, 1e7, 2.2e7, 1e10, 1e300, infinity, std::nan("")}) {
        EXPECT_EQ(FoundAt(similarity), "") << similarity;
        EXPECT_EQ(algorithm->GetResultValue("OutputShapeCount"), "0") << similarity;
        EXPECT_EQ(algorithm->GetResultValue("AlgorithmErrorMsg"), "") << similarity;
    }
    algorithm->SetParameter("SimilarityMin", std::string("nan"));
    EXPECT_EQ(Found(), "");
}

TEST_F(FillingSimilarityTest, IsCutToWholePercent) {
    // The worse copies of this noisy tray are lost one after the other.
    const TestSupport::Tray tray = RenderSmallTray(2, 14.0, 0.7);
    Give(JobOn(tray));
    const auto foundAt = [&](double similarity) { return FoundAt(similarity, tray.picture); };
    for (const double percentage : {94.0, 95.0, 96.0}) {
        const std::string found = foundAt((percentage + 0.05) / 100.0);
        EXPECT_EQ(foundAt((percentage + 0.95) / 100.0), found) << percentage;
        EXPECT_NE(foundAt((percentage + 1.05) / 100.0), found) << percentage;
    }
}

TEST_F(FillingSimilarityTest, IsCutAfterItWasMultipliedByAHundred) {
    // In this picture 28, 29, and 30 percent find seven, six, and five places.
    TestSupport::TraySettings settings;
    settings.size = {176, 128};
    settings.partSize = 60.0;
    settings.columns = 1;
    settings.rows = 1;
    settings.noise = 20.0;
    settings.seed = 19;
    const TestSupport::Tray tray = TestSupport::RenderTray(settings);
    Give(JobOn(tray, settings.partSize));
    const auto countAt = [&](double similarity) {
        FoundAt(similarity, tray.picture);
        return CopyCount();
    };
    EXPECT_EQ(countAt(0.285), 7);
    EXPECT_EQ(countAt(0.295), 6);
    EXPECT_EQ(countAt(0.305), 5);
    EXPECT_EQ(countAt(0.291), 6);
    EXPECT_EQ(countAt(0.29), 7);  // 28.999999999999996
    EXPECT_EQ(countAt(0.30), 5);
}

TEST_F(FillingSimilarityTest, BelowZeroEveryPlaceIsGoodEnough) {
    // As small as an object and its picture can be, since every place of every turn counts.
    cv::Mat picture(64, 96, CV_8UC3, cv::Scalar(120, 95, 70));
    picture(cv::Rect(22, 22, 36, 34)).setTo(cv::Scalar(70, 170, 215));
    picture(cv::Rect(44, 44, 14, 12)).setTo(cv::Scalar(120, 95, 70));
    Mark(38, 36);
    FoundAt(-1e300, picture);
    EXPECT_GT(CopyCount(), 3);
}

TEST_F(FillingSimilarityTest, IsEightyPercentUnlessItIsSet) {
    // 79 percent and 80 differ on this tray.
    const TestSupport::Tray tray = RenderSmallTray(5, 2.0, 0.7);
    const Reference::FillingJob job = JobOn(tray);
    algorithm = std::unique_ptr<Algorithm>(AlgorithmFactory().CreateAlgorithm("IntelligentFilling"));
    Mark(job.centre.x, job.centre.y);
    algorithm->SetParameter("TargetShapePoints_X", XOf(job.shape));
    algorithm->SetParameter("TargetShapePoints_Y", YOf(job.shape));
    const std::string asDefault = Found(tray.picture);
    EXPECT_EQ(asDefault, FoundAt(0.805, tray.picture));
    EXPECT_NE(asDefault, FoundAt(0.795, tray.picture));
}
}  // namespace
}  // namespace Quorvane
