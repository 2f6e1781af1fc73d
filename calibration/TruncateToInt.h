#pragma once

#include <limits>

namespace Quorvane::CameraCalibration {

/// Truncates toward zero. Values that no `int` holds, not-a-number among them, give the least `int`, as the conversion
/// instruction of the desktop processors does; the language leaves that case undefined. As a size it is one that
/// OpenCV refuses.
inline int TruncateToInt(float value) {
    constexpr float beyond = 2147483648.0f;
    return value >= -beyond && value < beyond ? static_cast<int>(value) : std::numeric_limits<int>::min();
}

inline int TruncateToInt(double value) {
    constexpr double beyond = 2147483648.0;
    return value > -beyond - 1.0 && value < beyond ? static_cast<int>(value) : std::numeric_limits<int>::min();
}

}  // namespace Quorvane::CameraCalibration
