#pragma once

#include <opencv2/core/hal/intrin.hpp>

namespace line2Dup {

#if CV_SIMD128

/// Counts misses at 128 positions at once, up to a number that is allowed; one position more closes for good.
///
/// The counters are kept as bit planes: plane k of a vector holds bit k of all 128 counters. Four misses are added at a
/// time by full adders, which turn three bits of one weight into a bit of that weight and one of the next; what leaves
/// the highest plane closes its position. The counters begin so high that this happens with the first miss too many.
template <int Planes>
class MissPlanes {
public:
    using Bits = cv::v_uint8x16;

    /// `allowed` is less than 2 to the number of planes. Positions set in `closed` do not count.
    MissPlanes(int allowed, const Bits& closed) : closed_(closed) {
        const int begin = (1 << Planes) - 1 - allowed;
        for (int k = 0; k < Planes; ++k)
            planes_[k] = cv::v_setall_u8(static_cast<uchar>((begin >> k & 1) != 0 ? 255 : 0));
    }

    void addFour(const Bits& a, const Bits& b, const Bits& c, const Bits& d) {
        const Bits one = addBits(planes_[0], a, b);
        const Bits other = addBits(planes_[0], c, d);
        Bits carry = addBits(planes_[1], one, other);
        for (int k = 2; k < Planes; ++k) {
            const Bits next = cv::v_and(planes_[k], carry);
            planes_[k] = cv::v_xor(planes_[k], carry);
            carry = next;
        }
        closed_ = cv::v_or(closed_, carry);
    }

    bool allClosed() const { return cv::v_check_all(cv::v_eq(closed_, cv::v_setall_u8(255))); }

    Bits open() const { return cv::v_not(closed_); }

private:
    /// Adds three bits of one weight: the sum's bit stays in `sum`, the carry is returned.
    static Bits addBits(Bits& sum, const Bits& a, const Bits& b) {
        const Bits difference = cv::v_xor(a, b);
        const Bits carry = cv::v_or(cv::v_and(a, b), cv::v_and(difference, sum));
        sum = cv::v_xor(sum, difference);
        return carry;
    }

    Bits planes_[Planes];
    Bits closed_;
};

#endif

}  // namespace line2Dup
