#pragma once

#include <opencv2/core/types.hpp>
#include <vector>

namespace Quorvane::UtilityFunctions {

/// Mean of the points, summed in float. An empty list gives not-a-number.
cv::Point2f pointCentroid(const std::vector<cv::Point2f>& points);

/// Angle in degrees from the vector (x1, y1) to (x2, y2): in 0 to 180 where the turn goes from +x towards +y, negative
/// where it goes the other way. The value is narrowed to float on its way. A vector of length zero gives not-a-number,
/// and so does a cosine that rounding lifts above 1.
double signedVectorAngle(const double& x1, const double& y1, const double& x2, const double& y2);

/// Rotation in degrees between two lists of matching points, about the given centres.
///
/// Two points: the signed angle between the vectors from the first to the second, so a target that is the source turned
/// by +t gives +t. Three points and more: the rotation that fits best in the sense of least squares, from the singular
/// value decomposition of the lists' covariance (Kabsch, "A solution for the best rotation to relate two sets of
/// vectors", 1976); edge vectors and spokes from the centre count alike. Its sign is the opposite: a target that is the
/// source turned by +t gives -t. Hosts rely on both signs.
///
/// Lists of different length, and lists of fewer than two points, give 0.
double CalculateContourRotation(const std::vector<cv::Point2f>& source, const std::vector<cv::Point2f>& target,
                                const cv::Point2f& sourceCenter, const cv::Point2f& targetCenter);

}  // namespace Quorvane::UtilityFunctions
