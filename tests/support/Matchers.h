#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <opencv2/core.hpp>
#include <string>

namespace Quorvane::TestSupport {

/// Same size, same type, and the same bits in every element. Names the first pixel that differs.
inline testing::AssertionResult MatsAreEqual(const cv::Mat& actual, const cv::Mat& expected) {
    if (actual.size() != expected.size() || actual.type() != expected.type()) {
        return testing::AssertionFailure()
               << "is " << actual.size() << " of " << cv::typeToString(actual.type()) << ", expected "
               << expected.size() << " of " << cv::typeToString(expected.type());
    }
    const std::size_t pixelSize = expected.elemSize();
    for (int r = 0; r < expected.rows; ++r) {
        for (int c = 0; c < expected.cols; ++c) {
            const uchar* a = actual.ptr(r) + static_cast<std::size_t>(c) * pixelSize;
            const uchar* e = expected.ptr(r) + static_cast<std::size_t>(c) * pixelSize;
            if (std::memcmp(a, e, pixelSize) != 0) {
                const cv::Rect pixel(c, r, 1, 1);
                return testing::AssertionFailure() << "differs first at column " << c << ", row " << r << ": "
                                                   << actual(pixel) << ", expected " << expected(pixel);
            }
        }
    }
    return testing::AssertionSuccess();
}

MATCHER_P(EqualsMat, expected, "equals the other image to the bit") {
    const testing::AssertionResult result = MatsAreEqual(arg, expected);
    *result_listener << result.message();
    return static_cast<bool>(result);
}

/// A point within `tolerance` of `expected`, by Euclidean distance.
MATCHER_P2(NearPoint, expected, tolerance, "is within " + testing::PrintToString(tolerance) + " of the point") {
    const double distance = std::hypot(static_cast<double>(arg.x) - static_cast<double>(expected.x),
                                       static_cast<double>(arg.y) - static_cast<double>(expected.y));
    *result_listener << "at (" << arg.x << ", " << arg.y << "), which is " << distance << " away";
    return distance <= tolerance;
}

/// Runs `action` and expects an exception of type `Exception` whose text is exactly `text`.
template <typename Exception, typename Action>
void ExpectThrowWithText(Action action, const std::string& text) {
    try {
        action();
        ADD_FAILURE() << "nothing was thrown, expected: " << text;
    } catch (const Exception& exception) {
        EXPECT_EQ(exception.what(), text);
    }
}

}  // namespace Quorvane::TestSupport
