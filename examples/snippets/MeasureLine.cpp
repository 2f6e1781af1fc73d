#include <QuorvaneVision.h>

#include <iostream>
#include <opencv2/imgcodecs.hpp>

int main() {
    using namespace Quorvane;
    const cv::Mat picture = cv::imread("plate.png");

    // One rectangle across each of two sides of a light plate on dark ground: scan from outside, expect dark to light.
    Line left;
    Line top;
    UtilityFunctions::MeasureLine(picture, {50, 120}, 40, 100, left, EdgePolarity::Positive,
                                  SearchDirection::LeftToRight, 1.0, 60.0, 1.0);
    UtilityFunctions::MeasureLine(picture, {160, 45}, 140, 40, top, EdgePolarity::Positive,
                                  SearchDirection::TopToBottom, 1.0, 60.0, 1.0);
    std::cout << left.toString() << '\n' << top.toString() << '\n';

    cv::Point2f corner;
    if (!UtilityFunctions::computeIntersection(left, top, corner)) return 1;
    std::cout << "corner " << corner << ", " << top.distanceToPoint({160, 120}) << " pixels below the upper side\n";
}
