#pragma once

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <vector>

#include "QuorvaneExport.h"

namespace Quorvane::UtilityFunctions {

/// @name Contours
/// Functions on contours (lists of corners in order), turned rectangles, crops and homographies. Coordinates are pixels
/// or machine units alike, x to the right, y down; angles are degrees, positive from +x towards +y. All are pure but
/// for their output arguments. None reports anything but through its result.
///@{

/// Shift and rotation between two lists of matching points.
///
/// `sourceCenter` becomes the centroid of `source`, and `offset` that centroid minus the centroid of `target`: it leads
/// from the target to the source. `angle` is the rotation between the lists about their centroids. Its sign depends on
/// their length: for a target that is the source turned by +t, two points give +t, three and more give -t. Lists of
/// different length or of fewer than two points have the angle 0; the centroid of an empty list is not a number.
///
///     AlignPoints(drawn, found, offset, center, angle);   // found + offset lies on drawn, up to the rotation
QUORVANE_EXPORT void AlignPoints(const std::vector<cv::Point2f>& source, const std::vector<cv::Point2f>& target,
                                 cv::Point2f& offset, cv::Point2f& sourceCenter, double& angle);

/// Length of the closed polygon, the edge from the last corner to the first included; 0 for an empty list.
QUORVANE_EXPORT double CalPerimeterOfContour(const std::vector<cv::Point2f>& contour);

/// Mean direction of the closed polygon's edges in degrees.
///
/// Each edge's direction lies in -180 to 180; the result is their plain arithmetic mean, so edges on both sides of 180
/// do not average as a person would expect. An empty list gives not-a-number.
QUORVANE_EXPORT float CalculateAverageAngle(const std::vector<cv::Point2f>& contour);

/// The homography whose output is `scale` times as large: a copy (CV_64F) with rows 0 and 1 multiplied by `scale`.
/// Anything but 3 x 3 gives an empty matrix.
QUORVANE_EXPORT cv::Mat CalculateExpansionHomography(const cv::Mat& homography, double scale);

/// Cuts a rectangle of `width` x `height` pixels around a point out of an image.
///
/// The rectangle begins at the truncated centre minus half the size. At the left and the top border it is shifted into
/// the image and keeps its size; at the right and the bottom it is cut off. With `keepImageSize` the result has the
/// size of the image and is black outside the rectangle. An empty image gives an empty result. A rectangle that begins
/// beyond the right or bottom border, and a negative size, give a `cv::Exception`.
QUORVANE_EXPORT cv::Mat CutImageBasePoint(const cv::Mat& image, const cv::Point2f& center, const int& width,
                                          const int& height, const bool& keepImageSize);

/// The two points of a list that are farthest apart; of equal pairs the first. Compares every pair. With fewer than two
/// points, or if all are equal, `first` and `second` keep their values and `distance` is 0.
QUORVANE_EXPORT void FindFarthestPairPointInContour(const std::vector<cv::Point2f>& contour, cv::Point2f& first,
                                                    cv::Point2f& second, float& distance);

/// The bounding rectangle whose sides are turned by the given angle in degrees. Nothing is minimised. Its size is of
/// whole pixels and counts both borders, as `cv::boundingRect` does; its centre is halved in whole pixels.
QUORVANE_EXPORT cv::RotatedRect GetMinAreaRectAtAngle(const std::vector<cv::Point2f>& points, float angle);

/// Not the bounding box, but a rectangle that hosts rely on: with W and H the width and height of the box, it is
/// spanned by the box's upper left corner and the point (W, H). It is the box only where that touches the origin.
/// Coordinates below zero do not lower the box's right and lower border.
QUORVANE_EXPORT cv::Rect2f GetMinimumBoundingRectangle(const std::vector<cv::Point2f>& points);

/// One corner of a turned rectangle, in the order of `cv::RotatedRect::points`: lower left, upper left, upper right,
/// lower right. `index` is 0 to 3; only its two lowest bits are looked at.
QUORVANE_EXPORT cv::Point2f GetRotateRectConner(cv::RotatedRect rect, int index);

/// A copy sorted by x, points of the same x by y.
///
/// Where x differs by less than 0.0001, a point with the larger x may also count as the lesser one by its y. The order
/// of such points depends on the order in which they come.
QUORVANE_EXPORT std::vector<cv::Point2f> SortContour(const std::vector<cv::Point2f>& contour);

///@}

}  // namespace Quorvane::UtilityFunctions
