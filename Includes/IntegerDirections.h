#pragma once

#include <opencv2/core/hal/interface.h>

namespace line2Dup {

/// The greatest amount of a Sobel derivative of 8-bit pixels.
constexpr int greatestDerivative = 4 * 255;

/// For each pair of derivatives (amounts up to `greatestDerivative`) the one-hot byte of its direction's label: what
/// `cv::phase` in degrees, times 16/360, rounded, modulo 8, gives.
void oneHotDirections(const short* dx, const short* dy, uchar* oneHot, int count);

}  // namespace line2Dup
