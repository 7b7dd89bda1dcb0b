#pragma once

// What this process took of the machine.

#include <cstdint>

namespace velloran::cli {

/// Processor time of all threads since the start, in seconds.
double CpuSeconds();

/// The most memory that was resident at a time, in bytes; 0 where the system does not tell.
std::int64_t PeakMemory();

}  // namespace velloran::cli
