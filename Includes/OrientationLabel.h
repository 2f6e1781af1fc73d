#pragma once

#include <opencv2/core/hal/interface.h>

namespace line2Dup {

/// Directions are quantised to eight labels of 22.5 degrees each, in which opposite directions are one: label `i` is
/// centred at i * 22.5 and at i * 22.5 + 180 degrees. In images an orientation is the byte `1 << label`, and 0 is none.
constexpr int labelCount = 8;

/// The label of a byte with exactly one bit set. Any other byte raises `cv::Error::StsBadArg`.
int getLabel(int oneHot);

/// The byte of a label's own orientation.
constexpr int oneHotOf(int label) { return 1 << label; }

/// The bytes of the two orientations beside a label's own; label 7 lies beside label 0.
constexpr int neighboursOf(int label) {
    return oneHotOf((label + 1) % labelCount) | oneHotOf((label + labelCount - 1) % labelCount);
}

/// Of the 3 by 3 block around each pixel at least this many must agree on a label for the pixel to get it. It is more
/// than half of the nine, so no two labels can both reach it.
constexpr int votesNeeded = 5;

/// For the inner pixels of a row, columns 1 to width - 2: the byte of the label on which at least five of the nine
/// bytes around the pixel agree, or 0. The three rows hold one-hot bytes.
void majorityOfNine(const uchar* above, const uchar* here, const uchar* below, uchar* winners, int width);

}  // namespace line2Dup
