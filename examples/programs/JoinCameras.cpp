// join-cameras: the pictures of two cameras side by side as one.

#include <algorithm>
#include <iostream>
#include <map>
#include <vector>

#include "examples/programs/Program.h"

int main(int argumentCount, char** arguments) {
    namespace Calibration = Quorvane::CameraCalibration;
    const std::map<std::string, int> turns{{"none", -1},
                                           {"clockwise", cv::ROTATE_90_CLOCKWISE},
                                           {"half", cv::ROTATE_180},
                                           {"counterclockwise", cv::ROTATE_90_COUNTERCLOCKWISE}};
    std::string paths[2], turnNames[2]{"none", "none"}, savePath, loadPath, joinedPath = "joined.png";
    bool mirrored[2]{};
    int overlap = 0;
    CLI::App app("Joins the pictures of two cameras whose views overlap.", "join-cameras");
    for (const int side : {0, 1}) {
        const std::string name = side == 0 ? "left" : "right";
        app.add_option(name, paths[side], "the " + name + " camera's picture")->required()->check(CLI::ExistingFile);
        auto* turn = app.add_option("--turn-" + name, turnNames[side], "the turn that brings it upright");
        turn->capture_default_str()->check(CLI::IsMember(turns));
        app.add_flag("--mirror-" + name, mirrored[side], "then mirror it left to right");
    }
    auto* map = app.add_option_group("Map", "one of these")->require_option(1);
    auto* find = map->add_option("--overlap", overlap, "columns that both show, rather too many: find the map");
    find->check(CLI::PositiveNumber);
    map->add_option("--load", loadPath, "use a map that --save has kept")->check(CLI::ExistingFile);
    app.add_option("--save", savePath, "keep the map");
    app.add_option("-o,--output", joinedPath, "the joined picture")->capture_default_str();

    return Program::Run(app, argumentCount, arguments, [&] {
        const cv::Mat left = Program::ReadPicture(paths[0]), right = Program::ReadPicture(paths[1]);
        const Calibration::ImageDirFlags leftWay(turns.at(turnNames[0]), mirrored[0], false);
        const Calibration::ImageDirFlags rightWay(turns.at(turnNames[1]), mirrored[1], false);
        cv::Mat homography, joined;
        if (loadPath.empty()) {
            std::cout << "matching ..." << std::endl;
            const bool onItsSide = turnNames[0] == "clockwise" || turnNames[0] == "counterclockwise";
            const int leftColumns = onItsSide ? left.rows : left.cols;
            constexpr int everyRow = 1 << 20;  // the library clips the rectangles to the pictures
            const cv::Rect leftOverlap(std::max(leftColumns - overlap, 0), 0, overlap, everyRow);
            std::vector<cv::Point2f> points1, points2;
            Program::Require(Calibration::CalibrationMatchPointsForDualCam(left, leftWay, leftOverlap, right, rightWay,
                                                                           {0, 0, overlap, everyRow}, 0.75, 4.0, 0.3,
                                                                           points1, points2));
            if (points1.size() < 4) throw std::runtime_error("the pictures have too little in common there");
            double meanError = 0.0;
            Program::Require(Calibration::CreateHomography(points1, points2, homography, meanError, 3.0, 2000, 0.995));
            std::cout << points1.size() << " pairs, off by " << meanError << " pixels on average\n";
        } else {
            Program::Require(Calibration::LoadHomography(loadPath, homography));
        }
        double seamX = -1.0;  // stays so where the pictures are laid together without blending
        Program::Require(Calibration::DoBlendingImageForDualCam(left, leftWay, right, rightWay, 1.0, 1.0, homography,
                                                                seamX, joined));
        if (!savePath.empty()) Program::Require(Calibration::SaveHomography(savePath, homography));
        Program::WritePicture(joinedPath, joined);
        std::cout << joined.cols << " x " << joined.rows << " pixels, seam at column " << seamX << '\n';
        return Program::succeeded;
    });
}
