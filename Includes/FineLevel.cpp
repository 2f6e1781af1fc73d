// Hits of the coarse level need the fine one only in a window around each of their features, so the fine level is
// divided into tiles, and the first window that touches a tile has it prepared: blurred, quantised, and turned into the
// eight response maps, with step 1 and so without any spreading. The maps are as large as the image, but their memory
// is touched only where tiles are prepared.
//
// Sums are formed row by row: sixteen bytes of each feature's map, in bytes as long as these cannot overflow.

#include "Includes/FineLevel.h"

#include <algorithm>
#include <opencv2/core.hpp>
#include <opencv2/core/hal/intrin.hpp>

#include "Includes/RegionQuantiser.h"
#include "Includes/ResponseMaps.h"

namespace line2Dup {

namespace {

/// Side of a tile in pixels. Smaller tiles fit windows better, larger ones waste less on their margins.
constexpr int tileSide = 96;

/// Features whose responses add up in a byte.
constexpr std::size_t featuresInByteSum = byteSumLimit - 1;

/// The sums of sixteen bytes of each feature's row.
#if CV_SIMD128
void addSixteens(const std::vector<const uchar*>& features, std::size_t offset, ushort* sums) {
    cv::v_uint16x8 left = cv::v_setzero_u16();
    cv::v_uint16x8 right = cv::v_setzero_u16();
    for (std::size_t begin = 0; begin < features.size(); begin += featuresInByteSum) {
        const std::size_t end = std::min(begin + featuresInByteSum, features.size());
        cv::v_uint8x16 bytes = cv::v_setzero_u8();
        for (std::size_t i = begin; i < end; ++i) bytes = cv::v_add_wrap(bytes, cv::v_load(features[i] + offset));
        cv::v_uint16x8 low;
        cv::v_uint16x8 high;
        cv::v_expand(bytes, low, high);
        left = cv::v_add_wrap(left, low);
        right = cv::v_add_wrap(right, high);
    }
    cv::v_store(sums, left);
    cv::v_store(sums + 8, right);
}
#else
void addSixteens(const std::vector<const uchar*>& features, std::size_t offset, ushort* sums) {
    std::fill_n(sums, localWindow, ushort{0});
    for (const uchar* feature : features) {
        for (int i = 0; i < localWindow; ++i)
            sums[i] = static_cast<ushort>(sums[i] + feature[offset + static_cast<std::size_t>(i)]);
    }
}
#endif

/// The least rectangle that holds the template's features.
cv::Rect boxOf(const ShapeTemplate& templ) {
    cv::Rect box;
    for (const GradientFeature& feature : templ.features) box |= cv::Rect(feature.x, feature.y, 1, 1);
    return box;
}

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

bool FineLevel::holds(const ShapeTemplate& templ, const cv::Rect& origins) const {
    const cv::Rect box = boxOf(templ);
    return origins.x + box.x >= 0 && origins.y + box.y >= 0 && origins.br().x + box.br().x - 1 <= image_.cols &&
           origins.br().y + box.br().y - 1 <= image_.rows;
}

const cv::Mat& FineLevel::sumsIn(const ShapeTemplate& templ, const cv::Rect& origins) {
    features_.clear();
    for (const GradientFeature& feature : templ.features) {
        const cv::Rect places = origins + cv::Point(feature.x, feature.y);
        prepare(places);
        features_.push_back(responses_[static_cast<std::size_t>(feature.label)].ptr(places.y) + places.x);
    }
    sums_.create(origins.size(), CV_16U);
    const std::size_t step = responses_.front().step[0];
    for (int r = 0; r < origins.height; ++r) {
        const std::size_t offset = static_cast<std::size_t>(r) * step;
        for (int c = 0; c < origins.width; c += localWindow) {
            // The last sixteen end with the row and may overlap those before.
            const int column = std::min(c, origins.width - localWindow);
            addSixteens(features_, offset + static_cast<std::size_t>(column), sums_.ptr<ushort>(r) + column);
        }
    }
    return sums_;
}

cv::Mat FineLevel::sumsAround(const ShapeTemplate& templ, cv::Point centre) {
    prepare(cv::Rect(cv::Point(), image_.size()));
    std::vector<cv::Mat> linearMemories;
    for (const cv::Mat& map : responses_) linearMemories.push_back(map.reshape(1, 1));
    cv::Mat sums;
    similarityLocal(linearMemories, templ, sums, image_.size(), 1, centre);
    return sums;
}

}  // namespace line2Dup
