#include "Includes/FastSearch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "Includes/TemplateGroups.h"
#include "tests/Includes/MatcherMatchers.h"
#include "tests/Includes/MatcherScenes.h"
#include "tests/reference/PlainShapeMatcher.h"
#include "tests/support/Pictures.h"
#include "tests/support/RandomInput.h"

namespace line2Dup {

using Quorvane::TestSupport::PartPicture;
using Quorvane::TestSupport::PartScene;
using Quorvane::TestSupport::Pose;
using Quorvane::TestSupport::QuietOutput;
using Quorvane::TestSupport::RandomInput;
using Quorvane::TestSupport::SameHits;
using Quorvane::TestSupport::TrainAllAngles;
namespace Reference = Quorvane::Reference;
namespace TestSupport = Quorvane::TestSupport;

namespace {

constexpr float weak = 30.0f;
constexpr float strong = 60.0f;
const Reference::MatcherSettings settings{{1, 2}, weak};

std::vector<MatchHit> SearchFast(const Detector& detector, const std::vector<Reference::TemplateClass>& classes,
                                 const cv::Mat& scene, float threshold) {
    std::vector<std::string> classIds;
    for (const Reference::TemplateClass& templates : classes) {
        EXPECT_TRUE(FastSearch::takesImage(scene, cv::Mat(), {1, 2}, threshold));
        EXPECT_TRUE(FastSearch::takesTemplates(templates.second));
        classIds.push_back(templates.first);
    }
    return detector.match(scene, threshold, classIds, cv::Mat());
}

/// Adds the number of hits to `hits`, for tests to show that their scenes are worth something.
testing::AssertionResult FindsWhatThePlainSearchFinds(const Detector& detector,
                                                      const std::vector<Reference::TemplateClass>& classes,
                                                      const cv::Mat& scene, float threshold, std::size_t& hits) {
    const std::vector<MatchHit> found = SearchFast(detector, classes, scene, threshold);
    hits += found.size();
    return SameHits(found, Reference::MatchShapes(settings, classes, scene, threshold, cv::Mat()));
}

/// Multiples of 16, so that both levels fit the grid.
cv::Size RandomSize(RandomInput& random, int least, int most) {
    return {16 * random.Integer(least, most), 16 * random.Integer(least, most)};
}

/// Any size that the fast search takes, with an odd width or height in every third on average.
cv::Size RandomSearchableSize(RandomInput& random, int least, int most) {
    const bool odd = random.Integer(0, 2) == 0;
    const auto isOdd = [](cv::Size size) { return size.width % 2 != 0 || size.height % 2 != 0; };
    for (;;) {
        const cv::Size size(random.Integer(least, most), random.Integer(least, most));
        if (isOdd(size) == odd && FastSearch::takesImage(cv::Mat(size, CV_8UC3), cv::Mat(), {1, 2}, 1.0f)) return size;
    }
}

std::vector<Pose> RandomPoses(RandomInput& random, int count, cv::Size size) {
    std::vector<Pose> poses;
    for (int i = 0; i < count; ++i) {
        poses.push_back({{random.Real(0.0, size.width), random.Real(0.0, size.height)}, random.Real(0.0, 360.0)});
    }
    return poses;
}

cv::Mat Noise(RandomInput& random, cv::Size size) {
    cv::Mat image = random.Image(size, 3);
    cv::GaussianBlur(image, image, {9, 9}, 1.5);
    cv::normalize(image, image, 0.0, 255.0, cv::NORM_MINMAX);
    return image;
}

/// Slanting stripes: a template taken from them fits in many places, all along a stripe.
cv::Mat Stripes(RandomInput& random, cv::Size size) {
    const double angle = random.Real(0.0, CV_PI);
    const double period = random.Real(10.0, 24.0);
    cv::Mat image(size, CV_8UC3);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const double phase = (x * std::cos(angle) + y * std::sin(angle)) * 2.0 * CV_PI / period;
            image.at<cv::Vec3b>(y, x) = cv::Vec3b::all(cv::saturate_cast<uchar>(127.5 + 400.0 * std::sin(phase)));
        }
    }
    return image;
}

/// The coarse level's part of the search alone.
std::vector<CoarseCandidate> CandidatesIn(const cv::Mat& scene, const std::vector<ShapeTemplateLevels>& templates,
                                          float threshold) {
    cv::Mat half;
    cv::pyrDown(scene, half, scene.size() / 2);
    return CoarseSearch(Reference::ComputeGradients(half, weak).quantised).find(templates, threshold);
}

TEST(FastSearch, EqualsThePlainSearchOnRandomScenes) {
    RandomInput random(380);
    int hits = 0;
    for (int i = 0; i < 60; ++i) {
        const double extent = random.Real(30.0, 120.0);
        const bool colour = random.Integer(0, 2) > 0;
        Detector detector(random.Integer(10, 127), {1, 2}, weak, strong);
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
        ASSERT_TRUE(SameHits(found, Reference::MatchShapes(settings, classes, scene, threshold, cv::Mat())))
            << i << ", threshold " << threshold << ", " << size;
        hits += static_cast<int>(found.size());
    }

    EXPECT_GT(hits, 100);  // the scenes are worth something
}

TEST(FastSearch, EqualsThePlainSearchOnImagesOfAllSizes) {
    RandomInput random(383);
    Detector detector(60, {1, 2}, weak, strong);
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
        ASSERT_TRUE(SameHits(found, Reference::MatchShapes(settings, classes, scene, threshold, cv::Mat())))
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
    Detector detector(63, {1, 2}, weak, strong);
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
    for (const std::string& name : TestSupport::PictureNames()) {
        cv::Mat picture = TestSupport::LoadColourPicture(name);
        picture = picture(cv::Rect(0, 0, picture.cols / 16 * 16, picture.rows / 16 * 16)).clone();
        for (int i = 0; i < 4; ++i) {
            const int side = random.Integer(24, 70) * 2;
            const cv::Point corner(random.Integer(0, picture.cols - side), random.Integer(0, picture.rows - side));
            Detector detector(random.Integer(0, 1) == 0 ? 60 : 100, {1, 2}, weak, strong);
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

TEST(FastSearch, EqualsThePlainSearchForTemplatesAboutAsLargeAsTheImage) {
    std::size_t hits = 0;
    // Widths and heights at which the span of positions is positive, 0 or negative, and at which the window's limits
    // cross.
    const cv::Mat picture = PartPicture(140.0, 208);
    for (const int count : {30, 64, 126}) {
        Detector detector(count, {1, 2}, weak, strong);
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

TEST(FastSearch, EqualsThePlainSearchWhereShapesGoOnAtTheOtherEdge) {
    std::size_t hits = 0;
    // The grid is one flat array: the right half of a part at the right edge continues at the left edge, one row of
    // blocks lower, and is found there.
    const QuietOutput quiet;
    Detector detector(60, {1, 2}, weak, strong);
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

TEST(FastSearch, EqualsThePlainSearchOnNoiseAndStripes) {
    std::size_t hits = 0;
    RandomInput random(382);
    for (int i = 0; i < 12; ++i) {
        Detector detector(40, {1, 2}, weak, strong);
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

TEST(FastSearch, EqualsThePlainSearchForSeveralClassesOfMixedTemplates) {
    std::size_t hits = 0;
    Detector detector(60, {1, 2}, weak, strong);
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
    Detector detector(60, {1, 2}, weak, strong);
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
        ASSERT_TRUE(SameHits(found, Reference::MatchShapes(settings, classes, scene, threshold, cv::Mat())))
            << threshold;
        hits += found.size();
    }
    EXPECT_GT(hits, 0u);
}

/// Templates that no training makes, searched for by the fast search itself.
testing::AssertionResult FindsHandmadeAsThePlainSearchDoes(const std::vector<ShapeTemplateLevels>& templates,
                                                           const cv::Mat& scene, float threshold, std::size_t& hits) {
    EXPECT_TRUE(FastSearch::takesImage(scene, cv::Mat(), {1, 2}, threshold));
    EXPECT_TRUE(FastSearch::takesTemplates(templates));
    FastSearch search(ColorGradient(weak, 64, strong), scene);
    std::vector<MatchHit> found;
    search.matchClass(threshold, found, "handmade", templates);
    std::stable_sort(found.begin(), found.end());
    found.erase(std::unique(found.begin(), found.end()), found.end());
    hits += found.size();
    return SameHits(found, Reference::MatchShapes(settings, {{"handmade", templates}}, scene, threshold, cv::Mat()));
}

/// A level of `count` features scattered from `least` to `most` in both directions; its extent need not be theirs.
ShapeTemplate ScatteredLevel(RandomInput& random, int pyramidLevel, int count, cv::Size extent, int least, int most) {
    ShapeTemplate level{extent.width, extent.height, 0, 0, pyramidLevel, {}};
    for (int i = 0; i < count; ++i) {
        level.features.push_back(
            {random.Integer(least, most), random.Integer(least, most), random.Integer(0, 7), 0.0f});
    }
    return level;
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

TEST(FastSearch, EqualsThePlainSearchOnASubImageOfALargerOne) {
    Detector detector(60, {1, 2}, weak, strong);
    TrainAllAngles(detector, PartPicture(60.0, 96), 12, 2.0f);
    const cv::Mat scene = PartScene({320, 240}, 60.0, {{{90.0, 100.0}, 9.0}}, 4);
    const cv::Mat part = scene(cv::Rect(16, 20, 160, 160));
    const auto expected =
        Reference::MatchShapes(settings, {Reference::TemplatesOf(detector, "part", 12)}, part, 70.0f, cv::Mat());
    const QuietOutput quiet;
    EXPECT_TRUE(SameHits(detector.match(part, 70.0f, {}, cv::Mat()), expected));
    EXPECT_FALSE(expected.empty());
}

}  // namespace
}  // namespace line2Dup
