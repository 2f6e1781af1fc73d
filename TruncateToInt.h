#pragma once

#include <limits>

namespace Quorvane {

/// Truncates toward zero. Values that no `int` holds, not-a-number among them, give the least `int`, as the conversion
/// instruction of the desktop processors does; the language leaves that case undefined. A `float` is the same number as
/// a `double`, so it has the same result.
inline int TruncateToInt(double value) {
    constexpr double lowest = std::numeric_limits<int>::min();
    constexpr double highest = std::numeric_limits<int>::max();
    if (value > lowest - 1.0 && value < highest + 1.0) return static_cast<int>(value);
    return std::numeric_limits<int>::min();
}

}  // namespace Quorvane
