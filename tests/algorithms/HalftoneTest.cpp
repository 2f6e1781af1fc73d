#include "algorithms/Halftone.h"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>
#include <string>

#include "algorithms/LocalDeviationMap.h"
#include "algorithms/UniformDraw.h"
#include "tests/reference/PlainHalftone.h"
#include "tests/support/Matchers.h"
#include "tests/support/Pictures.h"
#include "tests/support/RandomInput.h"

namespace Quorvane {

using TestSupport::EqualsMat;
using TestSupport::RandomInput;

namespace {

cv::Mat OtsuOf(const cv::Mat& gray) {
    cv::Mat otsu;
    cv::threshold(gray, otsu, 0.0, 255.0, cv::THRESH_BINARY | cv::THRESH_OTSU);
    return otsu;
}

cv::Mat DotsOf(const cv::Mat& gray, ChanceBand band, int side, std::uint32_t seed) {
    return ThrowDots(gray, OtsuOf(gray), LocalDeviationMap(gray, side), band, seed);
}

TEST(ThrowDots, EqualsThePlainHalftoneOfTheSameSeedOnRandomImages) {
    RandomInput random(71);
    for (std::uint32_t seed = 0; seed < 600; ++seed) {
        const int least = random.Integer(0, 200);
        const cv::Size size(random.Integer(1, 50), random.Integer(1, 40));
        const cv::Mat gray = random.Image(size, 1, least, random.Integer(least, 255));
        // Bands that are wide, narrow, of one brightness and crossed.
        const auto low = static_cast<float>(random.Integer(0, 255));
        const auto high = static_cast<float>(random.Integer(0, 3) == 0 ? low : random.Integer(0, 255));
        const int side = 2 * random.Integer(0, 6) + 1;
        ASSERT_THAT(DotsOf(gray, {low, high}, side, seed), EqualsMat(Reference::Halftone(gray, high, low, side, seed)))
            << "seed " << seed << ", low " << low << ", high " << high << ", side " << side;
    }
}

TEST(ThrowDots, EqualsThePlainHalftoneOfTheSameSeedOnPictures) {
    for (const std::string& name : TestSupport::PictureNames()) {
        const cv::Mat gray = TestSupport::LoadGrayPicture(name);
        ASSERT_THAT(DotsOf(gray, {20.0f, 240.0f}, 5, 72), EqualsMat(Reference::Halftone(gray, 240.0f, 20.0f, 5, 72)))
            << name;
    }
}

TEST(ThrowDots, DrawsForThePixelsOfTheBandAloneInTheirOrder) {
    // Background, above the band, below it, and three in it: without any deviation each of the three is a dot where its
    // own draw, the first, second and third, is below a tenth.
    const cv::Mat gray = (cv::Mat_<uchar>(2, 3) << 150, 250, 150, 10, 100, 200);
    const cv::Mat foreground = (cv::Mat_<uchar>(2, 3) << 0, 255, 255, 255, 255, 255);
    const cv::Mat flat = cv::Mat::zeros(gray.size(), CV_32FC1);
    int dotsOfBand = 0;
    for (std::uint32_t seed = 0; seed < 300; ++seed) {
        MersenneTwister generator(seed);
        cv::Mat expected = (cv::Mat_<uchar>(2, 3) << 0, 255, 0, 0, 0, 0);
        for (const cv::Point& pixel : {cv::Point(2, 0), cv::Point(1, 1), cv::Point(2, 1)}) {
            if (DrawUniform(generator) < static_cast<double>(0.1f)) expected.at<uchar>(pixel) = 255;
        }
        ASSERT_THAT(ThrowDots(gray, foreground, flat, {20.0f, 240.0f}, seed), EqualsMat(expected)) << seed;
        dotsOfBand += cv::countNonZero(expected) - 1;
    }
    EXPECT_GT(dotsOfBand, 50);
}

TEST(ThrowDots, TakesSixteenBits) {
    const cv::Mat gray = RandomInput(73).Image({40, 30});
    cv::Mat wide;
    gray.convertTo(wide, CV_16U);
    cv::Mat wideForeground;
    OtsuOf(gray).convertTo(wideForeground, CV_16U);
    cv::Mat expected;
    DotsOf(gray, {20.0f, 240.0f}, 5, 74).convertTo(expected, CV_16U);
    EXPECT_THAT(ThrowDots(wide, wideForeground, LocalDeviationMap(gray, 5), {20.0f, 240.0f}, 74), EqualsMat(expected));
}

}  // namespace
}  // namespace Quorvane
