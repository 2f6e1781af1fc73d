#include "examples/demo/AlgorithmRun.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <stdexcept>

namespace Demo {

namespace {

std::string Joined(const std::vector<std::string>& texts) {
    std::string joined;
    for (const std::string& text : texts) joined += (joined.empty() ? "" : ", ") + text;
    return joined;
}

std::vector<Row> ParametersOf(const Quorvane::Algorithm& algorithm) {
    std::vector<std::string> names;
    algorithm.GetParameterNameList(names);
    std::sort(names.begin(), names.end());
    std::vector<Row> rows;
    for (const std::string& name : names) rows.emplace_back(name, algorithm.GetParameterToString(name));
    return rows;
}

std::vector<Row> ResultsOf(Quorvane::Algorithm& algorithm) {
    std::vector<std::string> names;
    algorithm.GetResultNameList(names);
    std::sort(names.begin(), names.end());
    std::vector<Row> rows;
    for (const std::string& name : names) {
        if (name != "AlgorithmErrorMsg") rows.emplace_back(name, Joined(algorithm.GetResultValues(name)));
    }
    return rows;
}

}  // namespace

std::vector<Row> AlgorithmRun::Outcome() const {
    return {{"status", std::to_string(status)}, {"error message", errorMessage}, {"time", Milliseconds(milliseconds)}};
}

std::string AlgorithmRun::Result(const std::string& name) const {
    const auto row = std::find_if(results.begin(), results.end(), [&](const Row& r) { return r.first == name; });
    return row == results.end() ? std::string() : row->second;
}

AlgorithmRun RunAlgorithm(const std::string& name, const cv::Mat& picture,
                          const std::function<void(Quorvane::Algorithm&)>& configure) {
    Quorvane::AlgorithmFactory factory;
    const auto release = [&](Quorvane::Algorithm* made) { factory.ReleaseAlgorithm(made); };
    const std::unique_ptr<Quorvane::Algorithm, decltype(release)> algorithm(factory.CreateAlgorithm(name), release);
    if (!algorithm) throw std::runtime_error("the library has no algorithm named " + name);

    if (configure) configure(*algorithm);
    AlgorithmRun run;
    run.parameters = ParametersOf(*algorithm);
    run.milliseconds = MillisecondsOf([&] { run.status = algorithm->Execute(picture, run.destination); });
    algorithm->GetErrorMsg(run.errorMessage);
    run.results = ResultsOf(*algorithm);
    return run;
}

double MillisecondsOf(const std::function<void()>& action) {
    const auto start = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace Demo
