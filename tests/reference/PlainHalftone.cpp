#include "tests/reference/PlainHalftone.h"

#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <random>

#include "tests/reference/PlainLocalDeviationMap.h"

namespace Quorvane::Reference {

namespace {

/// CV_64FC1; -1 marks the pixels outside the foreground.
cv::Mat ForegroundProbabilities(const cv::Mat& gray, const cv::Mat& otsu, float high, float low, int side) {
    const cv::Mat deviation = LocalDeviationMap(gray, side);
    double minDev = 0.0;
    double maxDev = 0.0;
    cv::minMaxLoc(deviation, &minDev, &maxDev);
    cv::Mat probabilities(gray.size(), CV_64FC1, cv::Scalar(-1.0));
    for (int r = 0; r < gray.rows; ++r) {
        for (int c = 0; c < gray.cols; ++c) {
            if (otsu.at<uchar>(r, c) != 255) continue;
            const float g = gray.at<uchar>(r, c);
            double& probability = probabilities.at<double>(r, c);
            if (g > high) {
                probability = 1.0;
            } else if (low > g) {
                probability = 0.0;
            } else {
                const float t = (g - low) / (high - low);
                const float d =
                    (deviation.at<float>(r, c) - static_cast<float>(minDev)) / static_cast<float>(maxDev - minDev);
                const float p = d * t;
                probability = std::isnan(p) || p < 0.1f ? 0.1f : p;
            }
        }
    }
    return probabilities;
}

cv::Mat OtsuForeground(const cv::Mat& gray) {
    cv::Mat otsu;
    cv::threshold(gray, otsu, 0.0, 255.0, cv::THRESH_BINARY | cv::THRESH_OTSU);
    return otsu;
}

}  // namespace

cv::Mat DotProbabilities(const cv::Mat& gray, float high, float low, int side) {
    cv::Mat probabilities = ForegroundProbabilities(gray, OtsuForeground(gray), high, low, side);
    return cv::max(probabilities, 0.0);
}

cv::Mat Halftone(const cv::Mat& source, float high, float low, int side, std::uint32_t seed) {
    cv::Mat gray;
    if (source.channels() == 3) {
        cv::cvtColor(source, gray, cv::COLOR_BGR2GRAY);
    } else {
        gray = source.clone();
    }
    const cv::Mat otsu = OtsuForeground(gray);
    const cv::Mat probabilities = ForegroundProbabilities(gray, otsu, high, low, side);
    cv::Mat dots = cv::Mat::zeros(otsu.size(), otsu.type());
    std::mt19937 generator(seed);
    for (int r = 0; r < gray.rows; ++r) {
        for (int c = 0; c < gray.cols; ++c) {
            const double probability = probabilities.at<double>(r, c);
            if (probability < 0.0) continue;
            bool burn = probability == 1.0 && gray.at<uchar>(r, c) > high;
            if (!burn && probability > 0.0) {
                const auto a = static_cast<double>(generator());
                const auto b = static_cast<double>(generator());
                burn = probability > (a + b * std::pow(2.0, 32)) / std::pow(2.0, 64);
            }
            if (burn) dots.at<uchar>(r, c) = 255;
        }
    }
    cv::Mat destination;
    cv::bitwise_and(otsu, dots, destination);
    return destination;
}

}  // namespace Quorvane::Reference
