#pragma once

#include <cstddef>
#include <opencv2/core/types.hpp>
#include <vector>

#include "Includes/ShapeTemplate.h"

namespace line2Dup {

/// Pixels of the coarse level by which a feature may wander in x and in y within a group of templates.
constexpr int groupReach = 3;

/// What the templates of a group have in common: feature i lies in the square of 4 by 4 pixels whose top left corner is
/// (x, y), and has one of two labels. A feature that lies outside the image in all templates has the label -1.
struct GroupFeature {
    int x;
    int y;
    int label;
    int otherLabel;
};

/// Consecutive templates of a class that are almost the same at the coarse level, as neighbouring angles are.
struct TemplateGroup {
    std::size_t first;
    std::size_t last;  ///< One behind the group's last template.
    std::vector<GroupFeature> features;
};

/// Divides templates into the longest groups possible, from the first template on. Features outside an image of the
/// given size (of the coarse level) are left out.
std::vector<TemplateGroup> groupTemplates(const std::vector<ShapeTemplateLevels>& templates, cv::Size size);

}  // namespace line2Dup
