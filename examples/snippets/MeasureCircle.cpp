#include <QuorvaneVision.h>

#include <iostream>
#include <opencv2/imgcodecs.hpp>

int main() {
    using namespace Quorvane;
    const cv::Mat picture = cv::imread("plate.png");

    cv::Point2f center;
    double radius = 0.0;
    double score = -1.0;  // stays so if no circle is found
    UtilityFunctions::MeasureCircle(picture, {160, 120}, 60.0, center, radius, score, EdgePolarity::Positive,
                                    SearchDirection::Outward, 1.0, 60.0, 1.0);
    if (score < 0.9) {
        std::cerr << "no clean circle here\n";
        return 1;
    }
    std::cout << "centre " << center << ", radius " << radius << ", score " << score << '\n';
}
