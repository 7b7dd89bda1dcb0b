#pragma once

// The threads of a batch run. Files are taken in order by several workers, and their outcomes are
// handed to the caller in that same order, on the caller's thread.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>

#include "batch/ConvertFile.h"

namespace velloran {

struct WorkerRequest {
    std::size_t count = 0;  // of files
    int workers = 1;
    int innerThreads = 1;  // of each worker's row loops
    int aloneThreads = 1;  // of a file that runs alone
    std::atomic<bool>* stop = nullptr;
    std::int64_t memory = 0;  // bytes that the files in flight may take together; 0 is no limit

    /// Begins file `index`, on a worker; what it gives is run on the same one.
    std::function<PageWork(std::size_t index)> begin;
    /// Whether the next file may change what the others see, and so must run alone. Asked when
    /// no file is running; once false it is not asked again.
    std::function<bool()> needsAlone;
    /// Takes the outcomes in order, on the caller's thread. Files that a stop kept from
    /// beginning, or ended, come as FileOutcome::End::kStopped.
    std::function<void(std::size_t index, FileOutcome outcome)> deliver;
    /// Called a few times a second on the caller's thread; true sets the stop flag.
    std::function<bool()> poll;
};

/// Returns when all workers have ended.
void RunWorkers(const WorkerRequest& request);

/// How a machine's processors are shared out: files in flight, and threads inside each. With fewer
/// files than processors the row loops take the rest.
struct WorkShares {
    int workers = 1, innerThreads = 1, aloneThreads = 1;
    bool operator==(const WorkShares&) const = default;
};
WorkShares ShareProcessors(std::size_t files, int jobs, int processors);

}  // namespace velloran
