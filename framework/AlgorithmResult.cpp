#include "framework/AlgorithmResult.h"

#include <utility>

namespace Quorvane {

AlgorithmResult::AlgorithmResult() : table_(new std::unordered_map<std::string, std::vector<std::string>>) {}

AlgorithmResult::~AlgorithmResult() {
    if (table_ != nullptr) ClearResult();
    delete table_;
    table_ = nullptr;
}

// Shares the table on purpose (see the header); the table held before is not freed.
AlgorithmResult& AlgorithmResult::operator=(const AlgorithmResult& other) = default;

void AlgorithmResult::SetResult(const std::string& name, const std::string& value) {
    SetResult(name, std::vector<std::string>{value});
}

void AlgorithmResult::SetResult(const std::string& name, const std::vector<std::string>& values) {
    // Whole or not at all, also where memory runs out.
    std::vector<std::string> copy = values;
    table_->insert_or_assign(name, std::move(copy));
}

void AlgorithmResult::ClearResult(const std::string& name) {
    const auto entry = table_->find(name);
    if (entry != table_->end()) entry->second.clear();
}

void AlgorithmResult::ClearResult() {
    for (auto& entry : *table_) entry.second.clear();
}

std::size_t AlgorithmResult::GetResultCount(const std::string& name) const {
    const auto entry = table_->find(name);
    return entry == table_->end() ? 0 : entry->second.size();
}

void AlgorithmResult::GetResultNameList(std::vector<std::string>& names) const {
    names.clear();
    for (const auto& entry : *table_) names.push_back(entry.first);
}

std::vector<std::string> AlgorithmResult::GetResultValues(const std::string& name) const {
    const auto entry = table_->find(name);
    return entry == table_->end() ? std::vector<std::string>{} : entry->second;
}

}  // namespace Quorvane
