#pragma once

#include <fstream>
#include <string>
#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace Quorvane {

/// A figure of this process' memory in MB, as Linux tells it; 0 elsewhere.
inline double MemoryInMegabytes(const std::string& name) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.compare(0, name.size(), name) == 0) return std::stod(line.substr(name.size() + 1)) / 1024.0;
    }
    return 0.0;
}

/// What is used at the highest beyond what was used at the beginning.
class PeakMemory {
public:
    PeakMemory() {
#ifdef __GLIBC__
        malloc_trim(0);  // what was freed before does not hide what is used from now on
#endif
        std::ofstream("/proc/self/clear_refs") << "5";  // the peak begins anew
        before_ = MemoryInMegabytes("VmRSS:");
    }
    double Megabytes() const { return MemoryInMegabytes("VmHWM:") - before_; }

private:
    double before_ = 0.0;
};

}  // namespace Quorvane
