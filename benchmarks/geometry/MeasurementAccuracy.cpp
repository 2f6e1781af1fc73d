// How exact the edge measurements are: rendered scenes whose geometry is known, measured and compared. Prints the
// tables of docs/accuracy.md.
//
//     build/release/benchmarks/geometry/measurement_accuracy

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <functional>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "geometry/CircleFit.h"
#include "geometry/EdgeCaliper.h"
#include "geometry/UtilityFunctions.h"
#include "tests/support/Errors.h"
#include "tests/support/RandomInput.h"
#include "tests/support/Scene.h"

namespace {

using Quorvane::Curve;
using Quorvane::EdgePolarity;
using Quorvane::Line;
using Quorvane::SearchDirection;
using Quorvane::TestSupport::Errors;
using Quorvane::TestSupport::Scene;
using Quorvane::UtilityFunctions::MeasureCircle;
using Quorvane::UtilityFunctions::MeasureCurve;
using Quorvane::UtilityFunctions::MeasureLine;

constexpr double dark = 40.0;
constexpr double light = 200.0;
constexpr double lensBlur = 1.0;
constexpr double sigma = 1.0;
constexpr double threshold = 30.0;
constexpr std::array<double, 4> noiseLevels{0.0, 2.0, 5.0, 10.0};
constexpr int phases = 16;
constexpr int angles = 12;

std::uint32_t NextSeed() {
    static std::uint32_t seed = 0;
    return ++seed;
}

cv::Mat Finished(Scene scene, double noise, double blur = lensBlur) {
    if (blur > 0.0) scene.Blur(blur);
    if (noise > 0.0) scene.Noise(noise, NextSeed());
    return scene.Gray();
}

struct EdgeErrors {
    Errors points;  // of single calipers
    Errors line;    // of the fitted line, where it passes the centre of the rectangle
    Errors turn;    // of its direction, in degrees
};

/// An edge from dark to light whose normal has the given direction, off the centre by `phase` along the normal.
EdgeErrors MeasureEdge(double degrees, double phase, double noise, double blur = lensBlur,
                       double leastAmplitude = threshold) {
    const cv::Size size(140, 120);
    const cv::Point2d center(70.0, 60.0);
    const double radians = degrees * CV_PI / 180.0;
    const cv::Point2d normal(std::cos(radians), std::sin(radians));
    const cv::Mat image =
        Finished(Scene(size, dark).Paint(Quorvane::TestSupport::HalfPlane(center + phase * normal, degrees), light),
                 noise, blur);
    // Scanned along the axis that is nearer to the normal, in the direction from dark to light.
    const bool alongX = std::abs(normal.x) >= std::abs(normal.y) - 1e-9;
    const SearchDirection direction =
        alongX ? (normal.x > 0.0 ? SearchDirection::LeftToRight : SearchDirection::RightToLeft)
               : (normal.y > 0.0 ? SearchDirection::TopToBottom : SearchDirection::BottomToTop);
    const double width = alongX ? 80.0 : 50.0;
    const double height = alongX ? 50.0 : 80.0;
    const auto errorOf = [&](const cv::Point2d& p) { return (p - center).dot(normal) - phase; };

    EdgeErrors errors;
    Curve curve;
    MeasureCurve(image, center, width, height, curve, EdgePolarity::Positive, direction, sigma, leastAmplitude, 1.0, 0);
    for (const cv::Point2f& point : curve.measuredPoints) errors.points.Add(errorOf(point));
    Line line;
    MeasureLine(image, center, width, height, line, EdgePolarity::Positive, direction, sigma, leastAmplitude, 1.0);
    const cv::Point2d along(line.direction);
    const cv::Point2d onLine(line.linePoint);
    errors.line.Add(errorOf(onLine + (center - onLine).dot(along) * along));
    errors.turn.Add(std::asin(along.dot(normal)) * 180.0 / CV_PI);
    return errors;
}

void Add(EdgeErrors& all, const EdgeErrors& some) {
    all.points.Add(some.points);
    all.line.Add(some.line);
    all.turn.Add(some.turn);
}

void PrintEdges() {
    std::puts("### Straight edges\n");
    std::puts("16 phases x 12 directions per row; pixels, the turn in degrees.\n");
    std::puts(
        "| noise | point: mean | worst | scatter | line: mean | worst | scatter | turn: mean | worst | scatter |");
    std::puts("|---|---|---|---|---|---|---|---|---|---|");
    std::array<EdgeErrors, angles> byAngle;
    std::array<EdgeErrors, phases> byPhase;
    for (const double noise : noiseLevels) {
        EdgeErrors all;
        for (int a = 0; a < angles; ++a) {
            for (int p = 0; p < phases; ++p) {
                const EdgeErrors errors = MeasureEdge(30.0 * a, static_cast<double>(p) / phases, noise);
                Add(all, errors);
                if (noise == 0.0) Add(byAngle[static_cast<std::size_t>(a)], errors);
                if (noise == 0.0 && a == 0) Add(byPhase[static_cast<std::size_t>(p)], errors);
            }
        }
        std::printf("| %.0f |%s%s%s\n", noise, all.points.Columns().c_str(), all.line.Columns().c_str(),
                    all.turn.Columns().c_str());
    }
    std::puts("\nWithout noise, by the direction of the edge's normal (0 scans to the right, 90 down):\n");
    std::puts("| direction | point: mean | worst | scatter | line: mean | worst | scatter |");
    std::puts("|---|---|---|---|---|---|---|");
    for (int a = 0; a < angles; ++a) {
        const EdgeErrors& errors = byAngle[static_cast<std::size_t>(a)];
        std::printf("| %d |%s%s\n", 30 * a, errors.points.Columns().c_str(), errors.line.Columns().c_str());
    }
    std::puts("\nWithout noise, an upright edge by its phase (0 at the centre of a pixel, 8/16 between two):\n");
    std::puts("| phase | error |\n|---|---|");
    for (int p = 0; p < phases; ++p) {
        std::printf("| %d/16 | %+.3f |\n", p, byPhase[static_cast<std::size_t>(p)].line.Mean());
    }
}

/// The largest amplitude of an upright edge, at the phase where it is least.
double LeastAmplitudeOfAll(double blur) {
    double least = 1e9;
    for (int p = 0; p < phases; ++p) {
        const cv::Point2d through(70.0 + static_cast<double>(p) / phases, 60.0);
        const cv::Mat image =
            Finished(Scene({140, 120}, dark).Paint(Quorvane::TestSupport::HalfPlane(through, 0.0), light), 0.0, blur);
        Quorvane::UtilityFunctions::EdgeCaliper caliper;
        caliper.configure(60.0, 70.0, 0.0, 40.0, 2.5, image, "bilinear");
        std::vector<double> rows, columns, amplitudes, distances;
        caliper.measure(image, sigma, threshold, "positive", "all", rows, columns, amplitudes, distances);
        least = std::min(least, *std::max_element(amplitudes.begin(), amplitudes.end()));
    }
    return least;
}

void PrintBlurs() {
    constexpr double highShare = 0.85;
    std::puts("\n### Straight edges, sharp and blurred\n");
    std::puts("Without noise; upright edges at 16 phases, by the blur of the picture. The last columns have the");
    std::puts("threshold at 85 % of the edge's amplitude (at the phase where that is least).\n");
    std::puts("| blur | point: mean | worst | scatter | high threshold | point: mean | worst | scatter |");
    std::puts("|---|---|---|---|---|---|---|---|");
    for (const double blur : {0.0, 0.5, 0.7, 1.0, 1.5, 2.0}) {
        const double high = highShare * LeastAmplitudeOfAll(blur);
        EdgeErrors low;
        EdgeErrors raised;
        for (int p = 0; p < phases; ++p) {
            Add(low, MeasureEdge(0.0, static_cast<double>(p) / phases, 0.0, blur));
            Add(raised, MeasureEdge(0.0, static_cast<double>(p) / phases, 0.0, blur, high));
        }
        std::printf("| %.1f |%s %.0f |%s\n", blur, low.points.Columns().c_str(), high, raised.points.Columns().c_str());
    }
}

void PrintDiscs() {
    std::puts("\n### Discs\n");
    std::puts("Dark discs on a light ground at 8 positions of the centre per row, angle step 1 degree.\n");
    std::puts("| radius | noise | radius: mean | worst | scatter | centre: mean | worst | scatter | least score |");
    std::puts("|---|---|---|---|---|---|---|---|---|");
    for (const double radius : {10.0, 20.0, 40.0, 80.0, 150.0, 300.0}) {
        for (const double noise : noiseLevels) {
            Errors radii;
            Errors centers;
            double leastScore = 1.0;
            for (int p = 0; p < 8; ++p) {
                const double middle = std::ceil(1.25 * radius) + 12.0;
                const cv::Point2d center(middle + p / 8.0, middle + (p * 3 % 8) / 8.0);
                const int side = static_cast<int>(2.0 * middle) + 1;
                const cv::Mat image = Finished(
                    Scene({side, side}, light).Paint(Quorvane::TestSupport::Disc(center, radius), dark), noise);
                cv::Point2f found;
                double foundRadius = 0.0;
                double score = 0.0;
                MeasureCircle(image, cv::Point2d(middle, middle), 1.25 * radius + 6.0, found, foundRadius, score,
                              EdgePolarity::Positive, SearchDirection::Outward, sigma, threshold, 1.0);
                radii.Add(foundRadius - radius);
                centers.Add(cv::norm(cv::Point2d(found) - center));
                leastScore = std::min(leastScore, score);
            }
            std::printf("| %.0f | %.0f |%s%s %.4f |\n", radius, noise, radii.Columns().c_str(),
                        centers.Columns().c_str(), leastScore);
        }
    }
}

void PrintFarCircles() {
    constexpr int circles = 200;
    constexpr int points = 360;
    std::puts("\n### Circles far from the origin\n");
    std::puts("The fit alone: 360 exact points, rounded to float as measured ones are, of 200 circles per row whose");
    std::puts("centre lies up to 100 pixels beside (distance, distance).\n");
    std::puts("| distance | radius | radius: mean | worst | scatter | centre: mean | worst | scatter |");
    std::puts("|---|---|---|---|---|---|---|---|");
    Quorvane::TestSupport::RandomInput random(1);
    for (const double distance : {0.0, 1000.0, 2000.0, 4000.0, 8000.0}) {
        for (const double radius : {10.0, 50.0, 200.0}) {
            Errors radii;
            Errors centers;
            for (int i = 0; i < circles; ++i) {
                const cv::Point2d center(distance + random.Real(-100.0, 100.0), distance + random.Real(-100.0, 100.0));
                std::vector<cv::Point2f> rim;
                for (int k = 0; k < points; ++k) {
                    const double theta = 2.0 * CV_PI * k / points;
                    rim.emplace_back(center + radius * cv::Point2d(std::cos(theta), std::sin(theta)));
                }
                cv::Point2f found;
                double foundRadius = 0.0;
                double score = 0.0;
                Quorvane::UtilityFunctions::fitCircleAlgebraic(rim, found, foundRadius, score);
                radii.Add(foundRadius - radius);
                centers.Add(cv::norm(cv::Point2d(found) - center));
            }
            std::printf("| %.0f | %.0f |%s%s\n", distance, radius, radii.Columns().c_str(), centers.Columns().c_str());
        }
    }
}

/// A wave of 12 pixels height, whose steepest place rises by 0.8.
double WaveAt(double x, double phase) { return 60.0 + phase + 12.0 * std::sin(x / 15.0); }

/// The distance of a point to the wave, positive below it.
double DistanceToWave(const cv::Point2d& p, double phase) {
    double nearest = 1e9;
    for (double x = p.x - 8.0; x <= p.x + 8.0; x += 0.005) {
        nearest = std::min(nearest, std::hypot(p.x - x, p.y - WaveAt(x, phase)));
    }
    return p.y < WaveAt(p.x, phase) ? -nearest : nearest;
}

void PrintCurves() {
    std::puts("\n### Curves\n");
    std::puts("A wave at 16 phases per row; distances to the true curve.\n");
    std::puts("| noise | measured point: mean | worst | scatter | curve point: mean | worst | scatter |");
    std::puts("|---|---|---|---|---|---|---|");
    for (const double noise : noiseLevels) {
        Errors measured;
        Errors resampled;
        for (int p = 0; p < phases; ++p) {
            const double phase = static_cast<double>(p) / phases;
            std::vector<cv::Point2d> outline;
            for (int x = -40; x <= 480; ++x) outline.emplace_back(x / 2.0, WaveAt(x / 2.0, phase));
            outline.emplace_back(240.0, 200.0);
            outline.emplace_back(-20.0, 200.0);
            const cv::Mat image =
                Finished(Scene({200, 120}, dark).Paint(Quorvane::TestSupport::Polygon(outline), light), noise);
            Curve curve;
            MeasureCurve(image, {100.0f, 60.0f}, 160.0, 60.0, curve, EdgePolarity::Positive,
                         SearchDirection::TopToBottom, sigma, threshold, 1.0, 0);
            for (const cv::Point2f& point : curve.measuredPoints) measured.Add(DistanceToWave(point, phase));
            for (const cv::Point2f& point : curve.curvePoints) resampled.Add(DistanceToWave(point, phase));
        }
        std::printf("| %.0f |%s%s\n", noise, measured.Columns().c_str(), resampled.Columns().c_str());
    }
}

void PrintEnds() {
    std::puts("\n### Near the end of a caliper\n");
    std::puts("A sharp step from 40 to 200 at the given distance from the first sample of the caliper.\n");
    std::puts("| distance | found at |\n|---|---|");
    for (int distance = 0; distance < 6; ++distance) {
        const double place = 20.0 + distance + 0.5;
        const cv::Mat image = Finished(
            Scene({100, 40}, dark).Paint(Quorvane::TestSupport::HalfPlane({place, 20.0}, 0.0), light), 0.0, 0.0);
        Line line;
        MeasureLine(image, {40.0f, 20.0f}, 40.0, 20.0, line, EdgePolarity::Positive, SearchDirection::LeftToRight,
                    sigma, threshold, 1.0);
        const std::string found = line.isVertical ? std::to_string(line.intercept - 20.0f).substr(0, 5) : "not found";
        std::printf("| %.1f | %s |\n", distance + 0.5, found.c_str());
    }
}

}  // namespace

int main() {
    PrintEdges();
    PrintBlurs();
    PrintDiscs();
    PrintFarCircles();
    PrintCurves();
    PrintEnds();
    return 0;
}
