// Whole algorithms with any table of parameters. The first byte chooses the algorithm.

#include <cstdlib>
#include <memory>

#include "framework/AlgorithmFactory.h"
#include "tests/fuzz/FuzzInput.h"

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
    static const bool prepared = (PrepareProcess(), true);
    static_cast<void>(prepared);
    FuzzInput input(data, size);
    AlgorithmFactory factory;
    const int choice = input.Byte() % 3;
    const std::unique_ptr<Algorithm> algorithm(
        factory.CreateAlgorithm(factory.GetAlgorithmList()[static_cast<std::size_t>(choice)]));
    if (choice == 0) Halftone(input, *algorithm);
    if (choice == 1) Filling(input, *algorithm);
    if (choice == 2) Marks(input, *algorithm);
    for (int runs = 1 + input.Byte() % 2; runs > 0; --runs) {
        const cv::Mat source = input.Byte() % 4 == 0 ? input.Picture(longestSide) : input.Picture(longestSide, CV_8UC3);
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
