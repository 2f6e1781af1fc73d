#include "calibration/DocumentText.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <opencv2/core.hpp>
#include <system_error>

#include "calibration/Inflate.h"

namespace Quorvane::CameraCalibration {

namespace {

/// `cv::FileStorage` counts the bytes of what it has read in an `int`.
constexpr std::size_t mostBytes = std::size_t{1} << 30;

/// The file that `cv::FileStorage` opens: it takes what follows a '?' for its own parameters, and a digit behind ".gz"
/// for the strength of the compression.
struct StoredFile {
    std::string path;
    bool isCompressed;
};

StoredFile FileOf(const std::string& fileName) {
    std::string path = fileName.substr(0, fileName.find('\0'));
    if (path.find('\n') != std::string::npos) return {"", false};
    path = path.substr(0, path.find_last_of('?'));
    const std::size_t dot = path.find_last_of('.');
    const std::string ending = dot == std::string::npos ? "" : path.substr(dot);
    const bool hasStrength = ending.size() == 4 && ending[3] >= '0' && ending[3] <= '9';
    const bool isCompressed = ending.compare(0, 3, ".gz") == 0 && (ending.size() == 3 || hasStrength);
    if (isCompressed && hasStrength) path.pop_back();
    return {path, isCompressed};
}

/// The bytes of a file. A medium that fails gives a `cv::Exception`, as it does within OpenCV.
std::string BytesOf(const std::string& path) {
    constexpr std::size_t chunkLength = 65536;
    std::ifstream file(path, std::ios::binary);
    std::string chunk(chunkLength, '\0');
    std::string bytes;
    while (file) {
        file.read(&chunk[0], chunkLength);
        bytes.append(chunk, 0, static_cast<std::size_t>(file.gcount()));
    }
    if (file.bad()) CV_Error(cv::Error::StsParseError, "the document cannot be read to its end");
    return bytes;
}

}  // namespace

std::string DocumentText(const std::string& fileName) {
    const StoredFile stored = FileOf(fileName);
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(stored.path, ignored)) return "";
    const std::uintmax_t length = std::filesystem::file_size(stored.path, ignored);
    if (!ignored && length > mostBytes) CV_Error(cv::Error::StsParseError, "the document is too long");
    const std::string bytes = BytesOf(stored.path);
    return stored.isCompressed ? Inflated(bytes, mostBytes) : bytes;
}

}  // namespace Quorvane::CameraCalibration
