#pragma once

#include <opencv2/core/hal/interface.h>
#include <cstddef>
#include <vector>

namespace line2Dup {

/// Positions that are counted together: the bits of one vector.
constexpr std::ptrdiff_t positionsInBlock = 128;

/// For each feature of a template two arrays of bits (`ResponseBits`), in both of which a 1 marks a position at which
/// the feature is missing for sure. A feature with one array names it twice.
struct MissArrays {
    std::vector<const uchar*> first;
    std::vector<const uchar*> second;

    void clear();
    void add(const uchar* one, const uchar* other);
    /// The number of features must be a multiple of four when they are counted: `neverMissing`, an array of zeros,
    /// fills up.
    void fillUp(const uchar* neverMissing);
};

/// One bit for each position of a block: bit i % 8 of byte i / 8.
struct BlockMask {
    uchar bytes[positionsInBlock / 8];
};

/// Counts at 128 positions at once how many features are missing.
class MissCounter {
public:
    /// Up to `allowed` features (0 to 63) may be missing.
    explicit MissCounter(int allowed);

    /// Whether any position of the block that begins at position 128 * `block` misses no more features than allowed;
    /// `open` becomes the mask of these positions.
    bool hasOpen(const MissArrays& arrays, std::ptrdiff_t block, BlockMask& open) const {
        return count_(arrays, block, allowed_, open);
    }

private:
    using Count = bool (*)(const MissArrays&, std::ptrdiff_t, int, BlockMask&);

    int allowed_;
    Count count_;
};

}  // namespace line2Dup
