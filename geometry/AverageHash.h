#pragma once

#include <opencv2/core/mat.hpp>
#include <string>

namespace Quorvane::UtilityFunctions {

/// A picture as 64 characters: the gray picture shrunk to 8 x 8, row by row, '1' where a pixel is brighter than the
/// truncated mean, else '0'. A channel count other than one, three or four gives an empty text; an empty picture gives
/// a `cv::Exception`.
std::string averageHashString(const cv::Mat& image);

/// How many of the 64 places differ. A `first` that is not 64 characters of '0' and '1' gives -1 and a line on standard
/// error. `second` is not tested: a shorter one is filled with zeros in front, an empty one is all zeros.
int hammingDistanceOfHashes(const std::string& first, const std::string& second);

}  // namespace Quorvane::UtilityFunctions
