#include "algorithms/Halftone.h"

#include <opencv2/core.hpp>

#include "algorithms/UniformDraw.h"

namespace Quorvane {

namespace {

constexpr uchar dot = 255;

/// The least probability of a dot inside the band: even a flat area is burned one pixel in ten.
constexpr float leastProbability = 0.1f;

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
cv::Mat ThrowDotsOf(const cv::Mat& gray, const cv::Mat& foreground, const cv::Mat& deviation, ChanceBand band,
                    std::uint32_t seed) {
    cv::Mat dots = cv::Mat::zeros(foreground.size(), foreground.type());
    const RelativeContrast relativeContrast(deviation);
    MersenneTwister generator(seed);
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

cv::Mat ThrowDots(const cv::Mat& gray, const cv::Mat& foreground, const cv::Mat& deviation, ChanceBand band,
                  std::uint32_t seed) {
    return gray.depth() == CV_16U ? ThrowDotsOf<ushort>(gray, foreground, deviation, band, seed)
                                  : ThrowDotsOf<uchar>(gray, foreground, deviation, band, seed);
}

}  // namespace Quorvane
