#include "Includes/ShapeVariantSet.h"

#include <limits>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "Includes/LargestContour.h"

namespace Quorvane {

namespace {

const cv::Point2f nowhere(-1.0f, -1.0f);

cv::Point2f MiddleOf(const cv::Mat& image) {
    return {static_cast<float>(image.cols) * 0.5f, static_cast<float>(image.rows) * 0.5f};
}

bool IsEnumerable(const std::vector<float>& range) { return range.size() == 1 || range.size() == 2; }

/// The values of a range of one value or of two.
std::vector<float> ValuesOf(const std::vector<float>& range, float step, float eps) {
    if (range.size() == 1) return {range.front()};
    std::vector<float> values;
    // Added up in float on purpose: it decides how many values there are and what the angles of all hits are.
    float value = range[0];
    while (value <= range[1] + eps) {
        values.push_back(value);
        value += step;
    }
    return values;
}

/// Whether a turn by no angle at its own size gives the image again to the bit: interpolation then has whole weights,
/// and sums of them are exact for bytes. What `cv::warpAffine` refuses or cannot address is left to it.
bool StaysAsItIs(const cv::Mat& image, float angle, float scale) {
    constexpr int addressable = std::numeric_limits<short>::max();
    return angle == 0.0f && scale == 1.0f && image.depth() == CV_8U && image.cols < addressable &&
           image.rows < addressable;
}

}  // namespace

ShapeVariantSet::ShapeVariantSet(const cv::Mat& image, const cv::Mat& imageMask)
    : src(image), mask(imageMask.empty() ? cv::Mat(image.size(), CV_8U, cv::Scalar(255)) : imageMask) {}

void ShapeVariantSet::Produce(cv::Point2f targetOffset) {
    variants.clear();
    if (angleRange.empty()) angleRange.push_back(0.0f);
    if (scaleRange.empty()) scaleRange.push_back(1.0f);

    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(mask, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
    ShapeVariant variant{0.0f, 0.0f, {}, nowhere, nowhere};
    if (!contours.empty()) {
        variant.contour = contours[IndexOfLargestContour(contours)];
        variant.targetOffset = targetOffset;
        variant.imageCentre = MiddleOf(src);
    }

    if (!IsEnumerable(angleRange) || !IsEnumerable(scaleRange)) return;
    const std::vector<float> scales = ValuesOf(scaleRange, scaleStep, eps);
    if (scales.empty()) return;
    const std::vector<float> angles = ValuesOf(angleRange, angleStep, eps);
    variants.reserve(angles.size() * scales.size());
    for (const float scale : scales) {
        for (const float angle : angles) {
            variant.angle = angle;
            variant.scale = scale;
            variants.push_back(variant);
        }
    }
}

cv::Mat ShapeVariantSet::RotateImage(const cv::Mat& source, float angle, float scale) {
    if (source.empty()) return {};
    if (StaysAsItIs(source, angle, scale)) return source.clone();
    const cv::Mat motion =
        cv::getRotationMatrix2D(MiddleOf(source), static_cast<double>(angle), static_cast<double>(scale));
    cv::Mat turned;
    cv::warpAffine(source, turned, motion, source.size(), cv::INTER_LINEAR, cv::BORDER_CONSTANT);
    return turned;
}

}  // namespace Quorvane
