#pragma once

#include <cstdint>
#include <opencv2/core/mat.hpp>

namespace Quorvane {

/// The brightness band, in gray levels and both ends included, in which chance decides.
struct ChanceBand {
    float low;
    float high;
};

/// Throws dots of 255 on black, in the size and type of `foreground`: where that is 255, a pixel brighter than the
/// band becomes a dot, a darker one does not, and one inside does with a probability of at least 0.1 that grows with
/// its brightness in the band and with its deviation relative to the greatest one.
///
/// `gray` and `foreground` are one-channel images of one size, both 8-bit or both 16-bit; `deviation` is the map that
/// `LocalDeviationMap` makes of `gray`. The dots follow from `seed` alone: row by row and column by column, each pixel
/// that is left to chance, and no other, takes one `DrawUniform` of a `MersenneTwister` seeded with it.
cv::Mat ThrowDots(const cv::Mat& gray, const cv::Mat& foreground, const cv::Mat& deviation, ChanceBand band,
                  std::uint32_t seed);

}  // namespace Quorvane
