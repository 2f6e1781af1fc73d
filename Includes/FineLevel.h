#pragma once

#include <cstddef>
#include <cstdint>
#include <opencv2/core/mat.hpp>
#include <vector>

#include "Includes/ShapeTemplate.h"

namespace line2Dup {

/// The finest level of an image, with step 1, prepared only where windows are scored.
class FineLevel {
public:
    /// The image must be one that `canQuantiseRegions` takes, and it stays the caller's.
    FineLevel(const cv::Mat& image, float weakThreshold);

    /// Bits in a word of `missing`, and how many pixels the words of a row are apart.
    static constexpr int wordBits = 64;
    static constexpr int wordDistance = 32;

    /// Notes what the template's features, which lie in `featureBox`, look at when its crop origin moves in a
    /// rectangle, at most `tileSide` pixels wide and high, in which no feature leaves the image. `prepareNeeded`
    /// prepares all that was noted.
    void need(const ShapeTemplate& templ, const cv::Rect& featureBox, const cv::Rect& origins);
    void prepareNeeded();

    static constexpr int tileSide = 64;

    /// The one-hot orientations from a prepared pixel on. What follows may be read up to 16 bytes beyond the image's
    /// edge, where it means nothing.
    const uchar* orientations(int x, int y) const { return orientations_.data + y * orientationStep_ + x; }
    std::ptrdiff_t orientationStep() const { return orientationStep_; }

    /// A word of bits for a prepared pixel: bit x % `wordDistance` + i tells whether the label misses a response at the
    /// pixel i to the right. The word of the next row follows; that of the pixel `wordDistance` to the right comes
    /// `wordColumnStep` words later. One row more than the image has may be read.
    const std::uint64_t* missing(int label, int x, int y) const {
        const std::size_t column = static_cast<std::size_t>(x) / wordDistance;  // faster than of a signed number
        return missing_ + (label * wordColumns_ + static_cast<std::ptrdiff_t>(column)) * wordColumnStep_ + y;
    }
    std::ptrdiff_t wordColumnStep() const { return wordColumnStep_; }

    /// The window of 16 by 16 sums around `centre`: what `similarityLocal` gives, also where features leave the image.
    /// Prepares the whole image.
    cv::Mat sumsAround(const ShapeTemplate& templ, cv::Point centre);

private:
    void note(const cv::Rect& tiles);
    void prepare(const cv::Rect& tiles);
    void packMissing(const cv::Rect& rect);

    cv::Mat image_;
    float weakThreshold_;
    int wordColumns_;
    cv::Mat orientations_;
    std::ptrdiff_t orientationStep_;
    cv::Mat missingMemory_;
    std::uint64_t* missing_;
    std::ptrdiff_t wordColumnStep_;
    cv::Mat needed_;    // one byte for each tile
    cv::Mat prepared_;  // likewise
    std::vector<cv::Mat> responses_;
};

}  // namespace line2Dup
