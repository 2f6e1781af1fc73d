// The measuring functions ask each caliper for its first edge only, and lay hundreds of calipers on one image. So the
// image is read in place instead of being copied per caliper, the filter and the buffers are made once, positions are
// computed where they are needed instead of being stored, and a profile is read in short blocks, each one filtered and
// tested before the next, until the first edge turns up. Samples outside the image are known to be zero and are not
// visited, so a caliper of any length costs no more than its part inside the image.
//
// Every number is computed by the same operations in the same order as in EdgeCaliper. The one liberty: where that
// leaves products with samples outside the profile out of a sum, here zeros are added, which changes no sum.

#include "geometry/FirstEdgeSearch.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "geometry/EdgeProfile.h"
#include "geometry/PixelReader.h"

namespace Quorvane::UtilityFunctions {

namespace {

/// Samples read between two looks for an edge.
constexpr int samplesPerBlock = 16;

/// The places along an axis, as distances from the caliper's centre, between which its coordinate stays near the image.
struct Stretch {
    double begin;
    double end;
};

/// `rate` is the coordinate's change per unit of length, `extent` the image's size in that coordinate.
Stretch StretchNearImage(double centre, double rate, double extent, double margin) {
    const double toLow = (-margin - centre) / rate;
    const double toHigh = (extent + margin - centre) / rate;
    // The sign alone decides, also that of a zero: infinities come in the same order.
    return std::signbit(rate) ? Stretch{toHigh, toLow} : Stretch{toLow, toHigh};
}

/// Limits to 0 ... most; what is not a number is replaced.
int LimitedIndex(double value, int most, int replacement) {
    if (std::isnan(value)) return replacement;
    return static_cast<int>(std::clamp(value, 0.0, static_cast<double>(most)));
}

}  // namespace

/// A caliper's axis, and which of its samples matter.
struct FirstEdgeSearch::Strip {
    double row;
    double column;
    double cosine;
    double sine;
    double halfLength;
    int insideBegin;  ///< Samples before this one, and from `insideEnd` on, have no point in the image.
    int insideEnd;
    int windowBegin;  ///< Samples before this one, and from `windowEnd` on, have no share in any edge.
    int windowEnd;
};

FirstEdgeSearch::FirstEdgeSearch(const cv::Mat& gray, double halfWidth, double sigma, double threshold,
                                 EdgePolarity polarity)
    : gray_(gray), halfWidth_(halfWidth), sigma_(sigma), threshold_(threshold), polarity_(polarity) {
    const int count = SampleCount(halfWidth);
    for (int j = 0; j < count; ++j) across_.push_back(j - halfWidth);
    offsetsX_.resize(across_.size());
    offsetsY_.resize(across_.size());
}

void FirstEdgeSearch::UseSigma(double sigma) {
    if (sigma == usedSigma_) return;
    kernel_ = DerivativeKernel(sigma);
    scale_ = AmplitudeScale(sigma);
    usedSigma_ = sigma;
}

FirstEdgeSearch::Strip FirstEdgeSearch::StripOf(const CaliperPlace& place) {
    Strip strip{place.row, place.column, std::cos(place.angle), std::sin(place.angle), place.halfLength, 0, 0, 0, 0};
    for (std::size_t j = 0; j < across_.size(); ++j) {
        offsetsX_[j] = across_[j] * strip.sine;
        offsetsY_[j] = across_[j] * strip.cosine;
    }

    const int samples = SampleCount(place.halfLength);
    const double margin = halfWidth_ + 1.0;
    const Stretch x = StretchNearImage(place.column, strip.cosine, gray_.cols, margin);
    const Stretch y = StretchNearImage(place.row, strip.sine, gray_.rows, margin);
    strip.insideBegin = std::max(LimitedIndex(x.begin + place.halfLength, samples, 0),
                                 LimitedIndex(y.begin + place.halfLength, samples, 0));
    strip.insideEnd = std::min(LimitedIndex(x.end + place.halfLength + 1.0, samples, samples),
                               LimitedIndex(y.end + place.halfLength + 1.0, samples, samples));
    if (strip.insideBegin >= strip.insideEnd) return strip;

    // A sample acts on the derivative as far as half a kernel away, and a derivative on edges two samples away, which
    // are tested together with two neighbours on either side.
    const int reach = static_cast<int>(kernel_.size() / 2) + 2 * samplesWithoutEdge;
    strip.windowBegin = strip.insideBegin > reach ? strip.insideBegin - reach : 0;
    strip.windowEnd = samples - strip.insideEnd > reach ? strip.insideEnd + reach : samples;
    return strip;
}

/// The part of the profile from sample `begin` to sample `end`.
template <typename Reader>
void FirstEdgeSearch::ReadProfile(const Reader& reader, const Strip& strip, int begin, int end) {
    const std::size_t count = across_.size();
    for (int i = std::max(begin, strip.insideBegin); i < std::min(end, strip.insideEnd); ++i) {
        double& mean = profile_[static_cast<std::size_t>(i - strip.windowBegin) + kernel_.size() / 2];
        const double s = i - strip.halfLength;
        const double axisX = s * strip.cosine + strip.column;
        const double axisY = s * strip.sine + strip.row;
        const auto x = [&](std::size_t j) { return axisX - offsetsX_[j]; };
        const auto y = [&](std::size_t j) { return offsetsY_[j] + axisY; };
        double sum = 0.0;
        // Coordinates rise or fall steadily across the strip, so what holds at both sides holds between them.
        if (reader.HoldsNeighbours(x(0), y(0)) && reader.HoldsNeighbours(x(count - 1), y(count - 1))) {
            for (std::size_t j = 0; j < count; ++j) sum += reader.OfNeighbours(x(j), y(j));
            mean = sum / static_cast<double>(count);
        } else {
            int inside = 0;
            for (std::size_t j = 0; j < count; ++j) {
                if (!reader.Holds(x(j), y(j))) continue;
                sum += reader.interpolateBilinear(x(j), y(j));
                ++inside;
            }
            mean = inside > 0 ? sum / inside : 0.0;
        }
    }
}

/// The part of the derivative from `begin` to `end`, counted from the window's begin.
void FirstEdgeSearch::Derive(int begin, int end) {
    double* derivative = derivative_.data() + begin;
    const auto count = static_cast<std::size_t>(end - begin);
    for (std::size_t k = 0; k < kernel_.size(); ++k) {
        const double weight = kernel_[k];
        const double* profile = profile_.data() + begin + k;
        for (std::size_t i = 0; i < count; ++i) derivative[i] += weight * profile[i];
    }
}

/// The place of the first edge along the strip, in samples.
template <typename Reader>
bool FirstEdgeSearch::FindPosition(const Reader& reader, const Strip& strip, double& position) {
    const int window = strip.windowEnd - strip.windowBegin;
    const auto radius = static_cast<int>(kernel_.size() / 2);
    profile_.assign(static_cast<std::size_t>(window) + 2 * static_cast<std::size_t>(radius), 0.0);
    derivative_.assign(static_cast<std::size_t>(window), 0.0);
    int derived = 0;
    int next = samplesWithoutEdge;
    for (int read = 0; read < window;) {
        const int begin = read;
        read = window - read > samplesPerBlock ? read + samplesPerBlock : window;
        ReadProfile(reader, strip, strip.windowBegin + begin, strip.windowBegin + read);
        const int derivable = read < window ? read - radius : window;
        if (derivable <= derived) continue;
        Derive(derived, derivable);
        derived = derivable;
        for (; next < derived - samplesWithoutEdge; ++next) {
            const double* d = derivative_.data() + next;
            if (!IsEdge(d, scale_, threshold_, polarity_)) continue;
            position = (strip.windowBegin + next) + EdgeOffset(d);
            return true;
        }
    }
    return false;
}

bool FirstEdgeSearch::Find(const CaliperPlace& place, cv::Point2f& edge) {
    if (SampleCount(place.halfLength) < leastSamplesOfAnEdge) return false;
    if (std::isnan(place.row) || std::isnan(place.column)) return false;
    UseSigma(LimitedSigma(sigma_, place.halfLength));
    const Strip strip = StripOf(place);
    double position = 0.0;
    bool found = false;
    WithPixelReader(gray_, [&](const auto& reader) { found = FindPosition(reader, strip, position); });
    if (!found) return false;
    const double s = position - place.halfLength;
    edge = {static_cast<float>(s * strip.cosine + place.column), static_cast<float>(s * strip.sine + place.row)};
    return true;
}

}  // namespace Quorvane::UtilityFunctions
