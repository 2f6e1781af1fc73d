#include "geometry/EdgeProfile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>

namespace Quorvane {

using testing::SizeIs;
using UtilityFunctions::DerivativeKernel;
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

}  // namespace
}  // namespace Quorvane
