#pragma once

// How many processors this process may use: the least of its CPU affinity, the limits of its
// container, and OMP_NUM_THREADS.

#include <string_view>

namespace velloran {

/// At least 1.
int CountProcessors();

/// Processors that a cgroup limit amounts to, rounded up: "200000 100000" (quota and period) is 2,
/// "150000 100000" is 2. 0 for "max ..." and for what cannot be read, which is no limit.
int ProcessorsOfCpuMax(std::string_view cpuMax);

/// The first number of OMP_NUM_THREADS ("4,2" is 4); 0 for what is no positive number.
int ThreadsOfEnvironment(std::string_view value);

/// Row loops that the calling thread starts from now on run on so many threads.
void SetInnerThreads(int threads);

}  // namespace velloran
