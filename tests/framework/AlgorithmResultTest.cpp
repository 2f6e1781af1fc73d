#include "framework/AlgorithmResult.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>

namespace Quorvane {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

std::vector<std::string> NamesOf(const AlgorithmResult& results) {
    std::vector<std::string> names{"left from before"};
    results.GetResultNameList(names);
    return names;
}

TEST(AlgorithmResult, BeginsEmpty) { EXPECT_THAT(NamesOf(AlgorithmResult()), IsEmpty()); }

TEST(AlgorithmResult, AListReplacesATextUnderTheSameName) {
    AlgorithmResult results;
    results.SetResult("n", "one");
    EXPECT_THAT(results.GetResultValues("n"), ElementsAre("one"));
    results.SetResult("n", std::vector<std::string>{"a", "b"});
    EXPECT_THAT(results.GetResultValues("n"), ElementsAre("a", "b"));
    EXPECT_EQ(results.GetResultCount("n"), 2U);
    results.SetResult("n", "two");
    EXPECT_THAT(results.GetResultValues("n"), ElementsAre("two"));
}

TEST(AlgorithmResult, AnEmptyTextIsAListOfOne) {
    AlgorithmResult results;
    results.SetResult("n", "");
    EXPECT_EQ(results.GetResultCount("n"), 1U);
}

TEST(AlgorithmResult, ClearingOneNameLeavesItInTheTable) {
    AlgorithmResult results;
    results.SetResult("a", "1");
    results.SetResult("b", "2");
    results.ClearResult("a");
    EXPECT_EQ(results.GetResultCount("a"), 0U);
    EXPECT_THAT(results.GetResultValues("b"), ElementsAre("2"));
    EXPECT_THAT(NamesOf(results), UnorderedElementsAre("a", "b"));
}

TEST(AlgorithmResult, ClearingAllKeepsEveryName) {
    AlgorithmResult results;
    results.SetResult("a", "1");
    results.SetResult("b", std::vector<std::string>{"2", "3"});
    results.ClearResult();
    EXPECT_THAT(NamesOf(results), UnorderedElementsAre("a", "b"));
    EXPECT_EQ(results.GetResultCount("a"), 0U);
    EXPECT_EQ(results.GetResultCount("b"), 0U);
    EXPECT_THAT(results.GetResultValues("b"), IsEmpty());
}

TEST(AlgorithmResult, UnknownNamesMakeNoEntry) {
    AlgorithmResult results;
    EXPECT_EQ(results.GetResultCount("none"), 0U);
    EXPECT_THAT(results.GetResultValues("none"), IsEmpty());
    results.ClearResult("none");
    EXPECT_THAT(NamesOf(results), IsEmpty());
}

// The destructor of either object frees the table of both, so these objects live in storage whose destructor does not
// run by itself; a third object frees the table that the assignment lets go of.
TEST(AlgorithmResult, AssignmentSharesTheTable) {
    alignas(AlgorithmResult) unsigned char firstStorage[sizeof(AlgorithmResult)];
    alignas(AlgorithmResult) unsigned char secondStorage[sizeof(AlgorithmResult)];
    auto& first = *new (firstStorage) AlgorithmResult;
    auto& second = *new (secondStorage) AlgorithmResult;
    const AlgorithmResult formerTableOfSecond(second);
    second = first;
    second.SetResult("n", "4");
    EXPECT_THAT(first.GetResultValues("n"), ElementsAre("4"));
    first.~AlgorithmResult();
}

}  // namespace
}  // namespace Quorvane
