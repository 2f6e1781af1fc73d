#include "calibration/CameraCalibrator.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>
#include <utility>

#include "calibration/Homography.h"
#include "calibration/StoredDocument.h"
#include "geometry/ContourGeometry.h"

namespace Quorvane::CameraCalibration {

namespace {

constexpr std::size_t leastPairs = 6;
constexpr std::size_t leastInliers = 4;

// The two passes of the fit.
constexpr double inlierDistance = 1.0;  // machine units
constexpr int mostSamplings = 2000;
constexpr double samplingConfidence = 0.99;
constexpr int leastSquares = 0;
constexpr double unusedDistance = 3.0;  // the least-squares fit takes every pair
constexpr double unusedConfidence = 0.995;

const cv::Point2f noPoint(-1.0f, -1.0f);
constexpr double noDistance = -1.0;

// The nodes of the calibration file, in the order in which they are written.
constexpr const char* calibratedNode = "IsAutoCalibrate";  // always 1, and never read back
constexpr const char* homographyNode = "Homography_WarpImage";
constexpr const char* widthNode = "SourceImageWidth";
constexpr const char* heightNode = "SourceImageHeight";

struct PointPairs {
    std::vector<cv::Point2f> image;
    std::vector<cv::Point2f> machine;
};

/// The pairs whose byte of the mask is set, in order.
PointPairs MaskedPairs(const std::vector<cv::Point2f>& imagePoints, const std::vector<cv::Point2f>& machinePoints,
                       const cv::Mat& mask) {
    PointPairs pairs;
    std::size_t i = 0;
    for (int row = 0; row < mask.rows; ++row) {
        for (int column = 0; column < mask.cols && i < imagePoints.size(); ++column, ++i) {
            if (mask.at<uchar>(row, column) == 0) continue;
            pairs.image.push_back(imagePoints[i]);
            pairs.machine.push_back(machinePoints[i]);
        }
    }
    return pairs;
}

struct Segment {
    cv::Point2f first;
    cv::Point2f second;
};

cv::Point2f Narrowed(double x, double y) { return {static_cast<float>(x), static_cast<float>(y)}; }

/// A segment of the given length through the centre; `false` for an unknown mode.
bool LaySegment(double length, const cv::Point2f& center, CameraCalibrator::DistanceMode mode, Segment& segment) {
    const double x = static_cast<double>(center.x);
    const double y = static_cast<double>(center.y);
    const double half = length * 0.5;
    const double diagonalHalf = std::sqrt(2.0) * length * 0.5 * 0.5;
    switch (mode) {
        case CameraCalibrator::Diagonal:
            segment = {Narrowed(x - diagonalHalf, y - diagonalHalf), Narrowed(x + diagonalHalf, y + diagonalHalf)};
            return true;
        case CameraCalibrator::Horizontal: segment = {Narrowed(x - half, y), Narrowed(x + half, y)}; return true;
        case CameraCalibrator::Vertical: segment = {Narrowed(x, y - half), Narrowed(x, y + half)}; return true;
    }
    return false;
}

}  // namespace

CameraCalibrator::CameraCalibrator() : isCalibrated(false) {}

CameraCalibrator::CameraCalibrator(const CameraCalibrator& other) = default;
CameraCalibrator& CameraCalibrator::operator=(const CameraCalibrator& other) = default;
CameraCalibrator::~CameraCalibrator() = default;

bool CameraCalibrator::Calibrate(const std::vector<cv::Point2f>& imagePoints,
                                 const std::vector<cv::Point2f>& machinePoints, const int& imageWidth,
                                 const int& imageHeight, double& maxError) {
    if (imagePoints.size() < leastPairs || imagePoints.size() != machinePoints.size()) return false;

    // Deliberately stored before it is judged: an object that was calibrated stays so with what this leaves.
    cv::Mat inlierMask;
    homography = cv::findHomography(imagePoints, machinePoints, cv::RANSAC, inlierDistance, inlierMask, mostSamplings,
                                    samplingConfidence);
    if (homography.empty()) return false;
    const PointPairs inliers = MaskedPairs(imagePoints, machinePoints, inlierMask);
    // What OpenCV's first pass finds has four inliers in general position, so that neither this nor the second pass
    // fails with it.
    if (inliers.image.size() < leastInliers) return false;

    const cv::Mat refined = cv::findHomography(inliers.image, inliers.machine, leastSquares, unusedDistance,
                                               cv::noArray(), mostSamplings, unusedConfidence);
    if (refined.empty()) return false;
    homography = refined;
    sourceImageWidth = imageWidth;
    sourceImageHeight = imageHeight;
    isCalibrated = true;
    maxError = CalcMaxError(inliers.image, inliers.machine);
    return true;
}

double CameraCalibrator::CalcMaxError(const std::vector<cv::Point2f>& imagePoints,
                                      const std::vector<cv::Point2f>& machinePoints) {
    if (!isCalibrated) return 0.0;
    if (homography.empty() || imagePoints.size() != machinePoints.size() || imagePoints.empty()) return noDistance;
    double largest = 0.0;
    for (std::size_t i = 0; i < imagePoints.size(); ++i) {
        largest = std::max(largest, Distance(ImageToMachine(imagePoints[i]), machinePoints[i]));
    }
    return largest;
}

cv::Point2f CameraCalibrator::ImageToMachine(const cv::Point2f& imagePoint) {
    if (!isCalibrated || homography.empty()) return noPoint;
    return Mapped(homography, imagePoint);
}

cv::Point2f CameraCalibrator::MachineToImage(const cv::Point2f& machinePoint) {
    if (!isCalibrated) return noPoint;
    if (homography.empty()) {
        // Unlike ImageToMachine on purpose: the other value tells the two cases apart.
        std::cerr << "Error: Homography matrix is not initialized!" << std::endl;
        return {0.0f, 0.0f};
    }
    return Mapped(homography.inv(cv::DECOMP_LU), machinePoint);
}

double CameraCalibrator::ImageToMachine_Distance(double distance, const cv::Point2f& center, const DistanceMode& mode) {
    Segment segment;
    if (!isCalibrated || !LaySegment(distance, center, mode, segment)) return noDistance;
    return Distance(ImageToMachine(segment.second), ImageToMachine(segment.first));
}

double CameraCalibrator::MachineToImage_Distance(double distance, const cv::Point2f& center, const DistanceMode& mode) {
    Segment segment;
    if (!isCalibrated || !LaySegment(distance, center, mode, segment)) return noDistance;
    return Distance(MachineToImage(segment.second), MachineToImage(segment.first));
}

bool CameraCalibrator::IsCalibrateVaild() { return isCalibrated; }

bool CameraCalibrator::SaveCalibration(const std::string& fileName, bool append) {
    const int mode = append ? cv::FileStorage::APPEND : cv::FileStorage::WRITE;
    cv::FileStorage file(fileName, mode, "");
    if (!file.isOpened()) return false;
    file << calibratedNode << 1 << homographyNode << homography;
    file << widthNode << sourceImageWidth << heightNode << sourceImageHeight;
    file.release();
    return true;
}

bool CameraCalibrator::LoadCalibration(const std::string& fileName) {
    cv::FileStorage file;
    if (!OpenStoredDocument(file, fileName)) return false;
    const cv::FileNode width = file[widthNode];
    const cv::FileNode height = file[heightNode];
    if (!width.empty() && !height.empty()) {
        homography = ReadStoredMatrix(file[homographyNode]);
        cv::read(width, sourceImageWidth, 0);
        cv::read(height, sourceImageHeight, 0);
    }
    file.release();
    // Also where nothing was read: an object that had a homography stays usable.
    isCalibrated = !homography.empty();
    return isCalibrated;
}

cv::Mat CameraCalibrator::WarpPerspectiveImage(const cv::Mat& image, const int& expansion) {
    if (!isCalibrated || homography.empty()) return image.clone();
    CV_Assert(image.dims <= 2);  // OpenCV takes others and reads outside them
    const cv::Mat scaled = UtilityFunctions::CalculateExpansionHomography(homography, static_cast<double>(expansion));
    const Canvas canvas = FitToCanvas(scaled, image.size());
    cv::Mat result;
    cv::warpPerspective(image, result, canvas.homography, canvas.size, cv::INTER_LANCZOS4, cv::BORDER_CONSTANT,
                        cv::Scalar());
    return result;
}

cv::Point2f CameraCalibrator::WarpPerspectivePoint(const cv::Point2f& imagePoint, const int& expansion) {
    if (!isCalibrated || homography.empty()) return noPoint;
    const cv::Mat scaled = UtilityFunctions::CalculateExpansionHomography(homography, static_cast<double>(expansion));
    return Mapped(FitToCanvas(scaled, {sourceImageWidth, sourceImageHeight}).homography, imagePoint);
}

std::vector<cv::Point2f> CameraCalibrator::GenerateCailbratePointGrid(double width, double height, int pointsPerSide) {
    constexpr int leastPerSide = 3;
    if (pointsPerSide < leastPerSide || pointsPerSide % 2 == 0) return {};
    const double stepX = width / (pointsPerSide - 1);
    const double stepY = height / (pointsPerSide - 1);
    const int half = (pointsPerSide - 1) / 2;
    std::vector<cv::Point2f> grid;
    grid.reserve(static_cast<std::size_t>(pointsPerSide) * static_cast<std::size_t>(pointsPerSide));
    for (int row = half; row >= -half; --row) {
        for (int column = -half; column <= half; ++column) grid.push_back(Narrowed(column * stepX, row * stepY));
    }
    return grid;
}

cv::Mat CameraCalibrator::BuildPolynomialTerms(const std::vector<cv::Point2f>& points) {
    constexpr int termCount = 6;
    cv::Mat terms(static_cast<int>(points.size()), termCount, CV_64F);
    for (int i = 0; i < terms.rows; ++i) {
        const double x = static_cast<double>(points[static_cast<std::size_t>(i)].x);
        const double y = static_cast<double>(points[static_cast<std::size_t>(i)].y);
        const double row[termCount] = {1.0, x, y, x * x, x * y, y * y};
        std::copy(std::begin(row), std::end(row), terms.ptr<double>(i));
    }
    return terms;
}

}  // namespace Quorvane::CameraCalibration
