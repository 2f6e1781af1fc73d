#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

namespace Quorvane::Robustness {

/// A picture as a host might hand it in, with the memory around it.
struct HostPicture {
    enum class Shape {
        Empty,
        OnePixel,
        OneRow,
        OneColumn,
        Odd,               ///< 31 x 23: dark on the left, light on the right.
        PartOfALarger,     ///< The same, as a part of a larger image: its rows are not continuous.
        LongRow,           ///< 100,000 x 1
        LongColumn,        ///< 1 x 100,000
        ThreeByThree,      ///< As a homography or a camera matrix.
        FourByOne,         ///< As coefficients of a lens.
        ThreeDimensional,  ///< 4 x 5 x 6, which OpenCV's pictures may be as well.
        NotNumbers,    ///< The odd one with not-a-numbers and infinities all over; of floats only, as the next three.
        OneNotNumber,  ///< With a single one, which leaves most of what is computed from it a number.
        OneInfinity,
        OneHugeNumber,  ///< 1e38: finite, but its square is not.
    };

    Shape shape;
    int depth;
    int channels;
    cv::Mat image;
    cv::Mat memory;  ///< All that lies around it.

    std::string Name() const;
    bool IsFlat() const { return shape != Shape::ThreeDimensional; }
    bool IsEmpty() const { return shape == Shape::Empty; }
    /// Whether the step from dark to light is in it.
    bool HasStep() const { return shape == Shape::Odd || shape == Shape::PartOfALarger; }
    /// Whether differences of the picture with itself are not all numbers. A half float makes infinity of a huge
    /// number.
    bool HasNotNumbers() const {
        return (shape >= Shape::NotNumbers && shape <= Shape::OneInfinity) ||
               (shape == Shape::OneHugeNumber && depth == CV_16F);
    }
    bool IsLong() const { return shape == Shape::LongRow || shape == Shape::LongColumn; }
    bool Has(int depthAsked, int channelsAsked) const { return depth == depthAsked && channels == channelsAsked; }
};

/// Every shape, of 1 to 5 channels and every depth.
const std::vector<HostPicture>& HostPictures();

/// Whether two matrices of any dimensions have the same form and the same bytes.
bool HaveSameBytes(const cv::Mat& a, const cv::Mat& b);

}  // namespace Quorvane::Robustness
