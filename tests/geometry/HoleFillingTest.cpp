#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "geometry/ImageOperators.h"
#include "tests/reference/PlainHoleFilling.h"
#include "tests/support/Matchers.h"
#include "tests/support/Pictures.h"
#include "tests/support/RandomInput.h"

namespace Quorvane::UtilityFunctions {

using TestSupport::EqualsMat;
using TestSupport::RandomInput;

namespace {

const cv::Scalar field(40, 90, 160);
const cv::Scalar ink(200, 30, 20);

/// A uniform field with a rectangle of another colour.
cv::Mat FieldWith(const cv::Rect& speck) {
    cv::Mat picture(80, 120, CV_8UC3, field);
    picture(speck).setTo(ink);
    return picture;
}

cv::Mat Uniform() { return cv::Mat(80, 120, CV_8UC3, field); }

TEST(FillHolesMorphologicalEnhanced, LeavesAUniformImageAlone) {
    EXPECT_THAT(fillHolesMorphologicalEnhanced(Uniform(), 5.0, 100, 5, 2), EqualsMat(Uniform()));
}

TEST(FillHolesMorphologicalEnhanced, ASpeckTakesTheColourOfItsField) {
    const cv::Mat picture = FieldWith({50, 40, 5, 4});
    const cv::Mat before = picture.clone();
    EXPECT_THAT(fillHolesMorphologicalEnhanced(picture, 5.0, 100, 5, 2), EqualsMat(Uniform()));
    EXPECT_THAT(picture, EqualsMat(before));
}

TEST(FillHolesMorphologicalEnhanced, AHoleThatTheClosingDoesNotReachStays) {
    // 20 pixels wide: a disc of radius 5 fits into it.
    const cv::Mat picture = FieldWith({50, 30, 20, 20});
    const cv::Mat filled = fillHolesMorphologicalEnhanced(picture, 5.0, 400, 5, 2);
    EXPECT_EQ(filled.at<cv::Vec3b>(40, 60), picture.at<cv::Vec3b>(40, 60));
    EXPECT_THAT(fillHolesMorphologicalEnhanced(picture, 5.0, 400, 15, 2), EqualsMat(Uniform()));
}

TEST(FillHolesMorphologicalEnhanced, TheAreaOfAHoleIsThatOfItsOutlineAndTheTestIsStrict) {
    // The outline runs through the centres of the border pixels: 6 x 5 pixels enclose 5 x 4 = 20.
    const cv::Mat picture = FieldWith({50, 40, 6, 5});
    EXPECT_THAT(fillHolesMorphologicalEnhanced(picture, 5.0, 20, 5, 2), EqualsMat(picture));
    // The speck itself must not become a region: its 30 pixels are not more than 30.
    EXPECT_THAT(fillHolesMorphologicalEnhanced(picture, 5.0, 30, 5, 2), EqualsMat(Uniform()));
}

TEST(FillHolesMorphologicalEnhanced, ASpeckThatIsARegionItselfIsNoHole) {
    const cv::Mat picture = FieldWith({50, 40, 6, 5});
    EXPECT_THAT(fillHolesMorphologicalEnhanced(picture, 5.0, 29, 5, 2), EqualsMat(picture));
}

TEST(FillHolesMorphologicalEnhanced, AnAreaLimitOfZeroFillsNothing) {
    const cv::Mat picture = FieldWith({50, 40, 5, 4});
    EXPECT_THAT(fillHolesMorphologicalEnhanced(picture, 5.0, 0, 5, 2), EqualsMat(picture));
    EXPECT_THAT(fillHolesMorphologicalEnhanced(picture, 5.0, -7, 5, 2), EqualsMat(picture));
}

TEST(FillHolesMorphologicalEnhanced, AHoleAtTheBorderIsClosedAsTheBorderBelongsToNeitherSide) {
    // The closing takes pixels outside as dark when it widens and as bright when it narrows, so a gap at the border
    // closes as one inside does.
    const cv::Mat picture = FieldWith({0, 40, 4, 5});
    EXPECT_THAT(fillHolesMorphologicalEnhanced(picture, 5.0, 100, 5, 2), EqualsMat(Uniform()));
    // A corner, too.
    const cv::Mat corner = FieldWith({116, 76, 4, 4});
    EXPECT_THAT(fillHolesMorphologicalEnhanced(corner, 5.0, 100, 5, 2), EqualsMat(Uniform()));
}

TEST(FillHolesMorphologicalEnhanced, AWideHoleIsWidenedBeforeItIsPainted) {
    // A smear around the hole, one pixel wide, that belongs to the field's region but not to its colour.
    cv::Mat picture(80, 120, CV_8UC3, field);
    picture(cv::Rect(49, 39, 8, 7)).setTo(field + cv::Scalar(3, 3, 3));
    picture(cv::Rect(50, 40, 6, 5)).setTo(ink);
    const auto differing = [&](const cv::Mat& filled) {
        cv::Mat difference;
        cv::absdiff(filled, picture, difference);
        cv::cvtColor(difference, difference, cv::COLOR_BGR2GRAY);
        return cv::countNonZero(difference);
    };
    // Area 20: more than 2 * 3^2 = 18 is widened by 3 pixels, not more than 2 * 4^2 = 32 stays.
    const cv::Mat widened = fillHolesMorphologicalEnhanced(picture, 10.0, 100, 5, 3);
    const cv::Mat asItIs = fillHolesMorphologicalEnhanced(picture, 10.0, 100, 5, 4);
    EXPECT_EQ(differing(asItIs), 6 * 5);
    EXPECT_GT(differing(widened), 8 * 7 - 5);
    EXPECT_NE(widened.at<cv::Vec3b>(39, 52), picture.at<cv::Vec3b>(39, 52));
    EXPECT_EQ(asItIs.at<cv::Vec3b>(39, 52), picture.at<cv::Vec3b>(39, 52));
}

TEST(FillHolesMorphologicalEnhanced, TheMeanIsTakenOverTheRegionAroundTheHole) {
    // The box of the hole, 10 pixels more on each side: the left half of the field is 10 levels brighter.
    cv::Mat picture(80, 120, CV_8UC3, cv::Scalar::all(100));
    picture.colRange(0, 60).setTo(cv::Scalar::all(110));
    picture(cv::Rect(58, 40, 4, 4)).setTo(ink);
    const cv::Mat filled = fillHolesMorphologicalEnhanced(picture, 30.0, 100, 5, 10);
    EXPECT_EQ(filled.at<cv::Vec3b>(41, 59), cv::Vec3b::all(105));
}

TEST(FillHolesMorphologicalEnhanced, TheSurroundingsOfAHoleAtTheTopLeftReachFartherToTheOtherSide) {
    // The hole's box of 4 x 4 at (2, 2) grows to 24 x 24 at (0, 0), not to 16 x 16: besides 24 * 16 - 16 pixels of 100
    // it holds 24 * 8 of 116, whose common mean is 105.5 less a little. Down, the same.
    cv::Mat picture(80, 120, CV_8UC3, cv::Scalar::all(100));
    picture.colRange(16, 120).setTo(cv::Scalar::all(116));
    picture(cv::Rect(2, 2, 4, 4)).setTo(ink);
    EXPECT_EQ(fillHolesMorphologicalEnhanced(picture, 30.0, 100, 5, 10).at<cv::Vec3b>(3, 3), cv::Vec3b::all(105));
    cv::Mat turned;
    cv::transpose(picture, turned);
    EXPECT_EQ(fillHolesMorphologicalEnhanced(turned, 30.0, 100, 5, 10).at<cv::Vec3b>(3, 3), cv::Vec3b::all(105));
}

TEST(FillHolesMorphologicalEnhanced, AColourThatWasPaintedCountsAroundTheNextHole) {
    // The lower hole comes first. Widened, it paints a part of the region between the two holes; the upper one, which
    // is too small to be widened, takes the mean of what then stands around it.
    const cv::Rect upper(50, 26, 5, 5);
    const cv::Rect lower(48, 38, 8, 8);
    cv::Mat picture(80, 120, CV_8UC3, cv::Scalar::all(100));
    picture.rowRange(40, 80).setTo(cv::Scalar::all(160));
    cv::Mat region(picture.size(), CV_8UC1, cv::Scalar(255));
    for (const cv::Rect& hole : {upper, lower}) {
        picture(hole).setTo(ink);
        region(hole).setTo(0);
    }
    const cv::Mat filled = fillHolesMorphologicalEnhanced(picture, 80.0, 100, 6, 3);
    const cv::Rect around(40, 16, 25, 25);
    const auto meanAround = [&](const cv::Mat& image) { return cv::mean(image(around), region(around))[0]; };
    EXPECT_EQ(filled.at<cv::Vec3b>(28, 52), cv::Vec3b::all(cv::saturate_cast<uchar>(meanAround(filled))));
    EXPECT_GT(meanAround(filled), meanAround(picture) + 1.0);
}

TEST(FillHolesMorphologicalEnhanced, TakesAlphaAlong) {
    const cv::Mat picture = FieldWith({50, 40, 5, 4});
    cv::Mat withAlpha;
    cv::cvtColor(picture, withAlpha, cv::COLOR_BGR2BGRA);
    cv::Mat expected;
    cv::cvtColor(Uniform(), expected, cv::COLOR_BGR2BGRA);
    EXPECT_THAT(fillHolesMorphologicalEnhanced(withAlpha, 5.0, 100, 5, 2), EqualsMat(expected));
}

TEST(FillHolesMorphologicalEnhanced, NothingBecomesNothing) {
    EXPECT_TRUE(fillHolesMorphologicalEnhanced(cv::Mat(), 5.0, 100, 5, 2).empty());
}

TEST(FillHolesMorphologicalEnhanced, GivesACopy) {
    const cv::Mat picture = Uniform();
    EXPECT_NE(fillHolesMorphologicalEnhanced(picture, 5.0, 100, 5, 2).data, picture.data);
}

TEST(FillHolesMorphologicalEnhanced, PassesOnTheExceptionsOfOpenCV) {
    EXPECT_THROW(fillHolesMorphologicalEnhanced(cv::Mat::zeros(9, 9, CV_8UC1), 5.0, 100, 5, 2), cv::Exception);
    EXPECT_THROW(fillHolesMorphologicalEnhanced(cv::Mat::zeros(9, 9, CV_8UC2), 5.0, 100, 5, 2), cv::Exception);
    EXPECT_THROW(fillHolesMorphologicalEnhanced(cv::Mat::zeros(9, 9, CV_16UC3), 5.0, 100, 5, 2), cv::Exception);
    EXPECT_THROW(fillHolesMorphologicalEnhanced(cv::Mat::zeros(9, 9, CV_32FC3), 5.0, 100, 5, 2), cv::Exception);
    EXPECT_THROW(fillHolesMorphologicalEnhanced(Uniform(), 5.0, 100, -1, 2), cv::Exception);
    EXPECT_THROW(fillHolesMorphologicalEnhanced(Uniform(), 5.0, 100, -2147483647 - 1, 2), cv::Exception);
    EXPECT_THROW(fillHolesMorphologicalEnhanced(FieldWith({50, 40, 6, 5}), 5.0, 100, 5, -1), cv::Exception);
}

TEST(FillHolesMorphologicalEnhanced, EqualsThePlainFillingOnRandomImages) {
    RandomInput random(80);
    for (int i = 0; i < 300; ++i) {
        const cv::Size size(random.Integer(1, 120), random.Integer(1, 90));
        cv::Mat picture;
        const int spread = random.Integer(1, 60);
        cv::resize(random.Image({random.Integer(1, 6), random.Integer(1, 6)}, 3, 128 - spread, 127 + spread), picture,
                   size, 0.0, 0.0, random.Integer(0, 1) == 0 ? cv::INTER_NEAREST : cv::INTER_LINEAR);
        for (int specks = random.Integer(0, 30); specks > 0; --specks) {
            const cv::Rect speck(random.Integer(0, size.width - 1), random.Integer(0, size.height - 1),
                                 random.Integer(1, 12), random.Integer(1, 12));
            picture(speck & cv::Rect(cv::Point(0, 0), size)).setTo(random.Integer(0, 255));
        }
        const double tolerance = random.Real(0.0, 40.0);
        const int areaLimit = random.Integer(0, 150);
        const int closeRadius = random.Integer(0, 9);
        const int expandRadius = random.Integer(0, 6);
        ASSERT_THAT(fillHolesMorphologicalEnhanced(picture, tolerance, areaLimit, closeRadius, expandRadius),
                    EqualsMat(Reference::FillHoles(picture, tolerance, areaLimit, closeRadius, expandRadius)))
            << "image " << i << ", " << size << ", " << tolerance << ", " << areaLimit << ", " << closeRadius << ", "
            << expandRadius;
    }
}

TEST(FillHolesMorphologicalEnhanced, EqualsThePlainFillingOnPictures) {
    for (const std::string& name : TestSupport::PictureNames()) {
        const cv::Mat picture = TestSupport::LoadColourPicture(name);
        EXPECT_THAT(fillHolesMorphologicalEnhanced(picture, 12.0, 200, 5, 3),
                    EqualsMat(Reference::FillHoles(picture, 12.0, 200, 5, 3)))
            << name;
    }
}

}  // namespace
}  // namespace Quorvane::UtilityFunctions
