#pragma once

#include <opencv2/core/mat.hpp>
#include <vector>

#include "geometry/EdgeCaliper.h"

namespace Quorvane::UtilityFunctions {

/// What a caliper saw and found in one run.
struct CaliperFindings {
    const std::vector<double>& profile;
    const std::vector<double>& derivative;
    double scale;  ///< From derivative to amplitude.
    const std::vector<double>& rows;
    const std::vector<double>& columns;
    const std::vector<double>& amplitudes;
};

/// Shows the caliper on the image in the window "Measurement Results" and its profile with the derivative in the
/// window "Profile Analysis", both shrunk to the caliper's display limits, tells about it on standard output, waits for
/// a key and closes the windows. Throws `cv::Exception` where OpenCV has no windows.
void showDebugPlots(const EdgeCaliper& caliper, const cv::Mat& image, const CaliperFindings& findings);

}  // namespace Quorvane::UtilityFunctions
