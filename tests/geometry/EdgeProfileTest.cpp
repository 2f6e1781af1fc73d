#include "geometry/EdgeProfile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <numeric>

namespace Quorvane {

using testing::SizeIs;
using UtilityFunctions::AmplitudeScale;
using UtilityFunctions::DerivativeKernel;
using UtilityFunctions::EdgeOffset;
using UtilityFunctions::IsEdge;
using UtilityFunctions::LimitedSigma;
using UtilityFunctions::SampleCount;

namespace {

TEST(SampleCount, IsOneMoreThanTheWholePixels) {
    EXPECT_EQ(SampleCount(2.5), 6);
    EXPECT_EQ(SampleCount(5.0), 11);
    EXPECT_EQ(SampleCount(0.5), 2);
    EXPECT_EQ(SampleCount(0.49), 1);
    EXPECT_EQ(SampleCount(0.0), 1);
    EXPECT_EQ(SampleCount(10.3), 21);
}

TEST(SampleCount, IsZeroOrBelowForLengthsThatCannotBe) {
    EXPECT_LE(SampleCount(-1.0), 0);
    EXPECT_LE(SampleCount(-1e300), 0);
    EXPECT_LE(SampleCount(1e300), 0);
    EXPECT_LE(SampleCount(1073741824.0), 0);
    EXPECT_LE(SampleCount(std::numeric_limits<double>::infinity()), 0);
    EXPECT_LE(SampleCount(std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(LimitedSigma, LetsTheUpperLimitWin) {
    EXPECT_EQ(LimitedSigma(1.0, 20.0), 1.0);
    EXPECT_EQ(LimitedSigma(0.1, 20.0), 0.4);
    EXPECT_EQ(LimitedSigma(50.0, 20.0), 10.0);
    EXPECT_EQ(LimitedSigma(1.0, 0.5), 0.25);
}

TEST(DerivativeKernel, SpansSixSigma) {
    EXPECT_THAT(DerivativeKernel(1.0), SizeIs(7));
    EXPECT_THAT(DerivativeKernel(0.4), SizeIs(3));
    EXPECT_THAT(DerivativeKernel(1.1), SizeIs(7));
    EXPECT_THAT(DerivativeKernel(1.2), SizeIs(9));
}

TEST(DerivativeKernel, RisesThroughItsMiddleAndSumsToOneInAmount) {
    for (const double sigma : {0.4, 1.0, 2.3, 7.0}) {
        const std::vector<double> kernel = DerivativeKernel(sigma);
        double amount = 0.0;
        for (const double element : kernel) amount += std::abs(element);
        EXPECT_NEAR(amount, 1.0, 1e-12);
        EXPECT_NEAR(std::accumulate(kernel.begin(), kernel.end(), 0.0), 0.0, 1e-12);
        EXPECT_EQ(kernel[kernel.size() / 2], 0.0);
        EXPECT_LT(kernel.front(), 0.0);
        EXPECT_GT(kernel.back(), 0.0);
    }
}

TEST(AmplitudeScale, GrowsWithSigma) {
    EXPECT_DOUBLE_EQ(AmplitudeScale(1.0), 2.5066282746310002);
    EXPECT_DOUBLE_EQ(AmplitudeScale(0.4), 1.0026513098524001);
}

using FiveSamples = std::array<double, 5>;

bool IsEdgeInTheMiddle(const FiveSamples& derivative, double threshold = 0.0,
                       EdgePolarity polarity = EdgePolarity::All) {
    return IsEdge(derivative.data() + 2, 1.0, threshold, polarity);
}

TEST(IsEdge, AcceptsPeaksAndValleysOfEitherSign) {
    EXPECT_TRUE(IsEdgeInTheMiddle({1, 2, 3, 2, 1}));
    EXPECT_TRUE(IsEdgeInTheMiddle({3, 2, 1, 2, 3}));
    EXPECT_TRUE(IsEdgeInTheMiddle({-1, -2, -3, -2, -1}));
    EXPECT_TRUE(IsEdgeInTheMiddle({-3, -2, -1, -2, -3}));
    EXPECT_TRUE(IsEdgeInTheMiddle({1, 3, 2, 0, 1})) << "the neighbour of a peak, too";
}

TEST(IsEdge, NeedsTheSlopeToChangeItsSign) {
    EXPECT_FALSE(IsEdgeInTheMiddle({1, 2, 3, 4, 5}));
    EXPECT_FALSE(IsEdgeInTheMiddle({3, 9, 3, 9, 1})) << "a slope of zero has no sign";
    EXPECT_FALSE(IsEdgeInTheMiddle({1, 9, 3, 9, 3}));
    EXPECT_FALSE(IsEdgeInTheMiddle({std::nan(""), 2, 3, 2, 1}));
}

TEST(IsEdge, ComparesTheScaledAmountWithTheThreshold) {
    EXPECT_TRUE(IsEdgeInTheMiddle({1, 2, 3, 2, 1}, 3.0));
    EXPECT_FALSE(IsEdgeInTheMiddle({1, 2, 3, 2, 1}, 3.001));
    EXPECT_TRUE(IsEdgeInTheMiddle({-1, -2, -3, -2, -1}, 3.0));
    EXPECT_FALSE(IsEdgeInTheMiddle({1, 2, 3, 2, 1}, std::nan("")));
    const FiveSamples d{1, 2, 3, 2, 1};
    EXPECT_TRUE(IsEdge(d.data() + 2, 2.0, 6.0, EdgePolarity::All));
}

TEST(IsEdge, WantsTheSignOfItsPolarity) {
    const FiveSamples rise{1, 2, 3, 2, 1};
    const FiveSamples fall{-1, -2, -3, -2, -1};
    const FiveSamples none{-1, -1, 0, -1, -1};
    EXPECT_TRUE(IsEdgeInTheMiddle(rise, 0.0, EdgePolarity::Positive));
    EXPECT_FALSE(IsEdgeInTheMiddle(rise, 0.0, EdgePolarity::Negative));
    EXPECT_FALSE(IsEdgeInTheMiddle(fall, 0.0, EdgePolarity::Positive));
    EXPECT_TRUE(IsEdgeInTheMiddle(fall, 0.0, EdgePolarity::Negative));
    EXPECT_TRUE(IsEdgeInTheMiddle(none));
    EXPECT_FALSE(IsEdgeInTheMiddle(none, 0.0, EdgePolarity::Positive));
    EXPECT_FALSE(IsEdgeInTheMiddle(none, 0.0, EdgePolarity::Negative));
}

double OffsetOf(const std::array<double, 3>& derivative) { return EdgeOffset(derivative.data() + 1); }

TEST(EdgeOffset, IsTheVertexOfTheParabolaThroughTheAmounts) {
    EXPECT_EQ(OffsetOf({2, 5, 2}), 0.0);
    EXPECT_EQ(OffsetOf({3, 3, 1}), -0.5);
    EXPECT_EQ(OffsetOf({-1, -3, -3}), 0.5);
    EXPECT_EQ(OffsetOf({-1, 3, -3}), 0.5) << "signs do not count";
}

TEST(EdgeOffset, HasNoLimit) { EXPECT_DOUBLE_EQ(OffsetOf({1, 2, 3.0625}), -16.5); }

TEST(EdgeOffset, IsZeroWhereThreeAmountsAreOnALine) {
    EXPECT_EQ(OffsetOf({1, 1, 1}), 0.0);
    EXPECT_EQ(OffsetOf({1, 2, 3}), 0.0);
    EXPECT_EQ(OffsetOf({0, 0, 0.49e-10}), 0.0);
    EXPECT_EQ(OffsetOf({0, 0, 0.51e-10}), -0.5);
}

}  // namespace
}  // namespace Quorvane
