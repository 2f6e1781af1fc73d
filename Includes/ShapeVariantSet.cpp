#include "Includes/ShapeVariantSet.h"

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "Includes/LargestContour.h"

namespace Quorvane {

namespace {

const cv::Point2f nowhere(-1.0f, -1.0f);

cv::Point2f MiddleOf(const cv::Mat& image) {
    return {static_cast<float>(image.cols) * 0.5f, static_cast<float>(image.rows) * 0.5f};
}

/// The values of a range of one value or of two.
std::vector<float> ValuesOf(const std::vector<float>& range, float step, float eps) {
    if (range.size() == 1) return {range.front()};
    std::vector<float> values;
    if (range.size() != 2) return values;
    // Added up in float on purpose: it decides how many values there are and what the angles of all hits are.
    float value = range[0];
    while (value <= range[1] + eps) {
        values.push_back(value);
        value += step;
    }
    return values;
}

}  // namespace

ShapeVariantSet::ShapeVariantSet(const cv::Mat& image, const cv::Mat& imageMask)
    : src(image), mask(imageMask.empty() ? cv::Mat(image.size(), CV_8U, cv::Scalar(255)) : imageMask) {}

void ShapeVariantSet::Produce(cv::Point2f targetOffset) {
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

    const std::vector<float> angles = ValuesOf(angleRange, angleStep, eps);
    const std::vector<float> scales = ValuesOf(scaleRange, scaleStep, eps);
    variants.clear();
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
    const cv::Mat motion =
        cv::getRotationMatrix2D(MiddleOf(source), static_cast<double>(angle), static_cast<double>(scale));
    cv::Mat turned;
    cv::warpAffine(source, turned, motion, source.size(), cv::INTER_LINEAR, cv::BORDER_CONSTANT);
    return turned;
}

}  // namespace Quorvane
