#pragma once

#include <opencv2/core/base.hpp>

namespace line2Dup {

/// Side in pixels of the Gaussian that takes the noise out before gradients are formed; OpenCV derives its sigma.
constexpr int blurSize = 7;
/// Side in pixels of the Sobel kernel.
constexpr int sobelSize = 3;
/// What lies outside an image is its nearest pixel.
constexpr int gradientBorder = cv::BORDER_REPLICATE;
/// Directions of a full circle, of which opposite ones share one of the eight labels.
constexpr double directionsInCircle = 16.0;

}  // namespace line2Dup
