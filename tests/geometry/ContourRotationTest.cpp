#include "geometry/ContourRotation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <opencv2/core.hpp>

#include "tests/support/CapturedStream.h"
#include "tests/support/PointLists.h"
#include "tests/support/RandomInput.h"

namespace Quorvane::UtilityFunctions {

using TestSupport::CapturedStream;
using TestSupport::RandomInput;
using TestSupport::Turned;

namespace {

/// While this object lives, OpenCV has no memory for matrices.
class NoMatrices : public cv::MatAllocator {
public:
    NoMatrices() { cv::Mat::setDefaultAllocator(this); }
    ~NoMatrices() override { cv::Mat::setDefaultAllocator(former_); }
    NoMatrices(const NoMatrices&) = delete;
    NoMatrices& operator=(const NoMatrices&) = delete;

    cv::UMatData* allocate(int, const int*, int, void*, std::size_t*, cv::AccessFlag,
                           cv::UMatUsageFlags) const override {
        throw cv::Exception(cv::Error::StsNoMem, "no memory for matrices", "allocate", "", 0);
    }
    bool allocate(cv::UMatData*, cv::AccessFlag, cv::UMatUsageFlags) const override { return false; }
    void deallocate(cv::UMatData*) const override {}

private:
    cv::MatAllocator* former_ = cv::Mat::getDefaultAllocator();
};

using Points = std::vector<cv::Point2f>;

double RotationAboutCentroids(const Points& source, const Points& target) {
    return CalculateContourRotation(source, target, pointCentroid(source), pointCentroid(target));
}

/// Three points and more, from the definition.
double PlainRotation(const Points& source, const Points& target, const cv::Point2f& c1, const cv::Point2f& c2) {
    const int n = static_cast<int>(source.size());
    cv::Mat_<float> a = cv::Mat_<float>::zeros(2 * n, 2);
    cv::Mat_<float> b = cv::Mat_<float>::zeros(2 * n, 2);
    const auto fill = [n](cv::Mat_<float>& rows, const Points& points, const cv::Point2f& center) {
        for (int i = 0; i < 2 * n; ++i) {
            if (i == n - 1) continue;
            const auto at = static_cast<std::size_t>(i < n ? i : i - n);
            rows(i, 0) = points[at].x - (i < n ? points[at + 1].x : center.x);
            rows(i, 1) = points[at].y - (i < n ? points[at + 1].y : center.y);
        }
    };
    fill(a, source, c1);
    fill(b, target, c2);
    const cv::Mat h = a.t() * b;
    cv::Mat w;
    cv::Mat u;
    cv::Mat vt;
    cv::SVD::compute(h, w, u, vt, 0);
    const cv::Mat_<float> r = vt.t() * u.t();
    return -std::atan2(r(1, 0), r(0, 0)) * 180.0 / CV_PI;
}

TEST(PointCentroid, IsTheMean) { EXPECT_EQ(pointCentroid({{1, 2}, {3, 6}, {5, 1}}), cv::Point2f(3, 3)); }

TEST(PointCentroid, SumsInFloat) {
    // The one is lost beside 2^24.
    EXPECT_EQ(pointCentroid({{16777216.0f, 0}, {1, 0}}), cv::Point2f(8388608.0f, 0));
}

TEST(PointCentroid, OfNothingIsNotANumber) {
    const cv::Point2f centroid = pointCentroid({});
    EXPECT_TRUE(std::isnan(centroid.x) && std::isnan(centroid.y));
}

TEST(SignedVectorAngle, IsPositiveFromXTowardsY) {
    EXPECT_EQ(signedVectorAngle(1, 0, 0, 1), 90.0);
    EXPECT_EQ(signedVectorAngle(0, 1, 1, 0), -90.0);
    EXPECT_EQ(signedVectorAngle(2, 0, -3, 0), 180.0);
    EXPECT_EQ(signedVectorAngle(2, 0, 5, 0), 0.0);
}

TEST(SignedVectorAngle, IsNarrowedToFloat) {
    const double angle = signedVectorAngle(1.0, 0.0, 2.0, 1.0);
    EXPECT_EQ(angle, static_cast<double>(static_cast<float>(angle)));
    EXPECT_NEAR(angle, 26.565051, 1e-5);
}

TEST(SignedVectorAngle, ReadsItsSignFromAProductNarrowedToFloat) {
    // The product is -1e-60, which no float tells from zero.
    EXPECT_EQ(signedVectorAngle(1e-30, 0, 0, -1e-30), 90.0);
    EXPECT_EQ(signedVectorAngle(1e-20, 0, 0, -1e-20), -90.0);
}

TEST(SignedVectorAngle, OfAVectorWithoutLengthIsNotANumber) {
    EXPECT_TRUE(std::isnan(signedVectorAngle(0, 0, 1, 0)));
    EXPECT_TRUE(std::isnan(signedVectorAngle(1, 0, 0, 0)));
}

TEST(SignedVectorAngle, HasNoGuardAgainstACosineAboveOne) {
    // Parallel vectors of which rounding lifts some cosines above 1: those have no angle, the others 0.
    RandomInput random(50);
    int notANumber = 0;
    for (int i = 0; i < 1000; ++i) {
        const double x = random.Real(0.1, 9.0);
        const double y = random.Real(0.1, 9.0);
        const double cosine = (x * x + y * y) / std::sqrt(x * x + y * y) / std::sqrt(x * x + y * y);
        const double angle = signedVectorAngle(x, y, x, y);
        EXPECT_EQ(std::isnan(angle), cosine > 1.0) << x << ", " << y;
        notANumber += std::isnan(angle) ? 1 : 0;
    }
    EXPECT_GT(notANumber, 0);
}

TEST(CalculateContourRotation, OfTwoPointsFollowsTheTurn) {
    const Points source{{0, 0}, {10, 0}};
    EXPECT_EQ(RotationAboutCentroids(source, {{0, 0}, {0, 10}}), 90.0);
}

TEST(CalculateContourRotation, OfThreePointsRunsAgainstTheTurn) {
    const Points source{{0, 0}, {10, 0}, {10, 5}};
    EXPECT_NEAR(RotationAboutCentroids(source, {{0, 0}, {0, 10}, {-5, 10}}), -90.0, 1e-4);
}

TEST(CalculateContourRotation, HasOppositeSignsForTwoAndForMorePoints) {
    const Points three{{0, 0}, {10, 2}, {13, 9}};
    const Points two{{0, 0}, {10, 2}};
    for (const double degrees : {-170.0, -30.0, 0.5, 12.0, 100.0}) {
        EXPECT_NEAR(RotationAboutCentroids(two, Turned(two, degrees)), degrees, 1e-3);
        EXPECT_NEAR(RotationAboutCentroids(three, Turned(three, degrees)), -degrees, 1e-3);
    }
}

TEST(CalculateContourRotation, HoldsForRandomChains) {
    RandomInput random(51);
    for (int i = 0; i < 200; ++i) {
        Points source;
        for (int n = random.Integer(3, 60); n > 0; --n) {
            source.emplace_back(static_cast<float>(random.Real(-300, 300)), static_cast<float>(random.Real(-300, 300)));
        }
        const double degrees = random.Real(-179.0, 179.0);
        ASSERT_NEAR(RotationAboutCentroids(source, Turned(source, degrees)), -degrees, 1e-2) << "chain " << i;
    }
}

TEST(CalculateContourRotation, EqualsThePlainRotation) {
    RandomInput random(52);
    const auto randomPoints = [&](int count, double height) {
        Points points;
        for (; count > 0; --count) {
            points.emplace_back(static_cast<float>(random.Real(-300, 300)),
                                static_cast<float>(height * random.Real(-1, 1)));
        }
        return points;
    };
    for (int i = 0; i < 500; ++i) {
        // Every third pair lies on a line, where the singular values leave the second axis open; no pair matches.
        const int count = random.Integer(3, 40);
        const double height = i % 3 == 0 ? 0.0 : 300.0;
        const Points source = randomPoints(count, height);
        const Points target = randomPoints(count, height);
        const cv::Point2f c1 = pointCentroid(source);
        const cv::Point2f c2 = pointCentroid(target);
        ASSERT_EQ(CalculateContourRotation(source, target, c1, c2), PlainRotation(source, target, c1, c2))
            << "pair " << i;
    }
    const Points onePlace(4, cv::Point2f(7, 9));
    EXPECT_EQ(RotationAboutCentroids(onePlace, onePlace), PlainRotation(onePlace, onePlace, {7, 9}, {7, 9}));
}

TEST(CalculateContourRotation, TakesPointsThatAreNoNumbers) {
    const float notANumber = std::numeric_limits<float>::quiet_NaN();
    const Points three{{0, 0}, {10, 0}, {10, 5}};
    const Points broken{{0, 0}, {notANumber, 0}, {10, 5}};
    EXPECT_FALSE(std::abs(RotationAboutCentroids(three, broken)) > 180.0);
    EXPECT_TRUE(std::isnan(RotationAboutCentroids({{0, 0}, {1, 1}}, {{0, 0}, {notANumber, 1}})));
}

TEST(CalculateContourRotation, OfTwoPointsInOnePlaceIsNotANumber) {
    EXPECT_TRUE(std::isnan(RotationAboutCentroids({{3, 4}, {3, 4}}, {{0, 0}, {1, 0}})));
    EXPECT_TRUE(std::isnan(RotationAboutCentroids({{0, 0}, {1, 0}}, {{3, 4}, {3, 4}})));
}

TEST(CalculateContourRotation, CountsTheChainAndTheSpokes) {
    // The spokes alone, about the first point, would give no turn for these: a chain that folds differently does.
    const Points source{{0, 0}, {10, 0}, {0, 4}};
    const Points target{{0, 0}, {10, 0}, {4, 4}};
    // Edges and spokes by hand: H = A' * B, and the angle of the best rotation is atan2(H12 - H21, H11 + H22).
    cv::Mat_<double> a = (cv::Mat_<double>(5, 2) << -10, 0, 10, -4, 0, 0, 10, 0, 0, 4);
    cv::Mat_<double> b = (cv::Mat_<double>(5, 2) << -10, 0, 6, -4, 0, 0, 10, 0, 4, 4);
    const cv::Mat_<double> h = a.t() * b;
    const double expected = -std::atan2(h(0, 1) - h(1, 0), h(0, 0) + h(1, 1)) * 180.0 / CV_PI;
    EXPECT_NEAR(CalculateContourRotation(source, target, source[0], target[0]), expected, 1e-4);
    EXPECT_GT(std::abs(expected), 1.0);
}

TEST(CalculateContourRotation, OfListsThatDoNotMatchIsZero) {
    const Points three{{0, 0}, {10, 0}, {10, 5}};
    EXPECT_EQ(CalculateContourRotation(three, {{0, 0}, {0, 10}}, {0, 0}, {0, 0}), 0.0);
    EXPECT_EQ(CalculateContourRotation({}, {}, {0, 0}, {0, 0}), 0.0);
    EXPECT_EQ(CalculateContourRotation({{1, 2}}, {{5, 6}}, {0, 0}, {0, 0}), 0.0);
    EXPECT_EQ(CalculateContourRotation({}, three, {0, 0}, {0, 0}), 0.0);
}

TEST(CalculateContourRotation, IsZeroWithoutAWordWhereOpenCVFails) {
    const Points three{{0, 0}, {10, 0}, {10, 5}};
    const Points two{{0, 0}, {10, 0}};
    const CapturedStream errors(std::cerr);
    const CapturedStream output(std::cout);
    const NoMatrices noMatrices;
    EXPECT_THROW(cv::Mat(3, 3, CV_32F), cv::Exception);
    EXPECT_EQ(RotationAboutCentroids(three, Turned(three, 30.0)), 0.0);
    EXPECT_NEAR(RotationAboutCentroids(two, Turned(two, 30.0)), 30.0, 1e-4) << "two points need no matrix";
    EXPECT_EQ(errors.Text(), "");
    EXPECT_EQ(output.Text(), "");
}

TEST(CalculateContourRotation, OfAMirroredListGivesSomeAngle) {
    // Nothing looks at the determinant: the matrix of a mirrored list is a reflection, and its first column's angle is
    // the result.
    const Points source{{0, 0}, {10, 0}, {10, 5}};
    const double angle = RotationAboutCentroids(source, {{0, 0}, {10, 0}, {10, -5}});
    EXPECT_TRUE(std::isfinite(angle));
    EXPECT_NEAR(std::abs(angle), 0.0, 1e-3);
}

}  // namespace
}  // namespace Quorvane::UtilityFunctions
