#include "Includes/GaussianRows.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "Includes/GradientSettings.h"
#include "tests/support/Matchers.h"
#include "tests/support/Pictures.h"
#include "tests/support/RandomInput.h"

namespace line2Dup {

using Quorvane::TestSupport::EqualsMat;
using Quorvane::TestSupport::RandomInput;
namespace TestSupport = Quorvane::TestSupport;

namespace {

cv::Mat BlurPart(const cv::Mat& image, const cv::Rect& part) {
    GaussianRows gaussian(image, cv::Range(part.x, part.br().x));
    std::vector<std::vector<short>> blurred(static_cast<std::size_t>(image.channels()),
                                            std::vector<short>(gaussian.writtenValues()));
    std::vector<short*> destinations;
    for (std::vector<short>& row : blurred) destinations.push_back(row.data());
    cv::Mat result(part.size(), image.type());
    for (int y = 0; y < part.height; ++y) {
        gaussian.blur(part.y + y, destinations.data());
        for (int x = 0; x < result.cols; ++x) {
            for (int k = 0; k < image.channels(); ++k) {
                result.ptr(y)[x * image.channels() + k] =
                    cv::saturate_cast<uchar>(blurred[static_cast<std::size_t>(k)][static_cast<std::size_t>(x)]);
            }
        }
    }
    return result;
}

cv::Mat OpenCvBlur(const cv::Mat& image) {
    cv::Mat blurred;
    cv::GaussianBlur(image, blurred, cv::Size(blurSize, blurSize), 0.0, 0.0, gradientBorder);
    return blurred;
}

TEST(GaussianRows, EqualOpenCvsBlurOfTheWholeImageInAnyPartOfIt) {
    RandomInput random(371);
    for (int i = 0; i < 400; ++i) {
        const cv::Mat image = random.Image({random.Integer(1, 70), random.Integer(1, 30)}, i % 3 == 0 ? 1 : 3);
        const int left = random.Integer(0, image.cols - 1);
        const int top = random.Integer(0, image.rows - 1);
        const cv::Rect part(left, top, random.Integer(1, image.cols - left), random.Integer(1, image.rows - top));
        ASSERT_THAT(BlurPart(image, part), EqualsMat(OpenCvBlur(image)(part).clone()))
            << i << ", " << part << " of " << image.size();
    }
}

TEST(GaussianRows, EqualOpenCvsBlurForTheDarkestAndBrightestPixels) {
    RandomInput random(372);
    for (int i = 0; i < 50; ++i) {
        cv::Mat image = random.Image({40, 20}, 1);
        cv::threshold(image, image, random.Integer(10, 245), 255, cv::THRESH_BINARY);
        ASSERT_THAT(BlurPart(image, {0, 0, 40, 20}), EqualsMat(OpenCvBlur(image))) << i;
    }
    const cv::Mat white(20, 40, CV_8UC3, cv::Scalar::all(255));
    EXPECT_THAT(BlurPart(white, {0, 0, 40, 20}), EqualsMat(white));
}

TEST(GaussianRows, EqualOpenCvsBlurOnPictures) {
    for (const std::string& name : TestSupport::PictureNames()) {
        const cv::Mat picture = TestSupport::LoadColourPicture(name);
        EXPECT_THAT(BlurPart(picture, {cv::Point(), picture.size()}), EqualsMat(OpenCvBlur(picture))) << name;
    }
}

TEST(GaussianRows, SkipRowsThatNobodyAsksFor) {
    RandomInput random(373);
    const cv::Mat image = random.Image({30, 60}, 3);
    GaussianRows gaussian(image, {0, 30});
    std::vector<short> rows[3];
    short* destinations[3];
    for (int k = 0; k < 3; ++k) {
        rows[k].resize(gaussian.writtenValues());
        destinations[k] = rows[k].data();
    }
    for (const int y : {2, 3, 9, 40, 59}) {
        gaussian.blur(y, destinations);
        EXPECT_EQ(rows[1][17], OpenCvBlur(image).at<cv::Vec3b>(y, 17)[1]) << y;
    }
}

}  // namespace
}  // namespace line2Dup
