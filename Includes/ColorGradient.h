#pragma once

#include <cstddef>
#include <memory>
#include <opencv2/core/mat.hpp>

#include "Includes/ShapeTemplate.h"

namespace line2Dup {

class ColorGradientPyramid;

/// The settings with which an image becomes quantised gradients and features.
class ColorGradient {
public:
    ColorGradient(float weakThreshold, std::size_t featureCount, float strongThreshold);

    /// A pyramid of the image at its finest level, its gradients computed. An empty mask masks nothing.
    std::shared_ptr<ColorGradientPyramid> makePyramid(const cv::Mat& source, const cv::Mat& mask) const;

    float weakThreshold;       ///< Gradient magnitude below which a pixel gets no orientation.
    std::size_t featureCount;  ///< Wanted number of features at the finest level.
    float strongThreshold;     ///< Gradient magnitude below which a pixel cannot be a feature.
};

/// One image with its mask and its gradients at the current level, from the finest to coarser ones.
/// `ColorGradient::makePyramid` makes it.
class ColorGradientPyramid {
    struct OnlyByMakePyramid {};
    friend class ColorGradient;

public:
    ColorGradientPyramid(const cv::Mat& source, const cv::Mat& sourceMask, const ColorGradient& settings,
                         OnlyByMakePyramid key);

    /// Computes `quantised`, `magnitude` and `rawAngle` from `src`; nothing happens if `src` is empty.
    ///
    /// The image is blurred first. Of three channels the one with the strongest gradient at a pixel counts; on a tie
    /// the first of them. A pixel has an orientation if its magnitude is above `weakThreshold` and five of the nine
    /// pixels around and including it agree on one.
    void computeGradients();

    /// Steps to the next level: half the size, half the features, gradients computed anew.
    void downsample();

    /// Chooses about `featureCount` scattered pixels of strong gradient. Sets `width` and `height` to -1, since the
    /// result is not cropped yet.
    ///
    /// If there are fewer candidates than wanted, a line on standard output says so; of four or fewer nothing is made,
    /// and the answer is false with `out` untouched. A mask of another size than the image's raises `cv::Exception`.
    bool extractFeatures(ShapeTemplate& out) const;

    cv::Mat src;   ///< The image at this level: one channel, or three (blue, green, red).
    cv::Mat mask;  ///< CV_8U, 0 where no features are wanted; may be empty.
    int pyramidLevel = 0;
    cv::Mat quantised;  ///< CV_8U, the one-hot orientation of each pixel or 0.
    cv::Mat magnitude;  ///< CV_32F, squared gradient magnitude.
    cv::Mat rawAngle;   ///< CV_32F, gradient direction in degrees, 0 to 360.
    float weakThreshold;
    std::size_t featureCount;
    float strongThreshold;
};

/// From squared magnitudes and directions in degrees (CV_32F) to one-hot orientations: the label of a pixel is the one
/// that five of the nine pixels around it share, given that its squared magnitude is above the threshold. Pixels of the
/// outermost rows and columns get none, and vote for label 0.
void quantiseByVote(const cv::Mat& magnitude, cv::Mat& quantised, const cv::Mat& angle, float squaredThreshold);

}  // namespace line2Dup
