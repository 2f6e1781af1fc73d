#include "calibration/StoredDocument.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>

namespace Quorvane::CameraCalibration {

namespace {

/// Whether this is an XML document whose last letter is the '=' of an attribute. OpenCV's parser reads past the end of
/// such a document, which a file cut short may well be, and brings the host down.
bool IsXmlCutInAnAttribute(const std::string& fileName) {
    constexpr std::streamoff mostBlanks = 256;
    std::ifstream file(fileName, std::ios::binary | std::ios::ate);
    const std::streamoff length = file.tellg();
    if (!file || length <= 0) return false;
    const auto read = [&](std::streamoff from) {
        std::array<char, mostBlanks> bytes{};
        file.clear();
        file.seekg(from);
        file.read(bytes.data(), mostBlanks);
        return std::string(bytes.data(), static_cast<std::size_t>(std::max<std::streamsize>(file.gcount(), 0)));
    };
    constexpr std::size_t longestByteOrderMark = 3;
    if (read(0).find("<?xml") > longestByteOrderMark) return false;
    const std::string end = read(std::max<std::streamoff>(length - mostBlanks, 0));
    const std::size_t last = end.find_last_not_of(" \t\r\n");
    return last != std::string::npos && end[last] == '=';
}

/// OpenCV reads the sizes of a many-dimensional matrix into an array of fixed length without looking, and takes the
/// memory for a matrix before it sees that the file holds fewer elements.
void RefuseImpossibleSizes(const cv::FileNode& node) {
    CV_Assert(node["sizes"].size() <= CV_MAX_DIM);
    const auto rows = static_cast<std::int64_t>(static_cast<int>(node["rows"]));
    const auto columns = static_cast<std::int64_t>(static_cast<int>(node["cols"]));
    const auto elements = static_cast<std::int64_t>(node["data"].size());
    if (rows > 0 && columns > 0) CV_Assert(rows * columns <= elements);
    for (const cv::FileNode& size : node["sizes"]) CV_Assert(static_cast<int>(size) <= elements);
}

}  // namespace

bool OpenStoredDocument(cv::FileStorage& document, const std::string& fileName) {
    if (IsXmlCutInAnAttribute(fileName)) {
        CV_Error(cv::Error::StsParseError, "the document ends in the middle of an attribute");
    }
    document.open(fileName, cv::FileStorage::READ, "");
    return document.isOpened();
}

cv::Mat ReadStoredMatrix(const cv::FileNode& node) {
    if (node.isMap()) RefuseImpossibleSizes(node);
    cv::Mat matrix;
    cv::read(node, matrix, cv::Mat());
    return matrix;
}

}  // namespace Quorvane::CameraCalibration
