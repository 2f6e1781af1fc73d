#include "Includes/Similarity.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>

#include "tests/Includes/MatcherMatchers.h"
#include "tests/reference/PlainShapeMatcher.h"
#include "tests/support/Matchers.h"
#include "tests/support/RandomInput.h"

namespace line2Dup {

using Quorvane::TestSupport::EqualsMat;
using Quorvane::TestSupport::ExpectMatcherError;
using Quorvane::TestSupport::RandomInput;
namespace Reference = Quorvane::Reference;

namespace {

ShapeTemplate TemplateOf(int width, int height, std::vector<GradientFeature> features) {
    return {width, height, 0, 0, 0, std::move(features)};
}

ShapeTemplate RandomTemplate(RandomInput& random, int width, int height, int count, int overhang = 0) {
    ShapeTemplate templ = TemplateOf(width, height, {});
    for (int i = 0; i < count; ++i) {
        templ.features.push_back({random.Integer(-overhang, width + overhang),
                                  random.Integer(-overhang, height + overhang), random.Integer(0, 7), 0.0f});
    }
    return templ;
}

std::vector<cv::Mat> RandomMemories(RandomInput& random, cv::Size size, int T) {
    std::vector<cv::Mat> memories;
    for (int label = 0; label < 8; ++label) {
        memories.push_back(random.Image({(size.width / T) * (size.height / T), T * T}, 1, 0, 4));
    }
    return memories;
}

cv::Mat Narrow(const cv::Mat& sums) {
    cv::Mat bytes;
    sums.convertTo(bytes, CV_8U);
    return bytes;
}

TEST(SimilaritySafe, EqualsTheSumPositionByPosition) {
    RandomInput random(320);
    for (int i = 0; i < 300; ++i) {
        const int T = random.Integer(1, 3);
        const cv::Size size(T * random.Integer(1, 40), T * random.Integer(1, 30));
        const auto memories = RandomMemories(random, size, T);
        const ShapeTemplate templ =
            RandomTemplate(random, random.Integer(0, size.width + 3), random.Integer(0, size.height + 3),
                           random.Integer(0, 90), random.Integer(0, 4));
        cv::Mat sums;
        similarity_safe(memories, templ, sums, size, T);
        ASSERT_THAT(sums, EqualsMat(Reference::SimilarityEverywhere(memories, templ, size, T, false))) << i;
    }
}

TEST(SimilarityOfFewFeatures, EqualsTheSumPositionByPosition) {
    RandomInput random(321);
    for (int i = 0; i < 300; ++i) {
        const int T = random.Integer(1, 3);
        const cv::Size size(T * random.Integer(1, 40), T * random.Integer(1, 30));
        const auto memories = RandomMemories(random, size, T);
        const ShapeTemplate templ =
            RandomTemplate(random, random.Integer(0, size.width + 3), random.Integer(0, size.height + 3),
                           random.Integer(0, 63), random.Integer(0, 4));
        cv::Mat sums;
        similarity_64_simd_safe(memories, templ, sums, size, T);
        ASSERT_THAT(sums, EqualsMat(Narrow(Reference::SimilarityEverywhere(memories, templ, size, T, true)))) << i;
    }
}

TEST(SimilarityLocal, EqualsTheSumPositionByPositionInsideAndOutsideTheMaps) {
    RandomInput random(322);
    for (int i = 0; i < 300; ++i) {
        const int T = random.Integer(1, 3);
        const cv::Size size(T * random.Integer(1, 50), T * random.Integer(1, 50));
        const auto memories = RandomMemories(random, size, T);
        const ShapeTemplate templ = RandomTemplate(random, size.width, size.height, random.Integer(0, 63), 3);
        const cv::Point centre(random.Integer(-20, size.width + 20), random.Integer(-20, size.height + 20));
        const cv::Mat expected = Reference::SimilarityAround(memories, templ, size, T, centre);
        cv::Mat sums;
        similarityLocal(memories, templ, sums, size, T, centre);
        ASSERT_THAT(sums, EqualsMat(expected)) << i;
        similarityLocal_64(memories, templ, sums, size, T, centre);
        ASSERT_THAT(sums, EqualsMat(Narrow(expected))) << i;
    }
}

TEST(SimilaritySafe, LeavesFeaturesBeyondTheImageOut) {
    const cv::Size size(32, 16);
    const std::vector<cv::Mat> memories(8, cv::Mat(1, size.area(), CV_8U, cv::Scalar(4)));
    const ShapeTemplate templ =
        TemplateOf(8, 8, {{0, 0, 1, 0.0f}, {32, 0, 1, 0.0f}, {0, 16, 1, 0.0f}, {-1, 3, 1, 0.0f}});
    cv::Mat sums;
    similarity_safe(memories, templ, sums, size, 1);
    EXPECT_EQ(sums.at<ushort>(0, 0), 4);
    double most = 0.0;
    cv::minMaxLoc(sums, nullptr, &most);
    EXPECT_EQ(most, 4.0);
}

TEST(SimilarityOfFewFeatures, HasNoPositionForATemplateThatJustFits) {
    const cv::Size size(32, 16);
    const std::vector<cv::Mat> memories(8, cv::Mat(4, 16 * 8, CV_8U, cv::Scalar(4)));
    const ShapeTemplate templ = TemplateOf(32, 4, {{0, 0, 0, 0.0f}});
    cv::Mat sums;
    similarity_64_simd_safe(memories, templ, sums, size, 2);
    EXPECT_THAT(sums, EqualsMat(cv::Mat(cv::Mat::zeros(8, 16, CV_8U))));
    similarity_safe(memories, templ, sums, size, 2);
    EXPECT_EQ(cv::countNonZero(sums), 6 * 16 + 1);
}

TEST(SimilarityEverywhere, IsZeroForATemplateLargerThanTheImage) {
    const cv::Size size(32, 16);
    const std::vector<cv::Mat> memories(8, cv::Mat(1, size.area(), CV_8U, cv::Scalar(4)));
    cv::Mat sums;
    for (const cv::Size& extent : {cv::Size(33, 4), cv::Size(4, 17)}) {
        const ShapeTemplate templ = TemplateOf(extent.width, extent.height, {{0, 0, 0, 0.0f}});
        similarity_safe(memories, templ, sums, size, 1);
        EXPECT_THAT(sums, EqualsMat(cv::Mat(cv::Mat::zeros(16, 32, CV_16U))));
        similarity_64_simd_safe(memories, templ, sums, size, 1);
        EXPECT_THAT(sums, EqualsMat(cv::Mat(cv::Mat::zeros(16, 32, CV_8U))));
    }
}

TEST(SimilaritySafe, AddsAShortRowOnlyToTheFirstPositions) {
    // The feature lies in the last row of the image, though the template's box is only one pixel high.
    const cv::Size size(16, 4);
    const std::vector<cv::Mat> memories(8, cv::Mat(1, size.area(), CV_8U, cv::Scalar(3)));
    cv::Mat sums;
    similarity_safe(memories, TemplateOf(1, 1, {{5, 3, 2, 0.0f}}), sums, size, 1);
    EXPECT_EQ(cv::countNonZero(sums), 11);
    EXPECT_EQ(sums.at<ushort>(0, 10), 3);
    EXPECT_EQ(sums.at<ushort>(0, 11), 0);
}

TEST(Similarity, StaysExactAtTheLimitsOfTheFeatureCounts) {
    const cv::Size size(33, 20);
    const std::vector<cv::Mat> memories(8, cv::Mat(1, size.area(), CV_8U, cv::Scalar(4)));
    const std::vector<GradientFeature> many(8191, {1, 1, 3, 0.0f});
    const std::vector<GradientFeature> few(63, {1, 1, 3, 0.0f});
    cv::Mat sums;
    similarity_safe(memories, TemplateOf(2, 2, many), sums, size, 1);
    EXPECT_EQ(sums.at<ushort>(0, 0), 32764);
    EXPECT_EQ(sums.at<ushort>(18, 31), 32764);
    similarityLocal(memories, TemplateOf(2, 2, many), sums, size, 1, {9, 9});
    EXPECT_EQ(sums.at<ushort>(8, 15), 32764);
    similarity_64_simd_safe(memories, TemplateOf(2, 2, few), sums, size, 1);
    EXPECT_EQ(sums.at<uchar>(0, 0), 252);
    similarityLocal_64(memories, TemplateOf(2, 2, few), sums, size, 1, {9, 9});
    EXPECT_EQ(sums.at<uchar>(15, 0), 252);
}

TEST(Similarity, BeyondResponsesSixteensSaturateAndBytesWrap) {
    const cv::Size size(35, 1);
    const std::vector<cv::Mat> memories(8, cv::Mat(1, size.area(), CV_8U, cv::Scalar(255)));
    cv::Mat sums;
    similarity_safe(memories, TemplateOf(1, 1, std::vector<GradientFeature>(200, {0, 0, 0, 0.0f})), sums, size, 1);
    EXPECT_EQ(sums.at<ushort>(0, 31), 32767);
    EXPECT_EQ(sums.at<ushort>(0, 34), 200 * 255);
    const std::vector<cv::Mat> taller(8, cv::Mat(1, size.area() * 2, CV_8U, cv::Scalar(255)));
    similarity_64_simd_safe(taller, TemplateOf(1, 1, std::vector<GradientFeature>(3, {0, 0, 0, 0.0f})), sums, {35, 2},
                            1);
    EXPECT_EQ(sums.at<uchar>(0, 0), (3 * 255) % 256);
}

TEST(Similarity, RaisesForTooManyFeatures) {
    const cv::Size size(16, 16);
    const std::vector<cv::Mat> memories(8, cv::Mat::zeros(1, size.area(), CV_8U));
    const ShapeTemplate few = TemplateOf(1, 1, std::vector<GradientFeature>(64));
    const ShapeTemplate many = TemplateOf(1, 1, std::vector<GradientFeature>(8192));
    cv::Mat sums;
    ExpectMatcherError([&] { similarity_64_simd_safe(memories, few, sums, size, 1); }, cv::Error::StsAssert,
                       "templ.features.size() < 64", "line2Dup::similarity_64_simd_safe");
    ExpectMatcherError(
        [&] {
            similarityLocal_64(memories, few, sums, size, 1, {0, 0});
        },
        cv::Error::StsAssert, "templ.features.size() < 64", "line2Dup::similarityLocal_64");
    ExpectMatcherError([&] { similarity_safe(memories, many, sums, size, 1); }, cv::Error::StsAssert,
                       "templ.features.size() < 8192", "line2Dup::similarity_safe");
    ExpectMatcherError(
        [&] {
            similarityLocal(memories, many, sums, size, 1, {0, 0});
        },
        cv::Error::StsAssert, "templ.features.size() < 8192", "line2Dup::similarityLocal");
}

}  // namespace
}  // namespace line2Dup
