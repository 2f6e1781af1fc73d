#pragma once

#include <opencv2/core/mat.hpp>

#include "QuorvaneExport.h"

namespace Quorvane::UtilityFunctions {

/// @name Change detection
/// Whether a picture differs from an earlier one, which the host keeps.
///@{

/// Whether any pixel of the two gray pictures differs, by one gray level or more.
///
/// Two empty pictures are equal, an empty one differs from any other. Pictures of different size or depth, and channel
/// counts other than one, three or four, give the `cv::Exception` of `cv::absdiff` or `cv::countNonZero`.
QUORVANE_EXPORT bool IsMatChanged_GrayDiff(const cv::Mat& previous, const cv::Mat& current);

/// Whether the 64-bit average hashes of the pictures differ in more than `threshold` places.
///
/// The hash tells for each field of an 8 x 8 grid whether it is brighter than the mean of all, so it forgives noise, a
/// change of size and of overall brightness. 5 is a usual threshold. An empty picture gives a `cv::Exception`. A
/// `previous` of other than one, three or four channels writes a line to standard error and counts as a distance of -1;
/// such a `current` counts as a hash of zeros.
QUORVANE_EXPORT bool IsMatChanged_HammingDistance(const cv::Mat& previous, const cv::Mat& current, int threshold);

///@}

}  // namespace Quorvane::UtilityFunctions
