#include "tests/calibration/CalibratorScenes.h"

#include <stdexcept>

#include "tests/support/ScratchFolder.h"

namespace Quorvane::CameraCalibration {

namespace {

/// The language lets an explicit instantiation name private members; this hands them to the functions below.
template <typename Tag, typename Tag::Member member>
struct Opened {
    friend typename Tag::Member Open(Tag /*which*/) { return member; }
};

struct HomographyField {
    using Member = cv::Mat CameraCalibrator::*;
    friend Member Open(HomographyField /*which*/);
};
template struct Opened<HomographyField, &CameraCalibrator::homography>;

struct PolynomialTerms {
    using Member = cv::Mat (CameraCalibrator::*)(const std::vector<cv::Point2f>&);
    friend Member Open(PolynomialTerms /*which*/);
};
template struct Opened<PolynomialTerms, &CameraCalibrator::BuildPolynomialTerms>;

}  // namespace

TestSupport::CameraModel BedCamera() { return TestSupport::PinholeCamera(); }

TestSupport::Board BedBoard() {
    // Machine y points away from the operator, picture y towards him; the board is laid out in picture directions.
    TestSupport::Board board = TestSupport::CircleBoard({9, 7});
    const auto unitLevel = board.level;
    board.level = [unitLevel](const cv::Point2d& p) { return unitLevel(p * (1.0 / bedStep)); };
    for (cv::Point2d& point : board.points) point *= bedStep;
    board.centre *= bedStep;
    return board;
}

TestSupport::Pose BedPose() { return TestSupport::PoseOf(BedBoard().centre, {3.0, -2.0, 250.0}, 18.0, -6.0, 3.0); }

PointPairs BedPairs(int pointsPerSide) {
    PointPairs pairs;
    pairs.machine = CameraCalibrator().GenerateCailbratePointGrid(bedWidth, bedHeight, pointsPerSide);
    const cv::Point2d centre = BedBoard().centre;
    for (const cv::Point2f& point : pairs.machine) {
        const cv::Point2d onBoard(centre.x + static_cast<double>(point.x), centre.y - static_cast<double>(point.y));
        pairs.image.emplace_back(BedCamera().Project(BedPose().ToCamera(onBoard)));
    }
    return pairs;
}

PointPairs PairsOnALine() {
    PointPairs pairs;
    for (int i = 0; i < 6; ++i) {
        const auto x = static_cast<float>(i);
        pairs.image.emplace_back(10.0f * x, 20.0f * x);
        pairs.machine.emplace_back(x, 2.0f * x);
    }
    return pairs;
}

CameraCalibrator CalibratedOverTheBed() {
    const PointPairs pairs = BedPairs();
    CameraCalibrator calibrator;
    double maxError = 0.0;
    if (!calibrator.Calibrate(pairs.image, pairs.machine, BedCamera().size.width, BedCamera().size.height, maxError)) {
        throw std::runtime_error("the bed's camera cannot be calibrated");
    }
    return calibrator;
}

CameraCalibrator CalibratedButEmpty() {
    CameraCalibrator calibrator = CalibratedOverTheBed();
    const PointPairs line = PairsOnALine();
    double maxError = 0.0;
    if (calibrator.Calibrate(line.image, line.machine, 640, 480, maxError)) {
        throw std::runtime_error("points on a line were calibrated");
    }
    return calibrator;
}

CameraCalibrator WithHomography(const cv::Mat& homography, cv::Size picture) {
    const TestSupport::ScratchFolder folder;
    const std::string path = folder.File("camera.yml");
    cv::FileStorage file(path, cv::FileStorage::WRITE);
    file << "Homography_WarpImage" << homography << "SourceImageWidth" << picture.width << "SourceImageHeight"
         << picture.height;
    file.release();
    CameraCalibrator calibrator;
    if (!calibrator.LoadCalibration(path)) throw std::runtime_error("the homography could not be loaded");
    return calibrator;
}

CameraCalibrator UncalibratedWith(const cv::Mat& homography) {
    CameraCalibrator calibrator;
    calibrator.*Open(HomographyField()) = homography;
    return calibrator;
}

cv::Mat HomographyOf(const CameraCalibrator& calibrator) { return calibrator.*Open(HomographyField()); }

cv::Mat PolynomialTermsOf(const std::vector<cv::Point2f>& points) {
    CameraCalibrator calibrator;
    return (calibrator.*Open(PolynomialTerms()))(points);
}

}  // namespace Quorvane::CameraCalibration
