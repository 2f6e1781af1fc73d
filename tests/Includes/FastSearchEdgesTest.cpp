#include "Includes/FastSearch.h"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>
#include "tests/Includes/FastSearchScenes.h"
#include "tests/Includes/MatcherMatchers.h"
#include "tests/Includes/MatcherScenes.h"
#include "tests/reference/PlainShapeMatcher.h"

namespace line2Dup {

using Quorvane::TestSupport::FindsWhatThePlainSearchFinds;
using Quorvane::TestSupport::PartPicture;
using Quorvane::TestSupport::PartScene;
using Quorvane::TestSupport::plainSettings;
using Quorvane::TestSupport::QuietOutput;
using Quorvane::TestSupport::SameHits;
using Quorvane::TestSupport::strongGradient;
using Quorvane::TestSupport::TrainAllAngles;
using Quorvane::TestSupport::weakGradient;
namespace Reference = Quorvane::Reference;

namespace {

/// The coarse level's part of the search alone.
std::vector<CoarseCandidate> CandidatesIn(const cv::Mat& scene, const std::vector<ShapeTemplateLevels>& templates,
                                          float threshold) {
    cv::Mat half;
    cv::pyrDown(scene, half, scene.size() / 2);
    std::vector<CoarseCandidate> all;
    CoarseSearch(Reference::ComputeGradients(half, weakGradient).quantised)
        .find(templates, threshold, [&](const std::vector<CoarseCandidate>& candidates) {
            all.insert(all.end(), candidates.begin(), candidates.end());
        });
    return all;
}

TEST(FastSearch, EqualsThePlainSearchForTemplatesAboutAsLargeAsTheImage) {
    std::size_t hits = 0;
    // Widths and heights at which the span of positions is positive, 0 or negative, and at which the window's limits
    // cross.
    const cv::Mat picture = PartPicture(140.0, 208);
    for (const int count : {30, 64, 126}) {
        Detector detector(count, {1, 2}, weakGradient, strongGradient);
        const QuietOutput quiet;
        TrainAllAngles(detector, picture, 24, 15.0f);
        const std::vector<Reference::TemplateClass> classes{Reference::TemplatesOf(detector, "part", 24)};
        for (int width = 96; width <= 176; width += 16) {
            for (int height = 96; height <= 176; height += 16) {
                const cv::Mat scene = picture(cv::Rect((208 - width) / 2, (208 - height) / 2, width, height)).clone();
                ASSERT_TRUE(FindsWhatThePlainSearchFinds(detector, classes, scene, 40.0f, hits))
                    << count << ", " << scene.size();
            }
        }
    }
    EXPECT_GT(hits, 0u);
}

TEST(FastSearch, EqualsThePlainSearchForPartsOverManyTiles) {
    std::size_t hits = 0;
    const QuietOutput quiet;
    Detector detector(60, {1, 2}, weakGradient, strongGradient);
    TrainAllAngles(detector, PartPicture(300.0, 448), 12, 5.0f);
    const std::vector<Reference::TemplateClass> classes{Reference::TemplatesOf(detector, "part", 12)};
    const cv::Mat scene = PartScene({800, 480}, 300.0, {{{230.0, 240.0}, 10.0}, {{570.0, 240.0}, 40.0}}, 7);
    for (const float threshold : {50.0f, 80.0f}) {
        ASSERT_TRUE(FindsWhatThePlainSearchFinds(detector, classes, scene, threshold, hits)) << threshold;
    }
    EXPECT_GE(hits, 4u);
}

TEST(FastSearch, EqualsThePlainSearchWhereShapesGoOnAtTheOtherEdge) {
    std::size_t hits = 0;
    // The grid is one flat array: the right half of a part at the right edge continues at the left edge, one row of
    // blocks lower, and is found there.
    const QuietOutput quiet;
    Detector detector(60, {1, 2}, weakGradient, strongGradient);
    TrainAllAngles(detector, PartPicture(80.0, 128), 40, 0.5f);
    const std::vector<Reference::TemplateClass> classes{Reference::TemplatesOf(detector, "part", 40)};
    const cv::Mat whole = PartScene({256, 160}, 80.0, {{{128.0, 80.0}, 5.0}}, 3);
    constexpr int rowOfBlocks = 4;
    bool foundAcrossTheEdge = false;
    for (const int shift : {100, 120, 128, 140, 160}) {
        cv::Mat scene = whole.clone();
        const int kept = whole.cols - shift;
        whole(cv::Rect(0, 0, kept, 160)).copyTo(scene(cv::Rect(shift, 0, kept, 160)));
        whole(cv::Rect(kept, 0, shift, 160 - rowOfBlocks))
            .copyTo(scene(cv::Rect(0, rowOfBlocks, shift, 160 - rowOfBlocks)));
        ASSERT_TRUE(FindsWhatThePlainSearchFinds(detector, classes, scene, 45.0f, hits)) << shift;
        const int width = classes[0].second[0][1].width;
        for (const CoarseCandidate& candidate : CandidatesIn(scene, classes[0].second, 45.0f)) {
            foundAcrossTheEdge = foundAcrossTheEdge || candidate.place.x + width > scene.cols / 2 + 8;
        }
    }
    EXPECT_TRUE(foundAcrossTheEdge);
    EXPECT_GT(hits, 0u);
}

TEST(FastSearch, EqualsThePlainSearchForCopiesAtTheEdges) {
    // As near to the edges as the template fits, where windows are kept from leaving the image.
    std::size_t hits = 0;
    const QuietOutput quiet;
    Detector detector(60, {1, 2}, weakGradient, strongGradient);
    TrainAllAngles(detector, PartPicture(60.0, 96), 30, 12.0f);
    const std::vector<Reference::TemplateClass> classes{Reference::TemplatesOf(detector, "part", 30)};
    for (const int fromEdge : {24, 26, 28, 30, 32, 36}) {
        const double far = 160.0 - fromEdge;
        const double near = fromEdge;
        const cv::Mat scene = PartScene(
            {160, 160}, 60.0, {{{near, near}, 0.0}, {{far, near}, 96.0}, {{near, far}, 180.0}, {{far, far}, 276.0}}, 7);
        ASSERT_TRUE(FindsWhatThePlainSearchFinds(detector, classes, scene, 60.0f, hits)) << fromEdge;
    }
    EXPECT_GT(hits, 20u);
}

TEST(FastSearch, EqualsThePlainSearchOnASubImageOfALargerOne) {
    Detector detector(60, {1, 2}, weakGradient, strongGradient);
    TrainAllAngles(detector, PartPicture(60.0, 96), 12, 2.0f);
    const cv::Mat scene = PartScene({320, 240}, 60.0, {{{90.0, 100.0}, 9.0}}, 4);
    const cv::Mat part = scene(cv::Rect(16, 20, 160, 160));
    const auto expected =
        Reference::MatchShapes(plainSettings, {Reference::TemplatesOf(detector, "part", 12)}, part, 70.0f, cv::Mat());
    const QuietOutput quiet;
    EXPECT_TRUE(SameHits(detector.match(part, 70.0f, {}, cv::Mat()), expected));
    EXPECT_FALSE(expected.empty());
}

}  // namespace
}  // namespace line2Dup
