#include <vector>

#include "geometry/CaliperRow.h"
#include "geometry/CurveResampling.h"
#include "geometry/Measurement.h"

namespace Quorvane::UtilityFunctions {

namespace {

constexpr std::size_t leastPointsOfACurve = 3;

/// With more points than this, the curve is smoothed.
constexpr std::size_t mostPointsUnsmoothed = 4;

/// How many standard deviations above the median a curvature may lie.
constexpr double outlierFactor = 3.0;

constexpr int curveDegree = 3;

}  // namespace

void MeasureCurve(const cv::Mat& image, const cv::Point2f& center, const double& width, const double& height,
                  Curve& curve, EdgePolarity polarity, SearchDirection direction, const double& sigma,
                  const double& threshold, const double& step, int /*reserved*/) {
    // The calipers step upwards in their coordinate, so the points come in the order of the scan.
    const CaliperRow row(center, width, height, direction, step);
    curve.measuredPoints = FirstEdgesOfRow(image, row, polarity, sigma, threshold);
    if (curve.measuredPoints.size() < leastPointsOfACurve) {
        curve.curvePoints.clear();
        return;
    }
    std::vector<cv::Point2f> filtered = removeCurvatureOutliers(curve.measuredPoints, outlierFactor);
    if (filtered.size() > mostPointsUnsmoothed) filtered = smoothPoints(filtered);
    curve.curvePoints = resampleCurveHermite(filtered, chooseCurveSampleCount(filtered, curveDegree));
    curve.meanFitError = meanDistanceToCurve(filtered, curve.curvePoints);
}

}  // namespace Quorvane::UtilityFunctions
