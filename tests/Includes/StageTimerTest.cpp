#include "Includes/StageTimer.h"

#include <gmock/gmock.h>

namespace line2Dup {
namespace {

TEST(StageTimer, PrintsTitleSecondsAndAnEmptyLine) {
    StageTimer timer;
    testing::internal::CaptureStdout();
    timer.elapsed("templ match");
    EXPECT_THAT(testing::internal::GetCapturedStdout(),
                testing::MatchesRegex("templ match\nelasped time:[0-9.e+-]+s\n\n"));
}

TEST(StageTimer, TakesAnEmptyTitle) {
    StageTimer timer;
    testing::internal::CaptureStdout();
    timer.elapsed("");
    EXPECT_THAT(testing::internal::GetCapturedStdout(), testing::MatchesRegex("\nelasped time:[0-9.e+-]+s\n\n"));
}

}  // namespace
}  // namespace line2Dup
