#include "Includes/FeatureSelection.h"

#include <gtest/gtest.h>

#include "tests/Includes/MatcherMatchers.h"
#include "tests/Includes/MatcherScenes.h"
#include "tests/reference/PlainShapeMatcher.h"
#include "tests/support/Pictures.h"
#include "tests/support/RandomInput.h"
#include "tests/support/Scene.h"

namespace line2Dup {

using Quorvane::TestSupport::ExpectMatcherError;
using Quorvane::TestSupport::QuietOutput;
using Quorvane::TestSupport::RandomInput;
using Quorvane::TestSupport::SameFeatures;
namespace Reference = Quorvane::Reference;
namespace TestSupport = Quorvane::TestSupport;

namespace {

/// A pyramid whose images are made up: no magnitude and no orientation anywhere until the test sets them.
std::shared_ptr<ColorGradientPyramid> MadeUp(cv::Size size, std::size_t featureCount) {
    auto pyramid = ColorGradient(30.0f, featureCount, 60.0f).makePyramid(cv::Mat(), cv::Mat());
    pyramid->magnitude = cv::Mat::zeros(size, CV_32F);
    pyramid->rawAngle = cv::Mat::zeros(size, CV_32F);
    pyramid->quantised = cv::Mat::zeros(size, CV_8U);
    return pyramid;
}

void Mark(ColorGradientPyramid& pyramid, cv::Point place, float squaredMagnitude, int label = 2, float angle = 45.0f) {
    pyramid.magnitude.at<float>(place) = squaredMagnitude;
    pyramid.quantised.at<uchar>(place) = static_cast<uchar>(1 << label);
    pyramid.rawAngle.at<float>(place) = angle;
}

std::vector<cv::Point> PlacesOf(const std::vector<FeatureCandidate>& candidates) {
    std::vector<cv::Point> places;
    for (const FeatureCandidate& candidate : candidates) places.emplace_back(candidate.feature.x, candidate.feature.y);
    return places;
}

using testing::ElementsAre;
using testing::IsEmpty;

TEST(FindCandidates, TakesLocalMaximaInRasterOrder) {
    const auto pyramid = MadeUp({20, 20}, 64);
    Mark(*pyramid, {10, 12}, 5000.0f, 3, 70.0f);
    Mark(*pyramid, {12, 14}, 4999.0f);  // within the window of the first
    Mark(*pyramid, {5, 12}, 9000.0f);
    Mark(*pyramid, {16, 4}, 4000.0f);
    const std::vector<FeatureCandidate> candidates = findCandidates(*pyramid);
    EXPECT_THAT(PlacesOf(candidates), ElementsAre(cv::Point(16, 4), cv::Point(5, 12), cv::Point(10, 12)));
    EXPECT_EQ(candidates[2].feature.label, 3);
    EXPECT_EQ(candidates[2].feature.theta, 70.0f);
    EXPECT_EQ(candidates[2].score, 5000.0f);
}

TEST(FindCandidates, TakesTheFirstOfEqualNeighbours) {
    const auto pyramid = MadeUp({20, 20}, 64);
    Mark(*pyramid, {8, 8}, 5000.0f);
    Mark(*pyramid, {9, 8}, 5000.0f);
    Mark(*pyramid, {7, 9}, 5000.0f);
    Mark(*pyramid, {11, 8}, 5000.0f);  // out of the first one's window; the second one is not there to clear it
    EXPECT_THAT(PlacesOf(findCandidates(*pyramid)), ElementsAre(cv::Point(8, 8), cv::Point(11, 8)));
}

TEST(FindCandidates, NeedsMoreThanTheStrongThresholdAndAnOrientation) {
    const auto pyramid = MadeUp({20, 20}, 64);
    Mark(*pyramid, {4, 4}, 3600.0f);
    Mark(*pyramid, {12, 4}, 3600.5f);
    Mark(*pyramid, {4, 12}, 9999.0f);
    pyramid->quantised.at<uchar>(12, 4) = 0;
    EXPECT_THAT(PlacesOf(findCandidates(*pyramid)), ElementsAre(cv::Point(12, 4)));
}

TEST(FindCandidates, KeepsTwoPixelsFromTheImagesEdge) {
    const auto pyramid = MadeUp({20, 16}, 64);
    for (const cv::Point place : {cv::Point(1, 8), cv::Point(18, 8), cv::Point(10, 1), cv::Point(10, 14)}) {
        Mark(*pyramid, place, 9000.0f);
    }
    EXPECT_THAT(findCandidates(*pyramid), IsEmpty());
    for (const cv::Point place : {cv::Point(2, 2), cv::Point(17, 13)}) Mark(*pyramid, place, 9000.0f);
    EXPECT_THAT(PlacesOf(findCandidates(*pyramid)), ElementsAre(cv::Point(2, 2), cv::Point(17, 13)));
}

TEST(FindCandidates, KeepsOnePixelFromTheMasksEdge) {
    const auto pyramid = MadeUp({20, 20}, 64);
    pyramid->mask = cv::Mat::zeros(20, 20, CV_8U);
    pyramid->mask(cv::Rect(5, 5, 10, 10)) = 255;
    Mark(*pyramid, {5, 8}, 9000.0f);
    Mark(*pyramid, {13, 8}, 9000.0f);
    EXPECT_THAT(PlacesOf(findCandidates(*pyramid)), ElementsAre(cv::Point(13, 8)));
}

TEST(FindCandidates, AFullMaskMasksNothing) {
    const auto pyramid = MadeUp({20, 20}, 64);
    pyramid->mask = cv::Mat(20, 20, CV_8U, cv::Scalar(255));
    Mark(*pyramid, {2, 2}, 9000.0f);
    Mark(*pyramid, {1, 10}, 9000.0f);
    EXPECT_THAT(PlacesOf(findCandidates(*pyramid)), ElementsAre(cv::Point(2, 2)));
}

TEST(FindCandidates, RaisesForAMaskOfAnotherSizeOrABrokenOrientation) {
    const auto pyramid = MadeUp({20, 20}, 64);
    pyramid->mask = cv::Mat(20, 19, CV_8U, cv::Scalar(255));
    ExpectMatcherError([&] { findCandidates(*pyramid); }, cv::Error::StsAssert,
                       "mask.empty() || mask.size() == magnitude.size()",
                       "line2Dup::ColorGradientPyramid::extractFeatures");
    pyramid->mask.release();
    Mark(*pyramid, {8, 8}, 9000.0f);
    pyramid->quantised.at<uchar>(8, 8) = 3;
    ExpectMatcherError([&] { findCandidates(*pyramid); }, cv::Error::StsBadArg, "Invalid value of quantized parameter",
                       "line2Dup::getLabel");
}

TEST(ExtractFeatures, FailsOnImagesWithoutRoomForTheWindow) {
    for (const cv::Size size : {cv::Size(4, 30), cv::Size(30, 4), cv::Size(1, 1)}) {
        const auto pyramid = ColorGradient(30.0f, 64, 60.0f).makePyramid(RandomInput(350).Image(size), cv::Mat());
        ShapeTemplate templ;
        testing::internal::CaptureStdout();
        EXPECT_FALSE(pyramid->extractFeatures(templ)) << size;
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "too few features, abort\n");
    }
}

TEST(ExtractFeatures, GoesOnWithFiveCandidatesAndNotWithFour) {
    const auto pyramid = MadeUp({60, 20}, 64);
    pyramid->pyramidLevel = 3;
    for (const int x : {5, 15, 25, 35}) Mark(*pyramid, {x, 10}, 9000.0f);
    ShapeTemplate templ{7, 7, 1, 1, 0, {}};
    testing::internal::CaptureStdout();
    EXPECT_FALSE(pyramid->extractFeatures(templ));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "too few features, abort\n");
    Mark(*pyramid, {45, 10}, 9001.0f);
    testing::internal::CaptureStdout();
    EXPECT_TRUE(pyramid->extractFeatures(templ));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "have no enough features, exaustive mode\n");
    EXPECT_EQ(templ.width, -1);
    EXPECT_EQ(templ.height, -1);
    EXPECT_EQ(templ.pyramidLevel, 3);
    EXPECT_TRUE(SameFeatures(
        templ.features,
        {{45, 10, 2, 45.0f}, {5, 10, 2, 45.0f}, {15, 10, 2, 45.0f}, {25, 10, 2, 45.0f}, {35, 10, 2, 45.0f}}));
}

TEST(ExtractFeatures, SaysNothingIfThereAreEnough) {
    const auto pyramid = MadeUp({60, 20}, 3);
    for (const int x : {5, 15, 25}) Mark(*pyramid, {x, 10}, 9000.0f);
    ShapeTemplate templ;
    testing::internal::CaptureStdout();
    EXPECT_TRUE(pyramid->extractFeatures(templ));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(templ.features.size(), 3u);
}

TEST(ExtractFeatures, EndsWithTheFirstCandidateIfOneOrNoneIsWanted) {
    for (const std::size_t wanted : {0u, 1u}) {
        const auto pyramid = MadeUp({60, 20}, wanted);
        Mark(*pyramid, {5, 10}, 9000.0f);
        Mark(*pyramid, {25, 10}, 9500.0f);
        Mark(*pyramid, {45, 10}, 9500.0f);
        ShapeTemplate templ;
        ASSERT_TRUE(pyramid->extractFeatures(templ));
        EXPECT_TRUE(SameFeatures(templ.features, {{25, 10, 2, 45.0f}}));
    }
}

std::vector<FeatureCandidate> Row(const std::vector<int>& columns) {
    std::vector<FeatureCandidate> candidates;
    for (const int x : columns) candidates.push_back({{x, 0, 0, 0.0f}, 0.0f});
    return candidates;
}

std::vector<int> ColumnsOf(const std::vector<GradientFeature>& features) {
    std::vector<int> columns;
    for (const GradientFeature& feature : features) columns.push_back(feature.x);
    return columns;
}

TEST(SelectScattered, WidensUntilTooFewFitAndTakesTheLastSpacingThatWasEnough) {
    std::vector<GradientFeature> features;
    selectScattered(Row({0, 10, 20, 30, 40, 50, 60}), features, 3, 3.0f);
    // At 31 pixels only 0 and 40 fit; the pass at 30 adds none of what lies between, nor does any until 20.
    EXPECT_THAT(ColumnsOf(features), ElementsAre(0, 40, 20, 60));
}

TEST(SelectScattered, RelaxesAndAddsAllThatFitInAPass) {
    std::vector<GradientFeature> features;
    selectScattered(Row({0, 12, 6, 18, 3, 100}), features, 4, 50.0f);
    // 0 and 100 first; 18 at its spacing of 18; then 6 and 12 do not come before 6 pixels, and both in one pass.
    EXPECT_THAT(ColumnsOf(features), ElementsAre(0, 100, 18, 12, 6));
}

TEST(SelectScattered, EndsShortOfTheCountBelowThreePixels) {
    std::vector<GradientFeature> features;
    selectScattered(Row({0, 2, 4, 6, 3}), features, 5, 2.0f);
    // The first pass is made at the given spacing, whatever it is; relaxing it then ends at once.
    EXPECT_THAT(ColumnsOf(features), ElementsAre(0, 2, 4, 6));
    selectScattered(Row({0, 1, 2, 3, 6}), features, 5, 4.0f);
    EXPECT_THAT(ColumnsOf(features), ElementsAre(0, 6, 3));
}

TEST(SelectScattered, ForgetsWhatTheResultHeldBefore) {
    std::vector<GradientFeature> features(5);
    selectScattered(Row({}), features, 4, 3.0f);
    EXPECT_THAT(features, IsEmpty());
}

TEST(ExtractFeatures, EqualsThePlainFormulation) {
    RandomInput random(351);
    for (const std::string& name : TestSupport::PictureNames()) {
        const cv::Mat picture = TestSupport::LoadColourPicture(name);
        for (int i = 0; i < 6; ++i) {
            const cv::Size size(random.Integer(40, 160), random.Integer(40, 160));
            const cv::Point corner(random.Integer(0, picture.cols - size.width),
                                   random.Integer(0, picture.rows - size.height));
            const cv::Mat part = picture(cv::Rect(corner, size)).clone();
            cv::Mat mask;
            if (i % 2 == 0) {
                mask = cv::Mat::zeros(size, CV_8U);
                mask(cv::Rect(10, 5, size.width / 2, size.height / 2)) = 200;
            }
            const auto wanted = static_cast<std::size_t>(random.Integer(2, 130));
            const auto pyramid = ColorGradient(30.0f, wanted, 60.0f).makePyramid(part, mask);
            const QuietOutput quiet;
            ShapeTemplate templ;
            pyramid->extractFeatures(templ);
            const auto expected =
                Reference::ExtractFeatures(Reference::ComputeGradients(part, 30.0f), mask, wanted, 60.0f);
            ASSERT_TRUE(SameFeatures(templ.features, expected)) << name << " " << i << ", " << wanted << " wanted";
        }
    }
}

}  // namespace
}  // namespace line2Dup
