// Hole filling and the dominant colour on 1920 x 1080, each from its definition and as the library does it.

#include <benchmark/benchmark.h>

#include <opencv2/imgproc.hpp>

#include "geometry/ColourRegions.h"
#include "geometry/ImageOperators.h"
#include "tests/reference/PlainDominantColour.h"
#include "tests/reference/PlainHoleFilling.h"
#include "tests/support/Pictures.h"
#include "tests/support/RandomInput.h"

namespace Quorvane::UtilityFunctions {
namespace {

const cv::Size fullHd(1920, 1080);

// As a host would fill specks on a plate.
constexpr double colourTolerance = 12.0;
constexpr int areaLimit = 400;
constexpr int closeRadius = 5;
constexpr int expandRadius = 3;

cv::Mat Photograph() {
    cv::Mat picture;
    cv::resize(TestSupport::LoadColourPicture("coffee.png"), picture, fullHd, 0.0, 0.0, cv::INTER_CUBIC);
    return picture;
}

/// A plain plate with a thousand specks.
cv::Mat Plate() {
    TestSupport::RandomInput random(7);
    cv::Mat plate(fullHd, CV_8UC3, cv::Scalar(140, 150, 160));
    for (int i = 0; i < 1000; ++i) {
        const cv::Rect speck(random.Integer(0, fullHd.width - 9), random.Integer(0, fullHd.height - 9),
                             random.Integer(2, 8), random.Integer(2, 8));
        plate(speck).setTo(cv::Scalar::all(random.Integer(0, 90)));
    }
    return plate;
}

cv::Mat LabOf(const cv::Mat& picture) {
    cv::Mat lab;
    cv::cvtColor(picture, lab, cv::COLOR_BGR2Lab);
    return lab;
}

template <cv::Mat (*Make)()>
void RegionsPlain(benchmark::State& state) {
    const cv::Mat lab = LabOf(Make());
    for (auto _ : state) {
        benchmark::DoNotOptimize(Reference::LargeColourRegions(lab, colourTolerance, areaLimit));
    }
}

template <cv::Mat (*Make)()>
void RegionsLibrary(benchmark::State& state) {
    const cv::Mat lab = LabOf(Make());
    for (auto _ : state) benchmark::DoNotOptimize(LargeColourRegions(lab, colourTolerance, areaLimit));
}

template <cv::Mat (*Make)()>
void HolesPlain(benchmark::State& state) {
    const cv::Mat picture = Make();
    for (auto _ : state) {
        benchmark::DoNotOptimize(Reference::FillHoles(picture, colourTolerance, areaLimit, closeRadius, expandRadius));
    }
}

template <cv::Mat (*Make)()>
void HolesLibrary(benchmark::State& state) {
    const cv::Mat picture = Make();
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            fillHolesMorphologicalEnhanced(picture, colourTolerance, areaLimit, closeRadius, expandRadius));
    }
}

/// A square of the given side around the middle.
std::vector<cv::Point> Square(int side) {
    const cv::Point low(fullHd.width / 2 - side / 2, fullHd.height / 2 - side / 2);
    const cv::Point high = low + cv::Point(side - 1, side - 1);
    return {low, {high.x, low.y}, high, {low.x, high.y}};
}

void DominantColourPlain(benchmark::State& state) {
    const cv::Mat picture = Photograph();
    const std::vector<cv::Point> contour = Square(static_cast<int>(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(Reference::DominantColourPoint(picture, contour));
}

void DominantColourLibrary(benchmark::State& state) {
    const cv::Mat picture = Photograph();
    const std::vector<cv::Point> contour = Square(static_cast<int>(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(findDominantLABColorPointInContour(picture, contour));
}

BENCHMARK(RegionsPlain<Photograph>)->Name("LargeColourRegions/photograph/plain")->Unit(benchmark::kMillisecond);
BENCHMARK(RegionsLibrary<Photograph>)->Name("LargeColourRegions/photograph/library")->Unit(benchmark::kMillisecond);
BENCHMARK(RegionsPlain<Plate>)->Name("LargeColourRegions/plate/plain")->Unit(benchmark::kMillisecond);
BENCHMARK(RegionsLibrary<Plate>)->Name("LargeColourRegions/plate/library")->Unit(benchmark::kMillisecond);
BENCHMARK(HolesPlain<Photograph>)->Name("fillHoles/photograph/plain")->Unit(benchmark::kMillisecond);
BENCHMARK(HolesLibrary<Photograph>)->Name("fillHoles/photograph/library")->Unit(benchmark::kMillisecond);
BENCHMARK(HolesPlain<Plate>)->Name("fillHoles/plate/plain")->Unit(benchmark::kMillisecond);
BENCHMARK(HolesLibrary<Plate>)->Name("fillHoles/plate/library")->Unit(benchmark::kMillisecond);
BENCHMARK(DominantColourPlain)
    ->Name("findDominantLABColorPoint/plain")
    ->Arg(40)
    ->Arg(100)
    ->Arg(400)
    ->Arg(1000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(DominantColourLibrary)
    ->Name("findDominantLABColorPoint/library")
    ->Arg(40)
    ->Arg(100)
    ->Arg(400)
    ->Arg(1000)
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace Quorvane::UtilityFunctions
