// Hits of the coarse level need the fine one only in a window around each of their features, so the fine level is
// divided into tiles, and the first window that touches a tile has it prepared: blurred, quantised, and turned into the
// eight response maps, with step 1 and so without any spreading. The maps are as large as the image, but their memory
// is touched only where tiles are prepared.
//
// A window is then summed row by row: sixteen bytes of each feature's map, in bytes as long as these cannot overflow.

#include "Includes/FineLevel.h"

#include <algorithm>
#include <opencv2/core.hpp>
#include <opencv2/core/hal/intrin.hpp>

#include "Includes/RegionQuantiser.h"
#include "Includes/ResponseMaps.h"

namespace line2Dup {

namespace {

/// Side of a tile in pixels. Smaller tiles fit windows better, larger ones waste less on their margins.
constexpr int tileSide = 64;

/// Features whose responses add up in a byte.
constexpr std::size_t featuresInByteSum = byteSumLimit - 1;

int tilesAlong(int length) { return (length + tileSide - 1) / tileSide; }

}  // namespace

FineLevel::FineLevel(const cv::Mat& image, float weakThreshold)
    : image_(image),
      weakThreshold_(weakThreshold),
      quantised_(image.size(), CV_8U),
      responses_(labelCount),
      prepared_(cv::Mat::zeros(tilesAlong(image.rows), tilesAlong(image.cols), CV_8U)) {
    for (cv::Mat& map : responses_) map.create(image.size(), CV_8U);
}

void FineLevel::prepare(const cv::Rect& rect) {
    const cv::Rect inside = rect & cv::Rect(cv::Point(), image_.size());
    if (inside.empty()) return;
    for (int y = inside.y / tileSide; y <= (inside.br().y - 1) / tileSide; ++y) {
        for (int x = inside.x / tileSide; x <= (inside.br().x - 1) / tileSide; ++x) {
            if (prepared_.at<uchar>(y, x) == 0) prepareTile({x, y});
        }
    }
}

void FineLevel::prepareTile(cv::Point tile) {
    const cv::Rect rect =
        cv::Rect(tile * tileSide, cv::Size(tileSide, tileSide)) & cv::Rect(cv::Point(), image_.size());
    quantiseRegion(image_, rect, weakThreshold_, quantised_);
    for (int y = rect.y; y < rect.br().y; ++y) {
        for (int label = 0; label < labelCount; ++label) {
            formResponses(quantised_.ptr(y) + rect.x, responses_[static_cast<std::size_t>(label)].ptr(y) + rect.x,
                          rect.width, label);
        }
    }
    prepared_.at<uchar>(tile) = 1;
}

void FineLevel::sumAround(const ShapeTemplate& templ, cv::Point centre,
                          std::array<ushort, localWindow * localWindow>& sums) {
    const cv::Point origin(centre.x - localWindow / 2, centre.y - localWindow / 2);
    const cv::Rect image(cv::Point(), image_.size());
    const cv::Rect wholeWindows(0, 0, image_.cols - localWindow + 1, image_.rows - localWindow + 1);
    features_.clear();
    bool allWindowsInside = true;
    for (const GradientFeature& feature : templ.features) {
        const cv::Point first(feature.x + origin.x, feature.y + origin.y);
        if (!image.contains(first)) continue;  // skipped, though a part of its window may lie in the image
        allWindowsInside = allWindowsInside && wholeWindows.contains(first);
        features_.push_back(responses_[static_cast<std::size_t>(feature.label)].ptr(first.y) + first.x);
    }
    if (!allWindowsInside) {
        prepare(image);
        std::vector<cv::Mat> linearMemories;
        for (const cv::Mat& map : responses_) linearMemories.push_back(map.reshape(1, 1));
        cv::Mat window;
        similarityLocal(linearMemories, templ, window, image_.size(), 1, centre);
        std::copy_n(window.ptr<ushort>(), sums.size(), sums.begin());
        return;
    }
    for (const GradientFeature& feature : templ.features) {
        const cv::Point first(feature.x + origin.x, feature.y + origin.y);
        if (image.contains(first)) prepare(cv::Rect(first, cv::Size(localWindow, localWindow)));
    }
    sumFeatures(sums);
}

#if CV_SIMD128
void FineLevel::sumFeatures(std::array<ushort, localWindow * localWindow>& sums) const {
    const std::size_t step = responses_.front().step[0];
    for (std::size_t r = 0; r < localWindow; ++r) {
        cv::v_uint16x8 left = cv::v_setzero_u16();
        cv::v_uint16x8 right = cv::v_setzero_u16();
        for (std::size_t begin = 0; begin < features_.size(); begin += featuresInByteSum) {
            const std::size_t end = std::min(begin + featuresInByteSum, features_.size());
            cv::v_uint8x16 bytes = cv::v_setzero_u8();
            for (std::size_t i = begin; i < end; ++i) {
                bytes = cv::v_add_wrap(bytes, cv::v_load(features_[i] + r * step));
            }
            cv::v_uint16x8 low;
            cv::v_uint16x8 high;
            cv::v_expand(bytes, low, high);
            left = cv::v_add_wrap(left, low);
            right = cv::v_add_wrap(right, high);
        }
        cv::v_store(&sums[r * localWindow], left);
        cv::v_store(&sums[r * localWindow + 8], right);
    }
}
#else
void FineLevel::sumFeatures(std::array<ushort, localWindow * localWindow>& sums) const {
    const std::size_t step = responses_.front().step[0];
    sums.fill(0);
    for (const uchar* feature : features_) {
        for (std::size_t i = 0; i < sums.size(); ++i) {
            const uchar response = feature[i / localWindow * step + i % localWindow];
            sums[i] = static_cast<ushort>(sums[i] + response);
        }
    }
}
#endif

}  // namespace line2Dup
