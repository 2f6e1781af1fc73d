#include <QuorvaneVision.h>

#include <iostream>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

int main() {
    using namespace Quorvane::UtilityFunctions;
    const cv::Mat before = cv::imread("photographer.png");
    const cv::Mat noisy = before + cv::Scalar::all(3);  // the lamp is a little brighter
    cv::Mat opened = before.clone();                    // something large has moved into the picture
    cv::circle(opened, {150, 330}, 130, cv::Scalar::all(250), cv::FILLED);

    constexpr int fieldsOf64 = 5;
    std::cout << "to the pixel: " << IsMatChanged_GrayDiff(before, noisy) << '\n'
              << "to the eye: " << IsMatChanged_HammingDistance(before, noisy, fieldsOf64) << '\n';
    if (IsMatChanged_HammingDistance(before, opened, fieldsOf64)) std::cout << "the lid was opened\n";
}
