// Measuring edges: one caliper, and lines, circles and curves on pictures of several sizes, each from its definition
// and as the library does it.

#include <benchmark/benchmark.h>

#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "geometry/EdgeCaliper.h"
#include "geometry/UtilityFunctions.h"
#include "tests/reference/PlainEdgeCaliper.h"
#include "tests/reference/PlainMeasurement.h"

namespace Quorvane {
namespace {

constexpr double sigma = 1.0;
constexpr double threshold = 30.0;

/// Width, height, channels.
using benchmark::internal::Benchmark;
void Sizes(Benchmark* rows) {
    rows->Args({640, 480, 1})
        ->Args({1280, 960, 1})
        ->Args({3840, 2160, 1})
        ->Args({4000, 3000, 1})
        ->Args({3840, 2160, 3});
    rows->Unit(benchmark::kMicrosecond);
}

cv::Size SizeOf(const benchmark::State& state) {
    return {static_cast<int>(state.range(0)), static_cast<int>(state.range(1))};
}

cv::Point2f CenterOf(const benchmark::State& state) {
    return {static_cast<float>(state.range(0)) / 2.0f + 0.3f, static_cast<float>(state.range(1)) / 2.0f + 0.2f};
}

cv::Mat Finished(cv::Mat gray, const benchmark::State& state) {
    cv::GaussianBlur(gray, gray, cv::Size(), 1.0);
    if (state.range(2) == 1) return gray;
    cv::Mat colour;
    cv::cvtColor(gray, colour, cv::COLOR_GRAY2BGR);
    return colour;
}

/// Dark on the left, light on the right of the middle.
cv::Mat EdgePicture(const benchmark::State& state) {
    cv::Mat gray(SizeOf(state), CV_8UC1, cv::Scalar(40));
    gray.colRange(gray.cols / 2, gray.cols).setTo(200);
    return Finished(gray, state);
}

constexpr int discRadius = 160;

cv::Mat DiscPicture(const benchmark::State& state) {
    cv::Mat gray(SizeOf(state), CV_8UC1, cv::Scalar(200));
    cv::circle(gray, CenterOf(state), discRadius, cv::Scalar(40), cv::FILLED);
    return Finished(gray, state);
}

/// The boundary between dark above and light below is a wave.
cv::Mat WavePicture(const benchmark::State& state) {
    cv::Mat gray(SizeOf(state), CV_8UC1, cv::Scalar(40));
    for (int x = 0; x < gray.cols; ++x) {
        const double y = gray.rows / 2.0 + 40.0 * std::sin(x / 50.0);
        gray(cv::Range(static_cast<int>(y), gray.rows), cv::Range(x, x + 1)).setTo(200);
    }
    return Finished(gray, state);
}

struct Lists {
    std::vector<double> rows, columns, amplitudes, distances;
};

void CaliperPlain(benchmark::State& state) {
    const cv::Mat picture = EdgePicture(state);
    Lists lists;
    for (auto _ : state) {
        Reference::EdgeCaliper caliper;
        caliper.configure(240.0, 320.0, 0.1, 29.5, 2.5, "bilinear");
        benchmark::DoNotOptimize(caliper.measure(picture, sigma, threshold, "positive", "first", lists.rows,
                                                 lists.columns, lists.amplitudes, lists.distances));
    }
}
BENCHMARK(CaliperPlain)->Name("EdgeCaliper/plain")->Args({640, 480, 1})->Unit(benchmark::kMicrosecond);

void CaliperLibrary(benchmark::State& state) {
    const cv::Mat picture = EdgePicture(state);
    Lists lists;
    for (auto _ : state) {
        UtilityFunctions::EdgeCaliper caliper;
        caliper.configure(240.0, 320.0, 0.1, 29.5, 2.5, picture, "bilinear");
        benchmark::DoNotOptimize(caliper.measure(picture, sigma, threshold, "positive", "first", lists.rows,
                                                 lists.columns, lists.amplitudes, lists.distances));
    }
}
BENCHMARK(CaliperLibrary)->Name("EdgeCaliper/library")->Args({640, 480, 1})->Unit(benchmark::kMicrosecond);

// 400 calipers of 200 pixels, the edge in their middle.
constexpr double side = 200.0;
constexpr double step = 0.5;

void LinePlain(benchmark::State& state) {
    const cv::Mat picture = EdgePicture(state);
    Line line;
    for (auto _ : state) {
        Reference::MeasureLine(picture, CenterOf(state), side, side, line, EdgePolarity::Positive,
                               SearchDirection::LeftToRight, sigma, threshold, step);
    }
}
BENCHMARK(LinePlain)->Name("MeasureLine/plain")->Apply(Sizes);

void LineLibrary(benchmark::State& state) {
    const cv::Mat picture = EdgePicture(state);
    Line line;
    for (auto _ : state) {
        UtilityFunctions::MeasureLine(picture, CenterOf(state), side, side, line, EdgePolarity::Positive,
                                      SearchDirection::LeftToRight, sigma, threshold, step);
    }
}
BENCHMARK(LineLibrary)->Name("MeasureLine/library")->Apply(Sizes);

constexpr double angleStep = 0.2;
constexpr double searchRadius = 200.0;

void CirclePlain(benchmark::State& state) {
    const cv::Mat picture = DiscPicture(state);
    cv::Point2f center;
    double radius = 0.0;
    double score = 0.0;
    for (auto _ : state) {
        Reference::MeasureCircle(picture, CenterOf(state), searchRadius, center, radius, score, EdgePolarity::Positive,
                                 SearchDirection::Outward, sigma, threshold, angleStep);
    }
}
BENCHMARK(CirclePlain)->Name("MeasureCircle/plain")->Apply(Sizes);

void CircleLibrary(benchmark::State& state) {
    const cv::Mat picture = DiscPicture(state);
    cv::Point2f center;
    double radius = 0.0;
    double score = 0.0;
    for (auto _ : state) {
        UtilityFunctions::MeasureCircle(picture, CenterOf(state), searchRadius, center, radius, score,
                                        EdgePolarity::Positive, SearchDirection::Outward, sigma, threshold, angleStep);
    }
}
BENCHMARK(CircleLibrary)->Name("MeasureCircle/library")->Apply(Sizes);

void CurvePlain(benchmark::State& state) {
    const cv::Mat picture = WavePicture(state);
    Curve curve;
    for (auto _ : state) {
        Reference::MeasureCurve(picture, CenterOf(state), 2.0 * side, side, curve, EdgePolarity::Positive,
                                SearchDirection::TopToBottom, sigma, threshold, 1.0);
    }
}
BENCHMARK(CurvePlain)->Name("MeasureCurve/plain")->Apply(Sizes);

void CurveLibrary(benchmark::State& state) {
    const cv::Mat picture = WavePicture(state);
    Curve curve;
    for (auto _ : state) {
        UtilityFunctions::MeasureCurve(picture, CenterOf(state), 2.0 * side, side, curve, EdgePolarity::Positive,
                                       SearchDirection::TopToBottom, sigma, threshold, 1.0, 0);
    }
}
BENCHMARK(CurveLibrary)->Name("MeasureCurve/library")->Apply(Sizes);

}  // namespace
}  // namespace Quorvane
