#pragma once

#include <cstddef>
#include <opencv2/core/mat.hpp>
#include <vector>

#include "Includes/ShapeTemplate.h"

namespace Quorvane::Reference {

/// The matcher's gradient images from their definition: histograms of labels, one pixel after the other.
struct GradientImages {
    cv::Mat quantised;
    cv::Mat magnitude;
    cv::Mat rawAngle;
};
GradientImages ComputeGradients(const cv::Mat& source, float weakThreshold);

/// Features of gradient images and a mask (empty, or of their size), from the definition. Empty if there are too few.
std::vector<line2Dup::GradientFeature> ExtractFeatures(const GradientImages& images, const cv::Mat& mask,
                                                       std::size_t wanted, float strongThreshold);

}  // namespace Quorvane::Reference
