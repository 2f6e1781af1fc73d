// calibrate-lens: the lens of a fisheye camera from pictures of a circle board.

#include <iostream>
#include <opencv2/calib3d.hpp>
#include <vector>

#include "examples/programs/Program.h"

int main(int argumentCount, char** arguments) {
    namespace Calibration = Quorvane::CameraCalibration;
    std::vector<std::string> picturePaths;
    std::string cameraPath = "camera.yml";
    cv::Size pattern;
    CLI::App app("Calibrates the lens of a fisheye camera from pictures of a board of dark circles.", "calibrate-lens");
    app.add_option("pictures", picturePaths, "pictures of the board, one is the least")
        ->required()
        ->check(CLI::ExistingFile);
    app.add_option("--columns", pattern.width, "circles per row")->required()->check(CLI::PositiveNumber);
    app.add_option("--rows", pattern.height, "circles per column")->required()->check(CLI::PositiveNumber);
    app.add_option("-o,--output", cameraPath, "the calibration, as .yml, .xml or .json")->capture_default_str();

    return Program::Run(app, argumentCount, arguments, [&] {
        std::vector<cv::Mat> pictures;
        for (const std::string& path : picturePaths) {
            std::cout << '[' << pictures.size() + 1 << '/' << picturePaths.size() << "] " << path << ": " << std::flush;
            pictures.push_back(Program::ReadPicture(path));
            std::vector<cv::Point2f> centers;
            double quality = 0.0;
            if (Calibration::FindCalibrationBoard(pictures.back(), pattern, centers, quality,
                                                  cv::CALIB_CB_SYMMETRIC_GRID, cv::SimpleBlobDetector::create())) {
                std::cout << "a board, rated " << quality << " pixels\n";
            } else {
                std::cout << "no board at first sight\n";
            }
        }
        std::cout << "calibrating ..." << std::endl;
        cv::Mat K;
        cv::Mat D;
        double rms = 0.0;
        Program::Require(Calibration::CalibrateDistortedCamera(pictures, pattern, K, D, rms));
        Program::Require(Calibration::SaveCameraParameters(cameraPath, K, D, rms));
        std::cout << "K = " << K << "\nD = " << D.t() << "\nreprojection error " << rms << " pixels\nwrote "
                  << cameraPath << '\n';
        return Program::succeeded;
    });
}
