#include "Includes/Suppression.h"

#include <cstdint>
#include <opencv2/core.hpp>

namespace Quorvane {

namespace {

std::int64_t AreaOf(const cv::Rect& box) { return static_cast<std::int64_t>(box.width) * box.height; }

}  // namespace

float BoxOverlap(const cv::Rect& a, const cv::Rect& b) {
    const std::int64_t sum = AreaOf(a) + AreaOf(b);
    if (sum <= 0) return 1.0f;
    const std::int64_t common = AreaOf(a & b);
    // Not simply the quotient: its complement is rounded once on the way.
    const double distance = 1.0 - static_cast<double>(common) / static_cast<double>(sum - common);
    return static_cast<float>(1.0 - distance);
}

}  // namespace Quorvane

namespace cv_dnn {

std::vector<std::pair<float, int>> SelectScoresAbove(const std::vector<float>& scores, float scoreThreshold, int topK) {
    std::vector<std::pair<float, int>> selected;
    for (std::size_t i = 0; i < scores.size(); ++i) {
        if (scores[i] > scoreThreshold) selected.emplace_back(scores[i], static_cast<int>(i));
    }
    std::stable_sort(selected.begin(), selected.end(),
                     [](const auto& first, const auto& second) { return first.first > second.first; });
    if (topK > 0 && static_cast<std::size_t>(topK) < selected.size()) selected.resize(static_cast<std::size_t>(topK));
    return selected;
}

void RaiseUnequalSizes() {
    cv::error(cv::Error::StsAssert, "bboxes.size() == scores.size()", "cv_dnn::NMSFast_", "Includes\\smartfilling",
              __LINE__);
}

}  // namespace cv_dnn
