// Files of any content through all that reads calibration files. The first byte chooses the name's ending and who
// reads; the rest is the file.

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "calibration/CameraCalibration.h"
#include "calibration/CameraCalibrator.h"
#include "tests/fuzz/FuzzInput.h"

namespace Quorvane::Fuzz {
namespace {

using namespace CameraCalibration;

std::string FileNamed(const char* ending) {
    static const std::filesystem::path folder = [] {
        const auto path = std::filesystem::temp_directory_path() / ("calibration-fuzzer-" + std::to_string(getpid()));
        std::filesystem::create_directories(path);
        std::atexit([] {
            std::error_code ignored;
            std::filesystem::remove_all(
                std::filesystem::temp_directory_path() / ("calibration-fuzzer-" + std::to_string(getpid())), ignored);
        });
        return path;
    }();
    return (folder / (std::string("file") + ending)).string();
}

void Check(bool condition) {
    if (!condition) std::abort();
}

void LoadLens(const std::string& file) {
    const cv::Mat kept = cv::Mat::eye(3, 3, CV_64F);
    cv::Mat K = kept;
    cv::Mat D = kept;
    double rms = -5.0;
    if (LoadCameraParameters(file, K, D, rms)) {
        cv::Mat straight;
        UnDistortedImage(cv::Mat(8, 9, CV_8UC1, cv::Scalar(50)), K, D, 1.0, 1.0, straight);
        return;
    }
    Check(K.data == kept.data && D.data == kept.data && rms == -5.0);
    Check(cv::countNonZero(kept != cv::Mat::eye(3, 3, CV_64F)) == 0);
}

void LoadMapping(const std::string& file) {
    CameraCalibrator calibrator;
    if (!calibrator.LoadCalibration(file)) return;
    Try([&] { calibrator.ImageToMachine({3.0f, 4.0f}); });
    Try([&] { calibrator.MachineToImage({3.0f, 4.0f}); });
    Try([&] { calibrator.WarpPerspectivePoint({3.0f, 4.0f}, 2); });
    Try([&] { calibrator.CalcMaxError({{1.0f, 2.0f}}, {{3.0f, 4.0f}}); });
}

}  // namespace
}  // namespace Quorvane::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace Quorvane::Fuzz;
    FuzzInput input(data, size);
    const int choice = input.Byte();
    static const char* const endings[] = {".yml", ".xml", ".json", ".yml.gz"};
    const std::string file = FileNamed(endings[choice / 4 % 4]);
    const std::string content = input.Rest();
    std::ofstream(file, std::ios::binary) << content;
    switch (choice % 4) {
        case 0: Try([&] { LoadLens(file); }); break;
        case 1: {
            cv::Mat homography;
            Try([&] { Quorvane::CameraCalibration::LoadHomography(file, homography); });
            break;
        }
        case 2: Try([&] { LoadMapping(file); }); break;
        default:
            // Appending reads what is there.
            Try([&] {
                Quorvane::CameraCalibration::CameraCalibrator().SaveCalibration(file, true);
                LoadMapping(file);
            });
    }
    return 0;
}
