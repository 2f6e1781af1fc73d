// The deviation of a window follows from two sums, that of its values and that of their squares. For 8-bit images
// both are integers, so they can be carried from window to window without any rounding: each column of the window
// keeps its own two sums, which slide down the image row by row, and the window's sums slide across the columns.
// The cost per pixel does not depend on the window, and only the last step, from the two sums to the deviation, is
// floating point: it is done in the same order of operations as in cv::meanStdDev, which makes every bit the same.

#include "algorithms/LocalDeviationMap.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <opencv2/core.hpp>
#include <opencv2/core/hal/intrin.hpp>
#include <vector>

namespace Quorvane {

namespace {

/// The widest window whose sum of squares of 8-bit values fits an `int` (181 x 181 x 255 x 255 is just below 2^31).
constexpr int widestWindowOfInts = 181;

/// The sums of one window of each column, or of the window itself, for a row of windows.
template <typename Sum>
struct RowOfSums {
    explicit RowOfSums(int count) : values(static_cast<std::size_t>(count)), squares(values.size()) {}

    std::vector<Sum> values;
    std::vector<Sum> squares;
};

template <typename Sum>
void AddRow(const uchar* pixels, RowOfSums<Sum>& columns) {
    for (std::size_t c = 0; c < columns.values.size(); ++c) {
        const int value = pixels[c];
        columns.values[c] += static_cast<Sum>(value);
        columns.squares[c] += static_cast<Sum>(value * value);
    }
}

/// Takes the row that leaves the window away and adds the one that enters it.
template <typename Sum>
void SlideDown(const uchar* leaving, const uchar* entering, RowOfSums<Sum>& columns) {
    for (std::size_t c = 0; c < columns.values.size(); ++c) {
        const int out = leaving[c];
        const int in = entering[c];
        columns.values[c] += static_cast<Sum>(in - out);
        columns.squares[c] += static_cast<Sum>(in * in - out * out);
    }
}

/// From the sums of the columns to those of the windows that begin at each column.
template <typename Sum>
void SlideAcross(const RowOfSums<Sum>& columns, int side, RowOfSums<Sum>& windows) {
    const auto width = static_cast<std::size_t>(side);
    Sum value = 0;
    Sum square = 0;
    for (std::size_t c = 0; c < width; ++c) {
        value += columns.values[c];
        square += columns.squares[c];
    }
    for (std::size_t c = 0; c < windows.values.size(); ++c) {
        windows.values[c] = value;
        windows.squares[c] = square;
        value += columns.values[c + width] - columns.values[c];
        square += columns.squares[c + width] - columns.squares[c];
    }
}

float Deviation(double value, double square, double scale) {
    const double mean = value * scale;
    return static_cast<float>(std::sqrt(std::max(square * scale - mean * mean, 0.0)));
}

#if CV_SIMD128 && CV_SIMD128_64F
cv::v_float64x2 Deviation(const cv::v_float64x2& value, const cv::v_float64x2& square, const cv::v_float64x2& scale) {
    const cv::v_float64x2 mean = cv::v_mul(value, scale);
    const cv::v_float64x2 variance = cv::v_sub(cv::v_mul(square, scale), cv::v_mul(mean, mean));
    return cv::v_sqrt(cv::v_max(variance, cv::v_setzero_f64()));
}

/// The deviations of the leading windows, four at a time; returns how many it did.
std::size_t DeviationsOfFours(const RowOfSums<int>& windows, double scale, float* deviations) {
    const cv::v_float64x2 scales = cv::v_setall_f64(scale);
    std::size_t c = 0;
    for (; c + 4 <= windows.values.size(); c += 4) {
        const cv::v_int32x4 value = cv::v_load(&windows.values[c]);
        const cv::v_int32x4 square = cv::v_load(&windows.squares[c]);
        const cv::v_float64x2 low = Deviation(cv::v_cvt_f64(value), cv::v_cvt_f64(square), scales);
        const cv::v_float64x2 high = Deviation(cv::v_cvt_f64_high(value), cv::v_cvt_f64_high(square), scales);
        cv::v_store(deviations + c, cv::v_cvt_f32(low, high));
    }
    return c;
}
#else
std::size_t DeviationsOfFours(const RowOfSums<int>&, double, float*) { return 0; }
#endif

std::size_t DeviationsOfFours(const RowOfSums<double>&, double, float*) { return 0; }

template <typename Sum>
void Deviations(const RowOfSums<Sum>& windows, double scale, float* deviations) {
    std::size_t c = DeviationsOfFours(windows, scale, deviations);
    for (; c < windows.values.size(); ++c) {
        deviations[c] =
            Deviation(static_cast<double>(windows.values[c]), static_cast<double>(windows.squares[c]), scale);
    }
}

template <typename Sum>
void FillBySlidingSums(const cv::Mat& gray, int side, cv::Mat& map) {
    const double scale = 1.0 / (static_cast<double>(side) * side);
    RowOfSums<Sum> columns(gray.cols);
    RowOfSums<Sum> windows(gray.cols - side);
    for (int r = 0; r < side; ++r) AddRow(gray.ptr(r), columns);
    for (int r = 0; r < gray.rows - side; ++r) {
        SlideAcross(columns, side, windows);
        Deviations(windows, scale, map.ptr<float>(r + side / 2) + side / 2);
        SlideDown(gray.ptr(r), gray.ptr(r + side), columns);
    }
}

/// For depths whose sums are too large to slide exactly: every window on its own.
void FillWindowByWindow(const cv::Mat& gray, int side, cv::Mat& map) {
    for (int r = 0; r < gray.rows - side; ++r) {
        for (int c = 0; c < gray.cols - side; ++c) {
            cv::Scalar mean;
            cv::Scalar deviation;
            cv::meanStdDev(gray(cv::Rect(c, r, side, side)), mean, deviation);
            map.at<float>(r + side / 2, c + side / 2) = static_cast<float>(deviation[0]);
        }
    }
}

}  // namespace

cv::Mat LocalDeviationMap(const cv::Mat& gray, int side) {
    cv::Mat map = cv::Mat::zeros(gray.size(), CV_32FC1);
    if (side < 0) static_cast<void>(gray(cv::Rect(0, 0, side, side)));  // throws
    if (side >= gray.rows || side >= gray.cols) return map;
    if (gray.type() != CV_8UC1) {
        FillWindowByWindow(gray, side, map);
    } else if (side <= widestWindowOfInts) {
        FillBySlidingSums<int>(gray, side, map);
    } else {
        FillBySlidingSums<double>(gray, side, map);
    }
    return map;
}

}  // namespace Quorvane
