#pragma once

#include <string>
#include <vector>

#include "QuorvaneExport.h"
#include "framework/Algorithm.h"

namespace Quorvane {

/// Makes the named algorithms and releases them. Any factory may release what another one made, and a factory may be
/// destroyed before the algorithms that it made.
class QUORVANE_EXPORT AlgorithmFactory {
public:
    /// Knows every algorithm of the library.
    AlgorithmFactory();
    ///@{
    /// A factory like the other one; algorithms belong to none of the two.
    AlgorithmFactory(const AlgorithmFactory& other);
    AlgorithmFactory(AlgorithmFactory&& other) noexcept;
    AlgorithmFactory& operator=(const AlgorithmFactory& other);
    AlgorithmFactory& operator=(AlgorithmFactory&& other) noexcept;
    ///@}
    /// Leaves alone what the factory has made.
    ~AlgorithmFactory();

    /// A new algorithm, owned by the caller; null for a name that is not one of `GetAlgorithmList` letter by letter.
    Algorithm* CreateAlgorithm(std::string name);

    /// The names: "BinaryForLaserMachine", "IntelligentFilling", "FindMarkPoint", in this order.
    std::vector<std::string> GetAlgorithmList();

    /// Destroys an algorithm. Null is ignored.
    void ReleaseAlgorithm(Algorithm* algorithm);

private:
    std::vector<std::string> names_;
};

}  // namespace Quorvane
