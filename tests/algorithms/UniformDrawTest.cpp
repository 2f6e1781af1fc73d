#include "algorithms/UniformDraw.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace Quorvane {
namespace {

/// Gives the outputs that it was made with, one after the other.
struct Outputs {
    std::uint32_t operator()() { return values[next++]; }

    std::vector<std::uint32_t> values;
    std::size_t next = 0;
};

TEST(MersenneTwister, GivesTheStandardsTenThousandthOutput) {
    MersenneTwister generator;
    generator.discard(9999);
    EXPECT_EQ(generator(), 4123659995U);
}

TEST(MersenneTwister, GivesTheOutputsOfTheStandardGenerator) {
    for (const std::uint32_t seed : {0U, 1U, 5489U, 123456789U, 4294967295U}) {
        MersenneTwister ours(seed);
        std::mt19937 standard(seed);
        for (int i = 0; i < 2000; ++i) ASSERT_EQ(ours(), standard()) << "seed " << seed << ", output " << i;
    }
}

TEST(DrawUniform, TakesTheFirstOutputAsTheLowerHalf) {
    Outputs low{{1U, 0U}};
    EXPECT_EQ(DrawUniform(low), std::pow(2.0, -64));
    Outputs high{{0U, 1U}};
    EXPECT_EQ(DrawUniform(high), std::pow(2.0, -32));
    Outputs both{{3U, 2147483648U}};
    EXPECT_EQ(DrawUniform(both), (3.0 + 2147483648.0 * std::pow(2.0, 32)) / std::pow(2.0, 64));
}

TEST(DrawUniform, ReachesBothEnds) {
    Outputs least{{0U, 0U}};
    EXPECT_EQ(DrawUniform(least), 0.0);
    Outputs most{{4294967295U, 4294967295U}};
    EXPECT_EQ(DrawUniform(most), 1.0);
}

}  // namespace
}  // namespace Quorvane
