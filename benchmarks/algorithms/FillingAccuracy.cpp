// How exactly "IntelligentFilling" finds the copies on rendered trays whose poses are known. Per row two trays of
// twelve parts; "refused" counts trays with a status other than 0, on which nothing was looked for; "found" and
// "rendered" count parts, "false" counts hits that are no part. "mean px" and "worst px" are distances of the copies'
// marked points to the true ones, "mean deg" and "worst deg" differences of turns, of parts that were found. The copy
// that the host marked, which is found exactly, is left out of the errors.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "framework/AlgorithmFactory.h"
#include "tests/support/CapturedStream.h"
#include "tests/support/Tray.h"

namespace Quorvane {
namespace {

using TestSupport::PartPose;
using TestSupport::Tray;

/// A hit farther from every part, as a share of the part's size, or turned differently by more degrees is a false one.
constexpr double farthestShare = 0.15;
constexpr double mostDegrees = 15.0;

struct Hit {
    cv::Point2d place;
    double angle;
};

/// The copies that the algorithm tells; `status` is what it returns.
std::vector<Hit> FindCopies(const Tray& tray, double partSize, double similarity, int& status) {
    const std::unique_ptr<Algorithm> filling(AlgorithmFactory().CreateAlgorithm("IntelligentFilling"));
    const cv::Point2d mark = tray.poses.front().Place(TestSupport::TrayPartMark(partSize));
    filling->SetParameter("SimilarityMin", similarity);
    filling->SetParameter("TargetShapeCenter_X", mark.x);
    filling->SetParameter("TargetShapeCenter_Y", mark.y);
    filling->SetParameter("TargetShapePoints_X", mark.x);
    filling->SetParameter("TargetShapePoints_Y", mark.y);
    cv::Mat destination;
    const TestSupport::CapturedStream notices(std::cout);
    status = filling->Execute(tray.picture, destination);

    std::vector<Hit> hits;
    const int count = std::stoi(filling->GetResultValue("OutputShapeCount"));
    for (int n = 1; n <= count; ++n) {
        const auto number = [&](const char* field) {
            return std::stod(filling->GetResultValue("OutputShape_" + std::to_string(n) + field));
        };
        hits.push_back({mark + cv::Point2d(number("_OffsetX"), number("_OffsetY")), number("_OffsetAngle")});
    }
    return hits;
}

class Figures {
public:
    void Add(const Tray& tray, double partSize, const std::vector<Hit>& hits) {
        std::vector<bool> found(tray.poses.size(), false);
        rendered_ += static_cast<int>(tray.poses.size());
        for (const Hit& hit : hits) {
            const std::size_t part = NearestPart(tray, partSize, hit);
            const double distance = Distance(tray.poses[part], partSize, hit);
            const double turn = Turn(tray.poses[part], hit);
            if (found[part] || distance > farthestShare * partSize || turn > mostDegrees) {
                ++false_;
                continue;
            }
            found[part] = true;
            ++found_;
            if (part == 0) continue;
            ++measured_;
            distanceSum_ += distance;
            turnSum_ += turn;
            worstDistance_ = std::max(worstDistance_, distance);
            worstTurn_ = std::max(worstTurn_, turn);
        }
    }

    void Store(benchmark::State& state) const {
        const double count = std::max(measured_, 1);
        state.counters["found"] = found_;
        state.counters["rendered"] = rendered_;
        state.counters["false"] = false_;
        state.counters["mean px"] = distanceSum_ / count;
        state.counters["worst px"] = worstDistance_;
        state.counters["mean deg"] = turnSum_ / count;
        state.counters["worst deg"] = worstTurn_;
    }

private:
    static double Distance(const PartPose& pose, double partSize, const Hit& hit) {
        return cv::norm(pose.Place(TestSupport::TrayPartMark(partSize)) - hit.place);
    }

    static double Turn(const PartPose& pose, const Hit& hit) {
        return std::abs(std::remainder(hit.angle - pose.angle, 360.0));
    }

    static std::size_t NearestPart(const Tray& tray, double partSize, const Hit& hit) {
        const auto nearest = std::min_element(tray.poses.begin(), tray.poses.end(), [&](const auto& a, const auto& b) {
            return Distance(a, partSize, hit) < Distance(b, partSize, hit);
        });
        return static_cast<std::size_t>(nearest - tray.poses.begin());
    }

    int found_ = 0;
    int rendered_ = 0;
    int false_ = 0;
    int measured_ = 0;
    double distanceSum_ = 0.0;
    double turnSum_ = 0.0;
    double worstDistance_ = 0.0;
    double worstTurn_ = 0.0;
};

/// Arguments: size of the part in pixels, noise in gray levels, light at the right edge in percent, least similarity in
/// percent.
void Accuracy(benchmark::State& state) {
    for (auto _ : state) {
        const auto partSize = static_cast<double>(state.range(0));
        Figures figures;
        int refused = 0;
        for (const std::uint32_t seed : {21U, 22U}) {
            TestSupport::TraySettings settings;
            settings.size = {1280, 960};
            settings.partSize = partSize;
            settings.noise = static_cast<double>(state.range(1));
            settings.lightAtRight = static_cast<double>(state.range(2)) / 100.0;
            settings.seed = seed;
            const Tray tray = TestSupport::RenderTray(settings);
            // Half a percent more, since the algorithm cuts to whole percent.
            const double similarity = (static_cast<double>(state.range(3)) + 0.5) / 100.0;
            int status = 0;
            figures.Add(tray, partSize, FindCopies(tray, partSize, similarity, status));
            if (status != 0) ++refused;
        }
        figures.Store(state);
        state.counters["refused"] = refused;
    }
}

void SizesAndPictures(benchmark::internal::Benchmark* rows) {
    for (const int size : {40, 60, 80, 120, 160, 200}) {
        for (const int noise : {0, 5, 10}) rows->Args({size, noise, 100, 80});
        rows->Args({size, 5, 75, 80})->Args({size, 5, 50, 80});
    }
    for (const int size : {40, 60, 80, 120, 160, 200}) {
        for (const int similarity : {60, 70, 75, 85, 90, 95}) rows->Args({size, 5, 75, similarity});
    }
}

BENCHMARK(Accuracy)
    ->Name("IntelligentFilling/accuracy")
    ->ArgNames({"size", "noise", "light", "similarity"})
    ->Apply(SizesAndPictures)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace Quorvane
