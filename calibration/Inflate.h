#pragma once

#include <string>

namespace Quorvane::CameraCalibration {

/// The content of a file of the gzip format (RFC 1952, RFC 1951), of all its members one after the other. A file cut
/// short gives what can still be read of it, any other file its bytes as they are; both as `cv::FileStorage` sees them.
/// Damage, or content of more than `mostBytes`, gives a `cv::Exception`.
/// It stands here because the library depends on OpenCV alone, and OpenCV does not hand out what it decompresses.
std::string Inflated(const std::string& file, std::size_t mostBytes);

}  // namespace Quorvane::CameraCalibration
