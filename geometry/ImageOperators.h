#pragma once

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <vector>

#include "QuorvaneExport.h"

namespace Quorvane::UtilityFunctions {

/// @name Image operators
/// Operators on whole pictures. Colour pictures are 8-bit in the order blue, green, red; positions are pixels.
///@{

/// A pencil drawing of a picture: dark lines where the brightness bends, mixed with the gray picture.
///
/// `intensity` is the share of the drawing in percent, limited to 0 to 100. `result` becomes an 8-bit picture of one
/// channel, stretched to the full range from 0 to 255. The source has one channel, three, or four (with alpha); with
/// any other count nothing happens and `result` keeps its value. An empty source, and depths other than 8 bits, give a
/// `cv::Exception`. A picture without any contrast gives black.
QUORVANE_EXPORT void ApplySketchFilter(const cv::Mat& source, cv::Mat& result, int intensity);

/// Fills small gaps in large regions of like colour, each with the mean colour around it.
///
/// Regions are grown pixel by pixel over all eight neighbours as long as the distance in OpenCV's 8-bit Lab to the
/// region's first pixel is at most `colorTolerance`. Those of more than `areaLimit` pixels are closed with a disc of
/// `closeRadius` pixels, and what the closing adds are the holes. A hole whose outline encloses less than `areaLimit`
/// is painted; if it encloses more than 2 `expandRadius`^2, it is first widened by a disc of `expandRadius` pixels.
/// Both tests against `areaLimit` are strict: zero lets every region count and fills nothing.
///
/// Holes are painted one after the other, and a colour that was painted counts in the mean around the next hole. An
/// empty source gives an empty result. A fourth channel (alpha) is not compared, but painted with its mean as the
/// others are. Depths other than 8 bits, other channel counts than three and four, and negative radii give a
/// `cv::Exception`.
QUORVANE_EXPORT cv::Mat fillHolesMorphologicalEnhanced(const cv::Mat& source, double colorTolerance, int areaLimit,
                                                       int closeRadius, int expandRadius);

/// The pixel whose colour stands best for the area inside a contour.
///
/// The pixels inside, the outline included, are sorted by their Lab colour into 16 x 32 x 32 bins. Of the bin that
/// holds most of them (of equal ones the first by L, then a, then b), the result is the pixel next to the bin's mean
/// colour (of equal ones the first by row, then column). An empty image, an empty contour and a contour that encloses
/// no pixel of the image give (-1, -1). A fourth channel (alpha) is not looked at. Depths other than 8 bits, and other
/// channel counts than three and four, give a `cv::Exception`.
QUORVANE_EXPORT cv::Point findDominantLABColorPointInContour(const cv::Mat& image,
                                                             const std::vector<cv::Point>& contour);

/// The connected regions whose brightness lies in `lower` to `upper`, both included.
///
/// For each region a mask (the region 255, holes filled, the rest 0; size and type of the gray image) is appended to
/// `regions`, and the centre of its bounding box to `centers`; for a crescent that lies off the region. The lists are
/// not cleared first. A picture of other than one, three or four channels does nothing. An empty one writes
/// "无效的输入图像！" to standard error. Half floats, and colours of other depths than 8 or 16 bits without sign and
/// floats, give a `cv::Exception`.
QUORVANE_EXPORT void ThresholdAndFindAllRegionCenter(const cv::Mat& image, const int& lower, const int& upper,
                                                     std::vector<cv::Mat>& regions, std::vector<cv::Point2f>& centers);

///@}

}  // namespace Quorvane::UtilityFunctions
