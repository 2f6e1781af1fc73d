#include "tests/reference/PlainMeasurement.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstddef>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "tests/reference/PlainEdgeCaliper.h"

namespace Quorvane::Reference {

namespace {

struct CurveSample {
    cv::Point2f point;
    int index;
    double scanCoordinate;
};

cv::Mat Gray(const cv::Mat& image) {
    cv::Mat gray = image;
    if (image.channels() == 3) cv::cvtColor(image, gray, cv::COLOR_BGR2GRAY);
    if (image.channels() == 4) cv::cvtColor(image, gray, cv::COLOR_BGRA2GRAY);
    if (image.channels() == 1) gray = image.clone();
    return gray;
}

std::string TransitionText(EdgePolarity polarity) {
    if (polarity == EdgePolarity::Positive) return "positive";
    if (polarity == EdgePolarity::Negative) return "negative";
    return "all";
}

bool FirstEdge(const cv::Mat& gray, double row, double column, double angle, double halfLength, double halfWidth,
               EdgePolarity polarity, double sigma, double threshold, cv::Point2f& edge) {
    EdgeCaliper caliper;
    caliper.configure(row, column, angle, halfLength, halfWidth, "bilinear");
    std::vector<double> rows;
    std::vector<double> columns;
    std::vector<double> amplitudes;
    std::vector<double> distances;
    const bool found = caliper.measure(gray, sigma, threshold, TransitionText(polarity), "first", rows, columns,
                                       amplitudes, distances);
    if (!found || rows.empty()) return false;
    edge = cv::Point2f(static_cast<float>(columns[0]), static_cast<float>(rows[0]));
    return true;
}

std::vector<CurveSample> EdgesOfRow(const cv::Mat& image, const cv::Point2f& center, double width, double height,
                                    EdgePolarity polarity, SearchDirection direction, double sigma, double threshold,
                                    double step) {
    const cv::Mat gray = Gray(image);
    const bool alongX = direction == SearchDirection::LeftToRight || direction == SearchDirection::RightToLeft;
    double angle = -CV_PI / 2.0;
    if (direction == SearchDirection::LeftToRight) angle = 0.0;
    if (direction == SearchDirection::RightToLeft) angle = CV_PI;
    if (direction == SearchDirection::TopToBottom) angle = CV_PI / 2.0;
    const double extent = alongX ? height : width;
    const double halfLength = (alongX ? width : height) / 2.0;
    const double x = center.x;
    const double y = center.y;
    std::vector<CurveSample> samples;
    if (!(step > 0.0)) return samples;
    const auto n = static_cast<int>(extent / step);
    for (int k = 0; k < n; ++k) {
        const cv::Point2f place =
            alongX ? cv::Point2f(center.x, static_cast<float>(y - height / 2.0 + k * step + step / 2.0))
                   : cv::Point2f(static_cast<float>(x - width / 2.0 + k * step + step / 2.0), center.y);
        cv::Point2f edge;
        if (FirstEdge(gray, place.y, place.x, angle, halfLength, 2.5, polarity, sigma, threshold, edge)) {
            samples.push_back({edge, k, alongX ? place.y : place.x});
        }
    }
    return samples;
}

std::vector<cv::Point2f> WithoutOutliers(const std::vector<cv::Point2f>& p, double factor) {
    const std::size_t n = p.size();
    if (n < 5) return p;
    std::vector<double> curvature(n, 0.0);
    std::vector<bool> marked(n, false);
    std::vector<double> sorted;
    for (std::size_t i = 2; i <= n - 3; ++i) {
        const float dx = (p[i + 1].x - p[i - 1].x) / 2.0f;
        const float dy = (p[i + 1].y - p[i - 1].y) / 2.0f;
        const float ddx = p[i + 1].x - 2.0f * p[i].x + p[i - 1].x;
        const float ddy = p[i + 1].y - 2.0f * p[i].y + p[i - 1].y;
        const float base = std::sqrt(dx * dx + dy * dy);
        if (!(base > 1e-6)) continue;
        curvature[i] = std::abs(ddy * dx - ddx * dy) / std::pow(static_cast<double>(base), 3.0);
        marked[i] = true;
        sorted.push_back(curvature[i]);
    }
    if (sorted.empty()) return p;
    std::sort(sorted.begin(), sorted.end());
    const double med = sorted[sorted.size() / 2];
    std::vector<double> deviations;
    for (const double value : sorted) deviations.push_back(std::abs(value - med));
    std::sort(deviations.begin(), deviations.end());
    const double dev = deviations[deviations.size() / 2];
    const double limit = factor * 1.4826 * dev + med;
    std::vector<cv::Point2f> kept;
    for (std::size_t i = 0; i < n; ++i) {
        if (!marked[i] || !(curvature[i] > limit)) kept.push_back(p[i]);
    }
    return kept;
}

std::vector<cv::Point2f> Smoothed(const std::vector<cv::Point2f>& p) {
    const auto n = static_cast<int>(p.size());
    std::vector<cv::Point2f> result;
    for (int i = 0; i < n; ++i) {
        double x = 0.0;
        double y = 0.0;
        double sum = 0.0;
        for (int k = -3; k <= 3; ++k) {
            if (i + k < 0 || i + k >= n) continue;
            const double w = std::exp(-(k * k) / 2.0);
            x += p[static_cast<std::size_t>(i + k)].x * w;
            y += p[static_cast<std::size_t>(i + k)].y * w;
            sum += w;
        }
        result.emplace_back(static_cast<float>(x / sum), static_cast<float>(y / sum));
    }
    return result;
}

int SampleCount(const std::vector<cv::Point2f>& p, int degree) {
    const std::size_t n = p.size();
    if (n < 3) return std::max(3 * static_cast<int>(n), 20);
    double length = 0.0;
    for (std::size_t i = 1; i < n; ++i) length += cv::norm(p[i] - p[i - 1]);
    double turn = 0.0;
    for (std::size_t i = 2; i < n; ++i) {
        const float before = std::atan2(p[i - 1].y - p[i - 2].y, p[i - 1].x - p[i - 2].x);
        const float after = std::atan2(p[i].y - p[i - 1].y, p[i].x - p[i - 1].x);
        double change = std::abs(after - before);
        if (change > CV_PI) change = 2.0 * CV_PI - change;
        turn = std::max(turn, change);
    }
    double spacing = 2.0;
    if (turn > 0.2617993877991494) spacing = 1.5;
    if (turn > 0.7853981633974483) spacing = 1.0;
    return std::max(std::min(std::max(static_cast<int>(std::ceil(length / spacing)), (degree + 1) * 10), 500), 20);
}

std::vector<cv::Point2f> Resampled(const std::vector<cv::Point2f>& p, int count) {
    const auto n = static_cast<int>(p.size());
    if (n < 2) return p;
    const auto at = [&](int i) { return cv::Point2d(p[static_cast<std::size_t>(i)]); };
    std::vector<double> c(1, 0.0);
    for (std::size_t i = 1; i < p.size(); ++i) c.push_back(c.back() + cv::norm(p[i] - p[i - 1]));
    const double total = c.back();
    for (std::size_t i = 1; i < p.size(); ++i) c[i] /= total;
    std::vector<cv::Point2f> result;
    for (int k = 0; k < count; ++k) {
        const double t = static_cast<double>(k) / (count - 1);
        int s = 0;
        for (int i = 0; i + 1 < n; ++i) {
            if (c[static_cast<std::size_t>(i)] <= t && t <= c[static_cast<std::size_t>(i) + 1]) {
                s = i;
                break;
            }
        }
        const double begin = c[static_cast<std::size_t>(s)];
        const double u = (t - begin) / (c[static_cast<std::size_t>(s) + 1] - begin);
        const double u2 = u * u;
        const double u3 = u2 * u;
        const cv::Point2d m0 = s > 0 ? (at(s + 1) - at(s - 1)) / 2.0 : at(s + 1) - at(s);
        const cv::Point2d m1 = s + 2 < n ? (at(s + 2) - at(s)) / 2.0 : at(s + 1) - at(s);
        const double h00 = 2.0 * u3 - 3.0 * u2 + 1.0;
        const double h10 = u3 - 2.0 * u2 + u;
        const double h01 = 3.0 * u2 - 2.0 * u3;
        const double h11 = u3 - u2;
        result.emplace_back(static_cast<float>(h00 * at(s).x + h10 * m0.x + h01 * at(s + 1).x + h11 * m1.x),
                            static_cast<float>(h00 * at(s).y + h10 * m0.y + h01 * at(s + 1).y + h11 * m1.y));
    }
    return result;
}

double MeanDistance(const std::vector<cv::Point2f>& points, const std::vector<cv::Point2f>& curve) {
    double sum = 0.0;
    for (const cv::Point2f& p : points) {
        double least = DBL_MAX;
        for (const cv::Point2f& q : curve) {
            const double dx = p.x - q.x;
            const double dy = p.y - q.y;
            least = std::min(least, std::sqrt(dx * dx + dy * dy));
        }
        sum += least;
    }
    return sum / static_cast<double>(points.size());
}

void FitCircle(const std::vector<cv::Point2f>& points, cv::Point2f& center, double& radius, double& score) {
    const auto n = static_cast<int>(points.size());
    if (n < 3) return;
    cv::Mat a(n, 3, CV_64F);
    cv::Mat b(n, 1, CV_64F);
    for (int i = 0; i < n; ++i) {
        const cv::Point2d p = points[static_cast<std::size_t>(i)];
        a.at<double>(i, 0) = p.x;
        a.at<double>(i, 1) = p.y;
        a.at<double>(i, 2) = 1.0;
        b.at<double>(i) = p.x * p.x + p.y * p.y;
    }
    cv::Mat x;
    cv::solve(a, b, x, cv::DECOMP_SVD);
    center = cv::Point2f(static_cast<float>(x.at<double>(0) / 2.0), static_cast<float>(x.at<double>(1) / 2.0));
    radius = static_cast<float>(std::sqrt(center.x * center.x + x.at<double>(2) + center.y * center.y));
    double sum = 0.0;
    double squares = 0.0;
    for (const cv::Point2f& p : points) {
        const double dx = static_cast<double>(p.x) - center.x;
        const double dy = static_cast<double>(p.y) - center.y;
        const double residual = std::abs(std::sqrt(dx * dx + dy * dy) - radius);
        sum += residual;
        squares += residual * residual;
    }
    const double mean = sum / n;
    score = 1.0 - std::sqrt(std::max(squares / n - mean * mean, 0.0)) / (radius + 1e-5);
}

}  // namespace

void MeasureLine(const cv::Mat& image, const cv::Point2f& center, double width, double height, Line& line,
                 EdgePolarity polarity, SearchDirection direction, double sigma, double threshold, double step) {
    std::vector<cv::Point2f> points;
    for (const CurveSample& sample :
         EdgesOfRow(image, center, width, height, polarity, direction, sigma, threshold, step)) {
        points.push_back(sample.point);
    }
    line = Line();
    if (points.size() < 2) return;
    cv::Vec4f fitted;
    cv::fitLine(points, fitted, cv::DIST_WELSCH, 0.0, 0.01, 0.01);
    line.fromVec4f(fitted);
}

void MeasureCircle(const cv::Mat& image, const cv::Point2f& center, double radius, cv::Point2f& foundCenter,
                   double& foundRadius, double& score, EdgePolarity polarity, SearchDirection direction, double sigma,
                   double threshold, double angleStep) {
    const cv::Mat gray = Gray(image);
    const auto rimRadius = static_cast<float>(radius);
    const auto rimStep = static_cast<float>(angleStep);
    std::vector<cv::Point2f> rim;
    for (double angle = 0.0; rimStep > 0.0f && angle < 360.0; angle += rimStep) {
        const double theta = angle * CV_PI / 180.0;
        rim.emplace_back(static_cast<float>(std::cos(theta) * rimRadius + center.x),
                         static_cast<float>(std::sin(theta) * rimRadius + center.y));
    }
    std::vector<cv::Point2f> points;
    for (const cv::Point2f& p : rim) {
        const float dx = p.x - center.x;
        const float dy = p.y - center.y;
        const double angle = std::atan2(dy, dx) + (direction == SearchDirection::Inward ? CV_PI : 0.0);
        cv::Point2f edge;
        if (FirstEdge(gray, (center.y + p.y) * 0.5, (center.x + p.x) * 0.5, angle, 0.5 * std::sqrt(dx * dx + dy * dy),
                      5.0, polarity, sigma, threshold, edge)) {
            points.push_back(edge);
        }
    }
    FitCircle(points, foundCenter, foundRadius, score);
}

void MeasureCurve(const cv::Mat& image, const cv::Point2f& center, double width, double height, Curve& curve,
                  EdgePolarity polarity, SearchDirection direction, double sigma, double threshold, double step) {
    std::vector<CurveSample> samples =
        EdgesOfRow(image, center, width, height, polarity, direction, sigma, threshold, step);
    std::stable_sort(samples.begin(), samples.end(),
                     [](const CurveSample& a, const CurveSample& b) { return a.scanCoordinate < b.scanCoordinate; });
    curve.measuredPoints.clear();
    for (const CurveSample& sample : samples) curve.measuredPoints.push_back(sample.point);
    curve.curvePoints.clear();
    if (curve.measuredPoints.size() < 3) return;
    std::vector<cv::Point2f> filtered = WithoutOutliers(curve.measuredPoints, 3.0);
    if (filtered.size() > 4) filtered = Smoothed(filtered);
    curve.curvePoints = Resampled(filtered, SampleCount(filtered, 3));
    curve.meanFitError = MeanDistance(filtered, curve.curvePoints);
}

}  // namespace Quorvane::Reference
