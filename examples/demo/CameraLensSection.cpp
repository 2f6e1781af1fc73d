// A fisheye camera calibrated from pictures of a circle board, and its pictures straightened.

#include <opencv2/core.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "examples/demo/AlgorithmRun.h"
#include "examples/demo/Sections.h"
#include "tests/support/Boards.h"
#include "tests/support/Pictures.h"
#include "tests/support/Scene.h"

namespace Demo {

namespace {

namespace Calibration = Quorvane::CameraCalibration;
using namespace Quorvane::TestSupport;

const cv::Size pattern(7, 5);
constexpr double boardWidth = 7.0;  // grid steps, with its margins

std::vector<cv::Mat> TakeShots(const CameraModel& camera) {
    const Board board = CircleBoard(pattern);
    std::vector<cv::Mat> shots;
    for (const Pose& pose : PosesOverThePicture(camera, board, boardWidth)) {
        const cv::Mat sharp = Photograph(camera, board, pose);
        shots.push_back(Scene(sharp).Blur(0.8).Light(1.0, 0.6).Gray());
    }
    return shots;
}

void CompareCameras(Report& report, const CameraModel& truth, const cv::Mat& K, const cv::Mat& D) {
    std::vector<std::vector<std::string>> lines{{"", "true", "recovered"}};
    const auto line = [&](const std::string& name, double expected, double found, int digits) {
        lines.push_back({name, Number(expected, digits), Number(found, digits)});
    };
    line("focal length x, pixels", truth.K(0, 0), K.at<double>(0, 0), 2);
    line("focal length y, pixels", truth.K(1, 1), K.at<double>(1, 1), 2);
    line("centre x, pixels", truth.K(0, 2), K.at<double>(0, 2), 2);
    line("centre y, pixels", truth.K(1, 2), K.at<double>(1, 2), 2);
    for (int i = 0; i < 4; ++i) line("k" + std::to_string(i + 1), truth.D[i], D.at<double>(i), 4);
    report.Grid("The camera that made the pictures, and what the calibration says of it", lines);
}

void ShowStraightened(Report& report, const cv::Mat& shot, cv::Mat& K, cv::Mat& D) {
    std::vector<Picture> pictures{{shot, "As the fisheye sees it"}};
    std::vector<Row> times;
    for (const double scale : {1.0, 0.6}) {
        cv::Mat straight;
        const double time = MillisecondsOf([&] { Calibration::UnDistortedImage(shot, K, D, scale, scale, straight); });
        const std::string name = "focal lengths times " + Number(scale, 1);
        pictures.push_back({straight, "Straightened, " + name});
        times.emplace_back(name, Milliseconds(time));
    }
    report.Heading("The same picture straightened");
    report.Pictures(pictures);
    report.Table("Time of UnDistortedImage", times);
}

/// A photograph whose camera was calibrated beforehand, from 13 photographs of its series.
void ShowPhotograph(Report& report) {
    const cv::Mat photograph = LoadColourPicture("chessboard.png");
    cv::Mat K(ChessboardCamera().K);
    cv::Mat D(ChessboardCamera().D);
    cv::Mat straight;
    Calibration::UnDistortedImage(photograph, K, D, 1.0, 1.0, straight);
    report.Heading("A photograph straightened");
    report.Pictures({{photograph, "A photograph; the rows of the chessboard bend by up to 1.7 pixels"},
                     {straight, "Straightened: they are straight to 0.3 pixels"}});
}

void ShowFailures(Report& report, cv::Mat K) {
    std::vector<Row> rows;
    const auto failed = [&](const std::string& call, bool success) {
        rows.emplace_back(call, success ? "succeeded" : Calibration::GetLastError());
    };
    cv::Mat D;
    cv::Mat loadedK;
    double rms = 0.0;
    cv::Mat straight;
    const cv::Mat plain(240, 320, CV_8UC1, cv::Scalar(128));
    failed("LoadCameraParameters of a file that is not there",
           Calibration::LoadCameraParameters("missing.yml", loadedK, D, rms));
    failed("CalibrateDistortedCamera of a picture without a board",
           Calibration::CalibrateDistortedCamera({plain}, pattern, loadedK, D, rms));
    D = cv::Mat::zeros(1, 4, CV_64F);
    failed("UnDistortedImage with a row of coefficients",
           Calibration::UnDistortedImage(plain, K, D, 1.0, 1.0, straight));
    report.Table("What GetLastError says of calls that fail", rows);
}

}  // namespace

void CameraLensSection(Report& report) {
    report.Section("Camera lens",
                   "CalibrateDistortedCamera finds the lens of a fisheye camera from pictures of a circle board, and "
                   "UnDistortedImage straightens its pictures. The camera here is a made-up one, so what comes out can "
                   "be compared with what went in.");
    const CameraModel camera = FisheyeCamera();
    const std::vector<cv::Mat> shots = TakeShots(camera);
    std::vector<Picture> pictures;
    for (std::size_t i = 0; i < shots.size(); ++i) {
        pictures.push_back({shots[i], "Picture " + std::to_string(i + 1)});
    }
    report.Heading("Pictures of a board with 7 by 5 circles, blurred and unevenly lit");
    report.Pictures(pictures);

    cv::setRNGSeed(1);  // OpenCV's search for the grid draws at random
    cv::Mat K;
    cv::Mat D;
    double rms = 0.0;
    bool success = false;
    const double time =
        MillisecondsOf([&] { success = Calibration::CalibrateDistortedCamera(shots, pattern, K, D, rms); });
    if (!success) throw std::runtime_error(Calibration::GetLastError());
    report.Table("Outcome", {{"reprojection error", Number(rms, 4) + " pixels"}, {"time", Milliseconds(time)}});
    CompareCameras(report, camera, K, D);
    ShowStraightened(report, shots[4], K, D);
    ShowPhotograph(report);
    ShowFailures(report, K);
}

}  // namespace Demo
