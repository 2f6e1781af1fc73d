// The coarse level gives candidates, and the fine level refines each in a window of 16 by 16 positions. A copy of the
// shape makes several candidates side by side, whose windows are shifted by 4 pixels each and overlap. The sum at a
// place is the same in all windows, so windows that lie within 48 by 48 positions make a cluster and share their sums.
// The clusters of many templates are known before the fine level is prepared for them, so that this happens in a few
// large pieces and only where they lie.
//
// Only where a feature's window leaves the image do the windows differ, and such a window is summed on its own.

#include "Includes/FastSearch.h"

#include <algorithm>
#include <cstdint>
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

cv::Rect windowAround(cv::Point centre) {
    return {centre.x - localWindow / 2, centre.y - localWindow / 2, localWindow, localWindow};
}

/// The least rectangle that holds the template's features.
cv::Rect featureBoxOf(const ShapeTemplate& templ) {
    if (templ.features.empty()) return {};
    const auto byX = [](const GradientFeature& a, const GradientFeature& b) { return a.x < b.x; };
    const auto byY = [](const GradientFeature& a, const GradientFeature& b) { return a.y < b.y; };
    const auto x = std::minmax_element(templ.features.begin(), templ.features.end(), byX);
    const auto y = std::minmax_element(templ.features.begin(), templ.features.end(), byY);
    return {cv::Point(x.first->x, y.first->y), cv::Point(x.second->x + 1, y.second->y + 1)};
}

/// Whether no feature leaves the image when the template's crop origin moves in a rectangle.
bool staysInImage(const cv::Rect& featureBox, const cv::Rect& origins, cv::Size size) {
    const cv::Rect first = featureBox + origins.tl();
    const cv::Rect last = featureBox + origins.br() - cv::Point(1, 1);
    return first.x >= 0 && first.y >= 0 && last.br().x <= size.width && last.br().y <= size.height;
}

cv::Size halfOf(cv::Size size) { return {size.width / 2, size.height / 2}; }

/// Whether the pixels are whole vectors of 16, as the response maps demand. In 64 bits, since an int does not hold the
/// number of pixels of every image.
bool hasWholeVectors(cv::Size size) { return std::int64_t{size.width} * size.height % 16 == 0; }

/// The sizes that the plain search would refuse, with an exception, are left to it.
bool isSearchable(cv::Size fine) {
    const cv::Size coarse = halfOf(fine);
    return hasWholeVectors(fine) && hasWholeVectors(coarse) && coarse.width % coarseStep == 0 &&
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
    coarse_.find(templates, threshold, [&](const std::vector<CoarseCandidate>& candidates) {
        refineCandidates(candidates, templates, threshold);
        appendHits(hits, classId);
    });
}

void FastSearch::refineCandidates(const std::vector<CoarseCandidate>& candidates,
                                  const std::vector<ShapeTemplateLevels>& templates, float threshold) {
    arrangeWindows(templates, candidates);
    findClustersInImage(templates);
    fine_.prepareNeeded();
    for (const Cluster& cluster : clusters_) {
        refine(cluster, templates[static_cast<std::size_t>(cluster.templateId)].front(), threshold);
    }
}

void FastSearch::appendHits(std::vector<MatchHit>& hits, const std::string& classId) const {
    const Window* before = nullptr;
    for (const Window& window : windows_) {
        if (!window.hit) continue;
        if (before == nullptr || !isSameHit(*before, window)) {
            hits.push_back({0, 0, 0.0f, classId, window.templateId, 0.0f, 0.0f});
            moveHit(hits.back(), window.place);
        }
        before = &window;
    }
}

bool FastSearch::isSameHit(const Window& a, const Window& b) {
    return a.templateId == b.templateId && a.place.x == b.place.x && a.place.y == b.place.y &&
           a.place.similarity == b.place.similarity;
}

void FastSearch::arrangeWindows(const std::vector<ShapeTemplateLevels>& templates,
                                const std::vector<CoarseCandidate>& candidates) {
    windows_.clear();
    windows_.reserve(candidates.size());
    clusters_.clear();
    std::size_t firstCluster = 0;
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        const int templateId = candidates[i].templateId;
        const ShapeTemplate& templ = templates[static_cast<std::size_t>(templateId)].front();
        if (i > 0 && templateId != candidates[i - 1].templateId) firstCluster = clusters_.size();
        windows_.push_back({windowCentre(candidates[i].place, templ, size_, fineStep), templateId, none, false, {}});
        putIntoCluster(i, templateId, firstCluster);
    }
}

/// Windows come from top to bottom, so clusters that lie too far above are all at the front.
void FastSearch::putIntoCluster(std::size_t window, int templateId, std::size_t firstCluster) {
    const cv::Rect origins = windowAround(windows_[window].centre);
    for (std::size_t i = clusters_.size(); i-- > firstCluster;) {
        Cluster& cluster = clusters_[i];
        const cv::Rect together = cluster.origins | origins;
        if (together.height > WindowSums::greatestSide) break;
        if (together.width > WindowSums::greatestSide) continue;
        cluster.origins = together;
        windows_[cluster.last].next = window;
        cluster.last = window;
        return;
    }
    clusters_.push_back({templateId, origins, false, window, window});
}

void FastSearch::findClustersInImage(const std::vector<ShapeTemplateLevels>& templates) {
    int boxId = -1;
    cv::Rect box;
    for (Cluster& cluster : clusters_) {
        const ShapeTemplate& templ = templates[static_cast<std::size_t>(cluster.templateId)].front();
        if (cluster.templateId != boxId) box = featureBoxOf(templ);
        boxId = cluster.templateId;
        cluster.inImage = staysInImage(box, cluster.origins, size_);
        if (cluster.inImage) fine_.need(templ, box, cluster.origins);
    }
}

void FastSearch::refine(const Cluster& cluster, const ShapeTemplate& templ, float threshold) {
    const std::size_t featureCount = templ.features.size();
    if (cluster.inImage) sums_.find(fine_, templ, cluster.origins, leastKeptSum(featureCount, threshold));
    for (std::size_t i = cluster.first; i != none; i = windows_[i].next) {
        Window& window = windows_[i];
        if (cluster.inImage) {
            const cv::Rect origins = windowAround(window.centre);
            const WindowSums::Best best = sums_.bestIn(origins);
            window.hit = best.sum > 0;
            if (!window.hit) continue;
            window.place = refinedPlace({best.place, percentOf(best.sum, featureCount)},
                                        sums_.around(origins.tl() + best.place), window.centre, fineStep);
        } else {
            window.place = refinedPlace(fine_.sumsAround(templ, window.centre), featureCount, window.centre, fineStep);
            window.hit = !(window.place.similarity < threshold);
        }
    }
}

}  // namespace line2Dup
