#include "Includes/ResponseBits.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>

#include "Includes/OrientationLabel.h"
#include "tests/support/RandomInput.h"

namespace line2Dup {

using Quorvane::TestSupport::RandomInput;

namespace {

TEST(ResponseBits, MarkWhereALabelFindsNothingFromAnyPositionOn) {
    RandomInput random(391);
    for (const int count : {1, 7, 16, 40, 133}) {
        cv::Mat spread = random.Image({count, 4});
        spread.setTo(0, random.Image({count, 4}) > 60);
        constexpr std::ptrdiff_t reach = 30;
        const ResponseBits bits(spread, reach);
        for (int label = 0; label < labelCount; ++label) {
            for (int phase = 0; phase < 4; ++phase) {
                for (int first = 0; first < count; ++first) {
                    const uchar* array = bits.from(label, phase, first);
                    for (int i = 0; first + i < count + reach; ++i) {
                        const bool missing = first + i >= count || (spread.at<uchar>(phase, first + i) &
                                                                    (oneHotOf(label) | neighboursOf(label))) == 0;
                        ASSERT_EQ((array[i / 8] >> i % 8 & 1) != 0, missing) << label << ", " << first << " + " << i;
                    }
                }
            }
        }
    }
}

}  // namespace
}  // namespace line2Dup
