#include "tests/calibration/ForeignDocuments.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "calibration/CameraCalibration.h"
#include "calibration/CameraCalibrator.h"
#include "calibration/LastError.h"
#include "tests/support/Matchers.h"

namespace Quorvane::CameraCalibration {

using testing::HasSubstr;
using testing::StartsWith;
using TestSupport::EqualsMat;
using TestSupport::ScratchFolder;

const cv::Mat someMatrix = (cv::Mat_<double>(2, 2) << 1.5, -2.0, 1e-5, 4.0);

std::string Times(int count, const std::string& text) {
    std::string all;
    for (int i = 0; i < count; ++i) all += text;
    return all;
}

void ExpectRefused(const std::string& path, const std::string& reason) {
    cv::Mat homography = someMatrix.clone();
    EXPECT_FALSE(LoadHomography(path, homography)) << path;
    EXPECT_THAT(GetLastError(), StartsWith("[Quorvane::CameraCalibration::LoadHomography]OpenCV("));
    EXPECT_THAT(GetLastError(), HasSubstr(reason));
    EXPECT_THAT(homography, EqualsMat(someMatrix));
    double rms = 3.0;
    cv::Mat D = someMatrix.clone();
    EXPECT_FALSE(LoadCameraParameters(path, homography, D, rms));
    EXPECT_THAT(GetLastError(), StartsWith("[Quorvane::CameraCalibration::LoadCameraParameters]OpenCV("));
    CameraCalibrator calibrator;
    EXPECT_THROW(calibrator.LoadCalibration(path), cv::Exception);
}

void ExpectLoaded(const std::string& path) {
    cv::Mat homography;
    EXPECT_TRUE(LoadHomography(path, homography)) << path << ": " << GetLastError();
    EXPECT_THAT(homography, EqualsMat(someMatrix));
}

std::string StoredHomography(const ScratchFolder& folder, const std::string& ending) {
    const std::string name = "plain" + ending;
    if (!SaveHomography(folder.File(name), someMatrix)) return "";
    return folder.Read(name);
}

std::string YamlWith(const ScratchFolder& folder, const std::string& nodes) {
    return yamlHead + nodes + StoredHomography(folder, ".yml").substr(yamlHead.size());
}

std::string Compressed(const ScratchFolder& folder, const std::string& name, const std::string& text) {
    // OpenCV writes what it is given; a comment may hold all but its own end, so the text is stored uncompressed.
    std::string file("\x1f\x8b\x08\0\0\0\0\0\0\x03", 10);
    for (std::size_t at = 0; at < text.size() || at == 0; at += 0xffff) {
        const std::string block = text.substr(at, 0xffff);
        const auto length = static_cast<unsigned>(block.size());
        file.push_back(at + block.size() >= text.size() ? '\1' : '\0');
        for (const unsigned half : {length, ~length}) {
            file.push_back(static_cast<char>(half & 0xffu));
            file.push_back(static_cast<char>((half >> 8) & 0xffu));
        }
        file += block;
    }
    return folder.Write(name, file);  // cut short before its check sum
}

}  // namespace Quorvane::CameraCalibration
