// Neighbouring angles have the same features in the same order, each a little further on its circle. What can be told
// of all of them at once saves work for each: a label that is missing in a whole square of pixels is missing for every
// template whose feature lies in the square. So templates are joined, one after the other, as long as each feature's
// places fit a square of 4 by 4 pixels and its labels are no more than two (a direction that turns passes from one
// label to the next). Larger squares and more labels would make longer groups, but rule out fewer positions.
//
// A feature outside the image finds nothing, whatever the square says, so it does not hold a group up.

#include "Includes/TemplateGroups.h"

#include <algorithm>
#include <limits>

namespace line2Dup {

namespace {

/// Where one feature lies in the templates seen so far.
struct Wander {
    int minX = std::numeric_limits<int>::max();
    int minY = std::numeric_limits<int>::max();
    int maxX = std::numeric_limits<int>::min();
    int maxY = std::numeric_limits<int>::min();
    int label = -1;
    int otherLabel = -1;

    /// Takes one more place in; false if the feature has wandered too far.
    bool include(const GradientFeature& feature) {
        minX = std::min(minX, feature.x);
        minY = std::min(minY, feature.y);
        maxX = std::max(maxX, feature.x);
        maxY = std::max(maxY, feature.y);
        if (label < 0) label = feature.label;
        if (otherLabel < 0 || otherLabel == label) otherLabel = feature.label;
        const bool known = feature.label == label || feature.label == otherLabel;
        return known && maxX - minX <= groupReach && maxY - minY <= groupReach;
    }
};

bool includeAll(const ShapeTemplate& templ, const cv::Rect& image, std::vector<Wander>& wanders) {
    if (templ.features.size() != wanders.size()) return false;
    for (std::size_t i = 0; i < wanders.size(); ++i) {
        const GradientFeature& feature = templ.features[i];
        if (image.contains({feature.x, feature.y}) && !wanders[i].include(feature)) return false;
    }
    return true;
}

}  // namespace

std::vector<TemplateGroup> groupTemplates(const std::vector<ShapeTemplateLevels>& templates, cv::Size size) {
    const cv::Rect image(cv::Point(), size);
    std::vector<TemplateGroup> groups;
    std::vector<Wander> accepted;
    std::vector<Wander> tried;
    for (std::size_t first = 0; first < templates.size();) {
        accepted.assign(templates[first].back().features.size(), Wander());
        includeAll(templates[first].back(), image, accepted);
        std::size_t last = first + 1;
        for (; last < templates.size(); ++last) {
            tried = accepted;
            if (!includeAll(templates[last].back(), image, tried)) break;
            std::swap(accepted, tried);
        }
        TemplateGroup group{first, last, {}};
        group.features.reserve(accepted.size());
        for (const Wander& wander : accepted) {
            group.features.push_back({wander.minX, wander.minY, wander.label, wander.otherLabel});
        }
        groups.push_back(std::move(group));
        first = last;
    }
    return groups;
}

}  // namespace line2Dup
