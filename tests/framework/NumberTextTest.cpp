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

}  // namespace
}  // namespace Quorvane
