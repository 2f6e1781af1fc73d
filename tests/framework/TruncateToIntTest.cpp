#include "TruncateToInt.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace Quorvane {
namespace {

constexpr int least = std::numeric_limits<int>::min();

TEST(TruncateToInt, TruncatesTowardZero) {
    EXPECT_EQ(TruncateToInt(2.9), 2);
    EXPECT_EQ(TruncateToInt(-2.9), -2);
    EXPECT_EQ(TruncateToInt(-0.5), 0);
    EXPECT_EQ(TruncateToInt(2.9f), 2);
    EXPECT_EQ(TruncateToInt(2147483520.0f), 2147483520);
}

TEST(TruncateToInt, GivesTheLeastIntForWhatNoIntHolds) {
    EXPECT_EQ(TruncateToInt(2147483647.9), 2147483647);
    EXPECT_EQ(TruncateToInt(2147483648.0), least);
    EXPECT_EQ(TruncateToInt(-2147483648.9), least);
    EXPECT_EQ(TruncateToInt(-2147483649.0), least);
    EXPECT_EQ(TruncateToInt(std::numeric_limits<double>::infinity()), least);
    EXPECT_EQ(TruncateToInt(std::nan("")), least);
    EXPECT_EQ(TruncateToInt(2147483648.0f), least);
    EXPECT_EQ(TruncateToInt(-2147483648.0f), least);
    EXPECT_EQ(TruncateToInt(std::numeric_limits<float>::infinity()), least);
    EXPECT_EQ(TruncateToInt(std::nanf("")), least);
}

}  // namespace
}  // namespace Quorvane
