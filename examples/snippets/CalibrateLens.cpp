#include <QuorvaneVision.h>

#include <iostream>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

int main() {
    using namespace Quorvane::CameraCalibration;
    std::vector<cv::Mat> shots;
    for (int i = 1; i <= 8; ++i) shots.push_back(cv::imread("circles-" + std::to_string(i) + ".png"));

    cv::Mat K;
    cv::Mat D;
    double rms = 0.0;
    if (!CalibrateDistortedCamera(shots, {7, 5}, K, D, rms) || !SaveCameraParameters("lens.yml", K, D, rms)) {
        std::cerr << GetLastError() << '\n';
        return 1;
    }
    std::cout << shots.size() << " pictures, error " << rms << " pixels\n";

    // Later, for every picture of this camera:
    cv::Mat straight;
    if (!LoadCameraParameters("lens.yml", K, D, rms) ||
        !UnDistortedImage(shots.front(), K, D, 0.75, 0.75, straight)) {  // 0.75: keep more of the picture's edge
        std::cerr << GetLastError() << '\n';
        return 1;
    }
    cv::imwrite("straight.png", straight);
}
