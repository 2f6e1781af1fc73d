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

/// The bin that holds most pixels, of equal ones the first.
std::size_t FullestBin(const cv::Mat& lab, const cv::Mat& mask) {
    std::vector<int> counts(binCount, 0);
    ForEachPixel(lab, mask, [&](int, int, const cv::Vec3b& pixel) { ++counts[BinOf(pixel)]; });
    std::size_t fullest = 0;
    for (std::size_t number = 1; number < binCount; ++number) {
        if (counts[number] > counts[fullest]) fullest = number;
    }
    return fullest;
}

struct Pixel {
    cv::Point position;
    cv::Vec3i colour;
};

/// The pixels of one bin, row by row.
std::vector<Pixel> PixelsOf(const cv::Mat& lab, const cv::Mat& mask, std::size_t bin) {
    std::vector<Pixel> pixels;
    ForEachPixel(lab, mask, [&](int r, int c, const cv::Vec3b& pixel) {
        if (BinOf(pixel) == bin) pixels.push_back({{c, r}, pixel});
    });
    return pixels;
}

/// The mean colour, truncated.
cv::Vec3i MeanColour(const std::vector<Pixel>& pixels) {
    std::array<std::int64_t, 3> sums{};
    for (const Pixel& pixel : pixels) {
        for (int i = 0; i < 3; ++i) sums[static_cast<std::size_t>(i)] += pixel.colour[i];
    }
    const auto count = static_cast<std::int64_t>(pixels.size());
    return {static_cast<int>(sums[0] / count), static_cast<int>(sums[1] / count), static_cast<int>(sums[2] / count)};
}

int SquaredDistance(const cv::Vec3i& a, const cv::Vec3i& b) {
    const cv::Vec3i difference = a - b;
    return difference.dot(difference);
}

/// The position of the pixel that comes nearest to the colour, of equal ones the first.
cv::Point NearestTo(const cv::Vec3i& colour, const std::vector<Pixel>& pixels) {
    const auto isNearer = [&](const Pixel& a, const Pixel& b) {
        return SquaredDistance(a.colour, colour) < SquaredDistance(b.colour, colour);
    };
    return std::min_element(pixels.begin(), pixels.end(), isNearer)->position;
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
    const std::vector<Pixel> pixels = PixelsOf(lab, mask, FullestBin(lab, mask));
    if (pixels.empty()) return nowhere;
    return box.tl() + NearestTo(MeanColour(pixels), pixels);
}

}  // namespace Quorvane::UtilityFunctions
