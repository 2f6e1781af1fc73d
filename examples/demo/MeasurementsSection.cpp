// Edges measured to a fraction of a pixel: a line, a circle and a curve in photographs, and a rendered plate whose
// geometry is known. Calipers, edge points and fits are drawn here, from the arguments and the results.

#include <cmath>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "examples/demo/AlgorithmRun.h"
#include "examples/demo/Drawing.h"
#include "examples/demo/Sections.h"
#include "tests/support/Pictures.h"
#include "tests/support/Scene.h"

namespace Demo {

namespace {

using Quorvane::Curve;
using Quorvane::EdgePolarity;
using Quorvane::Line;
using Quorvane::SearchDirection;
namespace Measure = Quorvane::UtilityFunctions;

constexpr double sigma = 1.0;

/// An axis-parallel search rectangle and how it is scanned.
struct Region {
    cv::Point2f center;
    double width;
    double height;
    EdgePolarity polarity;
    SearchDirection direction;
    double threshold;
    double step;

    bool ScansAlongX() const {
        return direction == SearchDirection::LeftToRight || direction == SearchDirection::RightToLeft;
    }

    /// The rectangle, and every few calipers an arrow in the direction of the scan.
    void Draw(Drawing& drawing) const {
        const cv::Point2d middle(center);
        const cv::Point2d half(width / 2.0, height / 2.0);
        drawing.Rectangle(middle, half);
        constexpr double pixelsBetweenArrows = 8.0;
        const bool forwards = direction == SearchDirection::LeftToRight || direction == SearchDirection::TopToBottom;
        const double sign = forwards ? 1.0 : -1.0;
        const double extent = ScansAlongX() ? height : width;
        for (double at = (step - extent) / 2.0; at < extent / 2.0; at += pixelsBetweenArrows) {
            const cv::Point2d foot = ScansAlongX() ? cv::Point2d(0.0, at) : cv::Point2d(at, 0.0);
            const cv::Point2d reach = ScansAlongX() ? cv::Point2d(sign * half.x, 0.0) : cv::Point2d(0.0, sign * half.y);
            drawing.Arrow(middle + foot - reach, middle + foot + reach);
        }
    }

    /// The edge points: a curve measurement over the same calipers tells them.
    Curve MeasureAsCurve(const cv::Mat& image) const {
        Curve curve;
        Measure::MeasureCurve(image, center, width, height, curve, polarity, direction, sigma, threshold, step, 0);
        return curve;
    }

    Line MeasureAsLine(const cv::Mat& image) const {
        Line line;
        Measure::MeasureLine(image, center, width, height, line, polarity, direction, sigma, threshold, step);
        return line;
    }
};

std::string PointText(const cv::Point2d& p) { return "(" + Number(p.x, 3) + ", " + Number(p.y, 3) + ")"; }

void ShowLine(Report& report) {
    const cv::Mat photograph = Quorvane::TestSupport::LoadColourPicture("coffee.png");
    const Region region{{65, 58}, 70.0, 80.0, EdgePolarity::Positive, SearchDirection::TopToBottom, 30.0, 1.0};
    Line line;
    const double milliseconds = MillisecondsOf([&] { line = region.MeasureAsLine(photograph); });
    const std::vector<cv::Point2f> points = region.MeasureAsCurve(photograph).measuredPoints;

    Drawing drawing(photograph, {0, 0, 180, 120}, 4);
    region.Draw(drawing);
    drawing.Fit(line, 120.0f);
    drawing.Points(points);
    report.Heading("A straight edge: the border of the table, from above");
    report.PictureWithGrid({drawing.Image(), "The rectangle with some of its calipers, the edge points and the line"},
                           "MeasureLine",
                           {{"result", "value"},
                            {"toString()", line.toString()},
                            {"linePoint", PointText(line.linePoint)},
                            {"direction", PointText(line.direction)},
                            {"edge points", std::to_string(points.size())},
                            {"time", Milliseconds(milliseconds)}});
}

void ShowCircle(Report& report) {
    const cv::Mat photograph = Quorvane::TestSupport::LoadGrayPicture("coins.png");
    const cv::Point2f center(211, 191);
    constexpr double searchRadius = 31.0;
    cv::Point2f found;
    double radius = 0.0;
    double score = 0.0;
    const double milliseconds = MillisecondsOf([&] {
        Measure::MeasureCircle(photograph, center, searchRadius, found, radius, score, EdgePolarity::Positive,
                               SearchDirection::Inward, sigma, 60.0, 1.0);
    });

    Drawing drawing(photograph, {150, 140, 120, 100}, 6);
    for (int degrees = 0; degrees < 360; degrees += 10) {
        const double theta = degrees * CV_PI / 180.0;
        const cv::Point2d rim = cv::Point2d(center) + searchRadius * cv::Point2d(std::cos(theta), std::sin(theta));
        drawing.Arrow(rim, center);
    }
    drawing.Fit(found, radius);
    drawing.Cross(found);
    report.Heading("A round edge: a coin, from outside");
    report.PictureWithGrid({drawing.Image(), "Some of the calipers, and the circle"}, "MeasureCircle",
                           {{"result", "value"},
                            {"foundCenter", PointText(found)},
                            {"foundRadius", Number(radius, 3)},
                            {"score", Number(score, 4)},
                            {"time", Milliseconds(milliseconds)}});
}

void ShowCurve(Report& report) {
    const cv::Mat photograph = Quorvane::TestSupport::LoadGrayPicture("photographer.png");
    const Region region{{100, 158}, 92.0, 116.0, EdgePolarity::Negative, SearchDirection::TopToBottom, 60.0, 2.0};
    Curve curve;
    const double milliseconds = MillisecondsOf([&] { curve = region.MeasureAsCurve(photograph); });

    Drawing drawing(photograph, {40, 90, 180, 140}, 4);
    region.Draw(drawing);
    drawing.Fit(curve.getCurvePoints());
    drawing.Points(curve.measuredPoints);
    report.Heading("A free curve: the photographer's back, from above");
    report.PictureWithGrid(
        {drawing.Image(), "The rectangle with some of its calipers, the edge points and the curve"}, "MeasureCurve",
        {{"result", "value"},
         {"measuredPoints", std::to_string(curve.measuredPoints.size())},
         {"curvePoints", std::to_string(curve.curvePoints.size())},
         {"meanFitError", Number(curve.meanFitError, 3) + " px"},
         {"first and last", PointText(curve.curvePoints.front()) + ", " + PointText(curve.curvePoints.back())},
         {"time", Milliseconds(milliseconds)}});
}

/// A plate of known geometry: a light rectangle, turned a little, with a dark hole.
void ShowPlate(Report& report) {
    const cv::Point2d plateCenter(160.3, 120.6);
    const cv::Size2d plateSize(220.0, 150.0);
    constexpr double turn = 4.0;
    constexpr double holeRadius = 42.0;
    const cv::Mat picture = Quorvane::TestSupport::Scene({320, 240}, 50.0)
                                .Paint(Quorvane::TestSupport::Rectangle(plateCenter, plateSize, turn), 200.0)
                                .Paint(Quorvane::TestSupport::Disc(plateCenter, holeRadius), 60.0)
                                .Blur(1.2)
                                .Noise(3.0, 11)
                                .Gray();
    const std::vector<Region> regions{
        {{50, 120}, 40.0, 100.0, EdgePolarity::Positive, SearchDirection::LeftToRight, 30.0, 1.0},
        {{270, 120}, 40.0, 100.0, EdgePolarity::Positive, SearchDirection::RightToLeft, 30.0, 1.0},
        {{160, 45}, 140.0, 40.0, EdgePolarity::Positive, SearchDirection::TopToBottom, 30.0, 1.0},
        {{160, 195}, 140.0, 40.0, EdgePolarity::Positive, SearchDirection::BottomToTop, 30.0, 1.0}};
    std::vector<Line> sides;
    Drawing drawing(picture, cv::Rect({0, 0}, picture.size()), 2);
    for (const Region& region : regions) {
        sides.push_back(region.MeasureAsLine(picture));
        region.Draw(drawing);
        drawing.Fit(sides.back(), 60.0f);
    }
    cv::Point2f center;
    Measure::computeQuadrilateralCenterRobust(sides[0], sides[1], sides[2], sides[3], center);
    cv::Point2f hole;
    double radius = 0.0;
    double score = 0.0;
    Measure::MeasureCircle(picture, {160, 120}, 60.0, hole, radius, score, EdgePolarity::Positive,
                           SearchDirection::Outward, sigma, 30.0, 1.0);
    drawing.Fit(hole, radius);
    drawing.Cross(center);
    const double measuredTurn = std::atan(sides[2].slope) * 180.0 / CV_PI;
    report.Heading("A rendered plate: what was measured, and what is true");
    report.PictureWithGrid({drawing.Image(), "Four sides, their centre (cross) and the hole, in a noisy picture"},
                           "Measured and true",
                           {{"", "measured", "true", "error"},
                            {"centre of the sides", PointText(center), PointText(plateCenter),
                             Number(cv::norm(cv::Point2d(center) - plateCenter), 3) + " px"},
                            {"turn of the upper side", Number(measuredTurn, 3) + " deg", Number(turn, 3) + " deg",
                             Number(std::abs(measuredTurn - turn), 3) + " deg"},
                            {"centre of the hole", PointText(hole), PointText(plateCenter),
                             Number(cv::norm(cv::Point2d(hole) - plateCenter), 3) + " px"},
                            {"radius of the hole", Number(radius, 3), Number(holeRadius, 3),
                             Number(std::abs(radius - holeRadius), 3) + " px"}});
}

}  // namespace

void MeasurementsSection(Report& report) {
    report.Section("Measured edges",
                   "MeasureLine, MeasureCircle and MeasureCurve lay rows of calipers across a region, take from each "
                   "one the first edge that it meets, and fit a shape through these points.");
    ShowLine(report);
    ShowCircle(report);
    ShowCurve(report);
    ShowPlate(report);
}

}  // namespace Demo
