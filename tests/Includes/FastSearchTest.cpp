#include "Includes/FastSearch.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>

#include "tests/Includes/FastSearchScenes.h"
#include "tests/Includes/MatcherMatchers.h"
#include "tests/Includes/MatcherScenes.h"
#include "tests/reference/PlainShapeMatcher.h"
#include "tests/support/Pictures.h"

namespace line2Dup {

using Quorvane::TestSupport::FindsWhatThePlainSearchFinds;
using Quorvane::TestSupport::LoadColourPicture;
using Quorvane::TestSupport::Noise;
using Quorvane::TestSupport::PartPicture;
using Quorvane::TestSupport::PartScene;
using Quorvane::TestSupport::PictureNames;
using Quorvane::TestSupport::plainSettings;
using Quorvane::TestSupport::Pose;
using Quorvane::TestSupport::QuietOutput;
using Quorvane::TestSupport::RandomInput;
using Quorvane::TestSupport::RandomPoses;
using Quorvane::TestSupport::RandomSearchableSize;
using Quorvane::TestSupport::RandomSize;
using Quorvane::TestSupport::SameHits;
using Quorvane::TestSupport::SearchFast;
using Quorvane::TestSupport::Stripes;
using Quorvane::TestSupport::strongGradient;
using Quorvane::TestSupport::TrainAllAngles;
using Quorvane::TestSupport::weakGradient;
namespace Reference = Quorvane::Reference;

namespace {

TEST(FastSearch, EqualsThePlainSearchOnRandomScenes) {
    RandomInput random(380);
    int hits = 0;
    for (int i = 0; i < 60; ++i) {
        const double extent = random.Real(30.0, 120.0);
        const bool colour = random.Integer(0, 2) > 0;
        Detector detector(random.Integer(10, 127), {1, 2}, weakGradient, strongGradient);
        const QuietOutput quiet;
        const int count = random.Integer(1, 120);
        const cv::Mat picture = PartPicture(extent, static_cast<int>(extent * 1.5) / 2 * 2, colour);
        if (!TrainAllAngles(detector, picture, count, static_cast<float>(random.Real(-4.0, 4.0)))) continue;
        const cv::Size size = RandomSize(random, 4, 20);
        const cv::Mat scene = PartScene(size, extent, RandomPoses(random, random.Integer(0, 4), size),
                                        static_cast<std::uint32_t>(i), colour);
        const std::vector<Reference::TemplateClass> classes{Reference::TemplatesOf(detector, "part", count)};
        const auto threshold = static_cast<float>(random.Real(45.0, 99.9));
        const std::vector<MatchHit> found = SearchFast(detector, classes, scene, threshold);
        ASSERT_TRUE(SameHits(found, Reference::MatchShapes(plainSettings, classes, scene, threshold, cv::Mat())))
            << i << ", threshold " << threshold << ", " << size;
        hits += static_cast<int>(found.size());
    }

    EXPECT_GT(hits, 100);  // the scenes are worth something
}

TEST(FastSearch, EqualsThePlainSearchOnImagesOfAllSizes) {
    RandomInput random(383);
    Detector detector(60, {1, 2}, weakGradient, strongGradient);
    const QuietOutput quiet;
    ASSERT_TRUE(TrainAllAngles(detector, PartPicture(40.0, 64), 90, 4.0f));
    const std::vector<Reference::TemplateClass> classes{Reference::TemplatesOf(detector, "part", 90)};
    std::vector<cv::Size> sizes{{33, 32}, {32, 33}, {20, 16}, {16, 20}, {161, 160}, {160, 161}, {16, 16}};
    while (sizes.size() < 60) sizes.push_back(RandomSearchableSize(random, 16, 180));
    std::size_t hits = 0;
    std::size_t hitsInOddSizes = 0;
    for (const cv::Size size : sizes) {
        const cv::Mat scene = PartScene(size, 40.0, RandomPoses(random, random.Integer(1, 3), size),
                                        static_cast<std::uint32_t>(size.area()), random.Integer(0, 1) == 0);
        const auto threshold = static_cast<float>(random.Real(50.0, 85.0));
        const std::vector<MatchHit> found = SearchFast(detector, classes, scene, threshold);
        ASSERT_TRUE(SameHits(found, Reference::MatchShapes(plainSettings, classes, scene, threshold, cv::Mat())))
            << size << ", threshold " << threshold;
        hits += found.size();
        if (size.width % 2 != 0) hitsInOddSizes += found.size();
    }
    EXPECT_GT(hits, 100u);
    EXPECT_GT(hitsInOddSizes, 10u);
}

TEST(FastSearch, EqualsThePlainSearchAtAllThresholds) {
    std::size_t hits = 0;
    const QuietOutput quiet;
    Detector detector(63, {1, 2}, weakGradient, strongGradient);
    TrainAllAngles(detector, PartPicture(70.0, 110), 12, 3.0f);
    const std::vector<Reference::TemplateClass> classes{Reference::TemplatesOf(detector, "part", 12)};
    const cv::Mat scene = PartScene({192, 160}, 70.0, {{{70.0, 80.0}, 11.0}, {{150.0, 90.0}, 200.0}}, 5);
    for (const float threshold : {0.01f, 1.0f, 3.2f, 10.0f, 25.0f, 37.5f, 50.0f, 62.5f, 75.0f, 80.0f, 90.0f, 96.875f,
                                  99.0f, 99.9f, 100.0f, 130.0f}) {
        ASSERT_TRUE(FindsWhatThePlainSearchFinds(detector, classes, scene, threshold, hits)) << threshold;
    }
    EXPECT_GT(hits, 0u);
}

TEST(FastSearch, EqualsThePlainSearchOnPhotographs) {
    std::size_t hits = 0;
    RandomInput random(381);
    for (const std::string& name : PictureNames()) {
        cv::Mat picture = LoadColourPicture(name);
        picture = picture(cv::Rect(0, 0, picture.cols / 16 * 16, picture.rows / 16 * 16)).clone();
        for (int i = 0; i < 4; ++i) {
            const int side = random.Integer(24, 70) * 2;
            const cv::Point corner(random.Integer(0, picture.cols - side), random.Integer(0, picture.rows - side));
            Detector detector(random.Integer(0, 1) == 0 ? 60 : 100, {1, 2}, weakGradient, strongGradient);
            const QuietOutput quiet;
            const cv::Mat part = picture(cv::Rect(corner, cv::Size(side, side))).clone();
            if (detector.addShapeTemplate(part, "part", cv::Mat(), 0) < 0) continue;
            for (int k = 1; k < 60; ++k) {
                detector.addRotatedTemplate("part", 0, static_cast<float>(k) * 6.0f,
                                            {static_cast<float>(side) * 0.5f, static_cast<float>(side) * 0.5f});
            }
            const std::vector<Reference::TemplateClass> classes{Reference::TemplatesOf(detector, "part", 60)};
            const auto threshold = static_cast<float>(random.Real(60.0, 90.0));
            ASSERT_TRUE(FindsWhatThePlainSearchFinds(detector, classes, picture, threshold, hits))
                << name << " " << i << ", threshold " << threshold;
        }
    }
    EXPECT_GT(hits, 0u);
}

TEST(FastSearch, EqualsThePlainSearchInAPictureFullOfCopies) {
    RandomInput random(386);
    std::size_t hits = 0;
    Detector detector(64, {1, 2}, weakGradient, strongGradient);
    const QuietOutput quiet;
    ASSERT_TRUE(TrainAllAngles(detector, PartPicture(60.0, 96), 180, 2.0f));
    const std::vector<Reference::TemplateClass> classes{Reference::TemplatesOf(detector, "part", 180)};
    for (const cv::Size size : {cv::Size(480, 320), cv::Size(336, 400)}) {
        // From edge to edge, so that the outermost ones are cut by it.
        std::vector<Pose> poses;
        for (int y = 10; y < size.height; y += 76) {
            for (int x = 10; x < size.width; x += 76) {
                poses.push_back({{x + random.Real(-8.0, 8.0), y + random.Real(-8.0, 8.0)}, random.Real(0.0, 360.0)});
            }
        }
        const cv::Mat scene = PartScene(size, 60.0, poses, 6);
        for (const float threshold : {55.0f, 80.0f}) {
            ASSERT_TRUE(FindsWhatThePlainSearchFinds(detector, classes, scene, threshold, hits)) << threshold;
        }
    }
    EXPECT_GT(hits, 500u);
}

TEST(FastSearch, EqualsThePlainSearchOnNoiseAndStripes) {
    std::size_t hits = 0;
    RandomInput random(382);
    for (int i = 0; i < 12; ++i) {
        Detector detector(40, {1, 2}, weakGradient, strongGradient);
        const QuietOutput quiet;
        const cv::Size size = RandomSize(random, 2, 10);
        const cv::Mat scene = i % 2 == 0 ? Noise(random, size) : Stripes(random, size);
        const cv::Mat part = scene(cv::Rect(0, 0, std::min(48, size.width), std::min(48, size.height))).clone();
        if (detector.addShapeTemplate(part, "part", cv::Mat(), 0) < 0) continue;
        for (int k = 1; k < 30; ++k) detector.addRotatedTemplate("part", 0, static_cast<float>(k) * 2.0f, {24, 24});
        const std::vector<Reference::TemplateClass> classes{Reference::TemplatesOf(detector, "part", 30)};
        ASSERT_TRUE(
            FindsWhatThePlainSearchFinds(detector, classes, scene, static_cast<float>(random.Real(35.0, 90.0)), hits))
            << i << ", " << size;
    }
    EXPECT_GT(hits, 0u);
}

}  // namespace
}  // namespace line2Dup
