#include <QuorvaneVision.h>

#include <opencv2/imgcodecs.hpp>

int main() {
    Quorvane::AlgorithmFactory factory;
    Quorvane::Algorithm* laser = factory.CreateAlgorithm("BinaryForLaserMachine");
    laser->SetParameter("HighThreshold", 220);
    cv::Mat dots;
    const int status = laser->Execute(cv::imread("picture.png"), dots);  // 0: came to its end; 2: no picture
    if (status == 0) cv::imwrite("dots.png", dots);
    factory.ReleaseAlgorithm(laser);
    return status;
}
