#pragma once

#include <opencv2/core.hpp>
#include <string>

namespace Quorvane::CameraCalibration {

/// Replaces the text that `GetLastError` returns.
void SetLastError(const std::string& text);

/// Does so and gives `false`, for a failed check to return.
bool FailWith(const std::string& text);

/// A function of this namespace by its full name, as messages carry it.
std::string QualifiedName(const std::string& function);

/// What the two board finders say of a shot in which they cannot find the board.
std::string ReshootText(const std::string& function);
/// And the rating that they give it; no picture is ever rated so.
constexpr double noQuality = -1.0;

/// What the functions for two cameras say where one of the pictures is empty.
constexpr const char* missingImagesText = "Could not open or find the images!";

/// Runs the body of a function. A `cv::Exception` becomes the last error, "[" and the function's full name and "]" and
/// the exception's text, and `fail()` gives the result. Any other exception passes through.
template <typename Body, typename Fail>
auto ReportingExceptions(const char* function, Body body, Fail fail) {
    try {
        return body();
    } catch (cv::Exception& exception) {
        SetLastError("[" + QualifiedName(function) + "]" + exception.what());
        return fail();
    }
}

/// The same for a function whose failure is `false` and nothing else.
template <typename Body>
bool ReportingExceptions(const char* function, Body body) {
    return ReportingExceptions(function, body, [] { return false; });
}

}  // namespace Quorvane::CameraCalibration
