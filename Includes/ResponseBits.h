#pragma once

#include <cstddef>
#include <opencv2/core/mat.hpp>

namespace line2Dup {

/// For every label and grid phase the positions of the grid, as one flat array of bits: 1 where the label finds no
/// response at all, 0 where it finds one. Behind the last position all bits are 1.
///
/// Bit i of the array is bit i % 8 of byte i / 8. Every array is kept in eight copies, each shifted by one bit more, so
/// that the bits from any position on begin at a byte.
class ResponseBits {
public:
    /// `linearSpread` is a linearised spread image (`linearize` with step T): T * T rows, one for each grid phase.
    /// Positions up to `reach` behind the last one can be read.
    ResponseBits(const cv::Mat& linearSpread, std::ptrdiff_t reach);

    /// The bits of a label and phase from position `first` on.
    const uchar* from(int label, int phase, std::ptrdiff_t first) const {
        const std::ptrdiff_t array = (std::ptrdiff_t{label} * phases_ + phase) * copies + first % copies;
        return bytes_.data + array * stride_ + first / copies;
    }

private:
    static constexpr int copies = 8;

    int phases_;
    std::ptrdiff_t stride_;
    cv::Mat bytes_;
};

}  // namespace line2Dup
