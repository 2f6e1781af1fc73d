#pragma once

namespace line2Dup {

/// Raise `cv::Exception` as OpenCV raises its own, with the matcher's source name. `function` is the qualified name of
/// the function that found the error.
[[noreturn]] void raiseBadArgument(const char* message, const char* function);
[[noreturn]] void raiseAssertion(const char* message, const char* function);

/// Raises the assertion `message` unless `holds`.
inline void require(bool holds, const char* message, const char* function) {
    if (!holds) raiseAssertion(message, function);
}

}  // namespace line2Dup
