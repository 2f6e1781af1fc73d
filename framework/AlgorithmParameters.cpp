#include "framework/AlgorithmParameters.h"

namespace Quorvane {

AlgorithmParameters::AlgorithmParameters() : table_(new std::unordered_map<std::string, Param>) {}

AlgorithmParameters::~AlgorithmParameters() {
    delete table_;
    table_ = nullptr;
}

// Shares the table on purpose (see the header); the table held before is not freed.
AlgorithmParameters& AlgorithmParameters::operator=(const AlgorithmParameters& other) = default;

void AlgorithmParameters::SetParameter(const std::string& name, int value) { SetParameter(name, Param(value)); }
void AlgorithmParameters::SetParameter(const std::string& name, float value) { SetParameter(name, Param(value)); }
void AlgorithmParameters::SetParameter(const std::string& name, double value) { SetParameter(name, Param(value)); }
void AlgorithmParameters::SetParameter(const std::string& name, std::string value) { SetParameter(name, Param(value)); }

void AlgorithmParameters::SetParameter(const std::string& name, std::vector<int> value) {
    SetParameter(name, Param(value));
}

void AlgorithmParameters::SetParameter(const std::string& name, std::vector<float> value) {
    SetParameter(name, Param(value));
}

void AlgorithmParameters::SetParameter(const std::string& name, std::vector<double> value) {
    SetParameter(name, Param(value));
}

void AlgorithmParameters::SetParameter(const std::string& name, std::vector<std::string> value) {
    SetParameter(name, Param(value));
}

void AlgorithmParameters::SetParameter(const std::string& name, Param value) {
    if (table_ == nullptr) return;
    // Whole or not at all, also where memory runs out.
    table_->insert_or_assign(name, value);
}

Param AlgorithmParameters::GetParameter(const std::string& name) const {
    const auto entry = table_->find(name);
    return entry == table_->end() ? Param() : entry->second;
}

void AlgorithmParameters::GetParamsNameList(std::vector<std::string>& names) const {
    names.clear();
    for (const auto& entry : *table_) names.push_back(entry.first);
}

}  // namespace Quorvane
