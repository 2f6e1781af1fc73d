#include <QuorvaneVision.h>

#include <iostream>
#include <opencv2/imgcodecs.hpp>

int main() {
    using namespace Quorvane;
    const cv::Mat picture = cv::imread("photographer.png");

    Curve curve;
    UtilityFunctions::MeasureCurve(picture, {100, 158}, 92.0, 116.0, curve, EdgePolarity::Negative,
                                   SearchDirection::TopToBottom, 1.0, 60.0, 2.0, 0);
    if (curve.curvePoints.empty()) return 1;
    std::cout << curve.measuredPoints.size() << " points measured, " << curve.curvePoints.size()
              << " on the curve from " << curve.curvePoints.front() << " to " << curve.curvePoints.back()
              << ", mean distance " << curve.meanFitError << " pixels\n";
}
