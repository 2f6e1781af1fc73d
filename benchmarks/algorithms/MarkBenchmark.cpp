// Mark points: what a run costs, what OpenCV's own calls cost in it, and how far the found marks are from the true
// ones.
//
// Rows of FindMarkPoint and its floor: the floor makes the same OpenCV calls in the same order on the same picture,
// with everything else (candidates, rings' places, texts, order) known beforehand. Both are timed turn by turn in one
// row, so that a slow moment of the machine falls on both; "own share" is the library's part of a run, in percent.
//
// Rows of accuracy: "mean px" and "worst px" are distances of found centres to the true ones, "radius px" the mean
// difference of radii; "found" and "rendered" count marks, "false" counts finds that are no mark.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "algorithms/CircleMarks.h"
#include "framework/AlgorithmFactory.h"
#include "tests/support/MarkPlate.h"
#include "tests/support/Scene.h"

namespace Quorvane {
namespace {

using TestSupport::MarkPlate;
using TestSupport::Scene;

constexpr double similarityMin = 0.6;

std::unique_ptr<Algorithm> Finder(double radius) {
    std::unique_ptr<Algorithm> algorithm(AlgorithmFactory().CreateAlgorithm("FindMarkPoint"));
    algorithm->SetParameter("Radius", radius);
    algorithm->SetParameter("SimilarityMin", similarityMin);
    return algorithm;
}

/// Plates of 12 marks of radius 50 and of 200 marks as large as the picture allows, up to 50.
MarkPlate Plate(cv::Size size, int count) {
    const cv::Size grid = count == 12 ? cv::Size(4, 3) : cv::Size(20, 10);
    const double cell =
        std::min(static_cast<double>(size.width) / grid.width, static_cast<double>(size.height) / grid.height);
    return MarkPlate{size, grid, std::min(50.0, std::floor(cell / 4.0)), 60.0, 200.0};
}

/// OpenCV's calls of one score. The results of the calls are used only where a later call needs them.
void FloorOfScore(const cv::Mat& gray, const cv::Vec3f& candidate) {
    const cv::Point centre(cvRound(candidate[0]), cvRound(candidate[1]));
    const int radius = cvRound(candidate[2]);
    const int reach = radius + radius / 2;
    const cv::Rect part(std::max(centre.x - reach, 0), std::max(centre.y - reach, 0),
                        std::min(2 * reach, gray.cols - centre.x + reach),
                        std::min(2 * reach, gray.rows - centre.y + reach));
    const int thickness = std::max(radius / 5, 3);
    cv::Mat patch = gray(part).clone();
    double least = 0.0;
    double most = 0.0;
    cv::minMaxLoc(patch, &least, &most);
    patch = (patch - least) * (255.0 / (most - least));
    patch.convertTo(patch, -1, 1.7, -85.0);
    cv::Mat inner = cv::Mat::zeros(patch.size(), CV_8UC1);
    cv::circle(inner, centre - part.tl(), radius, cv::Scalar(255), thickness);
    cv::Mat outer = cv::Mat::zeros(patch.size(), CV_8UC1);
    cv::circle(outer, centre - part.tl(), radius + thickness, cv::Scalar(255), thickness);
    benchmark::DoNotOptimize(cv::countNonZero(inner) + cv::countNonZero(outer));
    const double ringMean = cv::mean(patch, inner)[0];
    benchmark::DoNotOptimize(cv::mean(patch, outer)[0]);
    cv::Mat region;
    cv::inRange(patch, cv::Scalar(ringMean), cv::Scalar(255.0), region);
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(region, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
    for (const auto& contour : contours) benchmark::DoNotOptimize(cv::contourArea(contour));
    if (!contours.empty()) benchmark::DoNotOptimize(cv::arcLength(contours[0], true));
}

/// OpenCV's calls of one run for marks of a radius of at least 9.
void Floor(const cv::Mat& source, cv::Mat& destination, double radius) {
    const double tolerance = (1.0 - similarityMin) * radius;
    const int opening = std::max(static_cast<int>(radius) / 3, 3);
    const int third = static_cast<int>(radius / 3.0);
    const int blur = std::max(third % 2 != 0 ? third : static_cast<int>(radius / 3.0 + 1.0), 3);
    destination = source.clone();
    cv::Mat working;
    source.convertTo(working, -1, 1.0, 0.0);
    cv::Mat gray;
    cv::cvtColor(working, gray, cv::COLOR_BGR2GRAY);
    cv::GaussianBlur(gray, gray, cv::Size(blur, blur), 2.0, 2.0);
    cv::morphologyEx(gray, gray, cv::MORPH_OPEN,
                     cv::getStructuringElement(cv::MORPH_ELLIPSE, cv::Size(opening, opening)));
    std::vector<cv::Vec3f> candidates;
    cv::HoughCircles(gray, candidates, cv::HOUGH_GRADIENT, 2.0, radius, 50.0, 25.0,
                     static_cast<int>(std::max(3.0, radius - tolerance)), static_cast<int>(radius + tolerance));
    for (const cv::Vec3f& candidate : candidates) {
        if (std::abs(static_cast<double>(candidate[2]) - radius) <= tolerance) FloorOfScore(gray, candidate);
    }
    for (const cv::Vec3f& candidate : candidates) {
        const cv::Point centre(cvRound(candidate[0]), cvRound(candidate[1]));
        cv::circle(destination, centre, 1, cv::Scalar(0, 255, 0), cv::FILLED);
        cv::circle(destination, centre, cvRound(candidate[2]), cv::Scalar(0, 0, 255), 1);
    }
}

template <typename Action>
double SecondsOf(Action action) {
    const auto start = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// The time of the row is that of the library's run.
void Run(benchmark::State& state) {
    const cv::Size size(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    const MarkPlate plate = Plate(size, static_cast<int>(state.range(2)));
    const cv::Mat picture = plate.Render().Blur(0.8).Noise(2.0, 3).Colour();
    const std::unique_ptr<Algorithm> algorithm = Finder(plate.radius);
    cv::Mat destination;
    cv::Mat floorDestination;
    Floor(picture, floorDestination, plate.radius);
    algorithm->Execute(picture, destination);
    std::vector<double> library;
    std::vector<double> floor;
    for (auto _ : state) {
        library.push_back(SecondsOf([&] { algorithm->Execute(picture, destination); }));
        floor.push_back(SecondsOf([&] { Floor(picture, floorDestination, plate.radius); }));
        state.SetIterationTime(library.back());
    }
    const double ms = 1000.0;
    state.counters["library ms"] = Median(library) * ms;
    state.counters["OpenCV ms"] = Median(floor) * ms;
    state.counters["own share %"] = 100.0 * (Median(library) - Median(floor)) / Median(library);
    state.counters["found"] = std::stod(algorithm->GetResultValue("FindCount"));
    state.counters["radius"] = plate.radius;
}
BENCHMARK(Run)
    ->Name("FindMarkPoint/library-and-floor")
    ->ArgNames({"width", "height", "marks"})
    ->Args({1280, 960, 12})
    ->Args({1280, 960, 200})
    ->Args({4000, 3000, 12})
    ->Args({4000, 3000, 200})
    ->UseManualTime()
    ->MinTime(2.0)
    ->Unit(benchmark::kMillisecond);

/// The score alone, on a patch of three radii square.
void Score(benchmark::State& state) {
    const auto radius = static_cast<float>(state.range(0));
    const int side = static_cast<int>(state.range(0)) * 4;
    const cv::Mat gray = MarkPlate{{side, side}, {1, 1}, radius}.Render().Blur(1.5).Gray();
    const cv::Vec3f candidate(static_cast<float>(side) / 2.0f, static_cast<float>(side) / 2.0f, radius);
    for (auto _ : state) benchmark::DoNotOptimize(CircleMarkScore(gray, candidate));
}
BENCHMARK(Score)->Name("CircleMarkScore/library")->ArgName("radius")->Arg(16)->Arg(50)->Unit(benchmark::kMicrosecond);

void ScoreFloor(benchmark::State& state) {
    const auto radius = static_cast<float>(state.range(0));
    const int side = static_cast<int>(state.range(0)) * 4;
    const cv::Mat gray = MarkPlate{{side, side}, {1, 1}, radius}.Render().Blur(1.5).Gray();
    const cv::Vec3f candidate(static_cast<float>(side) / 2.0f, static_cast<float>(side) / 2.0f, radius);
    for (auto _ : state) FloorOfScore(gray, candidate);
}
BENCHMARK(ScoreFloor)
    ->Name("CircleMarkScore/floor")
    ->ArgName("radius")
    ->Arg(16)
    ->Arg(50)
    ->Unit(benchmark::kMicrosecond);

struct Spoil {
    const char* name;
    Scene (*apply)(Scene);
};

const Spoil spoils[] = {
    {"clean", [](Scene scene) { return scene; }},
    {"blur of 2 px", [](Scene scene) { return scene.Blur(2.0); }},
    {"noise of 8 levels", [](Scene scene) { return scene.Blur(0.8).Noise(8.0, 21); }},
    {"light falling to half", [](Scene scene) { return scene.Light(1.0, 0.5); }},
};

/// Plates of 24 marks, bright on dark and dark on bright.
void Accuracy(benchmark::State& state) {
    const auto radius = static_cast<double>(state.range(0));
    const Spoil& spoil = spoils[state.range(1)];
    const auto cell = static_cast<int>(radius * 5.0) + 11;
    double sum = 0.0;
    double worst = 0.0;
    double radiusSum = 0.0;
    int found = 0;
    int wrong = 0;
    int rendered = 0;
    for (auto _ : state) {
        for (const bool bright : {true, false}) {
            const MarkPlate plate{{4 * cell, 3 * cell},  {4, 3}, radius, bright ? 60.0 : 200.0,
                                  bright ? 200.0 : 60.0, 7};
            const std::unique_ptr<Algorithm> algorithm = Finder(radius);
            cv::Mat destination;
            algorithm->Execute(spoil.apply(plate.Render()).Gray(), destination);
            const auto x = algorithm->GetResultValues("MarkPoint_X");
            const auto y = algorithm->GetResultValues("MarkPoint_Y");
            const auto r = algorithm->GetResultValues("MarkPoint_Radius");
            const std::vector<cv::Point2d> centres = plate.Centres();
            rendered += static_cast<int>(centres.size());
            for (std::size_t i = 0; i < x.size(); ++i) {
                double nearest = radius / 2.0;
                for (const cv::Point2d& centre : centres) {
                    nearest = std::min(nearest, cv::norm(cv::Point2d(std::stod(x[i]), std::stod(y[i])) - centre));
                }
                if (nearest >= radius / 2.0) {
                    ++wrong;
                    continue;
                }
                ++found;
                sum += nearest;
                worst = std::max(worst, nearest);
                radiusSum += std::abs(std::stod(r[i]) - radius);
            }
        }
    }
    state.SetLabel(spoil.name);
    state.counters["rendered"] = rendered;
    state.counters["found"] = found;
    state.counters["false"] = wrong;
    state.counters["mean px"] = sum / std::max(found, 1);
    state.counters["worst px"] = worst;
    state.counters["radius px"] = radiusSum / std::max(found, 1);
}
BENCHMARK(Accuracy)
    ->Name("FindMarkPoint/accuracy")
    ->ArgNames({"radius", "picture"})
    ->ArgsProduct({{6, 8, 9, 12, 24, 50, 80, 120}, {0, 1, 2, 3}})
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace Quorvane
