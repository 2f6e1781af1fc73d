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

    /// Notes what the template's features look at when its crop origin moves in a rectangle, at most `tileSide` pixels
    /// wide and high, in which no feature leaves the image. `prepareNeeded` prepares all that was noted.
    void need(const ShapeTemplate& templ, const cv::Rect& origins);
    void prepareNeeded();

    static constexpr int tileSide = 64;

    /// The one-hot orientations from a prepared pixel on. What follows may be read up to 16 bytes beyond the image's
    /// edge, where it means nothing.
    const uchar* orientations(int x, int y) const { return orientations_.ptr(y) + x; }
    std::ptrdiff_t orientationStep() const { return static_cast<std::ptrdiff_t>(orientations_.step[0]); }

    /// A word of bits for a prepared pixel: bit x % `wordDistance` + i tells whether the label misses a response at the
    /// pixel i to the right. The word of the next row follows; that of the pixel `wordDistance` to the right comes
    /// `wordColumnStep` words later. One row more than the image has may be read.
    const std::uint64_t* missing(int label, int x, int y) const {
        return missing_.ptr<std::uint64_t>(label * wordColumns_ + x / wordDistance) + y;
    }
    std::ptrdiff_t wordColumnStep() const { return static_cast<std::ptrdiff_t>(missing_.step1()) / 8; }

    /// The window of 16 by 16 sums around `centre`: what `similarityLocal` gives, also where features leave the image.
    /// Prepares the whole image.
    cv::Mat sumsAround(const ShapeTemplate& templ, cv::Point centre);

private:
    void prepare(const cv::Rect& tiles);
    void packMissing(const cv::Rect& rect);

    cv::Mat image_;
    float weakThreshold_;
    int wordColumns_;
    cv::Mat orientations_;
    cv::Mat missing_;
    cv::Mat needed_;    // one byte for each tile
    cv::Mat prepared_;  // likewise
    std::vector<cv::Mat> responses_;
};

}  // namespace line2Dup
