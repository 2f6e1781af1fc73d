#include "algorithms/TargetExtraction.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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

Contour RegionOf(const cv::Mat& image, cv::Point seed) { return FindColourRegion(image, seed, 10.0, 8, 20, false); }

/// The outline of a rectangle of pixels, as a tracer of outermost pixels gives it.
testing::Matcher<Contour> OutlinesRectangle(const cv::Rect& r) {
    return UnorderedElementsAre(r.tl(), cv::Point(r.x + r.width - 1, r.y), cv::Point(r.x, r.y + r.height - 1),
                                cv::Point(r.x + r.width - 1, r.y + r.height - 1));
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
