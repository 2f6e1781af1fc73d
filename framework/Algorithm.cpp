#include "framework/Algorithm.h"

#include <memory>
#include <utility>

#include "TruncateToInt.h"

namespace Quorvane {

Algorithm::Algorithm() {
    auto parameters = std::make_unique<AlgorithmParameters>();
    auto results = std::make_unique<AlgorithmResult>();
    parameters_ = parameters.release();
    results_ = results.release();
}

// Both share the tables on purpose (see the header).
Algorithm::Algorithm(const Algorithm& other) = default;
Algorithm& Algorithm::operator=(const Algorithm& other) = default;

Algorithm::~Algorithm() {
    delete parameters_;
    parameters_ = nullptr;
    delete results_;
    results_ = nullptr;
}

void Algorithm::SetParameter(const std::string& name, int value) { parameters_->SetParameter(name, value); }
void Algorithm::SetParameter(const std::string& name, float value) { parameters_->SetParameter(name, value); }
void Algorithm::SetParameter(const std::string& name, double value) { parameters_->SetParameter(name, value); }

void Algorithm::SetParameter(const std::string& name, std::string value) {
    parameters_->SetParameter(name, std::move(value));
}

void Algorithm::SetParameter(const std::string& name, std::vector<int> value) {
    parameters_->SetParameter(name, std::move(value));
}

void Algorithm::SetParameter(const std::string& name, std::vector<float> value) {
    parameters_->SetParameter(name, std::move(value));
}

void Algorithm::SetParameter(const std::string& name, std::vector<double> value) {
    parameters_->SetParameter(name, std::move(value));
}

void Algorithm::SetParameter(const std::string& name, std::vector<std::string> value) {
    parameters_->SetParameter(name, std::move(value));
}

int Algorithm::GetParameterToInt(const std::string& name) const { return parameters_->GetParameter(name).ToInt(); }

int Algorithm::GetParameterToFloat(const std::string& name) const {
    return TruncateToInt(parameters_->GetParameter(name).ToFloat());
}

int Algorithm::GetParameterToDouble(const std::string& name) const {
    return TruncateToInt(parameters_->GetParameter(name).ToDouble());
}

std::string Algorithm::GetParameterToString(const std::string& name) const {
    return parameters_->GetParameter(name).ToString();
}

std::vector<int> Algorithm::GetParameterToIntVec(const std::string& name) const {
    return parameters_->GetParameter(name).ToIntVec();
}

std::vector<float> Algorithm::GetParameterToFloatVec(const std::string& name) const {
    return parameters_->GetParameter(name).ToFloatVec();
}

std::vector<double> Algorithm::GetParameterToDoubleVec(const std::string& name) const {
    return parameters_->GetParameter(name).ToDoubleVec();
}

std::vector<std::string> Algorithm::GetParameterToStringVec(const std::string& name) const {
    return parameters_->GetParameter(name).ToStringVec();
}

void Algorithm::GetParameterNameList(std::vector<std::string>& names) const { parameters_->GetParamsNameList(names); }

void Algorithm::GetResultNameList(std::vector<std::string>& names) const { results_->GetResultNameList(names); }

std::vector<std::string> Algorithm::GetResultValues(const std::string& name) { return results_->GetResultValues(name); }

std::string Algorithm::GetResultValue(const std::string& name) {
    const std::vector<std::string> values = GetResultValues(name);
    return values.empty() ? std::string() : values.front();
}

void Algorithm::GetErrorMsg(std::string& message) { message = GetResultValue("AlgorithmErrorMsg"); }

}  // namespace Quorvane
