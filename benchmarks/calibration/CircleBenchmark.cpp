// The scale from a circle and the centre of a cross. Each row has its floor beside it: OpenCV's own calls with the same
// arguments, and nothing around them. What a cross costs beyond its circle is the library's own edge measurement.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "calibration/CameraCalibration.h"
#include "calibration/CircleCandidates.h"
#include "calibration/CircleRefinement.h"
#include "geometry/UtilityFunctions.h"
#include "tests/reference/PlainMeasurement.h"
#include "tests/support/Scene.h"

namespace Quorvane::CameraCalibration {
namespace {

using namespace TestSupport;

/// A cross in a ring, of a third of the picture's height.
struct Target {
    cv::Mat picture;
    cv::Point2d center;
    double radius;
};

Target MakeTarget(const benchmark::State& state) {
    const cv::Size size(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    const cv::Point2d center(size.width / 2.0 + 3.3, size.height / 2.0 - 4.2);
    const double radius = size.height / 3.0;
    const double width = radius / 3.0;
    Scene scene(size, 200.0);
    scene.Paint(Ring(center, radius - width / 2.0, width), 40.0)
        .Paint(Cross(center, 2.0 * (radius - width), radius / 12.0), 40.0)
        .Blur(1.0)
        .Noise(3.0, 1);
    return {state.range(2) == 1 ? scene.Gray() : scene.Colour(), center, radius};
}

/// Width, height, channels.
void Sizes(benchmark::internal::Benchmark* rows) {
    rows->Args({640, 480, 1})->Args({1280, 960, 1})->Args({1280, 960, 3})->Args({4000, 3000, 1});
    rows->ArgNames({"width", "height", "channels"})->Unit(benchmark::kMillisecond);
}

std::vector<cv::Vec3f> CandidatesFloor(const cv::Mat& image) {
    cv::Mat gray;
    if (image.channels() == 1) {
        gray = image.clone();
    } else {
        cv::cvtColor(image, gray, cv::COLOR_BGR2GRAY);
    }
    cv::Scalar mean;
    cv::Scalar deviation;
    cv::meanStdDev(gray, mean, deviation);
    const cv::Size window = deviation[0] > 15.0 ? cv::Size(9, 9) : cv::Size(5, 5);
    cv::GaussianBlur(gray, gray, window, 0.0);
    cv::Mat dx;
    cv::Mat dy;
    cv::Mat strength;
    cv::Sobel(gray, dx, CV_32F, 1, 0);
    cv::Sobel(gray, dy, CV_32F, 0, 1);
    cv::magnitude(dx, dy, strength);
    double strongest = 0.0;
    cv::minMaxLoc(strength, nullptr, &strongest);
    cv::Mat edges;
    cv::Canny(gray, edges, 50.0, 150.0);
    const int count = cv::countNonZero(edges);
    const int half = std::max(gray.rows, gray.cols) / 2;
    const int least = std::min(gray.rows, gray.cols) / 50;
    const int votes = count / 1000 + 10;
    std::vector<cv::Vec3f> circles;
    cv::HoughCircles(gray, circles, cv::HOUGH_GRADIENT, 1.2, static_cast<int>(half * 1.5),
                     static_cast<int>(strongest * 0.7), votes, least, half);
    return circles;
}

cv::Vec3f RefinementFloor(const cv::Mat& image, const cv::Vec3f& circle) {
    const int half = static_cast<int>(circle[2] * 2.5f);
    const cv::Rect around(static_cast<int>(circle[0]) - half, static_cast<int>(circle[1]) - half, 2 * half, 2 * half);
    cv::Mat gray = image(around & cv::Rect({0, 0}, image.size())).clone();
    if (gray.channels() > 1) cv::cvtColor(gray, gray, cv::COLOR_BGR2GRAY);
    cv::GaussianBlur(gray, gray, {5, 5}, 0.0);
    cv::threshold(gray, gray, 0.0, 255.0, cv::THRESH_BINARY_INV + cv::THRESH_OTSU);
    const cv::Mat kernel = cv::getStructuringElement(cv::MORPH_ELLIPSE, {3, 3});
    cv::morphologyEx(gray, gray, cv::MORPH_CLOSE, kernel, {-1, -1}, 2, cv::BORDER_CONSTANT);
    cv::morphologyEx(gray, gray, cv::MORPH_OPEN, kernel, {-1, -1}, 1, cv::BORDER_CONSTANT);
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(gray, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
    cv::Mat a(static_cast<int>(contours.front().size()), 3, CV_64F, cv::Scalar(1.0));
    cv::Mat b(a.rows, 1, CV_64F);
    for (int i = 0; i < a.rows; ++i) {
        const cv::Point& p = contours.front()[static_cast<std::size_t>(i)];
        a.at<double>(i, 0) = p.x;
        a.at<double>(i, 1) = p.y;
        b.at<double>(i) = p.dot(p);
    }
    cv::Mat solution;
    cv::solve(a, b, solution, cv::DECOMP_SVD);
    return {static_cast<float>(solution.at<double>(0)), static_cast<float>(solution.at<double>(1)),
            static_cast<float>(solution.at<double>(2))};
}

void ScaleFloor(benchmark::State& state) {
    const Target target = MakeTarget(state);
    for (auto _ : state) {
        const std::vector<cv::Vec3f> circles = CandidatesFloor(target.picture);
        benchmark::DoNotOptimize(RefinementFloor(target.picture, circles.front()));
    }
}
BENCHMARK(ScaleFloor)->Name("CalScalePixToMmUseCircle/floor")->Apply(Sizes);

void ScaleLibrary(benchmark::State& state) {
    const Target target = MakeTarget(state);
    cv::Point2f center;
    double radius = 0.0;
    double scale = 0.0;
    for (auto _ : state) {
        if (!CalScalePixToMmUseCircle(target.picture, 8.0, 0.0, center, radius, scale)) {
            state.SkipWithError("no circle");
        }
    }
}
BENCHMARK(ScaleLibrary)->Name("CalScalePixToMmUseCircle/library")->Apply(Sizes);

void Refinement(benchmark::State& state) {
    const Target target = MakeTarget(state);
    std::array<double, 4> out{};
    for (auto _ : state) {
        RefineCircle(target.picture, target.center.x, target.center.y, target.radius, out[0], out[1], out[2], out[3]);
    }
}
BENCHMARK(Refinement)->Name("CalScalePixToMmUseCircle/refinement alone")->Apply(Sizes);

void CrossLibrary(benchmark::State& state) {
    const Target target = MakeTarget(state);
    cv::Point2f center;
    double radius = 0.0;
    for (auto _ : state) {
        if (!FindCircleCross(target.picture, center, radius)) state.SkipWithError("no cross");
    }
    state.counters["error"] = cv::norm(cv::Point2d(center) - target.center);
}
BENCHMARK(CrossLibrary)->Name("FindCircleCross/library")->Apply(Sizes);

constexpr std::array<SearchDirection, 4> directions{SearchDirection::LeftToRight, SearchDirection::RightToLeft,
                                                    SearchDirection::TopToBottom, SearchDirection::BottomToTop};

/// The edge measurements of a cross, as its function asks for them.
void EdgesLibrary(benchmark::State& state) {
    const Target target = MakeTarget(state);
    cv::Point2f center;
    double radius = 0.0;
    double score = 0.0;
    Line line;
    for (auto _ : state) {
        UtilityFunctions::MeasureCircle(target.picture, target.center, target.radius, center, radius, score,
                                        EdgePolarity::Negative, SearchDirection::Outward, 1.0, 30.0, 0.2f);
        for (const SearchDirection direction : directions) {
            UtilityFunctions::MeasureLine(target.picture, center, 2.0 * radius, 2.0 * radius, line,
                                          EdgePolarity::Negative, direction, 1.0, 30.0, 0.5);
        }
    }
}
BENCHMARK(EdgesLibrary)->Name("FindCircleCross/edges alone")->Apply(Sizes);

/// The same from their definition.
void EdgesPlain(benchmark::State& state) {
    const Target target = MakeTarget(state);
    cv::Point2f center;
    double radius = 0.0;
    double score = 0.0;
    Line line;
    for (auto _ : state) {
        Reference::MeasureCircle(target.picture, target.center, target.radius, center, radius, score,
                                 EdgePolarity::Negative, SearchDirection::Outward, 1.0, 30.0, 0.2f);
        for (const SearchDirection direction : directions) {
            Reference::MeasureLine(target.picture, center, 2.0 * radius, 2.0 * radius, line, EdgePolarity::Negative,
                                   direction, 1.0, 30.0, 0.5);
        }
    }
}
BENCHMARK(EdgesPlain)
    ->Name("FindCircleCross/edges plain")
    ->Args({640, 480, 1})
    ->Args({1280, 960, 1})
    ->ArgNames({"width", "height", "channels"})
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace Quorvane::CameraCalibration
