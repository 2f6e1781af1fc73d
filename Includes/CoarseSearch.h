#pragma once

#include <opencv2/core/mat.hpp>
#include <vector>

#include "Includes/ResponseBits.h"
#include "Includes/ShapeTemplate.h"

namespace line2Dup {

/// Step of the coarse level's grid in pixels.
constexpr int coarseStep = 2;

/// A template at a position of the coarse level that scores above the threshold.
struct CoarseCandidate {
    int templateId;
    cv::Point place;  ///< Pixels of the coarse level.
};

/// Finds the candidates of a class's templates in the coarse level of an image: exactly those positions at which
/// `similarity_64_simd_safe` gives a sum whose percentage is above the threshold.
class CoarseSearch {
public:
    /// `orientations` are the quantised orientations of the coarse level; its sides must be multiples of the step, and
    /// it must be at least `leastWidth` pixels wide.
    explicit CoarseSearch(const cv::Mat& orientations);

    static constexpr int leastWidth = 8;

    /// The candidates in the order of the templates and, for each, in raster order. Every template must have 1 to 63
    /// features at its coarsest level. `threshold` is above 0.
    std::vector<CoarseCandidate> find(const std::vector<ShapeTemplateLevels>& templates, float threshold) const;

private:
    CoarseSearch(cv::Size grid, const cv::Mat& spread);
    CoarseSearch(cv::Size grid, const cv::Mat& spread, const cv::Mat& linearSpread);

    // What all classes are searched with, made once.
    cv::Size grid_;
    ResponseBits bits_;
    ResponseBits furtherBits_;  // of the image spread further, for groups of templates
    std::vector<uchar> neverMissing_;
    cv::Mat linearSpread_;
};

}  // namespace line2Dup
