#include "Includes/Detector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "tests/Includes/MatcherMatchers.h"
#include "tests/Includes/MatcherScenes.h"
#include "tests/reference/PlainShapeMatcher.h"
#include "tests/support/Matchers.h"
#include "tests/support/RandomInput.h"

namespace line2Dup {

using Quorvane::TestSupport::ExpectMatcherError;
using Quorvane::TestSupport::NearPoint;
using Quorvane::TestSupport::PartPicture;
using Quorvane::TestSupport::PartScene;
using Quorvane::TestSupport::QuietOutput;
using Quorvane::TestSupport::RandomInput;
using Quorvane::TestSupport::SameHits;
using Quorvane::TestSupport::TrainAllAngles;
namespace Reference = Quorvane::Reference;

namespace {

constexpr float weak = 30.0f;
constexpr float strong = 60.0f;

std::vector<MatchHit> Match(const Detector& detector, const cv::Mat& scene, float threshold,
                            const std::vector<std::string>& classIds = {}, const cv::Mat& mask = cv::Mat()) {
    const QuietOutput quiet;
    return detector.match(scene, threshold, classIds, mask);
}

TEST(MatchHitOrder, IsBySimilarityThenTemplate) {
    const MatchHit good{0, 0, 90.0f, "a", 5, 0.0f, 0.0f};
    const MatchHit bad{0, 0, 80.0f, "a", 1, 0.0f, 0.0f};
    const MatchHit goodToo{9, 9, 90.0f, "b", 6, 0.0f, 0.0f};
    EXPECT_TRUE(good < bad);
    EXPECT_FALSE(bad < good);
    EXPECT_TRUE(good < goodToo);
    EXPECT_FALSE(good < good);
}

TEST(MatchHitEquality, IsOfPlaceSimilarityAndClass) {
    const MatchHit hit{1, 2, 90.0f, "a", 5, 0.5f, 0.5f};
    EXPECT_TRUE(hit == (MatchHit{1, 2, 90.0f, "a", 7, 0.9f, 0.1f}));
    EXPECT_FALSE(hit == (MatchHit{0, 2, 90.0f, "a", 5, 0.5f, 0.5f}));
    EXPECT_FALSE(hit == (MatchHit{1, 0, 90.0f, "a", 5, 0.5f, 0.5f}));
    EXPECT_FALSE(hit == (MatchHit{1, 2, 91.0f, "a", 5, 0.5f, 0.5f}));
    EXPECT_FALSE(hit == (MatchHit{1, 2, 90.0f, "b", 5, 0.5f, 0.5f}));
}

TEST(Match, PrintsTheTimesOfItsTwoStages) {
    Detector detector(64, {1, 2}, weak, strong);
    detector.addShapeTemplate(PartPicture(100.0, 160), "part", cv::Mat(), 0);
    testing::internal::CaptureStdout();
    detector.match(PartPicture(100.0, 160), 80.0f, {}, cv::Mat());
    EXPECT_THAT(testing::internal::GetCapturedStdout(),
                testing::MatchesRegex("construct response map\nelasped time:[0-9.e+-]+s\n\n"
                                      "templ match\nelasped time:[0-9.e+-]+s\n\n"));
}

TEST(Match, FindsThePictureInItself) {
    for (const bool colour : {true, false}) {
        Detector detector(64, {1, 2}, weak, strong);
        const cv::Mat picture = PartPicture(100.0, 160, colour);
        detector.addShapeTemplate(picture, "part", cv::Mat(), 0);
        const ShapeTemplate& finest = detector.templateLevels("part", 0)[0];
        const std::vector<MatchHit> hits = Match(detector, picture, 90.0f, {"part"});
        ASSERT_FALSE(hits.empty());
        // Several places around the true one may reach 100 percent, of which the first found comes first.
        EXPECT_EQ(hits[0].similarity, 100.0f);
        EXPECT_THAT(cv::Point2f(hits[0].subX, hits[0].subY),
                    NearPoint(cv::Point2f(static_cast<float>(finest.tlX), static_cast<float>(finest.tlY)), 1.5));
    }
}

TEST(Match, SkipsUnknownClassesAndTakesThemInTheGivenOrder) {
    Detector detector(64, {1, 2}, weak, strong);
    const cv::Mat picture = PartPicture(100.0, 160);
    detector.addShapeTemplate(picture, "b", cv::Mat(), 0);
    detector.addShapeTemplate(picture, "a", cv::Mat(), 0);
    EXPECT_TRUE(Match(detector, picture, 90.0f, {"c"}).empty());
    const std::vector<MatchHit> asGiven = Match(detector, picture, 99.0f, {"b", "c", "a"});
    ASSERT_GE(asGiven.size(), 2u);
    EXPECT_EQ(asGiven[0].classId, "b");
    const std::vector<MatchHit> all = Match(detector, picture, 99.0f);
    ASSERT_EQ(all.size(), asGiven.size());
    EXPECT_EQ(all[0].classId, "a");
}

TEST(Match, KeepsTheLowerTemplateOfTwoAlike) {
    Detector detector(64, {1, 2}, weak, strong);
    const cv::Mat picture = PartPicture(100.0, 160);
    detector.addShapeTemplate(picture, "part", cv::Mat(), 0);
    const std::vector<MatchHit> alone = Match(detector, picture, 99.0f);
    detector.addShapeTemplate(picture, "part", cv::Mat(), 0);
    const std::vector<MatchHit> both = Match(detector, picture, 99.0f);
    ASSERT_FALSE(both.empty());
    EXPECT_EQ(both[0].templateId, 0);
    EXPECT_EQ(std::count(both.begin(), both.end(), both[0]), 1);
    EXPECT_EQ(both[0].x, alone[0].x);
}

TEST(Match, NeedsMoreThanTheThresholdOnTheCoarsestLevel) {
    Detector detector(64, {1, 2}, weak, strong);
    const cv::Mat picture = PartPicture(100.0, 160);
    detector.addShapeTemplate(picture, "part", cv::Mat(), 0);
    EXPECT_TRUE(Match(detector, picture, 100.0f).empty());
    Detector oneLevel(63, {1}, weak, strong);
    oneLevel.addShapeTemplate(picture, "part", cv::Mat(), 0);
    EXPECT_TRUE(Match(oneLevel, picture, 100.0f).empty());
    const std::vector<MatchHit> hits = Match(oneLevel, picture, 99.9f);
    ASSERT_FALSE(hits.empty());
    EXPECT_EQ(hits[0].similarity, 100.0f);
    EXPECT_EQ(hits[0].subX, 0.0f);
    EXPECT_EQ(hits[0].subY, 0.0f);
}

TEST(Match, RaisesForSizesThatDoNotFit) {
    Detector detector(64, {1, 2}, weak, strong);
    const QuietOutput quiet;
    const auto matchSize = [&](cv::Size size) { detector.match(cv::Mat::zeros(size, CV_8UC3), 80.0f, {}, cv::Mat()); };
    ExpectMatcherError(
        [&] {
            matchSize({50, 50});
        },
        cv::Error::StsAssert, "(src.rows * src.cols) % 16 == 0", "line2Dup::computeResponseMaps");
    ExpectMatcherError(
        [&] {
            matchSize({12, 12});
        },
        cv::Error::StsAssert, "(src.rows * src.cols) % 16 == 0",
        "line2Dup::computeResponseMaps");  // only the coarse level, 6 by 6, is wrong
    ExpectMatcherError(
        [&] {
            matchSize({64, 34});
        },
        cv::Error::StsAssert, "response_map.rows % T == 0", "line2Dup::linearize");
    ExpectMatcherError(
        [&] {
            matchSize({34, 64});
        },
        cv::Error::StsAssert, "response_map.cols % T == 0", "line2Dup::linearize");
    ExpectMatcherError(
        [&] { detector.match(cv::Mat::zeros(64, 64, CV_8UC3), 80.0f, {}, cv::Mat::zeros(64, 60, CV_8U)); },
        cv::Error::StsAssert, "mask.empty() || mask.size() == source.size()", "line2Dup::Detector::match");
}

TEST(Match, RaisesForTemplatesOfTooManyFeatures) {
    // A checkerboard of small squares has features enough.
    cv::Mat board(1024, 1024, CV_8U);
    for (int r = 0; r < board.rows; ++r) {
        for (int c = 0; c < board.cols; ++c) board.at<uchar>(r, c) = (r / 10 + c / 10) % 2 == 0 ? 0 : 255;
    }
    Detector detector(9000, {1}, weak, strong);
    detector.addShapeTemplate(board, "board", cv::Mat(), 0);
    ASSERT_GE(detector.templateLevels("board", 0)[0].features.size(), 8192u);
    testing::internal::CaptureStdout();
    ExpectMatcherError([&] { detector.match(board, 80.0f, {}, cv::Mat()); }, cv::Error::StsBadArg,
                       "feature size too large", "line2Dup::Detector::matchClass");
    // The image was prepared; of the second stage nothing is said.
    EXPECT_THAT(testing::internal::GetCapturedStdout(),
                testing::MatchesRegex("construct response map\nelasped time:[0-9.e+-]+s\n\n"));
}

TEST(Match, FindsNothingWithATemplateAsWideAsTheImage) {
    const cv::Mat picture = PartPicture(100.0, 160);
    for (const int count : {64, 200}) {
        Detector detector(count, {1, 2}, weak, strong);
        const QuietOutput quiet;
        detector.addShapeTemplate(picture, "part", cv::Mat(), 0);
        const ShapeTemplate& finest = detector.templateLevels("part", 0)[0];
        const int narrow = finest.width / 16 * 16;
        const cv::Mat strip = picture(cv::Rect(finest.tlX, 0, narrow, 160)).clone();
        EXPECT_TRUE(detector.match(strip, 10.0f, {}, cv::Mat()).empty()) << count;
    }
}

TEST(Match, WithoutLevelsFindsNothing) {
    Detector detector(64, {}, weak, strong);
    EXPECT_EQ(detector.addShapeTemplate(PartPicture(100.0, 160), "part", cv::Mat(), 0), 0);
    EXPECT_TRUE(Match(detector, PartPicture(100.0, 160), 10.0f).empty());
}

TEST(Match, LeavesItsImageAlone) {
    Detector detector(64, {1, 2}, weak, strong);
    const cv::Mat picture = PartPicture(100.0, 160);
    TrainAllAngles(detector, picture, 20, 3.0f);
    const cv::Mat before = picture.clone();
    Match(detector, picture, 60.0f);
    EXPECT_EQ(cv::norm(picture, before, cv::NORM_INF), 0.0);
}

TEST(Match, EqualsThePlainSearchWithMasksStepsAndFeatureCountsOfAllKinds) {
    RandomInput random(360);
    const std::vector<std::vector<int>> stepSets{{1, 2}, {1}, {2, 4}, {1, 1, 2}, {4, 8}, {1, 2}};
    for (int i = 0; i < 24; ++i) {
        const std::vector<int>& steps = stepSets[static_cast<std::size_t>(i) % stepSets.size()];
        const int features = random.Integer(0, 1) == 0 ? random.Integer(8, 63) : random.Integer(64, 300);
        Detector detector(features, steps, weak, strong);
        const QuietOutput quiet;
        TrainAllAngles(detector, PartPicture(120.0, 160), 12, 30.0f);
        const cv::Size size(64 * random.Integer(2, 4), 64 * random.Integer(2, 4));
        const cv::Mat scene = PartScene(
            size, 70.0,
            {{{random.Real(60.0, size.width - 60.0), random.Real(60.0, size.height - 60.0)}, random.Real(0.0, 360.0)}},
            static_cast<std::uint32_t>(i), i % 3 != 0);
        cv::Mat mask;
        if (i % 2 == 0) {
            mask = cv::Mat::zeros(size, CV_8U);
            mask(cv::Rect(0, 0, size.width * 3 / 4, size.height)) = 1;
        }
        const auto threshold = static_cast<float>(random.Real(30.0, 95.0));
        const auto expected = Reference::MatchShapes({steps, weak}, {Reference::TemplatesOf(detector, "part", 12)},
                                                     scene, threshold, mask);
        ASSERT_TRUE(SameHits(detector.match(scene, threshold, {"part"}, mask), expected)) << i;
    }
}

TEST(Match, EqualsThePlainSearchAtThresholdsOfZeroAndBelow) {
    Detector detector(20, {1, 2}, weak, strong);
    TrainAllAngles(detector, PartPicture(40.0, 64), 2, 40.0f);
    const cv::Mat scene = PartScene({96, 64}, 40.0, {{{40.0, 30.0}, 15.0}}, 9);
    for (const float threshold : {0.0f, -1.0f, std::numeric_limits<float>::quiet_NaN()}) {
        const auto expected = Reference::MatchShapes({{1, 2}, weak}, {Reference::TemplatesOf(detector, "part", 2)},
                                                     scene, threshold, cv::Mat());
        EXPECT_TRUE(SameHits(Match(detector, scene, threshold), expected)) << threshold;
    }
}

}  // namespace
}  // namespace line2Dup
