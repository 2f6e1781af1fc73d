#include "algorithms/TargetExtraction.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "tests/reference/PlainTargetExtraction.h"
#include "tests/support/Matchers.h"
#include "tests/support/Pictures.h"
#include "tests/support/RandomInput.h"
#include "tests/support/Scene.h"

namespace Quorvane {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using TestSupport::EqualsMat;
using TestSupport::NearPoint;
using TestSupport::RandomInput;
using TestSupport::Scene;

using Contour = std::vector<cv::Point>;

namespace {

constexpr double colourLimit = 10.0;
constexpr int directions = 8;
constexpr int side = 20;

Contour RegionOf(const cv::Mat& image, cv::Point seed) {
    return FindColourRegion(image, seed, colourLimit, directions, side, false);
}

/// The outline of a rectangle of pixels, as a tracer of outermost pixels gives it.
testing::Matcher<Contour> OutlinesRectangle(const cv::Rect& r) {
    return UnorderedElementsAre(r.tl(), cv::Point(r.x + r.width - 1, r.y), cv::Point(r.x, r.y + r.height - 1),
                                cv::Point(r.x + r.width - 1, r.y + r.height - 1));
}

/// Two grays whose Lab colours are exactly ten apart.
std::pair<cv::Vec3b, cv::Vec3b> GraysTenApart() {
    for (int a = 0; a < 256; ++a) {
        for (int b = a + 1; b < 256; ++b) {
            const cv::Vec3b first = cv::Vec3b::all(static_cast<uchar>(a));
            const cv::Vec3b second = cv::Vec3b::all(static_cast<uchar>(b));
            if (LabColourDistance(first, second) == 10.0) return {first, second};
        }
    }
    throw std::logic_error("no such grays");
}

/// A picture of flat patches with a little noise, so that regions of many forms grow.
cv::Mat Patchwork(RandomInput& random, cv::Size size) {
    cv::Mat image(size, CV_8UC3, cv::Scalar(random.Integer(0, 255), random.Integer(0, 255), random.Integer(0, 255)));
    const int count = random.Integer(0, 12);
    for (int i = 0; i < count; ++i) {
        const cv::Scalar colour(random.Integer(0, 255), random.Integer(0, 255), random.Integer(0, 255));
        const cv::Point centre(random.Integer(0, size.width), random.Integer(0, size.height));
        cv::ellipse(image, centre, {random.Integer(1, 60), random.Integer(1, 60)}, random.Real(0.0, 180.0), 0.0, 360.0,
                    colour, cv::FILLED);
    }
    return image + random.Image(size, 3, 0, random.Integer(0, 14));
}

TEST(LabColourDistance, IsThatOfTheEightBitLabValues) {
    EXPECT_EQ(LabColourDistance({0, 0, 0}, {255, 255, 255}), 255.0);
    EXPECT_EQ(LabColourDistance({12, 200, 90}, {12, 200, 90}), 0.0);
    RandomInput random(40);
    for (int i = 0; i < 200; ++i) {
        const cv::Mat pair = random.Image({2, 1}, 3);
        cv::Mat lab;
        cv::cvtColor(pair, lab, cv::COLOR_BGR2Lab);
        const double expected = cv::norm(cv::Vec3d(lab.at<cv::Vec3b>(0, 0)) - cv::Vec3d(lab.at<cv::Vec3b>(0, 1)));
        EXPECT_DOUBLE_EQ(LabColourDistance(pair.at<cv::Vec3b>(0, 0), pair.at<cv::Vec3b>(0, 1)), expected);
    }
}

TEST(LabConversion, DependsOnNothingButThePixelsOwnColour) {
    // Every colour of a grid, at every phase of the vector loops that a row can have, against one pixel by itself.
    cv::Mat colours;
    for (int b = 0; b < 256; b += 15) {
        for (int g = 0; g < 256; g += 15) {
            for (int r = 0; r < 256; r += 15) {
                colours.push_back(cv::Vec3b(static_cast<uchar>(b), static_cast<uchar>(g), static_cast<uchar>(r)));
            }
        }
    }
    cv::Mat alone(colours.size(), CV_8UC3);
    for (int i = 0; i < colours.rows; ++i) cv::cvtColor(colours.row(i), alone.row(i), cv::COLOR_BGR2Lab);
    for (const int width : {1, 2, 3, 5, 7, 8, 15, 16, 17, 19, 20, 31, 32, 33, 63, 64, 65, 4913}) {
        const int rows = colours.rows / width;
        const cv::Mat image = colours.rowRange(0, rows * width).reshape(3, rows);
        cv::Mat lab;
        cv::cvtColor(image, lab, cv::COLOR_BGR2Lab);
        EXPECT_THAT(lab, EqualsMat(alone.rowRange(0, rows * width).reshape(3, rows))) << width;
        // A window of the image, whose rows begin anywhere in memory.
        if (width < 4) continue;
        const cv::Rect window(1, rows > 2 ? 1 : 0, width - 2, rows > 2 ? rows - 2 : rows);
        cv::cvtColor(image(window), lab, cv::COLOR_BGR2Lab);
        EXPECT_THAT(lab, EqualsMat(alone.rowRange(0, rows * width).reshape(3, rows)(window))) << width;
    }
}

TEST(FindColourRegion, EqualsThePlainRegionOnRandomPictures) {
    RandomInput random(41);
    int regions = 0;
    for (int i = 0; i < 120; ++i) {
        const cv::Size size(random.Integer(1, 110), random.Integer(1, 90));
        const cv::Mat image = Patchwork(random, size);
        const cv::Point seed(random.Integer(0, size.width - 1), random.Integer(0, size.height - 1));
        const double limit = random.Real(-1.0, 30.0);
        const int count = random.Integer(0, 12);
        const int squareSide = random.Integer(1, 26);
        const Contour region = FindColourRegion(image, seed, limit, count, squareSide, false);
        ASSERT_EQ(region, Reference::FindColourRegion(image, seed, limit, count, squareSide))
            << "picture " << i << ", " << size << ", seed " << seed << ", limit " << limit << ", side " << squareSide;
        if (!region.empty()) ++regions;
    }
    EXPECT_GT(regions, 60);
}

TEST(FindColourRegion, EqualsThePlainRegionOnPhotographs) {
    RandomInput random(42);
    for (const std::string& name : TestSupport::PictureNames()) {
        const cv::Mat photograph = TestSupport::LoadColourPicture(name);
        for (int i = 0; i < 4; ++i) {
            const cv::Rect part(random.Integer(0, photograph.cols - 200), random.Integer(0, photograph.rows - 150), 200,
                                150);
            const cv::Point seed(random.Integer(0, 199), random.Integer(0, 149));
            ASSERT_EQ(RegionOf(photograph(part), seed),
                      Reference::FindColourRegion(photograph(part), seed, colourLimit, directions, side))
                << name << ' ' << part << ' ' << seed;
        }
    }
}

TEST(FindColourRegion, IsMadeOfWholeSquares) {
    cv::Mat image(120, 160, CV_8UC3, cv::Scalar(200, 180, 30));
    cv::rectangle(image, cv::Rect(45, 50, 30, 21), cv::Scalar(20, 30, 200), cv::FILLED);
    // Columns 45..74 touch the squares from 40 to 79, rows 50..70 those from 40 to 79.
    EXPECT_THAT(RegionOf(image, {60, 60}), OutlinesRectangle({40, 40, 40, 40}));
}

TEST(FindColourRegion, OneFittingPixelBringsInItsSquareAndTheWayOnwards) {
    cv::Mat image(60, 100, CV_8UC3, cv::Scalar(0, 0, 0));
    image(cv::Rect(0, 0, 20, 60)).setTo(cv::Scalar(0, 200, 0));
    image.at<cv::Vec3b>(7, 33) = cv::Vec3b(0, 200, 0);
    image.at<cv::Vec3b>(19, 59) = cv::Vec3b(0, 200, 0);
    image.at<cv::Vec3b>(45, 79) = cv::Vec3b(0, 200, 0);
    EXPECT_THAT(RegionOf(image, {5, 30}),
                UnorderedElementsAre(cv::Point(0, 0), cv::Point(59, 0), cv::Point(59, 19), cv::Point(19, 20),
                                     cv::Point(20, 19), cv::Point(0, 59), cv::Point(19, 59)));
}

TEST(FindColourRegion, ADistanceOfExactlyTheLimitRejects) {
    const auto [seedColour, other] = GraysTenApart();
    cv::Mat image(20, 60, CV_8UC3, cv::Scalar(other));
    image(cv::Rect(0, 0, 20, 20)).setTo(seedColour);
    EXPECT_THAT(RegionOf(image, {9, 9}), OutlinesRectangle({0, 0, 20, 20}));
    EXPECT_THAT(FindColourRegion(image, {9, 9}, 10.0000001, directions, side, false),
                OutlinesRectangle({0, 0, 60, 20}));
}

TEST(FindColourRegion, ASeedOnAColourBoundaryFloodsItsOwnSideOnly) {
    cv::Mat image(80, 80, CV_8UC3, cv::Scalar(255, 255, 255));
    image(cv::Rect(0, 0, 40, 80)).setTo(cv::Scalar(10, 10, 10));
    EXPECT_THAT(RegionOf(image, {39, 40}), OutlinesRectangle({0, 0, 40, 80}));
    EXPECT_THAT(RegionOf(image, {40, 40}), OutlinesRectangle({40, 0, 40, 80}));
}

TEST(FindColourRegion, ComparesWithTheSeedAndNotWithTheNeighbour) {
    // A ramp of one gray level in four pixels never jumps, yet the region ends where ten are exceeded.
    cv::Mat image(20, 800, CV_8UC3);
    for (int c = 0; c < image.cols; ++c) image.col(c).setTo(cv::Scalar::all(20 + c / 4));
    const cv::Rect region = cv::boundingRect(RegionOf(image, {10, 10}));
    EXPECT_EQ(region.x, 0);
    EXPECT_GE(region.width, 40);
    EXPECT_LE(region.width, 80);
}

TEST(FindColourRegion, StartsTenPixelsAroundTheSeedWhateverTheLimit) {
    // The seed's own square is not a start: with squares of one pixel only the points of the circle are.
    cv::Mat image(41, 41, CV_8UC3, cv::Scalar(0, 0, 0));
    image.at<cv::Vec3b>(20, 20) = cv::Vec3b(90, 200, 40);
    EXPECT_THAT(FindColourRegion(image, {20, 20}, colourLimit, 8, 1, false), IsEmpty());
    image.at<cv::Vec3b>(20, 30) = cv::Vec3b(90, 200, 40);
    EXPECT_THAT(FindColourRegion(image, {20, 20}, colourLimit, 8, 1, false), ElementsAre(cv::Point(30, 20)));
    image.at<cv::Vec3b>(20, 30) = cv::Vec3b(0, 0, 0);
    // 45 degrees: 27.07 is truncated.
    image.at<cv::Vec3b>(27, 27) = cv::Vec3b(90, 200, 40);
    EXPECT_THAT(FindColourRegion(image, {20, 20}, colourLimit, 8, 1, false), ElementsAre(cv::Point(27, 27)));
    // 225 degrees: 12.93 is truncated, towards zero and so away from the seed.
    image.at<cv::Vec3b>(27, 27) = cv::Vec3b(0, 0, 0);
    image.at<cv::Vec3b>(12, 12) = cv::Vec3b(90, 200, 40);
    EXPECT_THAT(FindColourRegion(image, {20, 20}, colourLimit, 8, 1, false), ElementsAre(cv::Point(12, 12)));
}

TEST(FindColourRegion, StartPointsAreClampedToTheImage) {
    cv::Mat image(30, 30, CV_8UC3, cv::Scalar(0, 0, 0));
    image.at<cv::Vec3b>(5, 3) = cv::Vec3b(90, 200, 40);
    image.at<cv::Vec3b>(5, 0) = cv::Vec3b(90, 200, 40);
    // The point at 180 degrees would be seven pixels left of the image.
    EXPECT_THAT(FindColourRegion(image, {3, 5}, colourLimit, 8, 1, false), ElementsAre(cv::Point(0, 5)));
}

TEST(FindColourRegion, OnlyTheLargestPartSurvives) {
    cv::Mat image(100, 100, CV_8UC3, cv::Scalar(0, 0, 0));
    const cv::Scalar colour(0, 0, 200);
    image(cv::Rect(0, 0, 30, 100)).setTo(colour);
    image(cv::Rect(40, 20, 60, 80)).setTo(colour);
    // The seed lies in the gap; its circle reaches both parts, and its own square belongs to the right one.
    image(cv::Rect(35, 50, 1, 1)).setTo(colour);
    EXPECT_EQ(cv::boundingRect(FindColourRegion(image, {35, 50}, colourLimit, 8, 5, false)), cv::Rect(35, 20, 65, 80));
    image(cv::Rect(40, 20, 60, 60)).setTo(cv::Scalar(0, 0, 0));
    EXPECT_EQ(cv::boundingRect(FindColourRegion(image, {35, 50}, colourLimit, 8, 5, false)), cv::Rect(0, 0, 30, 100));
}

TEST(FindColourRegion, SquaresAtTheRightAndLowerEdgeAreCut) {
    const cv::Mat image(33, 47, CV_8UC3, cv::Scalar(1, 2, 3));
    EXPECT_THAT(RegionOf(image, {46, 32}), OutlinesRectangle({0, 0, 47, 33}));
    EXPECT_THAT(FindColourRegion(image, {46, 32}, colourLimit, directions, 2147483647, false),
                OutlinesRectangle({0, 0, 47, 33}));
}

TEST(FindColourRegion, WithoutAnAcceptedSquareIsEmpty) {
    const cv::Mat image(40, 40, CV_8UC3, cv::Scalar(1, 2, 3));
    EXPECT_THAT(FindColourRegion(image, {20, 20}, 0.0, directions, side, false), IsEmpty());
    EXPECT_THAT(FindColourRegion(image, {20, 20}, std::nan(""), directions, side, false), IsEmpty());
    EXPECT_THAT(FindColourRegion(image, {20, 20}, colourLimit, 0, side, false), IsEmpty());
    EXPECT_THAT(FindColourRegion(image, {20, 20}, colourLimit, -3, side, false), IsEmpty());
}

TEST(FindColourRegion, OfASeedOutsideTheImageOrOfSquaresWithoutASideIsEmpty) {
    const cv::Mat image(40, 40, CV_8UC3, cv::Scalar(1, 2, 3));
    for (const cv::Point seed : {cv::Point(-1, -1), cv::Point(40, 0), cv::Point(0, 40)}) {
        EXPECT_THAT(RegionOf(image, seed), IsEmpty());
    }
    EXPECT_THAT(RegionOf(cv::Mat(), {0, 0}), IsEmpty());
    EXPECT_THAT(FindColourRegion(image, {5, 5}, colourLimit, directions, 0, false), IsEmpty());
    EXPECT_THAT(FindColourRegion(image, {5, 5}, colourLimit, directions, -20, false), IsEmpty());
}

TEST(FindColourRegion, ReadsThreeBytesAPixelWithoutATestOfTheType) {
    cv::Mat wide(40, 60, CV_8UC4, cv::Scalar::all(0));
    // The pixels at columns 0..29 are the bytes 0..89 of a row, which are those of the first 22.5 pixels.
    wide.colRange(0, 22).setTo(cv::Scalar::all(99));
    EXPECT_THAT(RegionOf(wide, {10, 10}), OutlinesRectangle({0, 0, 40, 40}));
    EXPECT_EQ(RegionOf(wide, {10, 10}), Reference::FindColourRegion(wide, {10, 10}, colourLimit, directions, side));
    EXPECT_THROW(RegionOf(cv::Mat::zeros(40, 60, CV_8UC1), {10, 10}), cv::Exception);
}

TEST(FindColourRegion, LeavesTheImageAlone) {
    const cv::Mat image = RandomInput(43).Image({60, 50}, 3);
    const cv::Mat before = image.clone();
    RegionOf(image, {30, 25});
    EXPECT_THAT(image, EqualsMat(before));
}

TEST(FitToWindow, LeavesAnEmptyImageAsItIs) { EXPECT_TRUE(FitToWindow(cv::Mat(), 800, 600).empty()); }

TEST(FitToWindow, CopiesWhatFits) {
    const cv::Mat image = RandomInput(44).Image({80, 60}, 3);
    for (const cv::Size window : {cv::Size(80, 60), cv::Size(200, 61)}) {
        cv::Mat copy = FitToWindow(image, window.width, window.height);
        EXPECT_THAT(copy, EqualsMat(image));
        EXPECT_NE(copy.data, image.data);
    }
}

TEST(FitToWindow, ShrinksWithLinearInterpolationToTruncatedSides) {
    const cv::Mat image = RandomInput(45).Image({101, 60}, 3);
    cv::Mat expected;
    cv::resize(image, expected, {50, 29}, 0.0, 0.0, cv::INTER_LINEAR);  // 60 * 50 / 101 = 29.7
    EXPECT_THAT(FitToWindow(image, 50, 600), EqualsMat(expected));
    EXPECT_EQ(FitToWindow(image, 800, 30).size(), cv::Size(50, 30));
    EXPECT_THROW(FitToWindow(image, 800, 0), cv::Exception);
}

TEST(ExpandContour, EqualsThePlainContourOnRandomOnes) {
    RandomInput random(46);
    for (int i = 0; i < 600; ++i) {
        const cv::Mat image(random.Integer(1, 90), random.Integer(1, 120), CV_8UC3);
        Contour contour;
        // Every fourth may leave the image.
        const int beyond = i % 4 == 0 ? 40 : 0;
        for (int n = random.Integer(1, 9); n > 0; --n) {
            contour.emplace_back(random.Integer(-beyond, image.cols - 1 + beyond),
                                 random.Integer(-beyond, image.rows - 1 + beyond));
        }
        const int distance = random.Integer(-1, 12);
        ASSERT_EQ(ExpandContour(image, contour, distance), Reference::ExpandContour(image, contour, distance))
            << "contour " << i << ", distance " << distance;
    }
}

TEST(ExpandContour, EqualsThePlainContourForRegionsOfPhotographs) {
    RandomInput random(47);
    for (const std::string& name : TestSupport::PictureNames()) {
        const cv::Mat photograph = TestSupport::LoadColourPicture(name);
        for (int i = 0; i < 10; ++i) {
            const cv::Point seed(random.Integer(0, photograph.cols - 1), random.Integer(0, photograph.rows - 1));
            const Contour region = RegionOf(photograph, seed);
            for (const int distance : {0, 5, 8190, 8191, 9000}) {
                ASSERT_EQ(ExpandContour(photograph, region, distance),
                          Reference::ExpandContour(photograph, region, distance))
                    << name << ' ' << seed << ' ' << distance;
            }
        }
    }
}

TEST(ExpandContour, ReachesTheDistanceAndRoundsTheCorners) {
    const cv::Mat image(100, 100, CV_8UC3);
    const Contour square{{40, 40}, {40, 59}, {59, 59}, {59, 40}};
    const Contour wide = ExpandContour(image, square, 5);
    EXPECT_EQ(cv::boundingRect(wide), cv::Rect(35, 35, 30, 30));
    EXPECT_GE(cv::pointPolygonTest(wide, cv::Point2f(36, 37), false), 0.0);  // 5 pixels from the corner
    EXPECT_LT(cv::pointPolygonTest(wide, cv::Point2f(35, 35), false), 0.0);
    EXPECT_EQ(cv::boundingRect(ExpandContour(image, square, 0)), cv::Rect(40, 40, 20, 20));
}

TEST(ExpandContour, ClipsAtTheBorder) {
    const cv::Mat image(60, 80, CV_8UC3);
    const Contour corner{{0, 0}, {0, 19}, {19, 19}, {19, 0}};
    EXPECT_EQ(cv::boundingRect(ExpandContour(image, corner, 5)), cv::Rect(0, 0, 25, 25));
    const Contour whole{{0, 0}, {0, 59}, {79, 59}, {79, 0}};
    EXPECT_THAT(ExpandContour(image, whole, 5), OutlinesRectangle({0, 0, 80, 60}));
}

TEST(ExpandContour, GivesBackWhatItCannotWiden) {
    const cv::Mat image(60, 80, CV_8UC3);
    EXPECT_THAT(ExpandContour(image, {}, 5), IsEmpty());
    const Contour square{{10, 10}, {10, 19}, {19, 19}, {19, 10}};
    EXPECT_EQ(ExpandContour(image, square, -1), square);
    const Contour beside{{200, 10}, {200, 19}, {220, 19}};
    EXPECT_EQ(ExpandContour(image, beside, 5), beside);
}

TEST(CropContourRegion, OfAnEmptyContourIsEmptyAndLeavesTheBox) {
    const cv::Mat image = RandomInput(48).Image({30, 20}, 3);
    cv::Rect box(1, 2, 3, 4);
    EXPECT_TRUE(CropContourRegion(image, {}, true, box).empty());
    EXPECT_EQ(box, cv::Rect(1, 2, 3, 4));
}

TEST(CropContourRegion, BesideTheImageIsEmpty) {
    const cv::Mat image = RandomInput(48).Image({30, 20}, 3);
    cv::Rect box(1, 2, 3, 4);
    EXPECT_TRUE(CropContourRegion(image, {{40, 5}, {45, 5}, {45, 9}}, true, box).empty());
    EXPECT_TRUE(box.empty());
}

TEST(CropContourRegion, WithoutFillingIsACopyOfTheBox) {
    const cv::Mat image = RandomInput(48).Image({30, 20}, 3);
    const Contour contour{{5, 3}, {12, 8}, {4, 15}};
    cv::Rect box;
    const cv::Mat part = CropContourRegion(image, contour, false, box);
    EXPECT_EQ(box, cv::Rect(4, 3, 9, 13));
    EXPECT_THAT(part, EqualsMat(image(box)));
    EXPECT_NE(part.data, image(box).data);
}

TEST(CropContourRegion, PaintsTheBackgroundInTheMeanColourJustAroundTheContour) {
    cv::Mat image(40, 50, CV_8UC3, cv::Scalar(10, 20, 30));
    const Contour octagon{{20, 10}, {30, 10}, {35, 15}, {35, 25}, {30, 30}, {20, 30}, {15, 25}, {15, 15}};
    cv::fillPoly(image, std::vector<Contour>{octagon}, cv::Scalar(200, 100, 50));
    image.at<cv::Vec3b>(10, 15) = cv::Vec3b(255, 255, 255);  // in the box, yet too far from the contour to count
    cv::Rect box;
    const cv::Mat part = CropContourRegion(image, octagon, true, box);
    EXPECT_EQ(box, cv::Rect(15, 10, 21, 21));
    cv::Mat expected = image(box).clone();
    expected.at<cv::Vec3b>(0, 0) = cv::Vec3b(10, 20, 30);
    EXPECT_THAT(part, EqualsMat(expected));
    EXPECT_EQ(image.at<cv::Vec3b>(10, 15), cv::Vec3b(255, 255, 255));
}

TEST(CropContourRegion, IsClippedToTheImage) {
    const cv::Mat image = RandomInput(49).Image({30, 20}, 3);
    const Contour contour{{-10, -5}, {9, -5}, {9, 7}, {-10, 7}};
    cv::Rect box;
    const cv::Mat part = CropContourRegion(image, contour, true, box);
    EXPECT_EQ(box, cv::Rect(0, 0, 10, 8));
    EXPECT_THAT(part, EqualsMat(image(box)));
}

TEST(CropContourRegion, PaintsNothingWhereTheContourFillsItsBox) {
    const cv::Mat image = RandomInput(50).Image({30, 20}, 3);
    const Contour rectangle{{3, 4}, {3, 15}, {20, 15}, {20, 4}};
    cv::Rect box;
    EXPECT_THAT(CropContourRegion(image, rectangle, true, box), EqualsMat(image(cv::Rect(3, 4, 18, 12))));
}

TEST(RingMeanColour, IsTheMeanOfThePixelsThatTheMaskTouches) {
    cv::Mat image(7, 9, CV_8UC3, cv::Scalar(250, 250, 250));
    cv::Mat mask = cv::Mat::zeros(image.size(), CV_8U);
    mask(cv::Rect(3, 2, 2, 2)).setTo(255);
    image(cv::Rect(2, 1, 4, 4)).setTo(cv::Scalar(40, 50, 60));
    image(cv::Rect(2, 1, 4, 1)).setTo(cv::Scalar(100, 50, 60));
    image(cv::Rect(3, 2, 2, 2)).setTo(cv::Scalar(0, 0, 0));
    // Twelve pixels in the ring, four of them in its first row.
    EXPECT_THAT(RingMeanColour(image, mask), cv::Scalar(60, 50, 60));
}

TEST(RingMeanColour, WithoutARingIsTheMeanOfTheWholeImage) {
    const cv::Mat image = RandomInput(51).Image({9, 7}, 3);
    EXPECT_EQ(RingMeanColour(image, cv::Mat(7, 9, CV_8U, cv::Scalar(255))), cv::mean(image));
    EXPECT_EQ(RingMeanColour(image, cv::Mat::zeros(7, 9, CV_8U)), cv::mean(image));
}

TEST(TransformShape, TurnsCounterClockwiseAboutTheCentreAndThenShifts) {
    const auto moved = TransformShape({{12, 20}, {10, 20}}, {10, 20}, 90.0, {100, 1000});
    EXPECT_THAT(moved, ElementsAre(NearPoint(cv::Point2f(110, 1018), 1e-4), NearPoint(cv::Point2f(110, 1020), 1e-4)));
}

TEST(TransformShape, HasTheBitsOfTheRotationMatrixWithTheOffsetAdded) {
    RandomInput random(52);
    const auto coordinate = [&] { return static_cast<float>(random.Real(-900.0, 900.0)); };
    for (int i = 0; i < 100; ++i) {
        const std::vector<cv::Point2f> points{{coordinate(), coordinate()}, {coordinate(), coordinate()}};
        const cv::Point2f centre(coordinate(), coordinate());
        const cv::Point2f offset(coordinate(), coordinate());
        const double angle = random.Real(-720.0, 720.0);
        cv::Mat matrix = cv::getRotationMatrix2D(centre, angle, 1.0);
        matrix.at<double>(0, 2) += offset.x;
        matrix.at<double>(1, 2) += offset.y;
        std::vector<cv::Point2f> expected;
        cv::transform(points, expected, matrix);
        EXPECT_EQ(TransformShape(points, centre, angle, offset), expected);
    }
}

TEST(TransformShape, OfNoPointsIsNone) { EXPECT_THAT(TransformShape({}, {1, 2}, 30.0, {3, 4}), IsEmpty()); }

TEST(TargetExtraction, CutsARoundPartFromAPhotographedTrayWithItsBackgroundPaintedOver) {
    const cv::Mat tray = Scene({200, 160}, cv::Scalar(90, 110, 100))
                             .Paint(TestSupport::Disc({104.0, 76.0}, 25.0), cv::Scalar(40, 60, 200))
                             .Blur(0.8)
                             .Noise(1.0, 53)
                             .Colour();
    const Contour region = RegionOf(tray, {104, 76});
    cv::Rect box;
    const cv::Mat part = CropContourRegion(tray, ExpandContour(tray, region, 5), true, box);
    EXPECT_EQ(box, cv::boundingRect(region) + cv::Size(10, 10) - cv::Point(5, 5));
    EXPECT_LT(cv::norm(part.at<cv::Vec3b>(0, 0), cv::Vec3b(90, 110, 100), cv::NORM_INF), 3.0);
}

}  // namespace
}  // namespace Quorvane
