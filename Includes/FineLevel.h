#pragma once

#include <cstddef>
#include <opencv2/core/mat.hpp>
#include <vector>

#include "Includes/OrientationLabel.h"
#include "Includes/ShapeTemplate.h"
#include "Includes/Similarity.h"

namespace line2Dup {

/// The finest level of an image, with step 1, prepared only where windows are scored.
class FineLevel {
public:
    /// The image must be one that `canQuantiseRegions` takes, and it stays the caller's.
    FineLevel(const cv::Mat& image, float weakThreshold);

    /// Whether no feature leaves the image when the template's crop origin moves in the rectangle.
    bool holds(const ShapeTemplate& templ, const cv::Rect& origins) const;

    /// The sums of the responses for all crop origins in a rectangle that `holds` allows, CV_16U, of the rectangle's
    /// size, which is at least 16 by 16. The template has fewer than 8192 features. The result lives until the next
    /// call.
    const cv::Mat& sumsIn(const ShapeTemplate& templ, const cv::Rect& origins);

    /// The window of 16 by 16 sums around `centre`: what `similarityLocal` gives, also where features leave the image.
    cv::Mat sumsAround(const ShapeTemplate& templ, cv::Point centre);

private:
    void prepare(const cv::Rect& rect);
    void prepareTile(cv::Point tile);

    cv::Mat image_;
    float weakThreshold_;
    cv::Mat quantised_;
    std::vector<cv::Mat> responses_;
    cv::Mat prepared_;  // one byte for each tile
    std::vector<const uchar*> features_;
    cv::Mat sums_;
};

}  // namespace line2Dup
