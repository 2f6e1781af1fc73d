#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <opencv2/core/mat.hpp>

namespace Quorvane::UtilityFunctions {

/// Reads a one-channel image of element type `Pixel` at whole and at fractional positions, as `double`. The centre of
/// the pixel in column 0 and row 0 is the point (0, 0). Positions are to be finite.
template <typename Pixel>
class PixelReader {
public:
    explicit PixelReader(const cv::Mat& image)
        : data_(image.data),
          step_(static_cast<std::ptrdiff_t>(image.step[0])),
          rows_(image.rows),
          columns_(image.cols),
          width_(image.cols),
          height_(image.rows),
          lastColumn_(image.cols - 1),
          lastRow_(image.rows - 1) {}

    /// Whether a position belongs to the image: 0 <= x < columns and 0 <= y < rows.
    bool Holds(double x, double y) const { return x >= 0.0 && x < width_ && y >= 0.0 && y < height_; }

    /// Whether all four neighbours of a position exist. The last row and column do not count.
    bool HoldsNeighbours(double x, double y) const { return x >= 0.0 && x < lastColumn_ && y >= 0.0 && y < lastRow_; }

    /// The pixel; 0 outside the image.
    double pixelValueAt(int row, int column) const {
        if (row < 0 || row >= rows_ || column < 0 || column >= columns_) return 0.0;
        return Row(row)[column];
    }

    /// The nearest pixel, halves away from zero. `(x, y)` is to be inside the image.
    double nearest(double x, double y) const {
        return pixelValueAt(static_cast<int>(std::round(y)), static_cast<int>(std::round(x)));
    }

    /// The four neighbours, weighted by their nearness; 0 where one of them is missing. So positions in the last row
    /// and column read as 0. That is deliberate: what calipers find near a border depends on it.
    double interpolateBilinear(double x, double y) const { return HoldsNeighbours(x, y) ? OfNeighbours(x, y) : 0.0; }

    /// `interpolateBilinear` for a position known to have its neighbours.
    double OfNeighbours(double x, double y) const {
        const int column = static_cast<int>(x);
        const int row = static_cast<int>(y);
        const double fx = x - column;
        const double fy = y - row;
        const Pixel* upper = Row(row) + column;
        const Pixel* lower = Row(row + 1) + column;
        return (1.0 - fx) * (1.0 - fy) * upper[0] + fx * (1.0 - fy) * upper[1] + (1.0 - fx) * fy * lower[0] +
               fx * fy * lower[1];
    }

    /// The sixteen neighbours, weighted by the cubic convolution kernel with a = -1/2 (R. Keys, "Cubic Convolution
    /// Interpolation for Digital Image Processing", 1981); bilinear where one of them is missing.
    double interpolateBicubic(double x, double y) const {
        if (!(x >= 1.0 && x < columns_ - 2 && y >= 1.0 && y < rows_ - 2)) return interpolateBilinear(x, y);
        const int column = static_cast<int>(x);
        const int row = static_cast<int>(y);
        const std::array<double, 4> wx = CubicWeights(x - column);
        const std::array<double, 4> wy = CubicWeights(y - row);
        double sum = 0.0;
        for (int i = 0; i < 4; ++i) {
            const Pixel* pixels = Row(row - 1 + i) + column - 1;
            for (int j = 0; j < 4; ++j) {
                sum += pixels[j] * wx[static_cast<std::size_t>(j)] * wy[static_cast<std::size_t>(i)];
            }
        }
        return sum;
    }

private:
    const Pixel* Row(int row) const { return reinterpret_cast<const Pixel*>(data_ + row * step_); }

    static double CubicWeight(double t) {
        if (t <= 1.0) return 1.5 * t * t * t - 2.5 * t * t + 1.0;
        if (t < 2.0) return -0.5 * t * t * t + 2.5 * t * t - 4.0 * t + 2.0;
        return 0.0;
    }

    /// Of the neighbours at -1, 0, 1 and 2.
    static std::array<double, 4> CubicWeights(double fraction) {
        return {CubicWeight(1.0 + fraction), CubicWeight(fraction), CubicWeight(1.0 - fraction),
                CubicWeight(2.0 - fraction)};
    }

    const uchar* data_;
    std::ptrdiff_t step_;
    int rows_;
    int columns_;
    double width_;
    double height_;
    double lastColumn_;
    double lastRow_;
};

/// Calls `use` with the reader of a one-channel image. Returns false where there is none: for other channel counts
/// and depths, and for arrays that are not images.
template <typename Use>
bool WithPixelReader(const cv::Mat& image, Use use) {
    if (image.empty() || image.dims > 2) return false;
    switch (image.type()) {
        case CV_8UC1: use(PixelReader<uchar>(image)); return true;
        case CV_16UC1: use(PixelReader<ushort>(image)); return true;
        case CV_32FC1: use(PixelReader<float>(image)); return true;
        case CV_64FC1: use(PixelReader<double>(image)); return true;
        default: return false;
    }
}

}  // namespace Quorvane::UtilityFunctions
