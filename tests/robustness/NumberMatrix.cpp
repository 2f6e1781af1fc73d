#include "tests/robustness/NumberMatrix.h"

#include <cmath>
#include <iostream>
#include <limits>

#include "QuorvaneExport.h"
#include "tests/robustness/OutcomeTable.h"
#include "tests/support/CapturedStream.h"

#if defined(__SANITIZE_ADDRESS__)
// Memory beyond all measure is refused, as it is without the sanitizer.
extern "C" QUORVANE_EXPORT const char* __asan_default_options() { return "allocator_may_return_null=1"; }
#endif

namespace Quorvane::Robustness {

namespace {

template <typename Number>
void TryWithAll(const std::vector<Number>& numbers, const std::vector<NumberOperation<Number>>& operations) {
    for (const NumberOperation<Number>& operation : operations) {
        for (const Number number : numbers) {
            std::string outcome;
            {
                const TestSupport::CapturedStream console(std::cout);
                const TestSupport::CapturedStream errors(std::cerr);
                outcome = OutcomeOf([&] { return operation.tried(number); });
            }
            OutcomeTable::Instance().Count(operation.name, std::to_string(number), outcome, operation.told(number));
        }
    }
}

}  // namespace

void TryWithAllNumbers(const std::vector<NumberOperation<double>>& operations) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    TryWithAll({0.0, -0.0, 1.0, -1.0, 0.5, 3.0, 1e-300, 1e10, -1e10, 1e30, 1e300, -1e300, 2147483648.0, -2147483649.0,
                4294967296.0, std::numeric_limits<double>::quiet_NaN(), infinity, -infinity},
               operations);
}

void TryWithAllIntegers(const std::vector<NumberOperation<int>>& operations) {
    constexpr int greatest = std::numeric_limits<int>::max();
    constexpr int least = std::numeric_limits<int>::min();
    TryWithAll({0, 1, -1, 2, 7, -8, greatest, greatest - 1, least, least + 1}, operations);
}

bool IsEveryday(double number) { return std::abs(number) <= 3.0; }

}  // namespace Quorvane::Robustness
