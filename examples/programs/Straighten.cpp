// straighten: pictures of a fisheye camera with their straight lines straight.

#include "examples/programs/Program.h"

int main(int argumentCount, char** arguments) {
    namespace Calibration = Quorvane::CameraCalibration;
    std::string cameraPath;
    std::string picturePath;
    std::string straightPath = "straight.png";
    double scale = 1.0;
    CLI::App app("Straightens a picture of a camera that calibrate-lens has calibrated.", "straighten");
    app.add_option("camera", cameraPath, "the calibration")->required()->check(CLI::ExistingFile);
    app.add_option("picture", picturePath, "the picture")->required()->check(CLI::ExistingFile);
    app.add_option("--scale", scale, "factor of the focal lengths; below 1 more of the edge is kept")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    app.add_option("-o,--output", straightPath, "the straightened picture")->capture_default_str();

    return Program::Run(app, argumentCount, arguments, [&] {
        cv::Mat K;
        cv::Mat D;
        double rms = 0.0;
        cv::Mat straight;
        Program::Require(Calibration::LoadCameraParameters(cameraPath, K, D, rms));
        const cv::Mat picture = Program::ReadPicture(picturePath);
        Program::Require(Calibration::UnDistortedImage(picture, K, D, scale, scale, straight));
        Program::WritePicture(straightPath, straight);
        return Program::succeeded;
    });
}
