#include "calibration/LastError.h"

#include "calibration/CameraCalibration.h"

namespace Quorvane::CameraCalibration {

namespace {

/// The only state that the library keeps between calls. Hosts expect one text for all threads, without a lock.
std::string lastError;

}  // namespace

std::string GetLastError() { return lastError; }

void SetLastError(const std::string& text) { lastError = text; }

std::string QualifiedName(const std::string& function) { return "Quorvane::CameraCalibration::" + function; }

}  // namespace Quorvane::CameraCalibration
