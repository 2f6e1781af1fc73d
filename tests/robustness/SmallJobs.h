#pragma once

#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "framework/AlgorithmFactory.h"

namespace Quorvane::Robustness {

/// An algorithm that the caller owns.
inline std::unique_ptr<Algorithm> Create(const char* name) {
    return std::unique_ptr<Algorithm>(AlgorithmFactory().CreateAlgorithm(name));
}

/// Two light discs of radius 9 on a dark ground, moved to the right by `shift` pixels.
inline cv::Mat Discs(int shift) {
    cv::Mat picture(64, 80, CV_8UC3, cv::Scalar::all(40));
    cv::circle(picture, {25 + shift, 30}, 9, cv::Scalar::all(220), cv::FILLED);
    cv::circle(picture, {55 + shift, 34}, 9, cv::Scalar::all(220), cv::FILLED);
    return picture;
}

}  // namespace Quorvane::Robustness
