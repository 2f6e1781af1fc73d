#include "framework/AlgorithmFactory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <utility>

namespace Quorvane {

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

TEST(AlgorithmFactory, ListsTheNamesInTheirOrderOnEveryCall) {
    AlgorithmFactory factory;
    for (int i = 0; i < 2; ++i) {
        EXPECT_THAT(factory.GetAlgorithmList(),
                    ElementsAre("BinaryForLaserMachine", "IntelligentFilling", "FindMarkPoint"));
    }
}

TEST(AlgorithmFactory, MakesANewObjectOnEveryCall) {
    AlgorithmFactory factory;
    Algorithm* first = factory.CreateAlgorithm("BinaryForLaserMachine");
    Algorithm* second = factory.CreateAlgorithm("BinaryForLaserMachine");
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first, second);
    factory.ReleaseAlgorithm(first);
    factory.ReleaseAlgorithm(second);
}

TEST(AlgorithmFactory, MakesTheAlgorithmOfEachName) {
    AlgorithmFactory factory;
    Algorithm* halftone = factory.CreateAlgorithm("BinaryForLaserMachine");
    Algorithm* marks = factory.CreateAlgorithm("FindMarkPoint");
    Algorithm* filling = factory.CreateAlgorithm("IntelligentFilling");
    ASSERT_NE(halftone, nullptr);
    ASSERT_NE(marks, nullptr);
    ASSERT_NE(filling, nullptr);
    EXPECT_EQ(halftone->GetParameterToInt("MaskSize"), 5);
    EXPECT_EQ(marks->GetParameterToString("MarkPointType"), "Circle");
    EXPECT_EQ(filling->GetParameterToString("SimilarityMin"), "0.800000");
    factory.ReleaseAlgorithm(halftone);
    factory.ReleaseAlgorithm(marks);
    factory.ReleaseAlgorithm(filling);
}

TEST(AlgorithmFactory, TakesNamesLetterByLetter) {
    AlgorithmFactory factory;
    EXPECT_EQ(factory.CreateAlgorithm("binaryforlasermachine"), nullptr);
    EXPECT_EQ(factory.CreateAlgorithm("findMarkPoint"), nullptr);
    EXPECT_EQ(factory.CreateAlgorithm("FindMarkPoint "), nullptr);
    EXPECT_EQ(factory.CreateAlgorithm(""), nullptr);
    EXPECT_EQ(factory.CreateAlgorithm("BinaryForLaserMachine "), nullptr);
    EXPECT_EQ(factory.CreateAlgorithm(std::string("BinaryForLaserMachine\0", 22)), nullptr);
}

TEST(AlgorithmFactory, IgnoresNullOnRelease) { AlgorithmFactory().ReleaseAlgorithm(nullptr); }

TEST(AlgorithmFactory, AnyFactoryReleasesWhatAnotherMade) {
    Algorithm* algorithm = AlgorithmFactory().CreateAlgorithm("BinaryForLaserMachine");
    ASSERT_NE(algorithm, nullptr);
    EXPECT_EQ(algorithm->GetParameterToInt("HighThreshold"), 240);
    AlgorithmFactory().ReleaseAlgorithm(algorithm);
}

TEST(AlgorithmFactory, AMovedFromFactoryHasNoNamesButCreatesAsBefore) {
    AlgorithmFactory factory;
    AlgorithmFactory taken(std::move(factory));
    EXPECT_THAT(taken.GetAlgorithmList(), testing::SizeIs(3));
    EXPECT_THAT(factory.GetAlgorithmList(), IsEmpty());  // NOLINT(bugprone-use-after-move)
    Algorithm* algorithm = factory.CreateAlgorithm("BinaryForLaserMachine");
    EXPECT_NE(algorithm, nullptr);
    factory.ReleaseAlgorithm(algorithm);

    AlgorithmFactory target;
    target = std::move(taken);
    EXPECT_THAT(target.GetAlgorithmList(), testing::SizeIs(3));
    EXPECT_THAT(taken.GetAlgorithmList(), IsEmpty());  // NOLINT(bugprone-use-after-move)
}

TEST(AlgorithmFactory, CopiesHaveTheNames) {
    AlgorithmFactory factory;
    AlgorithmFactory copy(factory);
    AlgorithmFactory assigned;
    assigned = copy;
    EXPECT_EQ(copy.GetAlgorithmList(), factory.GetAlgorithmList());
    EXPECT_EQ(assigned.GetAlgorithmList(), factory.GetAlgorithmList());
}

}  // namespace
}  // namespace Quorvane
