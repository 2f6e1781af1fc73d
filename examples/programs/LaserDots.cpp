// laser-dots: a picture turned into dots that a laser burns.

#include <iostream>

#include "examples/programs/Program.h"

int main(int argumentCount, char** arguments) {
    std::string picturePath;
    std::string dotsPath = "dots.png";
    int high = 240;
    int low = 20;
    int window = 5;
    CLI::App app("Turns a picture into dots of 0 and 255 that a laser burns one by one.", "laser-dots");
    app.add_option("picture", picturePath, "the picture")->required()->check(CLI::ExistingFile);
    app.add_option("-o,--output", dotsPath, "where the dots go")->capture_default_str();
    app.add_option("--high", high, "brightness above which a foreground pixel always is a dot")
        ->capture_default_str()
        ->check(CLI::Range(0, 255));
    app.add_option("--low", low, "brightness below which it never is one")
        ->capture_default_str()
        ->check(CLI::Range(0, 255));
    app.add_option("--window", window, "side in pixels of the window for the contrast")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);

    return Program::Run(app, argumentCount, arguments, [&] {
        const Program::Algorithm laser = Program::MakeAlgorithm("BinaryForLaserMachine");
        laser->SetParameter("HighThreshold", high);
        laser->SetParameter("LowThreshold", low);
        laser->SetParameter("MaskSize", window);
        const cv::Mat dots = Program::Execute(*laser, Program::ReadPicture(picturePath));
        Program::WritePicture(dotsPath, dots);
        std::cout << dots.cols << " x " << dots.rows << " pixels, " << cv::countNonZero(dots) << " dots\n";
        return Program::succeeded;
    });
}
