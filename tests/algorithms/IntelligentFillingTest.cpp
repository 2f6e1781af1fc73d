#include "algorithms/IntelligentFilling.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <iostream>
#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "framework/AlgorithmFactory.h"
#include "framework/NumberText.h"
#include "geometry/ImageOperators.h"
#include "tests/reference/PlainFilling.h"
#include "tests/support/CapturedStream.h"
#include "tests/support/ConsoleText.h"
#include "tests/support/Matchers.h"
#include "tests/support/Scene.h"
#include "tests/support/Tray.h"

namespace Quorvane {

using testing::AnyOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::SizeIs;
using testing::UnorderedElementsAre;
using TestSupport::EqualsMat;
using TestSupport::ExpectThrowWithText;
using TestSupport::Tray;
using TestSupport::TraySettings;

namespace {

const char* const unequalLists =
    "The number of parameters<vecTargetShapePoints_X> is inconsistent with the number of "
    "parameters<vecTargetShapePoints_Y>.";

constexpr double partSize = 70.0;

Tray RenderSmallTray(std::uint32_t seed, double noise = 2.0, double light = 1.0) {
    TraySettings settings;
    settings.size = {333, 250};
    settings.partSize = partSize;
    settings.columns = 3;
    settings.rows = 2;
    settings.noise = noise;
    settings.lightAtRight = light;
    settings.seed = seed;
    return TestSupport::RenderTray(settings);
}

const Tray& SmallTray() {
    static const Tray tray = RenderSmallTray(1);
    return tray;
}

/// The job of a host: the mark on the first part and a triangle on it.
Reference::FillingJob JobOn(const Tray& tray) {
    const cv::Point2d mark = tray.poses.front().Place(TestSupport::TrayPartMark(partSize));
    const cv::Point2f centre(static_cast<float>(mark.x), static_cast<float>(mark.y));
    return {centre, {centre + cv::Point2f(-12, -8), centre + cv::Point2f(14, -3), centre + cv::Point2f(1, 13)}, 0.8};
}

std::vector<double> XOf(const std::vector<cv::Point2f>& points) {
    std::vector<double> x;
    for (const cv::Point2f& point : points) x.push_back(point.x);
    return x;
}

std::vector<double> YOf(const std::vector<cv::Point2f>& points) {
    std::vector<double> y;
    for (const cv::Point2f& point : points) y.push_back(point.y);
    return y;
}

std::vector<std::string> TextsOf(const std::vector<double>& numbers) {
    std::vector<std::string> texts;
    for (const double number : numbers) texts.push_back(FixedText(number));
    return texts;
}

Reference::FillingOutcome PlainOutcome(const cv::Mat& picture, const Reference::FillingJob& job) {
    const int left = static_cast<int>(job.centre.x - 15.0f);
    const int top = static_cast<int>(job.centre.y - 15.0f);
    const int right = static_cast<int>(job.centre.x + 15.0f);
    const int bottom = static_cast<int>(job.centre.y + 15.0f);
    const cv::Point seed = UtilityFunctions::findDominantLABColorPointInContour(
        picture, {{left, top}, {right, top}, {right, bottom}, {left, bottom}});
    const TestSupport::CapturedStream notices(std::cout);
    return Reference::FillCopies(picture, seed, job);
}

class IntelligentFillingTest : public testing::Test {
protected:
    void SetUp() override { Give(JobOn(SmallTray())); }

    void Give(const Reference::FillingJob& job) {
        algorithm->SetParameter("SimilarityMin", job.similarity);
        algorithm->SetParameter("TargetShapeCenter_X", static_cast<double>(job.centre.x));
        algorithm->SetParameter("TargetShapeCenter_Y", static_cast<double>(job.centre.y));
        algorithm->SetParameter("TargetShapePoints_X", XOf(job.shape));
        algorithm->SetParameter("TargetShapePoints_Y", YOf(job.shape));
    }

    void Mark(double x, double y) {
        algorithm->SetParameter("TargetShapeCenter_X", x);
        algorithm->SetParameter("TargetShapeCenter_Y", y);
    }

    /// Runs with both streams held back; they are in `out` and `err` afterwards.
    int Run(const cv::Mat& source) {
        const TestSupport::CapturedStream notices(std::cout);
        const TestSupport::CapturedStream errors(std::cerr);
        const auto keep = [&](int status) {
            out = notices.Text();
            err = errors.Text();
            return status;
        };
        try {
            return keep(algorithm->Execute(source, destination));
        } catch (...) {
            keep(0);
            throw;
        }
    }

    std::string ErrorMessage() {
        std::string message;
        algorithm->GetErrorMsg(message);
        return message;
    }

    std::string Copy(int number, const std::string& field) {
        return algorithm->GetResultValue("OutputShape_" + std::to_string(number) + "_" + field);
    }

    std::unique_ptr<Algorithm> algorithm{AlgorithmFactory().CreateAlgorithm("IntelligentFilling")};
    cv::Mat destination;
    std::string out;
    std::string err;
};

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

TEST_F(IntelligentFillingTest, EqualsThePlainJobInEveryResultAndEveryPixel) {
    int copies = 0;
    for (std::uint32_t seed = 2; seed < 6; ++seed) {
        const Tray tray = RenderSmallTray(seed, seed * 1.5, 1.0 - seed * 0.08);
        Reference::FillingJob job = JobOn(tray);
        job.similarity = 0.9 - seed * 0.05;
        Give(job);
        ASSERT_EQ(Run(tray.picture), 0);

        const Reference::FillingOutcome plain = PlainOutcome(tray.picture, job);
        EXPECT_THAT(destination, EqualsMat(plain.destination)) << seed;
        ASSERT_EQ(algorithm->GetResultValue("OutputShapeCount"), std::to_string(plain.matches.size())) << seed;
        for (std::size_t i = 0; i < plain.matches.size(); ++i) {
            const int n = static_cast<int>(i) + 1;
            const FillingMatch& match = plain.matches[i];
            EXPECT_EQ(algorithm->GetResultValues("OutputShape_" + std::to_string(n) + "_X"),
                      TextsOf(XOf(plain.shapes[i])));
            EXPECT_EQ(algorithm->GetResultValues("OutputShape_" + std::to_string(n) + "_Y"),
                      TextsOf(YOf(plain.shapes[i])));
            EXPECT_EQ(Copy(n, "OffsetX"), FixedText(match.x - job.centre.x));
            EXPECT_EQ(Copy(n, "OffsetY"), FixedText(match.y - job.centre.y));
            EXPECT_EQ(Copy(n, "OffsetAngle"), FixedText(match.angle));
            EXPECT_EQ(Copy(n, "OffsetRotateCenterX"), FixedText(job.centre.x));
            EXPECT_EQ(Copy(n, "OffsetRotateCentetY"), FixedText(job.centre.y));
            ++copies;
        }
    }
    EXPECT_GE(copies, 16);
}

TEST_F(IntelligentFillingTest, FindsEveryCopyWithItsPlaceAndItsTurn) {
    ASSERT_EQ(Run(SmallTray().picture), 0);
    ASSERT_EQ(algorithm->GetResultValue("OutputShapeCount"), "6");
    const cv::Point2f centre = JobOn(SmallTray()).centre;
    for (const TestSupport::PartPose& pose : SmallTray().poses) {
        const cv::Point2d place = pose.Place(TestSupport::TrayPartMark(partSize));
        int near = 0;
        for (int n = 1; n <= 6; ++n) {
            const double dx = std::stod(Copy(n, "OffsetX")) + centre.x - place.x;
            const double dy = std::stod(Copy(n, "OffsetY")) + centre.y - place.y;
            if (std::hypot(dx, dy) > 3.0) continue;
            ++near;
            EXPECT_LT(std::abs(std::remainder(std::stod(Copy(n, "OffsetAngle")) - pose.angle, 360.0)), 6.0);
        }
        EXPECT_EQ(near, 1) << place;
    }
}

TEST_F(IntelligentFillingTest, StoresSevenResultsPerCopy) {
    ASSERT_EQ(Run(SmallTray().picture), 0);
    std::vector<std::string> names;
    algorithm->GetResultNameList(names);
    EXPECT_THAT(names, SizeIs(2 + 6 * 7));
    EXPECT_THAT(names,
                IsSupersetOf({"OutputShape_1_X", "OutputShape_1_Y", "OutputShape_1_OffsetX", "OutputShape_1_OffsetY",
                              "OutputShape_1_OffsetAngle", "OutputShape_1_OffsetRotateCenterX",
                              "OutputShape_1_OffsetRotateCentetY", "OutputShape_6_OffsetRotateCentetY"}));
    EXPECT_THAT(algorithm->GetResultValues("OutputShape_3_X"), SizeIs(3));
    EXPECT_THAT(algorithm->GetResultValues("OutputShape_3_Y"), SizeIs(3));
    EXPECT_EQ(algorithm->GetResultValue("AlgorithmErrorMsg"), "");
}

TEST_F(IntelligentFillingTest, ListsTurnAboutTheCopyWhileDotsTurnAboutTheMark) {
    ASSERT_EQ(Run(SmallTray().picture), 0);
    const Reference::FillingJob job = JobOn(SmallTray());
    bool turned = false;
    for (int n = 1; n <= 6; ++n) {
        const double angle = std::stod(Copy(n, "OffsetAngle"));
        const cv::Point2d offset(std::stod(Copy(n, "OffsetX")), std::stod(Copy(n, "OffsetY")));
        const cv::Point2d listed(std::stod(algorithm->GetResultValues("OutputShape_" + std::to_string(n) + "_X")[0]),
                                 std::stod(algorithm->GetResultValues("OutputShape_" + std::to_string(n) + "_Y")[0]));
        const cv::Point2d first(job.shape[0]);
        const cv::Point2d mark(job.centre);
        const double c = std::cos(angle * CV_PI / 180.0);
        const double s = std::sin(angle * CV_PI / 180.0);
        const auto turn = [&](cv::Point2d p) { return cv::Point2d(c * p.x + s * p.y, -s * p.x + c * p.y); };
        const cv::Point2d dot = turn(first - mark) + mark + offset;
        const cv::Point2d list = turn(first - mark - offset) + mark + offset + offset;
        EXPECT_LT(cv::norm(listed - list), 1e-3);
        if (std::abs(std::remainder(angle, 360.0)) > 20.0 && cv::norm(offset) > 50.0) {
            EXPECT_GT(cv::norm(listed - dot), 10.0);
            turned = true;
        }
        // The dot is there, unless a line of the lists was drawn over it.
        EXPECT_THAT(destination.at<cv::Vec3b>(cv::Point(cvRound(dot.x), cvRound(dot.y))),
                    AnyOf(cv::Vec3b(0, 0, 255), cv::Vec3b(0, 0, 0)));
    }
    EXPECT_TRUE(turned);
}

TEST_F(IntelligentFillingTest, ListsOfOnePointGiveListsOfOnePointAndADotOfALine) {
    const cv::Point2f centre = JobOn(SmallTray()).centre;
    algorithm->SetParameter("TargetShapePoints_X", std::vector<double>{centre.x});
    algorithm->SetParameter("TargetShapePoints_Y", std::vector<double>{centre.y});
    ASSERT_EQ(Run(SmallTray().picture), 0);
    ASSERT_EQ(algorithm->GetResultValue("OutputShapeCount"), "6");
    cv::Mat expected = SmallTray().picture.clone();
    std::vector<cv::Point> lines;
    for (int n = 1; n <= 6; ++n) {
        ASSERT_THAT(algorithm->GetResultValues("OutputShape_" + std::to_string(n) + "_X"), SizeIs(1));
        const cv::Point dot(cvRound(std::stod(Copy(n, "OffsetX")) + centre.x),
                            cvRound(std::stod(Copy(n, "OffsetY")) + centre.y));
        cv::circle(expected, dot, 1, cv::Scalar(0, 0, 255), cv::FILLED);
        lines.emplace_back(cvRound(std::stod(Copy(n, "X"))), cvRound(std::stod(Copy(n, "Y"))));
    }
    for (const cv::Point& point : lines) cv::line(expected, point, point, cv::Scalar(0, 0, 0), 2, cv::LINE_8);
    EXPECT_THAT(destination, EqualsMat(expected));
}

TEST_F(IntelligentFillingTest, ASingleNumberIsAListOfOnePoint) {
    algorithm->SetParameter("TargetShapePoints_X", 100);
    algorithm->SetParameter("TargetShapePoints_Y", std::string("90.5"));
    ASSERT_EQ(Run(SmallTray().picture), 0);
    EXPECT_THAT(algorithm->GetResultValues("OutputShape_1_X"), SizeIs(1));
}

TEST_F(IntelligentFillingTest, APointThatLandsOnMinusOneBreaksTheLine) {
    const cv::Mat& picture = SmallTray().picture;
    Reference::FillingJob job = JobOn(SmallTray());
    job.similarity = 0.95;
    const Reference::FillingOutcome first = PlainOutcome(picture, job);
    ASSERT_FALSE(first.matches.empty());
    ASSERT_EQ(first.matches[0].angle, 0.0f);
    const auto landsOnMinusOne = [](float offset) {
        float start = -1.0f - offset;
        while (start + offset < -1.0f) start = std::nextafter(start, 100.0f);
        while (start + offset > -1.0f) start = std::nextafter(start, -100.0f);
        return start;
    };
    const cv::Point2f broken(landsOnMinusOne(first.matches[0].x - job.centre.x),
                             landsOnMinusOne(first.matches[0].y - job.centre.y));
    job.shape = {{20, 200}, {60, 200}, broken, {60, 230}, {20, 230}};
    const Reference::FillingOutcome plain = PlainOutcome(picture, job);
    ASSERT_EQ(plain.shapes[0][2], cv::Point2f(-1.0f, -1.0f));
    Give(job);
    ASSERT_EQ(Run(picture), 0);
    EXPECT_EQ(Copy(1, "OffsetAngle"), "0.000000");
    EXPECT_EQ(algorithm->GetResultValues("OutputShape_1_X")[2], "-1.000000");
    EXPECT_THAT(destination, EqualsMat(plain.destination));
    EXPECT_EQ(destination.at<cv::Vec3b>(150, 40), picture.at<cv::Vec3b>(150, 40));
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

TEST_F(IntelligentFillingTest, ASimilarityOfOneFindsNothing) {
    algorithm->SetParameter("SimilarityMin", 1.0);
    EXPECT_EQ(Run(SmallTray().picture), 0);
    EXPECT_EQ(algorithm->GetResultValue("OutputShapeCount"), "0");
    EXPECT_THAT(destination, EqualsMat(SmallTray().picture));
}

TEST_F(IntelligentFillingTest, CutsTheSimilarityToWholePercent) {
    const auto countAt = [&](double similarity) {
        algorithm->SetParameter("SimilarityMin", similarity);
        EXPECT_EQ(Run(SmallTray().picture), 0);
        std::string all;
        const int count = std::stoi(algorithm->GetResultValue("OutputShapeCount"));
        for (int n = 1; n <= count; ++n) all += Copy(n, "OffsetX") + Copy(n, "OffsetY") + Copy(n, "OffsetAngle");
        return all;
    };
    EXPECT_EQ(countAt(0.8), countAt(0.80999));
    EXPECT_EQ(countAt(0.9), countAt(0.9001));
    // In double 0.29 is a little less, and 28 percent is what it gives; 0.58 likewise gives 57.
    EXPECT_EQ(countAt(0.58), countAt(0.575));
}

TEST_F(IntelligentFillingTest, ARunWithFewerCopiesLeavesTheKeysOfTheOneBefore) {
    ASSERT_EQ(Run(SmallTray().picture), 0);
    const std::string before = Copy(6, "OffsetX");
    ASSERT_NE(before, "");
    algorithm->SetParameter("SimilarityMin", 1.0);
    ASSERT_EQ(Run(SmallTray().picture), 0);
    EXPECT_EQ(algorithm->GetResultValue("OutputShapeCount"), "0");
    EXPECT_EQ(Copy(6, "OffsetX"), before);
    EXPECT_THAT(algorithm->GetResultValues("OutputShape_6_X"), SizeIs(3));
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

TEST_F(IntelligentFillingTest, AMarkNearTheBorderIsSampledInsideThePicture) {
    cv::Mat picture =
        TestSupport::Scene({300, 240}, cv::Scalar(120, 95, 70))
            .Paint(TestSupport::Placed(TestSupport::TrayPart(80.0), 0.0, {30.0, 30.0}), cv::Scalar(70, 170, 215))
            .Paint(TestSupport::Placed(TestSupport::TrayPart(80.0), 0.0, {180.0, 140.0}), cv::Scalar(70, 170, 215))
            .Blur(0.8)
            .Colour();
    Mark(3, 25);
    EXPECT_EQ(Run(picture), 0);
    EXPECT_GE(std::stoi(algorithm->GetResultValue("OutputShapeCount")), 1);
}

TEST_F(IntelligentFillingTest, TheSourceStaysAsItWas) {
    const cv::Mat before = SmallTray().picture.clone();
    ASSERT_EQ(Run(SmallTray().picture), 0);
    EXPECT_THAT(SmallTray().picture, EqualsMat(before));
    EXPECT_GT(cv::norm(destination, before), 0.0);
}

TEST_F(IntelligentFillingTest, TheDestinationMayBeTheSource) {
    ASSERT_EQ(Run(SmallTray().picture), 0);
    const cv::Mat expected = destination.clone();
    cv::Mat both = SmallTray().picture.clone();
    destination = both;
    const TestSupport::CapturedStream notices(std::cout);
    EXPECT_EQ(algorithm->Execute(destination, destination), 0);
    EXPECT_THAT(destination, EqualsMat(expected));
}

TEST_F(IntelligentFillingTest, TakesASubImage) {
    const cv::Rect window(4, 3, 320, 240);
    ASSERT_EQ(Run(SmallTray().picture(window).clone()), 0);
    const cv::Mat expected = destination.clone();
    ASSERT_EQ(Run(SmallTray().picture(window)), 0);
    EXPECT_THAT(destination, EqualsMat(expected));
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
