#include "Includes/Suppression.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <opencv2/core.hpp>

#include "tests/support/RandomInput.h"

namespace Quorvane {

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

TEST(BoxOverlap, IsIntersectionOverUnion) {
    EXPECT_FLOAT_EQ(BoxOverlap({0, 0, 10, 10}, {5, 0, 10, 10}), 50.0f / 150.0f);
    EXPECT_EQ(BoxOverlap({0, 0, 10, 10}, {0, 0, 10, 10}), 1.0f);
    EXPECT_EQ(BoxOverlap({0, 0, 10, 10}, {10, 0, 10, 10}), 0.0f);
    EXPECT_EQ(BoxOverlap({0, 0, 10, 10}, {3, 3, 0, 0}), 0.0f);
}

TEST(BoxOverlap, OfTwoEmptyBoxesIsOne) {
    EXPECT_EQ(BoxOverlap({0, 0, 0, 0}, {50, 60, 0, 0}), 1.0f);
    EXPECT_EQ(BoxOverlap({1, 2, 7, 0}, {3, 4, 0, 9}), 1.0f);
}

TEST(BoxOverlap, RoundsTheComplementBeforeTheResult) {
    TestSupport::RandomInput random(60);
    for (int i = 0; i < 500; ++i) {
        const cv::Rect a(random.Integer(-40, 40), random.Integer(-40, 40), random.Integer(0, 60),
                         random.Integer(0, 60));
        const cv::Rect b(random.Integer(-40, 40), random.Integer(-40, 40), random.Integer(0, 60),
                         random.Integer(0, 60));
        const int sum = a.area() + b.area();
        const double common = (a & b).area();
        const float expected = sum > 0 ? static_cast<float>(1.0 - (1.0 - common / (sum - common))) : 1.0f;
        EXPECT_EQ(BoxOverlap(a, b), expected) << a << ' ' << b;
    }
}

TEST(BoxOverlap, TakesBoxesWhoseAreasOutgrowAnInt) {
    EXPECT_FLOAT_EQ(BoxOverlap({0, 0, 60000, 60000}, {0, 0, 60000, 30000}), 0.5f);
}

/// Boxes ten pixels wide whose left edges are given; a shift of d leaves an overlap of (10 - d) / (10 + d).
std::vector<cv::Rect> RowOfBoxes(const std::vector<int>& lefts) {
    std::vector<cv::Rect> boxes;
    for (const int left : lefts) boxes.emplace_back(left, 0, 10, 10);
    return boxes;
}

std::vector<int> Suppressed(const std::vector<int>& lefts, const std::vector<float>& scores, float scoreThreshold,
                            float threshold, float eta = 1.0f, int topK = 0) {
    std::vector<int> indices{77};
    cv_dnn::NMSFast_(RowOfBoxes(lefts), scores, scoreThreshold, threshold, eta, topK, indices, BoxOverlap);
    return indices;
}

TEST(NMSFast_, KeepsTheBestOfOverlappingBoxesBestFirst) {
    EXPECT_THAT(Suppressed({0, 1, 50, 51}, {70.0f, 80.0f, 95.0f, 60.0f}, 0.0f, 0.4f), ElementsAre(2, 1));
}

TEST(NMSFast_, AnOverlapOfExactlyTheThresholdStays) {
    const float limit = BoxOverlap({0, 0, 10, 10}, {5, 0, 10, 10});
    EXPECT_THAT(Suppressed({0, 5}, {2.0f, 1.0f}, 0.0f, limit), ElementsAre(0, 1));
    EXPECT_THAT(Suppressed({0, 5}, {2.0f, 1.0f}, 0.0f, std::nextafter(limit, 0.0f)), ElementsAre(0));
}

TEST(NMSFast_, OfEqualScoresTheFirstStays) {
    EXPECT_THAT(Suppressed({0, 1, 2}, {50.0f, 50.0f, 50.0f}, 0.0f, 0.4f), ElementsAre(0));
    EXPECT_THAT(Suppressed({0, 30, 60}, {50.0f, 60.0f, 50.0f}, 0.0f, 0.4f), ElementsAre(1, 0, 2));
}

TEST(NMSFast_, ScoresMustBeAboveTheThreshold) {
    EXPECT_THAT(Suppressed({0, 30, 60}, {50.0f, 50.1f, 49.9f}, 50.0f, 0.4f), ElementsAre(1));
    EXPECT_THAT(Suppressed({0, 30}, {0.0f, -1.0f}, 0.0f, 0.4f), IsEmpty());
}

TEST(NMSFast_, ConsidersTheBestFewOnly) {
    EXPECT_THAT(Suppressed({0, 30, 60}, {1.0f, 3.0f, 2.0f}, 0.0f, 0.4f, 1.0f, 2), ElementsAre(1, 2));
    EXPECT_THAT(Suppressed({0, 30, 60}, {1.0f, 3.0f, 2.0f}, 0.0f, 0.4f, 1.0f, 3), ElementsAre(1, 2, 0));
    EXPECT_THAT(Suppressed({0, 30, 60}, {1.0f, 3.0f, 2.0f}, 0.0f, 0.4f, 1.0f, -1), ElementsAre(1, 2, 0));
}

TEST(NMSFast_, AThresholdAboveOneHalfShrinksWithEachBoxThatStays) {
    // Overlaps with the first box: 0.667 for a shift of 2, 0.538 for 3, 0.429 for 4.
    EXPECT_THAT(Suppressed({0, 2, 100}, {3.0f, 2.0f, 1.0f}, 0.0f, 0.8f), ElementsAre(0, 1, 2));
    EXPECT_THAT(Suppressed({0, 2, 100}, {3.0f, 2.0f, 1.0f}, 0.0f, 0.8f, 0.75f), ElementsAre(0, 2));
    // 0.8, then 0.6 after the first box, then 0.45 after the second, and no further.
    EXPECT_THAT(Suppressed({0, 100, 200, 3}, {4.0f, 3.0f, 2.0f, 1.0f}, 0.0f, 0.8f, 0.75f), ElementsAre(0, 1, 2));
    EXPECT_THAT(Suppressed({0, 100, 200, 4}, {4.0f, 3.0f, 2.0f, 1.0f}, 0.0f, 0.8f, 0.75f), ElementsAre(0, 1, 2, 3));
    EXPECT_THAT(Suppressed({0, 100, 4}, {3.0f, 2.0f, 1.0f}, 0.0f, 0.5f, 0.1f), ElementsAre(0, 1, 2));
}

TEST(NMSFast_, OfNoBoxesIsNone) { EXPECT_THAT(Suppressed({}, {}, 0.0f, 0.4f), IsEmpty()); }

TEST(NMSFast_, RefusesListsOfDifferentLengths) {
    try {
        Suppressed({0, 1}, {1.0f}, 0.0f, 0.4f);
        ADD_FAILURE() << "nothing was thrown";
    } catch (const cv::Exception& exception) {
        EXPECT_EQ(exception.code, cv::Error::StsAssert);
        EXPECT_EQ(exception.err, "bboxes.size() == scores.size()");
        EXPECT_EQ(exception.func, "cv_dnn::NMSFast_");
        EXPECT_EQ(exception.file, "Includes\\smartfilling");
    }
}

TEST(NMSFast_, TakesAnyBoxAndOverlap) {
    std::vector<int> indices;
    cv_dnn::NMSFast_(std::vector<double>{1.0, 1.5, 9.0}, {1.0f, 2.0f, 3.0f}, 0.0f, 0.0f, 1.0f, 0, indices,
                     [](double a, double b) { return std::abs(a - b) < 1.0 ? 1.0f : 0.0f; });
    EXPECT_THAT(indices, ElementsAre(2, 1));
}

}  // namespace
}  // namespace Quorvane
