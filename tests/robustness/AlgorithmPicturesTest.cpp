// The three algorithms on every picture.

#include <gtest/gtest.h>

#include <memory>
#include <opencv2/core.hpp>

#include "framework/AlgorithmFactory.h"
#include "tests/robustness/PictureMatrix.h"

namespace Quorvane::Robustness {
namespace {

std::unique_ptr<Algorithm> Create(const char* name) {
    return std::unique_ptr<Algorithm>(AlgorithmFactory().CreateAlgorithm(name));
}

/// The status; a failed run is to have stored a message.
std::string StatusOf(Algorithm& algorithm, const cv::Mat& picture, cv::Mat& destination) {
    const int status = algorithm.Execute(picture, destination);
    std::string message;
    algorithm.GetErrorMsg(message);
    if (status != 0 && message.empty()) return "a failure without a message";
    return "status " + std::to_string(status);
}

bool IsDots(const cv::Mat& image) {
    return image.type() == CV_8UC1 && cv::countNonZero(image) == cv::countNonZero(image == 255);
}

std::string TryHalftone(const cv::Mat& picture) {
    const auto algorithm = Create("BinaryForLaserMachine");
    cv::Mat destination(2, 2, CV_8UC1, cv::Scalar(9));
    std::string status;
    try {
        status = StatusOf(*algorithm, picture, destination);
    } catch (const cv::Exception&) {
        if (cv::countNonZero(destination == 9) != 4) return "an exception and a changed destination";
        throw;
    }
    if (status != "status 0") return cv::countNonZero(destination == 9) == 4 ? status : "a changed destination";
    if (destination.empty()) return "status 0, nothing";
    return destination.size() == picture.size() && IsDots(destination) ? status : "no dots";
}

std::string HalftoneTold(const HostPicture& picture) {
    if (picture.IsEmpty()) return "status 2";
    // Other pictures have no gray form, and OpenCV makes nothing of nothing.
    if (picture.channels != 1 && picture.channels != 3) return "status 0, nothing";
    const bool otsuKnowsIt = picture.depth == CV_8U || picture.depth == CV_16U;
    return otsuKnowsIt ? "status 0" : "cv::Exception";
}

std::string TryMarks(const cv::Mat& picture, const char* type) {
    const auto algorithm = Create("FindMarkPoint");
    algorithm->SetParameter("MarkPointType", std::string(type));
    algorithm->SetParameter("Width", 5);
    algorithm->SetParameter("Height", 3);
    cv::Mat destination;
    const std::string status = StatusOf(*algorithm, picture, destination);
    if (status != "status 0") return status;
    const std::size_t count = std::stoul(algorithm->GetResultValue("FindCount"));
    for (const char* list : {"MarkPoint_X", "MarkPoint_Y", "MarkPoint_Similarity"}) {
        if (algorithm->GetResultValues(list).size() != count) return "unequal lists";
    }
    const bool isMarked = count > 0;
    return isMarked || HaveSameBytes(destination, picture) ? status : "a destination that is no copy";
}

std::string CircleMarksTold(const HostPicture& picture) {
    if (picture.IsEmpty()) return "status 2";
    const bool hasGray = picture.channels == 1 || IsColour(picture);
    return hasGray && picture.depth == CV_8U ? "status 0" : "cv::Exception";
}

std::string OtherMarksTold(const HostPicture& picture) { return picture.IsEmpty() ? "status 2" : "status 0"; }

std::string TryFilling(const cv::Mat& picture, const std::vector<double>& shapeX) {
    const auto algorithm = Create("IntelligentFilling");
    algorithm->SetParameter("TargetShapeCenter_X", 8.0);
    algorithm->SetParameter("TargetShapeCenter_Y", 9.0);
    algorithm->SetParameter("TargetShapePoints_X", shapeX);
    algorithm->SetParameter("TargetShapePoints_Y", std::vector<double>{1.0, 2.0});
    cv::Mat destination;
    return StatusOf(*algorithm, picture, destination);
}

TEST(PictureMatrix, Algorithms) {
    TryOnAllPictures({
        {"BinaryForLaserMachine", TryHalftone, HalftoneTold},
        {"FindMarkPoint, circles", [](const cv::Mat& p) { return TryMarks(p, "Circle"); }, CircleMarksTold},
        {"FindMarkPoint, cross", [](const cv::Mat& p) { return TryMarks(p, "Cross"); }, OtherMarksTold},
        {"FindMarkPoint, unknown type", [](const cv::Mat& p) { return TryMarks(p, "circle"); }, OtherMarksTold},
        {"IntelligentFilling, unequal lists", [](const cv::Mat& p) { return TryFilling(p, {1.0}); },
         [](const HostPicture&) { return "status 3"; }},
        {"IntelligentFilling",
         [](const cv::Mat& p) {
             return TryFilling(p, {1.0, 2.0});
         },
         [](const HostPicture& picture) -> std::string {
             if (picture.IsEmpty()) return "status 1";
             if (!IsColour(picture) || picture.depth != CV_8U) return "cv::Exception";
             return "status 3";
         }},
    });
}

}  // namespace
}  // namespace Quorvane::Robustness
