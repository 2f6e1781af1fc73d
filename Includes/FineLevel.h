#pragma once

#include <array>
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
    using Window = std::array<ushort, localWindow * localWindow>;

    /// The image must be one that `canQuantiseRegions` takes, and it stays the caller's.
    FineLevel(const cv::Mat& image, float weakThreshold);

    /// Sets the windows of 16 by 16 sums around several centres, in raster order: what `similarityLocal` gives for
    /// each. Windows that overlap share their sums. The template has fewer than 8192 features.
    void sumAround(const ShapeTemplate& templ, const std::vector<cv::Point>& centres, std::vector<Window>& windows);

private:
    void prepare(const cv::Rect& rect);
    void prepareTile(cv::Point tile);
    void sumRect(const ShapeTemplate& templ, const cv::Rect& origins);
    void sumAlone(const ShapeTemplate& templ, cv::Point centre, Window& window);

    cv::Mat image_;
    float weakThreshold_;
    cv::Mat quantised_;
    std::vector<cv::Mat> responses_;
    cv::Mat prepared_;  // one byte for each tile
    std::vector<const uchar*> features_;
    std::vector<std::size_t> order_;
    cv::Mat sums_;
};

}  // namespace line2Dup
