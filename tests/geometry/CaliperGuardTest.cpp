#include "geometry/CaliperGuard.h"

#include <gtest/gtest.h>

#include <new>
#include <opencv2/core.hpp>
#include <stdexcept>

namespace Quorvane {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;
using UtilityFunctions::GuardCaliper;

namespace {

TEST(GuardCaliper, WritesTheFailureOfACaliperAndGoesOn) {
    CaptureStderr();
    GuardCaliper("position", 17, [] { throw std::runtime_error("no more memory"); });
    GuardCaliper("angle", 3 * 0.2, [] { throw std::bad_alloc(); });
    EXPECT_EQ(GetCapturedStderr(),
              "Edge detection failed at position 17: no more memory\n"
              "Edge detection failed at angle 0.6: std::bad_alloc\n");
}

TEST(GuardCaliper, SaysNothingWhenAllIsWell) {
    CaptureStderr();
    bool measured = false;
    GuardCaliper("position", 0, [&] { measured = true; });
    EXPECT_TRUE(measured);
    EXPECT_EQ(GetCapturedStderr(), "");
}

TEST(GuardCaliper, LetsPassWhatIsNoException) {
    EXPECT_THROW(GuardCaliper("position", 0, [] { throw 1; }), int);
}

}  // namespace
}  // namespace Quorvane
