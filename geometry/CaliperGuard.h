#pragma once

#include <exception>
#include <iostream>

namespace Quorvane::UtilityFunctions {

/// Measures one caliper; returns whether it went through. A failure costs this caliper alone: it is written to standard
/// error as "Edge detection failed at `what` `place`: " with the exception's text.
template <typename Place, typename Action>
bool GuardCaliper(const char* what, const Place& place, Action measure) {
    try {
        measure();
        return true;
    } catch (const std::exception& failure) {
        std::cerr << "Edge detection failed at " << what << " " << place << ": " << failure.what() << std::endl;
        return false;
    }
}

}  // namespace Quorvane::UtilityFunctions
