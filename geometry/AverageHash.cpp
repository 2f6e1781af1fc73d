#include "geometry/AverageHash.h"

#include <bitset>
#include <cmath>
#include <iostream>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "geometry/GrayChannels.h"
#include "geometry/GrayImage.h"

namespace Quorvane::UtilityFunctions {

namespace {

constexpr int hashSide = 8;
constexpr std::size_t hashBits = 64;

bool IsHash(const std::string& text) {
    return text.size() == hashBits && text.find_first_not_of("01") == std::string::npos;
}

}  // namespace

std::string averageHashString(const cv::Mat& image) {
    if (!CanBecomeGray(image)) return {};
    const cv::Mat gray = toGrayImage(image);
    cv::Mat small;
    cv::resize(gray, small, cv::Size(hashSide, hashSide), 0.0, 0.0, cv::INTER_LINEAR);
    const double mean = std::trunc(cv::mean(small)[0]);
    small.convertTo(small, CV_64F);
    std::string hash;
    for (const double pixel : cv::Mat_<double>(small)) hash += pixel <= mean ? '0' : '1';
    return hash;
}

int hammingDistanceOfHashes(const std::string& first, const std::string& second) {
    if (!IsHash(first)) {
        std::cerr << "Error: Invalid hash string. It must be 64 bits long and contain only '0' and '1'.\n";
        return -1;
    }
    return static_cast<int>((std::bitset<hashBits>(first) ^ std::bitset<hashBits>(second)).count());
}

}  // namespace Quorvane::UtilityFunctions
