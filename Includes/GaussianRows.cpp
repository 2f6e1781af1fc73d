// OpenCV blurs 8-bit images in fixed point: its kernel for 7 pixels is (8, 28, 56, 72, 56, 28, 8) / 256 in each
// direction, nothing is rounded between the directions, and the end is rounded once, half up. So the blur is one sum of
// integers, which may be formed in any order, here with the kernel divided by 4: down the columns in 16 bits (at most
// 255 * 64), then along the row in 32 bits by multiply-adds of pairs, and the sum of 20 bits loses its lower 12.
//
// Source rows are kept, split into channels, in a ring; each is read once for all seven rows that need it.

#include "Includes/GaussianRows.h"

#include <algorithm>
#include <opencv2/core/hal/intrin.hpp>

#include "Includes/GradientSettings.h"

namespace line2Dup {

namespace {

constexpr int reach = blurSize / 2;

/// A quarter of OpenCV's kernel: for the outermost pixels, those next to them, and so on to the middle.
constexpr short weights[reach + 1] = {2, 7, 14, 18};
/// The weights add up to 64 in each direction, so 12 bits are to be rounded away.
constexpr int fractionBits = 12;
constexpr int half = 1 << (fractionBits - 1);

/// Rows in the ring: a power of two that holds the seven rows of a column.
constexpr int ringRows = 8;

constexpr std::size_t vectorShorts = 8;

std::size_t wholeVectors(std::size_t count) { return (count + vectorShorts - 1) / vectorShorts * vectorShorts; }

/// The channels of a pixel, each into its row.
void splitOne(const uchar* pixel, int channels, short* row, std::size_t stride) {
    for (int k = 0; k < channels; ++k) row[static_cast<std::size_t>(k) * stride] = pixel[k];
}

#if CV_SIMD128
constexpr int pixelsAtOnce = 16;

void storeWide(const cv::v_uint8x16& bytes, short* values) {
    cv::v_uint16x8 low;
    cv::v_uint16x8 high;
    cv::v_expand(bytes, low, high);
    cv::v_store(values, cv::v_reinterpret_as_s16(low));
    cv::v_store(values + vectorShorts, cv::v_reinterpret_as_s16(high));
}

void splitSixteen(const uchar* pixels, int channels, short* row, std::size_t stride) {
    if (channels == 1) {
        storeWide(cv::v_load(pixels), row);
        return;
    }
    cv::v_uint8x16 blue;
    cv::v_uint8x16 green;
    cv::v_uint8x16 red;
    cv::v_load_deinterleave(pixels, blue, green, red);
    storeWide(blue, row);
    storeWide(green, row + stride);
    storeWide(red, row + 2 * stride);
}

void sumAlongRow(const short* column, short* blurred, std::size_t count) {
    cv::v_int16x8 outer;
    cv::v_int16x8 inner;
    cv::v_int16x8 unused;
    cv::v_zip(cv::v_setall_s16(weights[0]), cv::v_setall_s16(weights[1]), outer, unused);
    cv::v_zip(cv::v_setall_s16(weights[2]), cv::v_setall_s16(weights[3]), inner, unused);
    const cv::v_int32x4 rounding = cv::v_setall_s32(half);
    for (std::size_t i = 0; i < count; i += vectorShorts) {
        const auto at = [&](std::size_t k) { return cv::v_load(column + i + k); };
        cv::v_int16x8 outerLow;
        cv::v_int16x8 outerHigh;
        cv::v_int16x8 innerLow;
        cv::v_int16x8 innerHigh;
        cv::v_zip(cv::v_add(at(0), at(6)), cv::v_add(at(1), at(5)), outerLow, outerHigh);
        cv::v_zip(cv::v_add(at(2), at(4)), at(3), innerLow, innerHigh);
        const cv::v_int32x4 low = cv::v_dotprod(innerLow, inner, cv::v_dotprod(outerLow, outer, rounding));
        const cv::v_int32x4 high = cv::v_dotprod(innerHigh, inner, cv::v_dotprod(outerHigh, outer, rounding));
        cv::v_store(blurred + i, cv::v_pack(cv::v_shr<fractionBits>(low), cv::v_shr<fractionBits>(high)));
    }
}
#else
constexpr int pixelsAtOnce = 1;

void splitSixteen(const uchar* pixel, int channels, short* row, std::size_t stride) {
    splitOne(pixel, channels, row, stride);
}

void sumAlongRow(const short* column, short* blurred, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        int sum = weights[reach] * column[i + reach];
        for (std::size_t k = 0; k < reach; ++k) sum += weights[k] * (column[i + k] + column[i + 2 * reach - k]);
        blurred[i] = static_cast<short>((sum + half) >> fractionBits);
    }
}
#endif

/// The seven rows around one, from the uppermost.
using SevenRows = const short* const (&)[blurSize];

void sumDownColumns(SevenRows rows, short* column, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        column[i] = static_cast<short>(weights[0] * (rows[0][i] + rows[6][i]) + weights[1] * (rows[1][i] + rows[5][i]) +
                                       weights[2] * (rows[2][i] + rows[4][i]) + weights[3] * rows[3][i]);
    }
}

}  // namespace

GaussianRows::GaussianRows(const cv::Mat& image, cv::Range columns)
    : image_(image),
      source_(std::max(columns.start - reach, 0), std::min(columns.end + reach, image.cols)),
      leftPad_(static_cast<std::size_t>(source_.start - (columns.start - reach))),
      written_(wholeVectors(static_cast<std::size_t>(columns.size()))),
      stride_(wholeVectors(static_cast<std::size_t>(source_.size())) + vectorShorts),
      ring_(stride_ * ringRows * static_cast<std::size_t>(image.channels())),
      column_(written_ + stride_) {}

const short* GaussianRows::sourceRow(int y, int channel) const {
    const int row = std::min(std::max(y, 0), image_.rows - 1);
    return ring_.data() + static_cast<std::size_t>(row % ringRows * image_.channels() + channel) * stride_;
}

void GaussianRows::loadRow(int y) {
    const int channels = image_.channels();
    short* row = ring_.data() + static_cast<std::size_t>(y % ringRows * channels) * stride_;
    const uchar* pixels = image_.ptr(y) + static_cast<std::ptrdiff_t>(source_.start) * channels;
    const int width = source_.size();
    const int step = width < pixelsAtOnce ? 1 : pixelsAtOnce;
    for (int begin = 0; begin < width; begin += step) {
        // The last vector ends with the row and may overlap the one before.
        const int x = std::min(begin, width - step);
        const uchar* source = pixels + std::ptrdiff_t{x} * channels;
        if (step == 1) {
            splitOne(source, channels, row + x, stride_);
        } else {
            splitSixteen(source, channels, row + x, stride_);
        }
    }
}

void GaussianRows::blur(int y, short* const* blurred) {
    nextRow_ = std::max(nextRow_, std::max(y - reach, 0));
    for (; nextRow_ <= std::min(y + reach, image_.rows - 1); ++nextRow_) loadRow(nextRow_);
    const auto width = static_cast<std::size_t>(source_.size());
    for (int k = 0; k < image_.channels(); ++k) {
        const short* rows[blurSize];
        for (int i = 0; i < blurSize; ++i) rows[i] = sourceRow(y + i - reach, k);
        short* column = column_.data() + leftPad_;
        sumDownColumns(rows, column, width);
        std::fill_n(column_.data(), leftPad_, column[0]);
        std::fill_n(column + width, reach, column[width - 1]);
        sumAlongRow(column_.data(), blurred[k], written_);
    }
}

}  // namespace line2Dup
