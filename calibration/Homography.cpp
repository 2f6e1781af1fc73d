#include "calibration/Homography.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "TruncateToInt.h"

namespace Quorvane::CameraCalibration {

namespace {

struct Bounds {
    float minX = std::numeric_limits<float>::max();
    float minY = std::numeric_limits<float>::max();
    float maxX = std::numeric_limits<float>::lowest();
    float maxY = std::numeric_limits<float>::lowest();
};

Bounds WarpedBounds(const cv::Mat& homography, cv::Size picture) {
    const auto width = static_cast<float>(picture.width);
    const auto height = static_cast<float>(picture.height);
    const std::vector<cv::Point2f> corners{{0.0f, 0.0f}, {width, 0.0f}, {width, height}, {0.0f, height}};
    std::vector<cv::Point2f> warped;
    cv::perspectiveTransform(corners, warped, homography);
    Bounds bounds;
    for (const cv::Point2f& corner : warped) {
        bounds.minX = std::min(bounds.minX, corner.x);
        bounds.minY = std::min(bounds.minY, corner.y);
        bounds.maxX = std::max(bounds.maxX, corner.x);
        bounds.maxY = std::max(bounds.maxY, corner.y);
    }
    return bounds;
}

cv::Size CanvasSize(const Bounds& bounds, cv::Size picture) {
    const int spanX = TruncateToInt(bounds.maxX - bounds.minX);
    const int spanY = TruncateToInt(bounds.maxY - bounds.minY);
    const auto side = static_cast<float>(std::max(spanX, spanY));
    const float aspect = static_cast<float>(picture.width) / static_cast<float>(picture.height);
    if (aspect > 1.0f) return {TruncateToInt(side), TruncateToInt(side / aspect)};
    return {TruncateToInt(aspect * side), TruncateToInt(side)};
}

}  // namespace

cv::Point2f Mapped(const cv::Mat& homography, const cv::Point2f& point) {
    CV_CheckTypeEQ(homography.type(), CV_64FC1, "a homography holds doubles");
    CV_Assert(homography.rows == 3 && homography.cols == 3);
    // OpenCV's product of matrices and not one written out: with fused multiply-add it rounds in its own way, and a
    // host that maps points with the matrix itself gets the same numbers.
    const cv::Vec3d column(static_cast<double>(point.x), static_cast<double>(point.y), 1.0);
    cv::Vec3d mapped;
    cv::gemm(homography, column, 1.0, cv::noArray(), 0.0, mapped);
    return {static_cast<float>(mapped[0] / mapped[2]), static_cast<float>(mapped[1] / mapped[2])};
}

Canvas FitToCanvas(const cv::Mat& homography, cv::Size picture) {
    const Bounds bounds = WarpedBounds(homography, picture);
    cv::Mat shift = cv::Mat::eye(3, 3, CV_64F);
    shift.at<double>(0, 2) = -static_cast<double>(bounds.minX);
    shift.at<double>(1, 2) = -static_cast<double>(bounds.minY);
    return {shift * homography, CanvasSize(bounds, picture)};
}

double Distance(const cv::Point2f& a, const cv::Point2f& b) {
    const double dx = static_cast<double>(a.x - b.x);
    const double dy = static_cast<double>(a.y - b.y);
    return std::sqrt(dx * dx + dy * dy);
}

}  // namespace Quorvane::CameraCalibration
