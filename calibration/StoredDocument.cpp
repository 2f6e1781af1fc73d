#include "calibration/StoredDocument.h"

#include <cstdint>
#include <vector>

#include "calibration/DocumentGuard.h"
#include "calibration/DocumentText.h"

namespace Quorvane::CameraCalibration {

namespace {

/// Whether a matrix with these sizes has at most so many elements. Sizes below zero are left to OpenCV to refuse.
bool FitsInto(std::int64_t elements, const std::vector<std::int64_t>& sizes) {
    std::int64_t product = 1;
    for (const std::int64_t size : sizes) {
        if (size <= 0) return true;
    }
    for (const std::int64_t size : sizes) {
        if (size > elements / product) return false;
        product *= size;
    }
    return true;
}

/// OpenCV reads a matrix's element type and its sizes into arrays of fixed length without looking, and takes the memory
/// for the matrix before it sees that the file holds fewer elements.
void RefuseImpossibleMatrix(const cv::FileNode& node) {
    const cv::FileNode type = node["dt"];
    CV_Assert(!type.isString() || IsSafeElementFormat(type.string()));
    CV_Assert(node["sizes"].size() <= CV_MAX_DIM);
    const auto elements = static_cast<std::int64_t>(node["data"].size());
    CV_Assert(FitsInto(elements, {static_cast<int>(node["rows"]), static_cast<int>(node["cols"])}));
    std::vector<std::int64_t> sizes;
    for (const cv::FileNode& size : node["sizes"]) sizes.push_back(static_cast<int>(size));
    CV_Assert(FitsInto(elements, sizes));
}

}  // namespace

bool OpenStoredDocument(cv::FileStorage& document, const std::string& fileName) {
    RefuseWhatParsersDoNotSurvive(DocumentText(fileName));
    document.open(fileName, cv::FileStorage::READ, "");
    return document.isOpened();
}

cv::Mat ReadStoredMatrix(const cv::FileNode& node) {
    if (node.isMap()) RefuseImpossibleMatrix(node);
    cv::Mat matrix;
    cv::read(node, matrix, cv::Mat());
    return matrix;
}

}  // namespace Quorvane::CameraCalibration
