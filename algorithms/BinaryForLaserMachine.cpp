#include "algorithms/BinaryForLaserMachine.h"

#include <algorithm>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <random>

#include "algorithms/Halftone.h"
#include "algorithms/LocalDeviationMap.h"

namespace Quorvane {

namespace {

constexpr double white = 255.0;

float LimitToBrightness(float value) { return std::max(std::min(value, 255.0f), 0.0f); }

/// One channel of the picture; empty for pictures that have neither one channel nor three.
cv::Mat GrayOf(const cv::Mat& source) {
    cv::Mat gray;
    if (source.channels() != 1 && source.channels() != 3) return gray;
    CV_Assert(source.dims <= 2);
    if (source.channels() == 3) cv::cvtColor(source, gray, cv::COLOR_BGR2GRAY);
    if (source.channels() == 1) gray = source;
    return gray;
}

}  // namespace

BinaryForLaserMachine::BinaryForLaserMachine() {
    parameters_->SetParameter("HighThreshold", 240);
    parameters_->SetParameter("LowThreshold", 20);
    parameters_->SetParameter("MaskSize", 5);
    results_->SetResult("AlgorithmErrorMsg", "");
}

BinaryForLaserMachine::~BinaryForLaserMachine() = default;

int BinaryForLaserMachine::Execute(const cv::Mat& source, cv::Mat& destination) {
    if (source.empty()) {
        results_->SetResult("AlgorithmErrorMsg", "[BinaryForLaserMachine]Image is empty!");
        return 2;
    }
    results_->ClearResult();

    const float high = LimitToBrightness(parameters_->GetParameter("HighThreshold").ToFloat());
    const float low = LimitToBrightness(parameters_->GetParameter("LowThreshold").ToFloat());
    const int maskSize = parameters_->GetParameter("MaskSize").ToInt();
    const int side = maskSize % 2 != 0 ? maskSize : maskSize + 1;

    const cv::Mat gray = GrayOf(source);
    cv::Mat foreground;
    cv::threshold(gray, foreground, 0.0, white, cv::THRESH_BINARY | cv::THRESH_OTSU);
    const cv::Mat deviation = LocalDeviationMap(gray, side);
    cv::Mat dots = ThrowDots(gray, foreground, deviation, ChanceBand{low, high}, std::random_device{}());
    if (gray.depth() == CV_16U) {
        foreground.convertTo(foreground, CV_8U);
        dots.convertTo(dots, CV_8U);
    }
    // A destination that shows the source's pixels gets pixels of its own: the source is not to be changed.
    cv::Mat picture = destination.data == source.data ? cv::Mat() : destination;
    cv::bitwise_and(foreground, dots, picture);
    destination = picture;
    return 0;
}

}  // namespace Quorvane
