// Which of the displacements between two cameras' pictures survive.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <opencv2/core.hpp>

#include "calibration/CameraCalibration.h"
#include "calibration/DualCameraMatching.h"
#include "calibration/LastError.h"
#include "tests/support/RandomInput.h"

namespace Quorvane::CameraCalibration {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using namespace TestSupport;

namespace {

const char* const untouched = "left from before";
const float notANumber = std::numeric_limits<float>::quiet_NaN();

std::vector<int> Cluster(const std::vector<cv::Point2f>& vectors, int clusterCount, int seed = 1) {
    SetLastError(untouched);
    cv::setRNGSeed(seed);
    return kMeansCluster(vectors, clusterCount);
}

TEST(KMeansCluster, PartsTwoHeaps) {
    const std::vector<cv::Point2f> vectors{{0, 0}, {50, 0}, {1, 0}, {51, 1}, {0, 2}};
    for (int seed = 1; seed <= 20; ++seed) {
        const std::vector<int> labels = Cluster(vectors, 2, seed);
        ASSERT_EQ(labels.size(), 5u);
        EXPECT_THAT(labels, ElementsAre(labels[0], 1 - labels[0], labels[0], 1 - labels[0], labels[0]));
    }
    EXPECT_EQ(GetLastError(), untouched);
}

TEST(KMeansCluster, IsOpenCVsClusteringWithThreeAttempts) {
    RandomInput random(9);
    for (int i = 0; i < 30; ++i) {
        std::vector<cv::Point2f> vectors;
        for (int j = 0; j < 60; ++j) {
            vectors.emplace_back(static_cast<float>(random.Real(-40.0, 40.0)),
                                 static_cast<float>(random.Real(-40.0, 40.0)));
        }
        const int clusters = random.Integer(2, 5);
        cv::setRNGSeed(i);
        std::vector<int> expected;
        cv::kmeans(vectors, clusters, expected, cv::TermCriteria(3, 100, 1.0), 3, cv::KMEANS_PP_CENTERS);
        EXPECT_EQ(Cluster(vectors, clusters, i), expected);
    }
}

TEST(KMeansCluster, WantsAtLeastAsManyVectorsAsClusters) {
    EXPECT_THAT(Cluster({}, 2), IsEmpty());
    EXPECT_THAT(Cluster({{1, 1}}, 2), IsEmpty());
    EXPECT_EQ(GetLastError(), untouched);
    EXPECT_EQ(Cluster({{1, 1}, {9, 9}}, 2).size(), 2u);
    EXPECT_THAT(Cluster({{1, 1}}, 1), ElementsAre(0));
}

TEST(KMeansCluster, AnExceptionBecomesTheLastErrorAndAnEmptyList) {
    const char* const start = "[Quorvane::CameraCalibration::kMeansCluster]OpenCV(";
    EXPECT_THAT(Cluster({{1, 1}, {2, 2}}, 0), IsEmpty());
    EXPECT_THAT(GetLastError(), StartsWith(start));
    EXPECT_THAT(Cluster({{1, 1}, {2, 2}}, -3), IsEmpty());
    EXPECT_THAT(GetLastError(), StartsWith(start));
    EXPECT_THAT(Cluster({{notANumber, 1}, {2, notANumber}, {3, 3}}, 2), IsEmpty());
    EXPECT_THAT(GetLastError(), StartsWith(start));
}

/// Matches, each with two keypoints of its own, whose displacements to picture 1 are given. The order of the keypoints
/// is not that of the matches.
struct Displaced {
    std::vector<cv::DMatch> matches;
    std::vector<cv::KeyPoint> keypoints1;
    std::vector<cv::KeyPoint> keypoints2;

    explicit Displaced(const std::vector<cv::Point2f>& displacements) {
        const int count = static_cast<int>(displacements.size());
        keypoints1.resize(displacements.size());
        keypoints2.resize(displacements.size());
        for (int i = 0; i < count; ++i) {
            const int train = count - 1 - i;
            const int query = (i + 1) % count;
            const cv::Point2f point2(10.0f * static_cast<float>(i * i), 7.0f * static_cast<float>(i));
            keypoints2[static_cast<std::size_t>(query)].pt = point2;
            keypoints1[static_cast<std::size_t>(train)].pt = point2 + displacements[static_cast<std::size_t>(i)];
            matches.emplace_back(query, train, static_cast<float>(i));
        }
    }

    /// The numbers of the displacements that survive.
    std::vector<int> Survivors(int clusterCount = 2, int seed = 1) const {
        SetLastError(untouched);
        cv::setRNGSeed(seed);
        std::vector<int> numbers;
        for (const cv::DMatch& match :
             FilterMatches_VectorKMeansCluster(matches, keypoints1, keypoints2, clusterCount)) {
            numbers.push_back(static_cast<int>(match.distance));
        }
        return numbers;
    }
};

TEST(FilterMatchesVectorKMeansCluster, KeepsTheLargerClusterInItsOrder) {
    const Displaced displaced({{90, 3}, {10, 0}, {11, 0}, {91, 3}, {10, 1}});
    for (int seed = 1; seed <= 20; ++seed) EXPECT_THAT(displaced.Survivors(2, seed), ElementsAre(1, 2, 4));
    EXPECT_EQ(GetLastError(), untouched);
}

TEST(FilterMatchesVectorKMeansCluster, OfEqualClustersTheOneOfTheFirstMatchWins) {
    const Displaced near({{10, 0}, {90, 0}, {91, 0}, {11, 0}});
    const Displaced far({{90, 0}, {10, 0}, {11, 0}, {91, 0}});
    for (int seed = 1; seed <= 20; ++seed) {
        EXPECT_THAT(near.Survivors(2, seed), ElementsAre(0, 3));
        EXPECT_THAT(far.Survivors(2, seed), ElementsAre(0, 3));
    }
}

TEST(FilterMatchesVectorKMeansCluster, OfFewerMatchesThanClustersNothingSurvives) {
    EXPECT_THAT(Displaced({}).Survivors(), IsEmpty());
    EXPECT_THAT(Displaced({{1, 0}}).Survivors(), IsEmpty());
    EXPECT_EQ(GetLastError(), untouched);
    EXPECT_THAT(Displaced({{1, 0}, {80, 0}}).Survivors(), ElementsAre(0));
    EXPECT_THAT(Displaced({{1, 0}}).Survivors(1), ElementsAre(0));
}

TEST(FilterMatchesVectorKMeansCluster, AnExceptionBecomesTheLastErrorAndAnEmptyList) {
    Displaced stranger({{1, 0}, {2, 0}, {80, 0}});
    stranger.matches[1].trainIdx = 3;
    EXPECT_THAT(stranger.Survivors(), IsEmpty());
    EXPECT_THAT(GetLastError(), StartsWith("[Quorvane::CameraCalibration::FilterMatches_VectorKMeansCluster]OpenCV("));
    stranger.matches[1].trainIdx = 1;
    stranger.matches[2].queryIdx = -1;
    EXPECT_THAT(stranger.Survivors(), IsEmpty());
    EXPECT_THAT(GetLastError(), StartsWith("[Quorvane::CameraCalibration::FilterMatches_VectorKMeansCluster]OpenCV("));
}

TEST(FilterMatchesVectorKMeansCluster, AnExceptionOfTheClusteringKeepsItsOwnText) {
    EXPECT_THAT(Displaced({{notANumber, 0}, {2, notANumber}, {80, 0}}).Survivors(), IsEmpty());
    EXPECT_THAT(GetLastError(), StartsWith("[Quorvane::CameraCalibration::kMeansCluster]OpenCV("));
}

}  // namespace
}  // namespace Quorvane::CameraCalibration
