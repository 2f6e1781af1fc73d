// Of the sums around coarse hits only those matter that reach the threshold, a few at each copy of the shape. As in the
// coarse search, a place passes only if few features miss there (a response is at most 4, so of N features no more than
// (4 N - least sum) / 4 may find none), and misses are counted for many places at once: a word of bits tells for 33
// places or more side by side whether a feature misses, a vector holds two rows of them, and two rows are done with as
// soon as all their places are closed. Where places stay open, sixteen sums at a time are formed from the orientations.
//
// The neighbours of a hit's best place, which its sub-pixel position needs, may be closed; they are summed on demand.

#include "Includes/WindowSums.h"

#include <algorithm>
#include <opencv2/core.hpp>
#include <opencv2/core/hal/intrin.hpp>

#include "Includes/LabelVectors.h"
#include "Includes/MissPlanes.h"
#include "Includes/OrientationLabel.h"
#include "Includes/ResponseMaps.h"
#include "Includes/Similarity.h"

namespace line2Dup {

namespace {

/// Places that are counted together: every word has their bits, wherever in it they begin.
constexpr int stripWidth = FineLevel::wordDistance;

const cv::Point nowhere(-1, -1);

std::uint64_t lowestBits(int count) { return (std::uint64_t{1} << count) - 1; }

std::size_t index(int i) { return static_cast<std::size_t>(i); }

/// Shifted by any number of bits, this one has different upper six bits: a de Bruijn sequence.
constexpr std::uint64_t deBruijn = 0x03F79D71B4CB0A89;

constexpr std::array<signed char, 64> bitsByUpperSix() {
    std::array<signed char, 64> bits{};
    for (int bit = 0; bit < 64; ++bit) bits[deBruijn << bit >> 58] = static_cast<signed char>(bit);
    return bits;
}

/// The index of the lowest bit that is set.
int lowestBit(std::uint64_t word) {
    static constexpr std::array<signed char, 64> bits = bitsByUpperSix();
    return bits[(word & (~word + 1)) * deBruijn >> 58];
}

#if CV_SIMD128
cv::v_uint8x16 movedDown(const cv::v_uint64x2& words, int bits) {
    // Shifts by a variable lie in a nested namespace that depends on OpenCV's version.
    using namespace cv;  // NOLINT(google-build-using-namespace)
    return v_reinterpret_as_u8(v_shr(words, bits));
}

/// Features whose responses are counted in bytes before the counts are widened.
constexpr std::size_t featuresInByteCount = 255;
#endif

}  // namespace

void WindowSums::find(const FineLevel& level, const ShapeTemplate& templ, const cv::Rect& origins, int leastSum) {
    origins_ = origins;
    wordColumnStep_ = level.wordColumnStep();
    orientationStep_ = level.orientationStep();
    places_.clear();
    for (const GradientFeature& feature : templ.features) {
        const int x = origins.x + feature.x;
        const int y = origins.y + feature.y;
        places_.push_back({level.missing(feature.label, x, y), level.orientations(x, y),
                           x & (FineLevel::wordDistance - 1), feature.label});
    }
    const int greatestSum = fullResponse * static_cast<int>(places_.size());
    open_.fill(0);
    rows_ = 0;
    nineCentre_ = nowhere;
    if (leastSum > greatestSum) return;
    openPlaces((greatestSum - leastSum) / fullResponse);
    sumOpenPlaces(leastSum);
}

void WindowSums::openPlaces(int allowed) {
    if (allowed < 8) {
        countMisses<3>(allowed);
    } else if (allowed < 16) {
        countMisses<4>(allowed);
    } else if (allowed < 32) {
        countMisses<5>(allowed);
    } else if (allowed < 64) {
        countMisses<6>(allowed);
    } else {
        std::fill_n(open_.begin(), origins_.height, lowestBits(origins_.width));
    }
}

#if CV_SIMD128
template <int Planes>
void WindowSums::countMisses(int allowed) {
    const std::size_t count = places_.size();
    for (int strip = 0; strip * stripWidth < origins_.width; ++strip) {
        const std::uint64_t inside = lowestBits(std::min(stripWidth, origins_.width - strip * stripWidth));
        for (int row = 0; row < origins_.height; row += 2) {
            // What lies outside is closed from the start; with an odd height so is the whole row behind the last one.
            const std::uint64_t outside[2] = {~inside, row + 1 < origins_.height ? ~inside : ~std::uint64_t{0}};
            const std::ptrdiff_t offset = strip * wordColumnStep_ + row;
            const auto missing = [&](std::size_t i) {
                return movedDown(cv::v_load(places_[i].missing + offset), places_[i].shift);
            };
            const auto missingIfAny = [&](std::size_t i) { return i < count ? missing(i) : cv::v_setzero_u8(); };
            MissPlanes<Planes> planes(allowed, cv::v_reinterpret_as_u8(cv::v_load(outside)));
            std::size_t i = 0;
            for (; i + 4 <= count && !planes.allClosed(); i += 4) {
                planes.addFour(missing(i), missing(i + 1), missing(i + 2), missing(i + 3));
            }
            if (planes.allClosed()) continue;
            planes.addFour(missingIfAny(i), missingIfAny(i + 1), missingIfAny(i + 2), missingIfAny(i + 3));
            std::uint64_t open[2];
            cv::v_store(open, cv::v_reinterpret_as_u64(planes.open()));
            for (int k = 0; k < 2 && row + k < origins_.height; ++k) {
                open_[index(row + k)] |= open[k] << strip * stripWidth;
            }
        }
    }
}

WindowSums::Sixteen WindowSums::sumSixteen(int x, int y) const {
    const std::ptrdiff_t offset = y * orientationStep_ + x;
    cv::v_uint16x8 low = cv::v_setzero_u16();
    cv::v_uint16x8 high = cv::v_setzero_u16();
    for (std::size_t begin = 0; begin < places_.size(); begin += featuresInByteCount) {
        const std::size_t end = std::min(begin + featuresInByteCount, places_.size());
        // A comparison that holds is 255, so subtracting it counts by one.
        cv::v_uint8x16 own = cv::v_setzero_u8();
        cv::v_uint8x16 missing = cv::v_setzero_u8();
        for (std::size_t i = begin; i < end; ++i) {
            const Place& place = places_[i];
            const auto label = index(place.label);
            const cv::v_uint8x16 orientations = cv::v_load(place.orientations + offset);
            const cv::v_uint8x16 found = cv::v_and(orientations, cv::v_load(foundOrientations[label].data()));
            own = cv::v_sub_wrap(own, cv::v_eq(orientations, cv::v_load(ownOrientations[label].data())));
            missing = cv::v_sub_wrap(missing, cv::v_eq(found, cv::v_setzero_u8()));
        }
        // All that find a response count as neighbours, and the label's own orientation once more.
        const cv::v_uint8x16 finding = cv::v_sub_wrap(cv::v_setall_u8(static_cast<uchar>(end - begin)), missing);
        const cv::v_uint16x8 factor = cv::v_setall_u16(neighbourResponse);
        cv::v_uint16x8 findingLow;
        cv::v_uint16x8 findingHigh;
        cv::v_uint16x8 ownLow;
        cv::v_uint16x8 ownHigh;
        cv::v_expand(finding, findingLow, findingHigh);
        cv::v_expand(own, ownLow, ownHigh);
        low = cv::v_add_wrap(low, cv::v_add_wrap(ownLow, cv::v_mul_wrap(findingLow, factor)));
        high = cv::v_add_wrap(high, cv::v_add_wrap(ownHigh, cv::v_mul_wrap(findingHigh, factor)));
    }
    Sixteen sums;
    cv::v_store(sums.data(), low);
    cv::v_store(sums.data() + 8, high);
    return sums;
}
#else
template <int Planes>
void WindowSums::countMisses(int allowed) {
    for (int row = 0; row < origins_.height; ++row) {
        for (int x = 0; x < origins_.width; ++x) {
            const std::ptrdiff_t offset = x / stripWidth * wordColumnStep_ + row;
            const auto misses = std::count_if(places_.begin(), places_.end(), [&](const Place& place) {
                return (place.missing[offset] >> (place.shift + x % stripWidth) & 1) != 0;
            });
            if (misses <= allowed) open_[index(row)] |= std::uint64_t{1} << x;
        }
    }
}

WindowSums::Sixteen WindowSums::sumSixteen(int x, int y) const {
    Sixteen sums{};
    for (const Place& place : places_) {
        std::array<uchar, atOnce> responses;
        formResponses(place.orientations + y * orientationStep_ + x, responses.data(), atOnce, place.label);
        for (std::size_t i = 0; i < sums.size(); ++i) sums[i] = static_cast<ushort>(sums[i] + responses[i]);
    }
    return sums;
}
#endif

void WindowSums::sumOpenPlaces(int leastSum) {
    for (int y = 0; y < origins_.height; ++y) {
        std::uint64_t& passing = open_[index(y)];
        std::uint64_t open = passing;
        passing = 0;
        while (open != 0) {
            const int first = lowestBit(open);
            const Sixteen sixteen = sumSixteen(first, y);
            const std::uint64_t summed = open & lowestBits(atOnce) << first;
            for (std::uint64_t left = summed; left != 0; left &= left - 1) {
                const int x = lowestBit(left);
                const ushort sum = sixteen[index(x - first)];
                sums_[index(y)][index(x)] = sum;
                if (sum >= leastSum) passing |= std::uint64_t{1} << x;
            }
            open &= ~summed;
        }
        if (passing != 0) rows_ |= std::uint64_t{1} << y;
    }
}

WindowSums::Best WindowSums::bestIn(const cv::Rect& window) const {
    const cv::Point first = window.tl() - origins_.tl();
    Best best{{}, 0};
    for (std::uint64_t rows = rows_ >> first.y & lowestBits(localWindow); rows != 0; rows &= rows - 1) {
        const int y = lowestBit(rows);
        const std::size_t row = index(first.y + y);
        for (std::uint64_t left = open_[row] >> first.x & lowestBits(localWindow); left != 0; left &= left - 1) {
            const int x = lowestBit(left);
            const int sum = sums_[row][index(first.x + x)];
            if (sum > best.sum) best = {{x, y}, sum};
        }
    }
    return best;
}

const NineSums& WindowSums::around(cv::Point origin) {
    const cv::Point centre = origin - origins_.tl();
    if (centre != nineCentre_) nine_ = sumNine(centre);
    nineCentre_ = centre;
    return nine_;
}

NineSums WindowSums::sumNine(cv::Point centre) const {
    const int left = std::max(centre.x - 1, 0);
    NineSums nine{};
    for (int y = std::max(centre.y - 1, 0); y <= std::min(centre.y + 1, origins_.height - 1); ++y) {
        const Sixteen sums = sumSixteen(left, y);
        for (int x = left; x <= centre.x + 1; ++x) {
            nine[index(y - centre.y + 1)][index(x - centre.x + 1)] = sums[index(x - left)];
        }
    }
    return nine;
}

}  // namespace line2Dup
