// The half-tone: its deviation map alone, and a whole run, each from its definition and as the library does it.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <opencv2/imgproc.hpp>

#include "algorithms/LocalDeviationMap.h"
#include "framework/AlgorithmFactory.h"
#include "tests/reference/PlainHalftone.h"
#include "tests/reference/PlainLocalDeviationMap.h"
#include "tests/support/Pictures.h"

namespace Quorvane {
namespace {

const cv::Size fullHd(1920, 1080);

cv::Mat Photograph() {
    cv::Mat picture;
    cv::resize(TestSupport::LoadColourPicture("coffee.png"), picture, fullHd, 0.0, 0.0, cv::INTER_CUBIC);
    return picture;
}

cv::Mat GrayPhotograph() {
    cv::Mat gray;
    cv::cvtColor(Photograph(), gray, cv::COLOR_BGR2GRAY);
    return gray;
}

void CountPixels(benchmark::State& state) {
    state.counters["s/pixel"] = benchmark::Counter(static_cast<double>(state.iterations()) * fullHd.area(),
                                                   benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void DeviationMapPlain(benchmark::State& state) {
    const cv::Mat gray = GrayPhotograph();
    for (auto _ : state) {
        benchmark::DoNotOptimize(Reference::LocalDeviationMap(gray, static_cast<int>(state.range(0))));
    }
    CountPixels(state);
}
BENCHMARK(DeviationMapPlain)->Name("LocalDeviationMap/plain")->Arg(5)->Arg(31)->Unit(benchmark::kMillisecond);

void DeviationMapLibrary(benchmark::State& state) {
    const cv::Mat gray = GrayPhotograph();
    for (auto _ : state) benchmark::DoNotOptimize(LocalDeviationMap(gray, static_cast<int>(state.range(0))));
    CountPixels(state);
}
BENCHMARK(DeviationMapLibrary)
    ->Name("LocalDeviationMap/library")
    ->Arg(5)
    ->Arg(31)
    ->Arg(181)
    ->Arg(183)
    ->Unit(benchmark::kMillisecond);

void HalftonePlain(benchmark::State& state) {
    const cv::Mat picture = Photograph();
    std::uint32_t seed = 0;
    for (auto _ : state) benchmark::DoNotOptimize(Reference::Halftone(picture, 240.0f, 20.0f, 5, ++seed));
}
BENCHMARK(HalftonePlain)->Name("BinaryForLaserMachine/plain")->Unit(benchmark::kMillisecond);

void HalftoneLibrary(benchmark::State& state) {
    const cv::Mat picture = Photograph();
    const std::unique_ptr<Algorithm> algorithm(AlgorithmFactory().CreateAlgorithm("BinaryForLaserMachine"));
    cv::Mat dots;
    for (auto _ : state) algorithm->Execute(picture, dots);
}
BENCHMARK(HalftoneLibrary)->Name("BinaryForLaserMachine/library")->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace Quorvane
