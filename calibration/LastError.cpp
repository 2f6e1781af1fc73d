#include "calibration/LastError.h"

#include "calibration/CameraCalibration.h"

namespace Quorvane::CameraCalibration {

namespace {

/// The only state that the library keeps between calls. Hosts expect one text for all threads, without a lock.
std::string lastError;

}  // namespace

std::string GetLastError() { return lastError; }

void SetLastError(const std::string& text) { lastError = text; }

bool FailWith(const std::string& text) {
    SetLastError(text);
    return false;
}

std::string QualifiedName(const std::string& function) { return "Quorvane::CameraCalibration::" + function; }

std::string ReshootText(const std::string& function) {
    return QualifiedName(function) + " : Poor picture quality, Please re-shoot!";
}

}  // namespace Quorvane::CameraCalibration
