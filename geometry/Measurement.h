#pragma once

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>

#include "QuorvaneExport.h"
#include "geometry/Curve.h"
#include "geometry/Line.h"

namespace Quorvane::UtilityFunctions {

/// The transition that a measurement accepts, told along the direction of its scan. Hosts store these numbers.
enum class EdgePolarity {
    All = 0,       ///< Both; also any number that is not listed.
    Positive = 1,  ///< From dark to light.
    Negative = 2   ///< From light to dark.
};

/// The way a scan runs. The first two serve circles, the others rectangles. Hosts store these numbers.
enum class SearchDirection {
    Outward = 0,      ///< From a circle's centre to its rim.
    Inward = 1,       ///< From a circle's rim to its centre.
    LeftToRight = 2,  ///< Towards +x.
    RightToLeft = 3,  ///< Towards -x.
    TopToBottom = 4,  ///< Towards +y.
    BottomToTop = 5   ///< Towards -y.
};

/// @name Measurements
/// The three measurements work alike. They lay a row of narrow rectangles, the calipers, across a search region, take
/// from each one the first edge that it meets, to a fraction of a pixel, and fit a shape through these points. A
/// caliper that meets no edge adds no point. The shape that comes back is the whole result; there is no status.
///
/// Arguments that all three share:
/// - `image`: 8-bit, 16-bit or float, of one, three (blue, green, red) or four channels (with alpha), one channel also
///   double. Three and four channels become gray as `cv::cvtColor` does it, and its exceptions for depths that it does
///   not know reach the caller. Images of other channel counts or depths, and empty ones, have no edges.
/// - `polarity`: the transition to accept, along the scan.
/// - `sigma`: width of the smoothing derivative filter in pixels; at least 0.4 and at most a quarter of the caliper's
///   length, whatever is asked for.
/// - `threshold`: least amplitude of an edge. A clean step of h gray levels has about 1.25 sigma h.
///
/// An exception while a caliper is measured (memory ran out) is written to standard error, and the next caliper
/// follows.
///@{

/// Measures a straight edge in an axis-parallel rectangle of the given centre and full size, in pixels.
///
///     Line edge;
///     MeasureLine(image, {320, 240}, 60, 200, edge, EdgePolarity::Positive,
///     SearchDirection::LeftToRight, 1.0, 30.0, 1.0);
///
/// The calipers are 6 samples wide, `step` pixels apart, and span the rectangle in the direction of the scan; the
/// directions `Outward` and `Inward` act as `BottomToTop`. The line is fitted with `cv::fitLine` and the robust
/// distance of Welsch. With fewer than two edge points, which includes a `step` of zero or below and a rectangle
/// narrower than `step`, `line` becomes the default `Line`.
QUORVANE_EXPORT void MeasureLine(const cv::Mat& image, const cv::Point2f& center, const double& width,
                                 const double& height, Line& line, EdgePolarity polarity, SearchDirection direction,
                                 const double& sigma, const double& threshold, const double& step);

/// Measures a circular edge between `center` and the circle of `radius` pixels around it.
///
/// The calipers are 11 samples wide and `angleStep` degrees apart, and run from the centre to the rim, or back with
/// `Inward`; every other direction scans outward. The circle is an algebraic least-squares fit through all edge
/// points. `score` is 1 minus the scatter of their distances to the circle, relative to its radius; nothing is
/// withheld for a low score. Far from the origin the radius of a small circle loses digits, the centre does not: at
/// (4000, 4000) a radius of 10 scatters by 0.05.
///
/// With fewer than three edge points `foundCenter`, `foundRadius` and `score` keep their values: set them before the
/// call and compare. An `angleStep` of zero or below is that case too, with a line on standard error.
QUORVANE_EXPORT void MeasureCircle(const cv::Mat& image, const cv::Point2f& center, const double& radius,
                                   cv::Point2f& foundCenter, double& foundRadius, double& score, EdgePolarity polarity,
                                   SearchDirection direction, const double& sigma, const double& threshold,
                                   const double& angleStep);

/// Measures a free curve that crosses every caliper of an axis-parallel rectangle once.
///
/// The calipers are those of `MeasureLine`. `curve.measuredPoints` receives the edge points in the order of the
/// calipers. Points of wild curvature are then dropped and the others smoothed, and `curve.curvePoints` receives 40 to
/// 500 points of a Catmull-Rom curve through them; `curve.meanFitError` is the mean distance of the smoothed points to
/// these. With fewer than three edge points `curvePoints` becomes empty and `meanFitError` keeps its value.
///
/// `reserved` is accepted and ignored.
QUORVANE_EXPORT void MeasureCurve(const cv::Mat& image, const cv::Point2f& center, const double& width,
                                  const double& height, Curve& curve, EdgePolarity polarity, SearchDirection direction,
                                  const double& sigma, const double& threshold, const double& step, int reserved);

///@}

}  // namespace Quorvane::UtilityFunctions

namespace Quorvane {
using UtilityFunctions::EdgePolarity;
using UtilityFunctions::SearchDirection;
}  // namespace Quorvane
