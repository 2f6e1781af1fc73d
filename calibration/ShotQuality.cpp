#include "calibration/ShotQuality.h"

#include <opencv2/calib3d.hpp>

#include "calibration/StopCriteria.h"

namespace Quorvane::CameraCalibration {

namespace {

/// k1 to k6, two tangential terms and four of a thin prism.
constexpr int pinholeTerms = 12;
constexpr int fullModel =
    cv::CALIB_USE_QR | cv::CALIB_THIN_PRISM_MODEL | cv::CALIB_RATIONAL_MODEL | cv::CALIB_FIX_ASPECT_RATIO;
constexpr int heldBackModel =
    fullModel | cv::CALIB_FIX_S1_S2_S3_S4 | cv::CALIB_FIX_K6 | cv::CALIB_FIX_K5 | cv::CALIB_FIX_K4;
static_assert(fullModel == 0x10c002 && heldBackModel == 0x11f802);

}  // namespace

double FisheyeShotQuality(const std::vector<cv::Point3f>& objectPoints, const std::vector<cv::Point2f>& imagePoints,
                          cv::Size imageSize) {
    const std::vector<std::vector<cv::Point3f>> onBoard{objectPoints};
    const std::vector<std::vector<cv::Point2f>> inPicture{imagePoints};
    cv::Mat K = cv::Mat::zeros(3, 3, CV_64F);
    cv::Mat D = cv::Mat::zeros(4, 1, CV_64F);
    return cv::fisheye::calibrate(onBoard, inPicture, imageSize, K, D, cv::noArray(), cv::noArray(),
                                  cv::fisheye::CALIB_RECOMPUTE_EXTRINSIC, StopCriteria());
}

double PinholeShotQuality(const std::vector<cv::Point3f>& objectPoints, const std::vector<cv::Point2f>& imagePoints,
                          cv::Size imageSize) {
    const std::vector<std::vector<cv::Point3f>> onBoard{objectPoints};
    const std::vector<std::vector<cv::Point2f>> inPicture{imagePoints};
    cv::Mat K = cv::Mat::eye(3, 3, CV_64F);
    cv::Mat D = cv::Mat::zeros(pinholeTerms, 1, CV_64F);
    double error = 0.0;
    for (const int model : {heldBackModel, fullModel}) {
        error = cv::calibrateCamera(onBoard, inPicture, imageSize, K, D, cv::noArray(), cv::noArray(), model,
                                    StopCriteria());
    }
    return error;
}

}  // namespace Quorvane::CameraCalibration
