#include "algorithms/BinaryForLaserMachine.h"

#include <algorithm>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <random>

#include "algorithms/LocalDeviationMap.h"
#include "algorithms/UniformDraw.h"

namespace Quorvane {

namespace {

constexpr uchar dot = 255;

/// The least probability of a dot between the two thresholds: even a flat area is burned one pixel in ten.
constexpr float leastProbability = 0.1f;

/// The brightness band, in gray levels, in which chance decides.
struct Band {
    float low;
    float high;
};

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

/// The local deviation, scaled to 0 to 1 over the picture. A picture without any deviation gives not-a-number.
class RelativeContrast {
public:
    explicit RelativeContrast(const cv::Mat& deviation) {
        double least = 0.0;
        double most = 0.0;
        cv::minMaxLoc(deviation, &least, &most);
        least_ = static_cast<float>(least);
        range_ = static_cast<float>(most - least);
    }

    float operator()(float deviation) const { return (deviation - least_) / range_; }

private:
    float least_;
    float range_;
};

/// The comparison is written so that a not-a-number (no contrast anywhere, or a band without width) gives the least.
float DotProbability(float contrast, float tone) {
    const float probability = contrast * tone;
    return probability > leastProbability ? probability : leastProbability;
}

template <typename Pixel>
cv::Mat ThrowDots(const cv::Mat& gray, const cv::Mat& foreground, const cv::Mat& deviation, Band band) {
    cv::Mat dots = cv::Mat::zeros(foreground.size(), foreground.type());
    const RelativeContrast relativeContrast(deviation);
    MersenneTwister generator(std::random_device{}());
    for (int r = 0; r < gray.rows; ++r) {
        const auto* grayRow = gray.ptr<Pixel>(r);
        const auto* foregroundRow = foreground.ptr<Pixel>(r);
        const auto* deviationRow = deviation.ptr<float>(r);
        auto* dotsRow = dots.ptr<Pixel>(r);
        for (int c = 0; c < gray.cols; ++c) {
            if (foregroundRow[c] != dot) continue;
            const float brightness = grayRow[c];
            if (brightness > band.high) {
                dotsRow[c] = dot;
            } else if (!(band.low > brightness)) {
                const float tone = (brightness - band.low) / (band.high - band.low);
                const float probability = DotProbability(relativeContrast(deviationRow[c]), tone);
                if (probability > DrawUniform(generator)) dotsRow[c] = dot;
            }
        }
    }
    return dots;
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
    cv::threshold(gray, foreground, 0.0, dot, cv::THRESH_BINARY | cv::THRESH_OTSU);
    const cv::Mat deviation = LocalDeviationMap(gray, side);
    const bool wide = gray.depth() == CV_16U;
    const cv::Mat dots = wide ? ThrowDots<ushort>(gray, foreground, deviation, Band{low, high})
                              : ThrowDots<uchar>(gray, foreground, deviation, Band{low, high});
    cv::bitwise_and(foreground, dots, destination);
    if (wide) destination.convertTo(destination, CV_8U);
    return 0;
}

}  // namespace Quorvane
