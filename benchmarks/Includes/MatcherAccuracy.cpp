// How exact the shape matcher is: rendered parts in known poses, found with templates at every 0.2 degrees. Prints the
// table of docs/accuracy.md.
//
//     build/release/benchmarks/Includes/matcher_accuracy

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Includes/line2Dup.h"
#include "tests/Includes/MatcherScenes.h"
#include "tests/support/RandomInput.h"
#include "tests/support/Scene.h"

namespace {

using line2Dup::Detector;
using line2Dup::MatchHit;
using Quorvane::TestSupport::Part;
using Quorvane::TestSupport::PartPicture;
using Quorvane::TestSupport::Pose;
using Quorvane::TestSupport::RandomInput;
using Quorvane::TestSupport::Scene;

constexpr int templates = 1800;
constexpr float angleStep = 0.2f;
constexpr float threshold = 70.0f;
constexpr int scenesPerCell = 40;

struct Condition {
    const char* name;
    double blur;
    double noise;
    double lightRight;
    bool colour;
};

/// Mean and worst of errors.
class Errors {
public:
    void Add(double error) {
        sum_ += error;
        worst_ = std::max(worst_, error);
        ++count_;
    }
    double Mean() const { return sum_ / count_; }
    double Worst() const { return worst_; }
    int Count() const { return count_; }

private:
    double sum_ = 0.0;
    double worst_ = 0.0;
    int count_ = 0;
};

cv::Mat SceneOf(double extent, const Pose& pose, const Condition& condition, int seed) {
    const int side = static_cast<int>(extent) * 2 / 16 * 16 + 64;
    Scene scene(cv::Size(side + 32, side), cv::Scalar(70.0, 90.0, 80.0));
    scene.Paint(Part(extent, pose), cv::Scalar(190.0, 160.0, 210.0))
        .Blur(condition.blur)
        .Light(1.0, condition.lightRight)
        .Noise(condition.noise, static_cast<std::uint32_t>(seed));
    return condition.colour ? scene.Colour() : scene.Gray();
}

double AngleBetween(double a, double b) {
    const double difference = std::fmod(std::abs(a - b), 360.0);
    return std::min(difference, 360.0 - difference);
}

/// Finds one part in each scene of a cell and prints the cell's figures.
void PrintCell(const Detector& detector, double extent, double pictureCentre, const Condition& condition) {
    RandomInput random(430);
    Errors distance;
    Errors angle;
    for (int i = 0; i < scenesPerCell; ++i) {
        const Pose pose{{extent + 40.0 + random.Real(-8.0, 8.0), extent + 30.0 + random.Real(-8.0, 8.0)},
                        random.Real(0.0, 360.0)};
        const std::vector<MatchHit> hits =
            detector.match(SceneOf(extent, pose, condition, i), threshold, {"part"}, cv::Mat());
        if (hits.empty()) continue;
        const line2Dup::ShapeTemplate& templ = detector.templateLevels("part", hits[0].templateId)[0];
        const double x = hits[0].subX - static_cast<float>(templ.tlX) + pictureCentre;
        const double y = hits[0].subY - static_cast<float>(templ.tlY) + pictureCentre;
        distance.Add(std::hypot(x - pose.centre.x, y - pose.centre.y));
        angle.Add(AngleBetween(hits[0].templateId * static_cast<double>(angleStep), pose.angle));
    }
    std::printf("| %.0f | %s | %d of %d | %.2f / %.2f | %.2f / %.2f |\n", extent, condition.name, distance.Count(),
                scenesPerCell, distance.Mean(), distance.Worst(), angle.Mean(), angle.Worst());
}

}  // namespace

int main() {
    std::cout.setstate(std::ios::failbit);  // the matcher's own lines
    std::printf("| part, pixels | scene | found | distance, pixels, mean / worst | angle, degrees, mean / worst |\n");
    std::printf("|---|---|---|---|---|\n");
    for (const double extent : {60.0, 120.0, 240.0}) {
        const int side = static_cast<int>(extent * 1.5) / 2 * 2;
        Detector detector(64, {1, 2}, 30.0f, 60.0f);
        Quorvane::TestSupport::TrainAllAngles(detector, PartPicture(extent, side), templates, angleStep);
        for (const Condition& condition :
             {Condition{"clean", 0.8, 0.0, 1.0, true}, Condition{"gray", 0.8, 0.0, 1.0, false},
              Condition{"blur of 2 px", 2.0, 0.0, 1.0, true}, Condition{"noise of 8 levels", 0.8, 8.0, 1.0, true},
              Condition{"light falling to half", 0.8, 2.0, 0.5, true}}) {
            PrintCell(detector, extent, side * 0.5, condition);
        }
    }
    return 0;
}
