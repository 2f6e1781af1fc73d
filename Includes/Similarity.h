#pragma once

#include <opencv2/core/mat.hpp>
#include <vector>

#include "Includes/ShapeTemplate.h"

namespace line2Dup {

/// The similarity of a template to an image is the sum of its features' responses, for every position on a grid of step
/// T. `linearMemories` are the eight linearised response maps of the image (`ResponseMaps.h`) and `size` is the image's
/// size. Of N features the sum is at most 4 * N; features outside the image add nothing and still count in N.
///
/// The routines for few features sum in bytes, the others in 16 bits; their limits keep the sums exact. A template of
/// too many features raises `cv::Error::StsAssert`. Nothing is read outside the maps: what would lie there counts as 0.

/// Features that `similarity_64_simd_safe` and `similarityLocal_64` take: fewer than this. 63 * 4 fits a byte.
constexpr std::size_t byteSumLimit = 64;
/// Features that `similarity_safe` and `similarityLocal` take: fewer than this. 8191 * 4 fits a signed 16-bit value.
constexpr std::size_t shortSumLimit = 8192;

/// Side in grid steps of the window of the local routines.
constexpr int localWindow = 16;

/// All positions of the grid. `dst` is CV_16U, (size.height / T) by (size.width / T); positions at which the template
/// would not lie in the image stay 0. A template that just fits the image has its one position.
void similarity_safe(const std::vector<cv::Mat>& linearMemories, const ShapeTemplate& templ, cv::Mat& dst,
                     cv::Size size, int T);

/// The same for fewer than 64 features, into CV_8U. Deliberately not quite the same: a template that just fits the
/// image in one direction gets no position at all.
void similarity_64_simd_safe(const std::vector<cv::Mat>& linearMemories, const ShapeTemplate& templ, cv::Mat& dst,
                             cv::Size size, int T);

/// A window of 16 by 16 positions around `centre` (pixels of this level), CV_16U. The maps are flat arrays, so a window
/// that passes the image's right edge goes on in the next row.
void similarityLocal(const std::vector<cv::Mat>& linearMemories, const ShapeTemplate& templ, cv::Mat& dst,
                     cv::Size size, int T, cv::Point centre);

/// The same for fewer than 64 features, into CV_8U.
void similarityLocal_64(const std::vector<cv::Mat>& linearMemories, const ShapeTemplate& templ, cv::Mat& dst,
                        cv::Size size, int T, cv::Point centre);

}  // namespace line2Dup
