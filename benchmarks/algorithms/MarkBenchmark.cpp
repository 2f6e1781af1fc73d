// Mark points: what a run costs, what OpenCV's own calls cost in it, and how far the found marks are from the true
// ones.
//
// Rows of FindMarkPoint, its plain formulation and its floor: the plain run takes the search of the tests' reference;
// the floor makes the library's OpenCV calls in the same order on the same picture, with everything else (accepted
// marks, rings' places, texts, order) known beforehand. All three are timed turn by turn in one row, so that a slow
// moment of the machine falls on each; "own share" is the library's part of a run above the floor, in percent.
//
// Rows of accuracy: "mean px" and "worst px" are distances of found centres to the true ones, "radius px" the mean
// difference of radii; "found" and "rendered" count marks, "false" counts finds that are no mark. The last row is all
// of the others together.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "algorithms/CircleMarks.h"
#include "framework/AlgorithmFactory.h"
#include "tests/reference/PlainCircleMarks.h"
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

/// The whole numbers of a search for marks of a radius of at least 9.
Reference::CircleSearch SearchFor(double radius) {
    const double tolerance = (1.0 - similarityMin) * radius;
    const int third = static_cast<int>(radius / 3.0);
    return {std::max(third % 2 != 0 ? third : static_cast<int>(radius / 3.0 + 1.0), 3), false,
            std::max(static_cast<int>(radius) / 3, 3), static_cast<int>(std::max(3.0, radius - tolerance)),
            static_cast<int>(radius + tolerance)};
}

std::vector<Reference::CircleMark> PlainMarks(const cv::Mat& source, double radius) {
    return Reference::CircleMarks(source, radius, (1.0 - similarityMin) * radius, similarityMin, SearchFor(radius));
}

void Draw(const std::vector<Reference::CircleMark>& marks, cv::Mat& destination) {
    for (const Reference::CircleMark& mark : marks) {
        const cv::Point centre(cvRound(mark.centre.x), cvRound(mark.centre.y));
        cv::circle(destination, centre, 1, cv::Scalar(0, 255, 0), cv::FILLED);
        cv::circle(destination, centre, cvRound(mark.radius), cv::Scalar(0, 0, 255), 1);
    }
}

/// A run without the texts and the order of the results.
void Plain(const cv::Mat& source, cv::Mat& destination, double radius) {
    destination = source.clone();
    Draw(PlainMarks(source, radius), destination);
}

/// OpenCV's calls of one run for marks of a radius of at least 9, of which `accepted` are drawn.
void Floor(const cv::Mat& source, cv::Mat& destination, double radius,
           const std::vector<Reference::CircleMark>& accepted) {
    const double tolerance = (1.0 - similarityMin) * radius;
    const Reference::CircleSearch search = SearchFor(radius);
    destination = source.clone();
    cv::Mat working;
    source.convertTo(working, -1, 1.0, 0.0);
    cv::Mat gray;
    cv::cvtColor(working, gray, cv::COLOR_BGR2GRAY);
    cv::GaussianBlur(gray, gray, cv::Size(search.blurSide, search.blurSide), 2.0, 2.0);
    cv::morphologyEx(gray, gray, cv::MORPH_OPEN,
                     cv::getStructuringElement(cv::MORPH_ELLIPSE, cv::Size(search.openSide, search.openSide)));
    std::vector<cv::Vec3f> candidates;
    cv::HoughCircles(gray, candidates, cv::HOUGH_GRADIENT, 2.0, radius, 50.0, 25.0, search.leastRadius,
                     search.greatestRadius);
    for (const cv::Vec3f& candidate : candidates) {
        if (std::abs(static_cast<double>(candidate[2]) - radius) <= tolerance) FloorOfScore(gray, candidate);
    }
    Draw(accepted, destination);
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
    const std::vector<Reference::CircleMark> accepted = PlainMarks(picture, plate.radius);
    cv::Mat destination;
    cv::Mat plainDestination;
    cv::Mat floorDestination;
    Floor(picture, floorDestination, plate.radius, accepted);
    algorithm->Execute(picture, destination);
    std::vector<double> library;
    std::vector<double> plain;
    std::vector<double> floor;
    for (auto _ : state) {
        library.push_back(SecondsOf([&] { algorithm->Execute(picture, destination); }));
        plain.push_back(SecondsOf([&] { Plain(picture, plainDestination, plate.radius); }));
        floor.push_back(SecondsOf([&] { Floor(picture, floorDestination, plate.radius, accepted); }));
        state.SetIterationTime(library.back());
    }
    if (cv::norm(destination, plainDestination) != 0.0 || cv::norm(destination, floorDestination) != 0.0) {
        state.SkipWithError("the three runs draw different marks");
    }
    const double ms = 1000.0;
    state.counters["plain ms"] = Median(plain) * ms;
    state.counters["library ms"] = Median(library) * ms;
    state.counters["OpenCV ms"] = Median(floor) * ms;
    state.counters["own share %"] = 100.0 * (Median(library) - Median(floor)) / Median(library);
    state.counters["found"] = std::stod(algorithm->GetResultValue("FindCount"));
    state.counters["radius"] = plate.radius;
}
BENCHMARK(Run)
    ->Name("FindMarkPoint/plain-library-floor")
    ->ArgNames({"width", "height", "marks"})
    ->Args({1280, 960, 12})
    ->Args({1280, 960, 200})
    ->Args({4000, 3000, 12})
    ->Args({4000, 3000, 200})
    ->UseManualTime()
    ->MinTime(2.0)
    ->Unit(benchmark::kMillisecond);

/// One score, of the candidate in the middle of a picture of 1280 by 960.
template <typename Action>
void Score(benchmark::State& state, Action score) {
    const auto radius = static_cast<float>(state.range(0));
    const cv::Mat gray = MarkPlate{{1280, 960}, {1, 1}, radius}.Render().Blur(1.5).Gray();
    const cv::Vec3f candidate(640.0f, 480.0f, radius);
    for (auto _ : state) score(gray, candidate);
}

void PlainScore(benchmark::State& state) {
    Score(state, [](const cv::Mat& gray, const cv::Vec3f& candidate) {
        benchmark::DoNotOptimize(Reference::CircleMarkScore(gray, candidate));
    });
}

void LibraryScore(benchmark::State& state) {
    Score(state, [](const cv::Mat& gray, const cv::Vec3f& candidate) {
        benchmark::DoNotOptimize(CircleMarkScore(gray, candidate));
    });
}

void ScoreFloor(benchmark::State& state) { Score(state, FloorOfScore); }

void ScoreRadii(benchmark::internal::Benchmark* row) {
    row->ArgName("radius")->Arg(16)->Arg(50)->Unit(benchmark::kMicrosecond);
}
BENCHMARK(PlainScore)->Name("CircleMarkScore/plain")->Apply(ScoreRadii);
BENCHMARK(LibraryScore)->Name("CircleMarkScore/library")->Apply(ScoreRadii);
BENCHMARK(ScoreFloor)->Name("CircleMarkScore/floor")->Apply(ScoreRadii);

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

const std::vector<std::int64_t> accuracyRadii{6, 8, 9, 12, 24, 50, 80, 120};

/// Sums over the marks of some pictures.
struct Deviations {
    void Add(const MarkPlate& plate, const Spoil& spoil);
    void Report(benchmark::State& state) const;

    double sum = 0.0;
    double worst = 0.0;
    double radiusSum = 0.0;
    int found = 0;
    int wrong = 0;
    int rendered = 0;
};

void Deviations::Add(const MarkPlate& plate, const Spoil& spoil) {
    const std::unique_ptr<Algorithm> algorithm = Finder(plate.radius);
    cv::Mat destination;
    algorithm->Execute(spoil.apply(plate.Render()).Gray(), destination);
    const auto x = algorithm->GetResultValues("MarkPoint_X");
    const auto y = algorithm->GetResultValues("MarkPoint_Y");
    const auto r = algorithm->GetResultValues("MarkPoint_Radius");
    const std::vector<cv::Point2d> centres = plate.Centres();
    rendered += static_cast<int>(centres.size());
    for (std::size_t i = 0; i < x.size(); ++i) {
        double nearest = plate.radius / 2.0;
        for (const cv::Point2d& centre : centres) {
            nearest = std::min(nearest, cv::norm(cv::Point2d(std::stod(x[i]), std::stod(y[i])) - centre));
        }
        if (nearest >= plate.radius / 2.0) {
            ++wrong;
            continue;
        }
        ++found;
        sum += nearest;
        worst = std::max(worst, nearest);
        radiusSum += std::abs(std::stod(r[i]) - plate.radius);
    }
}

void Deviations::Report(benchmark::State& state) const {
    state.counters["rendered"] = rendered;
    state.counters["found"] = found;
    state.counters["false"] = wrong;
    state.counters["mean px"] = sum / std::max(found, 1);
    state.counters["worst px"] = worst;
    state.counters["radius px"] = radiusSum / std::max(found, 1);
}

/// A plate of 12 bright marks on dark ground and one of 12 dark marks on bright ground.
void AddPlates(std::int64_t radius, const Spoil& spoil, Deviations& deviations) {
    const int cell = static_cast<int>(radius) * 5 + 11;
    const cv::Size size(4 * cell, 3 * cell);
    deviations.Add(MarkPlate{size, {4, 3}, static_cast<double>(radius), 60.0, 200.0, 7}, spoil);
    deviations.Add(MarkPlate{size, {4, 3}, static_cast<double>(radius), 200.0, 60.0, 7}, spoil);
}

void Accuracy(benchmark::State& state) {
    const Spoil& spoil = spoils[state.range(1)];
    Deviations deviations;
    for (auto _ : state) AddPlates(state.range(0), spoil, deviations);
    state.SetLabel(spoil.name);
    deviations.Report(state);
}
BENCHMARK(Accuracy)
    ->Name("FindMarkPoint/accuracy")
    ->ArgNames({"radius", "picture"})
    ->ArgsProduct({accuracyRadii, {0, 1, 2, 3}})
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

void OverallAccuracy(benchmark::State& state) {
    Deviations deviations;
    for (auto _ : state) {
        for (const std::int64_t radius : accuracyRadii) {
            for (const Spoil& spoil : spoils) AddPlates(radius, spoil, deviations);
        }
    }
    deviations.Report(state);
}
BENCHMARK(OverallAccuracy)->Name("FindMarkPoint/accuracy/overall")->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace Quorvane
