// map-to-machine: from the camera's pixels to the machine's coordinates.

#include <fstream>
#include <iostream>
#include <vector>

#include "examples/programs/Program.h"

int main(int argumentCount, char** arguments) {
    std::string picturePath;
    std::string pairsPath;
    std::string topPath;
    std::string mapPath;
    std::vector<Program::Point> points;
    int pixelsPerUnit = 3;
    CLI::App app("Maps a camera's picture of the machine's bed to the machine's coordinates.", "map-to-machine");
    app.add_option("picture", picturePath, "the camera's picture")->required()->check(CLI::ExistingFile);
    app.add_option("pairs", pairsPath,
                   "a text with one line per known point, at least 6: column and row in the picture, x and y of the "
                   "machine; or a map that --save has written (.yml, .xml, .json)")
        ->required()
        ->check(CLI::ExistingFile);
    app.add_option("-p,--point", points, "tell where these pixels are on the machine")->type_name("X,Y ...");
    app.add_option("-o,--output", topPath, "the bed from above");
    app.add_option("--pixels-per-unit", pixelsPerUnit, "of the bed from above")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    app.add_option("--save", mapPath, "keep the map");

    return Program::Run(app, argumentCount, arguments, [&] {
        const cv::Mat picture = Program::ReadPicture(picturePath);
        Quorvane::CameraCalibration::CameraCalibrator calibrator;
        std::vector<cv::Point2f> pixels;
        std::vector<cv::Point2f> machine;
        std::ifstream text(pairsPath);
        for (cv::Point2f p, m; text >> p.x >> p.y >> m.x >> m.y;) pixels.push_back(p), machine.push_back(m);
        double maxError = 0.0;
        if (!pixels.empty()) {
            if (!calibrator.Calibrate(pixels, machine, picture.cols, picture.rows, maxError)) {
                throw std::runtime_error("no map fits these points");
            }
            std::cout << pixels.size() << " points, off by at most " << maxError << " units\n";
        } else if (!calibrator.LoadCalibration(pairsPath)) {
            throw std::runtime_error(pairsPath + " has neither points nor a map");
        }
        for (const Program::Point& point : points) {
            std::cout << cv::Point2f(point) << " -> " << calibrator.ImageToMachine(point) << '\n';
        }
        if (!topPath.empty()) Program::WritePicture(topPath, calibrator.WarpPerspectiveImage(picture, pixelsPerUnit));
        if (!mapPath.empty() && !calibrator.SaveCalibration(mapPath, false)) {
            throw std::runtime_error(mapPath + " cannot be written");
        }
        return Program::succeeded;
    });
}
