#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "QuorvaneExport.h"
#include "framework/Param.h"

namespace Quorvane {

/// Table from parameter name to `Param`. Names are not checked against anything and have no fixed type: whatever is
/// set under a name replaces what stood there, its kind included.
///
/// Assignment (and copy construction) copies the handle, not the table: both objects then share one table, and
/// nothing counts the sharers, so the first destructor frees it under the other object. This is the exported
/// behaviour and is kept; the library itself never copies or assigns these objects.
class QUORVANE_EXPORT AlgorithmParameters {
public:
    /// An empty table.
    AlgorithmParameters();
    /// Frees the table, whoever shares it.
    ~AlgorithmParameters();
    ///@{
    /// Shares the table of `other`, as told above.
    AlgorithmParameters(const AlgorithmParameters& other) = default;
    AlgorithmParameters& operator=(const AlgorithmParameters& other);
    ///@}

    ///@{
    /// Store a value under `name`, creating the entry if there is none.
    void SetParameter(const std::string& name, int value);
    void SetParameter(const std::string& name, float value);
    void SetParameter(const std::string& name, double value);
    void SetParameter(const std::string& name, std::string value);
    void SetParameter(const std::string& name, std::vector<int> value);
    void SetParameter(const std::string& name, std::vector<float> value);
    void SetParameter(const std::string& name, std::vector<double> value);
    void SetParameter(const std::string& name, std::vector<std::string> value);
    void SetParameter(const std::string& name, Param value);
    ///@}

    /// A copy of the entry. An unknown name gives an unset `Param` and adds nothing to the table.
    Param GetParameter(const std::string& name) const;

    /// Replaces `names` by every name in the table, in no particular order.
    void GetParamsNameList(std::vector<std::string>& names) const;

private:
    std::unordered_map<std::string, Param>* table_;
};

}  // namespace Quorvane
