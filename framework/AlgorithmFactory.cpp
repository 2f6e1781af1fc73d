#include "framework/AlgorithmFactory.h"

#include "algorithms/BinaryForLaserMachine.h"
#include "algorithms/FindMarkPoint.h"
#include "algorithms/IntelligentFilling.h"

namespace Quorvane {

AlgorithmFactory::AlgorithmFactory() : names_{"BinaryForLaserMachine", "IntelligentFilling", "FindMarkPoint"} {}

AlgorithmFactory::AlgorithmFactory(const AlgorithmFactory& other) = default;
AlgorithmFactory::AlgorithmFactory(AlgorithmFactory&& other) noexcept = default;
AlgorithmFactory& AlgorithmFactory::operator=(const AlgorithmFactory& other) = default;
AlgorithmFactory& AlgorithmFactory::operator=(AlgorithmFactory&& other) noexcept = default;
AlgorithmFactory::~AlgorithmFactory() = default;

// The list is deliberately not consulted, so that a factory whose list was moved away creates algorithms as before.
Algorithm* AlgorithmFactory::CreateAlgorithm(std::string name) {
    if (name == "BinaryForLaserMachine") return new BinaryForLaserMachine;
    if (name == "IntelligentFilling") return new IntelligentFilling;
    if (name == "FindMarkPoint") return new FindMarkPoint;
    return nullptr;
}

std::vector<std::string> AlgorithmFactory::GetAlgorithmList() { return names_; }

void AlgorithmFactory::ReleaseAlgorithm(Algorithm* algorithm) { delete algorithm; }

}  // namespace Quorvane
