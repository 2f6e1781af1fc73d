#include <QuorvaneVision.h>

#include <iostream>
#include <opencv2/core.hpp>

int main() {
    Quorvane::AlgorithmFactory factory;
    Quorvane::Algorithm* algorithm = factory.CreateAlgorithm("BinaryForLaserMachine");
    if (algorithm == nullptr) return 1;
    cv::Mat picture(8, 8, CV_8UC3, cv::Scalar::all(30));
    picture(cv::Rect(2, 2, 4, 4)).setTo(cv::Scalar::all(250));
    cv::Mat dots;
    const int status = algorithm->Execute(picture, dots);
    factory.ReleaseAlgorithm(algorithm);
    std::cout << "status " << status << ", dots " << dots.cols << " x " << dots.rows << "\n";
    return cv::countNonZero(dots) == 16 ? 0 : 1;
}
