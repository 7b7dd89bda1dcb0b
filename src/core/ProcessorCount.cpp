#include "core/ProcessorCount.h"

#include <sched.h>
#include <unistd.h>
#ifdef _OPENMP
#include <omp.h>
#endif

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <string>

namespace velloran {

namespace {

constexpr int kMostProcessors = 4096;

std::string FirstLine(const std::filesystem::path& file) {
    std::ifstream stream(file);
    std::string line;
    std::getline(stream, line);
    return line;
}

int ProcessorsOfAffinity() {
    for (int size = 1024; size <= 1 << 20; size *= 2) {
        const std::unique_ptr<cpu_set_t, void (*)(cpu_set_t*)> set(
            CPU_ALLOC(static_cast<std::size_t>(size)), [](cpu_set_t* s) { CPU_FREE(s); });
        const std::size_t bytes = CPU_ALLOC_SIZE(static_cast<std::size_t>(size));
        if (set && ::sched_getaffinity(0, bytes, set.get()) == 0)
            return CPU_COUNT_S(bytes, set.get());
    }
    return static_cast<int>(std::max(1L, ::sysconf(_SC_NPROCESSORS_ONLN)));
}

/// The least cpu.max from the process's group up to the root; 0 for no limit.
int ProcessorsOfGroups(const std::string& group) {
    const std::filesystem::path root = "/sys/fs/cgroup";
    std::filesystem::path folder = root / std::filesystem::path(group).relative_path();
    int least = 0;
    while (true) {
        const int limit = ProcessorsOfCpuMax(FirstLine(folder / "cpu.max"));
        if (limit > 0)
            least = least == 0 ? limit : std::min(least, limit);
        if (folder == root || folder == folder.parent_path())
            return least;
        folder = folder.parent_path();
    }
}

int ProcessorsOfContainer() {
    std::ifstream groups("/proc/self/cgroup");
    int least = 0;
    const auto take = [&least](int limit) {
        if (limit > 0)
            least = least == 0 ? limit : std::min(least, limit);
    };
    for (std::string line; std::getline(groups, line);)
        if (line.starts_with("0::/"))
            take(ProcessorsOfGroups(line.substr(3)));
    // The older layout has one file for the quota and one for the period.
    const std::filesystem::path old = "/sys/fs/cgroup/cpu";
    take(ProcessorsOfCpuMax(FirstLine(old / "cpu.cfs_quota_us") + " " +
                            FirstLine(old / "cpu.cfs_period_us")));
    return least;
}

}  // namespace

int ProcessorsOfCpuMax(std::string_view cpuMax) {
    const std::size_t blank = cpuMax.find(' ');
    if (blank == std::string_view::npos)
        return 0;
    const auto number = [](std::string_view text) {
        long long value = 0;
        const auto end = text.data() + text.size();
        const auto [last, failure] = std::from_chars(text.data(), end, value);
        return failure == std::errc{} && last == end ? value : 0LL;
    };
    const long long quota = number(cpuMax.substr(0, blank));
    const long long period = number(cpuMax.substr(blank + 1));
    if (quota <= 0 || period <= 0)
        return 0;
    const long long processors = quota / period + (quota % period != 0 ? 1 : 0);
    return static_cast<int>(std::min<long long>(processors, kMostProcessors));
}

int ThreadsOfEnvironment(std::string_view value) {
    while (!value.empty() && value.front() == ' ')
        value.remove_prefix(1);
    int threads = 0;
    const auto end = value.data() + value.size();
    const auto [last, failure] = std::from_chars(value.data(), end, threads);
    if (failure != std::errc{} || threads < 1 || (last != end && *last != ',' && *last != ' '))
        return 0;
    return threads;
}

int CountProcessors() {
    int count = ProcessorsOfAffinity();
    if (const int limit = ProcessorsOfContainer(); limit > 0)
        count = std::min(count, limit);
    if (const char* value = std::getenv("OMP_NUM_THREADS"); value != nullptr)
        if (const int threads = ThreadsOfEnvironment(value); threads > 0)
            count = std::min(count, threads);
    return std::clamp(count, 1, kMostProcessors);
}

void SetInnerThreads([[maybe_unused]] int threads) {
#ifdef _OPENMP
    omp_set_num_threads(std::max(1, threads));
#endif
}

}  // namespace velloran
