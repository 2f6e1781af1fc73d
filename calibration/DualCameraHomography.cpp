#include <opencv2/calib3d.hpp>

#include "calibration/CameraCalibration.h"
#include "calibration/Homography.h"
#include "calibration/LastError.h"

namespace Quorvane::CameraCalibration {

namespace {

/// A homography has eight unknowns, and each pair gives two equations.
constexpr std::size_t fewestPairs = 4;

constexpr double notMeasured = -1.0;

/// The mean distance of the pairs that the mask marks; 0.0 if it marks none.
double MeanDistance(const std::vector<cv::Point2f>& projected, const std::vector<cv::Point2f>& points,
                    const std::vector<uchar>& mask) {
    double sum = 0.0;
    int count = 0;
    for (std::size_t i = 0; i < mask.size(); ++i) {
        if (mask[i] == 0) continue;
        sum += Distance(projected[i], points[i]);
        ++count;
    }
    return count > 0 ? sum / count : sum;
}

}  // namespace

bool CreateHomography(const std::vector<cv::Point2f>& points1, const std::vector<cv::Point2f>& points2,
                      cv::Mat& homography, double& meanError, const double& ransacThreshold, const int& maxIterations,
                      const double& confidence) {
    return ReportingExceptions("CreateHomography", [&] {
        meanError = notMeasured;
        // Hosts tell too few pairs by the result alone; the text stays that of the call before.
        if (points1.size() != points2.size() || points1.size() < fewestPairs) return false;
        std::vector<uchar> inlierMask;
        homography =
            cv::findHomography(points1, points2, cv::RANSAC, ransacThreshold, inlierMask, maxIterations, confidence);
        std::vector<cv::Point2f> projected;
        cv::perspectiveTransform(points1, projected, homography);
        meanError = MeanDistance(projected, points2, inlierMask);
        return true;
    });
}

bool TransformPoint(const cv::Mat& homography, const cv::Point2f& point, cv::Point2f& transformed) {
    return ReportingExceptions("TransformPoint", [&] {
        if (homography.empty() || homography.rows != 3 || homography.cols != 3) return false;
        // OpenCV would take whatever stands in memory for the elements of a matrix of several channels.
        CV_CheckChannelsEQ(homography.channels(), 1, "a homography has one channel");
        const std::vector<cv::Point2f> points{point};
        std::vector<cv::Point2f> mapped;
        cv::perspectiveTransform(points, mapped, homography);
        if (mapped.size() != 1) return false;
        transformed = mapped.front();
        return true;
    });
}

}  // namespace Quorvane::CameraCalibration
