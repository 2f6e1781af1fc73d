// The label of a direction needs no arc tangent. Folded into the first half quadrant, a direction is the ratio of the
// smaller derivative to the greater one, and two limits divide the ratios into "along the axis", "between" and
// "diagonal". Which axis it is, and on which side of it, follows from the derivatives' order and signs.
//
// cv::phase approximates the arc tangent by a polynomial, so the limits are not quite the tangents of 11.25 and 33.75
// degrees. No two derivatives of 8-bit pixels have a ratio between 0.1989072 and 0.1989100 or between 0.6683519 and
// 0.6683544; the limits may be any fractions in these gaps, which are wide enough for the last bits of cv::phase, that
// vary with the place in the picture, not to matter. A test goes through all pairs of derivatives.

#include "Includes/IntegerDirections.h"

#include <algorithm>
#include <cstdlib>
#include <opencv2/core.hpp>
#include <opencv2/core/hal/intrin.hpp>

#include "Includes/OrientationLabel.h"

namespace line2Dup {

namespace {

/// A ratio of derivatives as a fraction of integers that fit 16 bits.
struct Ratio {
    short numerator;
    short denominator;
};
constexpr Ratio axisLimit{255, 1282};      // 11.25 degrees: below is label 0 (or 4)
constexpr Ratio diagonalLimit{925, 1384};  // 33.75 degrees: above is label 2 (or 6)

bool isAbove(int smaller, int greater, Ratio limit) {
    return smaller * limit.denominator - greater * limit.numerator > 0;
}

uchar oneHotDirection(int dx, int dy) {
    const int smaller = std::min(std::abs(dx), std::abs(dy));
    const int greater = std::max(std::abs(dx), std::abs(dy));
    const int fromAxis = isAbove(smaller, greater, axisLimit) + isAbove(smaller, greater, diagonalLimit);
    const int fromX = std::abs(dy) > std::abs(dx) ? labelCount / 2 - fromAxis : fromAxis;
    const bool falling = (dx ^ dy) < 0;
    return static_cast<uchar>(oneHotOf(falling ? (labelCount - fromX) % labelCount : fromX));
}

#if CV_SIMD128
cv::v_int16x8 sameInAll(int value) { return cv::v_setall_s16(static_cast<short>(value)); }

/// All bits set where smaller / greater is above the limit.
cv::v_int16x8 isAbove(const cv::v_int16x8& smaller, const cv::v_int16x8& greater, Ratio limit) {
    cv::v_int16x8 factors;
    cv::v_int16x8 unused;
    cv::v_zip(sameInAll(limit.denominator), sameInAll(-limit.numerator), factors, unused);
    cv::v_int16x8 low;
    cv::v_int16x8 high;
    cv::v_zip(smaller, greater, low, high);
    const cv::v_int32x4 zero = cv::v_setzero_s32();
    return cv::v_pack(cv::v_gt(cv::v_dotprod(low, factors), zero), cv::v_gt(cv::v_dotprod(high, factors), zero));
}

cv::v_int16x8 oneHotDirection(const cv::v_int16x8& dx, const cv::v_int16x8& dy) {
    const cv::v_int16x8 zero = cv::v_setzero_s16();
    const cv::v_int16x8 alongX = cv::v_max(dx, cv::v_sub(zero, dx));
    const cv::v_int16x8 alongY = cv::v_max(dy, cv::v_sub(zero, dy));
    const cv::v_int16x8 smaller = cv::v_min(alongX, alongY);
    const cv::v_int16x8 greater = cv::v_max(alongX, alongY);
    const cv::v_int16x8 falling = cv::v_lt(cv::v_xor(dx, dy), zero);
    const cv::v_int16x8 steep = cv::v_gt(alongY, alongX);
    const cv::v_int16x8 onAxis = cv::v_select(steep, sameInAll(oneHotOf(4)), sameInAll(oneHotOf(0)));
    const cv::v_int16x8 rising = cv::v_select(steep, sameInAll(oneHotOf(3)), sameInAll(oneHotOf(1)));
    const cv::v_int16x8 sinking = cv::v_select(steep, sameInAll(oneHotOf(5)), sameInAll(oneHotOf(7)));
    const cv::v_int16x8 between = cv::v_select(falling, sinking, rising);
    const cv::v_int16x8 diagonal = cv::v_select(falling, sameInAll(oneHotOf(6)), sameInAll(oneHotOf(2)));
    return cv::v_select(isAbove(smaller, greater, diagonalLimit), diagonal,
                        cv::v_select(isAbove(smaller, greater, axisLimit), between, onAxis));
}

int oneHotOfSixteens(const short* dx, const short* dy, uchar* oneHot, int count) {
    int i = 0;
    for (; i + 16 <= count; i += 16) {
        const cv::v_int16x8 low = oneHotDirection(cv::v_load(dx + i), cv::v_load(dy + i));
        const cv::v_int16x8 high = oneHotDirection(cv::v_load(dx + i + 8), cv::v_load(dy + i + 8));
        cv::v_store(oneHot + i, cv::v_pack_u(low, high));
    }
    return i;
}
#else
int oneHotOfSixteens(const short*, const short*, uchar*, int) { return 0; }
#endif

}  // namespace

void oneHotDirections(const short* dx, const short* dy, uchar* oneHot, int count) {
    for (int i = oneHotOfSixteens(dx, dy, oneHot, count); i < count; ++i) oneHot[i] = oneHotDirection(dx[i], dy[i]);
}

}  // namespace line2Dup
