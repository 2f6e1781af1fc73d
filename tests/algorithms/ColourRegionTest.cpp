#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <utility>

#include "algorithms/TargetExtraction.h"
#include "tests/reference/PlainTargetExtraction.h"
#include "tests/support/Matchers.h"
#include "tests/support/Pictures.h"
#include "tests/support/RandomInput.h"

namespace Quorvane {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using TestSupport::EqualsMat;
using TestSupport::RandomInput;

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

}  // namespace
}  // namespace Quorvane
