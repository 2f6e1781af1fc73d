#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "QuorvaneExport.h"

namespace Quorvane {

/// Table from result name to a list of texts; a single value is a list of one.
///
/// Assignment (and copy construction) copies the handle, not the table, with the same consequences as for
/// `AlgorithmParameters`.
class QUORVANE_EXPORT AlgorithmResult {
public:
    /// An empty table.
    AlgorithmResult();
    /// Frees the table, whoever shares it.
    ~AlgorithmResult();
    ///@{
    /// Shares the table of `other`, as told above.
    AlgorithmResult(const AlgorithmResult& other) = default;
    AlgorithmResult& operator=(const AlgorithmResult& other);
    ///@}

    ///@{
    /// Replace the list under `name`, creating the entry if there is none. Nothing is ever appended.
    void SetResult(const std::string& name, const std::string& value);
    void SetResult(const std::string& name, const std::vector<std::string>& values);
    ///@}

    /// Empties the list under `name`; the name stays in the table. An unknown name does nothing.
    void ClearResult(const std::string& name);

    /// Empties every list; all names stay.
    void ClearResult();

    /// The length of the list under `name`; 0 for an unknown name.
    std::size_t GetResultCount(const std::string& name) const;

    /// Replaces `names` by every name in the table, in no particular order.
    void GetResultNameList(std::vector<std::string>& names) const;

    /// A copy of the list under `name`; an empty list for an unknown name.
    std::vector<std::string> GetResultValues(const std::string& name) const;

private:
    std::unordered_map<std::string, std::vector<std::string>>* table_;
};

}  // namespace Quorvane
