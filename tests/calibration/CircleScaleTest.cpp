#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <opencv2/imgproc.hpp>
#include <string>

#include "calibration/CameraCalibration.h"
#include "calibration/CircleCandidates.h"
#include "calibration/CircleRefinement.h"
#include "tests/support/Matchers.h"
#include "tests/support/RandomInput.h"
#include "tests/support/Scene.h"

namespace Quorvane::CameraCalibration {

using testing::SizeIs;
using namespace TestSupport;

namespace {

constexpr double realRadius = 8.0;
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
const cv::Point2f noCenter(-7.0f, -8.0f);
constexpr double noRadius = -9.0;

struct Scale {
    bool found = false;
    cv::Point2f center = noCenter;
    double radius = noRadius;
    double scale = -10.0;
};

Scale Measure(const cv::Mat& image, double trueRadius = realRadius, double notRead = 0.0) {
    Scale s;
    s.found = CalScalePixToMmUseCircle(image, trueRadius, notRead, s.center, s.radius, s.scale);
    return s;
}

void ExpectSame(const Scale& actual, const Scale& expected) {
    EXPECT_EQ(actual.found, expected.found);
    EXPECT_EQ(actual.center, expected.center);
    EXPECT_EQ(actual.radius, expected.radius);
    EXPECT_EQ(actual.scale, expected.scale);
}

void ExpectNoCircle(const Scale& s) {
    EXPECT_FALSE(s.found);
    EXPECT_EQ(s.scale, -1.0);
    EXPECT_EQ(s.center, noCenter);
    EXPECT_EQ(s.radius, noRadius);
}

const cv::Point2d discCenter(150.3, 118.8);

Scene DiscScene(double radius = 60.0) {
    return Scene({320, 240}, 200.0).Paint(Disc(discCenter, radius), 40.0).Blur(1.0);
}

TEST(CalScalePixToMmUseCircle, OfRadius160AndEightMillimetresIsTwentyPixelsPerMillimetre) {
    const Scale s = Measure(Scene({480, 400}, 200.0).Paint(Disc({238.0, 203.0}, 160.4), 40.0).Blur(1.0).Gray());
    ASSERT_TRUE(s.found);
    EXPECT_NEAR(s.radius, 160.0, 0.1);
    EXPECT_NEAR(s.scale, 20.0, 0.0125);
    EXPECT_EQ(s.scale, s.radius / realRadius);
}

struct Kind {
    const char* name;
    bool ring;
    double radius;
    double contrast;
    double noise;
};

void PrintTo(const Kind& kind, std::ostream* stream) { *stream << kind.name; }

class CalScalePixToMmUseCircleOf : public testing::TestWithParam<Kind> {};

TEST_P(CalScalePixToMmUseCircleOf, IsCloseToTheTruth) {
    const Kind& kind = GetParam();
    constexpr double ringWidth = 6.0;
    const Shape shape =
        kind.ring ? Ring(discCenter, kind.radius - ringWidth / 2.0, ringWidth) : Disc(discCenter, kind.radius);
    Scene scene = Scene({320, 240}, 200.0).Paint(shape, 200.0 - kind.contrast).Blur(1.0);
    if (kind.noise > 0.0) scene.Noise(kind.noise, 17);
    const Scale s = Measure(scene.Gray());
    ASSERT_TRUE(s.found);
    EXPECT_THAT(s.center, NearPoint(discCenter, 0.15));
    EXPECT_NEAR(s.radius, kind.radius, 0.5);
    EXPECT_NEAR(s.scale, kind.radius / realRadius, 0.5 / realRadius);
}

INSTANTIATE_TEST_SUITE_P(
    Targets, CalScalePixToMmUseCircleOf,
    testing::Values(Kind{"SmallDisc", false, 25.0, 160.0, 0.0}, Kind{"Disc", false, 60.0, 160.0, 0.0},
                    Kind{"LargeDisc", false, 100.0, 160.0, 0.0}, Kind{"NoisyDisc", false, 60.0, 160.0, 15.0},
                    Kind{"PaleDisc", false, 60.0, 20.0, 0.0}, Kind{"PaleNoisyDisc", false, 60.0, 20.0, 3.0},
                    Kind{"SmallRing", true, 30.0, 160.0, 0.0}, Kind{"Ring", true, 60.0, 160.0, 0.0},
                    Kind{"LargeRing", true, 100.0, 160.0, 0.0}, Kind{"NoisyRing", true, 60.0, 160.0, 15.0},
                    Kind{"PaleRing", true, 60.0, 20.0, 0.0}, Kind{"PaleNoisyRing", true, 60.0, 20.0, 3.0}),
    [](const auto& kind) { return std::string(kind.param.name); });

TEST(CalScalePixToMmUseCircle, IsTheNearestCandidateRefined) {
    const cv::Mat picture = DiscScene().Noise(4.0, 5).Gray();
    std::vector<cv::Point2f> centers;
    std::vector<double> radii;
    DetectCircleCandidates(picture, centers, radii);
    const auto nearest = NearestCandidate(picture.size(), centers, radii);
    ASSERT_TRUE(nearest.has_value());
    double x = 0.0;
    double y = 0.0;
    double radius = 0.0;
    double score = 0.0;
    RefineCircle(picture, centers[*nearest].x, centers[*nearest].y, radii[*nearest], x, y, radius, score);
    ASSERT_GT(score, 0.0);
    ExpectSame(Measure(picture), {true, {static_cast<float>(x), static_cast<float>(y)}, radius, radius / realRadius});
}

TEST(CalScalePixToMmUseCircle, TakesTheCircleNearerTheMiddleWhateverItsSize) {
    // Candidates keep three quarters of the longer side between them, so the circles stand at the ends.
    constexpr double small = 26.0;
    constexpr double large = 60.0;
    for (const bool smallIsNearer : {true, false}) {
        SCOPED_TRACE(smallIsNearer);
        const cv::Point2d left(80.0, 80.0);
        const cv::Point2d right(570.0, 80.0);
        const cv::Mat picture = Scene({640, 160}, 200.0)
                                    .Paint(Disc(left, smallIsNearer ? small : large), 40.0)
                                    .Paint(Disc(right, smallIsNearer ? large : small), 40.0)
                                    .Blur(1.0)
                                    .Gray();
        std::vector<cv::Point2f> centers;
        std::vector<double> radii;
        DetectCircleCandidates(picture, centers, radii);
        ASSERT_THAT(centers, SizeIs(2));
        const Scale s = Measure(picture);
        ASSERT_TRUE(s.found);
        EXPECT_THAT(s.center, NearPoint(left, 0.5));
    }
}

TEST(CalScalePixToMmUseCircle, TakesAColourPictureWithAndWithoutAlphaAsItsGray) {
    const Scene scene = Scene({200, 160}, cv::Scalar(200, 120, 60)).Paint(Disc({90, 84}, 45.0), cv::Scalar(20, 60, 30));
    cv::Mat gray;
    cv::cvtColor(scene.Colour(), gray, cv::COLOR_BGR2GRAY);
    const Scale expected = Measure(gray);
    EXPECT_TRUE(expected.found);
    ExpectSame(Measure(scene.Colour()), expected);
    ExpectSame(Measure(scene.ColourWithAlpha()), expected);
}

TEST(CalScalePixToMmUseCircle, RefusesOtherCountsOfChannels) {
    ExpectNoCircle(Measure(RandomInput(1).Image({100, 80}, 2)));
    ExpectNoCircle(Measure(cv::Mat::zeros(100, 80, CV_8UC(5))));
    ExpectNoCircle(Measure(cv::Mat(0, 0, CV_8UC2)));
}

TEST(CalScalePixToMmUseCircle, FindsNoSmallCircle) {
    const cv::Mat picture = DiscScene(15.0).Gray();
    std::vector<cv::Point2f> centers;
    std::vector<double> radii;
    DetectCircleCandidates(picture, centers, radii);
    ASSERT_THAT(centers, SizeIs(1)) << "the circle is there, but too small";
    ExpectNoCircle(Measure(picture));
}

TEST(CalScalePixToMmUseCircle, FindsNoCircleInStripes) {
    cv::Mat row(1, 64, CV_8UC1, cv::Scalar(0));
    row.colRange(20, 40).setTo(255);
    ExpectNoCircle(Measure(row));
    ExpectNoCircle(Measure(row.t()));
    cv::Mat step(100, 100, CV_8UC1, cv::Scalar(100));
    step.colRange(50, 100).setTo(200);
    ExpectNoCircle(Measure(step));
}

TEST(CalScalePixToMmUseCircle, KeepsTheCandidateWhereNothingRoundIsOutlined) {
    // A ring in six pieces: votes enough for a circle, but no outline is round.
    Scene scene({320, 240}, 200.0);
    scene.Paint(Ring(discCenter, 60.0, 8.0), 40.0);
    for (int angle = 0; angle < 180; angle += 60) scene.Paint(Rectangle(discCenter, {160.0, 14.0}, angle), 200.0);
    const cv::Mat picture = scene.Blur(1.0).Gray();
    std::vector<cv::Point2f> centers;
    std::vector<double> radii;
    DetectCircleCandidates(picture, centers, radii);
    ASSERT_THAT(centers, SizeIs(1));
    ExpectSame(Measure(picture), {true, centers[0], radii[0], radii[0] / realRadius});
}

TEST(CalScalePixToMmUseCircle, DoesNotCheckTheRealRadius) {
    const cv::Mat picture = DiscScene().Gray();
    const Scale usual = Measure(picture);
    for (const double odd : {0.0, -0.0, -8.0, 1e-300, std::numeric_limits<double>::infinity()}) {
        SCOPED_TRACE(odd);
        ExpectSame(Measure(picture, odd), {true, usual.center, usual.radius, usual.radius / odd});
    }
    EXPECT_EQ(Measure(picture, 0.0).scale, std::numeric_limits<double>::infinity());
    const Scale s = Measure(picture, notANumber);
    EXPECT_TRUE(s.found);
    EXPECT_EQ(s.radius, usual.radius);
    EXPECT_TRUE(std::isnan(s.scale));
}

TEST(CalScalePixToMmUseCircle, NeverLooksAtTheArgumentThatIsNotRead) {
    const cv::Mat picture = DiscScene().Gray();
    const Scale expected = Measure(picture);
    for (const double any : {-1.0, 1e300, notANumber}) ExpectSame(Measure(picture, realRadius, any), expected);
}

TEST(CalScalePixToMmUseCircle, ReadsTheRealRadiusAnewWhereItIsTheRadiusItself) {
    // One variable for both: the scale is then that of the radius by itself.
    const cv::Mat picture = DiscScene().Gray();
    cv::Point2f center;
    double radius = realRadius;
    double scale = 0.0;
    ASSERT_TRUE(CalScalePixToMmUseCircle(picture, radius, 0.0, center, radius, scale));
    EXPECT_EQ(radius, Measure(picture).radius);
    EXPECT_EQ(scale, 1.0);
}

TEST(CalScalePixToMmUseCircle, LeavesThePictureAndTheLastErrorAlone) {
    cv::Mat homography;
    LoadHomography("there is no such file.yml", homography);
    const std::string error = GetLastError();
    ASSERT_FALSE(error.empty());
    const cv::Mat picture = DiscScene().Gray();
    const cv::Mat before = picture.clone();
    Measure(picture);
    Measure(cv::Mat(10, 10, CV_8UC2, cv::Scalar::all(1)));
    EXPECT_THAT(picture, EqualsMat(before));
    EXPECT_EQ(GetLastError(), error);
}

TEST(CalScalePixToMmUseCircle, HandsExceptionsToTheCallerAndTouchesNothing) {
    for (const cv::Mat& picture :
         {cv::Mat(), cv::Mat(0, 0, CV_8UC3), cv::Mat(0, 0, CV_8UC4), cv::Mat(1, 1, CV_8UC1, cv::Scalar(5)),
          cv::Mat(1, 9, CV_8UC3, cv::Scalar::all(5)), cv::Mat(90, 100, CV_8UC1, cv::Scalar(7)),
          cv::Mat(90, 100, CV_16UC1, cv::Scalar(7)), cv::Mat(90, 100, CV_32FC3, cv::Scalar::all(7))}) {
        SCOPED_TRACE(testing::Message() << picture.size() << " of " << cv::typeToString(picture.type()));
        cv::Point2f center = noCenter;
        double radius = noRadius;
        double scale = 3.0;
        EXPECT_THROW(CalScalePixToMmUseCircle(picture, realRadius, 0.0, center, radius, scale), cv::Exception);
        EXPECT_EQ(center, noCenter);
        EXPECT_EQ(radius, noRadius);
        EXPECT_EQ(scale, 3.0);
    }
}

/// The text of the exception that `action` throws; empty without one.
template <typename Action>
std::string ExceptionText(Action action) {
    try {
        action();
    } catch (const cv::Exception& failure) {
        return failure.what();
    }
    return {};
}

TEST(CalScalePixToMmUseCircle, HandsOnTheRefusalOfTheConversionToGray) {
    std::vector<cv::Mat> pictures{cv::Mat(0, 0, CV_8UC3), cv::Mat(0, 9, CV_8UC4), cv::Mat(0, 0, CV_64FC3)};
    for (const int depth : {CV_8S, CV_16S, CV_32S, CV_64F, CV_16F}) {
        for (const int channels : {3, 4}) pictures.emplace_back(90, 100, CV_MAKETYPE(depth, channels));
    }
    for (const cv::Mat& picture : pictures) {
        SCOPED_TRACE(testing::Message() << picture.size() << " of " << cv::typeToString(picture.type()));
        const std::string expected = ExceptionText([&] {
            cv::Mat gray;
            cv::cvtColor(picture, gray, picture.channels() == 3 ? cv::COLOR_BGR2GRAY : cv::COLOR_BGRA2GRAY);
        });
        EXPECT_FALSE(expected.empty());
        EXPECT_EQ(ExceptionText([&] { Measure(picture); }), expected);
        std::vector<cv::Point2f> centers;
        std::vector<double> radii;
        EXPECT_EQ(ExceptionText([&] { DetectCircleCandidates(picture, centers, radii); }), expected);
        cv::Point2f center;
        double radius = 0.0;
        EXPECT_EQ(ExceptionText([&] { FindCircleCross(picture, center, radius); }), expected);
    }
}

TEST(CalScalePixToMmUseCircle, GivesTheSameEachTime) {
    const cv::Mat picture = DiscScene().Noise(10.0, 9).Gray();
    const Scale first = Measure(picture);
    for (int i = 0; i < 5; ++i) ExpectSame(Measure(picture), first);
}

TEST(CalScalePixToMmUseCircle, SurvivesPicturesOfAnySmallSize) {
    RandomInput random(83);
    for (int i = 0; i < 150; ++i) {
        const cv::Mat picture = random.Image({random.Integer(1, 12), random.Integer(1, 12)}, i % 2 == 0 ? 1 : 3);
        try {
            ExpectNoCircle(Measure(picture));
        } catch (const cv::Exception&) {
            EXPECT_LE(std::max(picture.rows, picture.cols), 2) << "has gradients, yet was refused: " << picture;
        }
    }
}

}  // namespace
}  // namespace Quorvane::CameraCalibration
