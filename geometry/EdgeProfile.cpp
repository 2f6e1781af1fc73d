#include "geometry/EdgeProfile.h"

#include <opencv2/core/cvdef.h>
#include <algorithm>
#include <cstddef>
#include <limits>

#include "TruncateToInt.h"

namespace Quorvane::UtilityFunctions {

int SampleCount(double halfExtent) {
    const int negated = TruncateToInt(-2.0 * halfExtent);
    constexpr int beyondInt = std::numeric_limits<int>::min();
    return negated <= beyondInt + 1 ? 0 : 1 - negated;
}

double LimitedSigma(double sigma, double halfLength) {
    constexpr double leastSigma = 0.4;
    return std::min(0.5 * halfLength, std::max(leastSigma, sigma));
}

std::vector<double> DerivativeKernel(double sigma) {
    constexpr double leastSum = 1e-10;
    int size = TruncateToInt(std::ceil(6.0 * sigma));
    if (size % 2 == 0) ++size;
    std::vector<double> kernel(static_cast<std::size_t>(std::max(size, 0)));
    const int middle = size / 2;
    double sum = 0.0;
    for (int k = 0; k < size; ++k) {
        const double x = k - middle;
        const double element = std::exp(-(x * x) / (2.0 * sigma * sigma)) * (x / (sigma * sigma));
        kernel[static_cast<std::size_t>(k)] = element;
        sum += std::abs(element);
    }
    if (sum > leastSum) {
        for (double& element : kernel) element /= sum;
    }
    return kernel;
}

double AmplitudeScale(double sigma) { return std::sqrt(2.0 * CV_PI) * sigma; }

}  // namespace Quorvane::UtilityFunctions
