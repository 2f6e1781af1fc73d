#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>
#include <utility>

#include "calibration/CameraCalibration.h"
#include "calibration/CircleGrid.h"
#include "calibration/LastError.h"
#include "calibration/StopCriteria.h"

namespace Quorvane::CameraCalibration {

namespace {

/// What all usable pictures together give to the calibration.
struct Views {
    cv::Size imageSize;
    std::vector<std::vector<cv::Point2f>> imagePoints;
    std::vector<std::vector<cv::Point3f>> objectPoints;
};

bool FindCircles(const cv::Mat& picture, cv::Size pattern, std::vector<cv::Point2f>& centers) {
    return FindCircleGrid(picture, pattern, centers, cv::CALIB_CB_SYMMETRIC_GRID, cv::SimpleBlobDetector::create());
}

/// Pictures are counted from 1, by their place in the host's list.
Views CollectViews(const std::vector<cv::Mat>& images, cv::Size pattern) {
    Views views;
    for (std::size_t i = 0; i < images.size(); ++i) {
        cv::Mat gray;
        if (images[i].empty() || !ToBoardGray(images[i], gray)) continue;
        const std::string number = std::to_string(i + 1);
        // Cannot happen with the gray conversion as it is; the text is the one that hosts know for it.
        if (gray.empty()) {
            SetLastError("the image[ " + number + "] is empty!");
            continue;
        }
        // The first picture speaks for all; hosts take every picture of a set with one camera.
        if (views.imageSize.empty()) views.imageSize = gray.size();
        BoardView view;
        if (!FindBoardEitherWay(gray, pattern, FindCircles, view)) {
            SetLastError("Could not find circles grid in the image[ " + number + "]");
            continue;
        }
        // The centres are refined in the gray picture, also where the evened one has shown them.
        RefineCenters(gray, view.centers);
        views.imagePoints.push_back(std::move(view.centers));
        views.objectPoints.push_back(std::move(view.positions));
    }
    return views;
}

/// Why this picture cannot be straightened; empty if it can.
std::string WhyNotUndistortable(const cv::Mat& distorted, const cv::Mat& K, const cv::Mat& D) {
    if (distorted.empty()) return "Input distorted image is empty";
    if (K.empty() || D.empty()) return "Camera matrix or distortion coefficients are empty";
    if (K.rows != 3 || K.cols != 3) return "Camera matrix size is incorrect";
    // The lengths of other lens models pass here on purpose, although the fisheye model knows four coefficients alone:
    // what is wrong with them is left to OpenCV to say.
    if (D.cols != 1 || (D.rows != 4 && D.rows != 5 && D.rows != 8)) return "Distortion coefficients size is incorrect";
    return "";
}

/// The camera matrix, as doubles, with other focal lengths and the same principal point.
cv::Mat WithFocalLengthsScaled(const cv::Mat& K, double fxScale, double fyScale) {
    cv::Mat scaled;
    K.convertTo(scaled, CV_64F);
    scaled.at<double>(0, 0) *= fxScale;
    scaled.at<double>(1, 1) *= fyScale;
    return scaled;
}

}  // namespace

bool CalibrateDistortedCamera(const std::vector<cv::Mat>& images, const cv::Size& patternSize, cv::Mat& K, cv::Mat& D,
                              double& rms) {
    const auto calibrate = [&] {
        const Views views = CollectViews(images, patternSize);
        if (views.imagePoints.empty()) return FailWith("Not enough points for calibration.");
        K = cv::Mat::zeros(3, 3, CV_64F);
        D = cv::Mat::zeros(4, 1, CV_64F);
        std::vector<cv::Mat> rotations;
        std::vector<cv::Mat> translations;
        rms = cv::fisheye::calibrate(views.objectPoints, views.imagePoints, views.imageSize, K, D, rotations,
                                     translations, cv::fisheye::CALIB_RECOMPUTE_EXTRINSIC, StopCriteria());
        return true;
    };
    return ReportingExceptions("CalibrateDistortedCamera", calibrate, [&] {
        rms = -1.0;
        return false;
    });
}

bool UnDistortedImage(const cv::Mat& distorted, cv::Mat& K, cv::Mat& D, const double& fxScale, const double& fyScale,
                      cv::Mat& undistorted) {
    return ReportingExceptions("UnDistortedImage", [&] {
        const std::string reason = WhyNotUndistortable(distorted, K, D);
        if (!reason.empty()) return FailWith(reason);
        CV_Assert(distorted.dims <= 2);  // OpenCV takes others and reads outside them
        const cv::Mat newK = WithFocalLengthsScaled(K, fxScale, fyScale);
        cv::Mat map1;
        cv::Mat map2;
        // OpenCV reads the coefficients as if they lay side by side, which a column of a larger matrix does not do.
        cv::fisheye::initUndistortRectifyMap(K, D.clone(), cv::Mat::eye(3, 3, CV_64F), newK, distorted.size(), CV_16SC2,
                                             map1, map2);
        // OpenCV makes neither empty maps nor an empty picture of a picture that is not empty, so these two texts are
        // for versions to come.
        if (map1.empty() || map2.empty()) return FailWith("Undistort rectify map is empty");
        cv::remap(distorted, undistorted, map1, map2, cv::INTER_LINEAR, cv::BORDER_CONSTANT, cv::Scalar());
        if (undistorted.empty()) return FailWith("Output undistorted image is empty");
        return true;
    });
}

}  // namespace Quorvane::CameraCalibration
