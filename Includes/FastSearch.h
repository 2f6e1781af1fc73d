#pragma once

#include <cstddef>
#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

#include "Includes/CoarseSearch.h"
#include "Includes/ColorGradient.h"
#include "Includes/Detector.h"
#include "Includes/FineLevel.h"
#include "Includes/ShapeTemplate.h"

namespace line2Dup {

/// The search of `PlainSearch.h`, faster, for what jobs use it for: two levels with steps 1 and 2, no mask, a threshold
/// above 0, and templates of few features. The hits are the same in every field and in the same order.
class FastSearch {
public:
    /// Whether images like this one can be searched so.
    static bool takesImage(const cv::Mat& source, const cv::Mat& mask, const std::vector<int>& levelSteps,
                           float threshold);
    /// Whether all of these templates can be searched for so.
    static bool takesTemplates(const std::vector<ShapeTemplateLevels>& templates);

    FastSearch(const ColorGradient& modality, const cv::Mat& source);

    /// Appends the hits of all templates of a class, in the order of the templates.
    void matchClass(float threshold, std::vector<MatchHit>& hits, const std::string& classId,
                    const std::vector<ShapeTemplateLevels>& templates);

private:
    void refine(const ShapeTemplate& templ, std::vector<MatchHit>& candidates);

    cv::Size size_;
    FineLevel fine_;
    CoarseSearch coarse_;
    std::vector<cv::Point> centres_;
    std::vector<std::size_t> order_;
};

}  // namespace line2Dup
