#pragma once

#include <cmath>
#include <vector>

#include "geometry/Measurement.h"

namespace Quorvane::UtilityFunctions {

// A caliper averages the image across its width into a profile along its axis. One filter smooths the profile and
// differentiates it, and an edge is where the slope of that derivative changes its sign. This header holds what is
// done with a profile; how it is read from the image is the caliper's business.

/// How many samples, one pixel apart, lie on a length of twice `halfExtent`: 1 + floor(2 halfExtent) for a length that
/// is not negative. Lengths that no `int` holds have no sample.
int SampleCount(double halfExtent);

/// The sigma that is really used: at least 0.4 and at most half of `halfLength`. The upper limit wins over the lower.
double LimitedSigma(double sigma, double halfLength);

/// The derivative of a Gauss function, to be correlated with a profile so that a rising profile gives a positive
/// result: the least odd count of elements that spans 6 sigma (or one more than that), the amounts adding up to 1.
std::vector<double> DerivativeKernel(double sigma);

/// By this factor a derivative becomes an amplitude. The positive half of the kernel sums to 1/2, so a clean step of
/// h gray levels has the amplitude h sigma sqrt(2 pi) / 2.
double AmplitudeScale(double sigma);

/// A profile must have this many samples to have an edge.
constexpr int leastSamplesOfAnEdge = 5;

/// So many samples at either end of a profile cannot be edges.
constexpr int samplesWithoutEdge = 2;

/// Whether the sample at `d` is an edge. `d` points into the derivative, with two neighbours on either side.
///
/// The test finds every turning point of the derivative, low ones between two edges as well as peaks, and may find
/// two neighbouring samples for one edge. That is deliberate: measured positions depend on which of them comes first.
inline bool IsEdge(const double* d, double scale, double threshold, EdgePolarity polarity) {
    const double changeBefore = d[0] - d[-2];
    const double changeAfter = d[2] - d[0];
    if (!(changeBefore * changeAfter < 0.0)) return false;
    if (!(std::abs(d[0] * scale) >= threshold)) return false;
    if (polarity == EdgePolarity::Positive) return d[0] > 0.0;
    if (polarity == EdgePolarity::Negative) return d[0] < 0.0;
    return true;
}

/// How far, in samples, the edge lies from the sample at `d`: the vertex of the parabola through the amounts of three
/// neighbours. Not limited: where the sample is not the top of the curve, the vertex can be samples away.
inline double EdgeOffset(const double* d) {
    constexpr double flat = 1e-10;
    const double before = std::abs(d[-1]);
    const double here = std::abs(d[0]);
    const double after = std::abs(d[1]);
    const double q = 2.0 * (before - 2.0 * here + after);
    return std::abs(q) < flat ? 0.0 : (before - after) / q;
}

}  // namespace Quorvane::UtilityFunctions
