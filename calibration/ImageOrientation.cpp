#include "calibration/ImageOrientation.h"

namespace Quorvane::CameraCalibration {

namespace {

// The second argument of `cv::flip`.
constexpr int topToBottom = 0;
constexpr int leftToRight = 1;

}  // namespace

#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"  // the wrap-around of the narrow field is meant
#endif
ImageDirFlags::ImageDirFlags(int rotate, bool horizontal, bool vertical)
    : rotateCode(rotate), flipHorizontal(horizontal), flipVertical(vertical) {}
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

ImageDirFlags& ImageDirFlags::operator=(const ImageDirFlags& other) = default;
ImageDirFlags& ImageDirFlags::operator=(ImageDirFlags&& other) noexcept = default;

cv::Mat OrientImage(const cv::Mat& source, const ImageDirFlags& direction) {
    // An array of more dimensions is no picture. OpenCV's turns and flips refuse it, but not its copy, of which gray
    // conversions would then make whatever stood in memory.
    CV_Assert(source.dims <= 2);
    cv::Mat oriented;
    if (direction.rotateCode >= cv::ROTATE_90_CLOCKWISE && direction.rotateCode <= cv::ROTATE_90_COUNTERCLOCKWISE) {
        cv::rotate(source, oriented, direction.rotateCode);
    } else {
        oriented = source.clone();
    }
    if (direction.flipVertical) cv::flip(oriented, oriented, topToBottom);
    if (direction.flipHorizontal) cv::flip(oriented, oriented, leftToRight);
    return oriented;
}

}  // namespace Quorvane::CameraCalibration
