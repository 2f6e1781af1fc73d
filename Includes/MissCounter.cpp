// A block ends as soon as all its positions are closed. `MissPlanes.h` tells how misses are counted.

#include "Includes/MissCounter.h"

#include <opencv2/core.hpp>
#include <opencv2/core/hal/intrin.hpp>

#include "Includes/MissPlanes.h"

namespace line2Dup {

void MissArrays::clear() {
    first.clear();
    second.clear();
}

void MissArrays::add(const uchar* one, const uchar* other) {
    first.push_back(one);
    second.push_back(other);
}

void MissArrays::fillUp(const uchar* neverMissing) {
    while (first.size() % 4 != 0) add(neverMissing, neverMissing);
}

namespace {

#if CV_SIMD128
template <int Planes>
bool countMisses(const MissArrays& arrays, std::ptrdiff_t block, int allowed, BlockMask& open) {
    const std::ptrdiff_t offset = block * (positionsInBlock / 8);
    const auto missing = [&](std::size_t i) {
        return cv::v_and(cv::v_load(arrays.first[i] + offset), cv::v_load(arrays.second[i] + offset));
    };
    MissPlanes<Planes> planes(allowed, cv::v_setzero_u8());
    for (std::size_t i = 0; i < arrays.first.size(); i += 4) {
        planes.addFour(missing(i), missing(i + 1), missing(i + 2), missing(i + 3));
        if (planes.allClosed()) return false;
    }
    cv::v_store(open.bytes, planes.open());
    return true;
}
#else
template <int Planes>
bool countMisses(const MissArrays& arrays, std::ptrdiff_t block, int allowed, BlockMask& open) {
    bool any = false;
    for (std::ptrdiff_t p = 0; p < positionsInBlock; ++p) {
        const std::ptrdiff_t byte = block * (positionsInBlock / 8) + p / 8;
        int misses = 0;
        for (std::size_t i = 0; i < arrays.first.size(); ++i) {
            misses += (arrays.first[i][byte] & arrays.second[i][byte]) >> p % 8 & 1;
        }
        const int bit = misses <= allowed ? 1 : 0;
        uchar& mask = open.bytes[p / 8];
        mask = static_cast<uchar>(p % 8 == 0 ? bit : mask | bit << p % 8);
        any = any || bit != 0;
    }
    return any;
}
#endif

}  // namespace

MissCounter::MissCounter(int allowed) : allowed_(allowed), count_(countMisses<6>) {
    if (allowed < 8) {
        count_ = countMisses<3>;
    } else if (allowed < 16) {
        count_ = countMisses<4>;
    } else if (allowed < 32) {
        count_ = countMisses<5>;
    }
}

}  // namespace line2Dup
