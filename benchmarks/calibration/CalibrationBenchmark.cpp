// The calibration of cameras. Nearly all of it is OpenCV's work, so each row has its floor beside it: OpenCV's own
// calls with the same arguments, and nothing around them.

#include <benchmark/benchmark.h>

#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>
#include <opencv2/objdetect/charuco_detector.hpp>
#include <vector>

#include "calibration/CameraCalibration.h"
#include "calibration/CameraCalibrator.h"
#include "calibration/CircleGrid.h"
#include "tests/support/Boards.h"

namespace Quorvane::CameraCalibration {
namespace {

using namespace TestSupport;

const cv::Size pattern(7, 5);
const cv::TermCriteria criteria(cv::TermCriteria::COUNT + cv::TermCriteria::EPS, 30, 1e-6);

const std::vector<cv::Mat>& Shots() {
    static const std::vector<cv::Mat> shots = [] {
        const CameraModel camera = FisheyeCamera({1280, 960});
        const Board board = CircleBoard(pattern);
        std::vector<cv::Mat> pictures;
        for (const Pose& pose : PosesOverThePicture(camera, board, 9.0)) {
            pictures.push_back(Photograph(camera, board, pose));
        }
        return pictures;
    }();
    return shots;
}

cv::Mat EvenedFloor(const cv::Mat& gray) {
    cv::Mat filtered;
    cv::GaussianBlur(gray, filtered, {5, 5}, 0.0);
    cv::Mat smooth = filtered.clone();
    cv::bilateralFilter(smooth, filtered, 9, 50.0, 50.0);
    cv::Mat background;
    cv::GaussianBlur(filtered, background, {151, 151}, 0.0);
    cv::addWeighted(filtered, 1.0, background, -1.0, 128.0, filtered);
    return filtered;
}

void EvenedImageFloor(benchmark::State& state) {
    Shots();  // made before the clock starts
    for (auto _ : state) benchmark::DoNotOptimize(EvenedFloor(Shots()[1]));
}
BENCHMARK(EvenedImageFloor)->Name("EvenedImage/floor")->Unit(benchmark::kMillisecond);

void EvenedImageLibrary(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(EvenedImage(Shots()[1]));
}
BENCHMARK(EvenedImageLibrary)->Name("EvenedImage/library")->Unit(benchmark::kMillisecond);

void BackgroundBlur(benchmark::State& state) {
    cv::Mat background;
    for (auto _ : state) cv::GaussianBlur(Shots()[1], background, {151, 151}, 0.0);
}
BENCHMARK(BackgroundBlur)->Name("EvenedImage/background blur alone")->Unit(benchmark::kMillisecond);

/// The search in both pictures and both ways round, each time with a detector of its own.
bool FoundInFourTries(const cv::Mat& gray, const cv::Mat& evened, std::vector<cv::Point2f>& centers) {
    const cv::Size turned(pattern.height, pattern.width);
    const auto found = [&](const cv::Mat& picture, cv::Size tried) {
        return cv::findCirclesGrid(picture, tried, centers, cv::CALIB_CB_SYMMETRIC_GRID,
                                   cv::SimpleBlobDetector::create());
    };
    return found(gray, pattern) || found(evened, pattern) || found(gray, turned) || found(evened, turned);
}

void CalibrateFloor(benchmark::State& state) {
    for (auto _ : state) {
        cv::setRNGSeed(1);
        std::vector<std::vector<cv::Point2f>> imagePoints;
        for (const cv::Mat& shot : Shots()) {
            const cv::Mat gray = shot.clone();
            std::vector<cv::Point2f> centers;
            if (!FoundInFourTries(gray, EvenedFloor(gray), centers)) continue;
            cv::cornerSubPix(gray, centers, {3, 3}, {-1, -1}, criteria);
            imagePoints.push_back(centers);
        }
        const std::vector<std::vector<cv::Point3f>> objectPoints(imagePoints.size(),
                                                                 GenerateActualPositions(7, 5, 1.0f));
        cv::Mat K;
        cv::Mat D;
        std::vector<cv::Mat> rotations;
        std::vector<cv::Mat> translations;
        cv::fisheye::calibrate(objectPoints, imagePoints, Shots()[0].size(), K, D, rotations, translations,
                               cv::fisheye::CALIB_RECOMPUTE_EXTRINSIC, criteria);
        benchmark::DoNotOptimize(K.data);
    }
}
BENCHMARK(CalibrateFloor)->Name("CalibrateDistortedCamera/floor")->Unit(benchmark::kMillisecond);

void CalibrateLibrary(benchmark::State& state) {
    cv::Mat K;
    cv::Mat D;
    double rms = 0.0;
    for (auto _ : state) {
        cv::setRNGSeed(1);
        if (!CalibrateDistortedCamera(Shots(), pattern, K, D, rms)) state.SkipWithError(GetLastError().c_str());
    }
}
BENCHMARK(CalibrateLibrary)->Name("CalibrateDistortedCamera/library")->Unit(benchmark::kMillisecond);

void FindBoardFloor(benchmark::State& state) {
    const cv::Ptr<cv::Feature2D> detector = cv::SimpleBlobDetector::create();
    const std::vector<std::vector<cv::Point3f>> objectPoints{GenerateActualPositions(7, 5, 1.0f)};
    for (auto _ : state) {
        cv::setRNGSeed(1);
        benchmark::DoNotOptimize(EvenedFloor(Shots()[1]));
        std::vector<cv::Point2f> centers;
        cv::findCirclesGrid(Shots()[1], pattern, centers, cv::CALIB_CB_SYMMETRIC_GRID, detector);
        cv::cornerSubPix(Shots()[1], centers, {3, 3}, {-1, -1}, criteria);
        cv::Mat K;
        cv::Mat D;
        cv::fisheye::calibrate(objectPoints, std::vector<std::vector<cv::Point2f>>{centers}, Shots()[1].size(), K, D,
                               cv::noArray(), cv::noArray(), cv::fisheye::CALIB_RECOMPUTE_EXTRINSIC, criteria);
        benchmark::DoNotOptimize(K.data);
    }
}
BENCHMARK(FindBoardFloor)->Name("FindCalibrationBoard/floor")->Unit(benchmark::kMillisecond);

void FindBoardLibrary(benchmark::State& state) {
    const cv::Ptr<cv::Feature2D> detector = cv::SimpleBlobDetector::create();
    std::vector<cv::Point2f> centers;
    double quality = 0.0;
    for (auto _ : state) {
        cv::setRNGSeed(1);
        FindCalibrationBoard(Shots()[1], pattern, centers, quality, cv::CALIB_CB_SYMMETRIC_GRID, detector);
    }
}
BENCHMARK(FindBoardLibrary)->Name("FindCalibrationBoard/library")->Unit(benchmark::kMillisecond);

void UndistortFloor(benchmark::State& state) {
    const CameraModel camera = FisheyeCamera({1280, 960});
    cv::Mat map1;
    cv::Mat map2;
    cv::Mat result;
    for (auto _ : state) {
        cv::fisheye::initUndistortRectifyMap(camera.K, camera.D, cv::Matx33d::eye(), camera.K, camera.size, CV_16SC2,
                                             map1, map2);
        cv::remap(Shots()[0], result, map1, map2, cv::INTER_LINEAR);
    }
}
BENCHMARK(UndistortFloor)->Name("UnDistortedImage/floor")->Unit(benchmark::kMillisecond);

void UndistortLibrary(benchmark::State& state) {
    const CameraModel camera = FisheyeCamera({1280, 960});
    cv::Mat K(camera.K);
    cv::Mat D(camera.D);
    cv::Mat result;
    for (auto _ : state) UnDistortedImage(Shots()[0], K, D, 1.0, 1.0, result);
}
BENCHMARK(UndistortLibrary)->Name("UnDistortedImage/library")->Unit(benchmark::kMillisecond);

cv::Mat CharucoShot(bool fisheye) {
    const CameraModel camera = fisheye ? FisheyeCamera({1280, 960}) : PinholeCamera({1280, 960});
    const Board board = CharucoBoardPrint({7, 5}, 20.0);
    const double distance = fisheye ? 85.0 : 190.0;
    cv::Mat picture;
    cv::cvtColor(Photograph(camera, board, PoseOf(board.centre, {0.0, -5.0, distance}, 20.0, -18.0, 5.0)), picture,
                 cv::COLOR_GRAY2BGR);
    return picture;
}

/// The costly ones of OpenCV's calls: both thresholds, the search for markers and for the board, the calibration.
void FindCharucoFloor(benchmark::State& state) {
    const bool fisheye = state.range(0) != 0;
    const cv::Mat picture = CharucoShot(fisheye);
    for (auto _ : state) {
        cv::Mat gray;
        cv::cvtColor(picture, gray, cv::COLOR_BGR2GRAY);
        cv::Mat local;
        cv::Mat bright;
        cv::adaptiveThreshold(gray, local, 255, cv::ADAPTIVE_THRESH_GAUSSIAN_C, cv::THRESH_BINARY, 21, 7);
        cv::threshold(gray, bright, 0, 255, cv::THRESH_OTSU);
        cv::bitwise_and(local, bright, gray);
        const cv::aruco::CharucoBoard board({7, 5}, 0.02f, 0.015f,
                                            cv::aruco::getPredefinedDictionary(cv::aruco::DICT_7X7_250));
        cv::aruco::DetectorParameters settings;
        settings.cornerRefinementMethod = cv::aruco::CORNER_REFINE_APRILTAG;
        settings.cornerRefinementWinSize = 15;
        settings.cornerRefinementMaxIterations = 100;
        settings.minMarkerDistanceRate = 0.01;
        std::vector<std::vector<cv::Point2f>> corners;
        std::vector<int> markers;
        cv::aruco::ArucoDetector(board.getDictionary(), settings).detectMarkers(gray, corners, markers);
        std::vector<cv::Point2f> chessboard;
        std::vector<int> ids;
        cv::aruco::CharucoDetector(board).detectBoard(gray, chessboard, ids, corners, markers);
        std::vector<std::vector<cv::Point3f>> objectPoints(1);
        std::vector<std::vector<cv::Point2f>> imagePoints(1);
        for (std::size_t i = 0; i < markers.size(); ++i) {
            const auto& onBoard = board.getObjPoints()[static_cast<std::size_t>(markers[i])];
            objectPoints[0].insert(objectPoints[0].end(), onBoard.begin(), onBoard.end());
            imagePoints[0].insert(imagePoints[0].end(), corners[i].begin(), corners[i].end());
        }
        cv::Mat K;
        cv::Mat D;
        if (fisheye) {
            cv::fisheye::calibrate(objectPoints, imagePoints, picture.size(), K, D, cv::noArray(), cv::noArray(),
                                   cv::fisheye::CALIB_RECOMPUTE_EXTRINSIC, criteria);
        } else {
            K = cv::Mat::eye(3, 3, CV_64F);
            D = cv::Mat::zeros(12, 1, CV_64F);
            for (const int model : {0x11f802, 0x10c002}) {
                cv::calibrateCamera(objectPoints, imagePoints, picture.size(), K, D, cv::noArray(), cv::noArray(),
                                    model, criteria);
            }
        }
        benchmark::DoNotOptimize(K.data);
    }
}
BENCHMARK(FindCharucoFloor)
    ->Name("FindChArUcoBoard/floor")
    ->ArgName("fisheye")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond);

void FindCharucoLibrary(benchmark::State& state) {
    const bool fisheye = state.range(0) != 0;
    const cv::Mat picture = CharucoShot(fisheye);
    std::vector<cv::Point2f> imagePoints;
    std::vector<cv::Point3f> objectPoints;
    std::vector<int> ids;
    double quality = 0.0;
    cv::Mat shown;
    for (auto _ : state) {
        if (!FindChArUcoBoard(picture, 7, 5, 20.0f, 15.0f, fisheye, imagePoints, objectPoints, ids, quality, shown,
                              false)) {
            state.SkipWithError(GetLastError().c_str());
        }
    }
}
BENCHMARK(FindCharucoLibrary)
    ->Name("FindChArUcoBoard/library")
    ->ArgName("fisheye")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond);

/// Over a bed of 300 mm seen obliquely.
CameraCalibrator Calibrated(cv::Mat& homography) {
    const CameraModel camera = PinholeCamera({1280, 960});
    const Pose pose = PoseOf({0.0, 0.0}, {3.0, -2.0, 370.0}, 18.0, -6.0, 3.0);
    CameraCalibrator calibrator;
    const std::vector<cv::Point2f> machine = calibrator.GenerateCailbratePointGrid(300.0, 200.0, 5);
    std::vector<cv::Point2f> image;
    for (const cv::Point2f& point : machine) image.emplace_back(camera.Project(pose.ToCamera(point)));
    double maxError = 0.0;
    calibrator.Calibrate(image, machine, camera.size.width, camera.size.height, maxError);
    homography = cv::findHomography(image, machine);
    return calibrator;
}

void TopViewFloor(benchmark::State& state) {
    constexpr double expansion = 4.0;
    cv::Mat homography;
    CameraCalibrator calibrator = Calibrated(homography);
    const cv::Size size = calibrator.WarpPerspectiveImage(Shots()[0], 4).size();
    const cv::Point2f origin = calibrator.WarpPerspectivePoint({0.0f, 0.0f}, 4);
    const cv::Point2f machine = calibrator.ImageToMachine({0.0f, 0.0f});
    const cv::Matx33d toCanvas(expansion, 0.0, origin.x - expansion * machine.x, 0.0, expansion,
                               origin.y - expansion * machine.y, 0.0, 0.0, 1.0);
    const cv::Mat warp = cv::Mat(toCanvas) * homography;
    cv::Mat result;
    for (auto _ : state) cv::warpPerspective(Shots()[0], result, warp, size, cv::INTER_LANCZOS4);
}
BENCHMARK(TopViewFloor)->Name("WarpPerspectiveImage/floor")->Unit(benchmark::kMillisecond);

void TopViewLibrary(benchmark::State& state) {
    cv::Mat homography;
    CameraCalibrator calibrator = Calibrated(homography);
    for (auto _ : state) benchmark::DoNotOptimize(calibrator.WarpPerspectiveImage(Shots()[0], 4));
}
BENCHMARK(TopViewLibrary)->Name("WarpPerspectiveImage/library")->Unit(benchmark::kMillisecond);

void PointFloor(benchmark::State& state) {
    cv::Mat homography;
    Calibrated(homography);
    for (auto _ : state) {
        const cv::Mat column = (cv::Mat_<double>(3, 1) << 100.0, 200.0, 1.0);
        cv::Mat mapped = homography * column;
        benchmark::DoNotOptimize(mapped.data);
    }
}
BENCHMARK(PointFloor)->Name("ImageToMachine/floor: a matrix product");

void PointLibrary(benchmark::State& state) {
    cv::Mat homography;
    CameraCalibrator calibrator = Calibrated(homography);
    for (auto _ : state) benchmark::DoNotOptimize(calibrator.ImageToMachine({100.0f, 200.0f}));
}
BENCHMARK(PointLibrary)->Name("ImageToMachine/library");

void PointBackFloor(benchmark::State& state) {
    cv::Mat homography;
    Calibrated(homography);
    for (auto _ : state) {
        const cv::Mat column = (cv::Mat_<double>(3, 1) << 10.0, 20.0, 1.0);
        const cv::Mat inverse = homography.inv(cv::DECOMP_LU);  // by itself: as one expression it would be solved
        cv::Mat mapped = inverse * column;
        benchmark::DoNotOptimize(mapped.data);
    }
}
BENCHMARK(PointBackFloor)->Name("MachineToImage/floor: the inverse and a product");

void PointBackLibrary(benchmark::State& state) {
    cv::Mat homography;
    CameraCalibrator calibrator = Calibrated(homography);
    for (auto _ : state) benchmark::DoNotOptimize(calibrator.MachineToImage({10.0f, 20.0f}));
}
BENCHMARK(PointBackLibrary)->Name("MachineToImage/library");

}  // namespace
}  // namespace Quorvane::CameraCalibration
