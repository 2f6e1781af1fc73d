#include "calibration/CameraCalibration.h"
#include "calibration/CircleCandidates.h"
#include "calibration/CircleRefinement.h"
#include "geometry/GrayChannels.h"

namespace Quorvane::CameraCalibration {

namespace {

constexpr double noScale = -1.0;

}  // namespace

bool CalScalePixToMmUseCircle(const cv::Mat& image, const double& realRadius, const double& /*notRead*/,
                              cv::Point2f& center, double& radius, double& scale) {
    if (!UtilityFunctions::CanBecomeGray(image)) {
        scale = noScale;
        return false;
    }
    std::vector<cv::Point2f> centers;
    std::vector<double> radii;
    DetectCircleCandidates(image, centers, radii);
    const std::optional<std::size_t> nearest = NearestCandidate(image.size(), centers, radii);
    if (!nearest) {
        scale = noScale;
        return false;
    }
    center = centers[*nearest];
    radius = radii[*nearest];
    scale = radius / realRadius;

    double x = 0.0;
    double y = 0.0;
    double refinedRadius = 0.0;
    double score = 0.0;
    RefineCircle(image, center.x, center.y, radius, x, y, refinedRadius, score);
    center = {static_cast<float>(x), static_cast<float>(y)};
    radius = refinedRadius;
    scale = radius / realRadius;
    return true;
}

}  // namespace Quorvane::CameraCalibration
