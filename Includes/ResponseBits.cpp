// A label finds no response in a spread byte if neither its own bit nor one of the two beside it is set: one comparison
// for sixteen positions, whose result is packed to sixteen bits.
//
// A feature's bits begin at any position, but vectors are loaded from whole bytes, and shifting them anew for every
// template would cost more than the counting. So the array is stored in eight copies, copy k beginning at position k:
// the bits from position p on are found in copy p % 8, from byte p / 8 on. With 8 labels and 4 phases the copies take
// 32 bytes for each block of 2 by 2 pixels.

#include "Includes/ResponseBits.h"

#include <algorithm>
#include <opencv2/core/hal/intrin.hpp>

#include "Includes/OrientationLabel.h"

namespace line2Dup {

namespace {

constexpr int bitsInByte = 8;

/// Packs "no bit of `wanted` is set" for a row of spread bytes. `bits` holds ones when it begins.
void packMissing(const uchar* spread, int count, int wanted, uchar* bits) {
    int i = 0;
#if CV_SIMD128
    const cv::v_uint8x16 mask = cv::v_setall_u8(static_cast<uchar>(wanted));
    for (; i + 16 <= count; i += 16) {
        const int missing = cv::v_signmask(cv::v_eq(cv::v_and(cv::v_load(spread + i), mask), cv::v_setzero_u8()));
        bits[i / bitsInByte] = static_cast<uchar>(missing);
        bits[i / bitsInByte + 1] = static_cast<uchar>(missing >> bitsInByte);
    }
#endif
    for (; i < count; ++i) {
        if ((spread[i] & wanted) != 0) bits[i / bitsInByte] &= static_cast<uchar>(~(1 << i % bitsInByte));
    }
}

}  // namespace

ResponseBits::ResponseBits(const cv::Mat& linearSpread, std::ptrdiff_t reach)
    : phases_(linearSpread.rows),
      stride_((linearSpread.cols + reach) / bitsInByte + 2),
      bytes_(labelCount * phases_ * copies, static_cast<int>(stride_), CV_8U) {
    // Behind the last position all bits are 1, in the shifted copies too.
    const std::ptrdiff_t filledBytes = linearSpread.cols / bitsInByte + 1;
    uchar* array = bytes_.data;
    for (int label = 0; label < labelCount; ++label) {
        for (int phase = 0; phase < phases_; ++phase, array += copies * stride_) {
            std::fill(array, array + stride_, uchar{255});
            packMissing(linearSpread.ptr(phase), linearSpread.cols, oneHotOf(label) | neighboursOf(label), array);
            for (int shift = 1; shift < copies; ++shift) {
                uchar* shifted = array + shift * stride_;
                for (std::ptrdiff_t i = 0; i < filledBytes; ++i) {
                    shifted[i] = static_cast<uchar>((array[i] | array[i + 1] << bitsInByte) >> shift);
                }
                std::fill(shifted + filledBytes, shifted + stride_, uchar{255});
            }
        }
    }
}

}  // namespace line2Dup
