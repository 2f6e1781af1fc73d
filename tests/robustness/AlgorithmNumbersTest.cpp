// The algorithms with parameters that hosts hand in by mistake, and every conversion of every kind of text.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "TruncateToInt.h"
#include "framework/AlgorithmFactory.h"
#include "framework/Param.h"
#include "tests/robustness/NumberMatrix.h"
#include "tests/robustness/OutcomeTable.h"
#include "tests/support/Tray.h"

namespace Quorvane::Robustness {
namespace {

std::unique_ptr<Algorithm> Create(const char* name) {
    return std::unique_ptr<Algorithm>(AlgorithmFactory().CreateAlgorithm(name));
}

std::string StatusOf(Algorithm& algorithm, const cv::Mat& picture) {
    cv::Mat destination;
    return "status " + std::to_string(algorithm.Execute(picture, destination));
}

cv::Mat Discs() {
    cv::Mat picture(90, 120, CV_8UC3, cv::Scalar::all(40));
    for (const cv::Point& place : {cv::Point(35, 40), cv::Point(85, 50)}) {
        cv::circle(picture, place, 12, cv::Scalar::all(220), cv::FILLED);
    }
    return picture;
}

std::function<std::string(double)> Halftone(const char* parameter) {
    return [parameter](double v) {
        const auto algorithm = Create("BinaryForLaserMachine");
        algorithm->SetParameter(parameter, v);
        return StatusOf(*algorithm, Discs());
    };
}

std::function<std::string(double)> Marks(const char* type, const char* parameter) {
    return [type, parameter](double v) {
        const auto algorithm = Create("FindMarkPoint");
        algorithm->SetParameter("MarkPointType", std::string(type));
        algorithm->SetParameter("Radius", 12);
        algorithm->SetParameter("Width", 5);
        algorithm->SetParameter("Height", 5);
        algorithm->SetParameter(parameter, v);
        return StatusOf(*algorithm, Discs());
    };
}

const TestSupport::Tray& SmallTray() {
    static const TestSupport::Tray tray = [] {
        TestSupport::TraySettings settings;
        settings.size = {240, 180};
        settings.partSize = 60.0;
        settings.columns = 2;
        settings.rows = 2;
        return TestSupport::RenderTray(settings);
    }();
    return tray;
}

std::function<std::string(double)> Filling(const char* parameter) {
    return [parameter](double v) {
        const auto algorithm = Create("IntelligentFilling");
        const cv::Point2d mark = SmallTray().poses[0].Place(TestSupport::TrayPartMark(60.0));
        algorithm->SetParameter("TargetShapeCenter_X", mark.x);
        algorithm->SetParameter("TargetShapeCenter_Y", mark.y);
        algorithm->SetParameter("TargetShapePoints_X", std::vector<double>{mark.x, mark.x + 4.0});
        algorithm->SetParameter("TargetShapePoints_Y", std::vector<double>{mark.y, mark.y});
        algorithm->SetParameter(parameter, v);
        return StatusOf(*algorithm, SmallTray().picture);
    };
}

TEST(NumberMatrix, Halftone) {
    const auto always = [](double) { return "status 0"; };
    TryWithAllNumbers({
        {"BinaryForLaserMachine, HighThreshold", Halftone("HighThreshold"), always},
        {"BinaryForLaserMachine, LowThreshold", Halftone("LowThreshold"), always},
        {"BinaryForLaserMachine, MaskSize", Halftone("MaskSize"),
         // A window of negative size is OpenCV's to refuse. -1 is one; what no int holds reads as the least one.
         [](double v) { return TruncateToInt(v) < 0 ? "cv::Exception" : "status 0"; }},
    });
}

TEST(NumberMatrix, MarkPoints) {
    TryWithAllNumbers({
        {"FindMarkPoint, Radius", Marks("Circle", "Radius"),
         [](double v) { return v > 0.0 ? "status 0" : "status 3"; }},
        {"FindMarkPoint, SimilarityMin", Marks("Circle", "SimilarityMin"), [](double) { return "status 0"; }},
        {"FindMarkPoint, Width", Marks("Cross", "Width"),
         [](double v) { return TruncateToInt(v) >= 1 ? "status 0" : "status 3"; }},
        {"FindMarkPoint, Height", Marks("Cross", "Height"),
         [](double v) { return TruncateToInt(v) >= 1 ? "status 0" : "status 3"; }},
    });
}

TEST(NumberMatrix, Filling) {
    TryWithAllNumbers({
        {"IntelligentFilling, TargetShapeCenter_X", Filling("TargetShapeCenter_X"),
         // Everyday numbers lie on the tray's ground, which fills the picture.
         [](double v) { return IsEveryday(v) ? "status 3" : "status 1"; }},
        {"IntelligentFilling, TargetShapeCenter_Y", Filling("TargetShapeCenter_Y"),
         [](double v) { return IsEveryday(v) ? "status 3" : "status 1"; }},
        {"IntelligentFilling, TargetShapePoints_X", Filling("TargetShapePoints_X"), [](double) { return "status 3"; }},
    });
}

TEST(NumberMatrix, FillingShapes) {
    TryWithAllNumbers({
        {"IntelligentFilling, a point of the shape",
         [](double v) {
             const auto algorithm = Create("IntelligentFilling");
             const cv::Point2d mark = SmallTray().poses[0].Place(TestSupport::TrayPartMark(60.0));
             algorithm->SetParameter("TargetShapeCenter_X", mark.x);
             algorithm->SetParameter("TargetShapeCenter_Y", mark.y);
             algorithm->SetParameter("TargetShapePoints_X", std::vector<double>{v, mark.x});
             algorithm->SetParameter("TargetShapePoints_Y", std::vector<double>{mark.y, v});
             const std::string status = StatusOf(*algorithm, SmallTray().picture);
             return status + (algorithm->GetResultValue("OutputShapeCount") == "0" ? ", no copy" : ", copies");
         },
         [](double) { return "status 0, copies"; }},
    });
}

struct TextKind {
    const char* text;
    const char* toInt;
    const char* toFloat;
    const char* toDouble;
};

TEST(NumberMatrix, ParameterTexts) {
    const char* const bad = "std::invalid_argument";
    const char* const range = "std::out_of_range";
    const TextKind kinds[] = {
        {"12abc", "12", "12.000000", "12.000000"},
        {"  -7.9e1x", "-7", "-79.000000", "-79.000000"},
        {"abc", bad, bad, bad},
        {"", bad, bad, bad},
        {" ", bad, bad, bad},
        {"-", bad, bad, bad},
        {"0x1F", "0", "31.000000", "31.000000"},
        {"2147483647", "2147483647", "2147483648.000000", "2147483647.000000"},
        {"2147483648", range, "2147483648.000000", "2147483648.000000"},
        {"-2147483649", range, "-2147483648.000000", "-2147483649.000000"},
        {"99999999999999999999", range, "100000002004087734272.000000", "100000000000000000000.000000"},
        {"1e39", "1", range, "999999999999999939709166371603178586112.000000"},
        {"1e400", "1", range, range},
        {"nan", bad, "nan", "nan"},
        {"-inf", bad, "-inf", "-inf"},
        {"[1, 2, ]", bad, bad, bad},
    };
    for (const TextKind& kind : kinds) {
        const Param single{std::string(kind.text)};
        const Param list(std::vector<std::string>{kind.text, "5"});
        for (const Param* param : {&single, &list}) {
            const std::string name = std::string("\"") + kind.text + (param == &list ? "\" in a list" : "\"");
            const auto count = [&](const char* operation, const auto& read, const char* told) {
                OutcomeTable::Instance().Count(operation, name, OutcomeOf(read), told);
            };
            count(
                "Param::ToInt", [&] { return Param(param->ToInt()).ToString(); }, kind.toInt);
            count(
                "Param::ToFloat", [&] { return Param(param->ToFloat()).ToString(); }, kind.toFloat);
            count(
                "Param::ToDouble", [&] { return Param(param->ToDouble()).ToString(); }, kind.toDouble);
            count(
                "Param::ToIntVec", [&] { return Param(param->ToIntVec().at(0)).ToString(); }, kind.toInt);
            count(
                "Param::ToFloatVec", [&] { return Param(param->ToFloatVec().at(0)).ToString(); }, kind.toFloat);
            count(
                "Param::ToDoubleVec", [&] { return Param(param->ToDoubleVec().at(0)).ToString(); }, kind.toDouble);
            count(
                "Param::ToStringVec", [&] { return param->ToStringVec().at(0); }, kind.text);
        }
    }
}

TEST(NumberMatrix, ParameterNumbers) {
    TryWithAllNumbers({
        {"Param of a double", [](double v) { return std::to_string(Param(v).ToInt()); },
         [](double v) {
             const bool isHeld = v > -2147483649.0 && v < 2147483648.0;
             return std::to_string(isHeld ? static_cast<int>(v) : std::numeric_limits<int>::min());
         }},
        {"Param of a list of doubles",
         [](double v) {
             return Param(std::vector<double>{v, 1.0}).ToString();
         },
         [](double v) { return "[" + std::to_string(v) + ", 1.000000, ]"; }},
    });
}

}  // namespace
}  // namespace Quorvane::Robustness
