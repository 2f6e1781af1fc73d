#include "Includes/ColorGradient.h"

#include <algorithm>
#include <cstdint>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "Includes/FeatureSelection.h"
#include "Includes/GradientSettings.h"
#include "Includes/OrientationLabel.h"

namespace line2Dup {

namespace {

/// Horizontal and vertical derivative, CV_32F, and their squared magnitude.
struct Gradients {
    cv::Mat dx;
    cv::Mat dy;
    cv::Mat magnitude;
};

Gradients gradientsOfOneChannel(const cv::Mat& blurred) {
    Gradients gradients;
    cv::Sobel(blurred, gradients.dx, CV_32F, 1, 0, sobelSize, 1.0, 0.0, gradientBorder);
    cv::Sobel(blurred, gradients.dy, CV_32F, 0, 1, sobelSize, 1.0, 0.0, gradientBorder);
    cv::Mat squaredDy;
    cv::multiply(gradients.dx, gradients.dx, gradients.magnitude);
    cv::multiply(gradients.dy, gradients.dy, squaredDy);
    cv::add(gradients.magnitude, squaredDy, gradients.magnitude);
    return gradients;
}

/// Rows are walked in steps of three values whatever the number of channels: a deliberate oddity, on which the features
/// of pictures with an alpha channel depend. Values behind the end of the image count as 0.
cv::Mat readAsThreeChannels(const cv::Mat& image) {
    if (image.channels() == 3) return image;
    cv::Mat three = cv::Mat::zeros(image.size(), CV_16SC3);
    const auto* values = image.ptr<short>();
    const auto available = static_cast<std::ptrdiff_t>(image.total()) * image.channels();
    for (int r = 0; r < image.rows; ++r) {
        const std::ptrdiff_t first = static_cast<std::ptrdiff_t>(r) * image.cols * image.channels();
        const std::ptrdiff_t count = std::min<std::ptrdiff_t>(std::ptrdiff_t{3} * image.cols, available - first);
        std::copy_n(values + first, count, three.ptr<short>(r));
    }
    return three;
}

Gradients gradientsOfStrongestChannel(const cv::Mat& blurred) {
    cv::Mat allDx;
    cv::Mat allDy;
    cv::Sobel(blurred, allDx, CV_16S, 1, 0, sobelSize, 1.0, 0.0, gradientBorder);
    cv::Sobel(blurred, allDy, CV_16S, 0, 1, sobelSize, 1.0, 0.0, gradientBorder);
    allDx = readAsThreeChannels(allDx);
    allDy = readAsThreeChannels(allDy);
    Gradients gradients;
    gradients.dx.create(blurred.size(), CV_32F);
    gradients.dy.create(blurred.size(), CV_32F);
    gradients.magnitude.create(blurred.size(), CV_32F);
    for (int r = 0; r < blurred.rows; ++r) {
        const auto* dx = allDx.ptr<cv::Vec3s>(r);
        const auto* dy = allDy.ptr<cv::Vec3s>(r);
        auto* strongestDx = gradients.dx.ptr<float>(r);
        auto* strongestDy = gradients.dy.ptr<float>(r);
        auto* magnitude = gradients.magnitude.ptr<float>(r);
        for (int c = 0; c < blurred.cols; ++c) {
            int strongest = 0;
            std::int64_t most = -1;
            for (int channel = 0; channel < 3; ++channel) {
                const std::int64_t x = dx[c][channel];
                const std::int64_t y = dy[c][channel];
                const std::int64_t squared = x * x + y * y;
                if (squared > most) {
                    most = squared;
                    strongest = channel;
                }
            }
            strongestDx[c] = dx[c][strongest];
            strongestDy[c] = dy[c][strongest];
            magnitude[c] = static_cast<float>(most);
        }
    }
    return gradients;
}

/// The label of every pixel as a one-hot byte, before any vote. The outermost rows and columns are set to label 0.
cv::Mat oneHotLabels(const cv::Mat& angle) {
    cv::Mat labels;
    angle.convertTo(labels, CV_8U, directionsInCircle / 360.0);
    for (int r = 0; r < labels.rows; ++r) {
        auto* row = labels.ptr(r);
        const bool outermost = r == 0 || r == labels.rows - 1;
        for (int c = 0; c < labels.cols; ++c) {
            const bool border = outermost || c == 0 || c == labels.cols - 1;
            row[c] = static_cast<uchar>(oneHotOf(border ? 0 : row[c] % labelCount));
        }
    }
    return labels;
}

}  // namespace

ColorGradient::ColorGradient(float weakThreshold_, std::size_t featureCount_, float strongThreshold_)
    : weakThreshold(weakThreshold_), featureCount(featureCount_), strongThreshold(strongThreshold_) {}

std::shared_ptr<ColorGradientPyramid> ColorGradient::makePyramid(const cv::Mat& source, const cv::Mat& mask) const {
    return std::make_shared<ColorGradientPyramid>(source, mask, *this, ColorGradientPyramid::OnlyByMakePyramid());
}

ColorGradientPyramid::ColorGradientPyramid(const cv::Mat& source, const cv::Mat& sourceMask,
                                           const ColorGradient& settings, OnlyByMakePyramid /*key*/)
    : src(source),
      mask(sourceMask),
      weakThreshold(settings.weakThreshold),
      featureCount(settings.featureCount),
      strongThreshold(settings.strongThreshold) {
    computeGradients();
}

void ColorGradientPyramid::computeGradients() {
    if (src.empty()) return;
    cv::Mat blurred;
    cv::GaussianBlur(src, blurred, cv::Size(blurSize, blurSize), 0.0, 0.0, gradientBorder);
    const Gradients gradients =
        src.channels() == 1 ? gradientsOfOneChannel(blurred) : gradientsOfStrongestChannel(blurred);
    magnitude = gradients.magnitude;
    cv::Mat angle;
    cv::phase(gradients.dx, gradients.dy, angle, true);
    quantiseByVote(magnitude, quantised, angle, weakThreshold * weakThreshold);
    rawAngle = angle;
}

void ColorGradientPyramid::downsample() {
    featureCount >>= 1;
    ++pyramidLevel;
    const cv::Size size(src.cols / 2, src.rows / 2);
    cv::Mat next;
    cv::pyrDown(src, next, size, cv::BORDER_DEFAULT);
    src = next;
    if (!mask.empty()) {
        cv::Mat nextMask;
        cv::resize(mask, nextMask, size, 0.0, 0.0, cv::INTER_NEAREST);
        mask = nextMask;
    }
    computeGradients();
}

bool ColorGradientPyramid::extractFeatures(ShapeTemplate& out) const {
    const std::vector<FeatureCandidate> candidates = findCandidates(*this);
    if (!selectFeatures(candidates, featureCount, out.features)) return false;
    out.width = -1;
    out.height = -1;
    out.pyramidLevel = pyramidLevel;
    return true;
}

void quantiseByVote(const cv::Mat& magnitude, cv::Mat& quantised, const cv::Mat& angle, float squaredThreshold) {
    const cv::Mat labels = oneHotLabels(angle);
    quantised = cv::Mat::zeros(angle.size(), CV_8U);
    for (int r = 1; r < angle.rows - 1; ++r) {
        auto* row = quantised.ptr(r);
        majorityOfNine(labels.ptr(r - 1), labels.ptr(r), labels.ptr(r + 1), row, angle.cols);
        const auto* strength = magnitude.ptr<float>(r);
        for (int c = 1; c < angle.cols - 1; ++c) {
            if (!(strength[c] > squaredThreshold)) row[c] = 0;
        }
    }
}

}  // namespace line2Dup
