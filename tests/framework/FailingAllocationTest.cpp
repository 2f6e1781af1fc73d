// Constructors whose memory runs out leave nothing behind. This program replaces the global allocation functions, so
// that it can refuse any one allocation and count what is still held.

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <new>

#include "framework/AlgorithmFactory.h"

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

void* operator new(std::size_t size) {
    void* const memory = Allocate(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept { return Allocate(size); }
void operator delete(void* memory) noexcept { Free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { Free(memory); }

namespace Quorvane {
namespace {

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
}  // namespace Quorvane
