#include "Includes/ShapeVariantSet.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "tests/support/Matchers.h"
#include "tests/support/RandomInput.h"

namespace Quorvane {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using TestSupport::EqualsMat;
using TestSupport::RandomInput;

namespace {

const cv::Point2f target(3.5f, 4.25f);

std::vector<float> AnglesOf(const ShapeVariantSet& set) {
    std::vector<float> angles;
    for (const ShapeVariant& variant : set.variants) angles.push_back(variant.angle);
    return angles;
}

std::vector<float> ScalesOf(const ShapeVariantSet& set) {
    std::vector<float> scales;
    for (const ShapeVariant& variant : set.variants) scales.push_back(variant.scale);
    return scales;
}

ShapeVariantSet SetOf(std::vector<float> angles, float angleStep, std::vector<float> scales, float scaleStep) {
    ShapeVariantSet set(RandomInput(61).Image({21, 14}, 3));
    set.angleRange = std::move(angles);
    set.angleStep = angleStep;
    set.scaleRange = std::move(scales);
    set.scaleStep = scaleStep;
    set.Produce(target);
    return set;
}

TEST(ShapeVariantSet, HasItsDefaultsAndAWholeMask) {
    const cv::Mat image = RandomInput(61).Image({21, 14}, 3);
    const ShapeVariantSet set(image);
    EXPECT_THAT(set.src, EqualsMat(image));
    EXPECT_THAT(set.mask, EqualsMat(cv::Mat(14, 21, CV_8U, cv::Scalar(255))));
    EXPECT_EQ(set.angleStep, 15.0f);
    EXPECT_EQ(set.scaleStep, 0.5f);
    EXPECT_EQ(set.eps, 1e-5f);
    EXPECT_THAT(set.angleRange, IsEmpty());
    EXPECT_THAT(set.scaleRange, IsEmpty());
    EXPECT_THAT(set.variants, IsEmpty());
}

TEST(ShapeVariantSet, EmptyRangesStandForTheImageAsItIs) {
    ShapeVariantSet set = SetOf({}, 15.0f, {}, 0.5f);
    EXPECT_THAT(set.angleRange, ElementsAre(0.0f));
    EXPECT_THAT(set.scaleRange, ElementsAre(1.0f));
    EXPECT_THAT(AnglesOf(set), ElementsAre(0.0f));
    EXPECT_THAT(ScalesOf(set), ElementsAre(1.0f));
}

TEST(ShapeVariantSet, EnumeratesAnglesOrScalesUpToTheLast) {
    EXPECT_THAT(AnglesOf(SetOf({10.0f, 40.0f}, 15.0f, {1.5f}, 0.0f)), ElementsAre(10.0f, 25.0f, 40.0f));
    EXPECT_THAT(AnglesOf(SetOf({10.0f, 39.0f}, 15.0f, {1.5f}, 0.0f)), ElementsAre(10.0f, 25.0f));
    EXPECT_THAT(ScalesOf(SetOf({7.0f}, 0.0f, {0.5f, 1.5f}, 0.5f)), ElementsAre(0.5f, 1.0f, 1.5f));
    EXPECT_THAT(AnglesOf(SetOf({7.0f}, 0.0f, {0.5f, 1.5f}, 0.5f)), ElementsAre(7.0f, 7.0f, 7.0f));
    EXPECT_THAT(AnglesOf(SetOf({40.0f, 10.0f}, 15.0f, {1.0f}, 0.0f)), IsEmpty());
}

TEST(ShapeVariantSet, ScaleIsTheOuterLoop) {
    const ShapeVariantSet set = SetOf({0.0f, 30.0f}, 30.0f, {1.0f, 2.0f}, 1.0f);
    EXPECT_THAT(AnglesOf(set), ElementsAre(0.0f, 30.0f, 0.0f, 30.0f));
    EXPECT_THAT(ScalesOf(set), ElementsAre(1.0f, 1.0f, 2.0f, 2.0f));
}

TEST(ShapeVariantSet, RangesOfMoreThanTwoValuesGiveNone) {
    EXPECT_THAT(SetOf({0.0f, 10.0f, 20.0f}, 10.0f, {1.0f}, 0.0f).variants, IsEmpty());
    EXPECT_THAT(SetOf({0.0f}, 10.0f, {1.0f, 2.0f, 3.0f}, 1.0f).variants, IsEmpty());
}

TEST(ShapeVariantSet, AddsTheStepUpInFloat) {
    const std::vector<float> angles = AnglesOf(SetOf({0.0f, 360.0f}, 0.2f, {1.0f}, 0.0f));
    float sum = 0.0f;
    for (const float angle : angles) {
        ASSERT_EQ(angle, sum);
        sum += 0.2f;
    }
    EXPECT_GT(sum, 360.0f);
    // The sum drifts: the last angle is not 360, and a step counted in whole numbers would give 1801 angles.
    EXPECT_THAT(angles, SizeIs(1800));
    EXPECT_EQ(angles.back(), 359.803558f);
}

TEST(ShapeVariantSet, TheLastValueMayBeExceededByEps) {
    ShapeVariantSet set(cv::Mat(5, 5, CV_8UC3, cv::Scalar(0, 0, 0)));
    set.angleRange = {0.0f, 1.0f};
    set.angleStep = 1.000005f;
    set.Produce(target);
    EXPECT_THAT(set.variants, SizeIs(2));
    set.eps = 0.0f;
    set.Produce(target);
    EXPECT_THAT(set.variants, SizeIs(1));
}

TEST(ShapeVariantSet, EveryVariantHasTheLargestOutlineAndTheTarget) {
    cv::Mat mask = cv::Mat::zeros(30, 41, CV_8U);
    mask(cv::Rect(2, 2, 6, 6)).setTo(255);
    mask(cv::Rect(15, 5, 20, 10)).setTo(255);
    mask(cv::Rect(15, 20, 8, 8)).setTo(255);
    ShapeVariantSet set(cv::Mat(30, 41, CV_8UC3), mask);
    set.angleRange = {0.0f, 20.0f};
    set.angleStep = 10.0f;
    set.Produce(target);
    ASSERT_THAT(set.variants, SizeIs(3));
    for (const ShapeVariant& variant : set.variants) {
        EXPECT_EQ(cv::boundingRect(variant.contour), cv::Rect(15, 5, 20, 10));
        EXPECT_EQ(variant.targetOffset, target);
        EXPECT_EQ(variant.imageCentre, cv::Point2f(20.5f, 15.0f));
    }
}

TEST(ShapeVariantSet, OfEqualOutlinesTheFirstListedCountsAndPointsHaveNoArea) {
    cv::Mat mask = cv::Mat::zeros(30, 41, CV_8U);
    mask.at<uchar>(3, 4) = 255;
    mask.at<uchar>(20, 30) = 255;
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(mask, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
    ShapeVariantSet set(cv::Mat(30, 41, CV_8UC3), mask);
    set.Produce(target);
    EXPECT_EQ(set.variants.at(0).contour, contours.at(0));
}

TEST(ShapeVariantSet, WithoutAnOutlineVariantsLieNowhere) {
    ShapeVariantSet set(cv::Mat(30, 41, CV_8UC3), cv::Mat::zeros(30, 41, CV_8U));
    set.Produce(target);
    ASSERT_THAT(set.variants, SizeIs(1));
    EXPECT_THAT(set.variants[0].contour, IsEmpty());
    EXPECT_EQ(set.variants[0].targetOffset, cv::Point2f(-1.0f, -1.0f));
    EXPECT_EQ(set.variants[0].imageCentre, cv::Point2f(-1.0f, -1.0f));
}

TEST(ShapeVariantSet, ProducingAgainReplaces) {
    ShapeVariantSet set = SetOf({0.0f, 30.0f}, 15.0f, {}, 0.0f);
    EXPECT_THAT(set.variants, SizeIs(3));
    set.angleStep = 30.0f;
    set.Produce({9.0f, 9.0f});
    EXPECT_THAT(set.variants, SizeIs(2));
    EXPECT_EQ(set.variants[1].targetOffset, cv::Point2f(9.0f, 9.0f));
}

TEST(RotateImage, OfNothingIsNothing) { EXPECT_TRUE(ShapeVariantSet::RotateImage(cv::Mat(), 30.0f, 1.0f).empty()); }

TEST(RotateImage, TurnsAboutTheMiddleInAFrameOfTheSameSize) {
    RandomInput random(62);
    for (int i = 0; i < 20; ++i) {
        const cv::Mat image = random.Image({random.Integer(1, 40), random.Integer(1, 40)}, i % 2 == 0 ? 3 : 1);
        const auto angle = static_cast<float>(random.Real(-400.0, 400.0));
        const auto scale = static_cast<float>(random.Real(0.3, 2.0));
        const cv::Point2f middle(static_cast<float>(image.cols) / 2.0f, static_cast<float>(image.rows) / 2.0f);
        cv::Mat expected;
        cv::warpAffine(image, expected, cv::getRotationMatrix2D(middle, angle, scale), image.size(), cv::INTER_LINEAR,
                       cv::BORDER_CONSTANT, cv::Scalar());
        EXPECT_THAT(ShapeVariantSet::RotateImage(image, angle, scale), EqualsMat(expected));
    }
}

TEST(RotateImage, LosesCornersAndFillsUpWithZero) {
    const cv::Mat image(10, 30, CV_8U, cv::Scalar(200));
    const cv::Mat turned = ShapeVariantSet::RotateImage(image, 90.0f, 1.0f);
    EXPECT_EQ(turned.size(), image.size());
    EXPECT_EQ(turned.at<uchar>(5, 0), 0);
    EXPECT_EQ(turned.at<uchar>(5, 15), 200);
}

TEST(RotateImage, WithoutATurnIsTheImageAsTheInterpolationGivesIt) {
    RandomInput random(63);
    for (int i = 0; i < 40; ++i) {
        const cv::Mat image = random.Image({random.Integer(1, 70), random.Integer(1, 70)}, i % 5 + 1);
        const cv::Point2f middle(static_cast<float>(image.cols) / 2.0f, static_cast<float>(image.rows) / 2.0f);
        cv::Mat expected;
        cv::warpAffine(image, expected, cv::getRotationMatrix2D(middle, 0.0, 1.0), image.size(), cv::INTER_LINEAR,
                       cv::BORDER_CONSTANT, cv::Scalar());
        const cv::Mat turned = ShapeVariantSet::RotateImage(image, 0.0f, 1.0f);
        EXPECT_THAT(turned, EqualsMat(expected));
        EXPECT_THAT(turned, EqualsMat(image));
        EXPECT_NE(turned.data, image.data);
    }
}

TEST(RotateImage, WithoutATurnRefusesWhatATurnRefuses) {
    const cv::Mat image(9, 12, CV_32SC1, cv::Scalar(3));
    EXPECT_THROW(ShapeVariantSet::RotateImage(image, 30.0f, 1.0f), cv::Exception);
    EXPECT_THROW(ShapeVariantSet::RotateImage(image, 0.0f, 1.0f), cv::Exception);
}

TEST(ShapeVariantSet, ARangeOfImpossibleSizeEndsWhateverTheOthersStepIs) {
    EXPECT_THAT(SetOf({0.0f, 360.0f}, 0.0f, {1.0f, 2.0f, 3.0f}, 1.0f).variants, IsEmpty());
    EXPECT_THAT(SetOf({0.0f, 10.0f, 20.0f}, 10.0f, {1.0f, 2.0f}, 0.0f).variants, IsEmpty());
    // No scale, so that the loop of the angles is never entered.
    EXPECT_THAT(SetOf({0.0f, 360.0f}, 0.0f, {2.0f, 1.0f}, 0.5f).variants, IsEmpty());
}

TEST(ShapeVariantSet, ForgetsItsVariantsBeforeAMaskCanBeRefused) {
    ShapeVariantSet set = SetOf({0.0f, 10.0f}, 10.0f, {}, 0.5f);
    ASSERT_THAT(set.variants, SizeIs(2));
    set.mask = cv::Mat(14, 21, CV_32F, cv::Scalar(1));
    EXPECT_THROW(set.Produce(target), cv::Exception);
    EXPECT_THAT(set.variants, IsEmpty());
}
}  // namespace
}  // namespace Quorvane
