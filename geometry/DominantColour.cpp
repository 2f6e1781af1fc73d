// Only the contour's box is converted, and the bins are plain counters. The box is cut at the borders of the image, so
// that the contour is clipped there at the same places as on the whole image.

#include <algorithm>
#include <array>
#include <cstdint>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "geometry/ImageOperators.h"

namespace Quorvane::UtilityFunctions {

namespace {

const cv::Point nowhere(-1, -1);

// A bin is 16 levels of L and 8 of a and of b.
constexpr int lightnessShift = 4;
constexpr int colourShift = 3;
constexpr int colourBits = 8 - colourShift;
constexpr std::size_t binCount = std::size_t{1} << (8 - lightnessShift + 2 * colourBits);

/// Numbers the bins in the order of L, then a, then b.
std::size_t BinOf(const cv::Vec3b& lab) {
    return static_cast<std::size_t>((lab[0] >> lightnessShift) << (2 * colourBits) |
                                    (lab[1] >> colourShift) << colourBits | lab[2] >> colourShift);
}

/// The part of the image that the contour can cover.
cv::Rect BoxInside(const std::vector<cv::Point>& contour, const cv::Size& size) {
    cv::Point low = contour.front();
    cv::Point high = low;
    for (const cv::Point& point : contour) {
        low = {std::min(low.x, point.x), std::min(low.y, point.y)};
        high = {std::max(high.x, point.x), std::max(high.y, point.y)};
    }
    low = {std::max(low.x, 0), std::max(low.y, 0)};
    high = {std::min(high.x, size.width - 1), std::min(high.y, size.height - 1)};
    if (low.x > high.x || low.y > high.y) return {};
    return {low, high + cv::Point(1, 1)};
}

/// Calls `action` with the position and colour of every pixel under the mask, row by row.
template <typename Action>
void ForEachPixel(const cv::Mat& lab, const cv::Mat& mask, const Action& action) {
    for (int r = 0; r < lab.rows; ++r) {
        const auto* pixels = lab.ptr<cv::Vec3b>(r);
        const uchar* inside = mask.ptr(r);
        for (int c = 0; c < lab.cols; ++c) {
            if (inside[c] != 0) action(r, c, pixels[c]);
        }
    }
}

struct Bin {
    int count = 0;
    std::size_t number = 0;
};

Bin FullestBin(const cv::Mat& lab, const cv::Mat& mask) {
    std::vector<int> counts(binCount, 0);
    ForEachPixel(lab, mask, [&](int, int, const cv::Vec3b& pixel) { ++counts[BinOf(pixel)]; });
    std::size_t fullest = 0;
    for (std::size_t number = 1; number < binCount; ++number) {
        if (counts[number] > counts[fullest]) fullest = number;
    }
    return {counts[fullest], fullest};
}

/// The mean colour of a bin's pixels, truncated.
cv::Vec3i MeanColour(const cv::Mat& lab, const cv::Mat& mask, const Bin& bin) {
    std::array<std::int64_t, 3> sums{};
    ForEachPixel(lab, mask, [&](int, int, const cv::Vec3b& pixel) {
        if (BinOf(pixel) != bin.number) return;
        for (int i = 0; i < 3; ++i) sums[static_cast<std::size_t>(i)] += pixel[i];
    });
    return {static_cast<int>(sums[0] / bin.count), static_cast<int>(sums[1] / bin.count),
            static_cast<int>(sums[2] / bin.count)};
}

int SquaredDistance(const cv::Vec3b& pixel, const cv::Vec3i& colour) {
    const int d0 = pixel[0] - colour[0];
    const int d1 = pixel[1] - colour[1];
    const int d2 = pixel[2] - colour[2];
    return d0 * d0 + d1 * d1 + d2 * d2;
}

/// The first of the bin's pixels that come nearest to the colour.
cv::Point NearestPixel(const cv::Mat& lab, const cv::Mat& mask, const Bin& bin, const cv::Vec3i& colour) {
    cv::Point nearest = nowhere;
    int least = 0;
    ForEachPixel(lab, mask, [&](int r, int c, const cv::Vec3b& pixel) {
        if (BinOf(pixel) != bin.number) return;
        const int distance = SquaredDistance(pixel, colour);
        if (nearest != nowhere && distance >= least) return;
        nearest = {c, r};
        least = distance;
    });
    return nearest;
}

}  // namespace

cv::Point findDominantLABColorPointInContour(const cv::Mat& image, const std::vector<cv::Point>& contour) {
    if (image.empty() || contour.empty()) return nowhere;
    const cv::Rect box = BoxInside(contour, image.size());
    // An image that has no Lab form is refused wherever the contour lies.
    cv::Mat lab;
    cv::cvtColor(image(box.empty() ? cv::Rect(0, 0, 1, 1) : box), lab, cv::COLOR_BGR2Lab);
    CV_Assert(lab.depth() == CV_8U);
    if (box.empty()) return nowhere;

    cv::Mat mask = cv::Mat::zeros(box.size(), CV_8UC1);
    cv::fillPoly(mask, std::vector<std::vector<cv::Point>>{contour}, cv::Scalar(255), cv::LINE_8, 0, -box.tl());
    const Bin bin = FullestBin(lab, mask);
    if (bin.count == 0) return nowhere;
    return box.tl() + NearestPixel(lab, mask, bin, MeanColour(lab, mask, bin));
}

}  // namespace Quorvane::UtilityFunctions
