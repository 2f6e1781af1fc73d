#pragma once

#include <algorithm>
#include <cstddef>
#include <opencv2/core/types.hpp>
#include <utility>
#include <vector>

namespace Quorvane {

/// Intersection over union of two boxes, 0 to 1. Two boxes without any area count as identical: 1.
float BoxOverlap(const cv::Rect& a, const cv::Rect& b);

}  // namespace Quorvane

namespace cv_dnn {

/// Score and index of each box whose score is strictly above the threshold, best first, equal ones in their order; the
/// best `topK` of them if `topK` is above 0.
std::vector<std::pair<float, int>> SelectScoresAbove(const std::vector<float>& scores, float scoreThreshold, int topK);

/// Raises the assertion that boxes and scores are as many.
[[noreturn]] void RaiseUnequalSizes();

/// Non-maximum suppression: of boxes that overlap only the best stays.
///
/// Replaces `indices` by those of the boxes that stay, best first. Boxes with a score at or below `scoreThreshold` are
/// left out, and so are all but the best `topK` if `topK` is above 0. A box stays if `overlapFunction` of it and each
/// box that stays before it is at most the threshold. That begins at `nmsThreshold`; with `eta` below 1 it is
/// multiplied by `eta` after each box that stays, as long as it is above 0.5.
/// Lists of different lengths raise `cv::Error::StsAssert`.
template <typename Box, typename Overlap>
void NMSFast_(const std::vector<Box>& bboxes, const std::vector<float>& scores, float scoreThreshold,
              float nmsThreshold, float eta, int topK, std::vector<int>& indices, Overlap overlapFunction) {
    constexpr float leastAdaptedThreshold = 0.5f;
    if (bboxes.size() != scores.size()) RaiseUnequalSizes();
    const auto boxAt = [&](int index) -> const Box& { return bboxes[static_cast<std::size_t>(index)]; };

    const std::vector<std::pair<float, int>> candidates = SelectScoresAbove(scores, scoreThreshold, topK);
    indices.clear();
    float threshold = nmsThreshold;
    for (const auto& candidate : candidates) {
        const int index = candidate.second;
        const bool stays = std::all_of(indices.begin(), indices.end(), [&](int kept) {
            return overlapFunction(boxAt(index), boxAt(kept)) <= threshold;
        });
        if (!stays) continue;
        indices.push_back(index);
        if (eta < 1.0f && threshold > leastAdaptedThreshold) threshold *= eta;
    }
}

}  // namespace cv_dnn
