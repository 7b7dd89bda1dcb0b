#include "cli/ProcessUsage.h"

#include <ctime>
#include <fstream>
#include <string>

namespace velloran::cli {

double CpuSeconds() {
    timespec time{};
    if (::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time) != 0)
        return 0;
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

std::int64_t PeakMemory() {
    // getrusage would count what the process was before it became this program.
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        std::int64_t kilobytes = 0;
        if (word == "VmHWM:" && status >> kilobytes)
            return kilobytes * 1024;
    }
    return 0;
}

}  // namespace velloran::cli
