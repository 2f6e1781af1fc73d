#pragma once

#include <exception>
#include <iostream>

namespace Quorvane::UtilityFunctions {

/// Measures one caliper. A failure costs this caliper alone: it is written to standard error as
/// "Edge detection failed at `what` `place`: " with the exception's text.
template <typename Place, typename Action>
void GuardCaliper(const char* what, const Place& place, Action measure) {
    try {
        measure();
    } catch (const std::exception& failure) {
        std::cerr << "Edge detection failed at " << what << " " << place << ": " << failure.what() << std::endl;
    }
}

}  // namespace Quorvane::UtilityFunctions
