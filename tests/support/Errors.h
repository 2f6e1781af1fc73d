#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

namespace Quorvane::TestSupport {

/// Collects errors, in pixels or any other unit, and tells their mean, the worst in amount and their scatter about the
/// mean.
class Errors {
public:
    void Add(double error) { values_.push_back(error); }
    void Add(const Errors& others) { values_.insert(values_.end(), others.values_.begin(), others.values_.end()); }

    std::size_t Count() const { return values_.size(); }
    double Mean() const {
        double sum = 0.0;
        for (const double value : values_) sum += value;
        return sum / static_cast<double>(values_.size());
    }
    double Worst() const {
        double worst = 0.0;
        for (const double value : values_) worst = std::max(worst, std::abs(value));
        return worst;
    }
    double Scatter() const {
        const double mean = Mean();
        double sum = 0.0;
        for (const double value : values_) sum += (value - mean) * (value - mean);
        return std::sqrt(sum / static_cast<double>(values_.size()));
    }

    /// The three as columns of a table of the documentation.
    std::string Columns() const {
        if (values_.empty()) return " none | none | none |";
        char text[96];
        std::snprintf(text, sizeof text, " %+.3f | %.3f | %.3f |", Mean(), Worst(), Scatter());
        return text;
    }

private:
    std::vector<double> values_;
};

}  // namespace Quorvane::TestSupport
