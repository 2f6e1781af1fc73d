#include <QuorvaneVision.h>

#include <iostream>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <string>

int main() {
    const cv::Mat picture = cv::imread("coffee.png");

    Quorvane::AlgorithmFactory factory;
    Quorvane::Algorithm* laser = factory.CreateAlgorithm("BinaryForLaserMachine");
    laser->SetParameter("HighThreshold", 220);  // brighter: always a dot
    laser->SetParameter("LowThreshold", 40);    // darker: never a dot
    laser->SetParameter("MaskSize", 7);         // side of the window for the contrast, pixels

    cv::Mat dots;
    const int status = laser->Execute(picture, dots);
    if (status == 0) {
        std::cout << cv::countNonZero(dots) << " dots in " << dots.total() << " pixels\n";
        cv::imwrite("dots.png", dots);
    } else {
        std::string message;
        laser->GetErrorMsg(message);
        std::cerr << message << '\n';
    }
    factory.ReleaseAlgorithm(laser);
    return status;
}
