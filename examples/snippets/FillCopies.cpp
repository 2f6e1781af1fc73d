#include <QuorvaneVision.h>

#include <cmath>
#include <iostream>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

int main() {
    const cv::Mat picture = cv::imread("tray.png");
    // The user's mark on one part, and the job drawn on it: pixels.
    const cv::Point2d mark(142.0, 74.5);
    const std::vector<double> jobX{105, 142, 142, 162, 142, 142, 105};
    const std::vector<double> jobY{63, 63, 55, 71, 87, 79, 79};

    Quorvane::AlgorithmFactory factory;
    Quorvane::Algorithm* filling = factory.CreateAlgorithm("IntelligentFilling");
    filling->SetParameter("SimilarityMin", 0.7);
    filling->SetParameter("TargetShapeCenter_X", mark.x);
    filling->SetParameter("TargetShapeCenter_Y", mark.y);
    filling->SetParameter("TargetShapePoints_X", jobX);
    filling->SetParameter("TargetShapePoints_Y", jobY);

    cv::Mat drawn = picture.clone();
    cv::Mat destination;
    const int status = filling->Execute(picture, destination);
    if (status != 0) {
        std::string message;
        filling->GetErrorMsg(message);
        std::cerr << message << '\n';
        factory.ReleaseAlgorithm(filling);
        return status;
    }
    const int copies = std::stoi(filling->GetResultValue("OutputShapeCount"));
    for (int n = 1; n <= copies; ++n) {
        const auto number = [&](const std::string& field) {
            return std::stod(filling->GetResultValue("OutputShape_" + std::to_string(n) + field));
        };
        const double a = number("_OffsetAngle") * CV_PI / 180.0;
        std::vector<cv::Point> placed;
        for (std::size_t i = 0; i < jobX.size(); ++i) {
            const double dx = jobX[i] - number("_OffsetRotateCenterX");
            const double dy = jobY[i] - number("_OffsetRotateCentetY");
            placed.emplace_back(
                cvRound(number("_OffsetRotateCenterX") + std::cos(a) * dx + std::sin(a) * dy + number("_OffsetX")),
                cvRound(number("_OffsetRotateCentetY") - std::sin(a) * dx + std::cos(a) * dy + number("_OffsetY")));
        }
        cv::polylines(drawn, placed, true, {0, 255, 0}, 2);
    }
    std::cout << copies << " copies\n";
    cv::imwrite("copies.png", drawn);
    factory.ReleaseAlgorithm(filling);
}
