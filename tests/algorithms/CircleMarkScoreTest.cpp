// The score of a single candidate; the search that asks for it is in CircleMarksTest.cpp.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "algorithms/CircleMarks.h"
#include "tests/reference/PlainCircleMarks.h"
#include "tests/support/Matchers.h"
#include "tests/support/Pictures.h"
#include "tests/support/RandomInput.h"
#include "tests/support/Scene.h"

namespace Quorvane {

using TestSupport::Disc;
using TestSupport::EqualsMat;
using TestSupport::RandomInput;
using TestSupport::Scene;

namespace {

struct Rings {
    cv::Mat inner;
    cv::Mat outer;
};

/// The two rings of a candidate of radius 20 in the middle of an image of 60 by 60, which its patch fills.
constexpr int ringRadius = 20;
constexpr int ringThickness = 4;
const cv::Size ringImage(60, 60);
const cv::Point ringCentre(30, 30);
const cv::Vec3f ringCandidate(30.0f, 30.0f, 20.0f);

Rings DrawRings() {
    Rings rings{cv::Mat::zeros(ringImage, CV_8UC1), cv::Mat::zeros(ringImage, CV_8UC1)};
    cv::circle(rings.inner, ringCentre, ringRadius, cv::Scalar(255), ringThickness);
    cv::circle(rings.outer, ringCentre, ringRadius + ringThickness, cv::Scalar(255), ringThickness);
    return rings;
}

double ShapeScoreOfPolygon(const std::vector<cv::Point>& polygon, int radius) {
    const double area = cv::contourArea(polygon);
    const double perimeter = cv::arcLength(polygon, true);
    const double expected = 2.0 * CV_PI * radius;
    const double miss = std::min(std::abs(perimeter - expected) / expected, 1.0);
    return (4.0 * CV_PI * area / (perimeter * perimeter) + 1.0 - miss) / 2.0;
}

TEST(CircleMarkScore, OfAFlatPatchIsTheShapeOfThePatchAlone) {
    // The patch of 60 by 60 is kept whole; its outline through the pixels' centres has sides of 59.
    const double roundness = 4.0 * CV_PI * 59.0 * 59.0 / (236.0 * 236.0);
    const double expected = 2.0 * CV_PI * 20.0;
    const double miss = (236.0 - expected) / expected;
    const double score = 0.7 * 0.5 * (roundness + 1.0 - miss);
    for (const int level : {0, 30, 128, 255}) {
        const cv::Mat flat(ringImage, CV_8UC1, cv::Scalar(level));
        EXPECT_FLOAT_EQ(CircleMarkScore(flat, ringCandidate), static_cast<float>(score)) << level;
    }
}

TEST(CircleMarkScore, WithoutAnyAreaIsContrastAlone) {
    // A single bright pixel and a bright line on the ring: they lift its mean above that outside, nothing else is kept,
    // and neither has an area.
    const Rings rings = DrawRings();
    cv::Mat image(ringImage, CV_8UC1, cv::Scalar(50));
    image.at<uchar>(30, 10) = 255;
    image(cv::Rect(50, 28, 1, 5)).setTo(255);
    ASSERT_EQ(cv::countNonZero(rings.inner & (image == 255)), 6);
    ASSERT_EQ(cv::countNonZero(rings.outer & (image == 255)), 0);
    const double mean = 255.0 * 6.0 / cv::countNonZero(rings.inner);
    const float contrast = static_cast<float>(mean) / 60.0f * 0.5f;
    EXPECT_EQ(CircleMarkScore(image, ringCandidate), static_cast<float>(static_cast<double>(contrast) * 0.3));
}

TEST(CircleMarkScore, WithoutAnyAreaOrContrastIsZero) {
    // Single dark pixels on white, 5 of the inner ring's 1100 and 6 of the outer one's 1320: the rings are equal, and
    // the dark side is points alone.
    constexpr int radius = 25;
    const cv::Size size(74, 74);
    const cv::Point centre(37, 37);
    cv::Mat inner = cv::Mat::zeros(size, CV_8UC1);
    cv::Mat outer = cv::Mat::zeros(size, CV_8UC1);
    cv::circle(inner, centre, radius, cv::Scalar(255), 5);
    cv::circle(outer, centre, radius + 5, cv::Scalar(255), 5);
    ASSERT_EQ(cv::countNonZero(inner), 1100);
    ASSERT_EQ(cv::countNonZero(outer), 1320);
    cv::Mat image(size, CV_8UC1, cv::Scalar(255));
    for (const int row : {33, 35, 37, 39, 41}) image.at<uchar>(row, 37 - 25) = 0;
    for (const int row : {32, 34, 36, 38, 40, 42}) image.at<uchar>(row, 37 + 31) = 0;
    ASSERT_EQ(cv::countNonZero(inner & (image == 0)), 5);
    ASSERT_EQ(cv::countNonZero(outer & (image == 0)), 6);
    EXPECT_EQ(CircleMarkScore(image, {37.0f, 37.0f, 25.0f}), 0.0f);
}

TEST(CircleMarkScore, OfEqualAreasTakesTheFirstContour) {
    // Two blocks whose outlines enclose 8 pixels each, one with a perimeter of 12 and the other of 18; a line on the
    // ring makes it the brighter one.
    cv::Mat image(ringImage, CV_8UC1, cv::Scalar(50));
    image(cv::Rect(28, 22, 5, 3)).setTo(255);
    image(cv::Rect(26, 35, 9, 2)).setTo(255);
    image(cv::Rect(50, 28, 1, 5)).setTo(255);
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(image == 255, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
    const auto first = std::find_if(contours.begin(), contours.end(),
                                    [](const auto& contour) { return cv::contourArea(contour) == 8.0; });
    ASSERT_EQ(contours.size(), 3U);
    const double mean = 255.0 * 5.0 / cv::countNonZero(DrawRings().inner);
    const double score = 0.3 * mean / 120.0 + 0.7 * ShapeScoreOfPolygon(*first, ringRadius);
    EXPECT_NEAR(CircleMarkScore(image, ringCandidate), score, 1e-6);
}

TEST(CircleMarkScore, TakesTheDarkSideWhereTheRingsAreEqual) {
    // Three black rows above the rings belong to the dark side; the whole patch is kept, but for one white pixel in it.
    cv::Mat image(ringImage, CV_8UC1, cv::Scalar(100));
    image.rowRange(0, 3).setTo(0);
    image.at<uchar>(30, 30) = 255;
    const std::vector<cv::Point> whole{{0, 0}, {0, 59}, {59, 59}, {59, 0}};
    EXPECT_NEAR(CircleMarkScore(image, ringCandidate), 0.7 * ShapeScoreOfPolygon(whole, ringRadius), 1e-6);
}

/// A mark filled with one level on a ground of another. The two extremes stand in corners, where no ring is, so that
/// the stretch changes nothing; the raise of contrast turns a level v into 1.7 v - 85.
cv::Mat MarkOnGround(uchar mark, uchar ground) {
    const Rings rings = DrawRings();
    cv::Mat image(ringImage, CV_8UC1, cv::Scalar(ground));
    cv::circle(image, ringCentre, ringRadius, cv::Scalar(mark), cv::FILLED);
    image.setTo(cv::Scalar(ground), rings.outer);
    image.setTo(cv::Scalar(mark), rings.inner & ~rings.outer);
    image.setTo(cv::Scalar(ground), rings.outer);
    image.at<uchar>(0, 0) = 0;
    image.at<uchar>(59, 59) = 255;
    return image;
}

/// The ring's share of pixels that the outer ring does not take from it, and the largest outline of the mark.
struct MarkFigures {
    double share;
    std::vector<cv::Point> outline;
};

MarkFigures FiguresOf(const cv::Mat& markPixels) {
    const Rings rings = DrawRings();
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(markPixels, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
    const auto largest = std::max_element(contours.begin(), contours.end(), [](const auto& a, const auto& b) {
        return cv::contourArea(a) < cv::contourArea(b);
    });
    return {static_cast<double>(cv::countNonZero(rings.inner & ~rings.outer)) / cv::countNonZero(rings.inner),
            *largest};
}

TEST(CircleMarkScore, GivesHalfTheContrastForSixtyLevelsAndAllFor254) {
    struct Row {
        uchar mark;
        uchar ground;
        double levels;
    };
    // 85 becomes 60 (59.5 in exact numbers, 59.500004 in floats), 130 becomes 136, 200 and more become 255.
    for (const Row& row : {Row{85, 50, 60.0}, Row{130, 50, 136.0}, Row{200, 50, 255.0}, Row{240, 10, 255.0}}) {
        const cv::Mat image = MarkOnGround(row.mark, row.ground);
        const MarkFigures figures = FiguresOf(image == row.mark);
        const double contrast = row.levels * figures.share;
        const double contrastScore =
            std::min(contrast <= 60.0 ? contrast / 120.0 : (contrast - 60.0) / 388.0 + 0.5, 1.0);
        const double score = 0.3 * contrastScore + 0.7 * ShapeScoreOfPolygon(figures.outline, ringRadius);
        // A ring mean below the mark's level keeps the mark; the corner of 255 is a region without area.
        EXPECT_NEAR(CircleMarkScore(image, ringCandidate), score, 1e-6) << static_cast<int>(row.mark);
    }
}

TEST(CircleMarkScore, RisesWithContrastUntilItIsFull) {
    float last = 0.0f;
    for (const int mark : {55, 70, 85, 100, 130, 160, 200}) {
        const float score = CircleMarkScore(MarkOnGround(static_cast<uchar>(mark), 50), ringCandidate);
        EXPECT_GT(score, last) << mark;
        last = score;
    }
    EXPECT_EQ(CircleMarkScore(MarkOnGround(230, 50), ringCandidate), last);
}

TEST(CircleMarkScore, RatesDarkMarksOnBrightGround) {
    for (const double radius : {12.0, 24.0, 60.0}) {
        const int side = static_cast<int>(radius * 4.0);
        const cv::Point2d centre(side / 2, side / 2);
        const auto middle = static_cast<float>(side / 2);
        const cv::Vec3f candidate(middle, middle, static_cast<float>(radius));
        const cv::Mat dark = Scene({side, side}, 220.0).Paint(Disc(centre, radius), 40.0).Gray();
        const cv::Mat bright = Scene({side, side}, 40.0).Paint(Disc(centre, radius), 220.0).Gray();
        EXPECT_GT(CircleMarkScore(dark, candidate), 0.75f) << radius;
        EXPECT_GT(CircleMarkScore(bright, candidate), 0.75f) << radius;
    }
}

TEST(CircleMarkScore, IsBelowOneEvenForThePerfectMark) {
    // The missing 0.001 pixels of the perimeter and a roundness that a polygon of pixels cannot reach.
    for (int radius = 3; radius < 60; ++radius) {
        cv::Mat image(4 * radius, 4 * radius, CV_8UC1, cv::Scalar(0));
        cv::circle(image, {2 * radius, 2 * radius}, radius + std::max(radius / 5, 3) / 2, cv::Scalar(255), cv::FILLED);
        const auto r = static_cast<float>(radius);
        EXPECT_LT(CircleMarkScore(image, {2.0f * r, 2.0f * r, r}), 1.0f) << radius;
    }
}

TEST(CircleMarkScore, MissesByAThousandthOfAPixelEvenWithThePerfectPerimeter) {
    // An octagon in a square of 150 with corners of 33 and 34 cut off: its perimeter, 332 + 134 roots of 2, is that of
    // a circle of radius 83 but for 0.0002 pixels.
    const std::vector<cv::Point> octagon{{33, 0},    {116, 0},  {150, 34}, {150, 117},
                                         {117, 150}, {34, 150}, {0, 116},  {0, 33}};
    const double expected = 2.0 * CV_PI * 83.0;
    const double perimeter = 332.0 + 134.0 * std::sqrt(2.0);
    ASSERT_LT(std::abs(perimeter - expected), 0.0003);
    ASSERT_NEAR(cv::arcLength(octagon, true), perimeter, 1e-4);
    cv::Mat image(332, 332, CV_8UC1, cv::Scalar(0));
    std::vector<cv::Point> placed;
    for (const cv::Point& corner : octagon) placed.push_back(corner + cv::Point(91, 91));
    cv::fillConvexPoly(image, placed, cv::Scalar(255));
    cv::Mat inner = cv::Mat::zeros(image.size(), CV_8UC1);
    cv::circle(inner, {166, 166}, 83, cv::Scalar(255), 16);
    const double contrast = std::min((cv::mean(image, inner)[0] - 60.0) / 388.0 + 0.5, 1.0);
    const double roundness = 4.0 * CV_PI * cv::contourArea(octagon) / (perimeter * perimeter);
    const double score = 0.3 * contrast + 0.35 * (roundness + 1.0 - 0.001 / expected);
    EXPECT_NEAR(CircleMarkScore(image, {166.0f, 166.0f, 83.0f}), score, 2e-7);
}

TEST(CircleMarkScore, RoundsACandidateToTheNearestEvenPixel) {
    const cv::Mat image = TestSupport::LoadGrayPicture("coins.png");
    EXPECT_EQ(CircleMarkScore(image, {100.5f, 56.5f, 18.5f}), CircleMarkScore(image, {100.0f, 56.0f, 18.0f}));
    EXPECT_EQ(CircleMarkScore(image, {101.5f, 57.5f, 19.5f}), CircleMarkScore(image, {102.0f, 58.0f, 20.0f}));
}

TEST(CircleMarkScore, EqualsThePlainScoreEverywhereInAPicture) {
    RandomInput random(41);
    const cv::Mat gray = TestSupport::LoadGrayPicture("coins.png");
    for (int i = 0; i < 1500; ++i) {
        const cv::Vec3f candidate(static_cast<float>(random.Real(0.0, gray.cols - 1)),
                                  static_cast<float>(random.Real(0.0, gray.rows - 1)),
                                  static_cast<float>(random.Real(3.0, 60.0)));
        ASSERT_EQ(CircleMarkScore(gray, candidate), Reference::CircleMarkScore(gray, candidate)) << candidate;
    }
}

TEST(CircleMarkScore, EqualsThePlainScoreOnNoiseAndInColour) {
    RandomInput random(42);
    for (int i = 0; i < 300; ++i) {
        const int channels = std::vector<int>{1, 3, 4}[static_cast<std::size_t>(i % 3)];
        const int least = random.Integer(0, 250);
        const cv::Mat image = random.Image({90, 80}, channels, least, random.Integer(least, 255));
        const cv::Vec3f candidate(static_cast<float>(random.Real(0.0, 89.0)),
                                  static_cast<float>(random.Real(0.0, 79.0)),
                                  static_cast<float>(random.Real(3.0, 25.0)));
        ASSERT_EQ(CircleMarkScore(image, candidate), Reference::CircleMarkScore(image, candidate)) << candidate;
    }
}

TEST(CircleMarkScore, MovesThePatchInwardAtTheLeftAndTop) {
    // The patch of a candidate at column 5 is the one of columns 0 to 72, with the ring around column 5 in it.
    const cv::Mat image = Scene({150, 150}, 40.0).Paint(Disc({5.0, 75.0}, 24.0), 220.0).Gray();
    const cv::Mat patch = image(cv::Rect(0, 39, 72, 72)).clone();
    EXPECT_EQ(CircleMarkScore(image, {5.0f, 75.0f, 24.0f}), CircleMarkScore(patch, {5.0f, 36.0f, 24.0f}));
    // A speck in column 71, outside of a patch that were cut at the left, changes the stretch.
    cv::Mat speckled = image.clone();
    speckled.at<uchar>(75, 71) = 0;
    EXPECT_NE(CircleMarkScore(speckled, {5.0f, 75.0f, 24.0f}), CircleMarkScore(image, {5.0f, 75.0f, 24.0f}));
    speckled = image.clone();
    speckled.at<uchar>(75, 72) = 0;
    EXPECT_EQ(CircleMarkScore(speckled, {5.0f, 75.0f, 24.0f}), CircleMarkScore(image, {5.0f, 75.0f, 24.0f}));
}

TEST(CircleMarkScore, CutsThePatchAtTheRightAndBottom) {
    const cv::Mat image = Scene({150, 150}, 40.0).Paint(Disc({145.0, 140.0}, 24.0), 220.0).Gray();
    const cv::Mat patch = image(cv::Rect(109, 104, 41, 46)).clone();
    EXPECT_EQ(CircleMarkScore(image, {145.0f, 140.0f, 24.0f}),
              Reference::CircleMarkScore(image, {145.0f, 140.0f, 24.0f}));
    cv::Mat elsewhere = RandomInput(43).Image(image.size());
    patch.copyTo(elsewhere(cv::Rect(109, 104, 41, 46)));
    EXPECT_EQ(CircleMarkScore(image, {145.0f, 140.0f, 24.0f}), CircleMarkScore(elsewhere, {145.0f, 140.0f, 24.0f}));
}

TEST(CircleMarkScore, WithoutAnyRingPixelInThePatchIsZero) {
    const cv::Mat image = RandomInput(44).Image({150, 150});
    EXPECT_EQ(CircleMarkScore(image, {-60.0f, 75.0f, 24.0f}), 0.0f);
    EXPECT_EQ(CircleMarkScore(image, {75.0f, -60.0f, 24.0f}), 0.0f);
}

TEST(CircleMarkScore, WithOneOfTheRingsOutsideIsZero) {
    // At column -27 the outer ring still reaches into the image and the inner one, of radius 24, does not.
    const cv::Mat image = RandomInput(45).Image({150, 150});
    EXPECT_EQ(CircleMarkScore(image, {-27.0f, 75.0f, 24.0f}), 0.0f);
    EXPECT_GT(CircleMarkScore(image, {-20.0f, 75.0f, 24.0f}), 0.0f);
}

TEST(CircleMarkScore, OfARadiusOfOneHasNoOuterRingAndIsZero) {
    // The patch of 2 by 2 pixels lies in the inner ring, and the outer one, of radius 4, around it.
    const cv::Mat image(30, 30, CV_8UC1, cv::Scalar(200));
    EXPECT_EQ(CircleMarkScore(image, {15.0f, 15.0f, 1.0f}), 0.0f);
    EXPECT_GT(CircleMarkScore(image, {15.0f, 15.0f, 2.0f}), 0.0f);
}

TEST(CircleMarkScore, InATooSmallImageIsOpenCvsException) {
    const cv::Mat image = RandomInput(46).Image({60, 150});
    EXPECT_THROW(CircleMarkScore(image, {20.0f, 75.0f, 24.0f}), cv::Exception);
    EXPECT_NO_THROW(CircleMarkScore(image, {40.0f, 75.0f, 24.0f}));
    EXPECT_THROW(CircleMarkScore(cv::Mat(), {20.0f, 75.0f, 24.0f}), cv::Exception);
}

TEST(CircleMarkScore, OfOtherChannelCountsIsZero) {
    for (const int channels : {2, 5}) {
        EXPECT_EQ(CircleMarkScore(RandomInput(47).Image({100, 100}, channels), {50.0f, 50.0f, 20.0f}), 0.0f);
    }
}

TEST(CircleMarkScore, LeavesTheImageAlone) {
    const cv::Mat image = RandomInput(48).Image({100, 100});
    const cv::Mat before = image.clone();
    CircleMarkScore(image, {50.0f, 50.0f, 20.0f});
    EXPECT_THAT(image, EqualsMat(before));
}

}  // namespace
}  // namespace Quorvane
