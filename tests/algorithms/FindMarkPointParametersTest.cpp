#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "algorithms/CircleMarks.h"
#include "framework/NumberText.h"
#include "tests/algorithms/MarkPointFixture.h"
#include "tests/support/MarkPlate.h"
#include "tests/support/Matchers.h"
#include "tests/support/Scene.h"

namespace Quorvane {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using TestSupport::Disc;
using TestSupport::EqualsMat;
using TestSupport::ExpectThrowWithText;
using TestSupport::MarkPlate;
using TestSupport::Scene;

namespace {

constexpr const char* radiusMessage = "[FindMarkPoint] Param(Radius) is invalid!";
constexpr const char* crossMessage = "[FindMarkPoint] Param(iCrossWidth/iCrossHeight) is invalid!";

class FindMarkPointParametersTest : public MarkPointFixture {};

TEST_F(FindMarkPointParametersTest, RefusesARadiusThatIsNotPositiveAndKeepsTheOldResults) {
    const cv::Mat picture = SixMarks();
    SetSearch(24.0, 0.7);
    Run(picture);
    const auto before = Data();
    const auto expectRefused = [&] {
        cv::Mat destination;
        EXPECT_EQ(algorithm->Execute(picture, destination), 3);
        EXPECT_EQ(ErrorMessage(), radiusMessage);
        EXPECT_THAT(destination, EqualsMat(picture));
        EXPECT_EQ(Data(), before);
    };
    for (const int radius : {0, -3}) {
        algorithm->SetParameter("Radius", radius);
        expectRefused();
    }
    algorithm->SetParameter("Radius", std::string("0"));
    expectRefused();
    algorithm->SetParameter("Radius", std::nan(""));
    expectRefused();
}

TEST_F(FindMarkPointParametersTest, AMessageOutlivesALaterSuccess) {
    algorithm->SetParameter("Radius", 0);
    cv::Mat destination;
    EXPECT_EQ(algorithm->Execute(SixMarks(), destination), 3);
    SetSearch(24.0, 0.7);
    Run(SixMarks());
    EXPECT_THAT(Lines(), SizeIs(6));
    EXPECT_EQ(ErrorMessage(), radiusMessage);
    // Only the next failure replaces it.
    EXPECT_EQ(algorithm->Execute(cv::Mat(), destination), 2);
    EXPECT_THAT(algorithm->GetResultValues("AlgorithmErrorMsg"),
                ElementsAre("[FindMarkPoint] SourceImage is invalid!"));
}

TEST_F(FindMarkPointParametersTest, ReadsTheRadiusWithItsFractionAndFromText) {
    const cv::Mat picture = SixMarks();
    SetSearch(24.25, 0.7);
    Run(picture);
    const auto lines = Lines();
    algorithm->SetParameter("Radius", std::string(" 24.25 pixels"));
    Run(picture);
    EXPECT_EQ(Lines(), lines);
}

TEST_F(FindMarkPointParametersTest, ASimilarityAboveOneFindsNothing) {
    for (const double similarityMin : {1.01, 1.5, 3.0, 1e6}) {
        SetSearch(24.0, similarityMin);
        const cv::Mat picture = SixMarks();
        EXPECT_THAT(Run(picture), EqualsMat(picture));
        EXPECT_THAT(Lines(), IsEmpty()) << similarityMin;
        EXPECT_EQ(ErrorMessage(), "");
    }
}

TEST_F(FindMarkPointParametersTest, ASimilarityOfOneLeavesNoToleranceAndFindsNothing) {
    const cv::Mat picture = MarkPlate{{300, 240}, {1, 1}, 30.0}.Render().Gray();
    SetSearch(30.0, 1.0);
    EXPECT_THAT(Run(picture), EqualsMat(picture));
    EXPECT_THAT(Lines(), IsEmpty());
}

TEST_F(FindMarkPointParametersTest, ASimilarityOfZeroTakesRadiiUpToTwiceTheExpectedOne) {
    const cv::Mat picture = Scene({300, 200}, 40.0)
                                .Paint(Disc({91.0, 101.0}, 12.0), 220.0)
                                .Paint(Disc({201.0, 101.0}, 38.0), 220.0)
                                .Colour();
    std::vector<cv::Point2f> centres;
    std::vector<double> radii;
    std::vector<double> similarities;
    FindCircleMarks(picture, 20.0, 20.0, 0.0, centres, radii, similarities);
    ASSERT_THAT(radii, Contains(testing::Gt(36.0)));
    ASSERT_THAT(radii, Contains(testing::Lt(14.0)));
    SetSearch(20.0, 0.0);
    Run(picture);
    Texts expected;
    for (const double radius : radii) expected.push_back(FixedText(radius));
    EXPECT_EQ(algorithm->GetResultValues("MarkPoint_Radius"), expected);
}

TEST_F(FindMarkPointParametersTest, ACrossNeedsWidthAndHeight) {
    const cv::Mat picture = SixMarks();
    SetSearch(24.0, 0.7);
    Run(picture);
    const auto before = Data();
    algorithm->SetParameter("MarkPointType", std::string("Cross"));
    const auto expectRefused = [&] {
        cv::Mat destination;
        EXPECT_EQ(algorithm->Execute(picture, destination), 3);
        EXPECT_EQ(ErrorMessage(), crossMessage);
        EXPECT_THAT(destination, EqualsMat(picture));
        EXPECT_EQ(Data(), before);
    };
    expectRefused();
    algorithm->SetParameter("Width", 5);
    expectRefused();
    algorithm->SetParameter("Height", 0);
    expectRefused();
    algorithm->SetParameter("Height", -7);
    expectRefused();
    algorithm->SetParameter("Width", 0.9);
    algorithm->SetParameter("Height", 7);
    expectRefused();
}

TEST_F(FindMarkPointParametersTest, ReadingACrossAddsNoParameter) {
    algorithm->SetParameter("MarkPointType", std::string("Cross"));
    cv::Mat destination;
    EXPECT_EQ(algorithm->Execute(SixMarks(), destination), 3);
    Texts names;
    algorithm->GetParameterNameList(names);
    EXPECT_THAT(names, SizeIs(4));
}

TEST_F(FindMarkPointParametersTest, ACrossIsNotSearchedFor) {
    const cv::Mat picture = SixMarks();
    SetSearch(24.0, 0.7);
    Run(picture);
    const auto before = Data();
    algorithm->SetParameter("MarkPointType", std::string("Cross"));
    algorithm->SetParameter("Width", 5);
    algorithm->SetParameter("Height", 3);
    algorithm->SetParameter("Radius", 0);  // not read
    const cv::Mat destination = Run(picture);
    EXPECT_THAT(destination, EqualsMat(picture));
    EXPECT_NE(destination.data, picture.data);
    EXPECT_EQ(Data(), before);
    EXPECT_EQ(ErrorMessage(), "");
}

TEST_F(FindMarkPointParametersTest, AnotherTypeDoesNothingButTheCopy) {
    const cv::Mat picture = SixMarks();
    SetSearch(24.0, 0.7);
    Run(picture);
    const auto before = Data();
    algorithm->SetParameter("Radius", 0);  // not read
    for (const char* type : {"circle", "CROSS", "", "Circle "}) {
        algorithm->SetParameter("MarkPointType", std::string(type));
        EXPECT_THAT(Run(picture), EqualsMat(picture)) << type;
        EXPECT_EQ(Data(), before) << type;
        EXPECT_EQ(ErrorMessage(), "") << type;
    }
}

TEST_F(FindMarkPointParametersTest, TextsWithoutNumberReachTheHostAsExceptions) {
    const cv::Mat picture = SixMarks();
    cv::Mat destination;
    const auto run = [&] { algorithm->Execute(picture, destination); };
    algorithm->SetParameter("Radius", std::string("wide"));
    ExpectThrowWithText<std::invalid_argument>(run, "invalid stod argument");
    EXPECT_THAT(destination, EqualsMat(picture));
    algorithm->SetParameter("Radius", 24);
    algorithm->SetParameter("SimilarityMin", std::string("much"));
    ExpectThrowWithText<std::invalid_argument>(run, "invalid stod argument");
    algorithm->SetParameter("SimilarityMin", 0.7);
    algorithm->SetParameter("MarkPointType", std::string("Cross"));
    algorithm->SetParameter("Width", std::string("wide"));
    ExpectThrowWithText<std::invalid_argument>(run, "invalid stoi argument");
    EXPECT_EQ(ErrorMessage(), "");
}

TEST_F(FindMarkPointParametersTest, ReadsTheLeastSimilarityForEveryType) {
    const cv::Mat picture = SixMarks();
    SetSearch(24.0, 0.7);
    Run(picture);
    const auto before = Data();
    algorithm->SetParameter("Width", 5);
    algorithm->SetParameter("Height", 3);
    algorithm->SetParameter("SimilarityMin", std::string("much"));
    for (const char* type : {"Circle", "Cross", "circle"}) {
        SCOPED_TRACE(type);
        algorithm->SetParameter("MarkPointType", std::string(type));
        cv::Mat destination;
        ExpectThrowWithText<std::invalid_argument>([&] { algorithm->Execute(picture, destination); },
                                                   "invalid stod argument");
        EXPECT_THAT(destination, EqualsMat(picture));
        EXPECT_EQ(Data(), before);
        EXPECT_EQ(ErrorMessage(), "");
    }
}

}  // namespace
}  // namespace Quorvane
