// The machine's scale from a circle of known size, and the centre of a cross: rendered targets whose geometry is
// known, good ones first, then those that the method is not made for.

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "examples/demo/AlgorithmRun.h"
#include "examples/demo/Drawing.h"
#include "examples/demo/Sections.h"
#include "tests/support/Scene.h"

namespace Demo {

namespace {

using namespace Quorvane::TestSupport;
namespace Calibration = Quorvane::CameraCalibration;

const cv::Size pictureSize(480, 360);
const cv::Point2d trueCenter(246.3, 174.8);
constexpr double trueRadius = 120.0;  // pixels
constexpr double realRadius = 8.0;    // millimetres

struct Target {
    std::string name;
    cv::Mat picture;
};

struct Found {
    bool found = false;
    cv::Point2f center{};
    double radius = 0.0;
    double scale = 0.0;
    double milliseconds = 0.0;
};

std::string Signed(double value, int digits) { return (value < 0.0 ? "" : "+") + Number(value, digits); }

std::string PointText(const cv::Point2d& p) { return "(" + Number(p.x, 2) + ", " + Number(p.y, 2) + ")"; }

Found MeasureScale(const Target& target) {
    Found result;
    result.milliseconds = MillisecondsOf([&] {
        result.found = Calibration::CalScalePixToMmUseCircle(target.picture, realRadius, 0.0, result.center,
                                                             result.radius, result.scale);
    });
    return result;
}

/// The whole picture with the circle, its centre and, for a cross, the edges of its bars.
Picture Whole(const Target& target, const Found& result, const std::vector<Quorvane::Line>& edges = {}) {
    constexpr float beyondThePicture = 1000.0f;
    Drawing drawing(target.picture, cv::Rect({0, 0}, pictureSize), 1);
    for (const Quorvane::Line& edge : edges) drawing.Fit(edge, beyondThePicture);
    if (result.found) {
        drawing.Fit(result.center, result.radius);
        drawing.Cross(result.center);
    }
    return {drawing.Image(), target.name};
}

/// The edges of the bars, measured as `FindCircleCross` does it: in the square around the ring's inside.
std::vector<Quorvane::Line> SidesOfBars(const cv::Mat& picture, const Found& circle) {
    using Quorvane::EdgePolarity;
    using Quorvane::SearchDirection;
    cv::Point2f center;
    double radius = 0.0;
    double score = 0.0;
    Quorvane::UtilityFunctions::MeasureCircle(picture, circle.center, circle.radius, center, radius, score,
                                              EdgePolarity::Negative, SearchDirection::Outward, 1.0, 30.0, 0.2f);
    std::vector<Quorvane::Line> lines;
    for (const SearchDirection direction : {SearchDirection::LeftToRight, SearchDirection::RightToLeft,
                                            SearchDirection::TopToBottom, SearchDirection::BottomToTop}) {
        Quorvane::Line line;
        Quorvane::UtilityFunctions::MeasureLine(picture, center, 2.0 * radius, 2.0 * radius, line,
                                                EdgePolarity::Negative, direction, 1.0, 30.0, 0.5);
        lines.push_back(line);
    }
    return lines;
}

/// The pixels about the true centre, with the edges of the bars, the true centre and the one found.
Picture MiddleOfCross(const Target& target, const Found& result, const std::vector<Quorvane::Line>& edges) {
    constexpr int reach = 18;
    constexpr int factor = 12;
    const cv::Point middle(cvRound(trueCenter.x), cvRound(trueCenter.y));
    Drawing drawing(target.picture, {middle.x - reach, middle.y - reach, 2 * reach, 2 * reach}, factor);
    constexpr float beyondThePart = 500.0f;
    for (const Quorvane::Line& edge : edges) drawing.Fit(edge, beyondThePart);
    drawing.Truth(trueCenter);
    if (result.found) drawing.Cross(result.center);
    return {drawing.Image(), target.name + ": the middle"};
}

cv::Mat DiscWithDistractors() {
    return Scene(pictureSize, 205.0)
        .Paint(Disc(trueCenter, trueRadius), 45.0)
        .Paint(Rectangle({50.0, 60.0}, {50.0, 50.0}, 20.0), 80.0)
        .Paint(Disc({430.0, 60.0}, 16.0), 60.0)
        .Paint(Stroke({{20.0, 330.0}, {120.0, 345.0}, {460.0, 320.0}}, 6.0), 90.0)
        .Blur(1.0)
        .Gray();
}

void ShowScales(Report& report) {
    const Scene ring = Scene(pictureSize, 205.0).Paint(Ring(trueCenter, trueRadius - 3.0, 6.0), 45.0).Blur(1.0);
    const std::vector<Target> targets{
        {"Disc among other things", DiscWithDistractors()},
        {"Thin ring, noise of 15 levels", Scene(ring).Noise(15.0, 21).Gray()},
        {"Pale disc, 12 levels",
         Scene(pictureSize, 205.0).Paint(Disc(trueCenter, trueRadius), 193.0).Blur(1.0).Noise(2.0, 22).Gray()},
        {"Disc, light falling to 60 %",
         Scene(pictureSize, 205.0).Paint(Disc(trueCenter, trueRadius), 45.0).Blur(1.0).Light(1.0, 0.6).Gray()},
        {"Light disc on a dark ground",
         Scene(pictureSize, 45.0).Paint(Disc(trueCenter, trueRadius), 205.0).Blur(1.0).Gray()},
        {"Thin ring out of focus", Scene(ring).Blur(4.0).Gray()}};
    std::vector<Picture> pictures;
    std::vector<std::vector<std::string>> table{
        {"target", "centre", "off by", "radius", "off by", "pixels per mm", "off by", "time"},
        {"the truth", PointText(trueCenter), "", Number(trueRadius, 2), "", Number(trueRadius / realRadius, 4), "",
         ""}};
    for (const Target& target : targets) {
        const Found result = MeasureScale(target);
        pictures.push_back(Whole(target, result));
        if (!result.found) {
            table.push_back({target.name, "no circle", "", "", "", "", "", Milliseconds(result.milliseconds)});
            continue;
        }
        table.push_back({target.name, PointText(result.center),
                         Number(cv::norm(cv::Point2d(result.center) - trueCenter), 3) + " px", Number(result.radius, 2),
                         Signed(result.radius - trueRadius, 2) + " px", Number(result.scale, 4),
                         Signed((result.scale * realRadius / trueRadius - 1.0) * 100.0, 2) + " %",
                         Milliseconds(result.milliseconds)});
    }
    report.Heading("CalScalePixToMmUseCircle: a circle of 8 mm radius");
    report.Pictures(pictures);
    report.Grid("Truth and found", table);
    report.Paragraph(
        "The last two are what the method is not made for. It looks for the outline of something dark: around a light "
        "disc that is the dark ground itself, cut off at 2.5 radii or at the picture's border. And a thin ring out of "
        "focus is dark well beyond its true outline.");
}

cv::Mat CrossInRing(double ringWidth, double turn, double noise) {
    Scene scene(pictureSize, 205.0);
    scene.Paint(Ring(trueCenter, trueRadius - ringWidth / 2.0, ringWidth), 45.0)
        .Paint(Cross(trueCenter, 2.0 * trueRadius - ringWidth, 10.0, turn), 45.0)
        .Blur(1.0);
    if (noise > 0.0) scene.Noise(noise, 23);
    return scene.Gray();
}

Found MeasureCross(const Target& target) {
    Found result;
    result.milliseconds = MillisecondsOf(
        [&] { result.found = Calibration::FindCircleCross(target.picture, result.center, result.radius); });
    return result;
}

void ShowCrosses(Report& report) {
    constexpr double wide = 37.0;
    constexpr double thin = 13.0;
    const std::vector<Target> targets{
        {"Wide ring", CrossInRing(wide, 0.0, 0.0)},
        {"Wide ring, turned by 6 degrees, noise of 8 levels", CrossInRing(wide, 6.0, 8.0)},
        {"Thin ring", CrossInRing(thin, 0.0, 0.0)}};
    std::vector<Picture> pictures;
    std::vector<std::vector<std::string>> table{
        {"target", "centre", "off by", "radius", "off by", "time"},
        {"the truth", PointText(trueCenter), "", Number(trueRadius, 2), "", ""}};
    for (const Target& target : targets) {
        const Found result = MeasureCross(target);
        const std::vector<Quorvane::Line> edges = SidesOfBars(target.picture, MeasureScale(target));
        pictures.push_back(Whole(target, result, edges));
        pictures.push_back(MiddleOfCross(target, result, edges));
        const std::string time = Milliseconds(result.milliseconds);
        if (!result.found) {
            table.push_back({target.name, "no cross", "", "", "", time});
            continue;
        }
        table.push_back({target.name, PointText(result.center),
                         Number(cv::norm(cv::Point2d(result.center) - trueCenter), 3) + " px", Number(result.radius, 2),
                         Signed(result.radius - trueRadius, 2) + " px", time});
    }
    report.Heading("FindCircleCross: where the bars meet");
    report.Pictures(pictures);
    report.Grid("Truth and found", table);
    report.Paragraph(
        "In green, the radius found about the centre found, and the four edges of the bars; red is the "
        "centre found, blue the true one. The bars are measured in the square around the ring's inside. Its corners "
        "lie in a wide ring; a thin one they pass, and the edge met first there is the ring's outside, which draws the "
        "lines away from the bars.");
}

}  // namespace

void ScaleAndCrossSection(Report& report) {
    report.Section("Scale and cross",
                   "CalScalePixToMmUseCircle takes the scale of a picture from a dark circle of known radius; "
                   "FindCircleCross finds the centre of a cross inside a dark ring, to a fraction of a pixel.");
    ShowScales(report);
    ShowCrosses(report);
}

}  // namespace Demo
