#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "Includes/smartfilling.h"
#include "tests/Includes/FillingParts.h"
#include "tests/reference/PlainFilling.h"
#include "tests/support/Matchers.h"
#include "tests/support/RandomInput.h"

namespace Quorvane {

using line2Dup::Detector;
using testing::IsEmpty;
using testing::SizeIs;
using TestSupport::FillingDetector;
using TestSupport::FillingNotices;
using TestSupport::FirstPartOf;
using TestSupport::Listen;
using TestSupport::SmallTray;
using TestSupport::TemplateImage;
using TestSupport::timeLine;
using TestSupport::Train;

namespace {

const SmartFilling filling;

TEST(TrainTemplateFromMat, EqualsThePlainTraining) {
    const TemplateImage part = FirstPartOf(SmallTray());
    Detector detector = FillingDetector();
    std::vector<ShapeVariant> variants;
    Listen([&] { variants = Train(part, detector); });
    const Reference::TrainedTemplates plain = Reference::TrainAllAngles(part.image, part.target);
    ASSERT_EQ(variants.size(), plain.variants.size());
    EXPECT_THAT(variants, SizeIs(1800));
    for (std::size_t i = 0; i < variants.size(); ++i) {
        ASSERT_EQ(variants[i].angle, plain.variants[i].angle);
        ASSERT_EQ(variants[i].scale, 1.0f);
        ASSERT_EQ(variants[i].contour, plain.variants[i].contour);
        ASSERT_EQ(variants[i].targetOffset, part.target);
        ASSERT_EQ(variants[i].imageCentre, plain.variants[i].imageCentre);
        const auto& levels = detector.templateLevels("test", static_cast<int>(i));
        ASSERT_EQ(levels.size(), 2U);
        for (std::size_t l = 0; l < levels.size(); ++l) {
            const line2Dup::ShapeTemplate& expected = plain.templates.second[i][l];
            ASSERT_EQ(levels[l].tlX, expected.tlX) << i;
            ASSERT_EQ(levels[l].tlY, expected.tlY) << i;
            ASSERT_EQ(levels[l].width, expected.width) << i;
            ASSERT_EQ(levels[l].height, expected.height) << i;
            ASSERT_EQ(levels[l].features.size(), expected.features.size()) << i;
            for (std::size_t f = 0; f < expected.features.size(); ++f) {
                ASSERT_EQ(levels[l].features[f].x, expected.features[f].x) << i << ' ' << f;
                ASSERT_EQ(levels[l].features[f].y, expected.features[f].y) << i << ' ' << f;
                ASSERT_EQ(levels[l].features[f].label, expected.features[f].label) << i << ' ' << f;
                ASSERT_EQ(levels[l].features[f].theta, expected.features[f].theta) << i << ' ' << f;
            }
        }
    }
}

TEST(TrainTemplateFromMat, TellsItsTimeAndItsEnd) {
    const TemplateImage part = FirstPartOf(SmallTray());
    Detector detector = FillingDetector();
    const auto console = Listen([&] { Train(part, detector, true, {0.0f, 10.0f}, 5.0f); });
    EXPECT_EQ(FillingNotices(console.out), timeLine + " TrainTemplateFromMat 完成\n\n");
    EXPECT_EQ(console.err, "");
}

TEST(TrainTemplateFromMat, CanTrainEachVariantFromItsOwnImage) {
    const TemplateImage part = FirstPartOf(SmallTray());
    Detector own = FillingDetector();
    Detector rotated = FillingDetector();
    Detector alone = FillingDetector();
    Listen([&] {
        EXPECT_THAT(Train(part, own, false, {0.0f, 40.0f}, 20.0f), SizeIs(3));
        EXPECT_THAT(Train(part, rotated, true, {0.0f, 40.0f}, 20.0f), SizeIs(3));
        EXPECT_THAT(Train(part, alone, true, {40.0f}, 20.0f), SizeIs(1));
    });
    const auto thetas = [](const Detector& detector, int id) {
        std::vector<float> values;
        for (const auto& feature : detector.templateLevels("test", id).at(0).features) values.push_back(feature.theta);
        return values;
    };
    EXPECT_EQ(thetas(own, 0), thetas(rotated, 0));
    EXPECT_EQ(thetas(own, 2), thetas(alone, 0));
    EXPECT_NE(thetas(own, 2), thetas(rotated, 2));
}

TEST(TrainTemplateFromMat, RotatesByTheDifferenceToTheFirstAngle) {
    const TemplateImage part = FirstPartOf(SmallTray());
    Detector detector = FillingDetector();
    Listen([&] { Train(part, detector, true, {30.0f, 60.0f}, 30.0f); });
    const auto& first = detector.templateLevels("test", 0).at(0).features;
    const auto& second = detector.templateLevels("test", 1).at(0).features;
    ASSERT_EQ(first.size(), second.size());
    for (std::size_t i = 0; i < first.size(); ++i) {
        const float turned = first[i].theta - 30.0f;
        EXPECT_FLOAT_EQ(second[i].theta, turned < 0.0f ? turned + 360.0f : turned);
    }
}

TEST(TrainTemplateFromMat, UsesTheWholeImageWithoutAMask) {
    const TemplateImage part = FirstPartOf(SmallTray());
    Detector detector = FillingDetector();
    std::vector<ShapeVariant> variants;
    Listen([&] {
        variants =
            filling.TrainTemplateFromMat(part.image, detector, true, false, part.target, {0.0f}, 1.0f, {1.0f}, 0.0f, 6);
    });
    ASSERT_THAT(variants, SizeIs(1));
    EXPECT_EQ(cv::boundingRect(variants[0].contour), cv::Rect(cv::Point(), part.image.size()));
}

TEST(TrainTemplateFromMat, TooFewFeaturesAreToldAndGiveNothing) {
    const TemplateImage flat{cv::Mat(60, 60, CV_8UC3, cv::Scalar(90, 90, 90)), {30, 30}};
    Detector detector = FillingDetector();
    std::vector<ShapeVariant> variants;
    const auto console = Listen([&] { variants = Train(flat, detector); });
    EXPECT_THAT(variants, IsEmpty());
    EXPECT_EQ(console.out, "too few features, abort\n");
    EXPECT_EQ(console.err,
              "[Error] template_id out of range: -1, available = 0\n"
              "[异常] 模板添加失败，angle = 0，错误信息: first template has no features\n");
}

TEST(TrainTemplateFromMat, NamesTheAngleThatFailed) {
    const TemplateImage flat{cv::Mat(60, 60, CV_8UC3, cv::Scalar(90, 90, 90)), {30, 30}};
    Detector detector = FillingDetector();
    const auto console = Listen([&] { Train(flat, detector, true, {12.5f, 360.0f}); });
    EXPECT_THAT(console.err, testing::HasSubstr("angle = 12.5，错误信息: first template"));
}

TEST(TrainTemplateFromMat, ExceptionsOfTheTrainingAreToldAndGiveNothing) {
    const cv::Mat sixteenBit(60, 60, CV_16UC3, cv::Scalar(900, 900, 900));
    Detector detector = FillingDetector();
    std::vector<ShapeVariant> variants{ShapeVariant()};
    const auto console = Listen([&] {
        variants =
            filling.TrainTemplateFromMat(sixteenBit, detector, true, false, {0, 0}, {0.0f}, 1.0f, {1.0f}, 0.0f, 6);
    });
    EXPECT_THAT(variants, IsEmpty());
    EXPECT_THAT(console.err, testing::HasSubstr("[异常] 模板添加失败，angle = 0，错误信息: "));
    EXPECT_EQ(console.out.find("TrainTemplateFromMat"), std::string::npos);
}

TEST(TrainTemplateFromMat, WhatCannotEvenBeTurnedReachesTheCaller) {
    Detector detector = FillingDetector();
    EXPECT_THROW(filling.TrainTemplateFromMat(cv::Mat(60, 60, CV_32SC3, cv::Scalar(9, 9, 9)), detector, true, false,
                                              {0, 0}, {0.0f}, 1.0f, {1.0f}, 0.0f, 6),
                 cv::Exception);
    EXPECT_THROW(Train({cv::Mat(), {0, 0}}, detector), cv::Exception);
}

TEST(TrainTemplateFromMat, WithoutVariantsComesToItsEnd) {
    const TemplateImage part = FirstPartOf(SmallTray());
    Detector detector = FillingDetector();
    const auto console = Listen([&] { EXPECT_THAT(Train(part, detector, true, {0.0f, 1.0f, 2.0f}, 1.0f), IsEmpty()); });
    EXPECT_EQ(FillingNotices(console.out), timeLine + " TrainTemplateFromMat 完成\n\n");
}

TEST(TrainTemplateFromMat, AVariantThatFailsAfterOthersEmptiesTheList) {
    // On black, where the frame of a turned image shows no edge: squares at both ends, which turn out of the frame.
    cv::Mat image = cv::Mat::zeros(40, 200, CV_8UC3);
    image(cv::Rect(20, 10, 20, 20)).setTo(cv::Scalar(200, 220, 240));
    image(cv::Rect(160, 10, 20, 20)).setTo(cv::Scalar(200, 220, 240));
    Detector detector = FillingDetector();
    std::vector<ShapeVariant> variants{ShapeVariant()};
    const auto console = Listen([&] {
        variants = filling.TrainTemplateFromMat(image, detector, false, false, {100, 20}, {0.0f, 180.0f}, 90.0f, {1.0f},
                                                0.0f, 6);
    });
    EXPECT_THAT(variants, IsEmpty());
    EXPECT_EQ(FillingNotices(console.out), "too few features, abort\n");
    EXPECT_EQ(console.err,
              "[Error] template_id out of range: -1, available = 1\n"
              "[异常] 模板添加失败，angle = 90，错误信息: first template has no features\n");
    EXPECT_FALSE(detector.templateLevels("test", 0).empty());
}

TEST(TrainTemplateFromMat, FeaturesComeFromAllPartsOfTheMaskAndTheOutlineFromTheLargest) {
    cv::Mat image(70, 120, CV_8UC3, cv::Scalar::all(40));
    const cv::Rect large(15, 15, 36, 36);
    const cv::Rect small(85, 25, 14, 14);
    image(large).setTo(cv::Scalar(90, 180, 210));
    image(small).setTo(cv::Scalar(90, 180, 210));
    Detector detector = FillingDetector();
    std::vector<ShapeVariant> variants;
    Listen([&] {
        variants = filling.TrainTemplateFromMat(image, detector, true, true, {30, 30}, {0.0f}, 1.0f, {1.0f}, 0.0f, 3);
    });
    ASSERT_THAT(variants, SizeIs(1));
    const cv::Rect aroundLarge(12, 12, 42, 42);
    EXPECT_EQ(cv::boundingRect(variants[0].contour), aroundLarge);
    const line2Dup::ShapeTemplate& finest = detector.templateLevels("test", 0).at(0);
    int inLarge = 0;
    int inSmall = 0;
    for (const auto& feature : finest.features) {
        const cv::Point place(feature.x + finest.tlX, feature.y + finest.tlY);
        if (aroundLarge.contains(place)) ++inLarge;
        if (cv::Rect(82, 22, 20, 20).contains(place)) ++inSmall;
    }
    EXPECT_GT(inLarge, 8);
    EXPECT_GT(inSmall, 4);
    EXPECT_EQ(inLarge + inSmall, static_cast<int>(finest.features.size()));
}

TEST(TrainTemplateFromMat, ScalesAreListedButNotFollowedWhereFeaturesAreRotated) {
    const TemplateImage part = FirstPartOf(SmallTray());
    Detector detector = FillingDetector();
    std::vector<ShapeVariant> variants;
    Listen([&] {
        variants = filling.TrainTemplateFromMat(part.image, detector, true, true, part.target, {10.0f, 50.0f}, 20.0f,
                                                {1.0f, 2.0f}, 1.0f, 6);
    });
    ASSERT_THAT(variants, SizeIs(6));
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(variants[static_cast<std::size_t>(i)].angle, 10.0f + 20.0f * static_cast<float>(i % 3));
        EXPECT_EQ(variants[static_cast<std::size_t>(i)].scale, i < 3 ? 1.0f : 2.0f);
    }
    for (int i = 0; i < 3; ++i) {
        const auto& single = detector.templateLevels("test", i).at(0);
        const auto& twice = detector.templateLevels("test", i + 3).at(0);
        EXPECT_EQ(twice.width, single.width);
        EXPECT_EQ(twice.height, single.height);
        ASSERT_EQ(twice.features.size(), single.features.size());
        for (std::size_t f = 0; f < single.features.size(); ++f) {
            EXPECT_EQ(twice.features[f].x, single.features[f].x);
            EXPECT_EQ(twice.features[f].y, single.features[f].y);
            EXPECT_EQ(twice.features[f].theta, single.features[f].theta);
        }
    }
}

TEST(TrainTemplateFromMat, FollowsScalesWhereEachVariantHasItsOwnImage) {
    const TemplateImage part = FirstPartOf(SmallTray());
    Detector detector = FillingDetector();
    Listen([&] {
        EXPECT_THAT(filling.TrainTemplateFromMat(part.image, detector, false, true, part.target, {0.0f}, 0.0f,
                                                 {0.8f, 1.0f}, 0.2f, 6),
                    SizeIs(2));
    });
    const double ratio = static_cast<double>(detector.templateLevels("test", 0).at(0).width) /
                         detector.templateLevels("test", 1).at(0).width;
    EXPECT_NEAR(ratio, 0.8, 0.05);
}
}  // namespace
}  // namespace Quorvane
