#include "Includes/LargestContour.h"

#include <opencv2/imgproc.hpp>

namespace Quorvane {

std::size_t IndexOfLargestContour(const std::vector<std::vector<cv::Point>>& contours) {
    std::size_t largest = 0;
    double largestArea = 0.0;
    for (std::size_t i = 0; i < contours.size(); ++i) {
        const double area = cv::contourArea(contours[i]);
        if (area > largestArea) {
            largestArea = area;
            largest = i;
        }
    }
    return largest;
}

}  // namespace Quorvane
