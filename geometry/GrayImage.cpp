#include "geometry/GrayImage.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>

#include "geometry/GrayChannels.h"

namespace Quorvane::UtilityFunctions {

namespace {

bool IsColour(const cv::Mat& image) { return !image.empty() && (image.channels() == 3 || image.channels() == 4); }

void ConvertColour(const cv::Mat& image, cv::Mat& gray) {
    // An array of more dimensions is no picture. OpenCV would leave the gray one as the memory was.
    CV_Assert(image.dims <= 2);
    cv::cvtColor(image, gray, image.channels() == 3 ? cv::COLOR_BGR2GRAY : cv::COLOR_BGRA2GRAY);
}

}  // namespace

cv::Mat toGrayImage(cv::Mat image) {
    if (image.empty() && image.channels() > 1) return image;
    return toGrayImageStrictly(image);
}

cv::Mat toGrayImageStrictly(const cv::Mat& image) {
    if (image.channels() == 1) return image.clone();
    if (!CanBecomeGray(image)) return image;
    cv::Mat gray;
    ConvertColour(image, gray);
    return gray;
}

cv::Mat grayImageBetween(const cv::Mat& image, double top, double bottom) {
    // A bicubic reading takes two rows below its position; one more absorbs rounding.
    constexpr double margin = 3.0;
    if (!IsColour(image)) return image;
    if (image.dims > 2) return toGrayImage(image);
    // One row at least, so that an image that cannot be converted is refused wherever the reader looks. Positions that
    // are not numbers ask for everything.
    const int lastRow = image.rows - 1;
    const int begin = top - margin > 0.0 ? static_cast<int>(std::min<double>(top - margin, lastRow)) : 0;
    const int end = bottom + margin < lastRow ? static_cast<int>(std::max<double>(bottom + margin, begin)) : lastRow;
    cv::Mat gray(image.size(), CV_MAKETYPE(image.depth(), 1));
    cv::Mat converted = gray.rowRange(begin, end + 1);
    ConvertColour(image.rowRange(begin, end + 1), converted);
    return gray;
}

}  // namespace Quorvane::UtilityFunctions
