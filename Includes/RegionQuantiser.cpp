// A search needs only the orientations of an image, not its magnitudes and angles, and at the fine level only those of
// the places around coarse hits. All of it is exact in 16-bit integers: the blurred image is 8-bit, so Sobel's
// derivatives are at most 1020 in amount, and their squares add up by a multiply-add of pairs.
//
// A pixel's orientation depends on the 5 pixels around it: 3 for the blur, 1 for Sobel, 1 for the vote. So a region is
// blurred with that margin, as an image of its own over the same memory; where the region ends at the image's edge
// there is no margin, and the replicated border of the small image is that of the whole one.

#include "Includes/RegionQuantiser.h"

#include <algorithm>
#include <cmath>
#include <opencv2/core/hal/intrin.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "Includes/GradientSettings.h"
#include "Includes/IntegerDirections.h"
#include "Includes/OrientationLabel.h"

namespace line2Dup {

namespace {

constexpr int blurMargin = blurSize / 2;
constexpr int greatestMagnitude = 2 * greatestDerivative * greatestDerivative;

cv::Rect grown(const cv::Rect& rect, int margin, cv::Size limits) {
    return cv::Rect(rect.x - margin, rect.y - margin, rect.width + 2 * margin, rect.height + 2 * margin) &
           cv::Rect(cv::Point(), limits);
}

/// The blurred image in `rect`, with one replicated pixel around it.
cv::Mat blurredWithBorder(const cv::Mat& image, const cv::Rect& rect) {
    const cv::Rect whole = grown(rect, blurMargin, image.size());
    const cv::Mat alone(whole.height, whole.width, image.type(), const_cast<uchar*>(image.ptr(whole.y, whole.x)),
                        image.step);
    cv::Mat blurred;
    cv::GaussianBlur(alone, blurred, cv::Size(blurSize, blurSize), 0.0, 0.0, gradientBorder);
    cv::Mat bordered;
    cv::copyMakeBorder(blurred(rect - whole.tl()), bordered, 1, 1, 1, 1, gradientBorder | cv::BORDER_ISOLATED);
    return bordered;
}

/// The greatest integer magnitude that is not above the squared threshold.
int integerThreshold(float weakThreshold) {
    const float squared = weakThreshold * weakThreshold;
    return squared < static_cast<float>(greatestMagnitude) ? static_cast<int>(std::floor(squared)) : greatestMagnitude;
}

/// The derivatives of the strongest channel along a row, and whether they are strong enough.
struct DerivativeRow {
    explicit DerivativeRow(int width)
        : dx(static_cast<std::size_t>(width)), dy(dx.size()), magnitude(dx.size()), strong(dx.size()) {}

    std::vector<short> dx;
    std::vector<short> dy;
    std::vector<int> magnitude;
    std::vector<uchar> strong;  // 255 or 0
};

/// Three rows of one channel, beginning at the pixel to the left of the first derivative.
struct ThreeRows {
    const uchar* above;
    const uchar* here;
    const uchar* below;
};

struct Derivatives {
    int dx;
    int dy;
};

Derivatives sobelAt(const ThreeRows& rows, std::size_t i) {
    return {(rows.above[i + 2] - rows.above[i]) + 2 * (rows.here[i + 2] - rows.here[i]) +
                (rows.below[i + 2] - rows.below[i]),
            (rows.below[i] + 2 * rows.below[i + 1] + rows.below[i + 2]) -
                (rows.above[i] + 2 * rows.above[i + 1] + rows.above[i + 2])};
}

#if CV_SIMD128
cv::v_int16x8 pixels(const uchar* eight) { return cv::v_reinterpret_as_s16(cv::v_load_expand(eight)); }

/// A channel's derivatives at the leading eights of a row; those stronger than what the row holds replace it.
std::size_t keepStrongestEights(const ThreeRows& rows, bool first, DerivativeRow& row) {
    std::size_t i = 0;
    for (; i + 8 <= row.dx.size(); i += 8) {
        const cv::v_int16x8 aboveLeft = pixels(rows.above + i);
        const cv::v_int16x8 aboveRight = pixels(rows.above + i + 2);
        const cv::v_int16x8 belowLeft = pixels(rows.below + i);
        const cv::v_int16x8 belowRight = pixels(rows.below + i + 2);
        const cv::v_int16x8 middle = cv::v_sub(pixels(rows.here + i + 2), pixels(rows.here + i));
        const cv::v_int16x8 vertical = cv::v_sub(pixels(rows.below + i + 1), pixels(rows.above + i + 1));
        cv::v_int16x8 dx = cv::v_add(cv::v_sub(cv::v_add(aboveRight, belowRight), cv::v_add(aboveLeft, belowLeft)),
                                     cv::v_add(middle, middle));
        cv::v_int16x8 dy = cv::v_add(cv::v_sub(cv::v_add(belowLeft, belowRight), cv::v_add(aboveLeft, aboveRight)),
                                     cv::v_add(vertical, vertical));
        cv::v_int16x8 lowPairs;
        cv::v_int16x8 highPairs;
        cv::v_zip(dx, dy, lowPairs, highPairs);
        cv::v_int32x4 low = cv::v_dotprod(lowPairs, lowPairs);
        cv::v_int32x4 high = cv::v_dotprod(highPairs, highPairs);
        if (!first) {
            const cv::v_int32x4 lowBefore = cv::v_load(&row.magnitude[i]);
            const cv::v_int32x4 highBefore = cv::v_load(&row.magnitude[i + 4]);
            const cv::v_int16x8 stronger = cv::v_pack(cv::v_gt(low, lowBefore), cv::v_gt(high, highBefore));
            dx = cv::v_select(stronger, dx, cv::v_load(&row.dx[i]));
            dy = cv::v_select(stronger, dy, cv::v_load(&row.dy[i]));
            low = cv::v_max(low, lowBefore);
            high = cv::v_max(high, highBefore);
        }
        cv::v_store(&row.dx[i], dx);
        cv::v_store(&row.dy[i], dy);
        cv::v_store(&row.magnitude[i], low);
        cv::v_store(&row.magnitude[i + 4], high);
    }
    return i;
}
#else
std::size_t keepStrongestEights(const ThreeRows&, bool, DerivativeRow&) { return 0; }
#endif

/// On a tie the earlier channel stays.
void keepStrongest(const ThreeRows& rows, bool first, DerivativeRow& row) {
    for (std::size_t i = keepStrongestEights(rows, first, row); i < row.dx.size(); ++i) {
        const Derivatives here = sobelAt(rows, i);
        const int magnitude = here.dx * here.dx + here.dy * here.dy;
        if (!first && magnitude <= row.magnitude[i]) continue;
        row.dx[i] = static_cast<short>(here.dx);
        row.dy[i] = static_cast<short>(here.dy);
        row.magnitude[i] = magnitude;
    }
}

/// The labels of a region before the vote, and where the gradient is strong enough for an orientation.
struct Labels {
    cv::Mat oneHot;
    cv::Mat strong;
};

Labels labelsIn(const cv::Mat& image, const cv::Rect& rect, float weakThreshold) {
    const cv::Rect withNeighbours = grown(rect, 1, image.size());
    std::vector<cv::Mat> channels;
    cv::split(blurredWithBorder(image, withNeighbours), channels);
    Labels labels{cv::Mat(rect.size(), CV_8U), cv::Mat(rect.size(), CV_8U)};
    DerivativeRow row(rect.width);
    const int threshold = integerThreshold(weakThreshold);
    // The bordered image begins one pixel before `withNeighbours`, and a derivative one pixel before its own place.
    const int left = rect.x - withNeighbours.x;
    const int top = rect.y - withNeighbours.y;
    for (int r = 0; r < rect.height; ++r) {
        for (std::size_t k = 0; k < channels.size(); ++k) {
            const ThreeRows rows{channels[k].ptr(top + r) + left, channels[k].ptr(top + r + 1) + left,
                                 channels[k].ptr(top + r + 2) + left};
            keepStrongest(rows, k == 0, row);
        }
        oneHotDirections(row.dx.data(), row.dy.data(), labels.oneHot.ptr(r), rect.width);
        auto* strong = labels.strong.ptr(r);
        for (std::size_t i = 0; i < row.magnitude.size(); ++i) {
            strong[i] = static_cast<uchar>(row.magnitude[i] > threshold ? 255 : 0);
        }
    }
    return labels;
}

/// The outermost rows and columns of the image vote for label 0.
void resetImageEdge(const cv::Rect& rect, cv::Size imageSize, cv::Mat& oneHot) {
    const cv::Scalar zero(oneHotOf(0));
    if (rect.x == 0) oneHot.col(0) = zero;
    if (rect.y == 0) oneHot.row(0) = zero;
    if (rect.br().x == imageSize.width) oneHot.col(oneHot.cols - 1) = zero;
    if (rect.br().y == imageSize.height) oneHot.row(oneHot.rows - 1) = zero;
}

}  // namespace

bool canQuantiseRegions(const cv::Mat& image) {
    return (image.type() == CV_8UC1 || image.type() == CV_8UC3) && !image.isSubmatrix();
}

void quantiseRegion(const cv::Mat& image, const cv::Rect& region, float weakThreshold, cv::Mat& quantised) {
    const cv::Rect voters = grown(region, 1, image.size());
    Labels labels = labelsIn(image, voters, weakThreshold);
    resetImageEdge(voters, image.size(), labels.oneHot);
    quantised(region) = cv::Scalar(0);
    // Rows and columns that have voters on all sides; the others are the image's edge and get no orientation.
    const int width = voters.width;
    std::vector<uchar> winners(static_cast<std::size_t>(width));
    for (int r = 1; r < voters.height - 1; ++r) {
        uchar* row = quantised.ptr(voters.y + r);
        majorityOfNine(labels.oneHot.ptr(r - 1), labels.oneHot.ptr(r), labels.oneHot.ptr(r + 1), winners.data(), width);
        const uchar* strong = labels.strong.ptr(r);
        for (int c = 1; c < width - 1; ++c) {
            row[voters.x + c] = static_cast<uchar>(winners[static_cast<std::size_t>(c)] & strong[c]);
        }
    }
}

}  // namespace line2Dup
