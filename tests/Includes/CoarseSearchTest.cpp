#include "Includes/CoarseSearch.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <tuple>

#include "Includes/HitRefinement.h"
#include "tests/Includes/FastSearchScenes.h"
#include "tests/reference/PlainShapeMatcher.h"

namespace line2Dup {

using Quorvane::TestSupport::FindsHandmadeAsThePlainSearchDoes;
using Quorvane::TestSupport::Noise;
using Quorvane::TestSupport::RandomInput;
using Quorvane::TestSupport::ScatteredLevel;
using Quorvane::TestSupport::Stripes;
using Quorvane::TestSupport::weakGradient;
namespace Reference = Quorvane::Reference;

namespace {

using Found = std::vector<std::tuple<int, int, int>>;  // template, x, y
using Portions = std::vector<std::vector<CoarseCandidate>>;

Portions PortionsIn(const cv::Mat& orientations, const std::vector<ShapeTemplateLevels>& templates, float threshold) {
    Portions portions;
    CoarseSearch(orientations).find(templates, threshold, [&](const std::vector<CoarseCandidate>& candidates) {
        portions.push_back(candidates);
    });
    return portions;
}

Found AllOf(const Portions& portions) {
    Found found;
    for (const std::vector<CoarseCandidate>& portion : portions) {
        for (const CoarseCandidate& c : portion) found.emplace_back(c.templateId, c.place.x, c.place.y);
    }
    return found;
}

/// Every sum at every position, from the definition.
Found PlainlyFound(const cv::Mat& orientations, const std::vector<ShapeTemplateLevels>& templates, float threshold) {
    std::vector<cv::Mat> memories;
    for (const cv::Mat& map : Reference::ComputeResponseMaps(Reference::SpreadOrientations(orientations, coarseStep))) {
        memories.push_back(Reference::Linearize(map, coarseStep));
    }
    Found found;
    for (std::size_t id = 0; id < templates.size(); ++id) {
        const ShapeTemplate& templ = templates[id].back();
        const cv::Mat sums = Reference::SimilarityEverywhere(memories, templ, orientations.size(), coarseStep, true);
        for (int r = 0; r < sums.rows; ++r) {
            for (int c = 0; c < sums.cols; ++c) {
                if (percentOf(sums.at<ushort>(r, c), templ.features.size()) > threshold) {
                    found.emplace_back(static_cast<int>(id), c * coarseStep, r * coarseStep);
                }
            }
        }
    }
    return found;
}

std::vector<ShapeTemplateLevels> Scattered(RandomInput& random, int templates, int features, int side) {
    std::vector<ShapeTemplateLevels> scattered;
    scattered.reserve(static_cast<std::size_t>(templates));
    for (int k = 0; k < templates; ++k) {
        scattered.push_back({ScatteredLevel(random, 0, features, {2 * side, 2 * side}, 0, 2 * side),
                             ScatteredLevel(random, 1, features, {side, side}, 0, side)});
    }
    return scattered;
}

cv::Mat OrientationsOf(const cv::Mat& picture) { return Reference::ComputeGradients(picture, weakGradient).quantised; }

TEST(CoarseSearch, FindsThePositionsWhoseSumsPass) {
    RandomInput random(388);
    std::size_t all = 0;
    for (int i = 0; i < 40; ++i) {
        const cv::Size size(2 * random.Integer(4, 60), 2 * random.Integer(4, 60));
        const cv::Mat orientations = OrientationsOf(i % 2 == 0 ? Noise(random, size) : Stripes(random, size));
        const auto templates = Scattered(random, 6, random.Integer(1, 63), random.Integer(0, 40));
        const auto threshold = static_cast<float>(random.Real(1.0, 60.0));
        const Found expected = PlainlyFound(orientations, templates, threshold);
        ASSERT_EQ(AllOf(PortionsIn(orientations, templates, threshold)), expected) << i << ", " << size;
        all += expected.size();
    }
    EXPECT_GT(all, 1000u);
}

TEST(CoarseSearch, HandsOverLargeResultsInPortionsOfWholeTemplates) {
    RandomInput random(389);
    const cv::Mat orientations = OrientationsOf(Noise(random, {224, 224}));
    const auto templates = Scattered(random, 30, 12, 16);
    const Portions portions = PortionsIn(orientations, templates, 5.0f);
    EXPECT_EQ(AllOf(portions), PlainlyFound(orientations, templates, 5.0f));
    ASSERT_GT(portions.size(), 2u);
    const std::size_t positions = orientations.total() / (coarseStep * coarseStep);
    for (std::size_t i = 0; i < portions.size(); ++i) {
        EXPECT_LT(portions[i].size(), CoarseSearch::fullPortion + positions);
        if (i == 0) continue;
        EXPECT_LT(portions[i - 1].back().templateId, portions[i].front().templateId);
        EXPECT_GE(portions[i - 1].size(), CoarseSearch::fullPortion);
    }
}

TEST(CoarseSearch, HandsOverNothingWhereNothingIsFound) {
    const ShapeTemplateLevels one{{4, 4, 0, 0, 0, {{0, 0, 0, 0.0f}}}, {2, 2, 0, 0, 1, {{0, 0, 0, 0.0f}}}};
    EXPECT_TRUE(PortionsIn(cv::Mat::zeros(32, 32, CV_8U), {one}, 1.0f).empty());
    EXPECT_TRUE(PortionsIn(cv::Mat(32, 32, CV_8U, cv::Scalar(1)), {one}, 100.0f).empty());
    EXPECT_TRUE(PortionsIn(cv::Mat(32, 32, CV_8U, cv::Scalar(1)), {}, 1.0f).empty());
}

TEST(FastSearch, EqualsThePlainSearchWhenCandidatesComeInPortions) {
    RandomInput random(390);
    std::size_t hits = 0;
    const cv::Mat scene = Noise(random, {256, 256});
    const auto templates = Scattered(random, 30, 10, 12);
    cv::Mat half;
    cv::pyrDown(scene, half, scene.size() / 2);
    ASSERT_GT(PortionsIn(OrientationsOf(half), templates, 8.0f).size(), 1u);
    ASSERT_TRUE(FindsHandmadeAsThePlainSearchDoes(templates, scene, 8.0f, hits));
    EXPECT_GT(hits, 0u);
}

}  // namespace
}  // namespace line2Dup
