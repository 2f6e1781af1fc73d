// How exact the scale from a circle and the centre of a cross are: rendered targets whose geometry is known, measured
// and compared. Prints the tables of docs/accuracy.md.
//
//     build/release/benchmarks/calibration/circle_accuracy

#include <cstdint>
#include <cstdio>
#include <functional>
#include <opencv2/core.hpp>
#include <string>

#include "calibration/CameraCalibration.h"
#include "tests/support/Errors.h"
#include "tests/support/Scene.h"

namespace {

using Quorvane::TestSupport::Cross;
using Quorvane::TestSupport::Disc;
using Quorvane::TestSupport::Either;
using Quorvane::TestSupport::Errors;
using Quorvane::TestSupport::Ring;
using Quorvane::TestSupport::Scene;
using Quorvane::TestSupport::Shape;
namespace Calibration = Quorvane::CameraCalibration;

const cv::Size pictureSize(640, 480);
constexpr double ground = 200.0;
constexpr double contrast = 160.0;
constexpr double lensBlur = 1.0;
constexpr int positions = 8;
constexpr double thinRing = 6.0;

struct Look {
    double noise = 0.0;
    double contrast = ::contrast;
    double blur = lensBlur;
    double lightRight = 1.0;
    bool inverted = false;  // light shapes on a dark ground
};

/// The shape around `center`, its outside at `radius`.
using Target = std::function<Shape(cv::Point2d center, double radius)>;

const Target disc = [](cv::Point2d center, double radius) { return Disc(center, radius); };
const Target ring = [](cv::Point2d center, double radius) { return Ring(center, radius - thinRing / 2.0, thinRing); };

/// A cross whose bars reach into a ring of the given width.
Target CrossInRing(double width, double barWidth, double turn) {
    return [=](cv::Point2d center, double radius) {
        return Either(Ring(center, radius - width / 2.0, width), Cross(center, 2.0 * radius - width, barWidth, turn));
    };
}

/// A cross within a ring of the given width that its bars do not reach.
Target FreeCrossInRing(double width, double barWidth, double length) {
    return [=](cv::Point2d center, double radius) {
        return Either(Ring(center, radius - width / 2.0, width), Cross(center, length, barWidth));
    };
}

std::uint32_t NextSeed() {
    static std::uint32_t seed = 0;
    return ++seed;
}

cv::Mat Render(const Shape& shape, const Look& look) {
    const double dark = ground - look.contrast;
    Scene scene(pictureSize, look.inverted ? dark : ground);
    scene.Paint(shape, look.inverted ? ground : dark);
    if (look.blur > 0.0) scene.Blur(look.blur);
    scene.Light(1.0, look.lightRight);
    if (look.noise > 0.0) scene.Noise(look.noise, NextSeed());
    return scene.Gray();
}

cv::Point2d Center(int position) { return {323.0 + position / 8.0, 237.0 + (position * 3 % 8) / 8.0}; }

struct Figures {
    Errors radius;
    Errors center;
    Errors scale;  // percent
};

Figures MeasureScale(const Target& target, double radius, const Look& look) {
    constexpr double realRadius = 8.0;
    Figures figures;
    for (int p = 0; p < positions; ++p) {
        const cv::Mat picture = Render(target(Center(p), radius), look);
        cv::Point2f center;
        double found = 0.0;
        double scale = 0.0;
        if (!Calibration::CalScalePixToMmUseCircle(picture, realRadius, 0.0, center, found, scale)) continue;
        figures.radius.Add(found - radius);
        figures.center.Add(cv::norm(cv::Point2d(center) - Center(p)));
        figures.scale.Add((scale * realRadius / radius - 1.0) * 100.0);
    }
    return figures;
}

Figures MeasureCross(const Target& target, double radius, const Look& look) {
    Figures figures;
    for (int p = 0; p < positions; ++p) {
        const cv::Mat picture = Render(target(Center(p), radius), look);
        cv::Point2f center;
        double found = 0.0;
        if (!Calibration::FindCircleCross(picture, center, found)) continue;
        figures.radius.Add(found - radius);
        figures.center.Add(cv::norm(cv::Point2d(center) - Center(p)));
    }
    return figures;
}

void PrintRow(const std::string& titles, const Figures& figures) {
    std::printf("| %s | %zu |", titles.c_str(), figures.radius.Count());
    if (figures.radius.Count() > 0) {
        std::printf(" %+.2f / %.2f | %.3f / %.3f |", figures.radius.Mean(), figures.radius.Worst(),
                    figures.center.Mean(), figures.center.Worst());
    } else {
        std::printf(" | |");
    }
    if (figures.scale.Count() > 0) std::printf(" %+.2f / %.2f |", figures.scale.Mean(), figures.scale.Worst());
    std::puts("");
    std::fflush(stdout);
}

std::string Text(double value, int digits = 0) {
    char text[32];
    std::snprintf(text, sizeof text, "%.*f", digits, value);
    return text;
}

void PrintHead(const char* title, const char* columns, bool withScale) {
    std::printf("\n### %s\n\n| %s | found of %d | radius: mean / worst | centre: mean / worst |%s\n|", title, columns,
                positions, withScale ? " scale in %: mean / worst |" : "");
    for (const char* c = columns; *c != '\0'; ++c) {
        if (*c == '|') std::printf("---|");
    }
    std::puts(withScale ? "---|---|---|---|---|" : "---|---|---|---|");
}

void PrintBothShapes(const std::string& titles, double radius, const Look& look) {
    PrintRow("disc | " + titles, MeasureScale(disc, radius, look));
    PrintRow("ring | " + titles, MeasureScale(ring, radius, look));
}

void PrintScales() {
    PrintHead("Sizes and noise", "shape | radius | noise", true);
    for (const double radius : {25.0, 50.0, 100.0, 200.0}) {
        for (const double noise : {0.0, 20.0}) {
            PrintBothShapes(Text(radius) + " | " + Text(noise), radius, {noise});
        }
    }
    PrintHead("Contrasts", "shape | contrast | noise", true);
    for (const double height : {160.0, 40.0, 10.0, 5.0}) {
        for (const double noise : {0.0, 3.0}) {
            PrintBothShapes(Text(height) + " | " + Text(noise), 100.0, {noise, height});
        }
    }
    PrintHead("Blurs", "shape | blur", true);
    for (const double blur : {0.0, 1.0, 2.0, 4.0}) PrintBothShapes(Text(blur, 1), 100.0, {0.0, contrast, blur});
    PrintHead("Light falling to the right", "shape | light on the right, %", true);
    for (const double light : {0.8, 0.6, 0.4}) {
        PrintBothShapes(Text(100.0 * light), 100.0, {0.0, contrast, lensBlur, light});
    }
    PrintHead("Light shapes on a dark ground", "shape | radius", true);
    for (const double radius : {25.0, 50.0, 100.0, 200.0}) {
        PrintBothShapes(Text(radius), radius, {0.0, contrast, lensBlur, 1.0, true});
    }
}

/// A disc in the middle with another one beside it, nearer than three quarters of the picture's longer side.
void PrintNeighbours() {
    constexpr double radius = 50.0;
    PrintHead("A disc of radius 50 in the middle, another one 180 pixels beside it", "radius of the other", true);
    for (const double other : {20.0, 40.0, 50.0, 60.0, 100.0}) {
        const Target pair = [=](cv::Point2d center, double r) {
            return Either(Disc(center, r), Disc(center + cv::Point2d(180.0, 20.0), other));
        };
        PrintRow(Text(other), MeasureScale(pair, radius, {}));
    }
}

void PrintCrosses() {
    constexpr double radius = 150.0;
    constexpr double barWidth = 12.0;
    PrintHead("Crosses whose bars reach the ring, by the ring's width", "width, % of the inner radius | noise", false);
    for (const double share : {0.03, 0.06, 0.12, 0.2, 0.3, 0.4, 0.45, 0.6}) {
        for (const double noise : {0.0, 5.0}) {
            const double width = radius * share / (1.0 + share);
            PrintRow(Text(100.0 * share) + " | " + Text(noise),
                     MeasureCross(CrossInRing(width, barWidth, 0.0), radius, {noise}));
        }
    }
    PrintHead("Crosses within a ring 45 % as wide as its inner radius, by size", "radius | bar | noise", false);
    for (const double outer : {40.0, 80.0, 150.0, 220.0}) {
        for (const double bar : {4.0, 16.0}) {
            for (const double noise : {0.0, 5.0}) {
                PrintRow(Text(outer) + " | " + Text(bar) + " | " + Text(noise),
                         MeasureCross(CrossInRing(outer * 0.45 / 1.45, bar, 0.0), outer, {noise}));
            }
        }
    }
    const double safeWidth = radius * 0.45 / 1.45;
    PrintHead("The same, radius 150, by contrast", "contrast | noise", false);
    for (const double height : {160.0, 80.0, 40.0, 30.0}) {
        for (const double noise : {0.0, 3.0}) {
            PrintRow(Text(height) + " | " + Text(noise),
                     MeasureCross(CrossInRing(safeWidth, barWidth, 0.0), radius, {noise, height}));
        }
    }
    PrintHead("The same, by the turn of the cross in degrees", "turn", false);
    for (const double turn : {0.0, 1.0, 5.0, 10.0, 20.0, 45.0}) {
        PrintRow(Text(turn, 1), MeasureCross(CrossInRing(safeWidth, barWidth, turn), radius, {}));
    }
    PrintHead("Crosses that do not reach the ring, radius 150", "ring | length, % of the inside", false);
    for (const double width : {8.0, safeWidth}) {
        for (const double share : {0.2, 0.4, 0.6, 0.8, 0.95}) {
            PrintRow(Text(width) + " | " + Text(100.0 * share),
                     MeasureCross(FreeCrossInRing(width, barWidth, 2.0 * share * (radius - width)), radius, {}));
        }
    }
}

}  // namespace

int main() {
    PrintScales();
    PrintNeighbours();
    PrintCrosses();
    return 0;
}
