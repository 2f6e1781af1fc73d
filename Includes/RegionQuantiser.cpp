// A search needs only the orientations of an image, not its magnitudes and angles, and at the fine level only those of
// the places around coarse hits. All of it is exact in 16-bit integers: the blurred image is 8-bit, so Sobel's
// derivatives are at most 1020 in amount, and their squares add up by a multiply-add of pairs.
//
// A region is gone through row by row, and of each step only the rows are kept that the next one looks at: seven of the
// image for the blur, three blurred ones for Sobel, three of labels for the vote. Sobel's kernels come apart: along
// each blurred row the difference and the sum of neighbours are formed once, and three rows of them give the
// derivatives.

#include "Includes/RegionQuantiser.h"

#include <algorithm>
#include <cmath>
#include <opencv2/core/hal/intrin.hpp>
#include <vector>

#include "Includes/GaussianRows.h"
#include "Includes/IntegerDirections.h"
#include "Includes/OrientationLabel.h"

namespace line2Dup {

namespace {

constexpr int greatestMagnitude = 2 * greatestDerivative * greatestDerivative;

/// Rows that are kept of each step, and how many values the vectors take at a time.
constexpr int keptRows = 3;
constexpr std::size_t vectorShorts = 8;

cv::Rect grown(const cv::Rect& rect, int margin, cv::Size limits) {
    return cv::Rect(rect.x - margin, rect.y - margin, rect.width + 2 * margin, rect.height + 2 * margin) &
           cv::Rect(cv::Point(), limits);
}

/// The greatest integer magnitude that is not above the squared threshold.
int integerThreshold(float weakThreshold) {
    const float squared = weakThreshold * weakThreshold;
    return squared < static_cast<float>(greatestMagnitude) ? static_cast<int>(std::floor(squared)) : greatestMagnitude;
}

/// A channel along a blurred row, for each pixel between its two neighbours.
struct NeighbourRow {
    std::vector<short> difference;  // right - left
    std::vector<short> sum;         // left + 2 * own + right
};

/// Three rows of one channel, one above the other.
struct ThreeRows {
    ThreeRows(const NeighbourRow& above, const NeighbourRow& here, const NeighbourRow& below)
        : difference{above.difference.data(), here.difference.data(), below.difference.data()},
          sumAbove(above.sum.data()),
          sumBelow(below.sum.data()) {}

    const short* difference[3];
    const short* sumAbove;
    const short* sumBelow;
};

/// The derivatives of the strongest channel along a row. All such rows are longer than the pixels in them, so that they
/// are whole vectors.
struct DerivativeRow {
    explicit DerivativeRow(std::size_t width) : dx(width), dy(width) {}

    std::vector<short> dx;
    std::vector<short> dy;
};

#if CV_SIMD128
/// The derivatives at eight pixels and their squared magnitudes.
struct Eight {
    cv::v_int16x8 dx;
    cv::v_int16x8 dy;
    cv::v_int32x4 low;
    cv::v_int32x4 high;
};

Eight derivativesAt(const ThreeRows& rows, std::size_t i) {
    const cv::v_int16x8 middle = cv::v_load(rows.difference[1] + i);
    const cv::v_int16x8 sides = cv::v_add(cv::v_load(rows.difference[0] + i), cv::v_load(rows.difference[2] + i));
    Eight eight;
    eight.dx = cv::v_add(sides, cv::v_add(middle, middle));
    eight.dy = cv::v_sub(cv::v_load(rows.sumBelow + i), cv::v_load(rows.sumAbove + i));
    cv::v_int16x8 lowPairs;
    cv::v_int16x8 highPairs;
    cv::v_zip(eight.dx, eight.dy, lowPairs, highPairs);
    eight.low = cv::v_dotprod(lowPairs, lowPairs);
    eight.high = cv::v_dotprod(highPairs, highPairs);
    return eight;
}

/// On a tie the earlier channel stays. `strong` becomes 255 where the magnitude is above the threshold, else 0.
void keepStrongest(const std::vector<ThreeRows>& channels, int threshold, DerivativeRow& row,
                   std::vector<uchar>& strong) {
    const cv::v_int32x4 limit = cv::v_setall_s32(threshold);
    for (std::size_t i = 0; i < row.dx.size(); i += vectorShorts) {
        Eight best = derivativesAt(channels[0], i);
        for (std::size_t k = 1; k < channels.size(); ++k) {
            const Eight other = derivativesAt(channels[k], i);
            const cv::v_int32x4 lowStronger = cv::v_gt(other.low, best.low);
            const cv::v_int32x4 highStronger = cv::v_gt(other.high, best.high);
            const cv::v_int16x8 stronger = cv::v_pack(lowStronger, highStronger);
            best.dx = cv::v_select(stronger, other.dx, best.dx);
            best.dy = cv::v_select(stronger, other.dy, best.dy);
            best.low = cv::v_select(lowStronger, other.low, best.low);
            best.high = cv::v_select(highStronger, other.high, best.high);
        }
        cv::v_store(&row.dx[i], best.dx);
        cv::v_store(&row.dy[i], best.dy);
        const cv::v_int16x8 above = cv::v_pack(cv::v_gt(best.low, limit), cv::v_gt(best.high, limit));
        cv::v_store_low(&strong[i], cv::v_reinterpret_as_u8(cv::v_pack(above, above)));
    }
}
#else
void keepStrongest(const std::vector<ThreeRows>& channels, int threshold, DerivativeRow& row,
                   std::vector<uchar>& strong) {
    for (std::size_t i = 0; i < row.dx.size(); ++i) {
        int most = -1;
        for (const ThreeRows& rows : channels) {
            const int dx = rows.difference[0][i] + 2 * rows.difference[1][i] + rows.difference[2][i];
            const int dy = rows.sumBelow[i] - rows.sumAbove[i];
            const int magnitude = dx * dx + dy * dy;
            if (magnitude <= most) continue;
            most = magnitude;
            row.dx[i] = static_cast<short>(dx);
            row.dy[i] = static_cast<short>(dy);
        }
        strong[i] = static_cast<uchar>(most > threshold ? 255 : 0);
    }
}
#endif

/// The derivatives of some columns of an image, row by row from top to bottom.
class Derivatives {
public:
    Derivatives(const cv::Mat& image, cv::Range columns)
        : rows_(image.rows),
          channels_(static_cast<std::size_t>(image.channels())),
          leftEdge_(columns.start == 0),
          blurredColumns_(std::max(columns.start - 1, 0), std::min(columns.end + 1, image.cols)),
          blur_(image, blurredColumns_),
          blurred_(channels_, std::vector<short>(1 + blur_.writtenValues() + 1)),
          kept_(channels_ * keptRows) {
        const std::size_t width = wholeVectors(static_cast<std::size_t>(columns.size()));
        for (NeighbourRow& row : kept_) row = {std::vector<short>(width), std::vector<short>(width)};
        for (std::vector<short>& row : blurred_) row.resize(std::max(row.size(), width + 2));
        for (std::vector<short>& row : blurred_) destinations_.push_back(row.data() + (leftEdge_ ? 1 : 0));
    }

    static std::size_t wholeVectors(std::size_t count) {
        return (count + vectorShorts - 1) / vectorShorts * vectorShorts;
    }

    void at(int y, int threshold, DerivativeRow& row, std::vector<uchar>& strong) {
        nextRow_ = std::max(nextRow_, std::max(y - 1, 0));
        for (; nextRow_ <= std::min(y + 1, rows_ - 1); ++nextRow_) load(nextRow_);
        three_.clear();
        for (std::size_t k = 0; k < channels_; ++k) three_.emplace_back(kept(y - 1, k), kept(y, k), kept(y + 1, k));
        keepStrongest(three_, threshold, row, strong);
    }

private:
    /// What lies outside the image is its nearest row.
    NeighbourRow& kept(int y, std::size_t channel) {
        const int row = std::min(std::max(y, 0), rows_ - 1);
        return kept_[static_cast<std::size_t>(row % keptRows) * channels_ + channel];
    }

    void load(int y) {
        blur_.blur(y, destinations_.data());
        for (std::size_t k = 0; k < channels_; ++k) {
            // The blurred image has a replicated border of its own.
            short* first = destinations_[k];
            if (leftEdge_) blurred_[k][0] = first[0];
            short* last = first + blurredColumns_.size() - 1;
            last[1] = last[0];
            formNeighbours(blurred_[k].data(), kept(y, k));
        }
    }

    static void formNeighbours(const short* row, NeighbourRow& neighbours) {
        short* difference = neighbours.difference.data();
        short* sum = neighbours.sum.data();
        const std::size_t width = neighbours.sum.size();
        for (std::size_t i = 0; i < width; ++i) {
            difference[i] = static_cast<short>(row[i + 2] - row[i]);
            sum[i] = static_cast<short>(row[i] + 2 * row[i + 1] + row[i + 2]);
        }
    }

    int rows_;
    std::size_t channels_;
    bool leftEdge_;
    cv::Range blurredColumns_;
    GaussianRows blur_;
    std::vector<std::vector<short>> blurred_;
    std::vector<short*> destinations_;
    std::vector<NeighbourRow> kept_;
    std::vector<ThreeRows> three_;
    int nextRow_ = 0;
};

/// The labels of a row before the vote, and where the gradient is strong enough for an orientation.
struct LabelRow {
    std::vector<uchar> oneHot;
    std::vector<uchar> strong;  // 255 or 0
};

/// The outermost rows and columns of the image vote for label 0.
void resetImageEdge(int y, const cv::Rect& voters, cv::Size imageSize, std::vector<uchar>& oneHot) {
    constexpr auto zero = static_cast<uchar>(oneHotOf(0));
    if (y == 0 || y == imageSize.height - 1) std::fill(oneHot.begin(), oneHot.end(), zero);
    if (voters.x == 0) oneHot.front() = zero;
    if (voters.br().x == imageSize.width) oneHot[static_cast<std::size_t>(voters.width) - 1] = zero;
}

/// Writes the orientations of a row's inner pixels, those that have voters on all sides.
void keepMajority(const LabelRow& above, const LabelRow& here, const LabelRow& below, int width, uchar* orientations) {
    majorityOfNine(above.oneHot.data(), here.oneHot.data(), below.oneHot.data(), orientations, width);
    const uchar* strong = here.strong.data();
    for (int x = 1; x < width - 1; ++x) orientations[x] = static_cast<uchar>(orientations[x] & strong[x]);
}

}  // namespace

bool canQuantiseRegions(const cv::Mat& image) {
    return (image.type() == CV_8UC1 || image.type() == CV_8UC3) && !image.isSubmatrix();
}

void quantiseRegion(const cv::Mat& image, const cv::Rect& region, float weakThreshold, cv::Mat& quantised) {
    quantised(region) = cv::Scalar(0);
    const cv::Rect voters = grown(region, 1, image.size());
    const int threshold = integerThreshold(weakThreshold);
    Derivatives derivatives(image, cv::Range(voters.x, voters.br().x));
    LabelRow labels[keptRows];
    const auto labelsAt = [&](int y) -> LabelRow& { return labels[y % keptRows]; };
    DerivativeRow row(Derivatives::wholeVectors(static_cast<std::size_t>(voters.width)));
    for (LabelRow& kept : labels) kept = {std::vector<uchar>(row.dx.size()), std::vector<uchar>(row.dx.size())};
    for (int y = voters.y; y < voters.br().y; ++y) {
        LabelRow& here = labelsAt(y);
        derivatives.at(y, threshold, row, here.strong);
        oneHotDirections(row.dx.data(), row.dy.data(), here.oneHot.data(), static_cast<int>(row.dx.size()));
        resetImageEdge(y, voters, image.size(), here.oneHot);
        // The image's outermost rows and columns do not have voters on all sides and stay without orientation.
        if (y < voters.y + 2) continue;
        keepMajority(labelsAt(y - 2), labelsAt(y - 1), here, voters.width, quantised.ptr(y - 1) + voters.x);
    }
}

}  // namespace line2Dup
