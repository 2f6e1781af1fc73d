#include <utility>

#include "calibration/CameraCalibration.h"
#include "calibration/LastError.h"
#include "calibration/StoredDocument.h"

namespace Quorvane::CameraCalibration {

namespace {

// The nodes of the files, in the order in which they are written.
constexpr const char* cameraMatrixNode = "K";
constexpr const char* distortionNode = "D";
constexpr const char* errorNode = "rms";
constexpr const char* homographyNode = "Homo";

bool OpenForWriting(cv::FileStorage& file, const std::string& fileName) {
    file.open(fileName, cv::FileStorage::WRITE, "");
    return file.isOpened() || FailWith("Failed to open file for writing: " + fileName);
}

bool OpenForReading(cv::FileStorage& file, const std::string& fileName) {
    return OpenStoredDocument(file, fileName) || FailWith("Failed to open file for reading: " + fileName);
}

bool HasNode(const cv::FileStorage& file, const char* node, const std::string& fileName) {
    return !file[node].empty() || FailWith("This file has been corrupted, and the data cannot be read : " + fileName);
}

}  // namespace

bool SaveCameraParameters(const std::string& fileName, const cv::Mat& K, const cv::Mat& D, const double& rms) {
    return ReportingExceptions("SaveCameraParameters", [&] {
        cv::FileStorage file;
        if (!OpenForWriting(file, fileName)) return false;
        file << cameraMatrixNode << K << distortionNode << D << errorNode << rms;
        file.release();
        return true;
    });
}

bool LoadCameraParameters(const std::string& fileName, cv::Mat& K, cv::Mat& D, double& rms) {
    return ReportingExceptions("LoadCameraParameters", [&] {
        cv::FileStorage file;
        if (!OpenForReading(file, fileName)) return false;
        for (const char* node : {cameraMatrixNode, distortionNode, errorNode}) {
            if (!HasNode(file, node, fileName)) return false;
        }
        cv::Mat cameraMatrix = ReadStoredMatrix(file[cameraMatrixNode]);
        cv::Mat distortion = ReadStoredMatrix(file[distortionNode]);
        cv::read(file[errorNode], rms, 0.0);
        K = std::move(cameraMatrix);
        D = std::move(distortion);
        file.release();
        return true;
    });
}

bool SaveHomography(const std::string& fileName, const cv::Mat& homography) {
    return ReportingExceptions("SaveHomography", [&] {
        cv::FileStorage file;
        if (!OpenForWriting(file, fileName)) return false;
        file << homographyNode << homography;
        file.release();
        return true;
    });
}

bool LoadHomography(const std::string& fileName, cv::Mat& homography) {
    return ReportingExceptions("LoadHomography", [&] {
        cv::FileStorage file;
        if (!OpenForReading(file, fileName)) return false;
        if (!HasNode(file, homographyNode, fileName)) return false;
        homography = ReadStoredMatrix(file[homographyNode]);
        file.release();
        return true;
    });
}

}  // namespace Quorvane::CameraCalibration
