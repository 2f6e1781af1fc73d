// Templates of a detector: what trains them and what looks them up.

#include "Includes/Detector.h"

#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "tests/Includes/MatcherMatchers.h"
#include "tests/Includes/MatcherScenes.h"
#include "tests/reference/PlainShapeMatcher.h"
#include "tests/support/Pictures.h"

namespace line2Dup {

using Quorvane::TestSupport::PartPicture;
using Quorvane::TestSupport::QuietOutput;
using Quorvane::TestSupport::SameFeatures;
using Quorvane::TestSupport::TrainAllAngles;
using testing::Pointwise;
namespace Reference = Quorvane::Reference;
namespace TestSupport = Quorvane::TestSupport;

namespace {

constexpr float weak = 30.0f;
constexpr float strong = 60.0f;

/// The angles of a photograph's features differ in the last bits from processor to processor.
MATCHER(IsFeature, "") {
    const GradientFeature& actual = std::get<0>(arg);
    const GradientFeature& expected = std::get<1>(arg);
    return actual.x == expected.x && actual.y == expected.y && actual.label == expected.label &&
           std::abs(actual.theta - expected.theta) < 1e-4f;
}

TEST(AddShapeTemplate, CountsIdsPerClass) {
    Detector detector(64, {1, 2}, weak, strong);
    const cv::Mat picture = PartPicture(100.0, 160);
    EXPECT_EQ(detector.addShapeTemplate(picture, "a", cv::Mat(), 0), 0);
    EXPECT_EQ(detector.addShapeTemplate(picture, "a", cv::Mat(), 0), 1);
    EXPECT_EQ(detector.addShapeTemplate(picture, "b", cv::Mat(), 0), 0);
    EXPECT_EQ(detector.addRotatedTemplate("a", 1, 10.0f, {80.0f, 80.0f}), 2);
}

TEST(AddShapeTemplate, TakesTheFeaturesOfEachLevelIntoOneBox) {
    Detector detector(64, {1, 2}, weak, strong);
    const cv::Mat picture = PartPicture(140.0, 200);
    detector.addShapeTemplate(picture, "part", cv::Mat(), 0);
    const ShapeTemplateLevels& levels = detector.templateLevels("part", 0);
    ASSERT_EQ(levels.size(), 2u);
    EXPECT_EQ(levels[0].tlX % 2, 0);
    EXPECT_EQ(levels[1].tlX, levels[0].tlX / 2);
    EXPECT_EQ(levels[1].width, levels[0].width / 2);
    EXPECT_EQ(levels[1].pyramidLevel, 1);
    cv::Mat half;
    cv::pyrDown(picture, half, picture.size() / 2);
    std::size_t wanted = 64;
    for (std::size_t l = 0; l < 2; ++l, wanted /= 2) {
        std::vector<GradientFeature> expected = Reference::ExtractFeatures(
            Reference::ComputeGradients(l == 0 ? picture : half, weak), cv::Mat(), wanted, strong);
        for (GradientFeature& feature : expected) {
            feature.x -= levels[l].tlX;
            feature.y -= levels[l].tlY;
        }
        EXPECT_TRUE(SameFeatures(levels[l].features, expected)) << "level " << l;
    }
}

TEST(AddShapeTemplate, ListsTheFeaturesOfAPhotograph) {
    Detector detector(16, {1, 2}, weak, strong);
    const cv::Mat coin = TestSupport::LoadColourPicture("coins.png")(cv::Rect(16, 140, 80, 80)).clone();
    const QuietOutput quiet;
    detector.addShapeTemplate(coin, "coin", cv::Mat(), 0);
    const ShapeTemplateLevels& levels = detector.templateLevels("coin", 0);
    ASSERT_EQ(levels.size(), 2u);
    EXPECT_EQ(cv::Rect(levels[0].tlX, levels[0].tlY, levels[0].width, levels[0].height), cv::Rect(8, 2, 68, 74));
    EXPECT_EQ(cv::Rect(levels[1].tlX, levels[1].tlY, levels[1].width, levels[1].height), cv::Rect(4, 1, 34, 37));
    EXPECT_THAT(levels[0].features, Pointwise(IsFeature(), std::vector<GradientFeature>{{26, 1, 3, 255.427246f},
                                                                                        {56, 50, 1, 11.241725f},
                                                                                        {68, 34, 3, 62.5621872f},
                                                                                        {14, 2, 5, 285.070557f},
                                                                                        {59, 65, 6, 323.313904f},
                                                                                        {67, 72, 5, 295.402374f},
                                                                                        {37, 50, 7, 163.728531f},
                                                                                        {29, 39, 5, 122.76886f},
                                                                                        {1, 52, 0, 359.534302f},
                                                                                        {9, 71, 5, 293.2771f},
                                                                                        {13, 37, 3, 72.7764359f},
                                                                                        {23, 74, 4, 259.579346f},
                                                                                        {20, 50, 7, 168.178024f},
                                                                                        {66, 52, 0, 352.794678f},
                                                                                        {28, 62, 6, 312.345886f},
                                                                                        {9, 47, 3, 76.2916718f}}));
    EXPECT_THAT(levels[1].features, Pointwise(IsFeature(), std::vector<GradientFeature>{{12, 1, 4, 260.475647f},
                                                                                        {28, 29, 7, 347.827911f},
                                                                                        {31, 19, 2, 48.1542397f},
                                                                                        {19, 26, 0, 169.672821f},
                                                                                        {14, 19, 5, 118.810165f},
                                                                                        {7, 36, 5, 284.71698f},
                                                                                        {1, 29, 7, 344.642212f}}));
}

TEST(AddShapeTemplate, OverridesTheFeatureCount) {
    Detector detector(64, {1}, weak, strong);
    const cv::Mat picture = PartPicture(100.0, 160);
    detector.addShapeTemplate(picture, "part", cv::Mat(), 10);
    EXPECT_TRUE(SameFeatures(detector.templateLevels("part", 0)[0].features, [&] {
        Detector ten(10, {1}, weak, strong);
        ten.addShapeTemplate(picture, "part", cv::Mat(), 0);
        return ten.templateLevels("part", 0)[0].features;
    }()));
}

TEST(AddShapeTemplate, LeavesAnEmptyClassBehindIfTheImageHasTooFewFeatures) {
    Detector detector(64, {1, 2}, weak, strong);
    testing::internal::CaptureStdout();
    EXPECT_EQ(detector.addShapeTemplate(cv::Mat(64, 64, CV_8U, cv::Scalar(7)), "blank", cv::Mat(), 0), -1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "too few features, abort\n");
    testing::internal::CaptureStderr();
    EXPECT_TRUE(detector.templateLevels("blank", 0).empty());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "[Error] template_id out of range: 0, available = 0\n");
    const QuietOutput quiet;
    EXPECT_TRUE(detector.match(cv::Mat::zeros(64, 64, CV_8U), 50.0f, {}, cv::Mat()).empty());
}

TEST(AddShapeTemplate, KeepsWhatTheClassHadIfAnImageFails) {
    Detector detector(64, {1, 2}, weak, strong);
    const QuietOutput quiet;
    detector.addShapeTemplate(PartPicture(100.0, 160), "part", cv::Mat(), 0);
    EXPECT_EQ(detector.addShapeTemplate(cv::Mat(64, 64, CV_8U, cv::Scalar(7)), "part", cv::Mat(), 0), -1);
    EXPECT_EQ(detector.addShapeTemplate(PartPicture(100.0, 160), "part", cv::Mat(), 0), 1);
}

TEST(AddShapeTemplate, DropsTheFineLevelsFeaturesIfTheCoarseOneHasTooFew) {
    // The window of 5 by 5 pixels goes over 16 by 16 places of the fine level and over 6 by 6 of the coarse one, where
    // no more than four maxima find room.
    cv::Mat disc(20, 20, CV_8U, cv::Scalar(0));
    cv::circle(disc, {10, 10}, 6, cv::Scalar(255), cv::FILLED);
    Detector fine(64, {1}, weak, strong);
    Detector both(64, {1, 2}, weak, strong);
    testing::internal::CaptureStdout();
    EXPECT_EQ(fine.addShapeTemplate(disc, "small", cv::Mat(), 0), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "have no enough features, exaustive mode\n");
    testing::internal::CaptureStdout();
    EXPECT_EQ(both.addShapeTemplate(disc, "small", cv::Mat(), 0), -1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "have no enough features, exaustive mode\ntoo few features, abort\n");
    EXPECT_EQ(both.addShapeTemplate(PartPicture(100.0, 160), "small", cv::Mat(), 0), 0);
}

TEST(AddShapeTemplate, DoesNotSpinIfOneFeatureIsWanted) {
    Detector detector(1, {1, 2}, weak, strong);
    EXPECT_EQ(detector.addShapeTemplate(PartPicture(100.0, 160), "part", cv::Mat(), 0), 0);
    EXPECT_EQ(detector.templateLevels("part", 0)[0].features.size(), 1u);
    EXPECT_EQ(detector.templateLevels("part", 0)[1].features.size(), 1u);
}

TEST(AddRotatedTemplate, KeepsTheSourcesFeatureCountAtEveryLevel) {
    Detector detector(64, {1, 2}, weak, strong);
    TrainAllAngles(detector, PartPicture(100.0, 160), 72, 5.0f);
    const ShapeTemplateLevels upright = detector.templateLevels("part", 0);
    for (int id = 1; id < 72; ++id) {
        for (std::size_t l = 0; l < 2; ++l) {
            ASSERT_EQ(detector.templateLevels("part", id)[l].features.size(), upright[l].features.size());
        }
    }
}

TEST(AddRotatedTemplate, RaisesForAnUnknownSource) {
    Detector detector(64, {1, 2}, weak, strong);
    EXPECT_THROW(detector.addRotatedTemplate("part", 0, 1.0f, {}), std::out_of_range);
    detector.addShapeTemplate(PartPicture(100.0, 160), "part", cv::Mat(), 0);
    EXPECT_THROW(detector.addRotatedTemplate("part", 1, 1.0f, {}), std::out_of_range);
    EXPECT_THROW(detector.addRotatedTemplate("part", -1, 1.0f, {}), std::out_of_range);
}

TEST(TemplateLevels, SaysWhatIsMissing) {
    Detector detector(64, {1, 2}, weak, strong);
    testing::internal::CaptureStderr();
    EXPECT_TRUE(detector.templateLevels("nobody", 3).empty());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "[Error] class_id not found: nobody\n");
    detector.addShapeTemplate(PartPicture(100.0, 160), "part", cv::Mat(), 0);
    testing::internal::CaptureStderr();
    EXPECT_TRUE(detector.templateLevels("part", -1).empty());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "[Error] template_id out of range: -1, available = 1\n");
    testing::internal::CaptureStderr();
    EXPECT_TRUE(detector.templateLevels("part", 1).empty());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "[Error] template_id out of range: 1, available = 1\n");
}

TEST(TemplateLevels, AnswersEveryWrongLookupWithTheSameEmptyVector) {
    Detector detector(64, {1, 2}, weak, strong);
    detector.addShapeTemplate(PartPicture(100.0, 160), "part", cv::Mat(), 0);
    testing::internal::CaptureStderr();
    const ShapeTemplateLevels& unknownClass = detector.templateLevels("nobody", 0);
    const ShapeTemplateLevels& unknownId = Detector(64, {1}, weak, strong).templateLevels("part", 9);
    EXPECT_EQ(&unknownClass, &unknownId);
    EXPECT_EQ(&unknownClass, &detector.templateLevels("part", 9));
    testing::internal::GetCapturedStderr();
    EXPECT_TRUE(unknownClass.empty());
}

}  // namespace
}  // namespace line2Dup
