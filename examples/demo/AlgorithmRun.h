#pragma once

#include <QuorvaneVision.h>

#include <functional>
#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

#include "examples/demo/Report.h"

namespace Demo {

/// One run of a named algorithm, and everything that a host can read afterwards.
struct AlgorithmRun {
    int status = 0;
    std::string errorMessage;
    double milliseconds = 0.0;
    cv::Mat destination;
    std::vector<Row> parameters;  ///< By name, sorted, as text.
    std::vector<Row> results;     ///< By name, sorted, as text; the error message is left out.

    /// Status, message and time, for a table.
    std::vector<Row> Outcome() const;
    /// The texts of one result, separated by ", "; empty if there is none.
    std::string Result(const std::string& name) const;
};

/// Makes the algorithm of this name, lets `configure` set its parameters, runs it on the picture and releases it.
/// Throws `std::runtime_error` for a name that the factory does not know.
AlgorithmRun RunAlgorithm(const std::string& name, const cv::Mat& picture,
                          const std::function<void(Quorvane::Algorithm&)>& configure = {});

/// The time that an action takes, in milliseconds.
double MillisecondsOf(const std::function<void()>& action);

}  // namespace Demo
