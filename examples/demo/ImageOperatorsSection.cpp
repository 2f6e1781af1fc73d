// The operators on whole pictures: sketch, hole filling, dominant colour, regions with their centres.

#include <algorithm>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "examples/demo/AlgorithmRun.h"
#include "examples/demo/Sections.h"
#include "tests/support/Pictures.h"
#include "tests/support/RandomInput.h"

namespace Demo {

namespace {

namespace Utility = Quorvane::UtilityFunctions;
using Quorvane::TestSupport::LoadColourPicture;

const cv::Scalar signal(255, 0, 255);
const cv::Scalar outline(0, 255, 0);

std::string Text(const cv::Point2f& point, int digits) {
    return "(" + Number(point.x, digits) + ", " + Number(point.y, digits) + ")";
}

int DifferingPixels(const cv::Mat& a, const cv::Mat& b) {
    cv::Mat difference;
    cv::absdiff(a, b, difference);
    cv::Mat anyChannel;
    cv::transform(difference, anyChannel, cv::Matx13f(1, 1, 1));
    return cv::countNonZero(anyChannel);
}

void ShowSketch(Report& report) {
    const cv::Mat coffee = LoadColourPicture("coffee.png");
    std::vector<Picture> pictures{{coffee, "The photograph"}};
    std::vector<Row> times;
    for (const int intensity : {0, 50, 100}) {
        cv::Mat sketch;
        const double time = MillisecondsOf([&] { Utility::ApplySketchFilter(coffee, sketch, intensity); });
        pictures.push_back({sketch, "Intensity " + std::to_string(intensity)});
        times.emplace_back("intensity " + std::to_string(intensity), Milliseconds(time));
    }
    report.Heading("ApplySketchFilter");
    report.Pictures(pictures);
    report.Table("Time", times);
}

void ShowFilling(Report& report, const std::string& heading, const cv::Mat& picture, double tolerance, int areaLimit,
                 int closeRadius, int expandRadius) {
    cv::Mat filled;
    const double time = MillisecondsOf([&] {
        filled = Utility::fillHolesMorphologicalEnhanced(picture, tolerance, areaLimit, closeRadius, expandRadius);
    });
    report.Heading(heading);
    report.Pictures({{picture, "The picture"}, {filled, "Its holes filled with the colour around them"}});
    report.Table("Parameters", {{"colorTolerance", Number(tolerance, 1)},
                                {"areaLimit", std::to_string(areaLimit)},
                                {"closeRadius", std::to_string(closeRadius)},
                                {"expandRadius", std::to_string(expandRadius)}});
    report.Table("Outcome",
                 {{"pixels painted", std::to_string(DifferingPixels(picture, filled))}, {"time", Milliseconds(time)}});
}

/// Two fields of colour with specks of dirt, one of them too large to be taken for a hole.
cv::Mat DirtyPlate() {
    Quorvane::TestSupport::RandomInput random(5);
    cv::Mat plate(300, 480, CV_8UC3, cv::Scalar(150, 140, 90));
    plate.colRange(240, 480).setTo(cv::Scalar(70, 150, 210));
    for (int i = 0; i < 60; ++i) {
        const cv::Point centre(random.Integer(0, plate.cols - 1), random.Integer(0, plate.rows - 1));
        cv::ellipse(plate, centre, cv::Size(random.Integer(1, 5), random.Integer(1, 5)), random.Integer(0, 180), 0, 360,
                    cv::Scalar::all(random.Integer(0, 60)), cv::FILLED);
    }
    cv::circle(plate, {120, 150}, 40, cv::Scalar::all(30), cv::FILLED);
    return plate;
}

void ShowDominantColour(Report& report) {
    const cv::Mat coffee = LoadColourPicture("coffee.png");
    const std::vector<std::pair<std::string, std::vector<cv::Point>>> areas{
        {"coffee", {{215, 120}, {290, 100}, {365, 140}, {350, 175}, {290, 190}, {230, 165}}},
        {"saucer", {{100, 170}, {170, 90}, {190, 330}, {130, 290}}},
        {"table", {{470, 20}, {590, 20}, {590, 180}, {500, 180}}}};
    cv::Mat drawn = coffee.clone();
    std::vector<std::vector<std::string>> lines{{"area", "point", "blue, green, red", "time"}};
    for (const auto& [name, contour] : areas) {
        cv::Point point;
        const double time =
            MillisecondsOf([&] { point = Utility::findDominantLABColorPointInContour(coffee, contour); });
        cv::polylines(drawn, contour, true, outline, 2, cv::LINE_AA);
        const auto colour = coffee.at<cv::Vec3b>(point);
        cv::circle(drawn, point, 12, colour, cv::FILLED, cv::LINE_AA);
        cv::circle(drawn, point, 12, signal, 2, cv::LINE_AA);
        lines.push_back(
            {name, Text(point, 0),
             std::to_string(colour[0]) + ", " + std::to_string(colour[1]) + ", " + std::to_string(colour[2]),
             Milliseconds(time)});
    }
    report.Heading("findDominantLABColorPointInContour");
    report.PictureWithGrid({drawn, "Three contours; each disc shows the colour found, at the pixel found"},
                           "Dominant colours", lines);
}

/// The host looks only at regions of a coin's size.
constexpr int leastCoin = 300;

void ShowRegions(Report& report) {
    const cv::Mat coins = LoadColourPicture("coins.png");
    std::vector<cv::Mat> regions;
    std::vector<cv::Point2f> centers;
    const double time =
        MillisecondsOf([&] { Utility::ThresholdAndFindAllRegionCenter(coins, 120, 255, regions, centers); });

    cv::Mat drawn = coins.clone();
    std::vector<std::vector<std::string>> lines{{"", "centre of its box", "pixels"}};
    for (std::size_t i = 0; i < regions.size(); ++i) {
        const int pixels = cv::countNonZero(regions[i]);
        if (pixels < leastCoin) continue;
        drawn.setTo(cv::Scalar(160, 110, 20), regions[i]);
        cv::drawMarker(drawn, centers[i], signal, cv::MARKER_CROSS, 11, 2);
        lines.push_back({std::to_string(lines.size()), Text(centers[i], 1), std::to_string(pixels)});
    }
    report.Heading("ThresholdAndFindAllRegionCenter");
    report.PictureWithGrid({drawn, "Regions from 120 to 255 of at least 300 pixels, each with the centre of its box"},
                           "Regions", lines);
    report.Table("Outcome", {{"all regions found", std::to_string(regions.size())}, {"time", Milliseconds(time)}});
}

}  // namespace

void ImageOperatorsSection(Report& report) {
    report.Section("Image operators",
                   "Four operators on whole pictures: a pencil drawing, the filling of small gaps in large regions of "
                   "like colour, the pixel whose colour stands best for an area, and the connected regions of a band "
                   "of brightness with their centres.");
    ShowSketch(report);
    ShowFilling(report, "fillHolesMorphologicalEnhanced on a rendered plate: the large disc is no hole", DirtyPlate(),
                10.0, 400, 6, 3);
    ShowFilling(report, "fillHolesMorphologicalEnhanced on a photograph: grain and small reflections go",
                LoadColourPicture("coffee.png"), 40.0, 150, 4, 2);
    ShowDominantColour(report);
    ShowRegions(report);
}

}  // namespace Demo
