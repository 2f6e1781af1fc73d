// What the measurements do when memory runs out while a caliper is measured. This program replaces the global
// allocation functions, so that it can refuse what is too large.

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <new>
#include <opencv2/core.hpp>
#include <string>

#include "geometry/UtilityFunctions.h"

namespace {

constexpr std::size_t unlimited = std::numeric_limits<std::size_t>::max();

/// Allocations of more bytes than this fail.
std::size_t mostBytes = unlimited;

/// Room for the lists of a few calipers, but not for a profile of hundreds of samples.
constexpr std::size_t littleMemory = 1024;

class LittleMemory {
public:
    LittleMemory() { mostBytes = littleMemory; }
    ~LittleMemory() { mostBytes = unlimited; }
    LittleMemory(const LittleMemory&) = delete;
    LittleMemory& operator=(const LittleMemory&) = delete;
};

}  // namespace

// None of these is inlined: a compiler that sees only the free() of a pair warns of memory that new made.
[[gnu::noinline]] void* operator new(std::size_t size) {
    void* const memory = size <= mostBytes ? std::malloc(size > 0 ? size : 1) : nullptr;
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return size <= mostBytes ? std::malloc(size > 0 ? size : 1) : nullptr;
}

[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }

namespace Quorvane {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

namespace {

/// Dark on the left, light on the right; a caliper across it has 400 samples.
cv::Mat WidePicture() {
    cv::Mat image(60, 400, CV_8UC1, cv::Scalar(20));
    image.colRange(200, 400).setTo(200);
    return image;
}

TEST(OutOfMemory, CostsALineItsCalipersAndSaysWhich) {
    const cv::Mat image = WidePicture();
    Line line(1.0f, 1.0f);
    CaptureStderr();
    {
        const LittleMemory little;
        UtilityFunctions::MeasureLine(image, {200, 30}, 390.0, 30.0, line, EdgePolarity::Positive,
                                      SearchDirection::LeftToRight, 1.0, 30.0, 10.0);
    }
    EXPECT_EQ(GetCapturedStderr(),
              "Edge detection failed at position 0: std::bad_alloc\n"
              "Edge detection failed at position 1: std::bad_alloc\n"
              "Edge detection failed at position 2: std::bad_alloc\n");
    EXPECT_EQ(line.toVec4f(), Line().toVec4f());
    EXPECT_EQ(line.b, -1.0f);
}

TEST(OutOfMemory, CostsCalipersOutsideTheImageWhereTheFilterTakesTooMuch) {
    constexpr double wide = 100.0;
    const cv::Mat image = WidePicture();
    Line line(1.0f, 1.0f);
    CaptureStderr();
    {
        const LittleMemory little;
        UtilityFunctions::MeasureLine(image, {200, 30}, 390.0, 130.0, line, EdgePolarity::Positive,
                                      SearchDirection::LeftToRight, wide, 30.0, 10.0);
    }
    std::string expected;
    for (int k = 0; k < 13; ++k) {
        expected += "Edge detection failed at position " + std::to_string(k) + ": std::bad_alloc\n";
    }
    EXPECT_EQ(GetCapturedStderr(), expected);
    EXPECT_EQ(line.toVec4f(), Line().toVec4f());
}

TEST(OutOfMemory, CostsACurveItsCalipersAndSaysWhich) {
    const cv::Mat image = WidePicture();
    Curve curve;
    curve.meanFitError = 5.0;
    curve.curvePoints = {{1, 1}};
    CaptureStderr();
    {
        const LittleMemory little;
        UtilityFunctions::MeasureCurve(image, {200, 30}, 390.0, 20.0, curve, EdgePolarity::Positive,
                                       SearchDirection::RightToLeft, 1.0, 30.0, 10.0, 0);
    }
    EXPECT_EQ(GetCapturedStderr(),
              "Edge detection failed at position 0: std::bad_alloc\n"
              "Edge detection failed at position 1: std::bad_alloc\n");
    EXPECT_TRUE(curve.measuredPoints.empty());
    EXPECT_TRUE(curve.curvePoints.empty());
    EXPECT_EQ(curve.meanFitError, 5.0);
}

TEST(OutOfMemory, CostsACircleItsCalipersAndSaysAtWhichAngle) {
    const cv::Mat image = WidePicture();
    cv::Point2f center(1, 2);
    double radius = 3.0;
    double score = 4.0;
    CaptureStderr();
    {
        // The calipers at 0 and 180 degrees see all of the picture, the others a part that small memory holds.
        const LittleMemory little;
        UtilityFunctions::MeasureCircle(image, {200, 30}, 190.0, center, radius, score, EdgePolarity::All,
                                        SearchDirection::Outward, 1.0, 30.0, 90.0);
    }
    EXPECT_EQ(GetCapturedStderr(),
              "Edge detection failed at angle 0: std::bad_alloc\n"
              "Edge detection failed at angle 180: std::bad_alloc\n");
    EXPECT_EQ(center, cv::Point2f(1, 2));
    EXPECT_EQ(radius, 3.0);
    EXPECT_EQ(score, 4.0);
}

TEST(OutOfMemory, LeavesTheNextMeasurementAlone) {
    Line line;
    UtilityFunctions::MeasureLine(WidePicture(), {200, 30}, 390.0, 30.0, line, EdgePolarity::Positive,
                                  SearchDirection::LeftToRight, 1.0, 30.0, 10.0);
    EXPECT_NEAR(line.intercept, 199.5, 1e-4);
}

}  // namespace
}  // namespace Quorvane
