// Makes the pictures of the user's guide: each function runs one capability of the library and draws what came out.
//
//     quorvane_guide_pictures FOLDER

#include <QuorvaneVision.h>

#include <cmath>
#include <exception>
#include <filesystem>
#include <iostream>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "examples/demo/AlgorithmRun.h"
#include "examples/demo/BedScene.h"
#include "tests/support/Boards.h"
#include "tests/support/Pictures.h"
#include "tests/support/Scene.h"
#include "tests/support/Shapes.h"
#include "tests/support/TwoCameras.h"

namespace {

using namespace Quorvane;
using namespace Quorvane::TestSupport;

const cv::Scalar regionColour(230, 160, 60);
const cv::Scalar foundColour(40, 40, 230);
const cv::Scalar gridColour(0, 170, 0);

void Expect(bool success, const std::string& what) {
    if (!success) throw std::runtime_error(what + " failed: " + CameraCalibration::GetLastError());
}

cv::Mat Coloured(const cv::Mat& picture) {
    cv::Mat coloured = picture.clone();
    if (picture.channels() == 1) cv::cvtColor(picture, coloured, cv::COLOR_GRAY2BGR);
    return coloured;
}

/// Pictures side by side, all brought to one height, with a white gap between them.
cv::Mat Row(const std::vector<cv::Mat>& pictures, int height) {
    constexpr int gap = 12;
    std::vector<cv::Mat> parts;
    for (const cv::Mat& picture : pictures) {
        if (!parts.empty()) parts.emplace_back(height, gap, CV_8UC3, cv::Scalar::all(255));
        const double factor = static_cast<double>(height) / picture.rows;
        cv::Mat part;
        cv::resize(Coloured(picture), part, {cvRound(picture.cols * factor), height}, 0, 0,
                   factor < 1.0 ? cv::INTER_AREA : cv::INTER_NEAREST);
        parts.push_back(part);
    }
    cv::Mat row;
    cv::hconcat(parts, row);
    return row;
}

cv::Mat LaserDots() {
    const cv::Mat coffee = LoadColourPicture("coffee.png");
    const cv::Rect cup(170, 10, 240, 200);
    const cv::Mat dots = Demo::RunAlgorithm("BinaryForLaserMachine", coffee, [](Algorithm& laser) {
                             laser.SetParameter("HighThreshold", 220);
                             laser.SetParameter("LowThreshold", 40);
                             laser.SetParameter("MaskSize", 7);
                         }).destination;
    return Row({coffee(cup), dots(cup)}, 400);
}

cv::Mat Marks() {
    const cv::Mat coins = LoadColourPicture("coins.png");
    return Demo::RunAlgorithm("FindMarkPoint", coins,
                              [](Algorithm& marks) {
                                  marks.SetParameter("Radius", 26);
                                  marks.SetParameter("SimilarityMin", 0.7);
                              })
        .destination;
}

cv::Mat Lens() {
    constexpr double boardWidth = 7.0;  // grid steps, with its margins
    const CameraModel camera = FisheyeCamera();
    const Board board = CircleBoard({7, 5});
    std::vector<cv::Mat> shots;
    for (const Pose& pose : PosesOverThePicture(camera, board, boardWidth)) {
        shots.push_back(Scene(Photograph(camera, board, pose)).Blur(0.8).Light(1.0, 0.6).Gray());
    }
    cv::Mat K;
    cv::Mat D;
    double rms = 0.0;
    Expect(CameraCalibration::CalibrateDistortedCamera(shots, {7, 5}, K, D, rms), "the calibration");
    cv::Mat straight;
    Expect(CameraCalibration::UnDistortedImage(shots[4], K, D, 0.75, 0.75, straight), "the straightening");
    return Row({shots[4], straight}, 300);
}

cv::Mat Boards() {
    const std::string path = (std::filesystem::temp_directory_path() / "quorvane-guide-board.png").string();
    cv::aruco::Dictionary dictionary = cv::aruco::getPredefinedDictionary(cv::aruco::DICT_7X7_250);
    cv::aruco::CharucoBoard board({7, 5}, 20.0F, 15.0F, dictionary);
    const cv::Mat print = CameraCalibration::GenerateChArUcoBoard(path, 7, 5, 20.0F, 15.0F, dictionary, board, 100);
    std::filesystem::remove(path);

    const Board paper = CharucoBoardPrint({7, 5}, 20.0);
    const cv::Mat sharp = Photograph(PinholeCamera(), paper, PoseOf(paper.centre, {0, -5, 190}, 20, -18, 5));
    std::vector<cv::Point2f> imagePoints;
    std::vector<cv::Point3f> objectPoints;
    std::vector<int> ids;
    double quality = 0.0;
    cv::Mat found;
    Expect(CameraCalibration::FindChArUcoBoard(Scene(sharp).Blur(0.5).Noise(2.0, 1).Colour(), 7, 5, 20.0F, 15.0F, false,
                                               imagePoints, objectPoints, ids, quality, found, true),
           "the search for the board");
    cv::Mat framed;
    cv::copyMakeBorder(print, framed, 20, 20, 20, 20, cv::BORDER_CONSTANT, cv::Scalar::all(255));
    return Row({framed, found}, 300);
}

cv::Mat MachineMap() {
    constexpr int expansion = 3;
    CameraCalibration::CameraCalibrator calibrator;
    const std::vector<cv::Point2f> machine = calibrator.GenerateCailbratePointGrid(200.0, 150.0, 5);
    const CameraModel camera = PinholeCamera();
    const Board bed = Demo::BedWithAPhotograph(machine);
    const Pose pose = PoseOf({0.0, 0.0}, {4.0, -2.0, 330.0}, -24.0, 9.0, -4.0);
    const cv::Mat shot = Scene(Photograph(camera, bed, pose)).Blur(0.6).Noise(2.0, 5).Gray();
    std::vector<cv::Point2f> pixels;
    for (const cv::Point2d& point : TruePoints(camera, bed, pose)) pixels.emplace_back(point);
    double maxError = 0.0;
    Expect(calibrator.Calibrate(pixels, machine, shot.cols, shot.rows, maxError), "the map");

    cv::Mat top = Coloured(calibrator.WarpPerspectiveImage(shot, expansion));
    const auto line = [&](const cv::Point2f& from, const cv::Point2f& to) {
        cv::line(top, calibrator.WarpPerspectivePoint(calibrator.MachineToImage(from), expansion),
                 calibrator.WarpPerspectivePoint(calibrator.MachineToImage(to), expansion), gridColour, 1, cv::LINE_AA);
    };
    for (float x = -100.0F; x <= 100.0F; x += 25.0F) line({x, -75.0F}, {x, 75.0F});
    for (float y = -75.0F; y <= 75.0F; y += 25.0F) line({-100.0F, y}, {100.0F, y});
    return Row({shot, top}, 300);
}

cv::Mat Measuring() {
    constexpr int factor = 3;
    const cv::Mat plate = Scene({320, 240}, 50.0)
                              .Paint(Rectangle({160.3, 120.6}, {220.0, 150.0}, 4.0), 200.0)
                              .Paint(Disc({160.3, 120.6}, 42.0), 60.0)
                              .Blur(1.2)
                              .Noise(3.0, 11)
                              .Gray();
    cv::Mat drawn;
    cv::resize(Coloured(plate), drawn, {}, factor, factor, cv::INTER_CUBIC);
    const auto at = [&](const cv::Point2d& p) { return cv::Point(cvRound(p.x * factor), cvRound(p.y * factor)); };
    const auto arrow = [&](const cv::Point2d& from, const cv::Point2d& to) {
        cv::arrowedLine(drawn, at(from), at(to), regionColour, 1, cv::LINE_AA, 0, 0.1);
    };
    Line left;
    Line top;
    UtilityFunctions::MeasureLine(plate, {50, 120}, 40, 100, left, EdgePolarity::Positive, SearchDirection::LeftToRight,
                                  1.0, 60.0, 1.0);
    UtilityFunctions::MeasureLine(plate, {160, 45}, 140, 40, top, EdgePolarity::Positive, SearchDirection::TopToBottom,
                                  1.0, 60.0, 1.0);
    for (double y = 75; y <= 165; y += 10) arrow({30, y}, {70, y});
    for (double x = 95; x <= 225; x += 10) arrow({x, 25}, {x, 65});
    for (const Line& edge : {left, top}) {
        cv::Point2f from;
        cv::Point2f to;
        edge.getEndPoints(from, to, 90.0F);
        cv::line(drawn, at(from), at(to), foundColour, 2, cv::LINE_AA);
    }
    cv::Point2f corner;
    Expect(UtilityFunctions::computeIntersection(left, top, corner), "the corner");
    cv::drawMarker(drawn, at(corner), foundColour, cv::MARKER_CROSS, 30, 2, cv::LINE_AA);

    const cv::Point2d center(160, 120);
    for (int degrees = 0; degrees < 360; degrees += 15) {
        const double theta = degrees * CV_PI / 180.0;
        arrow(center, center + 60.0 * cv::Point2d(std::cos(theta), std::sin(theta)));
    }
    cv::Point2f found;
    double radius = 0.0;
    double score = 0.0;
    UtilityFunctions::MeasureCircle(plate, center, 60.0, found, radius, score, EdgePolarity::Positive,
                                    SearchDirection::Outward, 1.0, 60.0, 1.0);
    cv::circle(drawn, at(found), cvRound(radius * factor), foundColour, 2, cv::LINE_AA);
    return Row({drawn}, 480);
}

cv::Mat Operators() {
    const cv::Mat coffee = LoadColourPicture("coffee.png");
    cv::Mat sketch;
    UtilityFunctions::ApplySketchFilter(coffee, sketch, 80);
    return Row({coffee, sketch, UtilityFunctions::fillHolesMorphologicalEnhanced(coffee, 12.0, 400, 9, 3)}, 200);
}

cv::Mat Contours() {
    constexpr int factor = 4;
    const std::vector<cv::Point2f> job{{45, 53}, {82, 53}, {82, 45}, {102, 61}, {82, 77}, {82, 69}, {45, 69}};
    cv::Mat drawn(120 * factor, 150 * factor, CV_8UC3, cv::Scalar::all(245));
    const auto closed = [&](const std::vector<cv::Point2f>& corners, const cv::Scalar& colour, int width) {
        std::vector<cv::Point> scaled;
        for (const cv::Point2f& corner : corners) scaled.emplace_back(corner * factor);
        cv::polylines(drawn, scaled, true, colour, width, cv::LINE_AA);
    };
    const cv::RotatedRect box = UtilityFunctions::GetMinAreaRectAtAngle(job, 30.0F);
    std::vector<cv::Point2f> corners;
    for (int i = 0; i < 4; ++i) corners.push_back(UtilityFunctions::GetRotateRectConner(box, i));
    cv::Point2f first;
    cv::Point2f second;
    float length = 0.0F;
    UtilityFunctions::FindFarthestPairPointInContour(job, first, second, length);
    closed(corners, regionColour, 2);
    closed(job, gridColour, 3);
    closed({first, second}, foundColour, 2);
    return Row({drawn}, 300);
}

cv::Mat Change() {
    const cv::Mat before = LoadColourPicture("photographer.png");
    cv::Mat opened = before.clone();
    cv::circle(opened, {150, 330}, 130, cv::Scalar::all(250), cv::FILLED);
    return Row({before, before + cv::Scalar::all(3), opened}, 220);
}

cv::Mat TwoCameraViews() {
    using CameraCalibration::ImageDirFlags;
    const TwoViews views = TestSupport::PhotographTable();
    const ImageDirFlags upright(-1, false, false);
    std::vector<cv::Point2f> points1;
    std::vector<cv::Point2f> points2;
    cv::setRNGSeed(1);
    cv::Mat homography;
    double meanError = 0.0;
    double seamX = 0.0;
    cv::Mat joined;
    Expect(CameraCalibration::CalibrationMatchPointsForDualCam(views.picture1, upright, {270, 0, 250, 560},
                                                               views.picture2, upright, {0, 0, 250, 560}, 0.75, 4.0,
                                                               0.3, points1, points2) &&
               CameraCalibration::CreateHomography(points1, points2, homography, meanError, 3.0, 2000, 0.995) &&
               CameraCalibration::DoBlendingImageForDualCam(views.picture1, upright, views.picture2, upright, 1.0, 1.0,
                                                            homography, seamX, joined),
           "joining the cameras");
    return Row({views.picture1, views.picture2, joined}, 260);
}

cv::Mat ScaleAndCross() {
    const cv::Point2d place(246.3, 174.8);
    const cv::Mat target = Scene({480, 360}, 205.0)
                               .Paint(Ring(place, 101.5, 37.0), 45.0)
                               .Paint(TestSupport::Cross(place, 166.0, 12.0), 45.0)
                               .Blur(1.0)
                               .Noise(2.0, 5)
                               .Gray();
    cv::Point2f circle;
    cv::Point2f cross;
    double radius = 0.0;
    double scale = 0.0;
    Expect(CameraCalibration::CalScalePixToMmUseCircle(target, 8.0, 0.0, circle, radius, scale) &&
               CameraCalibration::FindCircleCross(target, cross, radius),
           "the target");
    cv::Mat drawn = Coloured(target);
    cv::circle(drawn, circle, cvRound(radius), foundColour, 2, cv::LINE_AA);
    cv::drawMarker(drawn, cross, regionColour, cv::MARKER_CROSS, 60, 2, cv::LINE_AA);
    return Row({target, drawn}, 300);
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::cerr << "usage: " << arguments[0] << " FOLDER\nwrites the pictures of the guide to the folder\n";
        return 2;
    }
    const std::vector<std::pair<const char*, cv::Mat (*)()>> pictures{{"laser-dots-detail.jpg", LaserDots},
                                                                      {"marks.jpg", Marks},
                                                                      {"lens.jpg", Lens},
                                                                      {"boards.jpg", Boards},
                                                                      {"machine-map.jpg", MachineMap},
                                                                      {"measuring.jpg", Measuring},
                                                                      {"image-operators.jpg", Operators},
                                                                      {"change.jpg", Change},
                                                                      {"contours.jpg", Contours},
                                                                      {"two-cameras.jpg", TwoCameraViews},
                                                                      {"scale-and-cross.jpg", ScaleAndCross}};
    try {
        const std::filesystem::path folder(arguments[1]);
        std::filesystem::create_directories(folder);
        for (const auto& [name, make] : pictures) {
            if (!cv::imwrite((folder / name).string(), make())) {
                throw std::runtime_error(std::string("cannot write ") + name);
            }
            std::cout << "wrote " << name << std::endl;
        }
    } catch (const std::exception& failure) {
        std::cerr << "the pictures could not be made: " << failure.what() << std::endl;
        return 1;
    }
    return 0;
}
