// Round marks found by "FindMarkPoint", in a photograph of coins and on a rendered plate whose centres are known.

#include <algorithm>
#include <opencv2/core.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "examples/demo/AlgorithmRun.h"
#include "examples/demo/Sections.h"
#include "tests/support/MarkPlate.h"
#include "tests/support/Pictures.h"

namespace Demo {

namespace {

/// The texts that `AlgorithmRun::Result` put together.
std::vector<std::string> Separate(const std::string& joined) {
    std::vector<std::string> texts;
    std::istringstream stream(joined);
    for (std::string text; std::getline(stream >> std::ws, text, ',');) texts.push_back(text);
    return texts;
}

using Lines = std::vector<std::vector<std::string>>;

Lines MarkLines(const AlgorithmRun& run) {
    const std::vector<std::string> x = Separate(run.Result("MarkPoint_X"));
    const std::vector<std::string> y = Separate(run.Result("MarkPoint_Y"));
    const std::vector<std::string> radius = Separate(run.Result("MarkPoint_Radius"));
    const std::vector<std::string> similarity = Separate(run.Result("MarkPoint_Similarity"));
    Lines lines{{"", "MarkPoint_X", "MarkPoint_Y", "MarkPoint_Radius", "MarkPoint_Similarity"}};
    for (std::size_t i = 0; i < x.size(); ++i) {
        lines.push_back({std::to_string(i + 1), x.at(i), y.at(i), radius.at(i), similarity.at(i)});
    }
    return lines;
}

void ShowRun(Report& report, const std::string& heading, const AlgorithmRun& run, const Lines& lines) {
    report.Heading(heading);
    report.PictureWithGrid({run.destination, "The destination: each mark with its circle and centre"},
                           "FindCount " + run.Result("FindCount"), lines);
    report.Table("Parameters", run.parameters);
    report.Table("Outcome", run.Outcome());
}

void ShowCoins(Report& report) {
    const cv::Mat coins = Quorvane::TestSupport::LoadColourPicture("coins.png");
    const AlgorithmRun run = RunAlgorithm("FindMarkPoint", coins, [](Quorvane::Algorithm& algorithm) {
        algorithm.SetParameter("Radius", 26);
        algorithm.SetParameter("SimilarityMin", 0.7);
        algorithm.SetParameter("SortMode", "Similarity_Descendingorder");
    });
    ShowRun(report, "A photograph of 24 coins of differing size, the most similar first", run, MarkLines(run));
}

void ShowPlate(Report& report) {
    const Quorvane::TestSupport::MarkPlate plate{{640, 480}, {4, 3}, 24.0, 200.0, 70.0};
    const cv::Mat picture = plate.Render().Blur(1.2).Light(1.0, 0.6).Noise(5.0, 3).Colour();
    const AlgorithmRun run = RunAlgorithm("FindMarkPoint", picture, [](Quorvane::Algorithm& algorithm) {
        algorithm.SetParameter("Radius", 24);
        algorithm.SetParameter("SimilarityMin", 0.7);
    });
    Lines lines = MarkLines(run);
    lines.front().emplace_back("to the true centre");
    for (std::size_t i = 1; i < lines.size(); ++i) {
        const cv::Point2d found(std::stod(lines[i][1]), std::stod(lines[i][2]));
        double nearest = cv::norm(cv::Point2d(picture.cols, picture.rows));
        for (const cv::Point2d& centre : plate.Centres()) nearest = std::min(nearest, cv::norm(found - centre));
        lines[i].push_back(Number(nearest, 2) + " px");
    }
    ShowRun(report, "A rendered plate of 12 dark marks in uneven light, the nearest to the middle first", run, lines);
}

}  // namespace

void MarkPointsSection(Report& report) {
    report.Section(
        "Mark points",
        "The algorithm FindMarkPoint finds round marks of a known radius and rates each by its roundness, its "
        "circumference and its contrast. The host chooses the order in which they are told.");
    ShowCoins(report);
    ShowPlate(report);
    const AlgorithmRun refused =
        RunAlgorithm("FindMarkPoint", Quorvane::TestSupport::LoadColourPicture("coins.png"),
                     [](Quorvane::Algorithm& algorithm) { algorithm.SetParameter("Radius", 0); });
    report.Heading("A radius of 0 is refused");
    report.Table("Outcome", refused.Outcome());
}

}  // namespace Demo
