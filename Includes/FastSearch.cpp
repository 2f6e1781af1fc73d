#include "Includes/FastSearch.h"

#include <algorithm>
#include <array>
#include <opencv2/imgproc.hpp>

#include "Includes/HitRefinement.h"
#include "Includes/RegionQuantiser.h"
#include "Includes/ResponseMaps.h"

namespace line2Dup {

namespace {

constexpr int fineStep = 1;

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
        return coarseFeatures > 0 && coarseFeatures < byteSumLimit && levels.front().features.size() < shortSumLimit;
    });
}

FastSearch::FastSearch(const ColorGradient& modality, const cv::Mat& source)
    : size_(source.size()),
      fine_(source, modality.weakThreshold),
      coarse_(coarseOrientations(source, modality.weakThreshold)) {}

void FastSearch::matchClass(float threshold, std::vector<MatchHit>& hits, const std::string& classId,
                            const std::vector<ShapeTemplateLevels>& templates) {
    std::array<ushort, localWindow * localWindow> sums{};
    for (const CoarseCandidate& candidate : coarse_.find(templates, threshold)) {
        const ShapeTemplate& templ = templates[static_cast<std::size_t>(candidate.templateId)].front();
        MatchHit hit{candidate.place.x, candidate.place.y, 0.0f, classId, candidate.templateId, 0.0f, 0.0f};
        const cv::Point centre = windowCentre(hit, templ, size_, fineStep);
        fine_.sumAround(templ, centre, sums);
        refineHit(hit, sums.data(), templ.features.size(), centre, fineStep);
        if (!(hit.similarity < threshold)) hits.push_back(hit);
    }
}

}  // namespace line2Dup
