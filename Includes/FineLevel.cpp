// Hits of the coarse level need the fine one only in a window around each of their features. So the fine level is
// divided into tiles, the windows to come say which tiles they touch, and these are prepared together, neighbouring
// tiles as one rectangle. The memory is as large as the image, but touched only where tiles are prepared.
//
// A pixel is prepared when its orientation is known and packed into bits: for each label one bit that tells whether the
// orientation is too far from it to give any response. A word holds the bits of 64 pixels of a row and begins 32 pixels
// after its neighbour, so that from any pixel on at least 33 bits are found in one word; and the words of a column lie
// one behind the other, so that a window's rows are read in one go.

#include "Includes/FineLevel.h"

#include <algorithm>
#include <array>
#include <opencv2/core.hpp>
#include <opencv2/core/hal/intrin.hpp>

#include "Includes/OrientationLabel.h"
#include "Includes/RegionQuantiser.h"
#include "Includes/ResponseMaps.h"
#include "Includes/Similarity.h"

namespace line2Dup {

namespace {

/// Pixels that may be read beyond the right edge.
constexpr int slack = 16;

int roundedUp(int length, int step) { return (length + step - 1) / step * step; }

/// The tiles that a rectangle touches.
cv::Rect tilesUnder(const cv::Rect& rect) {
    const cv::Point first = rect.tl() / FineLevel::tileSide;
    const cv::Point last = (rect.br() - cv::Point(1, 1)) / FineLevel::tileSide;
    return {first, last + cv::Point(1, 1)};
}

/// Templates over up to so many tiles have features in almost all of them.
constexpr int smallBox = 16;

int tilesAlong(int length) { return roundedUp(length, FineLevel::tileSide) / FineLevel::tileSide; }

/// For each label and each of 32 pixels a bit: whether the pixel's orientation gives the label no response.
using MissingBits = std::array<std::uint32_t, labelCount>;

MissingBits missingInThirtyTwo(const uchar* orientations) {
    MissingBits bits{};
#if CV_SIMD128
    const cv::v_uint8x16 left = cv::v_load(orientations);
    const cv::v_uint8x16 right = cv::v_load(orientations + 16);
    if (cv::v_check_all(cv::v_eq(cv::v_or(left, right), cv::v_setzero_u8()))) {
        bits.fill(~std::uint32_t{0});
        return bits;
    }
    for (int label = 0; label < labelCount; ++label) {
        const cv::v_uint8x16 wanted = cv::v_setall_u8(static_cast<uchar>(oneHotOf(label) | neighboursOf(label)));
        const auto missing = [&](const cv::v_uint8x16& sixteen) {
            const cv::v_uint8x16 found = cv::v_and(sixteen, wanted);
            return static_cast<std::uint32_t>(cv::v_signmask(cv::v_eq(found, cv::v_setzero_u8())));
        };
        bits[static_cast<std::size_t>(label)] = missing(left) | missing(right) << 16;
    }
#else
    for (int label = 0; label < labelCount; ++label) {
        const int wanted = oneHotOf(label) | neighboursOf(label);
        for (int i = 0; i < FineLevel::wordDistance; ++i) {
            if ((orientations[i] & wanted) == 0) bits[static_cast<std::size_t>(label)] |= std::uint32_t{1} << i;
        }
    }
#endif
    return bits;
}

constexpr std::uint64_t lowerHalf = 0xFFFFFFFFu;

void setLowerHalf(std::uint64_t& word, std::uint32_t bits) { word = (word & ~lowerHalf) | bits; }
void setUpperHalf(std::uint64_t& word, std::uint32_t bits) {
    word = (word & lowerHalf) | std::uint64_t{bits} << FineLevel::wordDistance;
}

}  // namespace

FineLevel::FineLevel(const cv::Mat& image, float weakThreshold)
    : image_(image),
      weakThreshold_(weakThreshold),
      wordColumns_(roundedUp(image.cols, wordDistance) / wordDistance),
      orientations_(image.rows, roundedUp(image.cols, wordDistance) + slack, CV_8U),
      orientationStep_(static_cast<std::ptrdiff_t>(orientations_.step[0])),
      missingMemory_(labelCount * wordColumns_, image.rows + 1, CV_64F),  // elements of 64 bits
      missing_(missingMemory_.ptr<std::uint64_t>()),
      wordColumnStep_(image.rows + 1),
      needed_(cv::Mat::zeros(tilesAlong(image.rows), tilesAlong(image.cols), CV_8U)),
      prepared_(needed_.clone()) {}

void FineLevel::need(const ShapeTemplate& templ, const cv::Rect& featureBox, const cv::Rect& origins) {
    const cv::Rect whole(featureBox.tl() + origins.tl(), featureBox.br() + origins.br() - cv::Point(1, 1));
    if (tilesUnder(whole).area() <= smallBox) {
        note(tilesUnder(whole));
        return;
    }
    for (const GradientFeature& feature : templ.features) {
        note(tilesUnder(origins + cv::Point(feature.x, feature.y)));
    }
}

void FineLevel::note(const cv::Rect& tiles) {
    for (int y = tiles.y; y < tiles.br().y; ++y) std::fill_n(needed_.ptr(y) + tiles.x, tiles.width, uchar{1});
}

void FineLevel::prepareNeeded() {
    needed_.setTo(0, prepared_);
    const auto areNeeded = [this](const cv::Rect& tiles) { return cv::countNonZero(needed_(tiles)) == tiles.area(); };
    for (int y = 0; y < needed_.rows; ++y) {
        for (int x = 0; x < needed_.cols; ++x) {
            cv::Rect tiles(x, y, 1, 1);
            if (!areNeeded(tiles)) continue;
            while (tiles.br().x < needed_.cols && areNeeded(tiles + cv::Size(1, 0))) ++tiles.width;
            while (tiles.br().y < needed_.rows && areNeeded(tiles + cv::Size(0, 1))) ++tiles.height;
            prepare(tiles);
        }
    }
}

void FineLevel::prepare(const cv::Rect& tiles) {
    const cv::Rect rect =
        cv::Rect(tiles.tl() * tileSide, tiles.size() * tileSide) & cv::Rect(cv::Point(), image_.size());
    cv::Mat ofImage = orientations_.colRange(0, image_.cols);
    quantiseRegion(image_, rect, weakThreshold_, ofImage);
    const cv::Range rows(rect.y, rect.br().y);
    if (rect.br().x == image_.cols) orientations_(rows, cv::Range(image_.cols, orientations_.cols)).setTo(0);
    packMissing(rect);
    needed_(tiles) = cv::Scalar(0);
    prepared_(tiles) = cv::Scalar(1);
}

void FineLevel::packMissing(const cv::Rect& rect) {
    for (int x = rect.x; x < rect.br().x; x += wordDistance) {
        const int column = x / wordDistance;
        for (int y = rect.y; y < rect.br().y; ++y) {
            const MissingBits bits = missingInThirtyTwo(orientations(x, y));
            std::uint64_t* word = missing_ + column * wordColumnStep_ + y;
            for (const std::uint32_t ofLabel : bits) {
                setLowerHalf(*word, ofLabel);
                if (column > 0) setUpperHalf(*(word - wordColumnStep_), ofLabel);
                word += wordColumns_ * wordColumnStep_;
            }
        }
    }
}

cv::Mat FineLevel::sumsAround(const ShapeTemplate& templ, cv::Point centre) {
    if (responses_.empty()) {
        needed_ = cv::Scalar(1);
        prepareNeeded();
        computeResponseMaps(orientations_.colRange(0, image_.cols).clone(), responses_);
        for (cv::Mat& map : responses_) map = map.reshape(1, 1);
    }
    cv::Mat sums;
    similarityLocal(responses_, templ, sums, image_.size(), 1, centre);
    return sums;
}

}  // namespace line2Dup
