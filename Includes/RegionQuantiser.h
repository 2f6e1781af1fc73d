#pragma once

#include <opencv2/core/mat.hpp>

namespace line2Dup {

/// Whether `quantiseRegion` can take the image: 8-bit, one channel or three, and not a part of a larger one (OpenCV's
/// filters look beyond the edges of such a part).
bool canQuantiseRegions(const cv::Mat& image);

/// Quantises the directions of one region of an image: `quantised` (CV_8U, of the image's size) becomes there what
/// `ColorGradientPyramid::computeGradients` makes of the whole image.
void quantiseRegion(const cv::Mat& image, const cv::Rect& region, float weakThreshold, cv::Mat& quantised);

}  // namespace line2Dup
