#include "Includes/MissCounter.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>

#include "tests/support/RandomInput.h"

namespace line2Dup {

using Quorvane::TestSupport::RandomInput;

namespace {

bool IsSet(const uchar* bits, std::ptrdiff_t i) { return (bits[i / 8] >> i % 8 & 1) != 0; }

TEST(MissCounter, OpensExactlyThePositionsWithFewEnoughMisses) {
    RandomInput random(390);
    constexpr int blocks = 3;
    constexpr int bytes = blocks * positionsInBlock / 8;
    const std::vector<uchar> neverMissing(bytes);
    for (int i = 0; i < 400; ++i) {
        const int features = random.Integer(0, 63);
        const int allowed = random.Integer(0, 62);
        const cv::Mat first = random.Image({bytes, features + 1});
        cv::Mat second = random.Image({bytes, features + 1});
        if (i % 2 == 0) second |= first;
        MissArrays arrays;
        for (int k = 0; k < features; ++k) arrays.add(first.ptr(k), second.ptr(k));
        arrays.fillUp(neverMissing.data());
        EXPECT_EQ(arrays.first.size() % 4, 0u);
        for (int block = 0; block < blocks; ++block) {
            BlockMask open{};
            const bool any = MissCounter(allowed).hasOpen(arrays, block, open);
            bool expectedAny = false;
            for (std::ptrdiff_t p = 0; p < positionsInBlock; ++p) {
                int misses = 0;
                for (int k = 0; k < features; ++k) {
                    const std::ptrdiff_t position = block * positionsInBlock + p;
                    misses += IsSet(first.ptr(k), position) && IsSet(second.ptr(k), position) ? 1 : 0;
                }
                expectedAny = expectedAny || misses <= allowed;
                if (any) {
                    ASSERT_EQ(IsSet(open.bytes, p), misses <= allowed) << i << ", position " << p;
                }
            }
            ASSERT_EQ(any, expectedAny) << i;
        }
    }
}

}  // namespace
}  // namespace line2Dup
