#pragma once

// Ctrl+C, SIGTERM and a closed terminal become a flag that runs look at between their steps.

#include <atomic>

namespace velloran::cli {

/// From now on the first of the signals sets the flag instead of ending the program; a further one
/// ends it at once, with the status of the first. One that was ignored from the start stays so.
/// Output into a closed pipe, or beyond the limit of a file's size, becomes an error instead of a
/// signal.
void CatchStopSignals();

std::atomic<bool>& StopFlag();

/// 128 and the number of the first signal caught; 0 for none.
int StopStatus();

}  // namespace velloran::cli
