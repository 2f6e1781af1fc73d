#pragma once

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <vector>

namespace Quorvane {

/// One rotation and scale of a template image.
struct ShapeVariant {
    float angle;                     ///< Degrees, positive is counter-clockwise as one looks at the image.
    float scale;                     ///< 1 is the size of the template image.
    std::vector<cv::Point> contour;  ///< Outline of the template's mask, in the unrotated image.
    cv::Point2f targetOffset;        ///< The target, in the unrotated image.
    cv::Point2f imageCentre;         ///< Half the size of the template image.
};

/// Enumerates the rotations and scales of a template image.
///
///     ShapeVariantSet set(image, mask);
///     set.angleRange = {0.0f, 360.0f};
///     set.angleStep = 0.2f;
///     set.Produce(target);   // one variant per step
class ShapeVariantSet {
public:
    /// An empty mask stands for one of the image's size that holds everything.
    explicit ShapeVariantSet(const cv::Mat& image, const cv::Mat& imageMask = cv::Mat());

    /// Replaces `variants`. A range is empty (angle 0, scale 1), one value, or the first and the last value; a range of
    /// any other length gives no variants. With two ranges the angle changes faster.
    ///
    /// Values arise by adding the step to the one before in float, up to the last value and `eps` beyond; a step that
    /// does not lead from the first value to the last never ends. The outline is that of the mask's largest part.
    /// A mask that is empty of 255 gives variants without outline, with -1 in target and centre.
    void Produce(cv::Point2f targetOffset);

    /// The image turned about its middle by `angle` degrees and scaled, in a frame of the same size: corners that turn
    /// out of the frame are lost, and what turns into it is 0. An empty image gives an empty one.
    static cv::Mat RotateImage(const cv::Mat& source, float angle, float scale);

    cv::Mat src;
    cv::Mat mask;                   ///< CV_8U
    std::vector<float> angleRange;  ///< Degrees.
    std::vector<float> scaleRange;
    float angleStep = 15.0f;
    float scaleStep = 0.5f;
    float eps = 1e-5f;
    std::vector<ShapeVariant> variants;
};

}  // namespace Quorvane
