#include "Includes/RegionQuantiser.h"

#include <gtest/gtest.h>

#include <limits>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "Includes/ColorGradient.h"
#include "tests/reference/PlainShapeMatcher.h"
#include "tests/support/Matchers.h"
#include "tests/support/Pictures.h"
#include "tests/support/RandomInput.h"

namespace line2Dup {

using Quorvane::TestSupport::EqualsMat;
using Quorvane::TestSupport::RandomInput;
namespace Reference = Quorvane::Reference;
namespace TestSupport = Quorvane::TestSupport;

namespace {

cv::Mat QuantiseWhole(const cv::Mat& image, float weakThreshold) {
    cv::Mat quantised(image.size(), CV_8U, cv::Scalar(77));
    quantiseRegion(image, cv::Rect(cv::Point(), image.size()), weakThreshold, quantised);
    return quantised;
}

cv::Mat RandomImage(RandomInput& random, cv::Size size, int channels) {
    cv::Mat image = random.Image(size, channels);
    if (random.Integer(0, 3) > 0) {
        cv::GaussianBlur(image, image, {9, 9}, random.Real(0.8, 3.0));
        cv::normalize(image, image, 0.0, 255.0, cv::NORM_MINMAX);
    }
    return image;
}

TEST(QuantiseRegion, EqualsThePlainGradientsOnWholeRandomImages) {
    RandomInput random(370);
    for (int i = 0; i < 300; ++i) {
        const cv::Mat image = RandomImage(random, {random.Integer(1, 70), random.Integer(1, 40)}, i % 3 == 0 ? 1 : 3);
        const auto weak = static_cast<float>(random.Real(0.0, 60.0));
        ASSERT_THAT(QuantiseWhole(image, weak), EqualsMat(Reference::ComputeGradients(image, weak).quantised))
            << i << ", " << image.size();
    }
}

TEST(QuantiseRegion, EqualsThePlainGradientsInAnyRegion) {
    RandomInput random(371);
    for (int i = 0; i < 300; ++i) {
        const cv::Mat image = RandomImage(random, {random.Integer(4, 90), random.Integer(4, 60)}, i % 3 == 0 ? 1 : 3);
        const int x = random.Integer(0, image.cols - 1);
        const int y = random.Integer(0, image.rows - 1);
        const cv::Rect region(x, y, random.Integer(1, image.cols - x), random.Integer(1, image.rows - y));
        cv::Mat quantised(image.size(), CV_8U, cv::Scalar(77));
        quantiseRegion(image, region, 30.0f, quantised);
        cv::Mat expected(image.size(), CV_8U, cv::Scalar(77));
        Reference::ComputeGradients(image, 30.0f).quantised(region).copyTo(expected(region));
        ASSERT_THAT(quantised, EqualsMat(expected)) << i << ", " << region << " of " << image.size();
    }
}

TEST(QuantiseRegion, EqualsTheLibrarysGradientsOnPictures) {
    for (const std::string& name : TestSupport::PictureNames()) {
        for (const cv::Mat& picture : {TestSupport::LoadColourPicture(name), TestSupport::LoadGrayPicture(name)}) {
            const auto pyramid = ColorGradient(30.0f, 64, 60.0f).makePyramid(picture, cv::Mat());
            EXPECT_THAT(QuantiseWhole(picture, 30.0f), EqualsMat(pyramid->quantised)) << name;
        }
    }
}

TEST(QuantiseRegion, TakesThresholdsOfAllKinds) {
    const cv::Mat image = TestSupport::LoadColourPicture("coffee.png")(cv::Rect(50, 50, 90, 70)).clone();
    for (const float weak : {0.0f, -30.0f, 29.99f, 30.01f, 1442.0f, 1443.0f, 1e20f,
                             std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()}) {
        EXPECT_THAT(QuantiseWhole(image, weak), EqualsMat(Reference::ComputeGradients(image, weak).quantised)) << weak;
    }
}

TEST(CanQuantiseRegions, IsForWholeImagesOfBytes) {
    const cv::Mat image(20, 20, CV_8UC3);
    EXPECT_TRUE(canQuantiseRegions(image));
    EXPECT_TRUE(canQuantiseRegions(cv::Mat(20, 20, CV_8UC1)));
    EXPECT_FALSE(canQuantiseRegions(cv::Mat(20, 20, CV_8UC4)));
    EXPECT_FALSE(canQuantiseRegions(cv::Mat(20, 20, CV_32FC1)));
    EXPECT_FALSE(canQuantiseRegions(image(cv::Rect(0, 0, 10, 20))));
}

}  // namespace
}  // namespace line2Dup
