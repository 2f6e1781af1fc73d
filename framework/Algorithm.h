#pragma once

#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

#include "QuorvaneExport.h"
#include "framework/AlgorithmParameters.h"
#include "framework/AlgorithmResult.h"

namespace Quorvane {

/// Base of the named image algorithms: parameters in by name, an image through `Execute`, results out as text.
///
///     AlgorithmFactory factory;
///     Algorithm* algorithm = factory.CreateAlgorithm("BinaryForLaserMachine");
///     algorithm->SetParameter("HighThreshold", 230);
///     cv::Mat dots;
///     if (algorithm->Execute(picture, dots) != 0) {
///         std::string message;
///         algorithm->GetErrorMsg(message);
///     }
///     factory.ReleaseAlgorithm(algorithm);
///
/// An object serves one thread at a time; two objects share nothing. Parameters and results stay between runs.
///
/// Copying and assigning share the two tables instead of duplicating them, and the first destructor frees them under
/// the other object; an assignment does not free the tables that the target had. This is the exported behaviour and
/// is kept; the library itself copies no algorithm.
class QUORVANE_EXPORT Algorithm {
public:
    /// Without parameters and results.
    Algorithm();
    /// Frees both tables.
    virtual ~Algorithm();
    ///@{
    /// Shares the tables of `other`, as told above.
    Algorithm(const Algorithm& other);
    Algorithm& operator=(const Algorithm& other);
    ///@}

    /// Runs the algorithm once on `source`, which it does not change; `destination` receives the output image as far
    /// as there is one. Returns a status:
    /// - 0: the run came to its end; whether anything was found stands in the results;
    /// - 1: the target of the search could not be found in the image;
    /// - 2: the source image is empty;
    /// - 3: a parameter is invalid, parameters contradict each other, or no target could be derived from them.
    /// Every status but 0 has stored its message (see `GetErrorMsg`). Exceptions of parameter conversions (see
    /// `Param`) and `cv::Exception` reach the caller.
    virtual int Execute(const cv::Mat& source, cv::Mat& destination) = 0;

    ///@{
    /// Store a parameter, as `AlgorithmParameters::SetParameter` does.
    void SetParameter(const std::string& name, int value);
    void SetParameter(const std::string& name, float value);
    void SetParameter(const std::string& name, double value);
    void SetParameter(const std::string& name, std::string value);
    void SetParameter(const std::string& name, std::vector<int> value);
    void SetParameter(const std::string& name, std::vector<float> value);
    void SetParameter(const std::string& name, std::vector<double> value);
    void SetParameter(const std::string& name, std::vector<std::string> value);
    ///@}

    ///@{
    /// Read a parameter back in the kind that the name tells, as `Param` converts it.
    int GetParameterToInt(const std::string& name) const;
    /// Deliberately an `int`: hosts built long ago count on this result type, so that 0.85 reads back as 0.
    /// `GetParameterToString` and `GetParameterToFloatVec` keep the fraction.
    int GetParameterToFloat(const std::string& name) const;
    /// Deliberately an `int`, as `GetParameterToFloat`.
    int GetParameterToDouble(const std::string& name) const;
    std::string GetParameterToString(const std::string& name) const;
    std::vector<int> GetParameterToIntVec(const std::string& name) const;
    std::vector<float> GetParameterToFloatVec(const std::string& name) const;
    std::vector<double> GetParameterToDoubleVec(const std::string& name) const;
    std::vector<std::string> GetParameterToStringVec(const std::string& name) const;
    ///@}

    /// Replaces `names` by the names of all parameters, in no particular order.
    void GetParameterNameList(std::vector<std::string>& names) const;

    /// Replaces `names` by the names of all results, in no particular order.
    void GetResultNameList(std::vector<std::string>& names) const;

    /// The list of texts under a result name; empty for an unknown name.
    std::vector<std::string> GetResultValues(const std::string& name);

    /// The first text under a result name; an empty text where there is none.
    std::string GetResultValue(const std::string& name);

    /// The message of the last failed run: the first text under "AlgorithmErrorMsg", or an empty text. Whether a
    /// successful run clears it is up to each algorithm.
    void GetErrorMsg(std::string& message);

protected:
    AlgorithmParameters* parameters_;  ///< What the host has set; owned.
    AlgorithmResult* results_;         ///< What the runs have found; owned.
};

}  // namespace Quorvane
