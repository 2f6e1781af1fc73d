// Memory that runs out in the middle of an operation: the exception reaches the host, nothing is left behind, and what
// was not to change has not changed. This program replaces the global allocation functions, so that it can refuse any
// one allocation and count what is still held. OpenCV's pictures are not allocated by these, its lists are.

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <limits>
#include <new>
#include <opencv2/core.hpp>

#include "QuorvaneExport.h"
#include "calibration/CameraCalibrator.h"
#include "framework/AlgorithmFactory.h"
#include "framework/AlgorithmParameters.h"
#include "framework/AlgorithmResult.h"
#include "framework/Param.h"
#include "geometry/UtilityFunctions.h"

namespace {

constexpr long never = std::numeric_limits<long>::max();

/// Allocations that still succeed.
long allocationsLeft = never;
/// Allocations that are not freed yet.
long allocationsHeld = 0;

void* Allocate(std::size_t size) noexcept {
    if (allocationsLeft <= 0) return nullptr;
    void* const memory = std::malloc(size > 0 ? size : 1);
    if (memory == nullptr) return nullptr;
    if (allocationsLeft != never) --allocationsLeft;
    ++allocationsHeld;
    return memory;
}

void Free(void* memory) noexcept {
    if (memory != nullptr) --allocationsHeld;
    std::free(memory);
}

}  // namespace

#if defined(__SANITIZE_ADDRESS__)
// OpenCV takes the memory of a picture's pixels first, and loses it where that of its description is refused.
extern "C" QUORVANE_EXPORT const char* __lsan_default_suppressions() { return "leak:cv::fastMalloc\n"; }
#endif

// None of these is to be inlined: tools that watch allocations would see one half of a pair.
[[gnu::noinline]] void* operator new(std::size_t size) {
    void* const memory = Allocate(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return Allocate(size);
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { Free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t /*size*/) noexcept { Free(memory); }

namespace Quorvane::Robustness {
namespace {

/// Runs `action` with no allocation allowed, then with one, and so on until it succeeds. After each failure as many
/// allocations are held as before, and `unchanged` holds. Returns the number of failures.
int FailAtEachAllocation(const std::function<void()>& action, const std::function<bool()>& unchanged) {
    for (int allowed = 0;; ++allowed) {
        const long heldBefore = allocationsHeld;
        bool failed = false;
        allocationsLeft = allowed;
        try {
            action();
        } catch (const std::bad_alloc&) {
            failed = true;
        }
        allocationsLeft = never;
        if (!failed) return allowed;
        EXPECT_EQ(allocationsHeld, heldBefore) << "with " << allowed << " allocations allowed";
        EXPECT_TRUE(unchanged()) << "with " << allowed << " allocations allowed";
    }
}

const std::string longName(100, 'n');
const std::string longText(200, 't');

TEST(AllocationFailure, InAFactoryLeavesNothingBehind) {
    const int failures = FailAtEachAllocation([] { AlgorithmFactory factory; }, [] { return true; });
    EXPECT_GT(failures, 2);
}

TEST(AllocationFailure, InTheListOfAlgorithmsLeavesNothingBehind) {
    AlgorithmFactory factory;
    FailAtEachAllocation([&] { factory.GetAlgorithmList(); }, [] { return true; });
    EXPECT_EQ(factory.GetAlgorithmList().size(), 3u);
}

TEST(AllocationFailure, InCopiesOfAFactoryLeavesNothingBehind) {
    const AlgorithmFactory factory;
    EXPECT_GT(FailAtEachAllocation([&] { const AlgorithmFactory copy(factory); }, [] { return true; }), 0);
}

TEST(AllocationFailure, InAParamLeavesNothingBehind) {
    const std::vector<std::string> texts{longText, longText, longText};
    const int failures = FailAtEachAllocation([&] { const Param param(texts); }, [] { return true; });
    EXPECT_GE(failures, 4);
    const Param filled(texts);
    EXPECT_GE(FailAtEachAllocation([&] { const Param copy(filled); }, [] { return true; }), 4);
}

TEST(AllocationFailure, InSettingAParamKeepsItsKind) {
    Param param(7);
    const std::vector<std::string> texts{longText, longText};
    FailAtEachAllocation([&] { param.Set(longText); }, [&] { return param.ToInt() == 7 && param.ToString() == "7"; });
    EXPECT_EQ(param.ToString(), longText);
    FailAtEachAllocation([&] { param.Set(texts); }, [&] { return param.ToString() == longText; });
    EXPECT_EQ(param.ArraySize(), 2u);
}

TEST(AllocationFailure, InAConversionLeavesTheParamAlone) {
    const Param param(std::vector<std::string>{"1", "2", "3"});
    const auto unchanged = [&] { return param.ArraySize() == 3 && param.ToInt() == 1; };
    EXPECT_GT(FailAtEachAllocation([&] { param.ToDoubleVec(); }, unchanged), 0);
    EXPECT_GT(FailAtEachAllocation([&] { param.ToStringVec(); }, unchanged), 0);
}

TEST(AllocationFailure, InAParameterTableLosesNoOtherEntry) {
    AlgorithmParameters parameters;
    parameters.SetParameter("Kept", 5);
    const auto names = [&] {
        std::vector<std::string> list;
        parameters.GetParamsNameList(list);
        return list.size();
    };
    EXPECT_GT(FailAtEachAllocation([&] { parameters.SetParameter(longName, longText); },
                                   [&] { return names() == 1 && parameters.GetParameter("Kept").ToInt() == 5; }),
              2);
    EXPECT_EQ(parameters.GetParameter(longName).ToString(), longText);
    EXPECT_GT(FailAtEachAllocation([&] { parameters.SetParameter(longName, std::vector<double>(50, 1.0)); },
                                   [&] { return parameters.GetParameter(longName).ToString() == longText; }),
              1);
    EXPECT_EQ(parameters.GetParameter(longName).ArraySize(), 50u);
}

TEST(AllocationFailure, InAResultTableLosesNoOtherEntry) {
    AlgorithmResult results;
    results.SetResult("Kept", "5");
    const auto unchanged = [&] { return results.GetResultValues("Kept") == std::vector<std::string>{"5"}; };
    const std::vector<std::string> list{longText, longText, longText};
    EXPECT_GT(FailAtEachAllocation([&] { results.SetResult(longName, list); },
                                   [&] { return unchanged() && results.GetResultValues(longName).empty(); }),
              3);
    EXPECT_EQ(results.GetResultValues(longName), list);
    const std::vector<std::string> longer(9, longText);
    EXPECT_GT(FailAtEachAllocation([&] { results.SetResult(longName, longer); },
                                   [&] { return results.GetResultValues(longName) == list; }),
              3);
    FailAtEachAllocation([&] { results.GetResultValues(longName); }, unchanged);
}

TEST(AllocationFailure, InContoursLeavesTheInputAlone) {
    std::vector<cv::Point2f> points;
    for (int i = 0; i < 40; ++i) points.emplace_back(static_cast<float>(i * 7 % 40), static_cast<float>(i % 9));
    const std::vector<cv::Point2f> before = points;
    UtilityFunctions::GetMinAreaRectAtAngle(points, 20.0f);  // what OpenCV keeps for good
    const auto unchanged = [&] { return points == before; };
    EXPECT_GT(FailAtEachAllocation([&] { UtilityFunctions::SortContour(points); }, unchanged), 0);
    EXPECT_GT(FailAtEachAllocation([&] { UtilityFunctions::GetMinAreaRectAtAngle(points, 20.0f); }, unchanged), 0);
}

TEST(AllocationFailure, InACopyOfACurveLeavesNothingBehind) {
    Curve source;
    source.measuredPoints.assign(50, {1.0f, 2.0f});
    source.curvePoints.assign(60, {3.0f, 4.0f});
    const auto unchanged = [&] { return source.curvePoints.size() == 60 && source.measuredPoints.size() == 50; };
    EXPECT_GE(FailAtEachAllocation([&] { const Curve copy(source); }, unchanged), 2);
    const auto assign = [&] {
        Curve target;
        target = source;
    };
    EXPECT_GE(FailAtEachAllocation(assign, unchanged), 2);
}

TEST(AllocationFailure, InAGridOfPositionsLeavesNothingBehind) {
    CameraCalibration::CameraCalibrator calibrator;
    EXPECT_EQ(FailAtEachAllocation([&] { calibrator.GenerateCailbratePointGrid(10.0, 10.0, 9); },
                                   [&] { return !calibrator.IsCalibrateVaild(); }),
              1);
}

class AllocationFailureInAlgorithm : public testing::TestWithParam<const char*> {};

TEST_P(AllocationFailureInAlgorithm, LeavesTheSourceAndTheParametersAlone) {
    AlgorithmFactory factory;
    Algorithm* const algorithm = factory.CreateAlgorithm(GetParam());
    algorithm->SetParameter("MaskSize", 5);
    algorithm->SetParameter("TargetShapePoints_X", std::vector<double>{1.0, 2.0, 3.0});
    algorithm->SetParameter("TargetShapePoints_Y", std::vector<double>{1.0, 2.0, 3.0});
    const cv::Mat source(24, 32, CV_8UC3, cv::Scalar(50, 100, 150));
    const cv::Mat before = source.clone();
    cv::Mat destination;
    // What OpenCV keeps for good is taken by a first run. Its pool of threads stays locked for ever where memory runs
    // out in it, so it is not used here.
    const int threads = cv::getNumThreads();
    cv::setNumThreads(1);
    algorithm->Execute(source, destination);
    for (int allowed = 0; allowed < 400; ++allowed) {
        bool failed = false;
        allocationsLeft = allowed;
        try {
            algorithm->Execute(source, destination);
        } catch (const std::bad_alloc&) {
            failed = true;
        } catch (const cv::Exception&) {
            failed = true;
        }
        allocationsLeft = never;
        ASSERT_EQ(cv::norm(source, before, cv::NORM_INF), 0.0);
        ASSERT_EQ(algorithm->GetParameterToInt("MaskSize"), 5);
        ASSERT_EQ(algorithm->GetParameterToIntVec("TargetShapePoints_X"), (std::vector<int>{1, 2, 3}));
        if (!failed) break;
    }
    // It still works.
    const int status = algorithm->Execute(source, destination);
    EXPECT_TRUE(status == 0 || status == 3) << status;
    factory.ReleaseAlgorithm(algorithm);
    cv::setNumThreads(threads);
}

INSTANTIATE_TEST_SUITE_P(Each, AllocationFailureInAlgorithm,
                         testing::Values("BinaryForLaserMachine", "IntelligentFilling", "FindMarkPoint"));

class FailingAllocation : public testing::TestWithParam<const char*> {};

TEST_P(FailingAllocation, InAConstructorLeavesNothingBehind) {
    AlgorithmFactory factory;
    const std::string name = GetParam();
    const long heldBefore = allocationsHeld;
    int failures = 0;
    for (long allowed = 0;; ++allowed) {
        Algorithm* algorithm = nullptr;
        allocationsLeft = allowed;
        bool failed = false;
        try {
            algorithm = factory.CreateAlgorithm(name);
        } catch (const std::bad_alloc&) {
            failed = true;
        }
        allocationsLeft = never;
        if (!failed) {
            ASSERT_NE(algorithm, nullptr);
            factory.ReleaseAlgorithm(algorithm);
        }
        ASSERT_EQ(allocationsHeld, heldBefore) << "with " << allowed << " allocations allowed";
        if (!failed) break;
        ++failures;
    }
    EXPECT_GT(failures, 4) << "the object, its two tables and their handles";
}

INSTANTIATE_TEST_SUITE_P(EachAlgorithm, FailingAllocation,
                         testing::Values("BinaryForLaserMachine", "IntelligentFilling", "FindMarkPoint"));

}  // namespace
}  // namespace Quorvane::Robustness
