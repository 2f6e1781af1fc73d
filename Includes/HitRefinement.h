#pragma once

#include <array>
#include <opencv2/core/mat.hpp>
#include <vector>

#include "Includes/Detector.h"
#include "Includes/ResponseMaps.h"
#include "Includes/ShapeTemplate.h"
#include "Includes/Similarity.h"

namespace line2Dup {

/// Percent of the best possible sum for `featureCount` features, in float.
inline float percentOf(int sum, std::size_t featureCount) {
    return static_cast<float>(sum) * 100.0f / static_cast<float>(fullResponse * featureCount);
}

/// The least sum of the responses of `featureCount` features whose percentage is above the threshold; greater than any
/// sum can be if there is none.
int leastPassingSum(std::size_t featureCount, float threshold);

/// The least sum whose percentage `dropWorseThan` keeps; greater than any sum can be if there is none.
int leastKeptSum(std::size_t featureCount, float threshold);

/// The pixel that stands for a block of the grid of step T, relative to the block's first one.
constexpr int offsetInBlock(int T) { return T / 2 + T % 2 - 1; }

/// Where the window of a hit of the level above lies at this level: at twice the hit's place, but so that the
/// template stays 8 grid steps away from the image's edges. If the template is too large for that, the limit at the
/// right and bottom wins, deliberately.
cv::Point windowCentre(cv::Point place, const ShapeTemplate& level, cv::Size size, int T);

/// The best position of a window.
struct BestPosition {
    cv::Point place;
    float similarity;
};

/// The sums of a position and of those around it.
using NineSums = std::array<std::array<ushort, 3>, 3>;

/// Where a window's hit lies in the image.
struct RefinedPlace {
    int x;
    int y;
    float similarity;
    float subX;
    float subY;
};

/// The place of the best position of a window.
///
/// The sub-pixel position is the mean of the 3 by 3 positions around the best one, weighted with their sums; positions
/// outside of the window do not count.
RefinedPlace refinedPlace(const BestPosition& best, const NineSums& around, cv::Point centre, int T);

/// Finds the best position of a window, the first of equal ones. `sums` (CV_16U) are the 16 by 16 sums of the window.
/// One without any response has its hit at position (-1, -1), with similarity 0.
RefinedPlace refinedPlace(const cv::Mat& sums, std::size_t featureCount, cv::Point centre, int T);

void moveHit(MatchHit& hit, const RefinedPlace& place);

/// Takes away the hits below the threshold and keeps the order of the others. A refined hit may be just at the
/// threshold, which at the coarsest level is deliberately not enough.
void dropWorseThan(float threshold, std::vector<MatchHit>& hits);

}  // namespace line2Dup
