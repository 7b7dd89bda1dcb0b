#pragma once

// Ctrl+C, SIGTERM and a closed terminal become a flag that runs look at between their steps.

#include <atomic>

namespace velloran::cli {

/// From now on the signals set the flag instead of ending the program. One that was ignored from
/// the start stays so. Output into a closed pipe becomes an error instead of a signal.
void CatchStopSignals();

std::atomic<bool>& StopFlag();

/// 128 and the number of the first signal caught; 0 for none.
int StopStatus();

}  // namespace velloran::cli
