#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "algorithms/CircleMarks.h"
#include "framework/NumberText.h"
#include "tests/algorithms/MarkPointFixture.h"
#include "tests/support/MarkPlate.h"
#include "tests/support/Matchers.h"
#include "tests/support/Pictures.h"
#include "tests/support/Scene.h"

namespace Quorvane {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::UnorderedElementsAre;
using TestSupport::Disc;
using TestSupport::EqualsMat;
using TestSupport::MarkPlate;
using TestSupport::Scene;

namespace {

const Texts sortModes{"Similarity_Ascendingorder", "Similarity_Descendingorder", "DistToImgCenter_Ascendingorder",
                      "DistToImgCenter_Descendingorder"};

class FindMarkPointTest : public MarkPointFixture {};

TEST_F(FindMarkPointTest, DeclaresItsParametersAndResults) {
    Texts names;
    algorithm->GetParameterNameList(names);
    EXPECT_THAT(names, UnorderedElementsAre("MarkPointType", "Radius", "SimilarityMin", "SortMode"));
    EXPECT_EQ(algorithm->GetParameterToString("MarkPointType"), "Circle");
    EXPECT_EQ(algorithm->GetParameterToString("Radius"), "50");
    EXPECT_EQ(algorithm->GetParameterToString("SimilarityMin"), "0.850000");
    EXPECT_EQ(algorithm->GetParameterToDoubleVec("SimilarityMin"), std::vector<double>{0.8500000238418579});
    EXPECT_EQ(algorithm->GetParameterToString("SortMode"), "DistToImgCenter_Ascendingorder");

    algorithm->GetResultNameList(names);
    EXPECT_THAT(names, UnorderedElementsAre("AlgorithmErrorMsg", "FindCount", "MarkPoint_X", "MarkPoint_Y",
                                            "MarkPoint_Similarity"));
    EXPECT_THAT(algorithm->GetResultValues("AlgorithmErrorMsg"), ElementsAre(""));
    EXPECT_THAT(algorithm->GetResultValues("FindCount"), ElementsAre("0"));
    for (const std::string& name : markLists) EXPECT_THAT(algorithm->GetResultValues(name), IsEmpty()) << name;
}

TEST_F(FindMarkPointTest, RefusesAnEmptyImageAndLeavesTheDestinationAlone) {
    SetSearch(24.0, 0.7);
    Run(SixMarks());
    const auto before = Data();
    cv::Mat destination(3, 4, CV_8UC1, cv::Scalar(9));
    const cv::Mat unchanged = destination.clone();
    EXPECT_EQ(algorithm->Execute(cv::Mat(), destination), 2);
    EXPECT_EQ(ErrorMessage(), "[FindMarkPoint] SourceImage is invalid!");
    EXPECT_THAT(destination, EqualsMat(unchanged));
    EXPECT_EQ(Data(), before);
}

TEST_F(FindMarkPointTest, ReportsWhatTheSearchAccepted) {
    const cv::Mat picture = SixMarks();
    SetSearch(24.0, 0.7);
    Run(picture);
    std::vector<cv::Point2f> centres;
    std::vector<double> radii;
    std::vector<double> similarities;
    FindCircleMarks(picture, 24.0, (1.0 - 0.7) * 24.0, 0.7, centres, radii, similarities);
    ASSERT_THAT(centres, SizeIs(6));
    std::vector<Texts> expected;
    for (std::size_t i = 0; i < centres.size(); ++i) {
        expected.push_back(
            {FixedText(centres[i].x), FixedText(centres[i].y), FixedText(similarities[i]), FixedText(radii[i])});
    }
    EXPECT_EQ(Lines(), expected);
}

TEST_F(FindMarkPointTest, TheDefaultsAreTheSearchForRadiusFifty) {
    const cv::Mat picture = MarkPlate{{600, 400}, {3, 2}, 50.0, 230.0, 20.0}.Render().Blur(1.5).Gray();
    algorithm->SetParameter("SortMode", std::string("none"));
    Run(picture);
    std::vector<cv::Point2f> centres;
    std::vector<double> radii;
    std::vector<double> similarities;
    FindCircleMarks(picture, 50.0, 7.4999988079071045, 0.8500000238418579, centres, radii, similarities);
    ASSERT_THAT(centres, Not(IsEmpty()));
    Texts x;
    for (const cv::Point2f& centre : centres) x.push_back(FixedText(centre.x));
    EXPECT_EQ(algorithm->GetResultValues("MarkPoint_X"), x);
}

TEST_F(FindMarkPointTest, OrdersByTheKeyOfEachSortMode) {
    const cv::Mat picture = SixMarks();
    SetSearch(24.0, 0.6);
    Run(picture);
    std::vector<Texts> accepted = Lines();
    ASSERT_THAT(accepted, SizeIs(6));
    std::vector<Texts> sortedAcceptance = accepted;
    std::sort(sortedAcceptance.begin(), sortedAcceptance.end());

    for (const std::string& mode : sortModes) {
        SetSearch(24.0, 0.6, mode);
        Run(picture);
        std::vector<Texts> lines = Lines();
        std::vector<double> keys;
        for (const Texts& line : lines) {
            const double distance = std::hypot(std::stod(line[0]) - 200.0, std::stod(line[1]) - 150.0);
            keys.push_back(mode.front() == 'S' ? std::stod(line[2]) : distance);
        }
        if (mode.find("Descending") != std::string::npos) std::reverse(keys.begin(), keys.end());
        EXPECT_TRUE(std::is_sorted(keys.begin(), keys.end())) << mode;
        EXPECT_LT(keys.front(), keys.back()) << mode;
        // The marks stayed whole: the same lines in another order.
        std::sort(lines.begin(), lines.end());
        EXPECT_EQ(lines, sortedAcceptance) << mode;
    }
}

TEST_F(FindMarkPointTest, AnotherSortModeKeepsTheOrderOfAcceptance) {
    const cv::Mat picture = SixMarks();
    SetSearch(24.0, 0.6, "none");
    Run(picture);
    const std::vector<Texts> accepted = Lines();
    for (const char* mode : {"", "similarity_ascendingorder", "Similarity_Ascendingorder ", "DistToImgCenter"}) {
        SetSearch(24.0, 0.6, mode);
        Run(picture);
        EXPECT_EQ(Lines(), accepted) << mode;
    }
}

TEST_F(FindMarkPointTest, MeasuresDistancesFromTheWholePixelInTheMiddle) {
    // Of 403 columns the middle is 201, not 201.5: from there the left mark at 101 is nearer than the right one, at 301
    // but 10 rows lower; from 201.5 it would be farther.
    const cv::Mat picture = Scene({403, 203}, 40.0)
                                .Paint(Disc({101.0, 101.0}, 24.0), 220.0)
                                .Paint(Disc({301.0, 111.0}, 24.0), 220.0)
                                .Gray();
    SetSearch(24.0, 0.7, "DistToImgCenter_Ascendingorder");
    Run(picture);
    EXPECT_THAT(algorithm->GetResultValues("MarkPoint_X"), ElementsAre("101.000000", "301.000000"));
    EXPECT_THAT(algorithm->GetResultValues("MarkPoint_Y"), ElementsAre("101.000000", "111.000000"));
    SetSearch(24.0, 0.7, "DistToImgCenter_Descendingorder");
    Run(picture);
    EXPECT_THAT(algorithm->GetResultValues("MarkPoint_X"), ElementsAre("301.000000", "101.000000"));
}

TEST_F(FindMarkPointTest, MarksOfEqualSimilarityStayWhole) {
    const cv::Mat picture = Scene({400, 200}, 40.0)
                                .Paint(Disc({101.0, 101.0}, 24.0), 220.0)
                                .Paint(Disc({301.0, 101.0}, 24.0), 220.0)
                                .Gray();
    SetSearch(24.0, 0.7, "Similarity_Descendingorder");
    Run(picture);
    const std::vector<Texts> lines = Lines();
    ASSERT_THAT(lines, SizeIs(2));
    EXPECT_EQ(lines[0][2], lines[1][2]);
    EXPECT_EQ(lines[0][3], lines[1][3]);
    EXPECT_THAT((Texts{lines[0][0], lines[1][0]}), UnorderedElementsAre("101.000000", "301.000000"));
}

TEST_F(FindMarkPointTest, TheFirstValueIsTheFirstMarkInTheChosenOrder) {
    SetSearch(24.0, 0.6, "Similarity_Descendingorder");
    Run(SixMarks());
    EXPECT_EQ(algorithm->GetResultValue("MarkPoint_X"), algorithm->GetResultValues("MarkPoint_X").front());
    EXPECT_EQ(algorithm->GetResultValue("FindCount"), "6");
}

/// The picture with the marks of the lines drawn in, one after the other.
cv::Mat Drawn(const cv::Mat& picture, const std::vector<Texts>& lines) {
    cv::Mat drawn = picture.clone();
    for (const Texts& line : lines) {
        const cv::Point centre(cvRound(std::stod(line[0])), cvRound(std::stod(line[1])));
        cv::circle(drawn, centre, 1, cv::Scalar(0, 255, 0), cv::FILLED, cv::LINE_8);
        cv::circle(drawn, centre, cvRound(std::stod(line[3])), cv::Scalar(0, 0, 255), 1, cv::LINE_8);
    }
    return drawn;
}

TEST_F(FindMarkPointTest, DrawsADotAndACircleForEachMarkInSearchOrder) {
    // The circle of each mark runs through the dot of the other, so that the order shows in the pixels.
    const cv::Mat picture = Scene({260, 160}, 40.0)
                                .Paint(Disc({101.0, 81.0}, 24.0), 220.0)
                                .Paint(Disc({125.0, 81.0}, 22.0), 160.0)
                                .Colour();
    SetSearch(24.0, 0.2);
    const cv::Mat marked = Run(picture);
    const std::vector<Texts> lines = Lines();
    ASSERT_THAT(lines, SizeIs(2));
    const cv::Mat expected = Drawn(picture, lines);
    ASSERT_THAT(Drawn(picture, {lines[1], lines[0]}), Not(EqualsMat(expected)));
    EXPECT_THAT(marked, EqualsMat(expected));

    std::size_t reversed = 0;
    for (const std::string& mode : sortModes) {
        SetSearch(24.0, 0.2, mode);
        EXPECT_THAT(Run(picture), EqualsMat(expected)) << mode;
        if (Lines() != lines) ++reversed;
    }
    EXPECT_EQ(reversed, 2U);
}

TEST_F(FindMarkPointTest, DrawsInBlackOnOneChannelAndWithoutAlphaOnFour) {
    const Scene scene = MarkPlate{{200, 160}, {1, 1}, 24.0}.Render();
    SetSearch(24.0, 0.7);
    const cv::Mat gray = Run(scene.Gray());
    const Texts line = Lines().at(0);
    const int x = cvRound(std::stod(line[0]));
    const int y = cvRound(std::stod(line[1]));
    const int r = cvRound(std::stod(line[3]));
    EXPECT_EQ(gray.type(), CV_8UC1);
    EXPECT_EQ(gray.at<uchar>(y, x), 0);
    EXPECT_EQ(gray.at<uchar>(y, x + r), 0);
    EXPECT_EQ(cv::countNonZero((gray != scene.Gray()) & (gray != 0)), 0);

    const cv::Mat colour = Run(scene.ColourWithAlpha());
    EXPECT_EQ(colour.type(), CV_8UC4);
    EXPECT_EQ(colour.at<cv::Vec4b>(y, x), cv::Vec4b(0, 255, 0, 0));
    EXPECT_EQ(colour.at<cv::Vec4b>(y, x + r), cv::Vec4b(0, 0, 255, 0));
}

TEST_F(FindMarkPointTest, FindingNothingIsSuccessWithEmptyLists) {
    SetSearch(24.0, 0.7);
    Run(SixMarks());
    const cv::Mat flat(100, 120, CV_8UC3, cv::Scalar(10, 20, 30));
    EXPECT_THAT(Run(flat), EqualsMat(flat));
    EXPECT_THAT(algorithm->GetResultValues("FindCount"), ElementsAre("0"));
    Texts names;
    algorithm->GetResultNameList(names);
    for (const std::string& name : markLists) {
        EXPECT_THAT(algorithm->GetResultValues(name), IsEmpty()) << name;
        EXPECT_THAT(names, Contains(name));
    }
    EXPECT_EQ(ErrorMessage(), "");
}

TEST_F(FindMarkPointTest, TheRadiusResultAppearsWithTheFirstRunForCircles) {
    Texts names;
    algorithm->SetParameter("MarkPointType", std::string("Cross"));
    algorithm->SetParameter("Width", 5);
    algorithm->SetParameter("Height", 3);
    Run(SixMarks());
    algorithm->SetParameter("MarkPointType", std::string("Circle"));
    algorithm->SetParameter("Radius", 0);
    cv::Mat destination;
    EXPECT_EQ(algorithm->Execute(SixMarks(), destination), 3);
    algorithm->GetResultNameList(names);
    EXPECT_THAT(names, Not(Contains("MarkPoint_Radius")));

    SetSearch(24.0, 0.7);
    Run(SixMarks());
    algorithm->GetResultNameList(names);
    EXPECT_THAT(names, Contains("MarkPoint_Radius"));
}

TEST_F(FindMarkPointTest, RefusedPicturesReachTheHostAsExceptionsAfterTheCopy) {
    SetSearch(24.0, 0.7);
    Run(SixMarks());
    const auto before = Data();
    for (const int type : {CV_8UC2, CV_16UC1, CV_32FC3}) {
        const cv::Mat source(80, 90, type, cv::Scalar::all(7));
        cv::Mat destination;
        EXPECT_THROW(algorithm->Execute(source, destination), cv::Exception) << cv::typeToString(type);
        EXPECT_THAT(destination, EqualsMat(source));
    }
    EXPECT_EQ(Data(), before);
}

TEST_F(FindMarkPointTest, APatchThatLeavesTheImageReachesTheHostAsAnException) {
    SetSearch(24.0, 0.7);
    cv::Mat destination;
    const cv::Mat narrow = Scene({60, 200}, 40.0).Paint(Disc({28.0, 100.0}, 24.0), 220.0).Gray();
    EXPECT_THROW(algorithm->Execute(narrow, destination), cv::Exception);
}

TEST_F(FindMarkPointTest, TheSourceStaysAsItWas) {
    const cv::Mat picture = SixMarks();
    const cv::Mat before = picture.clone();
    SetSearch(24.0, 0.7);
    cv::Mat destination = picture;  // shares the pixels
    EXPECT_EQ(algorithm->Execute(picture, destination), 0);
    EXPECT_THAT(picture, EqualsMat(before));
    EXPECT_GT(cv::norm(destination, before), 0.0);
}

TEST_F(FindMarkPointTest, SourceAndDestinationMayBeOneMatrix) {
    SetSearch(24.0, 0.7);
    const cv::Mat expected = Run(SixMarks());
    cv::Mat picture = SixMarks();
    EXPECT_EQ(algorithm->Execute(picture, picture), 0);
    EXPECT_THAT(picture, EqualsMat(expected));
    EXPECT_THAT(Lines(), SizeIs(6));
}

TEST_F(FindMarkPointTest, RunsAreTheSameEveryTime) {
    const cv::Mat picture = TestSupport::LoadColourPicture("coins.png");
    SetSearch(22.0, 0.7);
    const cv::Mat first = Run(picture);
    const auto lines = Lines();
    const cv::Mat second = Run(picture);
    EXPECT_THAT(second, EqualsMat(first));
    EXPECT_EQ(Lines(), lines);
}

}  // namespace
}  // namespace Quorvane
