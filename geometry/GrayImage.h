#pragma once

#include <opencv2/core/mat.hpp>

namespace Quorvane::UtilityFunctions {

/// Any image to one channel: three channels by `cv::COLOR_BGR2GRAY`, four by `cv::COLOR_BGRA2GRAY`, one is cloned.
/// Images of any other channel count, and empty ones, are returned as they are. A depth that the conversion does not
/// know gives its `cv::Exception`.
cv::Mat toGrayImage(cv::Mat image);

/// The same, but the conversion gets to see empty images of three or four channels, too, and refuses them.
cv::Mat toGrayImageStrictly(const cv::Mat& image);

/// As `toGrayImage`, for a reader who looks only at positions with `top` <= y <= `bottom`, interpolating between their
/// neighbours: the result has the size of `image`, but other rows need not hold anything. The positions may lie beyond
/// the image. A one-channel image is not copied.
cv::Mat grayImageBetween(const cv::Mat& image, double top, double bottom);

}  // namespace Quorvane::UtilityFunctions
