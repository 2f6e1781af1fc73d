#pragma once

#include <cstdint>
#include <string>

namespace line2Dup {

/// A stop watch for the stages of a job. It runs from its making.
class StageTimer {
public:
    StageTimer();

    /// Prints the title and the seconds since the last call (or since the making) to standard output, and starts anew.
    void elapsed(const std::string& title);

private:
    std::int64_t stamp_;  // nanoseconds of a monotonic clock
};

}  // namespace line2Dup
