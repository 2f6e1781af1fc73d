#pragma once

#include <opencv2/core/matx.hpp>
#include <opencv2/core/types.hpp>
#include <string>
#include <vector>

#include "QuorvaneExport.h"

namespace Quorvane::UtilityFunctions {

/// A straight line in the image plane, kept in three equivalent forms at once so that every reader takes the one that
/// it needs: the general form a x + b y + c = 0, a point with a direction, and slope with intercept.
///
///     Line edge(cv::Point2f(0, 1), cv::Point2f(1, 3));
///     edge.slope;                                        // 2
///     edge.distanceToPoint({0, 0});                      // 0.447...
///     edge.toString();                                   // "Line: y = 2.00x + 1.00"
///
/// Coordinates are pixels, x to the right, y down; all arithmetic is in `float`. The constructors and the `from...`
/// functions scale (a, b, c) so that a^2 + b^2 = 1. A line counts as vertical when the deciding figure, widened to
/// `double`, is below 1e-7 in amount. Nothing here checks its arguments or throws.
class QUORVANE_EXPORT Line {
public:
    float a;                ///< Coefficient of x.
    float b;                ///< Coefficient of y.
    float c;                ///< Constant term.
    cv::Point2f linePoint;  ///< One point on the line.
    cv::Point2f direction;  ///< Of unit length, except after `fromVec4f`.
    float slope;            ///< k of y = k x + m; +infinity for a vertical line.
    float intercept;        ///< m of y = k x + m; for a vertical line the x of the line.
    bool isVertical;        ///< Whether the line runs along y, to the tolerance above.

    /// The x axis: a = 0, b = -1, c = 0, direction (1, 0). The measurements give this line when they found none.
    Line();
    /// As `fromTwoPoints`.
    Line(const cv::Point2f& p1, const cv::Point2f& p2);
    /// As `fromVec4f`.
    Line(const cv::Vec4f& v);
    /// As `fromSlopeIntercept`.
    Line(float k, float m);
    /// As `fromGeneralForm`.
    Line(float generalA, float generalB, float generalC);

    ///@{
    /// The same line.
    Line(const Line& other) = default;
    Line& operator=(const Line& other);
    Line& operator=(Line&& other) noexcept;
    ///@}

    /// The line from p1 towards p2. A vertical one is set to (a, b, c) = (1, 0, -x) and always points to +y, whatever
    /// the order of the points.
    void fromTwoPoints(const cv::Point2f& p1, const cv::Point2f& p2);

    /// From (vx, vy, x, y), the layout of `cv::fitLine`. The direction is kept as it is, also where it is not of unit
    /// length.
    void fromVec4f(const cv::Vec4f& v);

    /// y = k x + m; the line's point is (0, m).
    void fromSlopeIntercept(float k, float m);

    /// generalA x + generalB y + generalC = 0; the line's point is where it crosses the axis that it meets more
    /// steeply. (0, 0, c) stays as it is and gets the direction (0, 0) and a point and an intercept that are infinite
    /// or not numbers.
    void fromGeneralForm(float generalA, float generalB, float generalC);

    /// (vx, vy, x, y): the direction, then the line's point.
    cv::Vec4f toVec4f() const;

    /// abs(a x + b y + c), without a division: the distance in pixels as long as (a, b) is of unit length.
    float distanceToPoint(const cv::Point2f& p) const;

    /// The points `t` direction vectors before and after the line's point, for drawing.
    void getEndPoints(cv::Point2f& p1, cv::Point2f& p2, float t = 1000.0f) const;

    /// Where the line crosses the borders x = 0, x = width, y = 0 and y = height of an image: top, bottom, left, right.
    /// If there are three or more such points, a later one within less than 1.0 pixel of an earlier one is left out;
    /// two points are returned however near they are.
    ///
    /// Horizontal and vertical lines give no point at all. That is deliberate: hosts count on the empty list.
    std::vector<cv::Point2f> getIntersectionWithImage(const cv::Size& size) const;

    /// "Line: y = 2.00x + 1.00" or "Vertical line: x = 3.00".
    std::string toString() const;

private:
    void normalizeGeneralForm();
    void calculateSlopeIntercept();
};

/// The point where two lines meet. Returns false and leaves `point` alone where the determinant a1 b2 - a2 b1 (for
/// normalised lines the sine of the angle between them) is below `epsilon` in amount; exactly `epsilon` is enough.
/// With `epsilon` 0, parallel lines therefore give true and coordinates that are infinite or not numbers.
QUORVANE_EXPORT bool computeIntersection(const Line& l1, const Line& l2, cv::Point2f& point, float epsilon = 1e-7f);

/// The centre of a quadrilateral, given by its sides: l1 and l2 are one pair of opposite sides, l3 and l4 the other.
/// It is the mean of the four corners. Returns false and leaves `center` alone if any corner does not exist because
/// two sides that should meet are parallel.
QUORVANE_EXPORT bool computeQuadrilateralCenterRobust(const Line& l1, const Line& l2, const Line& l3, const Line& l4,
                                                      cv::Point2f& center);

}  // namespace Quorvane::UtilityFunctions

namespace Quorvane {
using UtilityFunctions::Line;
}
