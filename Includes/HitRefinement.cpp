#include "Includes/HitRefinement.h"

#include <algorithm>
#include <cstdint>

namespace line2Dup {

namespace {

/// The pyramid's factor from a level to the next finer one.
constexpr int levelFactor = 2;
/// Grid steps from a window's first position to its centre.
constexpr int halfWindow = localWindow / 2;
/// Sums of weights up to this have no centroid.
constexpr float leastWeight = 1e-5f;

/// Along one direction. In 64 bits, since templates turned about points far out of any image have any extent.
int clampedCentre(std::int64_t position, std::int64_t imageSide, std::int64_t extent, int T) {
    const std::int64_t border = std::int64_t{halfWindow} * T;
    const std::int64_t centre = std::min(std::max(position * levelFactor + 1, border), imageSide - extent - border);
    return static_cast<int>(centre);
}

bool isInWindow(int x, int y) { return x >= 0 && x < localWindow && y >= 0 && y < localWindow; }

BestPosition findBest(const cv::Mat& sums, std::size_t featureCount) {
    // Different sums have different percentages, so the first greatest sum is the first greatest percentage.
    ushort greatest = 0;
    int row = 0;
    for (int r = 0; r < localWindow; ++r) {
        const auto* values = sums.ptr<ushort>(r);
        ushort inRow = 0;
        for (int c = 0; c < localWindow; ++c) inRow = values[c] > inRow ? values[c] : inRow;
        if (inRow > greatest) {
            greatest = inRow;
            row = r;
        }
    }
    BestPosition best{{-1, -1}, 0.0f};
    const float similarity = percentOf(greatest, featureCount);
    if (similarity > best.similarity) {
        const auto* values = sums.ptr<ushort>(row);
        best = {{static_cast<int>(std::find(values, values + localWindow, greatest) - values), row}, similarity};
    }
    return best;
}

NineSums sumsAround(const cv::Mat& sums, cv::Point place) {
    NineSums around{};
    for (int i = 0; i < 9; ++i) {
        const int x = place.x + i % 3 - 1;
        const int y = place.y + i / 3 - 1;
        if (isInWindow(x, y))
            around[static_cast<std::size_t>(i / 3)][static_cast<std::size_t>(i % 3)] = sums.at<ushort>(y, x);
    }
    return around;
}

cv::Point2f centroidAround(cv::Point best, const NineSums& around) {
    float weights = 0.0f;
    float weightedX = 0.0f;
    float weightedY = 0.0f;
    for (int i = 0; i < 9; ++i) {
        const int x = best.x + i % 3 - 1;
        const int y = best.y + i / 3 - 1;
        if (!isInWindow(x, y)) continue;
        const float weight = around[static_cast<std::size_t>(i / 3)][static_cast<std::size_t>(i % 3)];
        weights += weight;
        weightedX += weight * static_cast<float>(x);
        weightedY += weight * static_cast<float>(y);
    }
    if (!(weights > leastWeight)) return {static_cast<float>(best.x), static_cast<float>(best.y)};
    return {weightedX / weights, weightedY / weights};
}

/// The least sum of which a condition holds that holds of all greater sums too; one more than the greatest if of none.
template <typename Condition>
int leastSum(std::size_t featureCount, Condition holds) {
    int least = 0;
    int end = fullResponse * static_cast<int>(featureCount) + 1;
    while (least < end) {
        const int middle = (least + end) / 2;
        if (holds(percentOf(middle, featureCount))) {
            end = middle;
        } else {
            least = middle + 1;
        }
    }
    return least;
}

}  // namespace

int leastPassingSum(std::size_t featureCount, float threshold) {
    return leastSum(featureCount, [threshold](float percent) { return percent > threshold; });
}

int leastKeptSum(std::size_t featureCount, float threshold) {
    return leastSum(featureCount, [threshold](float percent) { return !(percent < threshold); });
}

cv::Point windowCentre(cv::Point place, const ShapeTemplate& level, cv::Size size, int T) {
    return {clampedCentre(place.x, size.width, level.width, T), clampedCentre(place.y, size.height, level.height, T)};
}

RefinedPlace refinedPlace(const BestPosition& best, const NineSums& around, cv::Point centre, int T) {
    const cv::Point2f finer = centroidAround(best.place, around);
    const std::int64_t originX = std::int64_t{centre.x / T} - halfWindow;
    const std::int64_t originY = std::int64_t{centre.y / T} - halfWindow;
    const int offset = offsetInBlock(T);
    const auto step = static_cast<float>(T);
    return {static_cast<int>((originX + best.place.x) * T + offset),
            static_cast<int>((originY + best.place.y) * T + offset), best.similarity,
            (static_cast<float>(originX) + finer.x) * step + static_cast<float>(offset),
            (static_cast<float>(originY) + finer.y) * step + static_cast<float>(offset)};
}

RefinedPlace refinedPlace(const cv::Mat& sums, std::size_t featureCount, cv::Point centre, int T) {
    const BestPosition best = findBest(sums, featureCount);
    return refinedPlace(best, sumsAround(sums, best.place), centre, T);
}

void moveHit(MatchHit& hit, const RefinedPlace& place) {
    hit.x = place.x;
    hit.y = place.y;
    hit.similarity = place.similarity;
    hit.subX = place.subX;
    hit.subY = place.subY;
}

void dropWorseThan(float threshold, std::vector<MatchHit>& hits) {
    const auto isWorse = [threshold](const MatchHit& hit) { return hit.similarity < threshold; };
    hits.erase(std::remove_if(hits.begin(), hits.end(), isWorse), hits.end());
}

}  // namespace line2Dup
