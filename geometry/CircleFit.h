#pragma once

#include <opencv2/core/types.hpp>
#include <vector>

namespace Quorvane::UtilityFunctions {

/// The circle through points by algebraic least squares: x^2 + y^2 = X0 x + X1 y + X2 is solved for X, with the centre
/// at (X0/2, X1/2) (I. Kasa, "A Circle Fitting Procedure and Its Error Analysis", 1976). No point is left out.
///
/// The centre is narrowed to float and squared in float before the radius is taken from it, so the radius of a small
/// circle far from the origin loses digits. Deliberate: hosts compare radii that were found so.
///
/// `score` is 1 minus the standard deviation of the points' distances to the circle, relative to its radius: 1 for
/// points that all lie on one circle. Returns whether `score` is above 0.3; the circle is delivered in either case.
/// With fewer than three points it returns false and writes nothing.
bool fitCircleAlgebraic(const std::vector<cv::Point2f>& points, cv::Point2f& center, double& radius, double& score);

}  // namespace Quorvane::UtilityFunctions
