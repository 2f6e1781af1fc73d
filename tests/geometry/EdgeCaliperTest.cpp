#include "geometry/EdgeCaliper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <opencv2/core.hpp>
#include <stdexcept>
#include <string>

#include "tests/reference/PlainEdgeCaliper.h"
#include "tests/support/Matchers.h"
#include "tests/support/Pictures.h"
#include "tests/support/RandomInput.h"

namespace Quorvane {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using TestSupport::RandomInput;
using UtilityFunctions::EdgeCaliper;

namespace {

struct Edges {
    bool found = false;
    std::vector<double> rows;
    std::vector<double> columns;
    std::vector<double> amplitudes;
    std::vector<double> distances;
};

/// All rows alike, with the given gray levels.
cv::Mat PictureOfProfile(const std::vector<int>& levels, int height = 21) {
    cv::Mat picture(height, static_cast<int>(levels.size()), CV_8UC1);
    for (int x = 0; x < picture.cols; ++x) picture.col(x).setTo(levels[static_cast<std::size_t>(x)]);
    return picture;
}

std::vector<int> Levels(std::initializer_list<std::pair<int, int>> runs) {
    std::vector<int> levels;
    for (const auto& [count, level] : runs) levels.insert(levels.end(), static_cast<std::size_t>(count), level);
    return levels;
}

/// A caliper along row 10 whose first sample is column 0 and whose last one is column `last`.
EdgeCaliper AlongTheRow(int last, const std::string& interpolation = "bilinear", double angle = 0.0) {
    EdgeCaliper caliper;
    caliper.configure(10.0, last / 2.0, angle, last / 2.0, 2.5, cv::Mat(), interpolation);
    return caliper;
}

Edges Measure(EdgeCaliper caliper, const cv::Mat& image, double sigma = 1.0, double threshold = 30.0,
              const std::string& transition = "all", const std::string& select = "all") {
    Edges edges;
    edges.found = caliper.measure(image, sigma, threshold, transition, select, edges.rows, edges.columns,
                                  edges.amplitudes, edges.distances);
    return edges;
}

TEST(EdgeCaliper, BeginsUnconfigured) {
    EdgeCaliper caliper;
    EXPECT_THAT(caliper.sampleGrid, IsEmpty());
    EXPECT_THAT(caliper.centerLine, IsEmpty());
    EXPECT_EQ(caliper.interpolation, "");
    EXPECT_FALSE(caliper.debugEnabled);
    EXPECT_EQ(caliper.displayWidth, 1600);
    EXPECT_EQ(caliper.displayHeight, 900);
    EXPECT_FALSE(Measure(caliper, PictureOfProfile(Levels({{20, 0}, {20, 255}}))).found);
}

TEST(EdgeCaliper, LaysItsGridFromMinusHalfLengthOn) {
    EdgeCaliper caliper;
    caliper.configure(100.0, 200.0, 0.0, 10.3, 2.5, cv::Mat(), "bilinear");
    EXPECT_EQ(caliper.profileLength, 21);
    ASSERT_THAT(caliper.sampleGrid, SizeIs(21));
    ASSERT_THAT(caliper.sampleGrid[0], SizeIs(6));
    ASSERT_THAT(caliper.centerLine, SizeIs(21));
    EXPECT_THAT(caliper.centerLine[0], TestSupport::NearPoint(cv::Point2d(189.7, 100.0), 1e-12));
    EXPECT_THAT(caliper.centerLine[20], TestSupport::NearPoint(cv::Point2d(209.7, 100.0), 1e-12));
    EXPECT_THAT(caliper.sampleGrid[0][0], TestSupport::NearPoint(cv::Point2d(189.7, 97.5), 1e-12));
    EXPECT_THAT(caliper.sampleGrid[0][5], TestSupport::NearPoint(cv::Point2d(189.7, 102.5), 1e-12));
}

TEST(EdgeCaliper, TurnsItsGridFromXTowardsY) {
    EdgeCaliper caliper;
    caliper.configure(100.0, 200.0, CV_PI / 2.0, 10.0, 5.0, cv::Mat(), "bilinear");
    ASSERT_THAT(caliper.sampleGrid[0], SizeIs(11));
    EXPECT_THAT(caliper.centerLine[0], TestSupport::NearPoint(cv::Point2d(200.0, 90.0), 1e-12));
    EXPECT_THAT(caliper.sampleGrid[0][0], TestSupport::NearPoint(cv::Point2d(205.0, 90.0), 1e-12));
}

TEST(EdgeCaliper, CanBeConfiguredAgain) {
    EdgeCaliper caliper = AlongTheRow(40);
    caliper.configure(1.0, 2.0, 0.5, 3.0, 1.0, cv::Mat(), "nearest");
    EXPECT_THAT(caliper.sampleGrid, SizeIs(7));
    EXPECT_THAT(caliper.centerLine, SizeIs(7));
    EXPECT_THAT(caliper.sampleGrid[0], SizeIs(3));
    EXPECT_EQ(caliper.interpolation, "nearest");
}

TEST(EdgeCaliper, MeasuresACleanStepHalfwayBetweenItsSamples) {
    const cv::Mat step = PictureOfProfile(Levels({{20, 0}, {22, 255}}));
    const Edges edges = Measure(AlongTheRow(40), step, 1.0, 30.0, "positive", "first");
    ASSERT_TRUE(edges.found);
    EXPECT_NEAR(edges.columns[0], 19.5, 1e-9);
    EXPECT_NEAR(edges.rows[0], 10.0, 1e-12);
    EXPECT_NEAR(edges.amplitudes[0], 319.6, 0.05);
    EXPECT_NEAR(edges.amplitudes[0], 255.0 * 0.5 * std::sqrt(2.0 * CV_PI), 1e-9);
    EXPECT_THAT(edges.distances, IsEmpty());
    EXPECT_FALSE(Measure(AlongTheRow(40), step, 1.0, 30.0, "negative", "first").found);
}

TEST(EdgeCaliper, FindsTheSameStepNegativeFromTheOtherSide) {
    const cv::Mat step = PictureOfProfile(Levels({{20, 0}, {22, 255}}));
    const Edges edges = Measure(AlongTheRow(40, "bilinear", CV_PI), step, 1.0, 30.0, "negative", "first");
    ASSERT_TRUE(edges.found);
    EXPECT_NEAR(edges.columns[0], 19.5, 1e-9);
    EXPECT_NEAR(edges.amplitudes[0], -319.6, 0.05);
    EXPECT_FALSE(Measure(AlongTheRow(40, "bilinear", CV_PI), step, 1.0, 30.0, "positive", "first").found);
}

TEST(EdgeCaliper, TakesANeighbourOfTheEdgeFirstAsItComesFirst) {
    const cv::Mat ramp = PictureOfProfile(Levels({{20, 0}, {1, 128}, {21, 255}}));
    const Edges all = Measure(AlongTheRow(40), ramp);
    ASSERT_THAT(all.columns, SizeIs(testing::Ge(2u)));
    EXPECT_NEAR(all.columns[0], 21.70, 0.005);
    EXPECT_NEAR(all.amplitudes[0], 213.57, 0.005);
    EXPECT_NEAR(all.columns[1], 20.00, 0.005);
    EXPECT_NEAR(all.amplitudes[1], 319.60, 0.005);
    const Edges first = Measure(AlongTheRow(40), ramp, 1.0, 30.0, "all", "first");
    EXPECT_THAT(first.columns, ElementsAre(all.columns[0]));
    EXPECT_THAT(first.amplitudes, ElementsAre(all.amplitudes[0]));
}

TEST(EdgeCaliper, SelectsFirstLastOrAllEdges) {
    const cv::Mat bar = PictureOfProfile(Levels({{15, 0}, {20, 200}, {16, 0}}));
    const Edges first = Measure(AlongTheRow(50), bar, 1.0, 30.0, "all", "first");
    EXPECT_THAT(first.columns, SizeIs(1));
    EXPECT_THAT(first.rows, SizeIs(1));
    EXPECT_THAT(first.amplitudes, SizeIs(1));
    EXPECT_THAT(first.distances, IsEmpty());
    EXPECT_NEAR(first.columns[0], 14.5, 1e-9);
    const Edges last = Measure(AlongTheRow(50), bar, 1.0, 30.0, "all", "last");
    ASSERT_THAT(last.columns, SizeIs(1));
    EXPECT_LT(last.amplitudes[0], 0.0);
    const Edges all = Measure(AlongTheRow(50), bar);
    ASSERT_THAT(all.columns, SizeIs(testing::Ge(2u)));
    EXPECT_THAT(all.distances, SizeIs(all.columns.size() - 1));
    EXPECT_EQ(all.columns.front(), first.columns[0]);
    EXPECT_EQ(all.columns.back(), last.columns[0]);
    for (std::size_t i = 0; i < all.distances.size(); ++i) {
        EXPECT_DOUBLE_EQ(all.distances[i],
                         std::hypot(all.columns[i + 1] - all.columns[i], all.rows[i + 1] - all.rows[i]));
    }
}

TEST(EdgeCaliper, LimitsSigmaFromBelow) {
    const cv::Mat step = PictureOfProfile(Levels({{20, 0}, {22, 255}}));
    for (const double sigma : {0.0, -3.0, 0.4, std::numeric_limits<double>::quiet_NaN()}) {
        const Edges edges = Measure(AlongTheRow(40), step, sigma, 30.0, "positive", "first");
        ASSERT_TRUE(edges.found) << sigma;
        EXPECT_NEAR(edges.amplitudes[0], 255.0 * 0.5 * std::sqrt(2.0 * CV_PI) * 0.4, 1e-9) << sigma;
    }
}

TEST(EdgeCaliper, LimitsSigmaFromAboveByItsLength) {
    const cv::Mat step = PictureOfProfile(Levels({{20, 0}, {22, 255}}));
    const Edges limited = Measure(AlongTheRow(40), step, 1000.0, 0.0, "positive", "all");
    const Edges asked = Measure(AlongTheRow(40), step, 10.0, 0.0, "positive", "all");
    EXPECT_TRUE(limited.found);
    EXPECT_EQ(limited.amplitudes, asked.amplitudes);
    EXPECT_EQ(limited.columns, asked.columns);
}

TEST(EdgeCaliper, FindsNothingInAProfileOfLessThanFiveSamples) {
    for (const double halfLength : {-5.0, -0.4, 0.0, 0.3, 0.5, 1.0, 1.5, 1.99}) {
        EdgeCaliper caliper;
        const cv::Mat step = PictureOfProfile(Levels({{20, 0}, {22, 255}}));
        caliper.configure(10.0, 19.5, 0.0, halfLength, 2.5, step, "bilinear");
        EXPECT_FALSE(Measure(caliper, step, 1.0, 0.0).found) << halfLength;
    }
    EdgeCaliper shortest;
    shortest.configure(10.0, 20.0, 0.0, 0.5, 2.5, cv::Mat(), "bilinear");
    EXPECT_EQ(shortest.profileLength, 2);
}

TEST(EdgeCaliper, FindsNoEdgeWithinTwoSamplesOfAnEnd) {
    // The edge lies half a sample before the place: the one at 1.5 belongs to sample 2, too, and is found.
    for (const int place : {1, 40}) {
        const cv::Mat step = PictureOfProfile(Levels({{place, 0}, {50 - place, 255}}));
        EXPECT_FALSE(Measure(AlongTheRow(40), step, 0.4, 100.0, "positive").found) << place;
    }
    for (const int place : {2, 3, 38, 39}) {
        const cv::Mat step = PictureOfProfile(Levels({{place, 0}, {50 - place, 255}}));
        EXPECT_TRUE(Measure(AlongTheRow(40), step, 0.4, 100.0, "positive").found) << place;
    }
}

TEST(EdgeCaliper, TakesEveryTurningPointWithThresholdZero) {
    const cv::Mat faint = PictureOfProfile(Levels({{20, 100}, {22, 101}}));
    EXPECT_FALSE(Measure(AlongTheRow(40), faint, 1.0, 30.0).found);
    EXPECT_TRUE(Measure(AlongTheRow(40), faint, 1.0, 0.0).found);
}

TEST(EdgeCaliper, TakesTheLowPointBetweenTwoEdgesForAnEdge) {
    const cv::Mat stairs = PictureOfProfile(Levels({{18, 0}, {5, 100}, {19, 200}}));
    const Edges low = Measure(AlongTheRow(40), stairs, 1.5, 30.0, "positive");
    EXPECT_THAT(low.columns, testing::Contains(testing::DoubleNear(20.0, 1e-9))) << "half way between 17.5 and 22.5";
    const Edges high = Measure(AlongTheRow(40), stairs, 1.5, 150.0, "positive");
    EXPECT_THAT(high.columns, Not(testing::Contains(testing::DoubleNear(20.0, 1.0))));
    EXPECT_THAT(high.columns, SizeIs(testing::Ge(2u)));
}

TEST(EdgeCaliper, AcceptsAnAmplitudeOfExactlyTheThreshold) {
    const cv::Mat step = PictureOfProfile(Levels({{20, 0}, {22, 255}}));
    const double amplitude = Measure(AlongTheRow(40), step, 1.0, 300.0).amplitudes.at(0);
    EXPECT_TRUE(Measure(AlongTheRow(40), step, 1.0, amplitude).found);
    EXPECT_FALSE(Measure(AlongTheRow(40), step, 1.0, std::nextafter(amplitude, 1e9)).found);
}

TEST(EdgeCaliper, SeesAFalseDropWhereItReachesTheBorder) {
    const cv::Mat white(21, 41, CV_8UC1, cv::Scalar(200));
    const Edges alongTheBorder = Measure(AlongTheRow(45), white, 1.0, 30.0, "negative");
    ASSERT_TRUE(alongTheBorder.found);
    EXPECT_NEAR(alongTheBorder.columns[0], 39.5, 1e-9)
        << "between the last column but one and the last, which reads as 0";
    EdgeCaliper overTheLastRow;
    overTheLastRow.configure(18.0, 20.0, 0.0, 15.0, 2.5, white, "bilinear");  // rows 15.5 to 20.5
    EXPECT_FALSE(Measure(overTheLastRow, white, 1.0, 0.5).found) << "the drop is the same for every sample";
    EXPECT_THAT(Measure(AlongTheRow(45, "nearest"), white, 1.0, 30.0, "negative").columns.at(0),
                testing::DoubleNear(40.5, 1e-9));
}

TEST(EdgeCaliper, RefusesUnknownWordsAndLeavesTheOutputsAlone) {
    const cv::Mat step = PictureOfProfile(Levels({{20, 0}, {22, 255}}));
    std::vector<double> rows{1.0};
    std::vector<double> columns{2.0};
    std::vector<double> amplitudes{3.0};
    std::vector<double> distances{4.0};
    const auto measure = [&](const std::string& transition, const std::string& select) {
        EdgeCaliper caliper = AlongTheRow(40);
        caliper.measure(step, 1.0, 30.0, transition, select, rows, columns, amplitudes, distances);
    };
    for (const std::string transition : {"", "Positive", "both", "all "}) {
        TestSupport::ExpectThrowWithText<std::invalid_argument>([&] { measure(transition, "first"); },
                                                                "Invalid transition parameter");
    }
    for (const std::string select : {"", "First", "best"}) {
        TestSupport::ExpectThrowWithText<std::invalid_argument>([&] { measure("all", select); },
                                                                "Invalid select parameter");
    }
    TestSupport::ExpectThrowWithText<std::invalid_argument>([&] { measure("both", "best"); },
                                                            "Invalid transition parameter");
    EXPECT_THAT(rows, ElementsAre(1.0));
    EXPECT_THAT(columns, ElementsAre(2.0));
    EXPECT_THAT(amplitudes, ElementsAre(3.0));
    EXPECT_THAT(distances, ElementsAre(4.0));
}

TEST(EdgeCaliper, EmptiesTheOutputsWhereItFindsNothing) {
    std::vector<double> rows{1.0};
    std::vector<double> columns{2.0};
    std::vector<double> amplitudes{3.0};
    std::vector<double> distances{4.0};
    EdgeCaliper caliper = AlongTheRow(40);
    EXPECT_FALSE(caliper.measure(cv::Mat(21, 41, CV_8UC1, cv::Scalar(77)), 1.0, 30.0, "all", "all", rows, columns,
                                 amplitudes, distances));
    EXPECT_THAT(rows, IsEmpty());
    EXPECT_THAT(columns, IsEmpty());
    EXPECT_THAT(amplitudes, IsEmpty());
    EXPECT_THAT(distances, IsEmpty());
}

TEST(EdgeCaliper, ReadsFourDepths) {
    const cv::Mat step = PictureOfProfile(Levels({{20, 10}, {22, 210}}));
    const Edges expected = Measure(AlongTheRow(40), step, 1.0, 30.0);
    ASSERT_TRUE(expected.found);
    for (const int depth : {CV_16U, CV_32F, CV_64F}) {
        cv::Mat image;
        step.convertTo(image, depth);
        for (const std::string interpolation : {"nearest", "bilinear", "bicubic"}) {
            EXPECT_EQ(Measure(AlongTheRow(40, interpolation), image).amplitudes,
                      Measure(AlongTheRow(40, interpolation), step).amplitudes)
                << cv::depthToString(depth) << ", " << interpolation;
        }
    }
}

TEST(EdgeCaliper, FindsNothingInOtherDepthsAndChannelCounts) {
    const cv::Mat step = PictureOfProfile(Levels({{20, 0}, {22, 100}}));
    for (const int depth : {CV_8S, CV_16S, CV_32S, CV_16F}) {
        cv::Mat image;
        step.convertTo(image, depth);
        EXPECT_FALSE(Measure(AlongTheRow(40), image).found) << cv::depthToString(depth);
    }
    for (const int channels : {2, 5}) {
        cv::Mat image;
        cv::merge(std::vector<cv::Mat>(static_cast<std::size_t>(channels), step), image);
        EXPECT_FALSE(Measure(AlongTheRow(40), image).found) << channels;
    }
    EXPECT_FALSE(Measure(AlongTheRow(40), cv::Mat()).found);
    EXPECT_FALSE(Measure(AlongTheRow(40), cv::Mat(0, 0, CV_8UC3)).found);
    const int cube[] = {4, 40, 40};
    EXPECT_FALSE(Measure(AlongTheRow(40), cv::Mat(3, cube, CV_8UC1, cv::Scalar(9))).found);
}

TEST(EdgeCaliper, ConvertsColourToGray) {
    const cv::Mat step = PictureOfProfile(Levels({{20, 0}, {22, 255}}));
    cv::Mat colour;
    cv::merge(std::vector<cv::Mat>{step, step, step}, colour);
    EXPECT_NEAR(Measure(AlongTheRow(40), colour).amplitudes.at(0), 319.6, 0.05);
    cv::merge(std::vector<cv::Mat>{step, step, step, cv::Mat::zeros(step.size(), CV_8UC1)}, colour);
    EXPECT_NEAR(Measure(AlongTheRow(40), colour).amplitudes.at(0), 319.6, 0.05);
    EXPECT_THROW(Measure(AlongTheRow(40), cv::Mat::zeros(21, 42, CV_64FC3)), cv::Exception);
}

TEST(EdgeCaliper, FindsNothingOutsideTheImage) {
    const cv::Mat step = PictureOfProfile(Levels({{20, 0}, {22, 255}}));
    for (const cv::Point2d& center : {cv::Point2d(-100, 10), cv::Point2d(20, 100), cv::Point2d(200, -50),
                                      cv::Point2d(1e300, 10), cv::Point2d(std::nan(""), 10)}) {
        EdgeCaliper caliper;
        caliper.configure(center.y, center.x, 0.0, 20.0, 2.5, step, "bilinear");
        EXPECT_FALSE(Measure(caliper, step, 1.0, 0.0).found) << center;
    }
}

TEST(EdgeCaliper, DoesNotChangeTheImageOrItself) {
    const cv::Mat image = RandomInput(8).Image({60, 40});
    const cv::Mat copy = image.clone();
    EdgeCaliper caliper;
    caliper.configure(20.0, 30.0, 0.7, 18.0, 2.5, image, "bicubic");
    const Edges first = Measure(caliper, image, 1.0, 5.0);
    EXPECT_EQ(Measure(caliper, image, 1.0, 5.0).columns, first.columns);
    EXPECT_THAT(image, TestSupport::EqualsMat(copy));
}

TEST(EdgeCaliper, TreatsOtherInterpolationsAsBilinear) {
    const cv::Mat image = RandomInput(9).Image({60, 40});
    EdgeCaliper bilinear;
    EdgeCaliper other;
    bilinear.configure(20.0, 30.0, 0.7, 18.0, 2.5, image, "bilinear");
    other.configure(20.0, 30.0, 0.7, 18.0, 2.5, image, "Nearest");
    const Edges expected = Measure(bilinear, image, 1.0, 5.0);
    EXPECT_TRUE(expected.found);
    EXPECT_EQ(Measure(other, image, 1.0, 5.0).columns, expected.columns);
}

/// The library's caliper and the plain one, configured and run alike, must agree to the last bit.
void ExpectEqualToPlain(RandomInput& random, const cv::Mat& image) {
    const double row = random.Real(-10.0, image.rows + 10.0);
    const double column = random.Real(-10.0, image.cols + 10.0);
    const double angle = random.Integer(0, 2) == 0 ? random.Integer(-2, 2) * CV_PI / 2.0 : random.Real(-7.0, 7.0);
    const double halfLength = random.Integer(0, 1) == 0 ? random.Integer(0, 80) / 2.0 : random.Real(0.0, 60.0);
    const double halfWidth = random.Integer(0, 1) == 0 ? 2.5 : random.Real(0.0, 8.0);
    const std::vector<std::string> interpolations{"nearest", "bilinear", "bicubic", ""};
    const std::vector<std::string> transitions{"all", "positive", "negative"};
    const std::vector<std::string> selections{"all", "first", "last"};
    const std::string interpolation = interpolations[static_cast<std::size_t>(random.Integer(0, 3))];
    const std::string transition = transitions[static_cast<std::size_t>(random.Integer(0, 2))];
    const std::string select = selections[static_cast<std::size_t>(random.Integer(0, 2))];
    const double sigma = random.Real(0.0, 5.0);
    const double threshold = random.Integer(0, 3) == 0 ? 0.0 : random.Real(0.0, 60.0);

    EdgeCaliper caliper;
    caliper.configure(row, column, angle, halfLength, halfWidth, image, interpolation);
    Reference::EdgeCaliper plain;
    plain.configure(row, column, angle, halfLength, halfWidth, interpolation);
    Edges expected;
    expected.found = plain.measure(image, sigma, threshold, transition, select, expected.rows, expected.columns,
                                   expected.amplitudes, expected.distances);
    const Edges edges = Measure(caliper, image, sigma, threshold, transition, select);
    EXPECT_EQ(edges.found, expected.found);
    EXPECT_EQ(edges.rows, expected.rows);
    EXPECT_EQ(edges.columns, expected.columns);
    EXPECT_EQ(edges.amplitudes, expected.amplitudes);
    EXPECT_EQ(edges.distances, expected.distances);
}

TEST(EdgeCaliper, EqualsThePlainCaliperOnRandomImages) {
    RandomInput random(30);
    for (int i = 0; i < 8000 && !testing::Test::HasFailure(); ++i) {
        const std::vector<int> channelCounts{1, 1, 1, 2, 3, 4};
        const int channels = channelCounts[static_cast<std::size_t>(random.Integer(0, 5))];
        cv::Mat image = random.Image({random.Integer(1, 90), random.Integer(1, 60)}, channels);
        const std::vector<int> depths{CV_8U, CV_8U, CV_16U, CV_32F, channels < 3 ? CV_64F : CV_32F};
        image.convertTo(image, depths[static_cast<std::size_t>(random.Integer(0, 4))], random.Real(0.5, 1.0));
        SCOPED_TRACE("case " + std::to_string(i));
        ExpectEqualToPlain(random, image);
    }
}

TEST(EdgeCaliper, EqualsThePlainCaliperOnPictures) {
    RandomInput random(31);
    for (const std::string& name : TestSupport::PictureNames()) {
        for (const cv::Mat& picture : {TestSupport::LoadColourPicture(name), TestSupport::LoadGrayPicture(name)}) {
            for (int i = 0; i < 300 && !testing::Test::HasFailure(); ++i) {
                SCOPED_TRACE(name + ", case " + std::to_string(i));
                ExpectEqualToPlain(random, picture);
            }
        }
    }
}

}  // namespace
}  // namespace Quorvane
