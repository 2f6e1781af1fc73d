// What a search does at its limits: at the image's border, at the threshold, and where it refuses.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <opencv2/core.hpp>

#include "Includes/FastSearch.h"
#include "Includes/PlainSearch.h"
#include "tests/Includes/MatcherMatchers.h"
#include "tests/Includes/MatcherScenes.h"

namespace line2Dup {

using Quorvane::TestSupport::ExpectMatcherError;
using Quorvane::TestSupport::PartPicture;
using Quorvane::TestSupport::PartScene;
using Quorvane::TestSupport::QuietOutput;

namespace {

constexpr float weak = 30.0f;
constexpr float strong = 60.0f;

/// A mask that masks nothing. With it the plain search does the work.
cv::Mat WholeMask(const cv::Mat& scene) { return {scene.size(), CV_8U, cv::Scalar(255)}; }

std::vector<MatchHit> Match(const Detector& detector, const cv::Mat& scene, float threshold, const cv::Mat& mask) {
    const QuietOutput quiet;
    return detector.match(scene, threshold, {}, mask);
}

/// Columns that a wide template can be found in: `width` of the picture from the template's left edge on.
cv::Mat StripOf(const cv::Mat& picture, const ShapeTemplate& templ, int width) {
    return picture(cv::Rect(templ.tlX, 0, width, picture.rows)).clone();
}

/// The width of image at which the template's span of positions, in blocks of the coarse level, is 0.
int WidthOfNoSpan(const ShapeTemplate& coarse) { return 2 * coarseStep * ((coarse.width - 1) / coarseStep + 1); }

/// A checkerboard, which has features enough.
cv::Mat Board(int side, int square) {
    cv::Mat board(side, side, CV_8U);
    for (int r = 0; r < side; ++r) {
        for (int c = 0; c < side; ++c) board.at<uchar>(r, c) = (r / square + c / square) % 2 == 0 ? 0 : 255;
    }
    return board;
}

TEST(MatchLimits, AHitAtTheBorderIsMovedIntoItsClampedWindow) {
    // The template just fits at the right edge, or hangs over by two pixels. The window's centre stays 8 pixels left of
    // the last place that fits, and 7 positions follow the centre: the window ends one pixel before that place.
    Detector detector(60, {1, 2}, weak, strong);
    const cv::Mat picture = PartPicture(100.0, 160);
    const QuietOutput quiet;
    ASSERT_EQ(detector.addShapeTemplate(picture, "part", cv::Mat(), 0), 0);
    const ShapeTemplate& finest = detector.templateLevels("part", 0)[0];
    for (const int over : {0, 2}) {
        const int right = finest.tlX + finest.width - over;
        const int width = right / 16 * 16;
        const cv::Mat scene = picture(cv::Rect(right - width, 0, width, 160)).clone();
        const int trueX = finest.tlX - (right - width);
        for (const cv::Mat& mask : {cv::Mat(), WholeMask(scene)}) {
            const std::vector<MatchHit> hits = detector.match(scene, 50.0f, {}, mask);
            ASSERT_FALSE(hits.empty()) << over;
            EXPECT_EQ(hits[0].x - trueX, -1 - over);
            EXPECT_EQ(hits[0].x, width - finest.width - 1);
            EXPECT_TRUE(std::all_of(hits.begin(), hits.end(),
                                    [&](const MatchHit& hit) { return hit.x < width - finest.width; }));
        }
    }
}

TEST(MatchLimits, ATemplateAsWideAsTheImageIsFoundOnlyWithManyFeatures) {
    const cv::Mat picture = PartPicture(300.0, 448);
    for (const int count : {100, 600}) {
        Detector detector(count, {1, 2}, weak, strong);
        ASSERT_EQ(detector.addShapeTemplate(picture, "part", cv::Mat(), 0), 0);
        const ShapeTemplateLevels& levels = detector.templateLevels("part", 0);
        const bool many = levels[1].features.size() >= 64;
        ASSERT_EQ(many, count == 600) << levels[1].features.size();
        const int width = WidthOfNoSpan(levels[1]);
        const cv::Mat strip = StripOf(picture, levels[0], width);
        EXPECT_EQ(Match(detector, strip, 30.0f, cv::Mat()).empty(), !many);
        // One block more makes a position for both, and one less takes it from both.
        EXPECT_FALSE(Match(detector, StripOf(picture, levels[0], width + 4), 30.0f, cv::Mat()).empty());
        EXPECT_TRUE(Match(detector, StripOf(picture, levels[0], width - 4), 30.0f, cv::Mat()).empty());
    }
}

TEST(MatchLimits, AFineScoreJustAtTheThresholdPasses) {
    Detector detector(60, {1, 2}, weak, strong);
    detector.addShapeTemplate(PartPicture(80.0, 128), "part", cv::Mat(), 0);
    const cv::Mat scene = PartScene({192, 160}, 80.0, {{{90.0, 80.0}, 6.0}}, 7);
    for (const cv::Mat& mask : {cv::Mat(), WholeMask(scene)}) {
        const std::vector<MatchHit> hits = Match(detector, scene, 40.0f, mask);
        ASSERT_FALSE(hits.empty());
        const MatchHit& best = hits.front();
        ASSERT_LT(best.similarity, 100.0f);
        const std::vector<MatchHit> atScore = Match(detector, scene, best.similarity, mask);
        ASSERT_FALSE(atScore.empty());
        EXPECT_EQ(atScore.front().similarity, best.similarity);
        const float above = std::nextafter(best.similarity, 100.0f);
        EXPECT_TRUE(Match(detector, scene, above, mask).empty());
    }
}

TEST(MatchLimits, TooManyFeaturesOfTheFineLevelAreRefusedOnceThereIsACandidate) {
    const cv::Mat board = Board(1024, 10);
    Detector detector(9000, {1, 2}, weak, strong);
    const QuietOutput quiet;
    ASSERT_EQ(detector.addShapeTemplate(board, "board", cv::Mat(), 0), 0);
    ASSERT_GE(detector.templateLevels("board", 0)[0].features.size(), 8192u);
    ASSERT_LT(detector.templateLevels("board", 0)[1].features.size(), 8192u);
    ExpectMatcherError([&] { detector.match(board, 10.0f, {}, cv::Mat()); }, cv::Error::StsBadArg,
                       "feature size too large", "line2Dup::Detector::matchClass");
    EXPECT_TRUE(detector.match(board, 100.0f, {}, cv::Mat()).empty());
}

/// What `match` writes before it throws.
std::string LinesBeforeTheException(const Detector& detector, const cv::Mat& scene, const cv::Mat& mask) {
    testing::internal::CaptureStdout();
    EXPECT_THROW(detector.match(scene, 50.0f, {}, mask), cv::Exception);
    return testing::internal::GetCapturedStdout();
}

TEST(MatchLimits, NoTimeIsPrintedForAnImageOrMaskThatIsRefused) {
    Detector detector(60, {1, 2}, weak, strong);
    detector.addShapeTemplate(PartPicture(100.0, 160), "part", cv::Mat(), 0);
    EXPECT_EQ(LinesBeforeTheException(detector, cv::Mat::zeros(50, 50, CV_8UC3), cv::Mat()), "");
    EXPECT_EQ(LinesBeforeTheException(detector, cv::Mat::zeros(34, 64, CV_8UC3), cv::Mat()), "");
    EXPECT_EQ(LinesBeforeTheException(detector, cv::Mat::zeros(64, 64, CV_8UC3), cv::Mat::zeros(64, 60, CV_8U)), "");
}

TEST(MatchLimits, SimilarityIsRelativeToAllFeaturesAlsoThoseOutside) {
    // A vertical edge, and three features on it; a fourth one lies left of every image.
    cv::Mat scene(64, 64, CV_8U, cv::Scalar(0));
    scene(cv::Rect(32, 0, 32, 64)) = 255;
    const auto level = [](int pyramidLevel) {
        return ShapeTemplate{
            4, 4, 0, 0, pyramidLevel, {{0, 0, 0, 0.0f}, {0, 2, 0, 0.0f}, {0, 4, 0, 0.0f}, {-100, 0, 0, 0.0f}}};
    };
    const std::vector<ShapeTemplateLevels> templates{{level(0), level(1)}};
    const ColorGradient modality(weak, 64, strong);
    std::vector<MatchHit> plain;
    matchClass(prepareLevels(modality, scene, cv::Mat(), {1, 2}), 50.0f, plain, "edge", templates);
    std::vector<MatchHit> fast;
    FastSearch(modality, scene).matchClass(50.0f, fast, "edge", templates);
    for (const std::vector<MatchHit>& hits : {plain, fast}) {
        ASSERT_FALSE(hits.empty());
        for (const MatchHit& hit : hits) EXPECT_EQ(hit.similarity, 75.0f);
    }
    std::vector<MatchHit> none;
    FastSearch(modality, scene).matchClass(75.0f, none, "edge", templates);
    matchClass(prepareLevels(modality, scene, cv::Mat(), {1, 2}), 75.0f, none, "edge", templates);
    EXPECT_TRUE(none.empty());
}

TEST(MatchLimits, TemplatesTurnedAboutPointsOutOfAllRangeAreSearchedForWithoutHarm) {
    const cv::Mat picture = PartPicture(100.0, 160);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const QuietOutput quiet;
    for (const std::vector<int>& steps : {std::vector<int>{1, 2}, {1}, {1, 1, 2}}) {
        for (const int count : {60, 400}) {
            Detector detector(count, steps, weak, strong);
            ASSERT_EQ(detector.addShapeTemplate(picture, "part", cv::Mat(), 0), 0);
            for (const cv::Point2f centre : {cv::Point2f(nan, nan), {nan, 80.0f}, {1e30f, -1e30f}, {80.0f, 2.1e9f}}) {
                for (const float theta : {0.0f, 45.0f, 180.0f}) detector.addRotatedTemplate("part", 0, theta, centre);
            }
            for (const float threshold : {-1.0f, 60.0f}) {
                if (threshold < 0.0f && count > 60) continue;
                const std::vector<MatchHit> hits =
                    detector.match(picture(cv::Rect(0, 0, 128, 128)), threshold, {}, cv::Mat());
                for (const MatchHit& hit : hits) ASSERT_LE(hit.similarity, 100.0f);
            }
        }
    }
}

}  // namespace
}  // namespace line2Dup
