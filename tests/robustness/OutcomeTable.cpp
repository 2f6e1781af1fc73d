#include "tests/robustness/OutcomeTable.h"

#include <exception>
#include <iostream>
#include <new>
#include <opencv2/core.hpp>
#include <sstream>
#include <stdexcept>

namespace Quorvane::Robustness {

namespace {

/// Prints the table behind the last test.
class PrintedAtTheEnd : public testing::Environment {
public:
    void TearDown() override {
        const OutcomeTable& table = OutcomeTable::Instance();
        if (table.Cells() > 0) std::cout << table.Text();
    }
};

const testing::Environment* const printed = testing::AddGlobalTestEnvironment(new PrintedAtTheEnd);

}  // namespace

OutcomeTable& OutcomeTable::Instance() {
    static OutcomeTable table;
    return table;
}

void OutcomeTable::Count(const std::string& operation, const std::string& input, const std::string& outcome,
                         const std::string& told) {
    ++rows_[operation][outcome];
    ++cells_;
    EXPECT_EQ(outcome, told) << operation << " on " << input;
}

std::string OutcomeTable::Text() const {
    std::ostringstream text;
    text << "Cells of the matrix and their outcomes\n";
    for (const auto& [operation, outcomes] : rows_) {
        text << "  " << operation << ":";
        const char* separator = " ";
        for (const auto& [outcome, count] : outcomes) {
            text << separator << count << " x " << outcome;
            separator = ", ";
        }
        text << "\n";
    }
    text << "  " << rows_.size() << " operations, " << cells_ << " cells\n";
    return text.str();
}

std::string NameOfCurrentException() {
    try {
        throw;
    } catch (const cv::Exception&) {
        return "cv::Exception";
    } catch (const std::bad_alloc&) {
        return "std::bad_alloc";
    } catch (const std::invalid_argument&) {
        return "std::invalid_argument";
    } catch (const std::out_of_range&) {
        return "std::out_of_range";
    } catch (const std::length_error&) {
        return "std::length_error";
    } catch (const std::runtime_error&) {
        return "std::runtime_error";
    } catch (...) {
        return "an unknown exception";
    }
}

}  // namespace Quorvane::Robustness
