#include "Includes/OrientationLabel.h"

#include <gtest/gtest.h>

#include <array>

#include "tests/Includes/MatcherMatchers.h"
#include "tests/support/RandomInput.h"

namespace line2Dup {

using Quorvane::TestSupport::ExpectMatcherError;
using Quorvane::TestSupport::RandomInput;

namespace {

TEST(GetLabel, IsThePlaceOfTheOneBit) {
    for (int label = 0; label < 8; ++label) EXPECT_EQ(getLabel(1 << label), label);
}

TEST(GetLabel, RaisesForAnyOtherValue) {
    for (const int value : {0, 3, 5, 255, 256, -1, 129}) {
        ExpectMatcherError([value] { getLabel(value); }, cv::Error::StsBadArg, "Invalid value of quantized parameter",
                           "line2Dup::getLabel");
    }
}

TEST(NeighboursOf, AreBesideTheLabelAndWrapAround) {
    EXPECT_EQ(neighboursOf(0), 2 | 128);
    EXPECT_EQ(neighboursOf(4), 8 | 32);
    EXPECT_EQ(neighboursOf(7), 64 | 1);
}

TEST(MajorityOfNine, CountsEveryLabelOfTheBlock) {
    RandomInput random(301);
    std::array<std::array<uchar, 40>, 3> rows{};
    for (int i = 0; i < 4000; ++i) {
        const int labels = random.Integer(1, 4);
        const int width = random.Integer(1, 40);
        for (auto& row : rows) {
            for (uchar& value : row) value = static_cast<uchar>(1 << (random.Integer(0, labels - 1) * 7 / 3));
        }
        std::array<uchar, 40> winners{};
        majorityOfNine(rows[0].data(), rows[1].data(), rows[2].data(), winners.data(), width);
        for (int x = 0; x < width; ++x) {
            std::array<int, 256> votes{};
            if (x > 0 && x < width - 1) {
                for (const auto& row : rows) {
                    for (int j = x - 1; j <= x + 1; ++j) ++votes[row[static_cast<std::size_t>(j)]];
                }
            }
            int expected = 0;
            for (int value = 1; value < 256; ++value) {
                if (votes[static_cast<std::size_t>(value)] >= 5) expected = value;
            }
            ASSERT_EQ(winners[static_cast<std::size_t>(x)], expected) << "round " << i << ", column " << x;
        }
    }
}

}  // namespace
}  // namespace line2Dup
