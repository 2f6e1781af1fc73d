#include "Includes/Detector.h"

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <numeric>
#include <utility>

#include "Includes/FastSearch.h"
#include "Includes/MatcherError.h"
#include "Includes/PlainSearch.h"
#include "Includes/StageTimer.h"
#include "Includes/TemplateRotation.h"

namespace line2Dup {

namespace {

using Templates = std::vector<ShapeTemplateLevels>;
using TemplatesByClass = std::map<std::string, Templates>;
using Classes = std::vector<TemplatesByClass::const_pointer>;

/// The classes to look for, in the order in which they are to be matched.
Classes chooseClasses(const TemplatesByClass& all, const std::vector<std::string>& classIds) {
    Classes chosen;
    if (classIds.empty()) {
        for (const auto& entry : all) chosen.push_back(&entry);
    }
    for (const std::string& classId : classIds) {
        const auto found = all.find(classId);
        if (found != all.end()) chosen.push_back(&*found);
    }
    return chosen;
}

bool areTakenByFastSearch(const Classes& classes) {
    return std::all_of(classes.begin(), classes.end(),
                       [](const auto* entry) { return FastSearch::takesTemplates(entry->second); });
}

/// Best hits first, duplicates away. The sort is stable: what is equal keeps the order in which it was found.
std::vector<MatchHit> ordered(std::vector<MatchHit> hits) {
    std::vector<std::uint32_t> order(hits.size());
    std::iota(order.begin(), order.end(), 0u);
    std::stable_sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) { return hits[a] < hits[b]; });
    std::vector<MatchHit> result;
    for (const std::uint32_t i : order) {
        if (result.empty() || !(result.back() == hits[i])) result.push_back(std::move(hits[i]));
    }
    return result;
}

}  // namespace

bool operator<(const MatchHit& a, const MatchHit& b) {
    if (a.similarity != b.similarity) return a.similarity > b.similarity;
    return a.templateId < b.templateId;
}

bool operator==(const MatchHit& a, const MatchHit& b) {
    return a.x == b.x && a.y == b.y && a.similarity == b.similarity && a.classId == b.classId;
}

Detector::Detector(int featureCount, std::vector<int> levelSteps, float weakThreshold, float strongThreshold)
    : modality_(
          std::make_shared<ColorGradient>(weakThreshold, static_cast<std::size_t>(featureCount), strongThreshold)),
      pyramidLevels_(static_cast<int>(levelSteps.size())),
      levelSteps_(std::move(levelSteps)) {}

int Detector::addShapeTemplate(cv::Mat source, const std::string& classId, cv::Mat objectMask,
                               int overrideFeatureCount) {
    Templates& templates = classTemplates_[classId];
    ShapeTemplateLevels levels(static_cast<std::size_t>(pyramidLevels_));
    const std::shared_ptr<ColorGradientPyramid> pyramid = modality_->makePyramid(source, objectMask);
    if (overrideFeatureCount > 0) pyramid->featureCount = static_cast<std::size_t>(overrideFeatureCount);
    for (std::size_t l = 0; l < levels.size(); ++l) {
        if (l > 0) pyramid->downsample();
        if (!pyramid->extractFeatures(levels[l])) return -1;
    }
    cropToFeatures(levels);
    templates.push_back(std::move(levels));
    return static_cast<int>(templates.size()) - 1;
}

int Detector::addRotatedTemplate(const std::string& classId, int sourceId, float theta, cv::Point2f centre) {
    Templates& templates = classTemplates_.at(classId);
    templates.push_back(rotateTemplate(templates.at(static_cast<std::size_t>(sourceId)), theta, centre));
    return static_cast<int>(templates.size()) - 1;
}

std::vector<MatchHit> Detector::match(cv::Mat source, float threshold, const std::vector<std::string>& classIds,
                                      cv::Mat mask) const {
    StageTimer timer;
    require(mask.empty() || mask.size() == source.size(), "mask.empty() || mask.size() == source.size()",
            "line2Dup::Detector::match");
    const Classes classes = chooseClasses(classTemplates_, classIds);
    std::vector<MatchHit> hits;
    if (FastSearch::takesImage(source, mask, levelSteps_, threshold) && areTakenByFastSearch(classes)) {
        FastSearch search(*modality_, source);
        timer.elapsed("construct response map");
        for (const auto* entry : classes) search.matchClass(threshold, hits, entry->first, entry->second);
    } else {
        const std::vector<LevelMemories> levels = prepareLevels(*modality_, source, mask, levelSteps_);
        timer.elapsed("construct response map");
        for (const auto* entry : classes) matchClass(levels, threshold, hits, entry->first, entry->second);
    }
    hits = ordered(std::move(hits));
    timer.elapsed("templ match");
    return hits;
}

const ShapeTemplateLevels& Detector::templateLevels(const std::string& classId, int templateId) const {
    static const ShapeTemplateLevels none;
    const auto found = classTemplates_.find(classId);
    if (found == classTemplates_.end()) {
        std::cerr << "[Error] class_id not found: " << classId << std::endl;
        return none;
    }
    const Templates& templates = found->second;
    if (templateId < 0 || static_cast<std::size_t>(templateId) >= templates.size()) {
        std::cerr << "[Error] template_id out of range: " << templateId << ", available = " << templates.size()
                  << std::endl;
        return none;
    }
    return templates[static_cast<std::size_t>(templateId)];
}

}  // namespace line2Dup
