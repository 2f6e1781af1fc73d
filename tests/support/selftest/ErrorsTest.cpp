#include "tests/support/Errors.h"

#include <gtest/gtest.h>

namespace Quorvane::TestSupport {
namespace {

TEST(Errors, TellMeanWorstAndScatter) {
    Errors errors;
    errors.Add(1.0);
    errors.Add(-3.0);
    EXPECT_EQ(errors.Count(), 2u);
    EXPECT_EQ(errors.Mean(), -1.0);
    EXPECT_EQ(errors.Worst(), 3.0);
    EXPECT_EQ(errors.Scatter(), 2.0);
    EXPECT_EQ(errors.Columns(), " -1.000 | 3.000 | 2.000 |");
}

TEST(Errors, JoinWithOthers) {
    Errors some;
    some.Add(1.0);
    Errors all;
    all.Add(some);
    all.Add(some);
    EXPECT_EQ(all.Count(), 2u);
    EXPECT_EQ(all.Mean(), 1.0);
}

TEST(Errors, SayWhereThereAreNone) { EXPECT_EQ(Errors().Columns(), " none | none | none |"); }

}  // namespace
}  // namespace Quorvane::TestSupport
