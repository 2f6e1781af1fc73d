#include "Includes/TemplateRotation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "tests/Includes/MatcherMatchers.h"
#include "tests/Includes/MatcherScenes.h"
#include "tests/reference/PlainShapeMatcher.h"
#include "tests/support/RandomInput.h"

namespace line2Dup {

using Quorvane::TestSupport::RandomInput;
using Quorvane::TestSupport::SameFeatures;
using Quorvane::TestSupport::SameTemplates;
namespace Reference = Quorvane::Reference;

namespace {

ShapeTemplate Level(int pyramidLevel, std::vector<GradientFeature> features) {
    return {-1, -1, 0, 0, pyramidLevel, std::move(features)};
}

TEST(CropToFeatures, PutsAllLevelsIntoOneBox) {
    ShapeTemplateLevels levels{Level(0, {{20, 31, 1, 0.0f}, {50, 40, 2, 0.0f}}), Level(1, {{8, 17, 3, 0.0f}})};
    EXPECT_EQ(cropToFeatures(levels), cv::Rect(16, 30, 34, 10));
    const ShapeTemplateLevels expected{{34, 10, 16, 30, 0, {{4, 1, 1, 0.0f}, {34, 10, 2, 0.0f}}},
                                       {17, 5, 8, 15, 1, {{0, 2, 3, 0.0f}}}};
    EXPECT_TRUE(SameTemplates(levels, expected));
}

TEST(CropToFeatures, MakesOddCornersEvenButNotNegativeOnes) {
    ShapeTemplateLevels levels{Level(0, {{-3, 7, 0, 0.0f}, {5, 9, 0, 0.0f}})};
    EXPECT_EQ(cropToFeatures(levels), cv::Rect(-3, 6, 8, 3));
    EXPECT_TRUE(SameFeatures(levels[0].features, {{0, 1, 0, 0.0f}, {8, 3, 0, 0.0f}}));
}

TEST(CropToFeatures, ShiftsNegativeCornersDownwards) {
    ShapeTemplateLevels levels{Level(0, {{-5, -8, 0, 0.0f}}), Level(1, {{-2, -4, 0, 0.0f}})};
    cropToFeatures(levels);
    EXPECT_EQ(levels[0].tlX, -5);
    EXPECT_EQ(levels[1].tlX, -3);
    EXPECT_EQ(levels[1].tlY, -4);
    EXPECT_EQ(levels[1].features[0].x, 1);
}

TEST(CropToFeatures, LeavesATemplateWithoutFeaturesAlone) {
    ShapeTemplateLevels levels{Level(0, {})};
    EXPECT_EQ(cropToFeatures(levels), cv::Rect());
    EXPECT_EQ(levels[0].width, -1);
}

TEST(RotateTemplate, TurnsAntiClockwiseOnTheScreen) {
    const ShapeTemplateLevels source{{20, 20, 40, 50, 0, {{20, 0, 0, 10.0f}, {0, 20, 4, 90.0f}}}};
    const ShapeTemplateLevels turned = rotateTemplate(source, 90.0f, {50.0f, 60.0f});
    // (60, 50) lies up and right of the centre and comes to lie up and left of it; (40, 70) goes the opposite way.
    const ShapeTemplateLevels expected{{20, 20, 40, 50, 0, {{0, 0, 4, 280.0f}, {20, 20, 0, 0.0f}}}};
    EXPECT_TRUE(SameTemplates(turned, expected));
}

TEST(RotateTemplate, HalvesTheCentreAtEachLevel) {
    const ShapeTemplateLevels source{{8, 8, 0, 0, 0, {{0, 0, 0, 0.0f}, {8, 8, 0, 0.0f}}},
                                     {4, 4, 0, 0, 1, {{0, 0, 0, 0.0f}, {4, 4, 0, 0.0f}}}};
    const ShapeTemplateLevels turned = rotateTemplate(source, 180.0f, {8.0f, 8.0f});
    EXPECT_TRUE(SameFeatures(turned[0].features, {{8, 8, 0, 180.0f}, {0, 0, 0, 180.0f}}));
    EXPECT_TRUE(SameFeatures(turned[1].features, {{4, 4, 0, 180.0f}, {0, 0, 0, 180.0f}}));
    EXPECT_EQ(turned[0].tlX, 8);
    EXPECT_EQ(turned[1].tlX, 4);
}

TEST(RotateTemplate, KeepsDirectionsInTheCircleWithBothEnds) {
    const ShapeTemplateLevels source{{0, 0, 0, 0, 0, {{0, 0, 0, 350.0f}, {0, 0, 0, 5.0f}, {0, 0, 0, 360.0f}}}};
    const ShapeTemplateLevels back = rotateTemplate(source, -10.0f, {});
    EXPECT_FLOAT_EQ(back[0].features[0].theta, 360.0f);
    EXPECT_EQ(back[0].features[0].label, 0);
    EXPECT_FLOAT_EQ(back[0].features[2].theta, 10.0f);
    const ShapeTemplateLevels forth = rotateTemplate(source, 730.0f, {});
    EXPECT_FLOAT_EQ(forth[0].features[1].theta, 355.0f);
}

TEST(RotateTemplate, EqualsPlainArithmeticForAllAnglesOfATrainedTemplate) {
    Detector detector(64, {1, 2}, 30.0f, 60.0f);
    const cv::Mat picture = Quorvane::TestSupport::PartPicture(100.0, 160);
    detector.addShapeTemplate(picture, "part", cv::Mat(), 0);
    const ShapeTemplateLevels upright = detector.templateLevels("part", 0);
    for (int i = -20; i <= 1820; ++i) {
        const float theta = static_cast<float>(i) * 0.2f;
        ASSERT_TRUE(SameTemplates(rotateTemplate(upright, theta, {80.0f, 80.0f}),
                                  Reference::RotateTemplate(upright, theta, {80.0f, 80.0f})))
            << theta;
    }
}

TEST(RotateTemplate, EqualsPlainArithmeticForRandomTemplates) {
    RandomInput random(330);
    for (int i = 0; i < 2000; ++i) {
        ShapeTemplateLevels source(static_cast<std::size_t>(random.Integer(1, 3)));
        for (std::size_t l = 0; l < source.size(); ++l) {
            source[l] = {1, 1, random.Integer(-99, 99), random.Integer(-99, 99), static_cast<int>(l), {}};
            for (int k = random.Integer(1, 9); k > 0; --k) {
                source[l].features.push_back({random.Integer(-300, 900), random.Integer(-300, 900),
                                              random.Integer(0, 7), static_cast<float>(random.Real(0.0, 360.0))});
            }
        }
        const auto theta = static_cast<float>(random.Real(-800.0, 800.0));
        const cv::Point2f centre(static_cast<float>(random.Real(-100.0, 900.0)),
                                 static_cast<float>(random.Real(-100.0, 900.0)));
        ASSERT_TRUE(
            SameTemplates(rotateTemplate(source, theta, centre), Reference::RotateTemplate(source, theta, centre)))
            << i;
    }
}

/// A number as trained templates have it, or one time in three a limit or nonsense.
float UsualOrWild(RandomInput& random, float least, float most) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    const std::vector<float> wild{
        std::numeric_limits<float>::quiet_NaN(), infinity, -infinity, -0.0f,  1e-40f, -1e-9f, 360.0f,
        std::nextafter(360.0f, 400.0f),          720.0f,   -360.0f,   11.25f, 3e6f,   -3e6f,  1e20f};
    if (random.Integer(0, 2) > 0) return static_cast<float>(random.Real(least, most));
    return wild[static_cast<std::size_t>(random.Integer(0, static_cast<int>(wild.size()) - 1))];
}

int UsualOrWildPlace(RandomInput& random) {
    if (random.Integer(0, 3) > 0) return random.Integer(-300, 900);
    return random.Integer(0, 1) == 0 ? std::numeric_limits<int>::max() : std::numeric_limits<int>::min();
}

/// Where a feature lies in its level's image. Sums beyond an int wrap, as the crop origin itself does.
std::pair<unsigned, unsigned> PlaceInImage(const ShapeTemplate& level, const GradientFeature& feature) {
    return {static_cast<unsigned>(level.tlX) + static_cast<unsigned>(feature.x),
            static_cast<unsigned>(level.tlY) + static_cast<unsigned>(feature.y)};
}

bool IsSameAngle(float a, float b) { return a == b || (std::isnan(a) && std::isnan(b)); }

TEST(RotateTemplate, GivesManyFeaturesWhatItGivesEachAlone) {
    RandomInput random(331);
    for (int i = 0; i < 3000; ++i) {
        ShapeTemplate level{1, 1, random.Integer(-99, 99), random.Integer(-99, 99), 0, {}};
        for (int k = random.Integer(4, 13); k > 0; --k) {
            level.features.push_back(
                {UsualOrWildPlace(random), UsualOrWildPlace(random), 0, UsualOrWild(random, 0.0f, 360.0f)});
        }
        const float theta = UsualOrWild(random, -800.0f, 800.0f);
        const cv::Point2f centre(UsualOrWild(random, 0.0f, 500.0f), UsualOrWild(random, 0.0f, 500.0f));
        const ShapeTemplate together = rotateTemplate({level}, theta, centre)[0];
        for (std::size_t k = 0; k < level.features.size(); ++k) {
            ShapeTemplate one = level;
            one.features = {level.features[k]};
            const ShapeTemplate alone = rotateTemplate({one}, theta, centre)[0];
            const GradientFeature& actual = together.features[k];
            const GradientFeature& expected = alone.features[0];
            ASSERT_EQ(PlaceInImage(together, actual), PlaceInImage(alone, expected)) << i << ", feature " << k;
            ASSERT_EQ(actual.label, expected.label) << i << ", feature " << k;
            ASSERT_TRUE(IsSameAngle(actual.theta, expected.theta)) << i << ", feature " << k;
        }
    }
}

TEST(RotateTemplate, SurvivesAnglesAndCentresOutOfAllRange) {
    const ShapeTemplateLevels source{{3, 3, 0, 0, 0, {{1, 2, 3, 45.0f}, {3, 3, 3, 45.0f}}}};
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const float theta : {nan, 1e30f, -1e30f, std::numeric_limits<float>::infinity()}) {
        EXPECT_EQ(rotateTemplate(source, theta, {nan, 1e30f})[0].features.size(), 2u);
    }
}

}  // namespace
}  // namespace line2Dup
