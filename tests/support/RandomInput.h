#pragma once

#include <cstdint>
#include <opencv2/core/mat.hpp>
#include <random>

namespace Quorvane::TestSupport {

/// Random input that is the same on every platform: the standard's generator with distributions of our own, since
/// those of the standard library differ between implementations.
class RandomInput {
public:
    explicit RandomInput(std::uint32_t seed) : generator_(seed) {}

    /// Uniform in least to most, both included.
    int Integer(int least, int most);
    /// Uniform in least to most, most excluded.
    double Real(double least, double most);
    /// Normal with mean 0 and deviation 1.
    double Normal();
    /// 8-bit image of independent uniform values in least to most, both included.
    cv::Mat Image(cv::Size size, int channels = 1, int least = 0, int most = 255);

private:
    std::mt19937 generator_;
};

}  // namespace Quorvane::TestSupport
