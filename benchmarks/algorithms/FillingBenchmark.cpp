// The filling job, stage by stage and as a whole: from its definition and as the library does it, on rendered trays
// with twelve copies of one part. The arguments are the width of the picture and the size of the part in pixels.

#include <benchmark/benchmark.h>

#include <iostream>
#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <utility>

#include "Includes/smartfilling.h"
#include "algorithms/TargetExtraction.h"
#include "benchmarks/PeakMemory.h"
#include "framework/AlgorithmFactory.h"
#include "geometry/ImageOperators.h"
#include "tests/reference/PlainDominantColour.h"
#include "tests/reference/PlainFilling.h"
#include "tests/reference/PlainTargetExtraction.h"
#include "tests/support/Tray.h"

namespace Quorvane {
namespace {

constexpr int similarityPercent = 80;

/// Keeps the job's notices away from the benchmark's table.
class Silence {
public:
    Silence() : out_(std::cout.rdbuf(nullptr)), err_(std::cerr.rdbuf(nullptr)) {}
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;
    ~Silence() {
        std::cout.rdbuf(out_);
        std::cerr.rdbuf(err_);
        std::cout.clear();
        std::cerr.clear();
    }

private:
    std::streambuf* out_;
    std::streambuf* err_;
};

cv::Size SizeOfWidth(int width) { return {width, width == 1920 ? 1080 : width * 3 / 4}; }

/// A tray with everything that the stages hand on to one another.
struct Bench {
    Bench(int width, int partSize) {
        TestSupport::TraySettings settings;
        settings.size = SizeOfWidth(width);
        settings.partSize = partSize;
        settings.noise = 2.0;
        tray = TestSupport::RenderTray(settings);
        const cv::Point2d mark = tray.poses.front().Place(TestSupport::TrayPartMark(partSize));
        job.centre = cv::Point2f(static_cast<float>(mark.x), static_cast<float>(mark.y));
        for (const cv::Point2d& corner : TestSupport::TrayPartOutline(partSize)) {
            const cv::Point2d place = tray.poses.front().Place(corner);
            job.shape.emplace_back(static_cast<float>(place.x), static_cast<float>(place.y));
        }
        const int x = static_cast<int>(mark.x);
        const int y = static_cast<int>(mark.y);
        square = {{x - 15, y - 15}, {x + 15, y - 15}, {x + 15, y + 15}, {x - 15, y + 15}};
        seed = UtilityFunctions::findDominantLABColorPointInContour(tray.picture, square);
        region = FindColourRegion(tray.picture, seed, 10.0, 8, 20, false);
        part = Reference::CutTemplate(tray.picture, seed, box);
        target = job.centre - cv::Point2f(box.tl());
    }

    TestSupport::Tray tray;
    Reference::FillingJob job;
    std::vector<cv::Point> square;
    cv::Point seed;
    std::vector<cv::Point> region;
    cv::Rect box;
    cv::Mat part;
    cv::Point2f target;
};

/// The bench of these arguments; the last one is kept, since both rows of a pair use it.
const Bench& BenchFor(const benchmark::State& state) {
    static std::pair<int, int> arguments;
    static std::unique_ptr<Bench> bench;
    const std::pair<int, int> wanted(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    if (!bench || arguments != wanted) {
        const Silence silence;
        bench = std::make_unique<Bench>(wanted.first, wanted.second);
        arguments = wanted;
    }
    return *bench;
}

std::vector<ShapeVariant> Train(const Bench& bench, line2Dup::Detector& detector) {
    return SmartFilling().TrainTemplateFromMat(bench.part, detector, true, true, bench.target, {0.0f, 360.0f}, 0.2f,
                                               {1.0f}, 0.0f, 6);
}

void DominantColourPlain(benchmark::State& state) {
    const Bench& bench = BenchFor(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(Reference::DominantColourPoint(bench.tray.picture, bench.square));
    }
}

void DominantColourLibrary(benchmark::State& state) {
    const Bench& bench = BenchFor(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            UtilityFunctions::findDominantLABColorPointInContour(bench.tray.picture, bench.square));
    }
}

void ColourRegionPlain(benchmark::State& state) {
    const Bench& bench = BenchFor(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(Reference::FindColourRegion(bench.tray.picture, bench.seed, 10.0, 8, 20));
    }
}

void ColourRegionLibrary(benchmark::State& state) {
    const Bench& bench = BenchFor(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(FindColourRegion(bench.tray.picture, bench.seed, 10.0, 8, 20, false));
    }
}

/// From the tray's own colour the region runs over the whole picture, which is the slowest case.
const cv::Point onTheTray(2, 2);

void WholePictureRegionPlain(benchmark::State& state) {
    const Bench& bench = BenchFor(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(Reference::FindColourRegion(bench.tray.picture, onTheTray, 10.0, 8, 20));
    }
}

void WholePictureRegionLibrary(benchmark::State& state) {
    const Bench& bench = BenchFor(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(FindColourRegion(bench.tray.picture, onTheTray, 10.0, 8, 20, false));
    }
}

void ExpandContourPlain(benchmark::State& state) {
    const Bench& bench = BenchFor(state);
    for (auto _ : state) benchmark::DoNotOptimize(Reference::ExpandContour(bench.tray.picture, bench.region, 5));
}

void ExpandContourLibrary(benchmark::State& state) {
    const Bench& bench = BenchFor(state);
    for (auto _ : state) benchmark::DoNotOptimize(ExpandContour(bench.tray.picture, bench.region, 5));
}

void TrainingPlain(benchmark::State& state) {
    const Bench& bench = BenchFor(state);
    const Silence silence;
    for (auto _ : state) benchmark::DoNotOptimize(Reference::TrainAllAngles(bench.part, bench.target));
}

void TrainingLibrary(benchmark::State& state) {
    const Bench& bench = BenchFor(state);
    const Silence silence;
    for (auto _ : state) {
        line2Dup::Detector detector(64, {1, 2}, 30.0f, 60.0f);
        benchmark::DoNotOptimize(Train(bench, detector));
    }
}

void MatchingPlain(benchmark::State& state) {
    const Bench& bench = BenchFor(state);
    const Silence silence;
    const Reference::TrainedTemplates trained = Reference::TrainAllAngles(bench.part, bench.target);
    for (auto _ : state) {
        benchmark::DoNotOptimize(Reference::MatchTemplates(bench.tray.picture, trained, similarityPercent));
    }
}

void MatchingLibrary(benchmark::State& state) {
    const Bench& bench = BenchFor(state);
    const Silence silence;
    line2Dup::Detector detector(64, {1, 2}, 30.0f, 60.0f);
    const std::vector<ShapeVariant> variants = Train(bench, detector);
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            SmartFilling().MatchTemplates(bench.tray.picture, detector, variants, similarityPercent));
    }
}

void WholeJobPlain(benchmark::State& state) {
    const Bench& bench = BenchFor(state);
    const Silence silence;
    const PeakMemory memory;
    std::size_t copies = 0;
    for (auto _ : state) {
        const cv::Point seed = Reference::DominantColourPoint(bench.tray.picture, bench.square);
        copies = Reference::FillCopies(bench.tray.picture, seed, bench.job).matches.size();
    }
    state.counters["copies"] = static_cast<double>(copies);
    state.counters["peak MB"] = memory.Megabytes();
}

std::vector<double> Coordinates(const std::vector<cv::Point2f>& points, float cv::Point2f::*coordinate) {
    std::vector<double> values;
    for (const cv::Point2f& point : points) values.push_back(static_cast<double>(point.*coordinate));
    return values;
}

void WholeJobLibrary(benchmark::State& state) {
    const Bench& bench = BenchFor(state);
    const Silence silence;
    const std::unique_ptr<Algorithm> filling(AlgorithmFactory().CreateAlgorithm("IntelligentFilling"));
    filling->SetParameter("TargetShapeCenter_X", static_cast<double>(bench.job.centre.x));
    filling->SetParameter("TargetShapeCenter_Y", static_cast<double>(bench.job.centre.y));
    filling->SetParameter("TargetShapePoints_X", Coordinates(bench.job.shape, &cv::Point2f::x));
    filling->SetParameter("TargetShapePoints_Y", Coordinates(bench.job.shape, &cv::Point2f::y));
    const PeakMemory memory;
    cv::Mat destination;
    for (auto _ : state) filling->Execute(bench.tray.picture, destination);
    state.counters["copies"] = std::stod(filling->GetResultValue("OutputShapeCount"));
    state.counters["peak MB"] = memory.Megabytes();
}

void Stages(benchmark::internal::Benchmark* rows) {
    rows->Args({1280, 60})->Args({1280, 120})->Args({1280, 200})->Unit(benchmark::kMillisecond);
}

void OneTray(benchmark::internal::Benchmark* rows) { rows->Args({1280, 120})->Unit(benchmark::kMillisecond); }

void Trays(benchmark::internal::Benchmark* rows) {
    rows->Args({640, 60})->Args({640, 120});
    rows->Args({1280, 60})->Args({1280, 120})->Args({1280, 200});
    rows->Args({1920, 60})->Args({1920, 120})->Args({1920, 200});
    rows->Unit(benchmark::kMillisecond);
}

BENCHMARK(DominantColourPlain)->Name("Filling/dominant colour/plain")->Apply(OneTray);
BENCHMARK(DominantColourLibrary)->Name("Filling/dominant colour/library")->Apply(OneTray);
BENCHMARK(ColourRegionPlain)->Name("Filling/colour region/plain")->Apply(Stages);
BENCHMARK(ColourRegionLibrary)->Name("Filling/colour region/library")->Apply(Stages);
BENCHMARK(WholePictureRegionPlain)->Name("Filling/colour region of the whole picture/plain")->Apply(OneTray);
BENCHMARK(WholePictureRegionLibrary)->Name("Filling/colour region of the whole picture/library")->Apply(OneTray);
BENCHMARK(ExpandContourPlain)->Name("Filling/outline/plain")->Apply(Stages);
BENCHMARK(ExpandContourLibrary)->Name("Filling/outline/library")->Apply(Stages);
BENCHMARK(TrainingPlain)->Name("Filling/training/plain")->Apply(Stages);
BENCHMARK(TrainingLibrary)->Name("Filling/training/library")->Apply(Stages);
BENCHMARK(MatchingPlain)->Name("Filling/matching/plain")->Apply(Stages);
BENCHMARK(MatchingLibrary)->Name("Filling/matching/library")->Apply(Stages);
BENCHMARK(WholeJobPlain)->Name("Filling/whole job/plain")->Apply(Trays);
BENCHMARK(WholeJobLibrary)->Name("Filling/whole job/library")->Apply(Trays);

}  // namespace
}  // namespace Quorvane
