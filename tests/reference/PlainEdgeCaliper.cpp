#include "tests/reference/PlainEdgeCaliper.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

namespace Quorvane::Reference {

namespace {

struct Edge {
    double amplitude;
    double position;
};

int CountOfSamples(double half) { return 1 - static_cast<int>(-2.0 * half); }

cv::Mat WorkingImage(const cv::Mat& image) {
    cv::Mat working;
    if (image.channels() == 3) cv::cvtColor(image, working, cv::COLOR_BGR2GRAY);
    if (image.channels() == 4) cv::cvtColor(image, working, cv::COLOR_BGRA2GRAY);
    if (image.channels() == 1) working = image.clone();
    return working;
}

double PixelValue(const cv::Mat& image, int row, int column) {
    if (row < 0 || row >= image.rows || column < 0 || column >= image.cols) return 0.0;
    if (image.type() == CV_8UC1) return image.at<uchar>(row, column);
    if (image.type() == CV_16UC1) return image.at<ushort>(row, column);
    if (image.type() == CV_32FC1) return static_cast<double>(image.at<float>(row, column));
    if (image.type() == CV_64FC1) return image.at<double>(row, column);
    return 0.0;
}

double Nearest(const cv::Mat& image, double x, double y) {
    return PixelValue(image, static_cast<int>(std::round(y)), static_cast<int>(std::round(x)));
}

double Bilinear(const cv::Mat& image, double x, double y) {
    if (x < 0.0 || x >= image.cols - 1 || y < 0.0 || y >= image.rows - 1) return 0.0;
    const int c = static_cast<int>(x);
    const int r = static_cast<int>(y);
    const double fx = x - c;
    const double fy = y - r;
    return (1.0 - fx) * (1.0 - fy) * PixelValue(image, r, c) + fx * (1.0 - fy) * PixelValue(image, r, c + 1) +
           (1.0 - fx) * fy * PixelValue(image, r + 1, c) + fx * fy * PixelValue(image, r + 1, c + 1);
}

double CubicWeight(double t) {
    if (t <= 1.0) return 1.5 * t * t * t - 2.5 * t * t + 1.0;
    if (t < 2.0) return -0.5 * t * t * t + 2.5 * t * t - 4.0 * t + 2.0;
    return 0.0;
}

double Bicubic(const cv::Mat& image, double x, double y) {
    if (x < 1.0 || x >= image.cols - 2 || y < 1.0 || y >= image.rows - 2) return Bilinear(image, x, y);
    const int c = static_cast<int>(x);
    const int r = static_cast<int>(y);
    double sum = 0.0;
    for (int i = -1; i <= 2; ++i) {
        for (int j = -1; j <= 2; ++j) {
            const double wx = CubicWeight(std::abs(j - (x - c)));
            const double wy = CubicWeight(std::abs(i - (y - r)));
            sum += PixelValue(image, r + i, c + j) * wx * wy;
        }
    }
    return sum;
}

std::vector<double> Kernel(double sigma) {
    auto size = static_cast<int>(std::ceil(6.0 * sigma));
    if (size % 2 == 0) ++size;
    std::vector<double> kernel;
    double sum = 0.0;
    for (int k = 0; k < size; ++k) {
        const double x = k - size / 2;
        kernel.push_back(std::exp(-(x * x) / (2.0 * sigma * sigma)) * (x / (sigma * sigma)));
        sum += std::abs(kernel.back());
    }
    if (sum > 1e-10) {
        for (double& element : kernel) element /= sum;
    }
    return kernel;
}

std::vector<double> Derivative(const std::vector<double>& profile, const std::vector<double>& kernel) {
    const auto n = static_cast<int>(profile.size());
    const auto size = static_cast<int>(kernel.size());
    std::vector<double> d;
    for (int i = 0; i < n; ++i) {
        double sum = 0.0;
        for (int k = 0; k < size; ++k) {
            const int at = i - size / 2 + k;
            if (at < 0 || at >= n) continue;
            sum += kernel[static_cast<std::size_t>(k)] * profile[static_cast<std::size_t>(at)];
        }
        d.push_back(sum);
    }
    return d;
}

std::vector<Edge> Candidates(const std::vector<double>& d, double g, double threshold, const std::string& transition) {
    std::vector<Edge> edges;
    const std::size_t n = d.size();
    if (n < 5) return edges;
    std::vector<double> e(n, 0.0);
    for (std::size_t i = 1; i + 1 < n; ++i) e[i] = d[i + 1] - d[i - 1];
    for (std::size_t i = 2; i <= n - 3; ++i) {
        if (!(e[i - 1] * e[i + 1] < 0.0)) continue;
        if (!(std::abs(d[i] * g) >= threshold)) continue;
        if (transition == "positive" && !(d[i] > 0.0)) continue;
        if (transition == "negative" && !(d[i] < 0.0)) continue;
        const double y0 = std::abs(d[i - 1]);
        const double y1 = std::abs(d[i]);
        const double y2 = std::abs(d[i + 1]);
        const double q = 2.0 * (y0 - 2.0 * y1 + y2);
        const auto index = static_cast<double>(i);
        edges.push_back({d[i] * g, std::abs(q) < 1e-10 ? index : index + (y0 - y2) / q});
    }
    return edges;
}

}  // namespace

void EdgeCaliper::configure(double centreRow, double centreColumn, double scanAngle, double halfTheLength,
                            double halfTheWidth, const std::string& kindOfInterpolation) {
    row = centreRow;
    column = centreColumn;
    angle = scanAngle;
    halfLength = halfTheLength;
    interpolation = kindOfInterpolation;
    sampleGrid.clear();
    const double co = std::cos(angle);
    const double si = std::sin(angle);
    for (int i = 0; i < CountOfSamples(halfLength); ++i) {
        const double s = i - halfLength;
        std::vector<cv::Point2d> across;
        for (int j = 0; j < CountOfSamples(halfTheWidth); ++j) {
            const double t = j - halfTheWidth;
            across.emplace_back(s * co + column - t * si, t * co + (s * si + row));
        }
        sampleGrid.push_back(across);
    }
}

double EdgeCaliper::ReadAt(const cv::Mat& working, double x, double y) const {
    if (interpolation == "nearest") return Nearest(working, x, y);
    if (interpolation == "bicubic") return Bicubic(working, x, y);
    return Bilinear(working, x, y);
}

std::vector<double> EdgeCaliper::Profile(const cv::Mat& working) const {
    std::vector<double> profile;
    for (const std::vector<cv::Point2d>& across : sampleGrid) {
        double sum = 0.0;
        int count = 0;
        for (const cv::Point2d& p : across) {
            if (!(p.x >= 0.0 && p.x < working.cols && p.y >= 0.0 && p.y < working.rows)) continue;
            sum += ReadAt(working, p.x, p.y);
            ++count;
        }
        profile.push_back(count > 0 ? sum / count : 0.0);
    }
    return profile;
}

bool EdgeCaliper::measure(const cv::Mat& image, double sigma, double threshold, const std::string& transition,
                          const std::string& select, std::vector<double>& rows, std::vector<double>& columns,
                          std::vector<double>& amplitudes, std::vector<double>& distances) const {
    const cv::Mat working = WorkingImage(image);
    sigma = std::min(0.5 * halfLength, std::max(0.4, sigma));
    if (transition != "all" && transition != "positive" && transition != "negative") {
        throw std::invalid_argument("Invalid transition parameter");
    }
    if (select != "all" && select != "first" && select != "last") {
        throw std::invalid_argument("Invalid select parameter");
    }
    rows.clear();
    columns.clear();
    amplitudes.clear();
    distances.clear();
    const std::vector<double> d = Derivative(Profile(working), Kernel(sigma));
    std::vector<Edge> edges = Candidates(d, std::sqrt(2.0 * CV_PI) * sigma, threshold, transition);
    if (select == "first" && !edges.empty()) edges.resize(1, edges.front());
    if (select == "last" && !edges.empty()) edges.erase(edges.begin(), edges.end() - 1);
    for (const Edge& edge : edges) {
        const double s = edge.position - halfLength;
        columns.push_back(s * std::cos(angle) + column);
        rows.push_back(s * std::sin(angle) + row);
        amplitudes.push_back(edge.amplitude);
    }
    for (std::size_t i = 1; i < edges.size(); ++i) {
        const double dx = columns[i] - columns[i - 1];
        const double dy = rows[i] - rows[i - 1];
        distances.push_back(std::sqrt(dx * dx + dy * dy));
    }
    return !rows.empty() && !columns.empty();
}

}  // namespace Quorvane::Reference
