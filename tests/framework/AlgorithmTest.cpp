#include "framework/Algorithm.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <new>
#include <stdexcept>
#include <typeinfo>

#include "tests/support/Matchers.h"

namespace Quorvane {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using TestSupport::ExpectThrowWithText;

namespace {

class NamedAlgorithm : public Algorithm {
public:
    NamedAlgorithm() { results_->SetResult("AlgorithmErrorMsg", ""); }
    int Execute(const cv::Mat&, cv::Mat&) override { return 0; }
    AlgorithmResult& Results() { return *results_; }
};

std::vector<std::string> ParameterNamesOf(const Algorithm& algorithm) {
    std::vector<std::string> names{"left from before"};
    algorithm.GetParameterNameList(names);
    return names;
}

TEST(Algorithm, HasAVirtualTableAndTwoPointers) { EXPECT_EQ(sizeof(NamedAlgorithm), 3 * sizeof(void*)); }

/// Tells where the base keeps its two tables.
class OpenedAlgorithm : public NamedAlgorithm {
public:
    std::ptrdiff_t OffsetOfParameters() const { return reinterpret_cast<const char*>(&parameters_) - Begin(); }
    std::ptrdiff_t OffsetOfResults() const { return reinterpret_cast<const char*>(&results_) - Begin(); }

private:
    const char* Begin() const { return reinterpret_cast<const char*>(this); }
};

TEST(Algorithm, KeepsItsParametersBeforeItsResults) {
    const OpenedAlgorithm algorithm;
    EXPECT_EQ(algorithm.OffsetOfParameters(), static_cast<std::ptrdiff_t>(sizeof(void*)));
    EXPECT_EQ(algorithm.OffsetOfResults(), static_cast<std::ptrdiff_t>(2 * sizeof(void*)));
}

TEST(Algorithm, ForwardsEveryKindOfParameter) {
    NamedAlgorithm algorithm;
    algorithm.SetParameter("int", 7);
    algorithm.SetParameter("float", 2.5f);
    algorithm.SetParameter("double", -2.5);
    algorithm.SetParameter("text", std::string("12.9"));
    algorithm.SetParameter("ints", std::vector<int>{1, 2});
    algorithm.SetParameter("floats", std::vector<float>{0.5f});
    algorithm.SetParameter("doubles", std::vector<double>{0.25});
    algorithm.SetParameter("texts", std::vector<std::string>{"5", "6"});
    EXPECT_EQ(algorithm.GetParameterToInt("int"), 7);
    EXPECT_EQ(algorithm.GetParameterToFloat("float"), 2);
    EXPECT_EQ(algorithm.GetParameterToDouble("double"), -2);
    EXPECT_EQ(algorithm.GetParameterToString("text"), "12.9");
    EXPECT_EQ(algorithm.GetParameterToInt("text"), 12);
    EXPECT_THAT(algorithm.GetParameterToIntVec("ints"), ElementsAre(1, 2));
    EXPECT_THAT(algorithm.GetParameterToFloatVec("floats"), ElementsAre(0.5f));
    EXPECT_THAT(algorithm.GetParameterToDoubleVec("doubles"), ElementsAre(0.25));
    EXPECT_THAT(algorithm.GetParameterToStringVec("texts"), ElementsAre("5", "6"));
    EXPECT_THAT(algorithm.GetParameterToDoubleVec("texts"), ElementsAre(5.0, 6.0));
    EXPECT_THAT(ParameterNamesOf(algorithm),
                UnorderedElementsAre("int", "float", "double", "text", "ints", "floats", "doubles", "texts"));
}

TEST(Algorithm, FloatAndDoubleReadBackAsWholeNumbers) {
    static_assert(std::is_same_v<decltype(std::declval<Algorithm&>().GetParameterToFloat("")), int>);
    static_assert(std::is_same_v<decltype(std::declval<Algorithm&>().GetParameterToDouble("")), int>);
    NamedAlgorithm algorithm;
    algorithm.SetParameter("SimilarityMin", 0.85);
    EXPECT_EQ(algorithm.GetParameterToFloat("SimilarityMin"), 0);
    EXPECT_EQ(algorithm.GetParameterToDouble("SimilarityMin"), 0);
    EXPECT_EQ(algorithm.GetParameterToString("SimilarityMin"), "0.850000");
    algorithm.SetParameter("SimilarityMin", -3.99);
    EXPECT_EQ(algorithm.GetParameterToFloat("SimilarityMin"), -3);
    EXPECT_EQ(algorithm.GetParameterToDouble("SimilarityMin"), -3);
}

TEST(Algorithm, UnknownParametersReadAsNothingAndAreNotAdded) {
    const NamedAlgorithm algorithm;
    EXPECT_EQ(algorithm.GetParameterToInt("none"), 0);
    EXPECT_EQ(algorithm.GetParameterToString("none"), "");
    EXPECT_THAT(algorithm.GetParameterToStringVec("none"), IsEmpty());
    EXPECT_THAT(ParameterNamesOf(algorithm), IsEmpty());
}

TEST(Algorithm, ConversionFailuresReachTheHost) {
    NamedAlgorithm algorithm;
    algorithm.SetParameter("Radius", std::string("wide"));
    ExpectThrowWithText<std::invalid_argument>([&] { algorithm.GetParameterToInt("Radius"); }, "invalid stoi argument");
    ExpectThrowWithText<std::invalid_argument>([&] { algorithm.GetParameterToFloat("Radius"); },
                                               "invalid stof argument");
    ExpectThrowWithText<std::invalid_argument>([&] { algorithm.GetParameterToDouble("Radius"); },
                                               "invalid stod argument");
}

TEST(Algorithm, AResultValueIsTheFirstOfItsList) {
    NamedAlgorithm algorithm;
    algorithm.Results().SetResult("MarkPoint_X", std::vector<std::string>{"1.000000", "2.000000"});
    EXPECT_EQ(algorithm.GetResultValue("MarkPoint_X"), "1.000000");
    EXPECT_THAT(algorithm.GetResultValues("MarkPoint_X"), ElementsAre("1.000000", "2.000000"));
    algorithm.Results().ClearResult("MarkPoint_X");
    EXPECT_EQ(algorithm.GetResultValue("MarkPoint_X"), "");
    EXPECT_EQ(algorithm.GetResultValue("none"), "");
    std::vector<std::string> names;
    algorithm.GetResultNameList(names);
    EXPECT_THAT(names, UnorderedElementsAre("AlgorithmErrorMsg", "MarkPoint_X"));
}

TEST(Algorithm, ErrorMessageIsEmptyUntilThereIsOne) {
    NamedAlgorithm algorithm;
    std::string message = "left from before";
    algorithm.GetErrorMsg(message);
    EXPECT_EQ(message, "");
    algorithm.Results().SetResult("AlgorithmErrorMsg", "no light");
    algorithm.GetErrorMsg(message);
    EXPECT_EQ(message, "no light");
    algorithm.Results().ClearResult();
    algorithm.GetErrorMsg(message);
    EXPECT_EQ(message, "");
}

// Copies share their tables and the first destructor frees them, so one of the two lives in storage whose destructor
// does not run by itself.
TEST(Algorithm, CopyingSharesTheTables) {
    alignas(NamedAlgorithm) unsigned char storage[sizeof(NamedAlgorithm)];
    auto& original = *new (storage) NamedAlgorithm;
    const NamedAlgorithm copy(original);
    original.SetParameter("n", 5);
    EXPECT_EQ(copy.GetParameterToInt("n"), 5);
}

TEST(Algorithm, AssignmentSharesTheTablesAndKeepsTheClass) {
    class OtherAlgorithm : public NamedAlgorithm {
    public:
        int Execute(const cv::Mat&, cv::Mat&) override { return 3; }
    };
    alignas(NamedAlgorithm) unsigned char storage[sizeof(NamedAlgorithm)];
    auto& source = *new (storage) NamedAlgorithm;
    // Assigning does not free the tables of the target: this copy, made before, does it in the end.
    alignas(OtherAlgorithm) unsigned char targetStorage[sizeof(OtherAlgorithm)];
    auto& target = *new (targetStorage) OtherAlgorithm;
    const OtherAlgorithm formerTablesOfTarget(target);
    Algorithm& base = target;
    base = source;
    source.SetParameter("n", 6);
    EXPECT_EQ(target.GetParameterToInt("n"), 6);
    cv::Mat none;
    EXPECT_EQ(base.Execute(none, none), 3);
    base.~Algorithm();
}

}  // namespace
}  // namespace Quorvane
