#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <opencv2/imgproc.hpp>
#include <opencv2/photo.hpp>

#include "TruncateToInt.h"
#include "calibration/CameraCalibration.h"
#include "calibration/ImageOrientation.h"
#include "calibration/LastError.h"

namespace Quorvane::CameraCalibration {

namespace {

/// Up to this overlap, in pixels, the pictures are laid together without blending.
constexpr float widestHardOverlap = 10.0f;
/// The blended strip reaches this many columns to each side of the seam.
constexpr int halfStripWidth = 10;

/// Of the pictures to join, and so of the joined one.
constexpr int channels = 3;

/// Where picture 1 lies in picture 2's frame.
struct Reach {
    // The upper left corner of the joined picture: never right of or under the origin.
    float minX = 0.0f;
    float minY = 0.0f;
    /// The right end of picture 1, and so the width of the overlap.
    float maxX = 0.0f;
};

Reach WarpedReach(const cv::Mat& homography, cv::Size picture) {
    const auto width = static_cast<float>(picture.width);
    const auto height = static_cast<float>(picture.height);
    const std::vector<cv::Point2f> corners{{0.0f, 0.0f}, {width, 0.0f}, {width, height}, {0.0f, height}};
    std::vector<cv::Point2f> warped;
    // OpenCV would take whatever stands in memory for the elements of a matrix of several channels.
    CV_CheckChannelsEQ(homography.channels(), 1, "a homography has one channel");
    cv::perspectiveTransform(corners, warped, homography);
    Reach reach;
    reach.maxX = warped.front().x;
    for (const cv::Point2f& corner : warped) {
        reach.minX = std::min(reach.minX, corner.x);
        reach.minY = std::min(reach.minY, corner.y);
        reach.maxX = std::max(reach.maxX, corner.x);
    }
    return reach;
}

/// Halves away from zero.
int RoundToInt(float value) { return TruncateToInt(std::round(value)); }

/// Throws for a size whose rows and columns OpenCV cannot count: its scaling keeps the number of a row's values and of
/// the rows together in an `int`, and where that overflows, it writes far outside its tables.
cv::Size Countable(const cv::Size& size) {
    CV_Assert(std::int64_t{size.width} * channels + size.height <= std::numeric_limits<int>::max());
    return size;
}

cv::Size CanvasSize(cv::Size picture2, const Reach& reach) {
    return Countable({RoundToInt(static_cast<float>(picture2.width) - reach.minX),
                      RoundToInt(static_cast<float>(picture2.height) - reach.minY)});
}

/// The homography from picture 1 to the joined picture.
cv::Mat ShiftedToOrigin(const cv::Mat& homography, const Reach& reach) {
    cv::Mat shift = cv::Mat::eye(3, 3, CV_64F);
    shift.at<double>(0, 2) = -static_cast<double>(reach.minX);
    shift.at<double>(1, 2) = -static_cast<double>(reach.minY);
    return shift * homography;
}

void WarpOnto(const cv::Mat& oriented1, const cv::Mat& toCanvas, cv::Size size, cv::Mat& canvas) {
    cv::warpPerspective(oriented1, canvas, toCanvas, size, cv::INTER_LINEAR, cv::BORDER_CONSTANT, cv::Scalar());
}

/// Copies `part` into `canvas` with its upper left corner at `place`. OpenCV refuses what does not fit.
void CopyInto(const cv::Mat& part, cv::Point place, cv::Mat& canvas) {
    cv::Mat target = canvas(cv::Rect(place, part.size()));
    part.copyTo(target);
}

/// Picture 2 over the warped picture 1.
void LayTogether(const cv::Mat& oriented1, const cv::Mat& oriented2, const cv::Mat& homography, const Reach& reach,
                 cv::Mat& joined) {
    const cv::Size size = CanvasSize(oriented2.size(), reach);
    WarpOnto(oriented1, ShiftedToOrigin(homography, reach), size, joined);
    CopyInto(oriented2, {TruncateToInt(-reach.minX), TruncateToInt(-reach.minY)}, joined);
}

/// The warped picture 1 left of the seam, picture 2 right of it, and a strip about it blended.
cv::Mat JoinAtSeam(const cv::Mat& oriented1, const cv::Mat& oriented2, const cv::Mat& homography, const Reach& reach,
                   double& seamX) {
    const cv::Size size = CanvasSize(oriented2.size(), reach);
    const cv::Mat toCanvas = ShiftedToOrigin(homography, reach);
    const int seamColumn = TruncateToInt(reach.maxX * 0.5f);
    const cv::Mat rightPart = oriented2.colRange(seamColumn, oriented2.cols);
    cv::Mat canvas(size, CV_8UC3, cv::Scalar());
    WarpOnto(oriented1, toCanvas, size, canvas);
    CopyInto(rightPart, {seamColumn - TruncateToInt(reach.minX), TruncateToInt(-reach.minY)}, canvas);

    const cv::Mat seamStrip = oriented2(cv::Rect(seamColumn - halfStripWidth, 0, 2 * halfStripWidth, oriented2.rows));
    const float seam = reach.maxX * 0.5f - reach.minX;
    seamX = static_cast<double>(seam);
    const cv::Mat mask(seamStrip.size(), CV_8U, cv::Scalar(255));
    const int middleRow = oriented2.rows / 2;
    const cv::Point center(RoundToInt(seam), RoundToInt(static_cast<float>(middleRow) - reach.minY));
    cv::Mat joined;
    cv::seamlessClone(seamStrip, canvas, mask, center, joined, cv::NORMAL_CLONE);
    return joined;
}

/// OpenCV's blending reads past its buffers for pictures of one channel.
void CheckPicture(const cv::Mat& picture) {
    CV_CheckTypeEQ(picture.type(), CV_8UC3, "pictures to join are 8-bit with 3 channels");
}

}  // namespace

bool DoBlendingImageForDualCam(const cv::Mat& image1, const ImageDirFlags& dir1, const cv::Mat& image2,
                               const ImageDirFlags& dir2, const double& scaleX, const double& scaleY,
                               const cv::Mat& homography, double& seamX, cv::Mat& blended) {
    return ReportingExceptions("DoBlendingImageForDualCam", [&] {
        if (image1.empty() || image2.empty()) return FailWith(missingImagesText);
        CheckPicture(image1);
        CheckPicture(image2);
        const cv::Mat oriented1 = OrientImage(image1, dir1);
        const cv::Mat oriented2 = OrientImage(image2, dir2);
        const Reach reach = WarpedReach(homography, oriented1.size());
        if (reach.maxX <= widestHardOverlap) {
            // Deliberately left at full size, and without a seam: hosts know the case by that.
            LayTogether(oriented1, oriented2, homography, reach, blended);
            return true;
        }
        const cv::Mat joined = JoinAtSeam(oriented1, oriented2, homography, reach, seamX);
        const cv::Size scaled = Countable({TruncateToInt(joined.cols * scaleX), TruncateToInt(joined.rows * scaleY)});
        cv::resize(joined, blended, scaled, 0.0, 0.0, cv::INTER_LINEAR);
        return true;
    });
}

}  // namespace Quorvane::CameraCalibration
