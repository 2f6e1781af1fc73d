#include "Includes/StageTimer.h"

#include <chrono>
#include <iostream>

namespace line2Dup {

namespace {

constexpr double nanosecondsPerSecond = 1e9;

std::int64_t now() {
    const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(sinceStart).count();
}

}  // namespace

StageTimer::StageTimer() : stamp_(now()) {}

void StageTimer::elapsed(const std::string& title) {
    const double seconds = static_cast<double>(now() - stamp_) / nanosecondsPerSecond;
    // "elasped" is what hosts find in their logs.
    std::cout << title << "\nelasped time:" << seconds << "s\n" << std::endl;
    stamp_ = now();
}

}  // namespace line2Dup
