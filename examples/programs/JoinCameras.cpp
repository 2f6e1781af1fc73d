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
    struct Side {
        std::string path;
        std::string turn = "none";
        bool mirror = false;
    } left, right;
    int overlap = 0;
    std::string savePath;
    std::string loadPath;
    std::string joinedPath = "joined.png";
    CLI::App app("Joins the pictures of two cameras whose views overlap.", "join-cameras");
    for (Side* side : {&left, &right}) {
        const std::string name = side == &left ? "left" : "right";
        app.add_option(name, side->path, "the " + name + " camera's picture")->required()->check(CLI::ExistingFile);
        app.add_option("--turn-" + name, side->turn, "the turn that brings it upright")
            ->capture_default_str()
            ->check(CLI::IsMember(turns));
        app.add_flag("--mirror-" + name, side->mirror, "then mirror it left to right");
    }
    auto* map = app.add_option_group("Map", "one of these");
    map->require_option(1);
    map->add_option("--overlap", overlap, "columns that both show, rather too many: find the map")
        ->check(CLI::PositiveNumber);
    map->add_option("--load", loadPath, "use a map that --save has kept")->check(CLI::ExistingFile);
    app.add_option("--save", savePath, "keep the map");
    app.add_option("-o,--output", joinedPath, "the joined picture")->capture_default_str();

    return Program::Run(app, argumentCount, arguments, [&] {
        const auto expect = [](bool success) {
            if (!success) throw std::runtime_error(Calibration::GetLastError());
        };
        const cv::Mat picture1 = Program::ReadPicture(left.path);
        const cv::Mat picture2 = Program::ReadPicture(right.path);
        const Calibration::ImageDirFlags way1(turns.at(left.turn), left.mirror, false);
        const Calibration::ImageDirFlags way2(turns.at(right.turn), right.mirror, false);
        cv::Mat homography;
        if (loadPath.empty()) {
            std::cout << "matching ..." << std::endl;
            const bool onItsSide = left.turn == "clockwise" || left.turn == "counterclockwise";
            const int columns = onItsSide ? picture1.rows : picture1.cols;
            const int rows = picture1.rows + picture1.cols + picture2.rows + picture2.cols;  // clipped to the pictures
            std::vector<cv::Point2f> points1;
            std::vector<cv::Point2f> points2;
            expect(Calibration::CalibrationMatchPointsForDualCam(
                picture1, way1, {std::max(columns - overlap, 0), 0, overlap, rows}, picture2, way2,
                {0, 0, overlap, rows}, 0.75, 4.0, 0.3, points1, points2));
            double meanError = 0.0;
            if (points1.size() < 4) throw std::runtime_error("the pictures have too little in common there");
            expect(Calibration::CreateHomography(points1, points2, homography, meanError, 3.0, 2000, 0.995));
            std::cout << points1.size() << " pairs, off by " << meanError << " pixels on average\n";
        } else {
            expect(Calibration::LoadHomography(loadPath, homography));
        }
        cv::Mat joined;
        double seamX = -1.0;  // stays so where the pictures are laid together without blending
        expect(Calibration::DoBlendingImageForDualCam(picture1, way1, picture2, way2, 1.0, 1.0, homography, seamX,
                                                      joined));
        if (!savePath.empty()) expect(Calibration::SaveHomography(savePath, homography));
        Program::WritePicture(joinedPath, joined);
        std::cout << joined.cols << " x " << joined.rows << " pixels, seam at column " << seamX << '\n';
        return Program::succeeded;
    });
}
