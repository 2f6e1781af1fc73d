#include "Includes/FastSearch.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>

#include "Includes/TemplateGroups.h"
#include "tests/Includes/FastSearchScenes.h"
#include "tests/Includes/MatcherMatchers.h"
#include "tests/Includes/MatcherScenes.h"
#include "tests/reference/PlainShapeMatcher.h"

namespace line2Dup {

using Quorvane::TestSupport::FindsHandmadeAsThePlainSearchDoes;
using Quorvane::TestSupport::FindsWhatThePlainSearchFinds;
using Quorvane::TestSupport::Noise;
using Quorvane::TestSupport::PartPicture;
using Quorvane::TestSupport::PartScene;
using Quorvane::TestSupport::plainSettings;
using Quorvane::TestSupport::QuietOutput;
using Quorvane::TestSupport::RandomInput;
using Quorvane::TestSupport::RandomSearchableSize;
using Quorvane::TestSupport::SameHits;
using Quorvane::TestSupport::ScatteredLevel;
using Quorvane::TestSupport::SearchFast;
using Quorvane::TestSupport::Stripes;
using Quorvane::TestSupport::strongGradient;
using Quorvane::TestSupport::weakGradient;
namespace Reference = Quorvane::Reference;

namespace {

TEST(FastSearch, EqualsThePlainSearchForSeveralClassesOfMixedTemplates) {
    std::size_t hits = 0;
    Detector detector(60, {1, 2}, weakGradient, strongGradient);
    const QuietOutput quiet;
    for (const double extent : {60.0, 90.0, 45.0}) {
        const cv::Mat picture = PartPicture(extent, 140);
        detector.addShapeTemplate(picture, "mixed", cv::Mat(), 0);
        detector.addShapeTemplate(picture, "mixed", cv::Mat(), 20);
        detector.addShapeTemplate(picture, extent > 50.0 ? "large" : "small", cv::Mat(), 0);
    }
    const std::vector<Reference::TemplateClass> classes{Reference::TemplatesOf(detector, "small", 1),
                                                        Reference::TemplatesOf(detector, "mixed", 6),
                                                        Reference::TemplatesOf(detector, "large", 2)};
    const cv::Mat scene = PartScene({320, 240}, 60.0, {{{90.0, 100.0}, 0.0}, {{230.0, 120.0}, 3.0}}, 8);
    for (const float threshold : {55.0f, 80.0f}) {
        ASSERT_TRUE(FindsWhatThePlainSearchFinds(detector, classes, scene, threshold, hits)) << threshold;
    }
    EXPECT_GT(hits, 0u);
}

TEST(FastSearch, EqualsThePlainSearchWithClassesTwiceAndEmptyOnesBetween) {
    Detector detector(60, {1, 2}, weakGradient, strongGradient);
    const QuietOutput quiet;
    for (const auto& [classId, extent] : {std::pair<std::string, double>{"low", 44.0}, {"tall", 80.0}, {"mid", 60.0}}) {
        detector.addShapeTemplate(PartPicture(extent, 140), classId, cv::Mat(), 0);
        detector.addRotatedTemplate(classId, 0, 3.0f, {70.0f, 70.0f});
    }
    detector.addShapeTemplate(cv::Mat(64, 64, CV_8U, cv::Scalar(7)), "none", cv::Mat(), 0);
    const auto templatesOf = [&](const std::string& id) {
        return Reference::TemplatesOf(detector, id, id == "none" ? 0 : 2);
    };
    const std::vector<Reference::TemplateClass> classes{templatesOf("low"),  templatesOf("none"), templatesOf("tall"),
                                                        templatesOf("none"), templatesOf("mid"),  templatesOf("tall")};
    const cv::Mat scene = PartScene({320, 240}, 60.0, {{{90.0, 100.0}, 0.0}, {{230.0, 120.0}, 3.0}}, 8);
    std::size_t hits = 0;
    for (const float threshold : {55.0f, 80.0f, 99.0f, 100.0f}) {
        const std::vector<MatchHit> found = SearchFast(detector, classes, scene, threshold);
        ASSERT_TRUE(SameHits(found, Reference::MatchShapes(plainSettings, classes, scene, threshold, cv::Mat())))
            << threshold;
        hits += found.size();
    }
    EXPECT_GT(hits, 0u);
}

TEST(FastSearch, EqualsThePlainSearchForHandmadeTemplates) {
    // One feature and the most there may be, features left of and above the template's corner, and features far
    // beyond its width and height, down to the image's last row and further.
    RandomInput random(384);
    std::size_t hits = 0;
    for (const int count : {1, 2, 5, 63}) {
        for (const auto& [least, most] : {std::pair<int, int>{0, 20}, {-12, 20}, {0, 90}, {-60, 200}}) {
            for (int i = 0; i < 6; ++i) {
                const cv::Size size = RandomSearchableSize(random, 32, 130);
                const cv::Mat scene = i % 2 == 0 ? Noise(random, size) : Stripes(random, size);
                const cv::Size extent(random.Integer(0, 12), random.Integer(0, 12));
                std::vector<ShapeTemplateLevels> templates;
                for (int k = 0; k < 4; ++k) {
                    templates.push_back({ScatteredLevel(random, 0, count, extent * 2, 2 * least, 2 * most),
                                         ScatteredLevel(random, 1, count, extent, least, most)});
                }
                const auto threshold = static_cast<float>(random.Real(8.0, 40.0));
                ASSERT_TRUE(FindsHandmadeAsThePlainSearchDoes(templates, scene, threshold, hits))
                    << count << ", " << least << " to " << most << ", " << size << ", threshold " << threshold;
            }
        }
    }
    EXPECT_GT(hits, 0u);
}

TEST(FastSearch, EqualsThePlainSearchForMoreFineFeaturesThanABytesCount) {
    RandomInput random(387);
    std::size_t hits = 0;
    for (const int count : {100, 254, 255, 256, 600}) {
        const cv::Mat scene = Noise(random, {112, 96});
        std::vector<ShapeTemplateLevels> templates;
        for (int k = 0; k < 3; ++k) {
            templates.push_back(
                {ScatteredLevel(random, 0, count, {40, 40}, 0, 40), ScatteredLevel(random, 1, 6, {20, 20}, 0, 20)});
        }
        for (const float threshold : {20.0f, 30.0f, 36.0f}) {
            ASSERT_TRUE(FindsHandmadeAsThePlainSearchDoes(templates, scene, threshold, hits)) << count;
        }
    }
    EXPECT_GT(hits, 0u);
}

TEST(FastSearch, EqualsThePlainSearchWhereAFeatureLeavesTheImageInSomeNeighboursOnly) {
    RandomInput random(385);
    std::size_t hits = 0;
    for (int i = 0; i < 24; ++i) {
        const cv::Size size = RandomSearchableSize(random, 48, 130);
        const cv::Mat scene = i % 2 == 0 ? Noise(random, size) : Stripes(random, size);
        const cv::Size half = size / 2;
        ShapeTemplateLevels first{ScatteredLevel(random, 0, 12, {20, 20}, 0, 20),
                                  ScatteredLevel(random, 1, 12, {10, 10}, 0, 10)};
        first[1].features[0] = {half.width - 2, 3, 1, 0.0f};
        first[1].features[1] = {4, half.height - 2, 3, 0.0f};
        first[1].features[2] = {1, 1, 5, 0.0f};
        std::vector<ShapeTemplateLevels> templates(5, first);
        for (int k = 1; k < 5; ++k) {
            std::vector<GradientFeature>& features = templates[static_cast<std::size_t>(k)][1].features;
            features[0].x += k - 1;  // half.width - 2 to half.width + 1
            features[1].y += k - 1;
            features[2].x -= k - 1;  // 1 to -2
        }
        ASSERT_EQ(groupTemplates(templates, half).size(), 1u);
        const auto threshold = static_cast<float>(random.Real(20.0, 50.0));
        ASSERT_TRUE(FindsHandmadeAsThePlainSearchDoes(templates, scene, threshold, hits))
            << i << ", " << size << ", threshold " << threshold;
    }
    EXPECT_GT(hits, 0u);
}

TEST(FastSearch, LeavesTheRestToThePlainSearch) {
    const cv::Mat image(160, 240, CV_8UC3);
    EXPECT_TRUE(FastSearch::takesImage(image, cv::Mat(), {1, 2}, 0.1f));
    EXPECT_FALSE(FastSearch::takesImage(image, cv::Mat(), {1, 2}, 0.0f));
    EXPECT_FALSE(FastSearch::takesImage(image, cv::Mat(160, 240, CV_8U), {1, 2}, 80.0f));
    EXPECT_FALSE(FastSearch::takesImage(image, cv::Mat(), {1, 2, 2}, 80.0f));
    EXPECT_FALSE(FastSearch::takesImage(image, cv::Mat(), {2, 4}, 80.0f));
    EXPECT_FALSE(FastSearch::takesImage(image(cv::Rect(0, 0, 160, 160)), cv::Mat(), {1, 2}, 80.0f));
    EXPECT_FALSE(FastSearch::takesImage(cv::Mat(160, 242, CV_8UC3), cv::Mat(), {1, 2}, 80.0f));
    EXPECT_FALSE(FastSearch::takesImage(cv::Mat(160, 240, CV_8UC4), cv::Mat(), {1, 2}, 80.0f));
    EXPECT_FALSE(FastSearch::takesImage(cv::Mat(), cv::Mat(), {1, 2}, 80.0f));
    const auto withFeatures = [](std::size_t fine, std::size_t coarse) {
        return std::vector<ShapeTemplateLevels>{{{1, 1, 0, 0, 0, std::vector<GradientFeature>(fine)},
                                                 {1, 1, 0, 0, 1, std::vector<GradientFeature>(coarse)}}};
    };
    EXPECT_TRUE(FastSearch::takesTemplates(withFeatures(8191, 63)));
    EXPECT_FALSE(FastSearch::takesTemplates(withFeatures(8192, 63)));
    EXPECT_FALSE(FastSearch::takesTemplates(withFeatures(64, 64)));
    EXPECT_FALSE(FastSearch::takesTemplates(withFeatures(64, 0)));
}

}  // namespace
}  // namespace line2Dup
