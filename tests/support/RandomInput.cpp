#include "tests/support/RandomInput.h"

#include <cmath>

namespace Quorvane::TestSupport {

int RandomInput::Integer(int least, int most) {
    const auto count = static_cast<std::uint64_t>(static_cast<std::int64_t>(most) - least + 1);
    return static_cast<int>(least + static_cast<std::int64_t>(generator_() * count >> 32));
}

double RandomInput::Real(double least, double most) {
    constexpr double twoTo32 = 4294967296.0;
    return least + (most - least) * (static_cast<double>(generator_()) / twoTo32);
}

double RandomInput::Normal() {
    // Box and Muller, "A Note on the Generation of Random Normal Deviates", 1958.
    const double radius = std::sqrt(-2.0 * std::log(Real(1e-12, 1.0)));
    return radius * std::cos(Real(0.0, 2.0 * CV_PI));
}

cv::Mat RandomInput::Image(cv::Size size, int channels, int least, int most) {
    cv::Mat image(size, CV_8UC(channels));
    for (int r = 0; r < image.rows; ++r) {
        auto* row = image.ptr(r);
        for (int i = 0; i < image.cols * channels; ++i) row[i] = static_cast<uchar>(Integer(least, most));
    }
    return image;
}

}  // namespace Quorvane::TestSupport
