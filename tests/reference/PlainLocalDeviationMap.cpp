#include "tests/reference/PlainLocalDeviationMap.h"

#include <opencv2/core.hpp>

namespace Quorvane::Reference {

cv::Mat LocalDeviationMap(const cv::Mat& gray, int side) {
    cv::Mat map = cv::Mat::zeros(gray.size(), CV_32FC1);
    for (int r = 0; r < gray.rows - side; ++r) {
        for (int c = 0; c < gray.cols - side; ++c) {
            const cv::Mat window = gray(cv::Rect(c, r, side, side));
            cv::Scalar mean;
            cv::Scalar deviation;
            cv::meanStdDev(window, mean, deviation);
            map.at<float>(r + side / 2, c + side / 2) = static_cast<float>(deviation[0]);
        }
    }
    return map;
}

}  // namespace Quorvane::Reference
