// Copies of one marked object found by "IntelligentFilling", and how a host repeats its job on each of them.

#include <algorithm>
#include <cmath>
#include <iostream>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "examples/demo/AlgorithmRun.h"
#include "examples/demo/FillingScenes.h"
#include "examples/demo/Sections.h"
#include "tests/support/CapturedStream.h"

namespace Demo {

namespace {

const cv::Scalar jobColour(0, 255, 0);
const cv::Scalar markColour(255, 0, 255);
const cv::Scalar listColour(0, 0, 0);

/// What the library says of one copy, read as a host reads it.
struct Placement {
    cv::Point2d rotateCentre;
    cv::Point2d offset;
    double angle = 0.0;

    /// Where a point of the job lies on the copy: turned counter-clockwise about the rotate centre, then shifted.
    cv::Point2d Place(const cv::Point2d& point) const {
        const double radians = angle * CV_PI / 180.0;
        const cv::Point2d d = point - rotateCentre;
        const cv::Point2d turned(std::cos(radians) * d.x + std::sin(radians) * d.y,
                                 -std::sin(radians) * d.x + std::cos(radians) * d.y);
        return rotateCentre + turned + offset;
    }
};

std::vector<Placement> PlacementsOf(const AlgorithmRun& run) {
    std::vector<Placement> placements;
    const int count = std::stoi(run.Result("OutputShapeCount"));
    for (int n = 1; n <= count; ++n) {
        const auto number = [&](const char* field) {
            return std::stod(run.Result("OutputShape_" + std::to_string(n) + field));
        };
        placements.push_back({{number("_OffsetRotateCenterX"), number("_OffsetRotateCentetY")},
                              {number("_OffsetX"), number("_OffsetY")},
                              number("_OffsetAngle")});
    }
    return placements;
}

void DrawClosed(cv::Mat& picture, const std::vector<cv::Point2d>& points, const cv::Scalar& colour, int width) {
    constexpr int fractionBits = 4;
    std::vector<cv::Point> fixed;
    for (const cv::Point2d& p : points) {
        fixed.emplace_back(cvRound(p.x * (1 << fractionBits)), cvRound(p.y * (1 << fractionBits)));
    }
    cv::polylines(picture, std::vector<std::vector<cv::Point>>{fixed}, true, colour, width, cv::LINE_AA, fractionBits);
}

void DrawMark(cv::Mat& picture, const cv::Point2d& mark) {
    cv::drawMarker(picture, cv::Point(mark), markColour, cv::MARKER_CROSS, 24, 2, cv::LINE_AA);
}

std::vector<cv::Point2d> Placed(const std::vector<cv::Point2f>& shape, const Placement& placement) {
    std::vector<cv::Point2d> points;
    for (const cv::Point2f& point : shape) points.push_back(placement.Place(point));
    return points;
}

cv::Mat WithJob(const FillingScene& scene, const std::vector<Placement>& placements) {
    cv::Mat picture = scene.picture.clone();
    for (const Placement& placement : placements) {
        DrawClosed(picture, Placed(scene.shape, placement), jobColour, 2);
        DrawMark(picture, placement.Place(scene.mark));
    }
    return picture;
}

/// The results per copy, and how far they are from the pose at which the copy was laid down, if that is known.
std::vector<std::vector<std::string>> CopyLines(const FillingScene& scene, const std::vector<Placement>& placements) {
    std::vector<std::vector<std::string>> lines{
        {"n", "_OffsetX", "_OffsetY", "_OffsetAngle", "_OffsetRotateCenterX", "_OffsetRotateCentetY"}};
    if (!scene.poses.empty()) lines.front().insert(lines.front().end(), {"off the true place", "off the true turn"});
    for (std::size_t i = 0; i < placements.size(); ++i) {
        const Placement& placement = placements[i];
        lines.push_back({std::to_string(i + 1), Number(placement.offset.x, 2), Number(placement.offset.y, 2),
                         Number(placement.angle, 1), Number(placement.rotateCentre.x, 1),
                         Number(placement.rotateCentre.y, 1)});
        if (scene.poses.empty()) continue;
        double distance = cv::norm(cv::Point2d(scene.picture.cols, scene.picture.rows));
        double turn = 0.0;
        for (const auto& pose : scene.poses) {
            const double d = cv::norm(placement.Place(scene.mark) - pose.Place(scene.markInPart));
            if (d >= distance) continue;
            distance = d;
            turn = std::remainder(placement.angle - (pose.angle - scene.poses.front().angle), 360.0);
        }
        lines.back().insert(lines.back().end(), {Number(distance, 2) + " px", Number(turn, 1) + " deg"});
    }
    return lines;
}

/// A run with the notices that the library wrote meanwhile.
AlgorithmRun Fill(const FillingScene& scene, double similarity, std::string& notices) {
    std::vector<double> x;
    std::vector<double> y;
    for (const cv::Point2f& point : scene.shape) {
        x.push_back(point.x);
        y.push_back(point.y);
    }
    const Quorvane::TestSupport::CapturedStream out(std::cout);
    const AlgorithmRun run = RunAlgorithm("IntelligentFilling", scene.picture, [&](Quorvane::Algorithm& algorithm) {
        algorithm.SetParameter("SimilarityMin", similarity);
        algorithm.SetParameter("TargetShapeCenter_X", scene.mark.x);
        algorithm.SetParameter("TargetShapeCenter_Y", scene.mark.y);
        algorithm.SetParameter("TargetShapePoints_X", x);
        algorithm.SetParameter("TargetShapePoints_Y", y);
    });
    notices = out.Text();
    return run;
}

void ShowRun(Report& report, const std::string& heading, const FillingScene& scene, double similarity) {
    std::string notices;
    const AlgorithmRun run = Fill(scene, similarity, notices);
    const std::vector<Placement> placements = PlacementsOf(run);

    cv::Mat given = scene.picture.clone();
    DrawClosed(given, {scene.shape.begin(), scene.shape.end()}, jobColour, 2);
    DrawMark(given, scene.mark);

    report.Heading(heading);
    report.Pictures(
        {{given, "What the host gives: a picture, a marked point and the shape of its job"},
         {run.destination,
          "The library's destination: red dots where the job belongs, black lines through the lists "
          "_X and _Y"},
         {WithJob(scene, placements),
          "What the host makes of it: its job turned by _OffsetAngle about the rotate centre and shifted by "
          "_OffsetX, _OffsetY"}});
    const std::string count = "OutputShapeCount " + run.Result("OutputShapeCount");
    report.Grid(scene.poses.empty() ? count : count + " of " + std::to_string(scene.poses.size()),
                CopyLines(scene, placements));
    std::vector<Row> outcome = run.Outcome();
    outcome.emplace_back("SimilarityMin", Number(similarity, 2));
    outcome.emplace_back("notices on standard output", notices);
    report.Table("Outcome", outcome);
}

/// The steps from the job on the marked object to the job on a copy, and what the lists hold instead.
void ShowSteps(Report& report) {
    using Quorvane::TestSupport::PartPose;
    constexpr double size = 120.0;
    const PartPose marked{{90.0, 110.0}, 0.0};
    const PartPose copy{{190.0, 200.0}, 40.0};
    const cv::Scalar partGray(190, 190, 190);
    const auto outline = [&](const PartPose& pose) {
        std::vector<cv::Point2d> points;
        for (const cv::Point2d& corner : Quorvane::TestSupport::TrayPartOutline(size))
            points.push_back(pose.Place(corner));
        return points;
    };
    const std::vector<cv::Point2d> jobInPart{{-40, -16}, {-8, -16}, {-8, -24}, {10, -10}, {-8, 4}, {-8, -4}, {-40, -4}};
    const cv::Point2d mark = marked.Place({-6.0, -5.0});
    const Placement result{mark, copy.Place({-6.0, -5.0}) - mark, copy.angle};
    const Placement turnedOnly{mark, {0.0, 0.0}, copy.angle};
    const Placement listed{mark + result.offset, result.offset, copy.angle};

    const auto panel = [&](const std::vector<Placement>& faint, const Placement& strong, const cv::Scalar& colour) {
        cv::Mat picture(340, 320, CV_8UC3, cv::Scalar(245, 245, 245));
        for (const PartPose& pose : {marked, copy}) DrawClosed(picture, outline(pose), partGray, 2);
        const auto draw = [&](const Placement& placement, const cv::Scalar& with) {
            std::vector<cv::Point2d> points;
            for (const cv::Point2d& point : jobInPart) points.push_back(placement.Place(marked.Place(point)));
            DrawClosed(picture, points, with, 2);
        };
        for (const Placement& placement : faint) draw(placement, cv::Scalar(150, 215, 150));
        draw(strong, colour);
        DrawMark(picture, mark);
        return picture;
    };
    const Placement given{mark, {0.0, 0.0}, 0.0};
    const cv::Scalar strongGreen(0, 150, 0);
    report.Heading("From the keys to the job on a copy");
    report.Pictures({{panel({}, given, strongGreen), "1. The job on the marked object; the cross is the rotate centre"},
                     {panel({given}, turnedOnly, strongGreen), "2. Turned counter-clockwise by _OffsetAngle"},
                     {panel({given, turnedOnly}, result, strongGreen), "3. Shifted by _OffsetX, _OffsetY: done"},
                     {panel({given}, listed, listColour),
                      "The lists _X, _Y instead: turned about the copy's own marked point, then shifted"}});
}

}  // namespace

void FillingSection(Report& report) {
    report.Section(
        "Filling",
        "The algorithm IntelligentFilling finds every copy of a marked object at any turn, so that a job that was "
        "drawn "
        "on one copy can be repeated on all of them. The object's colour around the marked point tells it apart from "
        "what lies under it.");
    ShowRun(report, "A photograph of 24 different coins, enlarged twice: one of them marked", PhotographedCoins(), 0.5);
    report.Paragraph(
        "No two of these coins are alike. What the marked one shares with others is its size and its outline, so the "
        "similarity is set low; each place that is found then lies on a coin of about its size, and none beside one. "
        "At 0.55 eight are found, at 0.6 the marked one alone. The turns say little here: a round outline has none.");
    ShowRun(report, "Seven cups from a photograph, laid on photographed gravel", CupsOnGravel(), 0.6);
    ShowRun(report, "A rendered tray of twelve parts, light falling to 55 percent, noise of 5 gray levels",
            TrayOfParts(), 0.75);
    ShowSteps(report);
}

}  // namespace Demo
