#include "algorithms/CrossTemplate.h"

#include <opencv2/imgproc.hpp>

namespace Quorvane {

cv::Mat MakeCrossTemplate(int width, int height) {
    const cv::Scalar white(255.0);
    cv::Mat cross = cv::Mat::zeros(height, width, CV_8UC1);
    cv::rectangle(cross, cv::Point(width / 2, 0), cv::Point(width / 2, height), white, cv::FILLED, cv::LINE_8);
    cv::rectangle(cross, cv::Point(0, height / 2), cv::Point(width, height / 2), white, cv::FILLED, cv::LINE_8);
    return cross;
}

}  // namespace Quorvane
