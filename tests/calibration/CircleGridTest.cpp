#include "calibration/CircleGrid.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "tests/support/Matchers.h"
#include "tests/support/Pictures.h"
#include "tests/support/RandomInput.h"

namespace Quorvane::CameraCalibration {

using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::EqualsMat;

namespace {

TEST(GenerateActualPositions, RunsRowsOutermost) {
    EXPECT_THAT(
        GenerateActualPositions(3, 2, 0.5f),
        ElementsAre(cv::Point3f(0.0f, 0.0f, 0.0f), cv::Point3f(0.5f, 0.0f, 0.0f), cv::Point3f(1.0f, 0.0f, 0.0f),
                    cv::Point3f(0.0f, 0.5f, 0.0f), cv::Point3f(0.5f, 0.5f, 0.0f), cv::Point3f(1.0f, 0.5f, 0.0f)));
}

TEST(GenerateActualPositions, IsEmptyWithoutRowsOrColumns) {
    EXPECT_THAT(GenerateActualPositions(0, 5, 1.0f), IsEmpty());
    EXPECT_THAT(GenerateActualPositions(5, 0, 1.0f), IsEmpty());
    EXPECT_THAT(GenerateActualPositions(-3, -4, 1.0f), IsEmpty());
}

TEST(ToBoardGray, TakesOneAndThreeChannelsAndRefusesOthers) {
    const cv::Mat colour = TestSupport::LoadColourPicture("coffee.png");
    cv::Mat expected;
    cv::cvtColor(colour, expected, cv::COLOR_BGR2GRAY);
    cv::Mat gray;
    ASSERT_TRUE(ToBoardGray(colour, gray));
    EXPECT_THAT(gray, EqualsMat(expected));

    ASSERT_TRUE(ToBoardGray(expected, gray));
    EXPECT_THAT(gray, EqualsMat(expected));
    EXPECT_NE(gray.data, expected.data) << "the picture of the caller must not be shared";

    EXPECT_FALSE(ToBoardGray(cv::Mat(4, 4, CV_8UC4), gray));
    EXPECT_FALSE(ToBoardGray(cv::Mat(4, 4, CV_8UC2), gray));
}

/// The evened image from its definition, with whole numbers between the steps.
cv::Mat EvenedPlainly(const cv::Mat& gray) {
    cv::Mat smooth;
    cv::GaussianBlur(gray, smooth, {5, 5}, 0.0);
    cv::Mat filtered;
    cv::bilateralFilter(smooth, filtered, 9, 50.0, 50.0);
    cv::Mat background;
    cv::GaussianBlur(filtered, background, {151, 151}, 0.0);
    cv::Mat evened(gray.size(), CV_8UC1);
    for (int r = 0; r < gray.rows; ++r) {
        for (int c = 0; c < gray.cols; ++c) {
            evened.at<uchar>(r, c) =
                cv::saturate_cast<uchar>(filtered.at<uchar>(r, c) - background.at<uchar>(r, c) + 128);
        }
    }
    return evened;
}

TEST(EvenedImage, SaturatesOnceAtTheEnd) {
    // Dark dots on a bright ground: their difference to the background is negative before 128 is added.
    cv::Mat dots(200, 220, CV_8UC1, cv::Scalar(240));
    for (int x = 30; x < 220; x += 40) cv::circle(dots, {x, 100}, 12, cv::Scalar(10), cv::FILLED);
    for (const cv::Mat& gray :
         {dots, TestSupport::LoadGrayPicture("coins.png"), TestSupport::RandomInput(5).Image({97, 83})}) {
        EXPECT_THAT(EvenedImage(gray), EqualsMat(EvenedPlainly(gray)));
    }
    EXPECT_EQ(EvenedImage(dots).at<uchar>(100, 30), 0) << "a dot lies far below its background";
    EXPECT_GT(EvenedImage(dots).at<uchar>(85, 30), 128) << "and the ground above it";
}

TEST(EvenedImage, LeavesTheGrayPictureAlone) {
    const cv::Mat gray = TestSupport::LoadGrayPicture("coins.png");
    const cv::Mat before = gray.clone();
    EvenedImage(gray);
    EXPECT_THAT(gray, EqualsMat(before));
}

/// What a search is asked for, and at which of the questions it succeeds.
struct Tries {
    explicit Tries(std::size_t successfulTry) : succeedsAt(successfulTry) {}

    bool Run(const cv::Mat& gray) {
        const auto search = [&](const cv::Mat& picture, cv::Size pattern, std::vector<cv::Point2f>& points) {
            pictures.push_back(picture.clone());
            patterns.push_back(pattern);
            points = {cv::Point2f(1.0f, static_cast<float>(patterns.size()))};
            return patterns.size() == succeedsAt;
        };
        return FindBoardEitherWay(gray, {7, 5}, search, view);
    }
    std::size_t succeedsAt;
    std::vector<cv::Mat> pictures;
    std::vector<cv::Size> patterns;
    BoardView view;
};

TEST(FindBoardEitherWay, TriesGrayThenEvenedThenBothSwapped) {
    const cv::Mat gray = TestSupport::LoadGrayPicture("coins.png");
    Tries tries(0);
    EXPECT_FALSE(tries.Run(gray));
    EXPECT_THAT(tries.patterns, ElementsAre(cv::Size(7, 5), cv::Size(7, 5), cv::Size(5, 7), cv::Size(5, 7)));
    EXPECT_THAT(tries.pictures[0], EqualsMat(gray));
    EXPECT_THAT(tries.pictures[1], EqualsMat(EvenedImage(gray)));
    EXPECT_THAT(tries.pictures[2], EqualsMat(gray));
    EXPECT_THAT(tries.pictures[3], EqualsMat(EvenedImage(gray)));
}

TEST(FindBoardEitherWay, StopsAtTheFirstSuccessAndItsPositionsFollowTheSwap) {
    for (std::size_t at = 1; at <= 4; ++at) {
        Tries tries(at);
        EXPECT_TRUE(tries.Run(TestSupport::LoadGrayPicture("coins.png")));
        EXPECT_EQ(tries.patterns.size(), at);
        EXPECT_EQ(tries.view.positions,
                  at <= 2 ? GenerateActualPositions(7, 5, 1.0f) : GenerateActualPositions(5, 7, 1.0f));
        EXPECT_THAT(tries.view.centers, ElementsAre(cv::Point2f(1.0f, static_cast<float>(at))));
    }
}

}  // namespace
}  // namespace Quorvane::CameraCalibration
