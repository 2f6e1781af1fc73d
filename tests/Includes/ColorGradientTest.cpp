#include "Includes/ColorGradient.h"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "tests/Includes/MatcherScenes.h"
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

const ColorGradient settings(30.0f, 64, 60.0f);

void ExpectPlainGradients(const cv::Mat& image) {
    const auto pyramid = settings.makePyramid(image, cv::Mat());
    const Reference::GradientImages expected = Reference::ComputeGradients(image, 30.0f);
    EXPECT_THAT(pyramid->magnitude, EqualsMat(expected.magnitude));
    EXPECT_THAT(pyramid->rawAngle, EqualsMat(expected.rawAngle));
    EXPECT_THAT(pyramid->quantised, EqualsMat(expected.quantised));
}

/// A smooth picture: noise would give orientations hardly anywhere.
cv::Mat SmoothRandomImage(RandomInput& random, cv::Size size, int channels) {
    cv::Mat image = random.Image(size, channels);
    cv::GaussianBlur(image, image, {9, 9}, 2.5);
    cv::normalize(image, image, 0.0, 255.0, cv::NORM_MINMAX);
    return image;
}

TEST(MakePyramid, CopiesTheSettingsAndStartsAtLevelZero) {
    const cv::Mat mask(20, 30, CV_8U, cv::Scalar(255));
    const auto pyramid = ColorGradient(12.5f, 77, 80.0f).makePyramid(RandomInput(340).Image({30, 20}), mask);
    EXPECT_EQ(pyramid->pyramidLevel, 0);
    EXPECT_EQ(pyramid->weakThreshold, 12.5f);
    EXPECT_EQ(pyramid->featureCount, 77u);
    EXPECT_EQ(pyramid->strongThreshold, 80.0f);
    EXPECT_EQ(pyramid->mask.data, mask.data);
    EXPECT_EQ(pyramid->quantised.type(), CV_8U);
    EXPECT_EQ(pyramid->magnitude.type(), CV_32F);
    EXPECT_EQ(pyramid->rawAngle.type(), CV_32F);
}

TEST(ComputeGradients, EqualsThePlainFormulationOnRandomImages) {
    RandomInput random(341);
    for (int i = 0; i < 120; ++i) {
        const cv::Size size(random.Integer(1, 70), random.Integer(1, 50));
        ExpectPlainGradients(SmoothRandomImage(random, size, i % 2 == 0 ? 3 : 1));
    }
}

TEST(ComputeGradients, EqualsThePlainFormulationOnPictures) {
    for (const std::string& name : TestSupport::PictureNames()) {
        ExpectPlainGradients(TestSupport::LoadColourPicture(name));
        ExpectPlainGradients(TestSupport::LoadGrayPicture(name));
    }
}

TEST(ComputeGradients, TakesTheFirstOfEquallyStrongChannels) {
    // A ramp up, a ramp down and a flat channel: the first two are equally steep and point opposite ways.
    for (int first = 0; first < 3; ++first) {
        for (int second = 0; second < 3; ++second) {
            if (first == second) continue;
            cv::Mat image(12, 24, CV_8UC3, cv::Scalar::all(100));
            for (int r = 0; r < image.rows; ++r) {
                for (int c = 0; c < image.cols; ++c) {
                    image.at<cv::Vec3b>(r, c)[first] = static_cast<uchar>(10 * c);
                    image.at<cv::Vec3b>(r, c)[second] = static_cast<uchar>(230 - 10 * c);
                }
            }
            const auto pyramid = settings.makePyramid(image, cv::Mat());
            EXPECT_EQ(pyramid->rawAngle.at<float>(6, 12), first < second ? 0.0f : 180.0f) << first << ", " << second;
            EXPECT_EQ(pyramid->magnitude.at<float>(6, 12), 6400.0f);
            EXPECT_EQ(pyramid->quantised.at<uchar>(6, 12), 1);
        }
    }
}

TEST(ComputeGradients, WalksFourChannelsInStepsOfThree) {
    RandomInput random(342);
    const cv::Mat image = SmoothRandomImage(random, {21, 9}, 4);
    cv::Mat blurred;
    cv::GaussianBlur(image, blurred, {7, 7}, 0.0, 0.0, cv::BORDER_REPLICATE);
    cv::Mat dx;
    cv::Mat dy;
    cv::Sobel(blurred, dx, CV_16S, 1, 0, 3, 1.0, 0.0, cv::BORDER_REPLICATE);
    cv::Sobel(blurred, dy, CV_16S, 0, 1, 3, 1.0, 0.0, cv::BORDER_REPLICATE);
    const auto pyramid = settings.makePyramid(image, cv::Mat());
    for (int r = 0; r < image.rows; ++r) {
        for (int c = 0; c < image.cols; ++c) {
            int most = 0;
            for (int k = 3 * c; k < 3 * c + 3; ++k) {
                const int x = dx.ptr<short>(r)[k];
                const int y = dy.ptr<short>(r)[k];
                most = std::max(most, x * x + y * y);
            }
            ASSERT_EQ(pyramid->magnitude.at<float>(r, c), static_cast<float>(most)) << c << ", " << r;
        }
    }
}

TEST(ComputeGradients, ReadsNothingBehindAPictureOfTwoChannels) {
    const cv::Mat image = RandomInput(343).Image({13, 11}, 2);
    EXPECT_EQ(settings.makePyramid(image, cv::Mat())->quantised.size(), image.size());
}

TEST(ComputeGradients, GivesAUniformImageNoOrientation) {
    const auto pyramid = settings.makePyramid(cv::Mat(20, 20, CV_8UC3, cv::Scalar(9, 80, 200)), cv::Mat());
    EXPECT_EQ(cv::countNonZero(pyramid->quantised), 0);
    ShapeTemplate templ;
    testing::internal::CaptureStdout();
    EXPECT_FALSE(pyramid->extractFeatures(templ));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "too few features, abort\n");
}

TEST(ComputeGradients, DoesNothingToAnEmptyImage) {
    const auto pyramid = settings.makePyramid(cv::Mat(), cv::Mat());
    EXPECT_TRUE(pyramid->quantised.empty());
    EXPECT_TRUE(pyramid->magnitude.empty());
    EXPECT_TRUE(pyramid->rawAngle.empty());
}

TEST(ComputeGradients, IsTrueToTheWholePictureInASubImage) {
    // OpenCV's filters look beyond the edge of a sub-image, and so do the gradients.
    const cv::Mat whole = TestSupport::LoadColourPicture("coffee.png");
    ExpectPlainGradients(whole(cv::Rect(100, 80, 130, 90)));
}

TEST(QuantiseByVote, NeedsFiveOfNineAndMoreThanTheThreshold) {
    const float right = 0.0f;
    const float down = 90.0f;
    cv::Mat angle = (cv::Mat_<float>(5, 5) << right, right, right, right, right,  //
                     right, down, down, right, right,                             //
                     right, down, down, right, right,                             //
                     right, right, right, down, right,                            //
                     right, right, right, right, right);
    cv::Mat magnitude(5, 5, CV_32F, cv::Scalar(901.0));
    magnitude.at<float>(1, 2) = 900.0f;
    cv::Mat quantised;
    quantiseByVote(magnitude, quantised, angle, 900.0f);
    // Five votes for down at (2, 2); at (1, 1), (2, 1) and elsewhere at least five for right; (1, 2) is too weak.
    const cv::Mat expected =
        (cv::Mat_<uchar>(5, 5) << 0, 0, 0, 0, 0, 0, 1, 0, 1, 0, 0, 1, 16, 1, 0, 0, 1, 1, 1, 0, 0, 0, 0, 0, 0);
    EXPECT_THAT(quantised, EqualsMat(expected));
}

TEST(QuantiseByVote, LetsTheEdgeVoteForLabelZeroAndFoldsOppositeDirections) {
    cv::Mat angle(4, 4, CV_32F, cv::Scalar(225.0));
    const cv::Mat magnitude(4, 4, CV_32F, cv::Scalar(1.0));
    cv::Mat quantised;
    quantiseByVote(magnitude, quantised, angle, 0.0f);
    // Each inner pixel has five edge pixels around it.
    const cv::Mat expected = (cv::Mat_<uchar>(4, 4) << 0, 0, 0, 0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 0, 0, 0);
    EXPECT_THAT(quantised, EqualsMat(expected));
    angle = cv::Mat(7, 7, CV_32F, cv::Scalar(225.0));
    quantiseByVote(cv::Mat(7, 7, CV_32F, cv::Scalar(1.0)), quantised, angle, 0.0f);
    EXPECT_EQ(quantised.at<uchar>(3, 3), 1 << 2);
}

TEST(QuantiseByVote, RoundsAnglesBetweenTwoLabelsToTheEvenOne) {
    const auto labelOf = [](float degrees) {
        const cv::Mat angle(7, 7, CV_32F, cv::Scalar(degrees));
        cv::Mat quantised;
        quantiseByVote(cv::Mat(7, 7, CV_32F, cv::Scalar(1.0)), quantised, angle, 0.0f);
        return getLabel(quantised.at<uchar>(3, 3));
    };
    EXPECT_EQ(labelOf(11.25f), 0);
    EXPECT_EQ(labelOf(33.75f), 2);
    EXPECT_EQ(labelOf(11.5f), 1);
    EXPECT_EQ(labelOf(33.5f), 1);
    EXPECT_EQ(labelOf(355.0f), 0);
    EXPECT_EQ(labelOf(360.0f), 0);
}

TEST(Downsample, HalvesImageMaskAndFeatureCount) {
    const cv::Mat image = RandomInput(344).Image({37, 25}, 3);
    cv::Mat mask = cv::Mat::zeros(25, 37, CV_8U);
    mask(cv::Rect(5, 5, 20, 10)) = 255;
    const auto pyramid = ColorGradient(30.0f, 65, 60.0f).makePyramid(image, mask);
    pyramid->downsample();
    cv::Mat half;
    cv::pyrDown(image, half, {18, 12});
    cv::Mat halfMask;
    cv::resize(mask, halfMask, {18, 12}, 0.0, 0.0, cv::INTER_NEAREST);
    EXPECT_EQ(pyramid->featureCount, 32u);
    EXPECT_EQ(pyramid->pyramidLevel, 1);
    EXPECT_THAT(pyramid->src, EqualsMat(half));
    EXPECT_THAT(pyramid->mask, EqualsMat(halfMask));
    EXPECT_THAT(pyramid->quantised, EqualsMat(Reference::ComputeGradients(half, 30.0f).quantised));
}

TEST(Downsample, KeepsTheCallersImageAndMask) {
    const cv::Mat image = RandomInput(345).Image({32, 32}, 3);
    const cv::Mat mask(32, 32, CV_8U, cv::Scalar(255));
    const cv::Mat imageBefore = image.clone();
    const cv::Mat maskBefore = mask.clone();
    settings.makePyramid(image, mask)->downsample();
    EXPECT_THAT(image, EqualsMat(imageBefore));
    EXPECT_THAT(mask, EqualsMat(maskBefore));
}

}  // namespace
}  // namespace line2Dup
