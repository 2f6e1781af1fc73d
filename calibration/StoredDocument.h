#pragma once

#include <opencv2/core.hpp>
#include <string>

/// Reading of calibration files that may be anything: cut short, foreign or broken.
namespace Quorvane::CameraCalibration {

/// Opens a `cv::FileStorage` document for reading. `false` where there is no such file; a `cv::Exception` where it is
/// no such document, or one that OpenCV's parsers do not survive (see DocumentGuard.h).
bool OpenStoredDocument(cv::FileStorage& document, const std::string& fileName);

/// The matrix that a node holds; an empty one for a missing node. A node that is no matrix gives a `cv::Exception`.
///
/// It is always a matrix of its own: read straight into the caller's, it would overwrite the elements that another
/// `cv::Mat` may share, and do so even where a later node turns out to be unreadable.
cv::Mat ReadStoredMatrix(const cv::FileNode& node);

}  // namespace Quorvane::CameraCalibration
