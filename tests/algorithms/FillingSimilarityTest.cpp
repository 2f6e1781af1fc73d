#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <opencv2/core.hpp>
#include <set>

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
}  // namespace
}  // namespace Quorvane
