#include "geometry/ChangeDetection.h"

#include <opencv2/core.hpp>

#include "geometry/AverageHash.h"
#include "geometry/GrayImage.h"

namespace Quorvane::UtilityFunctions {

bool IsMatChanged_GrayDiff(const cv::Mat& previous, const cv::Mat& current) {
    if (previous.empty() && current.empty()) return false;
    if (previous.empty() || current.empty()) return true;
    cv::Mat difference;
    cv::absdiff(toGrayImage(previous), toGrayImage(current), difference);
    return cv::countNonZero(difference) > 0;
}

bool IsMatChanged_HammingDistance(const cv::Mat& previous, const cv::Mat& current, int threshold) {
    const std::string before = averageHashString(previous);
    const std::string now = averageHashString(current);
    return hammingDistanceOfHashes(before, now) > threshold;
}

}  // namespace Quorvane::UtilityFunctions
