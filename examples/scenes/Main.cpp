// Renders the pictures that the programs and the guide work on where the repository has no photograph for it: shots of
// calibration boards, a tray of parts, a plate with a hole, a machine's bed, two cameras, a target.
//
//     quorvane_scenes FOLDER

#include <QuorvaneVision.h>

#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <string>

#include "examples/demo/BedScene.h"
#include "examples/demo/FillingScenes.h"
#include "tests/support/Boards.h"
#include "tests/support/Pictures.h"
#include "tests/support/RandomInput.h"
#include "tests/support/Scene.h"
#include "tests/support/Shapes.h"
#include "tests/support/TwoCameras.h"

namespace {

using namespace Quorvane::TestSupport;

class Folder {
public:
    explicit Folder(std::filesystem::path path) : path_(std::move(path)) { std::filesystem::create_directories(path_); }

    void Write(const std::string& name, const cv::Mat& picture) const {
        if (!cv::imwrite((path_ / name).string(), picture)) throw std::runtime_error("cannot write " + name);
    }
    std::ofstream Text(const std::string& name) const { return std::ofstream(path_ / name); }

private:
    std::filesystem::path path_;
};

/// circles-1.png to circles-8.png: a board of 7 x 5 circles before a fisheye camera.
void RenderCircleBoards(const Folder& folder) {
    constexpr double boardWidth = 7.0;  // grid steps, with its margins
    const CameraModel camera = FisheyeCamera();
    const Board board = CircleBoard({7, 5});
    int number = 0;
    for (const Pose& pose : PosesOverThePicture(camera, board, boardWidth)) {
        const cv::Mat sharp = Photograph(camera, board, pose);
        folder.Write("circles-" + std::to_string(++number) + ".png", Scene(sharp).Blur(0.8).Light(1.0, 0.6).Gray());
    }
}

/// charuco.png: a ChArUco board of 7 x 5 squares of 20 mm.
void RenderCharucoBoard(const Folder& folder) {
    const Board board = CharucoBoardPrint({7, 5}, 20.0);
    const cv::Mat sharp = Photograph(PinholeCamera(), board, PoseOf(board.centre, {0, -5, 190}, 20, -18, 5));
    folder.Write("charuco.png", Scene(sharp).Blur(0.5).Noise(2.0, 1).Colour());
}

/// tray.png: copies of one part, and tray.txt: the mark and the job on the first of them, one point a line.
void RenderTrayOfParts(const Folder& folder) {
    const Demo::FillingScene tray = Demo::TrayOfParts();
    folder.Write("tray.png", tray.picture);
    std::ofstream text = folder.Text("tray.txt");
    text << tray.mark.x << ' ' << tray.mark.y << '\n';
    for (const cv::Point2f& point : tray.shape) text << point.x << ' ' << point.y << '\n';
}

/// plate.png: a light plate, turned by 4 degrees, with a dark hole.
void RenderPlate(const Folder& folder) {
    folder.Write("plate.png", Scene({320, 240}, 50.0)
                                  .Paint(Rectangle({160.3, 120.6}, {220.0, 150.0}, 4.0), 200.0)
                                  .Paint(Disc({160.3, 120.6}, 42.0), 60.0)
                                  .Blur(1.2)
                                  .Noise(3.0, 11)
                                  .Gray());
}

/// bed.png: a machine's bed with 25 dots, and bed.txt: where each is in the picture and on the machine.
void RenderBed(const Folder& folder) {
    Quorvane::CameraCalibration::CameraCalibrator calibrator;
    const std::vector<cv::Point2f> machine = calibrator.GenerateCailbratePointGrid(200.0, 150.0, 5);
    const CameraModel camera = PinholeCamera({640, 480});
    const Board bed = Demo::BedWithAPhotograph(machine);
    const Pose pose = PoseOf({0.0, 0.0}, {4.0, -2.0, 330.0}, -24.0, 9.0, -4.0);
    folder.Write("bed.png", Scene(Photograph(camera, bed, pose)).Blur(0.6).Noise(2.0, 5).Gray());
    RandomInput random(8);
    std::ofstream text = folder.Text("bed.txt");
    std::size_t i = 0;
    for (const cv::Point2d& truth : TruePoints(camera, bed, pose)) {
        const cv::Point2d found = truth + cv::Point2d(random.Normal(), random.Normal()) * 0.1;
        text << found.x << ' ' << found.y << ' ' << machine[i].x << ' ' << machine[i].y << '\n';
        ++i;
    }
}

/// left.png and right.png: a table under two cameras, the left one on its side and with less light.
void RenderTwoCameras(const Folder& folder) {
    const TwoViews views = PhotographTable();
    folder.Write("left.png", Mounted(views.picture1, cv::ROTATE_90_CLOCKWISE, false, false));
    folder.Write("right.png", views.picture2);
}

/// target.png: a dark ring of 120 pixels outer radius, 45 % as wide as its inner radius, with a cross in it.
void RenderTarget(const Folder& folder) {
    const cv::Point2d center(246.3, 174.8);
    folder.Write("target.png", Scene({480, 360}, 205.0)
                                   .Paint(Ring(center, 101.5, 37.0), 45.0)
                                   .Paint(Cross(center, 166.0, 12.0), 45.0)
                                   .Blur(1.0)
                                   .Noise(2.0, 5)
                                   .Gray());
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::cerr << "usage: " << arguments[0] << " FOLDER\nwrites the pictures to the folder\n";
        return 2;
    }
    try {
        const Folder folder(arguments[1]);
        RenderCircleBoards(folder);
        RenderCharucoBoard(folder);
        RenderTrayOfParts(folder);
        RenderPlate(folder);
        RenderBed(folder);
        RenderTwoCameras(folder);
        RenderTarget(folder);
    } catch (const std::exception& failure) {
        std::cerr << "the pictures could not be made: " << failure.what() << std::endl;
        return 1;
    }
    return 0;
}
