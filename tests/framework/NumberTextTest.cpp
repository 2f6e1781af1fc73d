#include "framework/NumberText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>

#include "tests/support/RandomInput.h"

namespace Quorvane {
namespace {

TEST(FixedText, IsThePrintfFormat) {
    TestSupport::RandomInput random(1);
    for (int i = 0; i < 1000; ++i) {
        const double value = random.Real(-1.0, 1.0) * std::pow(10.0, random.Integer(-8, 30));
        char expected[400];
        std::snprintf(expected, sizeof expected, "%f", value);
        EXPECT_EQ(FixedText(value), expected);
    }
}

TEST(FixedText, InfinitiesAndNotANumberAreThePlatforms) {
    EXPECT_EQ(FixedText(std::numeric_limits<double>::infinity()), "inf");
    EXPECT_EQ(FixedText(-std::numeric_limits<double>::infinity()), "-inf");
    EXPECT_NE(FixedText(std::nan("")).find("nan"), std::string::npos);
}

TEST(TruncateToInt, GivesTheLeastIntForWhatNoIntHolds) {
    constexpr int least = std::numeric_limits<int>::min();
    EXPECT_EQ(TruncateToInt(2147483647.9), 2147483647);
    EXPECT_EQ(TruncateToInt(2147483648.0), least);
    EXPECT_EQ(TruncateToInt(-2147483648.9), least);
    EXPECT_EQ(TruncateToInt(-2147483649.0), least);
    EXPECT_EQ(TruncateToInt(std::numeric_limits<double>::infinity()), least);
    EXPECT_EQ(TruncateToInt(std::nan("")), least);
    EXPECT_EQ(TruncateToInt(-0.5), 0);
}

}  // namespace
}  // namespace Quorvane
