#include "tests/reference/PlainDominantColour.h"

#include <array>
#include <limits>
#include <map>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

namespace Quorvane::Reference {

namespace {

struct Bin {
    int count = 0;
    std::vector<cv::Point> pixels;
};

cv::Vec3b TruncatedMean(const cv::Mat& lab, const std::vector<cv::Point>& pixels) {
    std::array<double, 3> sums{};
    for (const cv::Point& pixel : pixels) {
        for (std::size_t i = 0; i < 3; ++i) sums[i] += lab.at<cv::Vec3b>(pixel)[static_cast<int>(i)];
    }
    const auto count = static_cast<double>(pixels.size());
    return {static_cast<uchar>(sums[0] / count), static_cast<uchar>(sums[1] / count),
            static_cast<uchar>(sums[2] / count)};
}

}  // namespace

cv::Point DominantColourPoint(const cv::Mat& image, const std::vector<cv::Point>& contour) {
    if (image.empty() || contour.empty()) return {-1, -1};
    cv::Mat mask = cv::Mat::zeros(image.size(), CV_8UC1);
    cv::fillPoly(mask, std::vector<std::vector<cv::Point>>{contour}, cv::Scalar(255), cv::LINE_8, 0);
    cv::Mat converted;
    cv::cvtColor(image, converted, cv::COLOR_BGR2Lab);
    cv::Mat lab;
    converted.copyTo(lab, mask);

    std::map<std::array<uchar, 3>, Bin> bins;
    for (int y = 0; y < lab.rows; ++y) {
        for (int x = 0; x < lab.cols; ++x) {
            if (mask.at<uchar>(y, x) == 0) continue;
            const auto& colour = lab.at<cv::Vec3b>(y, x);
            Bin& bin = bins[{static_cast<uchar>((colour[0] & 240) + 8), static_cast<uchar>((colour[1] & 248) | 4),
                             static_cast<uchar>((colour[2] & 248) | 4)}];
            ++bin.count;
            bin.pixels.emplace_back(x, y);
        }
    }
    const Bin* fullest = nullptr;
    for (const auto& [key, bin] : bins) {
        if (fullest == nullptr || bin.count > fullest->count) fullest = &bin;
    }
    if (fullest == nullptr) return {-1, -1};

    const cv::Vec3b mean = TruncatedMean(lab, fullest->pixels);
    cv::Point nearest(-1, -1);
    double least = std::numeric_limits<double>::max();
    for (const cv::Point& pixel : fullest->pixels) {
        const double distance = cv::norm(lab.at<cv::Vec3b>(pixel), mean, cv::NORM_L2);
        if (distance < least) {
            least = distance;
            nearest = pixel;
        }
    }
    return nearest;
}

}  // namespace Quorvane::Reference
