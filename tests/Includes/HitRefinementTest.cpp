#include "Includes/HitRefinement.h"

#include <gtest/gtest.h>

#include <limits>

namespace line2Dup {
namespace {

cv::Mat EmptyWindow() { return cv::Mat::zeros(localWindow, localWindow, CV_16U); }

ushort& At(cv::Mat& window, int row, int column) { return window.at<ushort>(row, column); }

MatchHit HitAt(int x, int y) { return {x, y, 0.0f, "part", 0, 0.0f, 0.0f}; }

TEST(PercentOf, IsAFloatQuotient) {
    EXPECT_EQ(percentOf(256, 64), 100.0f);
    EXPECT_EQ(percentOf(1, 3), 1.0f * 100.0f / 12.0f);
}

TEST(LeastPassingSum, IsTheFirstWhosePercentageIsAboveTheThreshold) {
    EXPECT_EQ(leastPassingSum(32, 80.0f), 103);
    EXPECT_EQ(leastPassingSum(25, 80.0f), 81);  // 80 of 100 is not above
    EXPECT_EQ(leastPassingSum(10, -1.0f), 0);
    EXPECT_EQ(leastPassingSum(10, 0.0f), 1);
    EXPECT_EQ(leastPassingSum(10, 100.0f), 41);
    EXPECT_EQ(leastPassingSum(10, std::numeric_limits<float>::quiet_NaN()), 41);
    EXPECT_EQ(leastPassingSum(0, 50.0f), 1);
}

TEST(OffsetInBlock, IsTheMiddleOfTheBlock) {
    EXPECT_EQ(offsetInBlock(1), 0);
    EXPECT_EQ(offsetInBlock(2), 0);
    EXPECT_EQ(offsetInBlock(4), 1);
    EXPECT_EQ(offsetInBlock(8), 3);
}

TEST(WindowCentre, IsTwiceThePositionAndOne) {
    const ShapeTemplate templ{30, 20, 0, 0, 0, {}};
    EXPECT_EQ(windowCentre(cv::Point(20, 24), templ, {200, 100}, 1), cv::Point(41, 49));
}

TEST(WindowCentre, KeepsTheTemplateEightStepsFromTheEdges) {
    const ShapeTemplate templ{30, 20, 0, 0, 0, {}};
    EXPECT_EQ(windowCentre(cv::Point(0, 1), templ, {200, 100}, 1), cv::Point(8, 8));
    EXPECT_EQ(windowCentre(cv::Point(90, 49), templ, {200, 100}, 1), cv::Point(162, 72));
    EXPECT_EQ(windowCentre(cv::Point(0, 49), templ, {200, 100}, 2), cv::Point(16, 64));
}

TEST(WindowCentre, LetsTheUpperLimitWinForATemplateTooLargeForBoth) {
    const ShapeTemplate templ{195, 20, 0, 0, 0, {}};
    EXPECT_EQ(windowCentre(cv::Point(20, 24), templ, {200, 100}, 1).x, -3);
}

TEST(RefinedPlace, MovesToTheFirstGreatestSum) {
    cv::Mat window = EmptyWindow();
    At(window, 5, 9) = 40;
    At(window, 5, 11) = 50;
    At(window, 9, 3) = 50;
    const RefinedPlace hit = refinedPlace(window, 16, {100, 60}, 1);
    EXPECT_EQ(hit.x, 100 - 8 + 11);
    EXPECT_EQ(hit.y, 60 - 8 + 5);
    EXPECT_EQ(hit.similarity, 50.0f * 100.0f / 64.0f);
    EXPECT_EQ(hit.subX, 103.0f);
    EXPECT_EQ(hit.subY, 57.0f);
}

TEST(RefinedPlace, WeighsTheThreeByThreePositionsAround) {
    cv::Mat window = EmptyWindow();
    At(window, 4, 4) = 30;
    At(window, 4, 5) = 10;
    At(window, 5, 4) = 20;
    const RefinedPlace hit = refinedPlace(window, 16, {8, 8}, 1);
    EXPECT_EQ(hit.x, 4);
    EXPECT_EQ(hit.subX, 250.0f / 60.0f);
    EXPECT_EQ(hit.subY, 260.0f / 60.0f);
}

TEST(RefinedPlace, LeavesPositionsOutsideTheWindowOut) {
    cv::Mat window = EmptyWindow();
    At(window, 0, 15) = 30;
    At(window, 1, 14) = 10;
    At(window, 1, 0) = 29;  // follows (0, 15) in memory
    const RefinedPlace hit = refinedPlace(window, 16, {8, 8}, 1);
    EXPECT_EQ(hit.subX, (30.0f * 15.0f + 10.0f * 14.0f) / 40.0f);
    EXPECT_EQ(hit.subY, 10.0f / 40.0f);
}

TEST(RefinedPlace, CountsInStepsAndWithTheBlocksOffset) {
    cv::Mat window = EmptyWindow();
    At(window, 2, 3) = 9;
    const RefinedPlace hit = refinedPlace(window, 16, {43, 50}, 4);
    EXPECT_EQ(hit.x, (10 - 8 + 3) * 4 + 1);
    EXPECT_EQ(hit.y, (12 - 8 + 2) * 4 + 1);
    EXPECT_EQ(hit.subX, 21.0f);
}

TEST(RefinedPlace, PutsAWindowWithoutResponsesBeforeItsFirstPosition) {
    const cv::Mat window = EmptyWindow();
    const RefinedPlace hit = refinedPlace(window, 16, {20, 30}, 1);
    EXPECT_EQ(hit.x, 11);
    EXPECT_EQ(hit.y, 21);
    EXPECT_EQ(hit.subX, 11.0f);
    EXPECT_EQ(hit.similarity, 0.0f);
}

TEST(DropWorseThan, KeepsTheThresholdAndTheOrder) {
    std::vector<MatchHit> hits{HitAt(1, 0), HitAt(2, 0), HitAt(3, 0)};
    hits[0].similarity = 80.0f;
    hits[1].similarity = 79.99f;
    hits[2].similarity = 90.0f;
    dropWorseThan(80.0f, hits);
    ASSERT_EQ(hits.size(), 2u);
    EXPECT_EQ(hits[0].x, 1);
    EXPECT_EQ(hits[1].x, 3);
}

}  // namespace
}  // namespace line2Dup
