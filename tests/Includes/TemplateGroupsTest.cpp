#include "Includes/TemplateGroups.h"

#include <gtest/gtest.h>

#include "tests/Includes/MatcherScenes.h"

namespace line2Dup {
namespace {

ShapeTemplateLevels OneLevel(std::vector<GradientFeature> features) { return {{9, 9, 0, 0, 0, std::move(features)}}; }

TEST(GroupTemplates, EndsAGroupWhereAFeatureWandersTooFar) {
    const std::vector<TemplateGroup> groups =
        groupTemplates({OneLevel({{5, 5, 1, 0.0f}}), OneLevel({{8, 3, 2, 0.0f}}), OneLevel({{6, 5, 1, 0.0f}}),
                        OneLevel({{4, 5, 1, 0.0f}}), OneLevel({{4, 9, 1, 0.0f}})},
                       {100, 100});
    ASSERT_EQ(groups.size(), 3u);
    EXPECT_EQ(groups[0].last, 3u);
    EXPECT_EQ(groups[0].features[0].x, 5);
    EXPECT_EQ(groups[0].features[0].y, 3);
    EXPECT_EQ(groups[0].features[0].label, 1);
    EXPECT_EQ(groups[0].features[0].otherLabel, 2);
    EXPECT_EQ(groups[1].last, 4u);
    EXPECT_EQ(groups[2].last, 5u);
}

TEST(GroupTemplates, EndsAGroupAtAThirdLabelAndAtAnotherCount) {
    const std::vector<TemplateGroup> groups =
        groupTemplates({OneLevel({{5, 5, 1, 0.0f}}), OneLevel({{5, 5, 0, 0.0f}}), OneLevel({{5, 5, 2, 0.0f}}),
                        OneLevel({{5, 5, 2, 0.0f}, {5, 5, 2, 0.0f}})},
                       {100, 100});
    ASSERT_EQ(groups.size(), 3u);
    EXPECT_EQ(groups[0].last, 2u);
    EXPECT_EQ(groups[1].last, 3u);
}

TEST(GroupTemplates, LeavesFeaturesOutsideTheImageOut) {
    const std::vector<TemplateGroup> groups = groupTemplates(
        {OneLevel({{100, 5, 1, 0.0f}, {200, 1, 3, 0.0f}}), OneLevel({{98, 5, 1, 0.0f}, {1, 200, 5, 0.0f}})},
        {100, 100});
    ASSERT_EQ(groups.size(), 1u);
    EXPECT_EQ(groups[0].features[0].x, 98);
    EXPECT_EQ(groups[0].features[1].label, -1);
}

TEST(GroupTemplates, PutsNeighbouringAnglesTogether) {
    Detector detector(64, {1, 2}, 30.0f, 60.0f);
    Quorvane::TestSupport::TrainAllAngles(detector, Quorvane::TestSupport::PartPicture(120.0, 176), 1801, 0.2f);
    std::vector<ShapeTemplateLevels> templates;
    for (int id = 0; id < 1801; ++id) templates.push_back(detector.templateLevels("part", id));
    const std::vector<TemplateGroup> groups = groupTemplates(templates, {640, 480});
    EXPECT_LT(groups.size(), 400u);
    std::size_t next = 0;
    for (const TemplateGroup& group : groups) {
        EXPECT_EQ(group.first, next);
        next = group.last;
    }
    EXPECT_EQ(next, templates.size());
}

}  // namespace
}  // namespace line2Dup
