#pragma once

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <vector>

namespace Quorvane::CameraCalibration {

/// Refines a circle by the outline of the largest round dark shape around it: the picture around (x, y), 2.5 radii to
/// each side, is blurred and split into dark and light by Otsu's threshold, and a circle is fitted through the outline.
/// All lengths are in pixels. `score` is that of the fit (1 for a perfect circle), or 0.5 for the enclosing circle
/// that takes its place where the fit fails.
///
/// Where there is no such shape, the circle comes back as it was, with the score 0. `image` is 8-bit with 1, 3 or 4
/// channels.
///
/// The outline runs through the centres of the shape's outermost pixels, so the radius comes out about half a pixel
/// short. A shape is dark by definition: see `CalScalePixToMmUseCircle` for what a light ring gives.
void RefineCircle(const cv::Mat& image, double x, double y, double r, double& refinedX, double& refinedY,
                  double& refinedRadius, double& score);

/// The circle through points by `fitCircleAlgebraic`, with its score; where the fit fails, the smallest circle around
/// the points, with the score 0.5.
void FitOrEnclose(const std::vector<cv::Point2f>& points, cv::Point2f& center, double& radius, double& score);

}  // namespace Quorvane::CameraCalibration
