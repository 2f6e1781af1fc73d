#include <QuorvaneVision.h>

#include <iostream>
#include <string>
#include <vector>

int main() {
    Quorvane::AlgorithmFactory factory;
    for (const std::string& name : factory.GetAlgorithmList()) {
        Quorvane::Algorithm* algorithm = factory.CreateAlgorithm(name);
        std::cout << name << '\n';

        std::vector<std::string> parameters;
        algorithm->GetParameterNameList(parameters);
        for (const std::string& parameter : parameters) {
            std::cout << "  " << parameter << " = " << algorithm->GetParameterToString(parameter) << '\n';
        }
        std::vector<std::string> results;
        algorithm->GetResultNameList(results);
        for (const std::string& result : results) std::cout << "  -> " << result << '\n';

        factory.ReleaseAlgorithm(algorithm);
    }
}
