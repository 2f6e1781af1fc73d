#pragma once

#include <cstdint>
#include <opencv2/core/mat.hpp>

namespace Quorvane::Reference {

/// What the half-tone makes of a picture before chance decides: per pixel the probability of a dot. Exactly 0 and
/// exactly 1 are pixels that chance has no part in.
cv::Mat DotProbabilities(const cv::Mat& gray, float high, float low, int side);

/// The whole half-tone from its definition, pixel by pixel, with the deviation map window by window.
cv::Mat Halftone(const cv::Mat& source, float high, float low, int side, std::uint32_t seed);

}  // namespace Quorvane::Reference
