#pragma once

#include <functional>
#include <string>
#include <vector>

namespace Quorvane::Robustness {

/// An operation with one of its numbers left open.
template <typename Number>
struct NumberOperation {
    const char* name;
    std::function<std::string(Number)> tried;
    std::function<std::string(Number)> told;
};

/// Tries each operation with everyday numbers and with what hosts hand in by mistake: zeros, negative, tiny and
/// enormous numbers, what is no number, and the ends of the integers.
void TryWithAllNumbers(const std::vector<NumberOperation<double>>& operations);
void TryWithAllIntegers(const std::vector<NumberOperation<int>>& operations);

/// 0, 1, -1, 0.5, 3, and what is nearly zero.
bool IsEveryday(double number);

}  // namespace Quorvane::Robustness
