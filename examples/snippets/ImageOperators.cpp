#include <QuorvaneVision.h>

#include <iostream>
#include <opencv2/imgcodecs.hpp>
#include <vector>

int main() {
    using namespace Quorvane::UtilityFunctions;
    const cv::Mat photograph = cv::imread("coffee.png");

    cv::Mat sketch;
    ApplySketchFilter(photograph, sketch, 80);
    cv::imwrite("sketch.png", sketch);

    // Regions of like colour, closed over gaps of up to 9 pixels; holes below 400 pixels are painted over.
    const cv::Mat smooth = fillHolesMorphologicalEnhanced(photograph, 12.0, 400, 9, 3);
    cv::imwrite("smooth.png", smooth);

    const std::vector<cv::Point> saucer{{120, 240}, {180, 240}, {180, 280}, {120, 280}};
    const cv::Point typical = findDominantLABColorPointInContour(photograph, saucer);
    if (typical.x >= 0) std::cout << "the saucer's colour is " << photograph.at<cv::Vec3b>(typical) << '\n';

    std::vector<cv::Mat> masks;
    std::vector<cv::Point2f> centers;
    ThresholdAndFindAllRegionCenter(cv::imread("circles-2.png"), 0, 40, masks, centers);
    std::cout << centers.size() << " dark regions, the first around " << centers.front() << '\n';
}
