#pragma once

#include <opencv2/core/mat.hpp>

namespace Quorvane {

/// Standard deviation of the brightness in the square window around each pixel, as a CV_32FC1 map of the size of
/// `gray`. `side` is the window's side in pixels, odd.
///
/// A window is evaluated where it ends before the last row and the last column, so a band of zeros stays around the
/// map: side/2 wide at the top and left, one pixel wider at the bottom and right. Each value is the one that
/// `cv::meanStdDev` gives for its window, narrowed to float, to the last bit (with OpenCV's own code for it; a vendor's
/// replacement inside OpenCV may round its last bit otherwise).
///
/// A negative `side` gives a `cv::Exception`, as the window that it asks for does not exist.
cv::Mat LocalDeviationMap(const cv::Mat& gray, int side);

}  // namespace Quorvane
