#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <set>
#include <string>
#include <vector>

#include "tests/algorithms/FillingFixture.h"
#include "tests/support/CapturedStream.h"
#include "tests/support/ConsoleText.h"
#include "tests/support/Matchers.h"
#include "tests/support/Pictures.h"
#include "tests/support/Scene.h"

namespace Quorvane {

using testing::AnyOf;
using testing::IsSupersetOf;
using testing::SizeIs;
using TestSupport::EqualsMat;
using TestSupport::Tray;

namespace {

class FillingResultsTest : public FillingFixture {};

TEST_F(FillingResultsTest, EqualsThePlainJobInEveryResultAndEveryPixel) {
    std::size_t copies = 0;
    for (std::uint32_t seed = 2; seed < 6; ++seed) {
        SCOPED_TRACE(seed);
        const Tray tray = RenderSmallTray(seed, seed * 1.5, 1.0 - seed * 0.08);
        Reference::FillingJob job = JobOn(tray);
        job.similarity = 0.9 - seed * 0.05;
        copies += ExpectPlainOutcome(tray.picture, job).matches.size();
    }
    EXPECT_GE(copies, 16U);
}

TEST_F(FillingResultsTest, EqualsThePlainJobForAPartWithAllItsFeatures) {
    constexpr double size = 180.0;
    TestSupport::TraySettings settings;
    settings.partSize = size;
    settings.columns = 3;
    settings.rows = 2;
    settings.noise = 3.0;
    settings.lightAtRight = 0.8;
    settings.seed = 9;
    const Tray tray = TestSupport::RenderTray(settings);
    EXPECT_GE(ExpectPlainOutcome(tray.picture, JobOn(tray, size)).matches.size(), 6U);
    // The last stage that would tell of too few features is the training.
    const std::string training = out.substr(0, out.find("TrainTemplateFromMat"));
    EXPECT_THAT(TestSupport::WithoutCounts(TestSupport::WithoutTimes(training)),
                testing::EndsWith("#\n#\n\nelasped time:#s\n\n \n"));
}

/// The photograph of the coins, twice as large.
cv::Mat EnlargedCoins() {
    cv::Mat coins;
    cv::resize(TestSupport::LoadColourPicture("coins.png"), coins, {}, 2.0, 2.0, cv::INTER_CUBIC);
    return coins;
}

TEST_F(FillingResultsTest, FindsOtherCoinsOfLikeSizeInAPhotographAndNothingBesideThem) {
    // The middles of all coins in the photograph, row by row.
    const std::vector<cv::Point2d> coins{{45, 54},  {100, 57},  {155, 50},  {216, 47},  {276, 51},  {335, 44},
                                         {45, 124}, {102, 125}, {154, 126}, {205, 124}, {271, 120}, {336, 123},
                                         {43, 197}, {102, 195}, {154, 197}, {212, 192}, {274, 194}, {345, 187},
                                         {46, 262}, {113, 266}, {171, 263}, {245, 263}, {303, 265}, {358, 268}};
    Give({{200, 114}, {{190, 100}, {210, 100}, {200, 130}}, 0.5});
    ASSERT_EQ(Run(EnlargedCoins()), 0);
    EXPECT_EQ(CopyCount(), 13);
    std::set<std::ptrdiff_t> found;
    for (int n = 1; n <= CopyCount(); ++n) {
        const cv::Point2d place(200.0 + std::stod(Copy(n, "OffsetX")), 114.0 + std::stod(Copy(n, "OffsetY")));
        const auto coin = std::find_if(coins.begin(), coins.end(),
                                       [&](cv::Point2d middle) { return cv::norm(place - 2.0 * middle) < 14.0; });
        EXPECT_NE(coin, coins.end()) << place;
        EXPECT_TRUE(found.insert(coin - coins.begin()).second) << place;
    }
}

TEST_F(FillingResultsTest, EqualsThePlainJobOnAPhotograph) {
    const cv::Mat coins = EnlargedCoins();
    const cv::Rect part(40, 40, 400, 400);
    Reference::FillingJob job{cv::Point2f(200.0f, 114.0f) - cv::Point2f(part.tl()), {}, 0.55};
    job.shape = {job.centre + cv::Point2f(-20, -10), job.centre + cv::Point2f(20, -10),
                 job.centre + cv::Point2f(0, 25)};
    const Reference::FillingOutcome outcome = ExpectPlainOutcome(coins(part), job);
    EXPECT_GE(outcome.matches.size(), 5U);
    EXPECT_NE(outcome.matches[1].angle, 0.0f);
}

TEST_F(FillingResultsTest, FindsEveryCopyWithItsPlaceAndItsTurn) {
    ASSERT_EQ(Run(SmallTray().picture), 0);
    ASSERT_EQ(algorithm->GetResultValue("OutputShapeCount"), "6");
    const cv::Point2f centre = JobOn(SmallTray()).centre;
    for (const TestSupport::PartPose& pose : SmallTray().poses) {
        const cv::Point2d place = pose.Place(TestSupport::TrayPartMark(smallPartSize));
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

TEST_F(FillingResultsTest, StoresSevenResultsPerCopy) {
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

TEST_F(FillingResultsTest, ListsTurnAboutTheCopyWhileDotsTurnAboutTheMark) {
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

TEST_F(FillingResultsTest, ListsOfOnePointGiveListsOfOnePointAndADotOfALine) {
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

TEST_F(FillingResultsTest, ASingleNumberIsAListOfOnePoint) {
    algorithm->SetParameter("TargetShapePoints_X", 100);
    algorithm->SetParameter("TargetShapePoints_Y", std::string("90.5"));
    ASSERT_EQ(Run(SmallTray().picture), 0);
    EXPECT_THAT(algorithm->GetResultValues("OutputShape_1_X"), SizeIs(1));
}

TEST_F(FillingResultsTest, TheMarkAndTheShapeAreNarrowedToFloat) {
    const std::vector<double> x{20.3, 60.7, 33.1};
    const std::vector<double> y{30.9, 41.2, 70.6};
    const auto narrowed = [](std::vector<double> numbers) {
        for (double& number : numbers) number = static_cast<double>(static_cast<float>(number));
        return numbers;
    };
    Mark(50.1, 71.7);
    algorithm->SetParameter("TargetShapePoints_X", x);
    algorithm->SetParameter("TargetShapePoints_Y", y);
    ASSERT_EQ(Run(SmallTray().picture), 0);
    EXPECT_EQ(Copy(1, "OffsetRotateCenterX"), "50.099998");
    EXPECT_EQ(Copy(1, "OffsetRotateCentetY"), "71.699997");
    const std::string shift = Copy(1, "OffsetX") + " " + Copy(1, "OffsetY");
    const std::vector<std::string> columns = algorithm->GetResultValues("OutputShape_1_X");
    const std::vector<std::string> rows = algorithm->GetResultValues("OutputShape_1_Y");

    Mark(static_cast<double>(50.1f), static_cast<double>(71.7f));
    algorithm->SetParameter("TargetShapePoints_X", narrowed(x));
    algorithm->SetParameter("TargetShapePoints_Y", narrowed(y));
    ASSERT_EQ(Run(SmallTray().picture), 0);
    EXPECT_EQ(Copy(1, "OffsetX") + " " + Copy(1, "OffsetY"), shift);
    EXPECT_EQ(algorithm->GetResultValues("OutputShape_1_X"), columns);
    EXPECT_EQ(algorithm->GetResultValues("OutputShape_1_Y"), rows);
}

TEST_F(FillingResultsTest, AShapeBeyondEveryPictureIsReportedAsItIs) {
    algorithm->SetParameter("TargetShapePoints_X", std::vector<double>{1e12, -1e300, std::nan("")});
    algorithm->SetParameter("TargetShapePoints_Y", std::vector<double>{-1e12, 1e300, 5.0});
    ASSERT_EQ(Run(SmallTray().picture), 0);
    EXPECT_EQ(algorithm->GetResultValue("OutputShapeCount"), "6");
    ASSERT_EQ(Copy(1, "OffsetAngle"), "0.000000");
    EXPECT_EQ(algorithm->GetResultValue("OutputShape_1_X"), "999999995904.000000");
    EXPECT_EQ(algorithm->GetResultValue("OutputShape_1_Y"), "-999999995904.000000");
    for (int n = 1; n <= 6; ++n) {
        EXPECT_THAT(algorithm->GetResultValues("OutputShape_" + std::to_string(n) + "_X"), SizeIs(3)) << n;
        EXPECT_THAT(algorithm->GetResultValues("OutputShape_" + std::to_string(n) + "_Y"), SizeIs(3)) << n;
    }
}

/// The float that becomes exactly -1 when `offset` is added.
float LandsOnMinusOne(float offset) {
    float start = -1.0f - offset;
    while (start + offset < -1.0f) start = std::nextafter(start, 100.0f);
    while (start + offset > -1.0f) start = std::nextafter(start, -100.0f);
    return start;
}

TEST_F(FillingResultsTest, APointThatLandsOnMinusOneBreaksTheLine) {
    const cv::Mat& picture = SmallTray().picture;
    Reference::FillingJob job = JobOn(SmallTray());
    job.similarity = 0.95;
    const Reference::FillingOutcome first = PlainOutcome(picture, job);
    ASSERT_FALSE(first.matches.empty());
    ASSERT_EQ(first.matches[0].angle, 0.0f);
    const cv::Point2f broken(LandsOnMinusOne(first.matches[0].x - job.centre.x),
                             LandsOnMinusOne(first.matches[0].y - job.centre.y));
    const std::vector<cv::Point2f> around{{60, 230}, {20, 230}, {20, 200}, {60, 200}};
    // The gap is once the first point of the list, once in its midst, and once the last.
    for (const std::size_t gap : {0U, 2U, 4U}) {
        SCOPED_TRACE(gap);
        job.shape = around;
        job.shape.insert(job.shape.begin() + static_cast<std::ptrdiff_t>(gap), broken);
        const Reference::FillingOutcome plain = ExpectPlainOutcome(picture, job);
        ASSERT_EQ(plain.shapes[0][gap], cv::Point2f(-1.0f, -1.0f));
        EXPECT_EQ(Copy(1, "OffsetAngle"), "0.000000");
        EXPECT_EQ(algorithm->GetResultValues("OutputShape_1_X")[gap], "-1.000000");
        EXPECT_EQ(algorithm->GetResultValues("OutputShape_1_Y")[gap], "-1.000000");
        // No line leads to the gap or away from it.
        const cv::Rect onTheWay(5, 150, 45, 1);
        EXPECT_THAT(destination(onTheWay), EqualsMat(picture(onTheWay)));
    }
}

TEST_F(FillingResultsTest, ARunWithFewerCopiesLeavesTheKeysOfTheOneBefore) {
    ASSERT_EQ(Run(SmallTray().picture), 0);
    const std::string before = Copy(6, "OffsetX");
    ASSERT_NE(before, "");
    algorithm->SetParameter("SimilarityMin", 1.0);
    ASSERT_EQ(Run(SmallTray().picture), 0);
    EXPECT_EQ(algorithm->GetResultValue("OutputShapeCount"), "0");
    EXPECT_EQ(Copy(6, "OffsetX"), before);
    EXPECT_THAT(algorithm->GetResultValues("OutputShape_6_X"), SizeIs(3));
}

TEST_F(FillingResultsTest, AMarkNearTheBorderIsSampledInsideThePicture) {
    const cv::Scalar partColour(70, 170, 215);
    const cv::Mat picture = TestSupport::Scene({300, 240}, cv::Scalar(120, 95, 70))
                                .Paint(TestSupport::Placed(TestSupport::TrayPart(80.0), 0.0, {30, 30}), partColour)
                                .Paint(TestSupport::Placed(TestSupport::TrayPart(80.0), 0.0, {180, 140}), partColour)
                                .Blur(0.8)
                                .Colour();
    Reference::FillingJob job;
    job.centre = {3.25f, 25.5f};
    job.shape = {{5, 20}, {25, 20}, {15, 35}};
    EXPECT_GE(ExpectPlainOutcome(picture, job).matches.size(), 1U);
    // Beside the picture, as long as the square reaches into it.
    job.centre = {-8.0f, 25.5f};
    EXPECT_GE(ExpectPlainOutcome(picture, job).matches.size(), 1U);
}

TEST_F(FillingResultsTest, TheSourceStaysAsItWas) {
    const cv::Mat before = SmallTray().picture.clone();
    ASSERT_EQ(Run(SmallTray().picture), 0);
    EXPECT_THAT(SmallTray().picture, EqualsMat(before));
    EXPECT_GT(cv::norm(destination, before), 0.0);
}

TEST_F(FillingResultsTest, TheDestinationMayBeTheSource) {
    ASSERT_EQ(Run(SmallTray().picture), 0);
    const cv::Mat expected = destination.clone();
    cv::Mat both = SmallTray().picture.clone();
    destination = both;
    const TestSupport::CapturedStream notices(std::cout);
    EXPECT_EQ(algorithm->Execute(destination, destination), 0);
    EXPECT_THAT(destination, EqualsMat(expected));
}

TEST_F(FillingResultsTest, TakesASubImage) {
    const cv::Rect window(4, 3, 320, 240);
    ASSERT_EQ(Run(SmallTray().picture(window).clone()), 0);
    const cv::Mat expected = destination.clone();
    ASSERT_EQ(Run(SmallTray().picture(window)), 0);
    EXPECT_THAT(destination, EqualsMat(expected));
}

TEST_F(FillingResultsTest, TakesAFourthChannelWithTheObjectReadFromTheBytesOfThree) {
    cv::Mat picture;
    cv::cvtColor(SmallTray().picture, picture, cv::COLOR_BGR2BGRA);
    const Reference::FillingOutcome outcome = ExpectPlainOutcome(picture, JobOn(SmallTray()));
    EXPECT_EQ(outcome.matches.size(), 3U);
    EXPECT_EQ(destination.type(), CV_8UC4);
}

}  // namespace
}  // namespace Quorvane
