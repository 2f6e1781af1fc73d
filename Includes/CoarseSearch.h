#pragma once

#include <cstddef>
#include <functional>
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

    /// Takes candidates, all those of one template or of several consecutive ones.
    using Taker = std::function<void(const std::vector<CoarseCandidate>&)>;

    /// Hands over the candidates in the order of the templates and, for each, in raster order. Every template must have
    /// 1 to 63 features at its coarsest level. `threshold` is above 0.
    ///
    /// At a low threshold the candidates of all templates may be more than memory holds, so they come in portions: a
    /// portion ends with the template that fills it up.
    void find(const std::vector<ShapeTemplateLevels>& templates, float threshold, const Taker& take) const;

    static constexpr std::size_t fullPortion = std::size_t{1} << 16;

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
