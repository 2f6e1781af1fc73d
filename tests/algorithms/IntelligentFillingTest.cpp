#include "algorithms/IntelligentFilling.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <opencv2/core.hpp>
#include <stdexcept>

#include "framework/AlgorithmFactory.h"
#include "tests/algorithms/FillingFixture.h"
#include "tests/support/ConsoleText.h"
#include "tests/support/Matchers.h"

namespace Quorvane {

using testing::ElementsAre;
using testing::UnorderedElementsAre;
using TestSupport::EqualsMat;
using TestSupport::ExpectThrowWithText;

namespace {

const char* const unequalLists =
    "The number of parameters<vecTargetShapePoints_X> is inconsistent with the number of "
    "parameters<vecTargetShapePoints_Y>.";

class IntelligentFillingTest : public FillingFixture {};

TEST(IntelligentFilling, DeclaresItsParametersAndResults) {
    const std::unique_ptr<Algorithm> algorithm(AlgorithmFactory().CreateAlgorithm("IntelligentFilling"));
    std::vector<std::string> names;
    algorithm->GetParameterNameList(names);
    EXPECT_THAT(names, UnorderedElementsAre("SimilarityMin", "TargetShapeCenter_X", "TargetShapeCenter_Y"));
    EXPECT_EQ(algorithm->GetParameterToString("SimilarityMin"), "0.800000");
    EXPECT_EQ(algorithm->GetParameterToFloatVec("SimilarityMin"), std::vector<float>{0.8f});
    EXPECT_EQ(algorithm->GetParameterToDoubleVec("SimilarityMin"), std::vector<double>{static_cast<double>(0.8f)});
    EXPECT_EQ(algorithm->GetParameterToString("TargetShapeCenter_X"), "0.000000");
    EXPECT_EQ(algorithm->GetParameterToString("TargetShapeCenter_Y"), "0.000000");
    algorithm->GetResultNameList(names);
    EXPECT_THAT(names, UnorderedElementsAre("AlgorithmErrorMsg", "OutputShapeCount"));
    EXPECT_THAT(algorithm->GetResultValues("AlgorithmErrorMsg"), ElementsAre(""));
    EXPECT_THAT(algorithm->GetResultValues("OutputShapeCount"), ElementsAre("0"));
}

TEST_F(IntelligentFillingTest, RefusesListsThatAreEmptyOrOfDifferentLengths) {
    algorithm->SetParameter("TargetShapePoints_Y", std::vector<double>{1, 2});
    EXPECT_EQ(Run(SmallTray().picture), 3);
    EXPECT_EQ(ErrorMessage(), unequalLists);
    EXPECT_THAT(destination, EqualsMat(SmallTray().picture));
    EXPECT_NE(destination.data, SmallTray().picture.data);

    algorithm = std::unique_ptr<Algorithm>(AlgorithmFactory().CreateAlgorithm("IntelligentFilling"));
    EXPECT_EQ(Run(SmallTray().picture), 3);  // never set
    EXPECT_EQ(ErrorMessage(), unequalLists);
    algorithm->SetParameter("TargetShapePoints_X", std::vector<double>{});
    algorithm->SetParameter("TargetShapePoints_Y", std::vector<double>{});
    EXPECT_EQ(Run(SmallTray().picture), 3);
    algorithm->SetParameter("TargetShapePoints_X", std::vector<double>{1});
    EXPECT_EQ(Run(SmallTray().picture), 3);
    EXPECT_EQ(out + err, "");
}

TEST_F(IntelligentFillingTest, AMarkOutsideThePictureHasNoColour) {
    for (const cv::Point2d mark : {cv::Point2d(-400, 20), cv::Point2d(20, 5000), cv::Point2d(1e9, 1e9),
                                   cv::Point2d(-1e300, 0), cv::Point2d(std::nan(""), 10)}) {
        Mark(mark.x, mark.y);
        EXPECT_EQ(Run(SmallTray().picture), 1) << mark;
        EXPECT_EQ(ErrorMessage(), "Can't find dominant LAB color point!");
        EXPECT_THAT(destination, EqualsMat(SmallTray().picture));
        EXPECT_EQ(algorithm->GetResultValue("OutputShapeCount"), "0");
    }
}

TEST_F(IntelligentFillingTest, AnEmptyPictureHasNoColour) {
    EXPECT_EQ(Run(cv::Mat()), 1);
    EXPECT_EQ(ErrorMessage(), "Can't find dominant LAB color point!");
    EXPECT_TRUE(destination.empty());
}

TEST_F(IntelligentFillingTest, AMarkOnTheBackgroundRunsAway) {
    Mark(5, 5);
    EXPECT_EQ(Run(SmallTray().picture), 3);
    EXPECT_EQ(ErrorMessage(), "Can't find target template!");
    EXPECT_THAT(destination, EqualsMat(SmallTray().picture));
    EXPECT_EQ(Run(cv::Mat(200, 300, CV_8UC3, cv::Scalar(10, 60, 90))), 3);
}

TEST_F(IntelligentFillingTest, ATemplateOfExactlyHalfThePictureIsStillOne) {
    // Two squares and the margin: 45 columns of 90, then of 89.
    cv::Mat picture(60, 90, CV_8UC3, cv::Scalar(200, 40, 10));
    picture(cv::Rect(0, 0, 40, 60)).setTo(cv::Scalar(20, 90, 220));
    Mark(20, 30);
    EXPECT_EQ(Run(picture), 0);
    EXPECT_EQ(Run(picture(cv::Rect(0, 0, 89, 60))), 3);
    EXPECT_EQ(ErrorMessage(), "Can't find target template!");
}

TEST_F(IntelligentFillingTest, AnObjectWithTooFewEdgesIsFoundNowhere) {
    // The patch fills its squares, so the template holds nothing but its own straight border.
    cv::Mat picture(120, 160, CV_8UC3, cv::Scalar(110, 110, 110));
    picture(cv::Rect(60, 60, 40, 40)).setTo(cv::Scalar(100, 116, 116));
    Mark(80, 80);
    EXPECT_EQ(Run(picture), 0);
    EXPECT_EQ(algorithm->GetResultValue("OutputShapeCount"), "0");
    EXPECT_THAT(destination, EqualsMat(picture));
    EXPECT_THAT(err, testing::HasSubstr("first template has no features\n"));
}

TEST_F(IntelligentFillingTest, AFailedRunLeavesTheCountAndASuccessfulOneTheMessage) {
    ASSERT_EQ(Run(SmallTray().picture), 0);
    Mark(-500, 0);
    ASSERT_EQ(Run(SmallTray().picture), 1);
    EXPECT_EQ(algorithm->GetResultValue("OutputShapeCount"), "6");
    Give(JobOn(SmallTray()));
    ASSERT_EQ(Run(SmallTray().picture), 0);
    EXPECT_EQ(ErrorMessage(), "Can't find dominant LAB color point!");
}

TEST_F(IntelligentFillingTest, WritesItsNoticesInOrder) {
    ASSERT_EQ(Run(SmallTray().picture), 0);
    EXPECT_EQ(TestSupport::WithoutCounts(TestSupport::WithoutTimes(out)),
              "have no enough features, exaustive mode\n"
              "have no enough features, exaustive mode\n"
              "#\n#\n"
              "have no enough features, exaustive mode\n"
              "have no enough features, exaustive mode\n"
              "\nelasped time:#s\n\n"
              " TrainTemplateFromMat 完成\n\n"
              "匹配图尺寸: [320 x 240]\n"
              "construct response map\nelasped time:#s\n\n"
              "templ match\nelasped time:#s\n\n"
              "\nelasped time:#s\n\n");
    EXPECT_EQ(err, "");
}

TEST_F(IntelligentFillingTest, PicturesOfOtherTypesReachTheHostAsExceptions) {
    for (const int type : {CV_8UC1, CV_8UC2, CV_16UC3, CV_64FC3}) {
        EXPECT_THROW(Run(cv::Mat(240, 320, type, cv::Scalar::all(7))), cv::Exception) << cv::typeToString(type);
    }
}

TEST_F(IntelligentFillingTest, TextsWithoutNumberReachTheHostAsExceptions) {
    algorithm->SetParameter("SimilarityMin", std::string("high"));
    ExpectThrowWithText<std::invalid_argument>([&] { Run(SmallTray().picture); }, "invalid stod argument");
    algorithm->SetParameter("SimilarityMin", 0.8);
    algorithm->SetParameter("TargetShapeCenter_Y", std::string(""));
    ExpectThrowWithText<std::invalid_argument>([&] { Run(SmallTray().picture); }, "invalid stod argument");
    algorithm->SetParameter("TargetShapeCenter_Y", std::string("1e999"));
    ExpectThrowWithText<std::out_of_range>([&] { Run(SmallTray().picture); }, "stod argument out of range");
    algorithm->SetParameter("TargetShapeCenter_Y", 1);
    algorithm->SetParameter("TargetShapePoints_X", std::vector<std::string>{"1", "x"});
    ExpectThrowWithText<std::invalid_argument>([&] { Run(SmallTray().picture); }, "invalid stod argument");
    EXPECT_EQ(ErrorMessage(), "");
    EXPECT_THAT(destination, EqualsMat(SmallTray().picture));
}

}  // namespace
}  // namespace Quorvane
