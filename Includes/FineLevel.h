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
    /// The image must be one that `canQuantiseRegions` takes, and it stays the caller's.
    FineLevel(const cv::Mat& image, float weakThreshold);

    /// The window of 16 by 16 sums around `centre`, in raster order: what `similarityLocal` gives. The template has
    /// fewer than 8192 features.
    void sumAround(const ShapeTemplate& templ, cv::Point centre, std::array<ushort, localWindow * localWindow>& sums);

private:
    void prepare(const cv::Rect& rect);
    void prepareTile(cv::Point tile);
    void sumFeatures(std::array<ushort, localWindow * localWindow>& sums) const;

    cv::Mat image_;
    float weakThreshold_;
    cv::Mat quantised_;
    std::vector<cv::Mat> responses_;
    cv::Mat prepared_;  // one byte for each tile
    std::vector<const uchar*> features_;
};

}  // namespace line2Dup
