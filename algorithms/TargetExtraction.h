#pragma once

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <vector>

namespace Quorvane {

/// From a marked point to a clean template image, and from a match to the shape that belongs there.
///
///     const auto region = FindColourRegion(image, seed, 10.0, 8, 20, false);
///     const auto outline = ExpandContour(image, region, 5);
///     cv::Rect box;
///     const cv::Mat part = CropContourRegion(image, outline, true, box);   // image(box) with its background painted
///     out
///
/// Images are 8-bit, blue-green-red; contours are pixels of the image. An empty contour or image goes through all of
/// these and comes out empty.

/// Distance of two colours in the 8-bit Lab encoding of `cv::cvtColor` (L scaled to 0..255, a and b with their
/// offset): the square root of the sum of the squared differences of the three values.
double LabColourDistance(const cv::Vec3b& bgrA, const cv::Vec3b& bgrB);

/// Outline of the region around `seed` that has the seed's colour.
///
/// The image is cut into squares of side `squareSize`, those at the right and the lower edge into what is left. The
/// region grows from the squares of `directionCount` points on a circle of ten pixels around the seed to all eight
/// neighbours of each accepted square. A square is accepted if its best pixel is nearer than `maxDifference` to the
/// seed's colour (`LabColourDistance`), so one fitting pixel brings in the whole square. The outline of the largest
/// part of the region is returned, traced along its outermost pixels.
///
/// Empty where nothing was accepted, and for a seed outside the image or a `squareSize` below 1.
/// Pixels are read as three bytes without a look at the image's type; only pixels of fewer bytes are refused, with a
/// `cv::Exception`.
///
/// `debug` shows the growth square by square in windows (see ColourRegionDisplay.h), waits for keys, and also closes
/// gaps of the region before it is traced, so the result is not the same.
std::vector<cv::Point> FindColourRegion(const cv::Mat& image, cv::Point seed, double maxDifference, int directionCount,
                                        int squareSize, bool debug);

/// The image made to fit into maxWidth x maxHeight with its proportions kept. Images that fit already come back as a
/// copy, an empty one as it is. Throws `cv::Exception` where less than one pixel would be left.
cv::Mat FitToWindow(const cv::Mat& image, int maxWidth, int maxHeight);

/// The contour widened outwards by `distance` pixels, clipped to the image: the outline of all pixels that are no
/// farther from the filled contour. Distances are those of `cv::distanceTransform` with `cv::DIST_L2` and mask size 5,
/// which are within some hundredths of the Euclidean ones. Of several parts the first that `cv::findContours` lists is
/// returned, and the contour as it was if there is none.
std::vector<cv::Point> ExpandContour(const cv::Mat& image, const std::vector<cv::Point>& contour, int distance);

/// The part of the image in the contour's bounding box, which is stored in `box`, both clipped to the image. With
/// `fillBackground` everything outside the contour is painted in the mean colour just around it, so that no false edge
/// stands between the object and its background.
/// An empty contour gives an empty image and leaves `box` alone; a box beside the image gives an empty image.
cv::Mat CropContourRegion(const cv::Mat& image, const std::vector<cv::Point>& contour, bool fillBackground,
                          cv::Rect& box);

/// Mean colour of the pixels just outside the mask: those that its dilation by one pixel adds. Where there are none,
/// the mean of the whole image.
cv::Scalar RingMeanColour(const cv::Mat& image, const cv::Mat& mask);

/// The points turned about `centre` by `angle` degrees (positive is counter-clockwise as one looks at the image, as in
/// `cv::getRotationMatrix2D`), then shifted by `offset`.
std::vector<cv::Point2f> TransformShape(const std::vector<cv::Point2f>& points, cv::Point2f centre, double angle,
                                        cv::Point2f offset);

}  // namespace Quorvane
