#include "geometry/ImageOperators.h"

#include <algorithm>
#include <iostream>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "geometry/GrayChannels.h"
#include "geometry/GrayImage.h"

namespace Quorvane::UtilityFunctions {

namespace {

constexpr int fullIntensity = 100;  // percent
constexpr double white = 255.0;

/// White paper with a dark line where the brightness bends upwards.
cv::Mat InvertedEdges(const cv::Mat& gray) {
    cv::Mat edges;
    cv::Laplacian(gray, edges, CV_8U, 3, 1.0, 0.0, cv::BORDER_DEFAULT);
    cv::Mat inverted;
    cv::bitwise_not(edges, inverted);
    return inverted;
}

/// An unsharp mask: half of the difference to the blurred picture is added.
cv::Mat Sharpened(const cv::Mat& image) {
    cv::Mat blurred;
    cv::GaussianBlur(image, blurred, cv::Size(3, 3), 0.0, 0.0, cv::BORDER_DEFAULT);
    cv::Mat sharp;
    cv::addWeighted(image, 1.5, blurred, -0.5, 0.0, sharp);
    return sharp;
}

cv::Point2f CentreOf(const cv::Rect& box) {
    return {static_cast<float>(box.x + box.width * 0.5), static_cast<float>(box.y + box.height * 0.5)};
}

}  // namespace

void ApplySketchFilter(const cv::Mat& source, cv::Mat& result, int intensity) {
    if (!CanBecomeGray(source)) return;
    const cv::Mat gray = toGrayImage(source);
    const cv::Mat drawing = Sharpened(InvertedEdges(gray));
    const float share = static_cast<float>(std::clamp(intensity, 0, fullIntensity)) / fullIntensity;
    cv::Mat mix;
    cv::addWeighted(gray, 1.0f - share, drawing, share, 0.0, mix);
    cv::Mat stretched;
    cv::normalize(mix, stretched, 0.0, white, cv::NORM_MINMAX);
    result = stretched;
}

void ThresholdAndFindAllRegionCenter(const cv::Mat& image, const int& lower, const int& upper,
                                     std::vector<cv::Mat>& regions, std::vector<cv::Point2f>& centers) {
    if (image.empty()) {
        std::cerr << "无效的输入图像！" << std::endl;
        return;
    }
    if (!CanBecomeGray(image)) return;
    const cv::Mat gray = toGrayImage(image);
    // Half floats have no place in OpenCV's table of comparisons: it would call a function that is not there.
    CV_Assert(gray.depth() <= CV_64F);
    cv::Mat band;
    cv::inRange(gray, cv::Scalar(lower), cv::Scalar(upper), band);
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(band, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
    for (std::size_t i = 0; i < contours.size(); ++i) {
        cv::Mat region = cv::Mat::zeros(gray.size(), gray.type());
        cv::drawContours(region, contours, static_cast<int>(i), cv::Scalar(white), cv::FILLED, cv::LINE_8);
        regions.push_back(region);
        centers.push_back(CentreOf(cv::boundingRect(contours[i])));
    }
}

}  // namespace Quorvane::UtilityFunctions
