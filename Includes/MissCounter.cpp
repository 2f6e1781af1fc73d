// The counters of 128 positions are kept as bit planes: plane k of a vector holds bit k of all 128 counters. Four
// features are added at a time by full adders, which turn three bits of one weight into a bit of that weight and one of
// the next; what leaves the highest plane closes its position for good. The counters begin so high that this happens
// with the first feature too many, and the block ends as soon as all its positions are closed.

#include "Includes/MissCounter.h"

#include <opencv2/core.hpp>
#include <opencv2/core/hal/intrin.hpp>

namespace line2Dup {

void MissArrays::clear() {
    first.clear();
    second.clear();
}

void MissArrays::add(const uchar* one, const uchar* other) {
    first.push_back(one);
    second.push_back(other);
}

void MissArrays::fillUp(const uchar* neverMissing) {
    while (first.size() % 4 != 0) add(neverMissing, neverMissing);
}

namespace {

#if CV_SIMD128
using Bits = cv::v_uint8x16;

/// Adds three bits of one weight: the sum's bit stays in `sum`, the carry is returned.
Bits addBits(Bits& sum, const Bits& a, const Bits& b) {
    const Bits difference = cv::v_xor(a, b);
    const Bits carry = cv::v_or(cv::v_and(a, b), cv::v_and(difference, sum));
    sum = cv::v_xor(sum, difference);
    return carry;
}

template <int Planes>
bool countMisses(const MissArrays& arrays, std::ptrdiff_t block, int allowed, BlockMask& open) {
    const std::ptrdiff_t offset = block * (positionsInBlock / 8);
    const auto missing = [&](std::size_t i) {
        return cv::v_and(cv::v_load(arrays.first[i] + offset), cv::v_load(arrays.second[i] + offset));
    };
    const int begin = (1 << Planes) - 1 - allowed;
    const Bits ones = cv::v_setall_u8(255);
    Bits planes[Planes];
    for (int k = 0; k < Planes; ++k) planes[k] = cv::v_setall_u8(static_cast<uchar>((begin >> k & 1) != 0 ? 255 : 0));
    Bits closed = cv::v_setzero_u8();
    for (std::size_t i = 0; i < arrays.first.size(); i += 4) {
        const Bits one = addBits(planes[0], missing(i), missing(i + 1));
        const Bits other = addBits(planes[0], missing(i + 2), missing(i + 3));
        Bits carry = addBits(planes[1], one, other);
        for (int k = 2; k < Planes; ++k) {
            const Bits next = cv::v_and(planes[k], carry);
            planes[k] = cv::v_xor(planes[k], carry);
            carry = next;
        }
        closed = cv::v_or(closed, carry);
        if (cv::v_check_all(cv::v_eq(closed, ones))) return false;
    }
    cv::v_store(open.bytes, cv::v_not(closed));
    return true;
}
#else
template <int Planes>
bool countMisses(const MissArrays& arrays, std::ptrdiff_t block, int allowed, BlockMask& open) {
    bool any = false;
    for (std::ptrdiff_t p = 0; p < positionsInBlock; ++p) {
        const std::ptrdiff_t byte = block * (positionsInBlock / 8) + p / 8;
        int misses = 0;
        for (std::size_t i = 0; i < arrays.first.size(); ++i) {
            misses += (arrays.first[i][byte] & arrays.second[i][byte]) >> p % 8 & 1;
        }
        const int bit = misses <= allowed ? 1 : 0;
        uchar& mask = open.bytes[p / 8];
        mask = static_cast<uchar>(p % 8 == 0 ? bit : mask | bit << p % 8);
        any = any || bit != 0;
    }
    return any;
}
#endif

}  // namespace

MissCounter::MissCounter(int allowed) : allowed_(allowed), count_(countMisses<6>) {
    if (allowed < 8) {
        count_ = countMisses<3>;
    } else if (allowed < 16) {
        count_ = countMisses<4>;
    } else if (allowed < 32) {
        count_ = countMisses<5>;
    }
}

}  // namespace line2Dup
