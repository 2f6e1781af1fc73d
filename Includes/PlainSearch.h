#pragma once

#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

#include "Includes/ColorGradient.h"
#include "Includes/Detector.h"
#include "Includes/ShapeTemplate.h"

namespace line2Dup {

/// The search by whole response maps, for any number of levels, any steps, masks, thresholds and feature counts.

/// One pyramid level of an image, prepared for any number of templates.
struct LevelMemories {
    std::vector<cv::Mat> linearMemories;
    cv::Size size;
    int step;
};

/// Prepares every level of the image, finest first.
std::vector<LevelMemories> prepareLevels(const ColorGradient& modality, const cv::Mat& source, const cv::Mat& mask,
                                         const std::vector<int>& levelSteps);

/// Appends the hits of all templates of a class, in the order of the templates.
void matchClass(const std::vector<LevelMemories>& levels, float threshold, std::vector<MatchHit>& hits,
                const std::string& classId, const std::vector<ShapeTemplateLevels>& templates);

}  // namespace line2Dup
