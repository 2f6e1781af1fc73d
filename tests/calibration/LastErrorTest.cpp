#include "calibration/LastError.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "calibration/CameraCalibration.h"

namespace Quorvane::CameraCalibration {
namespace {

TEST(LastError, KeepsTheLatestTextAndReturnsACopy) {
    SetLastError("first");
    const std::string copy = GetLastError();
    SetLastError("second");
    EXPECT_EQ(copy, "first");
    EXPECT_EQ(GetLastError(), "second");
}

TEST(ReportingExceptions, LeavesTheTextAloneWhenNothingIsThrown) {
    SetLastError("left from before");
    EXPECT_EQ(ReportingExceptions(
                  "Anything", [] { return 7; }, [] { return -1; }),
              7);
    EXPECT_EQ(GetLastError(), "left from before");
}

TEST(ReportingExceptions, PutsTheFunctionsFullNameInBracketsBeforeTheLibrarysText) {
    std::string text;
    const auto body = [&]() -> int {
        const cv::Exception exception(cv::Error::StsBadArg, "no such thing", "Anything", "file.cpp", 12);
        text = exception.what();
        throw exception;
    };
    EXPECT_EQ(ReportingExceptions("Anything", body, [] { return -1; }), -1);
    EXPECT_EQ(GetLastError(), "[Quorvane::CameraCalibration::Anything]" + text);
}

TEST(ReportingExceptions, GivesFalseForAFunctionThatOnlyFails) {
    const auto body = []() -> bool { throw cv::Exception(); };
    EXPECT_FALSE(ReportingExceptions("Anything", body));
}

TEST(ReportingExceptions, LetsOtherExceptionsPass) {
    SetLastError("left from before");
    const auto body = []() -> bool { throw std::runtime_error("not the library's"); };
    EXPECT_THROW(ReportingExceptions("Anything", body), std::runtime_error);
    EXPECT_EQ(GetLastError(), "left from before");
}

}  // namespace
}  // namespace Quorvane::CameraCalibration
