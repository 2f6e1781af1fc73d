#include "framework/AlgorithmParameters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

#include "tests/support/Matchers.h"

namespace Quorvane {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using TestSupport::ExpectThrowWithText;

namespace {

std::vector<std::string> NamesOf(const AlgorithmParameters& parameters) {
    std::vector<std::string> names{"left from before"};
    parameters.GetParamsNameList(names);
    return names;
}

TEST(AlgorithmParameters, BeginEmpty) { EXPECT_THAT(NamesOf(AlgorithmParameters()), IsEmpty()); }

TEST(AlgorithmParameters, KeepEveryKind) {
    AlgorithmParameters parameters;
    parameters.SetParameter("int", 1);
    parameters.SetParameter("float", 1.5f);
    parameters.SetParameter("double", 2.5);
    parameters.SetParameter("text", std::string("t"));
    parameters.SetParameter("ints", std::vector<int>{1});
    parameters.SetParameter("floats", std::vector<float>{1.0f, 2.0f});
    parameters.SetParameter("doubles", std::vector<double>{1.0});
    parameters.SetParameter("texts", std::vector<std::string>{"a"});
    parameters.SetParameter("param", Param(9));
    EXPECT_EQ(parameters.GetParameter("int").ToString(), "1");
    EXPECT_EQ(parameters.GetParameter("float").ToString(), "1.500000");
    EXPECT_EQ(parameters.GetParameter("double").ToString(), "2.500000");
    EXPECT_EQ(parameters.GetParameter("text").ToString(), "t");
    EXPECT_EQ(parameters.GetParameter("ints").ToString(), "[1, ]");
    EXPECT_EQ(parameters.GetParameter("floats").ToString(), "[1.000000, 2.000000, ]");
    EXPECT_EQ(parameters.GetParameter("doubles").ToString(), "[1.000000, ]");
    EXPECT_EQ(parameters.GetParameter("texts").ToString(), "[a, ]");
    EXPECT_EQ(parameters.GetParameter("param").ToString(), "9");
    EXPECT_THAT(NamesOf(parameters),
                UnorderedElementsAre("int", "float", "double", "text", "ints", "floats", "doubles", "texts", "param"));
}

TEST(AlgorithmParameters, ANameHasNoFixedKind) {
    AlgorithmParameters parameters;
    parameters.SetParameter("Radius", 50);
    parameters.SetParameter("Radius", std::string("a"));
    const Param param = parameters.GetParameter("Radius");
    EXPECT_EQ(param.ToString(), "a");
    ExpectThrowWithText<std::invalid_argument>([&] { param.ToInt(); }, "invalid stoi argument");
    EXPECT_THAT(NamesOf(parameters), ElementsAre("Radius"));
}

TEST(AlgorithmParameters, AnUnknownNameIsUnsetAndAddsNothing) {
    const AlgorithmParameters parameters;
    EXPECT_EQ(parameters.GetParameter("none").ToString(), "");
    EXPECT_EQ(parameters.GetParameter("none").ToInt(), 0);
    EXPECT_THAT(NamesOf(parameters), IsEmpty());
}

TEST(AlgorithmParameters, TheEntryIsCopiedOut) {
    AlgorithmParameters parameters;
    parameters.SetParameter("n", 1);
    Param copy = parameters.GetParameter("n");
    copy.Set(2);
    EXPECT_EQ(parameters.GetParameter("n").ToInt(), 1);
}

// The destructor of either object frees the table of both, so these objects live in storage whose destructor does not
// run by itself; the table that the assignment lets go of is freed through a third object that holds it, too.
class SharedParameters : public testing::Test {
protected:
    AlgorithmParameters& first = *new (firstStorage) AlgorithmParameters;
    AlgorithmParameters& second = *new (secondStorage) AlgorithmParameters;

private:
    alignas(AlgorithmParameters) unsigned char firstStorage[sizeof(AlgorithmParameters)];
    alignas(AlgorithmParameters) unsigned char secondStorage[sizeof(AlgorithmParameters)];
};

TEST_F(SharedParameters, AssignmentSharesTheTable) {
    const AlgorithmParameters formerTableOfSecond(second);
    second = first;
    second.SetParameter("n", 4);
    EXPECT_EQ(first.GetParameter("n").ToInt(), 4);
    first.~AlgorithmParameters();
}

}  // namespace
}  // namespace Quorvane
