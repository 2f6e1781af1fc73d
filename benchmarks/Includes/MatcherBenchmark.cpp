// The shape matcher: each step from its definition and as the library does it. Scenes are rendered; the part of the
// scenes is 120 pixels across and turned at will, and it is trained with 64 features at all angles.

#include <benchmark/benchmark.h>

#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <tuple>

#include "Includes/line2Dup.h"
#include "benchmarks/PeakMemory.h"
#include "tests/Includes/MatcherScenes.h"
#include "tests/reference/PlainShapeMatcher.h"
#include "tests/support/RandomInput.h"

namespace line2Dup {
namespace {

using Quorvane::TestSupport::PartPicture;
using Quorvane::TestSupport::PartScene;
using Quorvane::TestSupport::Pose;
using Quorvane::TestSupport::RandomInput;
using Quorvane::TestSupport::TrainAllAngles;
namespace Reference = Quorvane::Reference;

constexpr float weak = 30.0f;
constexpr float strong = 60.0f;
constexpr int pictureSide = 176;
constexpr int allAngles = 1801;
constexpr int wholeAngles = 361;

/// Copies on a grid with random turns, as many as asked for; parts shrink where so many would overlap.
const cv::Mat& SceneWith(int width, int height, int copies) {
    static std::map<std::tuple<int, int, int>, cv::Mat> scenes;
    cv::Mat& scene = scenes[{width, height, copies}];
    if (!scene.empty()) return scene;
    RandomInput random(400);
    std::vector<Pose> poses;
    constexpr int cell = 150;
    for (int y = cell / 2; y + cell / 2 <= height; y += cell) {
        for (int x = cell / 2; x + cell / 2 <= width; x += cell) {
            if (static_cast<int>(poses.size()) == copies) continue;
            poses.push_back({{x + random.Real(-8.0, 8.0), y + random.Real(-8.0, 8.0)}, random.Real(0.0, 360.0)});
        }
    }
    scene = PartScene({width, height}, 120.0, poses, 1);
    return scene;
}

const Detector& Trained(int templates) {
    static std::map<int, Detector> detectors;
    const auto found = detectors.find(templates);
    if (found != detectors.end()) return found->second;
    Detector& detector = detectors.emplace(templates, Detector(64, {1, 2}, weak, strong)).first->second;
    TrainAllAngles(detector, PartPicture(120.0, pictureSide), templates, 360.0f / static_cast<float>(templates - 1));
    return detector;
}

/// The library's lines go nowhere while this lives.
class Silence {
public:
    Silence() : before_(std::cout.rdbuf(sink_.rdbuf())) {}
    ~Silence() { std::cout.rdbuf(before_); }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

private:
    std::ostringstream sink_;
    std::streambuf* before_;
};

void MatchPlain(benchmark::State& state) {
    const int templates = static_cast<int>(state.range(0));
    const cv::Mat& scene =
        SceneWith(static_cast<int>(state.range(1)), static_cast<int>(state.range(2)), static_cast<int>(state.range(3)));
    const std::vector<Reference::TemplateClass> classes{Reference::TemplatesOf(Trained(templates), "part", templates)};
    std::size_t hits = 0;
    for (auto _ : state) {
        hits = Reference::MatchShapes({{1, 2}, weak}, classes, scene, static_cast<float>(state.range(4)), cv::Mat())
                   .size();
    }
    state.counters["hits"] = static_cast<double>(hits);
}

void MatchLibrary(benchmark::State& state) {
    const Detector& detector = Trained(static_cast<int>(state.range(0)));
    const cv::Mat& scene =
        SceneWith(static_cast<int>(state.range(1)), static_cast<int>(state.range(2)), static_cast<int>(state.range(3)));
    std::size_t hits = 0;
    const auto match = [&] {
        const Silence silence;
        hits = detector.match(scene, static_cast<float>(state.range(4)), {"part"}, cv::Mat()).size();
    };
    const Quorvane::PeakMemory memory;
    match();
    state.counters["peakMB"] = memory.Megabytes();
    for (auto _ : state) match();
    state.counters["hits"] = static_cast<double>(hits);
}

void Jobs(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"templates", "width", "height", "copies", "threshold"})->Unit(benchmark::kMillisecond);
    for (const int templates : {wholeAngles, allAngles}) {
        benchmark->Args({templates, 640, 480, 4, 80});
        benchmark->Args({templates, 1280, 960, 4, 80});
        benchmark->Args({templates, 1920, 1080, 4, 80});
        benchmark->Args({templates, 4000, 3000, 4, 80});
    }
    for (const int copies : {0, 12, 200}) benchmark->Args({allAngles, 4000, 3000, copies, 80});
    for (const int copies : {0, 12, 48}) benchmark->Args({allAngles, 1280, 960, copies, 80});
    for (const int threshold : {50, 60, 70, 90}) benchmark->Args({allAngles, 1280, 960, 4, threshold});
}
BENCHMARK(MatchPlain)->Name("Match/plain")->Apply(Jobs)->Iterations(1);
BENCHMARK(MatchLibrary)->Name("Match/library")->Apply(Jobs)->MinTime(0.2);

/// Many classes of three neighbouring angles each, as jobs with many kinds of parts have them.
constexpr int templatesInClass = 3;

std::string ClassId(int i) { return "class" + std::to_string(i); }

Detector TrainedInClasses(int classes) {
    Detector detector(64, {1, 2}, weak, strong);
    constexpr float centre = static_cast<float>(pictureSide) / 2.0f;
    const cv::Mat picture = PartPicture(120.0, pictureSide);
    for (int i = 0; i < classes; ++i) {
        detector.addShapeTemplate(picture, ClassId(i), cv::Mat(), 0);
        for (int k = 1; k < templatesInClass; ++k) {
            detector.addRotatedTemplate(ClassId(i), 0, static_cast<float>(i + k), {centre, centre});
        }
    }
    return detector;
}

void ClassesPlain(benchmark::State& state) {
    const auto count = static_cast<int>(state.range(0));
    const Detector detector = TrainedInClasses(count);
    std::vector<Reference::TemplateClass> classes;
    for (int i = 0; i < count; ++i) classes.push_back(Reference::TemplatesOf(detector, ClassId(i), templatesInClass));
    const cv::Mat& scene = SceneWith(1280, 960, 4);
    for (auto _ : state) {
        benchmark::DoNotOptimize(Reference::MatchShapes({{1, 2}, weak}, classes, scene, 80.0f, cv::Mat()));
    }
}
BENCHMARK(ClassesPlain)->Name("MatchClasses/plain")->Arg(10)->Arg(60)->Iterations(1)->Unit(benchmark::kMillisecond);

void ClassesLibrary(benchmark::State& state) {
    const Detector detector = TrainedInClasses(static_cast<int>(state.range(0)));
    const cv::Mat& scene = SceneWith(1280, 960, 4);
    for (auto _ : state) {
        const Silence silence;
        benchmark::DoNotOptimize(detector.match(scene, 80.0f, {}, cv::Mat()));
    }
}
BENCHMARK(ClassesLibrary)->Name("MatchClasses/library")->Arg(10)->Arg(60)->Unit(benchmark::kMillisecond);

cv::Mat SpreadOfScene() {
    const auto pyramid = ColorGradient(weak, 64, strong).makePyramid(SceneWith(1280, 960, 12), cv::Mat());
    cv::Mat spread;
    spreadOrientations(pyramid->quantised, spread, 2);
    return spread;
}

void ResponseMapsPlain(benchmark::State& state) {
    const cv::Mat spread = SpreadOfScene();
    for (auto _ : state) benchmark::DoNotOptimize(Reference::ComputeResponseMaps(spread));
}
BENCHMARK(ResponseMapsPlain)->Name("ComputeResponseMaps/plain")->Unit(benchmark::kMillisecond);

void ResponseMapsLibrary(benchmark::State& state) {
    const cv::Mat spread = SpreadOfScene();
    std::vector<cv::Mat> maps;
    for (auto _ : state) computeResponseMaps(spread, maps);
}
BENCHMARK(ResponseMapsLibrary)->Name("ComputeResponseMaps/library")->Unit(benchmark::kMillisecond);

void RotationPlain(benchmark::State& state) {
    const ShapeTemplateLevels upright = Trained(wholeAngles).templateLevels("part", 0);
    for (auto _ : state) {
        std::vector<ShapeTemplateLevels> templates;
        for (int i = 1; i < allAngles; ++i) {
            templates.push_back(
                Reference::RotateTemplate(upright, static_cast<float>(i) * 0.2f, {pictureSide / 2, pictureSide / 2}));
        }
        benchmark::DoNotOptimize(templates);
    }
}
BENCHMARK(RotationPlain)->Name("RotateAllTemplates/plain")->Unit(benchmark::kMillisecond);

void RotationLibrary(benchmark::State& state) {
    Detector upright(64, {1, 2}, weak, strong);
    upright.addShapeTemplate(PartPicture(120.0, pictureSide), "part", cv::Mat(), 0);
    for (auto _ : state) {
        Detector detector = upright;
        for (int i = 1; i < allAngles; ++i) {
            detector.addRotatedTemplate("part", 0, static_cast<float>(i) * 0.2f, {pictureSide / 2, pictureSide / 2});
        }
        benchmark::DoNotOptimize(detector);
    }
}
BENCHMARK(RotationLibrary)->Name("RotateAllTemplates/library")->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace line2Dup
