#include <QuorvaneVision.h>

#include <iostream>
#include <opencv2/imgcodecs.hpp>

int main() {
    using namespace Quorvane::CameraCalibration;
    const cv::Mat picture = cv::imread("target.png");

    // The ring on the target has a radius of 8 mm.
    cv::Point2f center;
    double radius = 0.0;
    double pixelsPerMillimetre = 0.0;
    if (!CalScalePixToMmUseCircle(picture, 8.0, 0.0, center, radius, pixelsPerMillimetre)) {
        std::cerr << "there is no circle\n";
        return 1;
    }
    std::cout << "circle at " << center << ", " << pixelsPerMillimetre << " pixels per millimetre\n";

    // Where the bars of the cross inside it meet, to a fraction of a pixel.
    if (!FindCircleCross(picture, center, radius)) {
        std::cerr << "there is no cross\n";
        return 1;
    }
    std::cout << "cross at " << center << '\n';
}
