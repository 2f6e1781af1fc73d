#pragma once

#include <opencv2/core/mat.hpp>

namespace Quorvane {

/// A white upright cross, one pixel thick, on black: 8-bit, one channel, of the given size in pixels (both at least 1).
/// Its arms reach the border and cross at column width/2 and row height/2, halves rounded down.
cv::Mat MakeCrossTemplate(int width, int height);

}  // namespace Quorvane
