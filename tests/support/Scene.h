#pragma once

#include <cstdint>
#include <opencv2/core/mat.hpp>

#include "tests/support/Shapes.h"

namespace Quorvane::TestSupport {

/// A picture with known geometry. Shapes are painted anti-aliased: the share of a pixel that a shape covers is taken
/// over a grid of 16 by 16 points in it. The centre of the pixel in column 0 and row 0 is the point (0, 0), and the
/// pixel reaches half a pixel to each side, as in OpenCV's sub-pixel results.
///
///     cv::Mat plate = Scene({640, 480}, 40.0).Paint(Disc({320.25, 240.5}, 50.0), 220.0).Blur(1.0).Noise(2.0,
///     7).Gray();
///
/// Colours are blue, green, red from 0 to 255; a single number paints all three alike. All steps work on floats and
/// nothing is rounded or limited before the picture is taken.
class Scene {
public:
    Scene(cv::Size size, double background);
    Scene(cv::Size size, const cv::Scalar& background);
    /// Begins with a picture, 8-bit of one or three channels.
    explicit Scene(const cv::Mat& picture);

    Scene& Paint(const Shape& shape, double colour);
    Scene& Paint(const Shape& shape, const cv::Scalar& colour);

    /// Gaussian blur with the given sigma in pixels, as of a lens out of focus.
    Scene& Blur(double sigma);

    /// Light that changes linearly from left to right, from factor `left` to factor `right`.
    Scene& Light(double left, double right);

    /// Adds normal noise of the given deviation in gray levels, independent for each pixel and channel.
    Scene& Noise(double deviation, std::uint32_t seed);

    /// The picture, 8-bit: three channels blue, green, red; four with a full fourth one; or one (the mean weighted as
    /// OpenCV's conversion weights it).
    cv::Mat Colour() const;
    cv::Mat ColourWithAlpha() const;
    cv::Mat Gray() const;

private:
    cv::Mat canvas_;  // CV_32FC3
};

}  // namespace Quorvane::TestSupport
