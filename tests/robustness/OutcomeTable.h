#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace Quorvane::Robustness {

/// Counts how the cells of the matrix came out: one row per operation, one column per outcome. Every cell is compared
/// with what was told for it before it is counted, and the whole is printed when the program ends.
class OutcomeTable {
public:
    static OutcomeTable& Instance();

    /// Records a cell and fails the running test where the outcome is not the told one.
    void Count(const std::string& operation, const std::string& input, const std::string& outcome,
               const std::string& told);

    /// The table as text.
    std::string Text() const;
    long Cells() const { return cells_; }

private:
    std::map<std::string, std::map<std::string, long>> rows_;
    long cells_ = 0;
};

/// Runs `action`, which returns a short text for what it gave back, and turns an exception into the name of its type.
template <typename Action>
std::string OutcomeOf(const Action& action);

/// The name of the exception that is being handled: "cv::Exception", "std::out_of_range" and so on.
std::string NameOfCurrentException();

template <typename Action>
std::string OutcomeOf(const Action& action) {
    try {
        return action();
    } catch (...) {
        return NameOfCurrentException();
    }
}

}  // namespace Quorvane::Robustness
