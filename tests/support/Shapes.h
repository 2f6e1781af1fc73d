#pragma once

#include <functional>
#include <opencv2/core/types.hpp>
#include <vector>

namespace Quorvane::TestSupport {

/// A region of the plane, given by the signed distance of a point to its outline in pixels: negative inside, zero on
/// the outline, positive outside. A distance may be too small in amount (shapes put together with `Either` and the
/// like have such places), but never too large.
using Shape = std::function<double(const cv::Point2d&)>;

Shape Disc(cv::Point2d centre, double radius);

/// The points whose distance to the circle of the given radius is at most width/2.
Shape Ring(cv::Point2d centre, double radius, double width);

/// The points on the side of `through` to which `direction` points, the direction in degrees (0 is to the right,
/// 90 is down).
Shape HalfPlane(cv::Point2d through, double direction);

/// A rectangle turned about its centre by `angle` degrees (from the x axis towards the y axis).
Shape Rectangle(cv::Point2d centre, cv::Size2d size, double angle = 0.0);

/// A polygon, of either orientation, whose sides do not cross.
Shape Polygon(std::vector<cv::Point2d> corners);

/// The points within width/2 of the broken line through the points.
Shape Stroke(std::vector<cv::Point2d> points, double width);

/// Two bars of the given length and width that cross at right angles at the centre.
Shape Cross(cv::Point2d centre, double length, double width, double angle = 0.0);

Shape Either(Shape a, Shape b);
Shape Both(Shape a, Shape b);
Shape Without(Shape a, Shape b);

/// The shape turned about the origin by `angle` degrees (from the x axis towards the y axis), then shifted.
Shape Placed(Shape shape, double angle, cv::Point2d shift);

}  // namespace Quorvane::TestSupport
