#include "geometry/Truncation.h"

#include <gtest/gtest.h>

#include <limits>

namespace Quorvane::UtilityFunctions {
namespace {

TEST(TruncateToInt, CutsTowardZeroAndSendsTheRestToTheLeastInt) {
    constexpr int least = std::numeric_limits<int>::min();
    constexpr double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(TruncateToInt(124.998), 124);
    EXPECT_EQ(TruncateToInt(-2.9), -2);
    EXPECT_EQ(TruncateToInt(-0.9), 0);
    EXPECT_EQ(TruncateToInt(2147483647.5), 2147483647);
    EXPECT_EQ(TruncateToInt(-2147483648.5), least);
    EXPECT_EQ(TruncateToInt(2147483520.0f), 2147483520) << "the largest float that an int holds";
    for (const double beyond :
         {2147483648.0, -2147483649.0, 1e300, infinity, -infinity, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(TruncateToInt(beyond), least) << beyond;
    }
}

}  // namespace
}  // namespace Quorvane::UtilityFunctions
