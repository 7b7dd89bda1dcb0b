#pragma once

// How many threads a parallel loop may use, and which one runs: for scratch that each thread holds
// for itself, made before the loop.

#include <cstdint>

#include "core/PlaneView.h"

#ifdef _OPENMP
#include <omp.h>
#endif

namespace velloran {

/// At least 1.
inline int MaxThreads() {
#ifdef _OPENMP
    return omp_get_max_threads();
#else
    return 1;
#endif
}

/// 0 <= number < MaxThreads().
inline int ThreadNumber() {
#ifdef _OPENMP
    return omp_get_thread_num();
#else
    return 0;
#endif
}

/// How much is done for each sample.
enum class SampleWork {
    kCopy,   // it is moved
    kUsual,  // a few operations
    kLong,   // a few dozen
};

/// Below some number of samples, waking a thread costs more than the work.
constexpr bool IsWorthThreads(std::int64_t samples, SampleWork work = SampleWork::kUsual) {
    constexpr int kBits[] = {18, 16, 14};
    return samples >= std::int64_t{1} << kBits[static_cast<int>(work)];
}

/// The same of all samples of a view.
constexpr bool IsWorthThreads(ConstPlaneView view) {
    return IsWorthThreads(std::int64_t{view.width} * view.height * view.channels);
}

}  // namespace velloran
