// circle-scale: pixels per millimetre from a circle of known size, and the centre of a cross in it.

#include <iostream>

#include "examples/programs/Program.h"

int main(int argumentCount, char** arguments) {
    namespace Calibration = Quorvane::CameraCalibration;
    std::string picturePath;
    double realRadius = 8.0;
    bool cross = false;
    CLI::App app("Takes a picture's scale from the circle nearest its middle. Exit code 1 if there is none.",
                 "circle-scale");
    app.add_option("picture", picturePath, "dark circle, light ground")->required()->check(CLI::ExistingFile);
    app.add_option("-r,--radius", realRadius, "the circle's true radius, mm")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    app.add_flag("--cross", cross, "also find where the bars of a dark cross in the circle meet");

    return Program::Run(app, argumentCount, arguments, [&] {
        const cv::Mat picture = Program::ReadPicture(picturePath);
        cv::Point2f center;
        double radius = 0.0;
        double scale = 0.0;
        if (!Calibration::CalScalePixToMmUseCircle(picture, realRadius, 0.0, center, radius, scale)) {
            throw std::runtime_error("there is no circle of more than 20 pixels radius");
        }
        std::cout << "circle at " << center << ", radius " << radius << " pixels, " << scale << " pixels per mm\n";
        if (cross) {
            if (!Calibration::FindCircleCross(picture, center, radius)) {
                throw std::runtime_error("there is no cross in the circle");
            }
            std::cout << "cross at " << center << '\n';
        }
        return Program::succeeded;
    });
}
