#include "algorithms/CircleMarks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <opencv2/imgproc.hpp>

#include "tests/reference/PlainCircleMarks.h"
#include "tests/support/MarkPlate.h"
#include "tests/support/Matchers.h"
#include "tests/support/Pictures.h"
#include "tests/support/RandomInput.h"
#include "tests/support/Scene.h"

namespace Quorvane {

using Reference::CircleSearch;
using TestSupport::Disc;
using TestSupport::EqualsMat;
using TestSupport::MarkPlate;
using TestSupport::RandomInput;
using TestSupport::Scene;

namespace {

struct Found {
    std::vector<cv::Point2f> centres;
    std::vector<double> radii;
    std::vector<double> similarities;
};

Found Search(const cv::Mat& source, double radius, double tolerance, double minSimilarity) {
    Found found;
    FindCircleMarks(source, radius, tolerance, minSimilarity, found.centres, found.radii, found.similarities);
    EXPECT_EQ(found.centres.size(), found.radii.size());
    EXPECT_EQ(found.centres.size(), found.similarities.size());
    return found;
}

void ExpectSame(const Found& found, const std::vector<Reference::CircleMark>& expected) {
    ASSERT_EQ(found.centres.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(found.centres[i], expected[i].centre) << i;
        EXPECT_EQ(found.radii[i], expected[i].radius) << i;
        EXPECT_EQ(found.similarities[i], expected[i].similarity) << i;
    }
}

/// A scene in which the transform has much to propose: marks of several radii, blobs and noise.
cv::Mat BusyScene(std::uint32_t seed, double radius) {
    RandomInput random(seed);
    const cv::Size size(static_cast<int>(radius * 8.0) + 60, static_cast<int>(radius * 6.0) + 50);
    Scene scene(size, random.Real(20.0, 235.0));
    for (int i = 0; i < 9; ++i) {
        const cv::Point2d centre(random.Real(0.0, size.width), random.Real(0.0, size.height));
        scene.Paint(Disc(centre, radius * random.Real(0.7, 1.3)), random.Real(0.0, 255.0));
    }
    return scene.Blur(random.Real(0.4, 1.5)).Noise(random.Real(0.5, 8.0), seed + 1000).Gray();
}

struct KnownSearch {
    double radius;
    CircleSearch search;
};

/// Kernel sides, sharpening and radius limits of searches with a tolerance of 0.4 radii, worked out by hand.
const std::vector<KnownSearch> knownSearches{
    {5.0, {3, true, 3, 3, 7}},       {6.0, {3, true, 3, 3, 8}},     {8.9, {3, true, 3, 5, 12}},
    {9.0, {3, false, 3, 5, 12}},     {11.9, {3, false, 3, 7, 16}},  {12.0, {5, false, 4, 7, 16}},
    {15.0, {5, false, 5, 9, 21}},    {24.5, {9, false, 8, 14, 34}}, {50.0, {17, false, 16, 30, 70}},
    {64.0, {21, false, 21, 38, 89}},
};

TEST(FindCircleMarks, TakesTheStepsOfEachRadius) {
    for (const KnownSearch& known : knownSearches) {
        std::size_t marks = 0;
        for (std::uint32_t seed = 0; seed < 6; ++seed) {
            SCOPED_TRACE(testing::Message() << "radius " << known.radius << ", seed " << seed);
            const cv::Mat picture = BusyScene(seed, known.radius);
            const double tolerance = 0.4 * known.radius;
            const auto expected = Reference::CircleMarks(picture, known.radius, tolerance, 0.3, known.search);
            ExpectSame(Search(picture, known.radius, tolerance, 0.3), expected);
            marks += expected.size();
        }
        EXPECT_GT(marks, 0U) << known.radius;
    }
}

TEST(FindCircleMarks, LooksForRadiiFromThreeEvenForASmallerOne) {
    const cv::Mat picture = MarkPlate{{120, 100}, {5, 4}, 3.5}.Render().Gray();
    const CircleSearch search{3, true, 3, 3, 5};
    const CircleSearch lower{3, true, 3, 2, 5};
    const cv::Mat gray = Reference::CleanedGray(picture, search);
    ASSERT_NE(Reference::CircleCandidates(gray, 2.0, search), Reference::CircleCandidates(gray, 2.0, lower));
    const auto expected = Reference::CircleMarks(picture, 2.0, 3.0, 0.0, search);
    ASSERT_FALSE(expected.empty());
    ExpectSame(Search(picture, 2.0, 3.0, 0.0), expected);
}

TEST(FindCircleMarks, TakesTheStepsOfTheDefaultParameters) {
    std::size_t marks = 0;
    for (std::uint32_t seed = 0; seed < 10; ++seed) {
        MarkPlate plate{{600, 400}, {3, 2}, 50.0, 230.0, 20.0};
        plate.seed = seed;
        const cv::Mat picture = plate.Render().Blur(1.5).Gray();
        const auto expected = Reference::CircleMarks(picture, 50.0, 7.4999988079071045, 0.8500000238418579,
                                                     CircleSearch{17, false, 16, 42, 57});
        const auto least = static_cast<double>(0.85f);
        ExpectSame(Search(picture, 50.0, (1.0 - least) * 50.0, least), expected);
        marks += expected.size();
    }
    EXPECT_GT(marks, 10U);
}

TEST(FindCircleMarks, EqualsThePlainSearchOnPhotographs) {
    std::size_t marks = 0;
    for (const std::string& name : TestSupport::PictureNames()) {
        SCOPED_TRACE(name);
        const cv::Mat colour = TestSupport::LoadColourPicture(name);
        const auto expected = Reference::CircleMarks(colour, 20.0, 8.0, 0.2, CircleSearch{7, false, 6, 12, 28});
        ExpectSame(Search(colour, 20.0, 8.0, 0.2), expected);
        marks += expected.size();
    }
    EXPECT_GT(marks, 50U);
}

TEST(FindCircleMarks, SharpensBelowARadiusOfNineOnly) {
    const cv::Mat picture = BusyScene(4, 9.0);
    const auto sharpened = [&](double radius, bool sharpen) {
        const auto marks = Reference::CircleMarks(picture, radius, 3.6, 0.0, CircleSearch{3, sharpen, 3, 5, 12});
        double sum = 0.0;
        for (const auto& mark : marks) sum += mark.similarity;
        return sum;
    };
    const auto found = [&](double radius) {
        double sum = 0.0;
        for (const double similarity : Search(picture, radius, 3.6, 0.0).similarities) sum += similarity;
        return sum;
    };
    ASSERT_NE(sharpened(9.0, false), sharpened(9.0, true));
    EXPECT_EQ(found(9.0), sharpened(9.0, false));
    EXPECT_EQ(found(8.9), sharpened(8.9, true));
}

TEST(FindCircleMarks, DropsRadiiOutsideOfTheUntruncatedLimits) {
    // The transform is asked for 49 to 50 and answers with a little over 49; only 49.9 to 50.7 may pass.
    const CircleSearch search{17, false, 16, 49, 50};
    std::size_t candidates = 0;
    for (double radius = 48.5; radius < 51.5; radius += 0.25) {
        const cv::Mat picture = MarkPlate{{260, 240}, {1, 1}, radius}.Render().Gray();
        candidates += Reference::CircleCandidates(Reference::CleanedGray(picture, search), 50.3, search).size();
        for (const double found : Search(picture, 50.3, 0.4, 0.0).radii) {
            EXPECT_GE(found, 50.3 - 0.4);
            EXPECT_LE(found, 50.3 + 0.4);
        }
        EXPECT_EQ(Search(picture, 50.3, 0.4, 0.0).radii.size(),
                  Reference::CircleMarks(picture, 50.3, 0.4, 0.0, search).size());
    }
    EXPECT_GT(candidates, 0U);
    const cv::Mat small = MarkPlate{{260, 240}, {1, 1}, 49.0}.Render().Gray();
    EXPECT_FALSE(Reference::CircleCandidates(Reference::CleanedGray(small, search), 50.3, search).empty());
    EXPECT_TRUE(Search(small, 50.3, 0.4, 0.0).centres.empty());
}

TEST(FindCircleMarks, FindsNothingOnAFlatImage) {
    EXPECT_TRUE(Search(cv::Mat(200, 300, CV_8UC1, cv::Scalar(90)), 20.0, 20.0, 0.0).centres.empty());
}

TEST(FindCircleMarks, WithoutToleranceARadiusMustBeExact) {
    const cv::Mat picture = MarkPlate{{300, 240}, {1, 1}, 30.0}.Render().Gray();
    const CircleSearch search{11, false, 10, 30, 30};
    const auto candidates = Reference::CircleCandidates(Reference::CleanedGray(picture, search), 30.0, search);
    ASSERT_FALSE(candidates.empty());
    for (const cv::Vec3f& candidate : candidates) EXPECT_NE(candidate[2], 30.0f);
    EXPECT_TRUE(Search(picture, 30.0, 0.0, 0.0).centres.empty());
    EXPECT_TRUE(Search(picture, 30.0, 0.0, 1.0).centres.empty());
}

TEST(FindCircleMarks, ASimilarityOfZeroTakesEveryCandidateInRange) {
    // No candidate here scores exactly 0: edges enough for the transform leave contrast or a region with an area. The
    // score alone can be 0, as its own tests show.
    std::size_t candidatesInAll = 0;
    for (std::uint32_t seed = 0; seed < 8; ++seed) {
        const cv::Mat picture = BusyScene(seed, 20.0);
        const CircleSearch search{7, false, 6, 3, 40};
        const cv::Mat gray = Reference::CleanedGray(picture, search);
        std::vector<cv::Point2f> inRange;
        for (const auto& candidate : Reference::CircleCandidates(gray, 20.0, search)) {
            if (candidate[2] <= 40.0f) inRange.emplace_back(candidate[0], candidate[1]);
        }
        const Found found = Search(picture, 20.0, 20.0, 0.0);
        EXPECT_EQ(found.centres, inRange) << seed;
        candidatesInAll += inRange.size();
    }
    EXPECT_GT(candidatesInAll, 40U);
}

TEST(FindCircleMarks, TheLeastSimilarityIsItselfEnough) {
    const cv::Mat picture = MarkPlate{{200, 160}, {1, 1}, 24.0}.Render().Gray();
    const Found found = Search(picture, 24.0, 6.0, 0.5);
    ASSERT_EQ(found.similarities.size(), 1U);
    const double similarity = found.similarities[0];
    EXPECT_EQ(Search(picture, 24.0, 6.0, similarity).similarities, found.similarities);
    EXPECT_TRUE(Search(picture, 24.0, 6.0, std::nextafter(similarity, 1.0)).similarities.empty());
}

TEST(FindCircleMarks, ANegativeToleranceFindsNothing) {
    const cv::Mat picture = MarkPlate{{300, 240}, {1, 1}, 30.0}.Render().Gray();
    for (const double tolerance : {-0.5, -15.0, -30.0, -100.0}) {
        EXPECT_TRUE(Search(picture, 30.0, tolerance, 0.0).centres.empty()) << tolerance;
    }
}

TEST(FindCircleMarks, FindsTheSameInGrayColourAndColourWithAlpha) {
    const Scene scene = MarkPlate{{400, 300}, {3, 2}, 24.0}.Render().Blur(0.8);
    const Found gray = Search(scene.Gray(), 24.0, 6.0, 0.7);
    ASSERT_EQ(gray.centres.size(), 6U);
    for (const cv::Mat& picture : {scene.Colour(), scene.ColourWithAlpha()}) {
        const Found found = Search(picture, 24.0, 6.0, 0.7);
        EXPECT_EQ(found.centres, gray.centres);
        EXPECT_EQ(found.radii, gray.radii);
        EXPECT_EQ(found.similarities, gray.similarities);
    }
}

TEST(FindCircleMarks, WeighsColoursAsOpenCvDoes) {
    const cv::Mat picture =
        Scene({200, 160}, cv::Scalar(200, 60, 20)).Paint(Disc({99.0, 81.0}, 24.0), {20, 60, 200}).Colour();
    cv::Mat gray;
    cv::cvtColor(picture, gray, cv::COLOR_BGR2GRAY);
    const Found found = Search(picture, 24.0, 6.0, 0.3);
    EXPECT_EQ(found.centres.size(), 1U);
    EXPECT_EQ(found.similarities, Search(gray, 24.0, 6.0, 0.3).similarities);
}

TEST(FindCircleMarks, LeavesTheSourceAndWhatIsAroundASubImageAlone) {
    const cv::Mat whole = MarkPlate{{400, 300}, {3, 2}, 24.0}.Render().Noise(4.0, 3).Gray();
    const cv::Mat before = whole.clone();
    const cv::Mat part = whole(cv::Rect(30, 20, 300, 250));
    const Found found = Search(part, 24.0, 6.0, 0.5);
    EXPECT_THAT(whole, EqualsMat(before));
    const Found alone = Search(part.clone(), 24.0, 6.0, 0.5);
    EXPECT_EQ(found.centres, alone.centres);
    EXPECT_EQ(found.similarities, alone.similarities);
    EXPECT_FALSE(found.centres.empty());
}

TEST(FindCircleMarks, LimitsOfNoIntStayDefined) {
    const cv::Mat picture = MarkPlate{{120, 100}, {1, 1}, 20.0}.Render().Gray();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(Search(picture, 20.0, nan, nan).centres.empty());
    EXPECT_TRUE(Search(picture, 20.0, 1e300, 2.0).centres.empty());
}

TEST(FindCircleMarks, OtherChannelCountsAndDepthsAreOpenCvsException) {
    for (const int type : {CV_8UC2, CV_16UC1, CV_32FC1, CV_64FC1}) {
        EXPECT_THROW(Search(cv::Mat::zeros(80, 90, type), 20.0, 5.0, 0.5), cv::Exception) << cv::typeToString(type);
    }
}

TEST(FindCircleMarks, AnImageTooNarrowForAPatchIsOpenCvsException) {
    const cv::Mat picture = Scene({60, 200}, 40.0).Paint(Disc({28.0, 100.0}, 24.0), 220.0).Gray();
    EXPECT_THROW(Search(picture, 24.0, 6.0, 0.3), cv::Exception);
}

// Why radii far beyond the image need no filters of their size.
TEST(FindCircleMarks, ABlurBeyondTheWidestIsTheSame) {
    const cv::Mat image = RandomInput(61).Image({40, 33});
    cv::Mat widest;
    cv::GaussianBlur(image, widest, {161, 161}, 2.0, 2.0, cv::BORDER_DEFAULT);
    for (const int side : {163, 201, 999}) {
        cv::Mat wider;
        cv::GaussianBlur(image, wider, {side, side}, 2.0, 2.0, cv::BORDER_DEFAULT);
        EXPECT_THAT(wider, EqualsMat(widest)) << side;
    }
}

TEST(FindCircleMarks, AnOpeningThatHoldsTheImageLeavesItsLeastValue) {
    const cv::Size size(24, 20);
    const cv::Mat image = RandomInput(62).Image(size, 1, 17, 255);
    double least = 0.0;
    cv::minMaxLoc(image, &least);
    const cv::Mat flat(size, CV_8UC1, cv::Scalar(least));
    // Half the side is more than the diagonal, 31.2, and two.
    for (const int side : {68, 69, 200}) {
        const cv::Mat disc = cv::getStructuringElement(cv::MORPH_ELLIPSE, {side, side});
        cv::Mat opened;
        cv::morphologyEx(image, opened, cv::MORPH_OPEN, disc);
        EXPECT_THAT(opened, EqualsMat(flat)) << side;
    }
}

TEST(FindCircleMarks, FindsNothingOfARadiusFarBeyondTheImage) {
    const cv::Mat image = RandomInput(63).Image({24, 20});
    for (const double radius : {203.0, 210.0, 1e5, 1e8, 2e9, 6e9, 1e12, 1e300}) {
        EXPECT_TRUE(Search(image, radius, 0.15 * radius, 0.85).centres.empty()) << radius;
    }
    const cv::Mat floats(20, 24, CV_32FC1, cv::Scalar(1));
    EXPECT_THROW(Search(floats, 1e8, 1e7, 0.85), cv::Exception);
    const cv::Mat twoChannels(20, 24, CV_8UC2, cv::Scalar(1));
    EXPECT_THROW(Search(twoChannels, 1e8, 1e7, 0.85), cv::Exception);
}

TEST(FindCircleMarks, GivesTheSameForEveryToleranceBeyondTheImage) {
    const cv::Mat picture = Scene({260, 220}, 40.0).Paint(Disc({130.3, 110.6}, 20.4), 220.0).Blur(1.0).Gray();
    // The reference hands its greatest radius on, and so its counters grow with it.
    const auto expected = Reference::CircleMarks(picture, 20.0, 40000.0, -1.0, CircleSearch{7, false, 6, 3, 40020});
    ASSERT_FALSE(expected.empty());
    // Gigabytes of counters; the last one is the greatest that an int holds together with the radius.
    for (const double tolerance : {1e3, 40000.0, 1e6, 3e8, 4e8, 1e9, 2147483627.0}) {
        SCOPED_TRACE(tolerance);
        ExpectSame(Search(picture, 20.0, tolerance, -1.0), expected);
    }
}

TEST(StretchRange, OfTheFullRangeIsACopyOfItsOwn) {
    for (const int channels : {1, 2, 3, 4}) {
        const cv::Mat image = RandomInput(49).Image({31, 17}, channels);
        const cv::Mat copy = StretchRange(image, 0.0f, 255.0f);
        EXPECT_THAT(copy, EqualsMat(image));
        EXPECT_NE(copy.data, image.data);
    }
}

TEST(StretchRange, TakesTheLimitsToBlackAndWhite) {
    const cv::Mat image = (cv::Mat_<uchar>(1, 6) << 0, 50, 51, 100, 101, 255);
    const cv::Mat expected = (cv::Mat_<uchar>(1, 6) << 0, 0, 5, 250, 255, 255);
    EXPECT_THAT(StretchRange(image, 50.0f, 101.0f), EqualsMat(expected));
}

TEST(StretchRange, KeepsTheDepth) {
    const cv::Mat image = (cv::Mat_<float>(1, 3) << -1.0f, 0.0f, 3.0f);
    const cv::Mat expected = (cv::Mat_<float>(1, 3) << 0.0f, 63.75f, 255.0f);
    EXPECT_THAT(StretchRange(image, -1.0f, 3.0f), EqualsMat(expected));
}

TEST(StretchRange, WithoutARangeIsEmpty) {
    const cv::Mat image = RandomInput(50).Image({4, 4});
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(StretchRange(image, 10.0f, 10.0f).empty());
    EXPECT_TRUE(StretchRange(image, 11.0f, 10.0f).empty());
    EXPECT_TRUE(StretchRange(image, nan, 10.0f).empty());
    EXPECT_TRUE(StretchRange(image, 10.0f, nan).empty());
}

}  // namespace
}  // namespace Quorvane
