#include "Includes/MatcherError.h"

#include <opencv2/core.hpp>

namespace line2Dup {

namespace {

/// Hosts know the matcher's errors by this name, whatever its files are called.
constexpr const char* sourceName = "Includes\\line2Dup";

}  // namespace

void raiseBadArgument(const char* message, const char* function) {
    cv::error(cv::Error::StsBadArg, message, function, sourceName, __LINE__);
}

void raiseAssertion(const char* message, const char* function) {
    cv::error(cv::Error::StsAssert, message, function, sourceName, __LINE__);
}

}  // namespace line2Dup
