#include "Includes/PlainSearch.h"

#include <algorithm>
#include <memory>

#include "Includes/HitRefinement.h"
#include "Includes/MatcherError.h"
#include "Includes/ResponseMaps.h"
#include "Includes/Similarity.h"

namespace line2Dup {

namespace {

LevelMemories prepareLevel(const ColorGradientPyramid& pyramid, int T) {
    cv::Mat orientations = cv::Mat::zeros(pyramid.quantised.size(), CV_8U);
    pyramid.quantised.copyTo(orientations, pyramid.mask);
    cv::Mat spread;
    spreadOrientations(orientations, spread, T);
    std::vector<cv::Mat> maps;
    computeResponseMaps(spread, maps);
    LevelMemories level{std::vector<cv::Mat>(maps.size()), orientations.size(), T};
    for (std::size_t i = 0; i < maps.size(); ++i) {
        linearize(maps[i], level.linearMemories[i], T);
        maps[i].release();
    }
    return level;
}

void requireSummable(const ShapeTemplate& templ) {
    if (templ.features.size() >= shortSumLimit) {
        raiseBadArgument("feature size too large", "line2Dup::Detector::matchClass");
    }
}

/// The sums of all positions, CV_16U, by the routine for the template's number of features.
cv::Mat sumEverywhere(const LevelMemories& level, const ShapeTemplate& templ) {
    requireSummable(templ);
    cv::Mat sums;
    if (templ.features.size() < byteSumLimit) {
        similarity_64_simd_safe(level.linearMemories, templ, sums, level.size, level.step);
        sums.convertTo(sums, CV_16U);
    } else {
        similarity_safe(level.linearMemories, templ, sums, level.size, level.step);
    }
    return sums;
}

cv::Mat sumAround(const LevelMemories& level, const ShapeTemplate& templ, cv::Point centre) {
    requireSummable(templ);
    cv::Mat sums;
    if (templ.features.size() < byteSumLimit) {
        similarityLocal_64(level.linearMemories, templ, sums, level.size, level.step, centre);
        sums.convertTo(sums, CV_16U);
    } else {
        similarityLocal(level.linearMemories, templ, sums, level.size, level.step, centre);
    }
    return sums;
}

/// On the coarsest level a candidate must be better than the threshold.
std::vector<MatchHit> findCandidates(const LevelMemories& level, const ShapeTemplate& templ, float threshold,
                                     const std::string& classId, int templateId) {
    const cv::Mat sums = sumEverywhere(level, templ);
    const int least = leastPassingSum(templ.features.size(), threshold);
    const int offset = offsetInBlock(level.step);
    std::vector<MatchHit> candidates;
    for (int r = 0; r < sums.rows; ++r) {
        const auto* row = sums.ptr<ushort>(r);
        for (int c = 0; c < sums.cols; ++c) {
            if (row[c] < least) continue;
            const float similarity = percentOf(row[c], templ.features.size());
            candidates.push_back(
                {c * level.step + offset, r * level.step + offset, similarity, classId, templateId, 0.0f, 0.0f});
        }
    }
    return candidates;
}

}  // namespace

std::vector<LevelMemories> prepareLevels(const ColorGradient& modality, const cv::Mat& source, const cv::Mat& mask,
                                         const std::vector<int>& levelSteps) {
    const std::shared_ptr<ColorGradientPyramid> pyramid = modality.makePyramid(source, mask);
    std::vector<LevelMemories> levels;
    for (std::size_t l = 0; l < levelSteps.size(); ++l) {
        if (l > 0) pyramid->downsample();
        levels.push_back(prepareLevel(*pyramid, levelSteps[l]));
    }
    return levels;
}

void matchClass(const std::vector<LevelMemories>& levels, float threshold, std::vector<MatchHit>& hits,
                const std::string& classId, const std::vector<ShapeTemplateLevels>& templates) {
    if (levels.empty()) return;
    for (std::size_t id = 0; id < templates.size(); ++id) {
        std::vector<MatchHit> candidates =
            findCandidates(levels.back(), templates[id].back(), threshold, classId, static_cast<int>(id));
        for (std::size_t l = levels.size() - 1; l-- > 0;) {
            const LevelMemories& level = levels[l];
            const ShapeTemplate& templ = templates[id][l];
            for (MatchHit& hit : candidates) {
                const cv::Point centre = windowCentre({hit.x, hit.y}, templ, level.size, level.step);
                const cv::Mat sums = sumAround(level, templ, centre);
                moveHit(hit, refinedPlace(sums, templ.features.size(), centre, level.step));
            }
            dropWorseThan(threshold, candidates);
        }
        hits.insert(hits.end(), candidates.begin(), candidates.end());
    }
}

}  // namespace line2Dup
