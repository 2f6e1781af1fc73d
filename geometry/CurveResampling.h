#pragma once

#include <opencv2/core/types.hpp>
#include <vector>

namespace Quorvane::UtilityFunctions {

/// Drops points where the polyline bends far more than it does elsewhere: whose curvature exceeds the median by more
/// than `factor` standard deviations, these taken from the median deviation. The two points at either end, and points
/// whose neighbours coincide, always stay. Fewer than five points are returned as they are.
std::vector<cv::Point2f> removeCurvatureOutliers(const std::vector<cv::Point2f>& points, double factor);

/// Every point becomes a weighted mean of itself and up to three neighbours on either side, by a Gauss function of
/// deviation 1 in the index.
std::vector<cv::Point2f> smoothPoints(const std::vector<cv::Point2f>& points);

/// How many points describe a polyline well: one per 1, 1.5 or 2 pixels of length, depending on its sharpest bend,
/// between (`degree` + 1) * 10 and 500 of them, and at least 20.
int chooseCurveSampleCount(const std::vector<cv::Point2f>& points, int degree);

/// `count` points at equal distances along the polyline, on a Catmull-Rom curve through its points (E. Catmull and
/// R. Rom, "A Class of Local Interpolating Splines", 1974). The tangents belong to the index of the points and are not
/// scaled by the distances between them. One point or none is returned as it is; a polyline without length, or whose
/// first two points coincide, gives points that are not numbers.
std::vector<cv::Point2f> resampleCurveHermite(const std::vector<cv::Point2f>& points, int count);

/// Mean over `points` of the distance to the nearest point of `curve`, in pixels. There is to be at least one point.
double meanDistanceToCurve(const std::vector<cv::Point2f>& points, const std::vector<cv::Point2f>& curve);

}  // namespace Quorvane::UtilityFunctions
