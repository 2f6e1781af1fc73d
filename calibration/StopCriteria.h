#pragma once

#include <opencv2/core/types.hpp>

namespace Quorvane::CameraCalibration {

/// When refinements and calibrations stop: after 30 steps, or when a step changes less than 1e-6.
inline cv::TermCriteria StopCriteria() {
    constexpr int mostSteps = 30;
    constexpr double leastChange = 1e-6;
    return {cv::TermCriteria::COUNT + cv::TermCriteria::EPS, mostSteps, leastChange};
}

}  // namespace Quorvane::CameraCalibration
