// Photographs turned into laser dots by "BinaryForLaserMachine".

#include <algorithm>
#include <opencv2/core.hpp>

#include "examples/demo/AlgorithmRun.h"
#include "examples/demo/Sections.h"
#include "tests/support/Pictures.h"

namespace Demo {

namespace {

void ShowRun(Report& report, const std::string& heading, const cv::Mat& photograph, const AlgorithmRun& run,
             const cv::Rect& detail) {
    constexpr int detailMagnification = 4;
    report.Heading(heading);
    report.Pictures(
        {{photograph, "The photograph"},
         {run.destination, "Its dots: white is burned"},
         {Magnified(run.destination, detail, detailMagnification), "A part of the dots, four times as large"}});
    std::vector<Row> outcome = run.Outcome();
    const double share = 100.0 * cv::countNonZero(run.destination) / static_cast<double>(run.destination.total());
    outcome.emplace_back("pixels burned", Number(share, 1) + " %");
    report.Table("Parameters", run.parameters);
    report.Table("Outcome", outcome);
}

}  // namespace

void LaserDotsSection(Report& report) {
    report.Section(
        "Laser dots",
        "The algorithm BinaryForLaserMachine keeps the bright foreground of a picture and turns it into dots: "
        "above the high threshold always, below the low one never, and in between at random, more often "
        "where the picture is bright and rich in contrast.");

    const cv::Mat coffee = Quorvane::TestSupport::LoadColourPicture("coffee.png");
    ShowRun(report, "A colour photograph, all parameters at their defaults", coffee,
            RunAlgorithm("BinaryForLaserMachine", coffee), {230, 120, 140, 94});

    const cv::Mat coins = Quorvane::TestSupport::LoadGrayPicture("coins.png");
    const auto brightCoins = [](Quorvane::Algorithm& algorithm) {
        algorithm.SetParameter("LowThreshold", 60);
        algorithm.SetParameter("HighThreshold", 200);
        algorithm.SetParameter("MaskSize", 9);
    };
    ShowRun(report, "A gray photograph, a narrower band and a wider window", coins,
            RunAlgorithm("BinaryForLaserMachine", coins, brightCoins), {120, 60, 120, 90});

    const cv::Mat photographer = Quorvane::TestSupport::LoadGrayPicture("photographer.png");
    ShowRun(report, "Thresholds that meet: nothing is left to chance", photographer,
            RunAlgorithm("BinaryForLaserMachine", photographer,
                         [](Quorvane::Algorithm& algorithm) {
                             algorithm.SetParameter("LowThreshold", 160.5);
                             algorithm.SetParameter("HighThreshold", 160.5);
                         }),
            {180, 60, 128, 86});

    const AlgorithmRun refused = RunAlgorithm("BinaryForLaserMachine", cv::Mat());
    report.Heading("An empty picture is refused");
    report.Table("Outcome", refused.Outcome());
}

}  // namespace Demo
