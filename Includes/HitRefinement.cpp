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

struct Best {
    cv::Point position{-1, -1};
    float similarity = 0.0f;
};

Best findBest(const cv::Mat& sums, std::size_t featureCount) {
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
    Best best;
    const float similarity = percentOf(greatest, featureCount);
    if (similarity > best.similarity) {
        const auto* values = sums.ptr<ushort>(row);
        best = {{static_cast<int>(std::find(values, values + localWindow, greatest) - values), row}, similarity};
    }
    return best;
}

cv::Point2f centroidAround(const cv::Mat& sums, cv::Point best) {
    float weights = 0.0f;
    float weightedX = 0.0f;
    float weightedY = 0.0f;
    for (int y = std::max(best.y - 1, 0); y <= std::min(best.y + 1, localWindow - 1); ++y) {
        const auto* row = sums.ptr<ushort>(y);
        for (int x = std::max(best.x - 1, 0); x <= std::min(best.x + 1, localWindow - 1); ++x) {
            const float weight = row[x];
            weights += weight;
            weightedX += weight * static_cast<float>(x);
            weightedY += weight * static_cast<float>(y);
        }
    }
    if (!(weights > leastWeight)) return {static_cast<float>(best.x), static_cast<float>(best.y)};
    return {weightedX / weights, weightedY / weights};
}

}  // namespace

int leastPassingSum(std::size_t featureCount, float threshold) {
    const int greatest = fullResponse * static_cast<int>(featureCount);
    int sum = 0;
    while (sum <= greatest && !(percentOf(sum, featureCount) > threshold)) ++sum;
    return sum;
}

cv::Point windowCentre(const MatchHit& hit, const ShapeTemplate& level, cv::Size size, int T) {
    return {clampedCentre(hit.x, size.width, level.width, T), clampedCentre(hit.y, size.height, level.height, T)};
}

void refineHit(MatchHit& hit, const cv::Mat& sums, std::size_t featureCount, cv::Point centre, int T) {
    const Best best = findBest(sums, featureCount);
    const cv::Point2f finer = centroidAround(sums, best.position);
    const std::int64_t originX = std::int64_t{centre.x / T} - halfWindow;
    const std::int64_t originY = std::int64_t{centre.y / T} - halfWindow;
    const int offset = offsetInBlock(T);
    hit.similarity = best.similarity;
    hit.x = static_cast<int>((originX + best.position.x) * T + offset);
    hit.y = static_cast<int>((originY + best.position.y) * T + offset);
    const auto step = static_cast<float>(T);
    hit.subX = (static_cast<float>(originX) + finer.x) * step + static_cast<float>(offset);
    hit.subY = (static_cast<float>(originY) + finer.y) * step + static_cast<float>(offset);
}

void dropWorseThan(float threshold, std::vector<MatchHit>& hits) {
    const auto isWorse = [threshold](const MatchHit& hit) { return hit.similarity < threshold; };
    hits.erase(std::remove_if(hits.begin(), hits.end(), isWorse), hits.end());
}

}  // namespace line2Dup
