// The tables of parameters and results in the user's guide, against what the algorithms say of themselves.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <opencv2/core.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "framework/AlgorithmFactory.h"
#include "tests/guide/Pages.h"
#include "tests/support/MarkPlate.h"
#include "tests/support/Tray.h"

namespace Quorvane::TestSupport {

using testing::Contains;
using testing::HasSubstr;
using testing::Key;

namespace {

using Algorithm = std::unique_ptr<Quorvane::Algorithm>;

Algorithm Make(const std::string& name) { return Algorithm(AlgorithmFactory().CreateAlgorithm(name)); }

std::string PageOf(const std::string& algorithm) {
    if (algorithm == "BinaryForLaserMachine") return GuidePage("laser-dots");
    return GuidePage(algorithm == "FindMarkPoint" ? "marks" : "filling");
}

std::vector<std::string> CellsOf(const std::string& line) {
    std::vector<std::string> cells;
    std::istringstream stream(line);
    for (std::string cell; std::getline(stream, cell, '|');) {
        const std::size_t begin = cell.find_first_not_of(' ');
        cells.push_back(begin == std::string::npos ? "" : cell.substr(begin, cell.find_last_not_of(' ') - begin + 1));
    }
    return cells;
}

/// The rows of the page's table of parameters: key and default.
std::map<std::string, std::string> DefaultsOnPage(const std::string& page) {
    std::map<std::string, std::string> defaults;
    std::istringstream lines(page);
    bool inTable = false;
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("| parameter |", 0) == 0) inTable = true;
        if (line.empty()) inTable = false;
        const std::vector<std::string> cells = inTable ? CellsOf(line) : std::vector<std::string>();
        if (cells.size() > 3 && cells[1].front() == '"') {
            defaults[cells[1].substr(1, cells[1].size() - 2)] = cells[3];
        }
    }
    return defaults;
}

/// Whether the page's default is the library's, which writes 0.85 as "0.850000".
bool IsSameValue(const std::string& onPage, const std::string& ofLibrary) {
    if (onPage == ofLibrary) return true;
    const std::size_t end = ofLibrary.find_last_not_of('0');
    return ofLibrary.find('.') != std::string::npos &&
           (onPage == ofLibrary.substr(0, end + 1) || onPage + "." == ofLibrary.substr(0, end + 1));
}

void ExpectResultsOnPage(Quorvane::Algorithm& algorithm, const std::string& page) {
    std::vector<std::string> results;
    algorithm.GetResultNameList(results);
    for (std::string result : results) {
        const std::string first = "OutputShape_1_";
        if (result.rfind("OutputShape_", 0) == 0 && result.rfind(first, 0) != 0) continue;  // of a further copy
        if (result.rfind(first, 0) == 0) result = "OutputShape_n_" + result.substr(first.size());
        EXPECT_THAT(page, HasSubstr("\"" + result + "\""));
    }
}

}  // namespace

TEST(GuideTables, EveryParameterStandsOnItsPageWithItsDefault) {
    for (const std::string& name : AlgorithmFactory().GetAlgorithmList()) {
        const Algorithm algorithm = Make(name);
        const std::map<std::string, std::string> onPage = DefaultsOnPage(PageOf(name));
        std::vector<std::string> parameters;
        algorithm->GetParameterNameList(parameters);
        for (const std::string& parameter : parameters) {
            ASSERT_THAT(onPage, Contains(Key(parameter))) << name;
            const std::string value = algorithm->GetParameterToString(parameter);
            EXPECT_TRUE(IsSameValue(onPage.at(parameter), value))
                << parameter << " is " << value << ", the page says " << onPage.at(parameter);
        }
        for (const auto& [parameter, value] : onPage) {
            if (value == "not set") continue;
            EXPECT_THAT(parameters, Contains(parameter)) << "the page of " << name << " has a parameter too many";
        }
    }
}

TEST(GuideTables, TheMarksPageNamesEveryResult) {
    const cv::Mat picture = MarkPlate{{320, 240}, {2, 2}, 24.0}.Render().Gray();
    const Algorithm marks = Make("FindMarkPoint");
    marks->SetParameter("Radius", 24);
    cv::Mat drawn;
    ASSERT_EQ(marks->Execute(picture, drawn), 0);
    ExpectResultsOnPage(*marks, GuidePage("marks"));
}

TEST(GuideTables, TheFillingPageNamesEveryResult) {
    constexpr double partSize = 70.0;
    TraySettings settings;
    settings.size = {333, 250};
    settings.partSize = partSize;
    settings.columns = 3;
    settings.rows = 2;
    const Tray tray = RenderTray(settings);
    const cv::Point2d mark = tray.poses.front().Place(TrayPartMark(partSize));
    const Algorithm filling = Make("IntelligentFilling");
    filling->SetParameter("TargetShapeCenter_X", mark.x);
    filling->SetParameter("TargetShapeCenter_Y", mark.y);
    filling->SetParameter("TargetShapePoints_X", std::vector<double>{mark.x});
    filling->SetParameter("TargetShapePoints_Y", std::vector<double>{mark.y});
    cv::Mat drawn;
    ASSERT_EQ(filling->Execute(tray.picture, drawn), 0);
    ASSERT_NE(filling->GetResultValue("OutputShapeCount"), "0");
    ExpectResultsOnPage(*filling, GuidePage("filling"));
}

}  // namespace Quorvane::TestSupport
