#include "geometry/ImageOperators.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "tests/support/CapturedStream.h"
#include "tests/support/Matchers.h"
#include "tests/support/Pictures.h"
#include "tests/support/RandomInput.h"
#include "tests/support/Scene.h"

namespace Quorvane::UtilityFunctions {

using TestSupport::CapturedStream;
using TestSupport::EqualsMat;
using TestSupport::RandomInput;

namespace {

cv::Mat GrayOf(const cv::Mat& colour) {
    cv::Mat gray;
    cv::cvtColor(colour, gray, cv::COLOR_BGR2GRAY);
    return gray;
}

cv::Mat Stretched(const cv::Mat& gray) {
    cv::Mat stretched;
    cv::normalize(gray, stretched, 0, 255, cv::NORM_MINMAX);
    return stretched;
}

cv::Mat Sketch(const cv::Mat& picture, int intensity) {
    cv::Mat result;
    ApplySketchFilter(picture, result, intensity);
    return result;
}

TEST(ApplySketchFilter, WithoutIntensityIsTheStretchedGrayPicture) {
    const cv::Mat colour = RandomInput(60).Image({50, 30}, 3, 40, 180);
    const cv::Mat sketch = Sketch(colour, 0);
    EXPECT_THAT(sketch, EqualsMat(Stretched(GrayOf(colour))));
    double least = 0.0;
    double most = 0.0;
    cv::minMaxLoc(sketch, &least, &most);
    EXPECT_EQ(least, 0.0);
    EXPECT_EQ(most, 255.0);
}

TEST(ApplySketchFilter, WithFullIntensityIsTheDrawingAlone) {
    for (const std::string& name : TestSupport::PictureNames()) {
        const cv::Mat gray = TestSupport::LoadGrayPicture(name);
        cv::Mat edges;
        cv::Laplacian(gray, edges, CV_8U, 3);
        const cv::Mat inverted = 255 - edges;
        cv::Mat blurred;
        cv::GaussianBlur(inverted, blurred, {3, 3}, 0.0);
        cv::Mat sharp;
        cv::addWeighted(inverted, 1.5, blurred, -0.5, 0.0, sharp);
        EXPECT_THAT(Sketch(gray, 100), EqualsMat(Stretched(sharp))) << name;
    }
}

TEST(ApplySketchFilter, MixesTheGrayPictureAndTheDrawing) {
    const cv::Mat gray = TestSupport::LoadGrayPicture("coins.png");
    cv::Mat edges;
    cv::Laplacian(gray, edges, CV_8U, 3);
    const cv::Mat inverted = 255 - edges;
    cv::Mat blurred;
    cv::GaussianBlur(inverted, blurred, {3, 3}, 0.0);
    cv::Mat sharp;
    cv::addWeighted(inverted, 1.5, blurred, -0.5, 0.0, sharp);
    const float share = 0.35f;
    cv::Mat mix;
    cv::addWeighted(gray, 1.0f - share, sharp, share, 0.0, mix);
    EXPECT_THAT(Sketch(gray, 35), EqualsMat(Stretched(mix)));
}

TEST(ApplySketchFilter, LimitsTheIntensity) {
    const cv::Mat gray = TestSupport::LoadGrayPicture("coins.png");
    EXPECT_THAT(Sketch(gray, 150), EqualsMat(Sketch(gray, 100)));
    EXPECT_THAT(Sketch(gray, -20), EqualsMat(Sketch(gray, 0)));
}

TEST(ApplySketchFilter, DrawsADarkLineAlongAnEdge) {
    cv::Mat gray(20, 40, CV_8UC1, cv::Scalar(60));
    gray.colRange(20, 40).setTo(160);
    const cv::Mat sketch = Sketch(gray, 100);
    EXPECT_EQ(sketch.at<uchar>(10, 19), 0);  // the dark side of the edge bends upwards
    EXPECT_EQ(sketch.at<uchar>(10, 5), 255);
    EXPECT_EQ(sketch.at<uchar>(10, 35), 255);
}

TEST(ApplySketchFilter, TakesOneThreeAndFourChannels) {
    const cv::Mat gray = TestSupport::LoadGrayPicture("coins.png");
    cv::Mat colour;
    cv::cvtColor(gray, colour, cv::COLOR_GRAY2BGR);
    cv::Mat withAlpha;
    cv::cvtColor(gray, withAlpha, cv::COLOR_GRAY2BGRA);
    const cv::Mat sketch = Sketch(gray, 60);
    EXPECT_EQ(sketch.type(), CV_8UC1);
    EXPECT_THAT(Sketch(colour, 60), EqualsMat(sketch));
    EXPECT_THAT(Sketch(withAlpha, 60), EqualsMat(sketch));
}

TEST(ApplySketchFilter, LeavesTheResultAloneForOtherChannelCounts) {
    cv::Mat result = RandomInput(61).Image({7, 5});
    const cv::Mat before = result.clone();
    const CapturedStream errors(std::cerr);
    const CapturedStream output(std::cout);
    ApplySketchFilter(RandomInput(62).Image({20, 10}, 2), result, 50);
    EXPECT_THAT(result, EqualsMat(before));
    EXPECT_EQ(errors.Text(), "");
    EXPECT_EQ(output.Text(), "");
}

TEST(ApplySketchFilter, RefusesNothingAtAll) {
    cv::Mat result = RandomInput(63).Image({7, 5});
    const cv::Mat before = result.clone();
    EXPECT_THROW(ApplySketchFilter(cv::Mat(), result, 50), cv::Exception);
    EXPECT_THROW(ApplySketchFilter(cv::Mat(0, 0, CV_8UC3), result, 50), cv::Exception);
    EXPECT_THAT(result, EqualsMat(before));
}

TEST(ApplySketchFilter, RefusesOtherDepths) {
    cv::Mat result = RandomInput(65).Image({7, 5});
    const cv::Mat before = result.clone();
    for (const int type : {CV_16UC1, CV_16UC3, CV_32FC1, CV_32FC3}) {
        EXPECT_THROW(ApplySketchFilter(cv::Mat::zeros(9, 9, type), result, 50), cv::Exception) << type;
    }
    EXPECT_THAT(result, EqualsMat(before));
}

TEST(ApplySketchFilter, OfAUniformPictureIsBlack) {
    const cv::Mat black = cv::Mat::zeros(9, 9, CV_8UC1);
    EXPECT_THAT(Sketch(cv::Mat(9, 9, CV_8UC1, cv::Scalar(130)), 40), EqualsMat(black));
}

TEST(ApplySketchFilter, LeavesTheSourceAloneAndMayReplaceIt) {
    cv::Mat picture = TestSupport::LoadGrayPicture("coins.png");
    const cv::Mat before = picture.clone();
    const cv::Mat sketch = Sketch(picture, 0);
    EXPECT_THAT(picture, EqualsMat(before));
    ApplySketchFilter(picture, picture, 0);
    EXPECT_THAT(picture, EqualsMat(sketch));
}

struct Regions {
    std::vector<cv::Mat> masks;
    std::vector<cv::Point2f> centers;
};

Regions RegionsIn(const cv::Mat& picture, int lower, int upper) {
    Regions found;
    ThresholdAndFindAllRegionCenter(picture, lower, upper, found.masks, found.centers);
    return found;
}

TEST(ThresholdAndFindAllRegionCenter, FindsMaskAndCentreOfEachRegion) {
    cv::Mat gray = cv::Mat::zeros(60, 80, CV_8UC1);
    gray(cv::Rect(10, 5, 8, 6)).setTo(100);
    gray(cv::Rect(40, 30, 5, 11)).setTo(100);
    const Regions found = RegionsIn(gray, 90, 110);
    ASSERT_EQ(found.masks.size(), 2u);
    ASSERT_EQ(found.centers.size(), 2u);
    // As contours come: the lowest one first.
    EXPECT_EQ(found.centers[0], cv::Point2f(42.5f, 35.5f));
    EXPECT_EQ(found.centers[1], cv::Point2f(14.0f, 8.0f));
    cv::Mat expected = cv::Mat::zeros(gray.size(), CV_8UC1);
    expected(cv::Rect(40, 30, 5, 11)).setTo(255);
    EXPECT_THAT(found.masks[0], EqualsMat(expected));
}

TEST(ThresholdAndFindAllRegionCenter, BothLimitsBelongToTheBand) {
    cv::Mat gray = cv::Mat::zeros(10, 40, CV_8UC1);
    for (int i = 0; i < 4; ++i) gray(cv::Rect(2 + 10 * i, 2, 4, 4)).setTo(99 + i);
    EXPECT_EQ(RegionsIn(gray, 100, 101).centers.size(), 2u);
    EXPECT_EQ(RegionsIn(gray, 101, 101).centers.size(), 1u);
}

TEST(ThresholdAndFindAllRegionCenter, LowerAboveUpperFindsNothing) {
    const cv::Mat gray(10, 40, CV_8UC1, cv::Scalar(100));
    EXPECT_TRUE(RegionsIn(gray, 101, 99).masks.empty());
}

TEST(ThresholdAndFindAllRegionCenter, LimitsMayLieOutsideTheRangeOfBrightness) {
    const cv::Mat gray(10, 40, CV_8UC1, cv::Scalar(100));
    EXPECT_EQ(RegionsIn(gray, -50, 1000).masks.size(), 1u);
    EXPECT_TRUE(RegionsIn(gray, 256, 1000).masks.empty());
}

TEST(ThresholdAndFindAllRegionCenter, AppendsToItsLists) {
    cv::Mat gray = cv::Mat::zeros(60, 80, CV_8UC1);
    gray(cv::Rect(10, 5, 8, 6)).setTo(100);
    gray(cv::Rect(40, 30, 5, 11)).setTo(100);
    Regions found = RegionsIn(gray, 90, 110);
    ThresholdAndFindAllRegionCenter(gray, 90, 110, found.masks, found.centers);
    ASSERT_EQ(found.masks.size(), 4u);
    ASSERT_EQ(found.centers.size(), 4u);
    EXPECT_EQ(found.centers[2], found.centers[0]);
    EXPECT_THAT(found.masks[3], EqualsMat(found.masks[1]));
    EXPECT_NE(found.masks[2].data, found.masks[0].data);
}

TEST(ThresholdAndFindAllRegionCenter, TakesOneOfItsOwnMasksAsThePicture) {
    cv::Mat gray = cv::Mat::zeros(60, 80, CV_8UC1);
    for (int i = 0; i < 4; ++i) gray(cv::Rect(10 + 15 * i, 5, 8, 6)).setTo(255);
    std::vector<cv::Mat> regions{gray};
    regions.shrink_to_fit();
    std::vector<cv::Point2f> centers;
    ThresholdAndFindAllRegionCenter(regions[0], 255, 255, regions, centers);
    EXPECT_EQ(regions.size(), 5u);
    EXPECT_EQ(centers.size(), 4u);
}

TEST(ThresholdAndFindAllRegionCenter, FillsHolesOfARegion) {
    cv::Mat gray = cv::Mat::zeros(40, 40, CV_8UC1);
    gray(cv::Rect(5, 5, 21, 21)).setTo(200);
    gray(cv::Rect(10, 10, 6, 6)).setTo(0);
    const Regions found = RegionsIn(gray, 200, 200);
    ASSERT_EQ(found.masks.size(), 1u);
    EXPECT_EQ(cv::countNonZero(found.masks[0]), 21 * 21);
}

TEST(ThresholdAndFindAllRegionCenter, CentreIsThatOfTheBoxSoItLiesOffACrescent) {
    using namespace TestSupport;
    const Shape crescent = Without(Disc({50, 50}, 30.0), Disc({65, 50}, 27.0));
    const cv::Mat gray = Scene({100, 100}, 0.0).Paint(crescent, 250.0).Gray();
    const Regions found = RegionsIn(gray, 200, 255);
    ASSERT_EQ(found.centers.size(), 1u);
    EXPECT_EQ(found.masks[0].at<uchar>(cv::Point(found.centers[0])), 0);
}

TEST(ThresholdAndFindAllRegionCenter, TakesColourPicturesAndGivesGrayMasks) {
    cv::Mat colour(40, 40, CV_8UC3, cv::Scalar::all(20));
    colour(cv::Rect(5, 5, 10, 10)).setTo(cv::Scalar::all(200));
    cv::Mat withAlpha;
    cv::cvtColor(colour, withAlpha, cv::COLOR_BGR2BGRA);
    for (const cv::Mat& picture : {colour, withAlpha}) {
        const Regions found = RegionsIn(picture, 200, 200);
        ASSERT_EQ(found.masks.size(), 1u);
        EXPECT_EQ(found.masks[0].type(), CV_8UC1);
        EXPECT_EQ(found.centers[0], cv::Point2f(10, 10));
    }
}

TEST(ThresholdAndFindAllRegionCenter, MasksHaveTheDepthOfThePicture) {
    for (const int type : {CV_16UC1, CV_32FC1}) {
        cv::Mat gray = cv::Mat::zeros(40, 40, type);
        gray(cv::Rect(5, 6, 10, 12)).setTo(3000);
        cv::Mat expected = cv::Mat::zeros(40, 40, type);
        expected(cv::Rect(5, 6, 10, 12)).setTo(255);
        const Regions found = RegionsIn(gray, 2900, 3000);
        ASSERT_EQ(found.masks.size(), 1u) << type;
        EXPECT_THAT(found.masks[0], EqualsMat(expected)) << type;
    }
}

TEST(ThresholdAndFindAllRegionCenter, SaysThatAnEmptyPictureIsInvalid) {
    Regions found = RegionsIn(cv::Mat(5, 5, CV_8UC1, cv::Scalar(9)), 9, 9);
    {
        const CapturedStream errors(std::cerr);
        const CapturedStream output(std::cout);
        ThresholdAndFindAllRegionCenter(cv::Mat(), 0, 255, found.masks, found.centers);
        EXPECT_EQ(errors.Text(), "无效的输入图像！\n");
        EXPECT_EQ(output.Text(), "");
    }
    EXPECT_EQ(found.masks.size(), 1u);
    EXPECT_EQ(found.centers.size(), 1u);
}

TEST(ThresholdAndFindAllRegionCenter, IsSilentAboutOtherChannelCounts) {
    const CapturedStream errors(std::cerr);
    const Regions found = RegionsIn(RandomInput(64).Image({20, 10}, 2), 0, 255);
    EXPECT_TRUE(found.masks.empty());
    EXPECT_TRUE(found.centers.empty());
    EXPECT_EQ(errors.Text(), "");
}

}  // namespace
}  // namespace Quorvane::UtilityFunctions
