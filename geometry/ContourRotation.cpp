#include "geometry/ContourRotation.h"

#include <cmath>
#include <opencv2/core.hpp>

namespace Quorvane::UtilityFunctions {

namespace {

/// The edge vectors of the chain in rows 0 to n - 2, then one row of zeros, then the spokes from the centre.
cv::Mat EdgesAndSpokes(const std::vector<cv::Point2f>& points, const cv::Point2f& center) {
    const int count = static_cast<int>(points.size());
    cv::Mat rows = cv::Mat::zeros(2 * count, 2, CV_32F);
    for (int i = 0; i < count; ++i) {
        const auto index = static_cast<std::size_t>(i);
        if (i + 1 < count) *rows.ptr<cv::Vec2f>(i) = points[index] - points[index + 1];
        *rows.ptr<cv::Vec2f>(count + i) = points[index] - center;
    }
    return rows;
}

double BestFittingRotation(const cv::Mat& source, const cv::Mat& target) {
    const cv::Mat covariance = source.t() * target;
    cv::Mat w;
    cv::Mat u;
    cv::Mat vt;
    cv::SVD::compute(covariance, w, u, vt);
    // The determinant is not looked at, on purpose: mirrored lists get the angle of whatever matrix comes out.
    const cv::Mat rotation = vt.t() * u.t();
    return -static_cast<double>(std::atan2(rotation.at<float>(1, 0), rotation.at<float>(0, 0))) * 180.0 / CV_PI;
}

}  // namespace

cv::Point2f pointCentroid(const std::vector<cv::Point2f>& points) {
    cv::Point2f sum(0.0f, 0.0f);
    for (const cv::Point2f& point : points) sum += point;
    const auto count = static_cast<float>(points.size());
    return {sum.x / count, sum.y / count};
}

double signedVectorAngle(const double& x1, const double& y1, const double& x2, const double& y2) {
    const double length1 = std::sqrt(x1 * x1 + y1 * y1);
    const double length2 = std::sqrt(x2 * x2 + y2 * y2);
    const auto angle = static_cast<float>(std::acos((x1 * x2 + y1 * y2) / length1 / length2) * 180.0 / CV_PI);
    return static_cast<float>(x1 * y2 - y1 * x2) < 0.0f ? -angle : angle;
}

double CalculateContourRotation(const std::vector<cv::Point2f>& source, const std::vector<cv::Point2f>& target,
                                const cv::Point2f& sourceCenter, const cv::Point2f& targetCenter) {
    if (source.size() != target.size() || source.size() < 2) return 0.0;
    if (source.size() == 2) {
        const cv::Point2f from = source[1] - source[0];
        const cv::Point2f to = target[1] - target[0];
        return signedVectorAngle(from.x, from.y, to.x, to.y);
    }
    try {
        return BestFittingRotation(EdgesAndSpokes(source, sourceCenter), EdgesAndSpokes(target, targetCenter));
    } catch (const cv::Exception&) {
        return 0.0;  // Deliberately silent: lists without a rotation count as not turned.
    }
}

}  // namespace Quorvane::UtilityFunctions
