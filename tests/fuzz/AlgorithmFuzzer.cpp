// Whole algorithms with any table of parameters. The first byte chooses the algorithm, and for the filling whether it
// gets a tray with copies of a part: few pictures that bytes paint take it as far as a template.

#include <cmath>
#include <cstdlib>
#include <memory>
#include <opencv2/imgproc.hpp>

#include "framework/AlgorithmFactory.h"
#include "tests/fuzz/FuzzInput.h"
#include "tests/support/Tray.h"

namespace Quorvane::Fuzz {
namespace {

/// Sizes that the algorithms make pictures and filters of; between these and the enormous ones the work is honest.
constexpr int longestSide = 72;

/// Sets a parameter in any of its forms.
void SetAny(FuzzInput& input, Algorithm& algorithm, const char* name) {
    switch (input.Byte() % 12) {
        case 0: algorithm.SetParameter(name, input.Text(6)); break;
        case 1: algorithm.SetParameter(name, std::to_string(input.Size())); break;
        case 2: algorithm.SetParameter(name, std::vector<double>{input.Size()}); break;
        case 3: algorithm.SetParameter(name, std::vector<int>{}); break;
        case 4: algorithm.SetParameter(name, static_cast<float>(input.Size())); break;
        case 5: algorithm.SetParameter(name, std::vector<std::string>{input.Text(3), input.Text(3)}); break;
        case 6: break;
        case 7: algorithm.SetParameter(name, input.Integer(-3, 300)); break;
        default: algorithm.SetParameter(name, input.Size());
    }
}

void Halftone(FuzzInput& input, Algorithm& algorithm) {
    for (const char* name : {"HighThreshold", "LowThreshold", "MaskSize"}) SetAny(input, algorithm, name);
}

void Marks(FuzzInput& input, Algorithm& algorithm) {
    static const char* const types[] = {"Circle", "Circle", "Circle", "Cross", "circle"};
    static const char* const orders[] = {"Similarity_Ascendingorder", "Similarity_Descendingorder",
                                         "DistToImgCenter_Ascendingorder", "DistToImgCenter_Descendingorder", "none"};
    algorithm.SetParameter("MarkPointType", std::string(types[input.Byte() % std::size(types)]));
    algorithm.SetParameter("SortMode", std::string(orders[input.Byte() % std::size(orders)]));
    for (const char* name : {"Radius", "Width", "Height"}) SetAny(input, algorithm, name);
    if (input.Byte() % 4 == 0) SetAny(input, algorithm, "SimilarityMin");
    if (input.Byte() % 4 == 1) algorithm.SetParameter("SimilarityMin", input.Integer(-10, 110) / 100.0);
}

void Filling(FuzzInput& input, Algorithm& algorithm) {
    algorithm.SetParameter("TargetShapeCenter_X", input.Integer(-20, 200) / 2.0);
    algorithm.SetParameter("TargetShapeCenter_Y", input.Integer(-20, 200) / 2.0);
    if (input.Byte() % 8 == 0) SetAny(input, algorithm, "TargetShapeCenter_X");
    if (input.Byte() % 8 == 0) SetAny(input, algorithm, "SimilarityMin");
    if (input.Byte() % 4 != 0) algorithm.SetParameter("SimilarityMin", input.Integer(1, 100) / 100.0);
    std::vector<double> x = input.Numbers(6);
    std::vector<double> y = input.Numbers(6);
    if (input.Byte() % 8 != 0) y.resize(x.size());
    algorithm.SetParameter("TargetShapePoints_X", x);
    algorithm.SetParameter("TargetShapePoints_Y", y);
}

constexpr double partSize = 44.0;

const TestSupport::Tray& SmallTray() {
    static const TestSupport::Tray tray = TestSupport::RenderTray({{144, 112}, partSize, 2, 2});
    return tray;
}

/// Lines to points far above a picture are drawn honestly, row by row, which takes seconds each.
double NearEnough(double coordinate) {
    constexpr double far = 1e4;
    return std::abs(coordinate) < far ? coordinate : far;
}

/// A part of the tray is marked, at most a little beside its right place.
void FillingOfTray(FuzzInput& input, Algorithm& algorithm) {
    const cv::Point2d mark = SmallTray().poses[input.Byte() % 4].Place(TestSupport::TrayPartMark(partSize));
    algorithm.SetParameter("TargetShapeCenter_X", mark.x + input.Integer(-8, 8) / 4.0);
    algorithm.SetParameter("TargetShapeCenter_Y", mark.y + input.Integer(-8, 8) / 4.0);
    algorithm.SetParameter("SimilarityMin", input.Integer(40, 110) / 100.0);
    std::vector<double> x = input.Numbers(4);
    x.push_back(input.Number());
    std::vector<double> y(x.size());
    for (double& number : y) number = NearEnough(input.Number());
    algorithm.SetParameter("TargetShapePoints_X", x);
    algorithm.SetParameter("TargetShapePoints_Y", y);
}

/// The tray or a part of it, of three or four channels, with single values strewn over it.
cv::Mat TrayPicture(FuzzInput& input) {
    cv::Mat picture = SmallTray().picture.clone();
    if (input.Byte() % 4 == 0) cv::cvtColor(picture, picture, cv::COLOR_BGR2BGRA);
    for (int strewn = input.Byte() % 16; strewn > 0; --strewn) {
        const int row = input.Integer(0, picture.rows - 1);
        const int byte = input.Integer(0, picture.cols * picture.channels() - 1);
        picture.ptr(row)[byte] = input.Byte();
    }
    if (input.Byte() % 2 == 0) return picture;
    const int width = picture.cols - input.Integer(0, 40);
    return picture(cv::Rect(0, 0, width, picture.rows - input.Integer(0, 40)));
}

cv::Mat AnyPicture(FuzzInput& input) {
    return input.Byte() % 4 == 0 ? input.Picture(longestSide) : input.Picture(longestSide, CV_8UC3);
}

void ReadEverything(Algorithm& algorithm) {
    std::vector<std::string> names;
    algorithm.GetResultNameList(names);
    for (const std::string& name : names) {
        algorithm.GetResultValue(name);
        algorithm.GetResultValues(name);
    }
    algorithm.GetParameterNameList(names);
    for (const std::string& name : names) {
        Try([&] { algorithm.GetParameterToInt(name); });
        Try([&] { algorithm.GetParameterToFloat(name); });
        Try([&] { algorithm.GetParameterToDouble(name); });
        Try([&] { algorithm.GetParameterToDoubleVec(name); });
        algorithm.GetParameterToString(name);
        algorithm.GetParameterToStringVec(name);
    }
}

}  // namespace
}  // namespace Quorvane::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace Quorvane;
    using namespace Quorvane::Fuzz;
    FuzzInput input(data, size);
    AlgorithmFactory factory;
    const int first = input.Byte();
    const int choice = first % 3;
    const bool hasTray = choice == 1 && first >= 128;
    const std::unique_ptr<Algorithm> algorithm(
        factory.CreateAlgorithm(factory.GetAlgorithmList()[static_cast<std::size_t>(choice)]));
    if (choice == 0) Halftone(input, *algorithm);
    if (choice == 1 && !hasTray) Filling(input, *algorithm);
    if (hasTray) FillingOfTray(input, *algorithm);
    if (choice == 2) Marks(input, *algorithm);
    for (int runs = 1 + input.Byte() % 2; runs > 0; --runs) {
        const cv::Mat source = hasTray ? TrayPicture(input) : AnyPicture(input);
        const cv::Mat before = source.clone();
        cv::Mat destination;
        int status = 0;
        Try([&] { status = algorithm->Execute(source, destination); });
        if (status < 0 || status > 3) std::abort();
        std::string message;
        algorithm->GetErrorMsg(message);
        if (status != 0 && message.empty()) std::abort();
        CheckUnchanged(source, before);
    }
    ReadEverything(*algorithm);
    return 0;
}
