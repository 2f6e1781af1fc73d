#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "geometry/ImageOperators.h"
#include "tests/reference/PlainDominantColour.h"
#include "tests/support/Matchers.h"
#include "tests/support/Pictures.h"
#include "tests/support/RandomInput.h"

namespace Quorvane::UtilityFunctions {

using TestSupport::RandomInput;

namespace {

using Contour = std::vector<cv::Point>;

const cv::Point nowhere(-1, -1);
const cv::Vec3b red(20, 20, 220);
const cv::Vec3b green(30, 200, 40);
const cv::Vec3b blue(210, 40, 30);

Contour OutlineOf(const cv::Rect& box) {
    const cv::Point last = box.br() - cv::Point(1, 1);
    return {box.tl(), {last.x, box.y}, last, {box.x, last.y}};
}

Contour Whole(const cv::Mat& image) { return OutlineOf({cv::Point(0, 0), image.size()}); }

TEST(FindDominantLABColorPointInContour, IsAPixelOfTheCommonestColour) {
    cv::Mat image(10, 10, CV_8UC3, red);
    image.rowRange(0, 4).setTo(green);
    EXPECT_EQ(findDominantLABColorPointInContour(image, Whole(image)), cv::Point(0, 4));
}

TEST(FindDominantLABColorPointInContour, LooksOnlyInsideTheContour) {
    cv::Mat image(20, 20, CV_8UC3, red);
    image(cv::Rect(5, 6, 7, 8)).setTo(blue);
    EXPECT_EQ(findDominantLABColorPointInContour(image, OutlineOf({5, 6, 7, 8})), cv::Point(5, 6));
    // The outline belongs to the inside.
    EXPECT_EQ(findDominantLABColorPointInContour(image, OutlineOf({4, 5, 9, 10})), cv::Point(5, 6));
}

TEST(FindDominantLABColorPointInContour, OfEqualBinsTheFirstInTheOrderOfLightnessWins) {
    cv::Mat image(4, 4, CV_8UC3, cv::Scalar::all(200));
    image.rowRange(2, 4).setTo(cv::Scalar::all(60));
    EXPECT_EQ(findDominantLABColorPointInContour(image, Whole(image)), cv::Point(0, 2));
}

TEST(FindDominantLABColorPointInContour, OfEqualBinsOfOneLightnessTheFirstByAThenByBWins) {
    // Find two pairs of colours by their Lab values: same bin of L with a different a, then same L and a.
    const auto pixelWith = [](const cv::Vec3b& lab) {
        cv::Mat pixel(1, 1, CV_8UC3, lab);
        cv::cvtColor(pixel, pixel, cv::COLOR_Lab2BGR);
        return pixel.at<cv::Vec3b>(0, 0);
    };
    cv::Mat image(2, 4, CV_8UC3, pixelWith({136, 156, 132}));
    image.colRange(2, 4).setTo(pixelWith({136, 116, 148}));
    EXPECT_EQ(findDominantLABColorPointInContour(image, Whole(image)), cv::Point(2, 0));
    image.setTo(pixelWith({136, 132, 156}));
    image.colRange(2, 4).setTo(pixelWith({136, 132, 116}));
    EXPECT_EQ(findDominantLABColorPointInContour(image, Whole(image)), cv::Point(2, 0));
}

TEST(FindDominantLABColorPointInContour, IsThePixelNearestToTheMean) {
    // Three grays of one bin; the mean is that of the last one.
    cv::Mat image(1, 3, CV_8UC3);
    image.at<cv::Vec3b>(0, 0) = cv::Vec3b::all(90);
    image.at<cv::Vec3b>(0, 1) = cv::Vec3b::all(98);
    image.at<cv::Vec3b>(0, 2) = cv::Vec3b::all(94);
    cv::Mat lab;
    cv::cvtColor(image, lab, cv::COLOR_BGR2Lab);
    ASSERT_EQ(lab.at<cv::Vec3b>(0, 0)[0] / 16, lab.at<cv::Vec3b>(0, 1)[0] / 16) << "one bin of lightness";
    EXPECT_EQ(findDominantLABColorPointInContour(image, Whole(image)), cv::Point(2, 0));
}

TEST(FindDominantLABColorPointInContour, TheMeanIsTruncated) {
    // Two pixels of one bin whose L differs by one: their mean ends in a half, which is cut off, so the darker one is
    // the nearest although the brighter one comes first.
    cv::Mat image(1, 2, CV_8UC3);
    image.at<cv::Vec3b>(0, 0) = cv::Vec3b::all(95);
    image.at<cv::Vec3b>(0, 1) = cv::Vec3b::all(94);
    cv::Mat lab;
    cv::cvtColor(image, lab, cv::COLOR_BGR2Lab);
    ASSERT_EQ(lab.at<cv::Vec3b>(0, 0)[0], lab.at<cv::Vec3b>(0, 1)[0] + 1);
    ASSERT_EQ(lab.at<cv::Vec3b>(0, 0)[0] / 16, lab.at<cv::Vec3b>(0, 1)[0] / 16) << "one bin of lightness";
    EXPECT_EQ(findDominantLABColorPointInContour(image, Whole(image)), cv::Point(1, 0));
}

TEST(FindDominantLABColorPointInContour, DoesNotLookAtAlpha) {
    const cv::Mat image = TestSupport::LoadColourPicture("coffee.png");
    cv::Mat withAlpha;
    cv::cvtColor(image, withAlpha, cv::COLOR_BGR2BGRA);
    EXPECT_EQ(findDominantLABColorPointInContour(withAlpha, Whole(image)),
              findDominantLABColorPointInContour(image, Whole(image)));
}

TEST(FindDominantLABColorPointInContour, OfEquallyNearPixelsTheFirstInScanOrderWins) {
    const cv::Mat image(9, 9, CV_8UC3, red);
    EXPECT_EQ(findDominantLABColorPointInContour(image, {{4, 2}, {7, 5}, {4, 8}, {1, 5}}), cv::Point(4, 2));
}

TEST(FindDominantLABColorPointInContour, OfNothingIsNowhere) {
    const cv::Mat image(10, 10, CV_8UC3, red);
    EXPECT_EQ(findDominantLABColorPointInContour(cv::Mat(), Whole(image)), nowhere);
    EXPECT_EQ(findDominantLABColorPointInContour(image, {}), nowhere);
    EXPECT_EQ(findDominantLABColorPointInContour(cv::Mat(), {}), nowhere);
}

TEST(FindDominantLABColorPointInContour, OutsideTheImageIsNowhere) {
    const cv::Mat image(10, 10, CV_8UC3, red);
    for (const cv::Point& corner : {cv::Point(20, 2), cv::Point(2, 20), cv::Point(-20, 2), cv::Point(2, -20)}) {
        EXPECT_EQ(findDominantLABColorPointInContour(image, OutlineOf({corner, cv::Size(5, 5)})), nowhere) << corner;
    }
    // Its box meets the image, but its area does not.
    EXPECT_EQ(findDominantLABColorPointInContour(image, {{-10, 5}, {5, -10}, {-10, -10}}), nowhere);
}

TEST(FindDominantLABColorPointInContour, TakesAContourOfOnePointOrOneLine) {
    const cv::Mat image(10, 10, CV_8UC3, red);
    EXPECT_EQ(findDominantLABColorPointInContour(image, {{3, 7}}), cv::Point(3, 7));
    EXPECT_EQ(findDominantLABColorPointInContour(image, {{3, 7}, {6, 4}}), cv::Point(6, 4));
}

TEST(FindDominantLABColorPointInContour, TakesACorruptContour) {
    const cv::Mat image(10, 10, CV_8UC3, red);
    constexpr int far = 1000000;
    EXPECT_EQ(findDominantLABColorPointInContour(image, {{-far, -far}, {far, -far}, {far, far}, {-far, far}}),
              cv::Point(0, 0));
}

TEST(FindDominantLABColorPointInContour, NeedsAPictureThatHasALabForm) {
    for (const int type : {CV_8UC1, CV_8UC2, CV_16UC3, CV_32FC3}) {
        const cv::Mat image = cv::Mat::zeros(10, 10, type);
        EXPECT_THROW(findDominantLABColorPointInContour(image, Whole(image)), cv::Exception) << type;
        EXPECT_THROW(findDominantLABColorPointInContour(image, OutlineOf({50, 50, 5, 5})), cv::Exception) << type;
    }
}

/// A contour that crosses the borders of the image now and then, and itself often.
Contour RandomContour(RandomInput& random, const cv::Size& size) {
    const int overhang = random.Integer(0, 1) == 0 ? 0 : random.Integer(0, 60);
    Contour contour;
    for (int n = random.Integer(1, 12); n > 0; --n) {
        contour.emplace_back(random.Integer(-overhang, size.width - 1 + overhang),
                             random.Integer(-overhang, size.height - 1 + overhang));
    }
    return contour;
}

TEST(FindDominantLABColorPointInContour, EqualsThePlainSearchOnRandomImages) {
    RandomInput random(90);
    for (int i = 0; i < 4000; ++i) {
        const cv::Size size(random.Integer(1, 70), random.Integer(1, 50));
        const int least = random.Integer(0, 250);
        const cv::Mat image = random.Image(size, 3, least, std::min(255, least + random.Integer(0, 60)));
        const Contour contour = RandomContour(random, size);
        ASSERT_EQ(findDominantLABColorPointInContour(image, contour), Reference::DominantColourPoint(image, contour))
            << "image " << i << ", " << size << ", " << contour;
    }
}

TEST(FindDominantLABColorPointInContour, EqualsThePlainSearchOnPictures) {
    RandomInput random(91);
    for (const std::string& name : TestSupport::PictureNames()) {
        const cv::Mat image = TestSupport::LoadColourPicture(name);
        ASSERT_EQ(findDominantLABColorPointInContour(image, Whole(image)),
                  Reference::DominantColourPoint(image, Whole(image)))
            << name;
        for (int i = 0; i < 30; ++i) {
            const Contour contour = RandomContour(random, image.size());
            ASSERT_EQ(findDominantLABColorPointInContour(image, contour),
                      Reference::DominantColourPoint(image, contour))
                << name << ", " << contour;
        }
    }
}

}  // namespace
}  // namespace Quorvane::UtilityFunctions
