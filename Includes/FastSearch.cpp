#include "Includes/FastSearch.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>

#include "Includes/HitRefinement.h"
#include "Includes/RegionQuantiser.h"
#include "Includes/Similarity.h"

namespace line2Dup {

namespace {

constexpr int fineStep = 1;

/// Extents in pixels up to this leave room for all sums of coordinates. Larger ones come from rotations about points
/// far out of any image.
constexpr int greatestExtent = 1 << 24;

bool hasUsualExtent(const ShapeTemplate& templ) {
    return templ.width >= 0 && templ.width < greatestExtent && templ.height >= 0 && templ.height < greatestExtent;
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
        return hasUsualExtent(levels.front()) && coarseFeatures > 0 && coarseFeatures < byteSumLimit &&
               levels.front().features.size() < shortSumLimit;
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
    fine_.sumAround(templ, centres_, windows_);
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        refineHit(candidates[i], windows_[i].data(), templ.features.size(), centres_[i], fineStep);
    }
}

}  // namespace line2Dup
