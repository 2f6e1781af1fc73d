// The coarse level gives candidates, and the fine level refines each in a window of 16 by 16 positions. A copy of the
// shape makes several candidates side by side, whose windows are shifted by 4 pixels each and overlap. The sum at a
// place is the same in all windows, so those that begin in one cell of 32 by 32 pixels share one rectangle of sums.
// Only where a feature's window leaves the image do the windows differ, and such a window is summed on its own.

#include "Includes/FastSearch.h"

#include <algorithm>
#include <numeric>
#include <opencv2/imgproc.hpp>

#include "Includes/HitRefinement.h"
#include "Includes/RegionQuantiser.h"
#include "Includes/Similarity.h"

namespace line2Dup {

namespace {

constexpr int fineStep = 1;

/// Extents in pixels up to this leave room for all sums of coordinates. Larger ones come from rotations about points
/// far out of any image. There an extent may have wrapped in an int, but never to usual values at both levels: the
/// coarse one is half of the fine one before either wraps.
constexpr int greatestExtent = 1 << 24;

bool hasUsualExtent(const ShapeTemplate& templ) {
    return templ.width >= 0 && templ.width < greatestExtent && templ.height >= 0 && templ.height < greatestExtent;
}

/// Side in pixels of the cells in which windows share their sums.
constexpr int cellSide = 32;

cv::Rect windowAround(cv::Point centre) {
    return {centre.x - localWindow / 2, centre.y - localWindow / 2, localWindow, localWindow};
}

/// Orders windows by the cell in which they begin; cells go from left to right and then down.
bool beginsInEarlierCell(cv::Point centreA, cv::Point centreB) {
    const cv::Point a = windowAround(centreA).tl() / cellSide;
    const cv::Point b = windowAround(centreB).tl() / cellSide;
    return a.y != b.y ? a.y < b.y : a.x < b.x;
}

cv::Size halfOf(cv::Size size) { return {size.width / 2, size.height / 2}; }

/// The sizes that the plain search would refuse, with an exception, are left to it.
bool isSearchable(cv::Size fine) {
    const cv::Size coarse = halfOf(fine);
    return fine.area() % 16 == 0 && coarse.area() % 16 == 0 && coarse.width % coarseStep == 0 &&
           coarse.height % coarseStep == 0 && coarse.width >= CoarseSearch::leastWidth &&
           coarse.height >= CoarseSearch::leastWidth;
}

cv::Mat coarseOrientations(const cv::Mat& source, float weakThreshold) {
    cv::Mat half;
    cv::pyrDown(source, half, halfOf(source.size()), cv::BORDER_DEFAULT);
    cv::Mat quantised(half.size(), CV_8U);
    quantiseRegion(half, cv::Rect(cv::Point(), half.size()), weakThreshold, quantised);
    return quantised;
}

}  // namespace

bool FastSearch::takesImage(const cv::Mat& source, const cv::Mat& mask, const std::vector<int>& levelSteps,
                            float threshold) {
    return levelSteps == std::vector<int>{fineStep, coarseStep} && mask.empty() && threshold > 0.0f &&
           canQuantiseRegions(source) && isSearchable(source.size());
}

bool FastSearch::takesTemplates(const std::vector<ShapeTemplateLevels>& templates) {
    return std::all_of(templates.begin(), templates.end(), [](const ShapeTemplateLevels& levels) {
        const std::size_t coarseFeatures = levels.back().features.size();
        return hasUsualExtent(levels.front()) && hasUsualExtent(levels.back()) && coarseFeatures > 0 &&
               coarseFeatures < byteSumLimit && levels.front().features.size() < shortSumLimit;
    });
}

FastSearch::FastSearch(const ColorGradient& modality, const cv::Mat& source)
    : size_(source.size()),
      fine_(source, modality.weakThreshold),
      coarse_(coarseOrientations(source, modality.weakThreshold)) {}

void FastSearch::matchClass(float threshold, std::vector<MatchHit>& hits, const std::string& classId,
                            const std::vector<ShapeTemplateLevels>& templates) {
    const std::vector<CoarseCandidate> candidates = coarse_.find(templates, threshold);
    std::vector<MatchHit> found;
    for (std::size_t begin = 0; begin < candidates.size();) {
        const int templateId = candidates[begin].templateId;
        found.clear();
        for (; begin < candidates.size() && candidates[begin].templateId == templateId; ++begin) {
            const cv::Point place = candidates[begin].place;
            found.push_back({place.x, place.y, 0.0f, classId, templateId, 0.0f, 0.0f});
        }
        refine(templates[static_cast<std::size_t>(templateId)].front(), found);
        dropWorseThan(threshold, found);
        hits.insert(hits.end(), found.begin(), found.end());
    }
}

void FastSearch::refine(const ShapeTemplate& templ, std::vector<MatchHit>& candidates) {
    centres_.clear();
    for (const MatchHit& hit : candidates) centres_.push_back(windowCentre(hit, templ, size_, fineStep));
    order_.resize(candidates.size());
    std::iota(order_.begin(), order_.end(), std::size_t{0});
    std::sort(order_.begin(), order_.end(),
              [this](std::size_t a, std::size_t b) { return beginsInEarlierCell(centres_[a], centres_[b]); });
    for (std::size_t begin = 0; begin < order_.size();) {
        const cv::Point first = centres_[order_[begin]];
        cv::Rect origins = windowAround(first);
        std::size_t end = begin + 1;
        for (; end < order_.size() && !beginsInEarlierCell(first, centres_[order_[end]]); ++end) {
            origins |= windowAround(centres_[order_[end]]);
        }
        const bool shared = fine_.holds(templ, origins);
        const cv::Mat sums = shared ? fine_.sumsIn(templ, origins) : cv::Mat();
        for (; begin < end; ++begin) {
            const cv::Point centre = centres_[order_[begin]];
            const cv::Mat window = shared ? sums(windowAround(centre) - origins.tl()) : fine_.sumsAround(templ, centre);
            refineHit(candidates[order_[begin]], window, templ.features.size(), centre, fineStep);
        }
    }
}

}  // namespace line2Dup
