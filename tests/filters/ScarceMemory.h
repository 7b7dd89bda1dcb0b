#pragma once

// An operation on a page with each of its allocations failing in turn, on one thread.

#include "core/DibImage.h"
#include "support/FailingAllocator.h"
#include "support/Threads.h"

namespace velloran::test {

/// Runs `operation(page)` on copies of `image` with the n-th allocation, and unless `onlyOne` all
/// later ones, failing, for n = 1, 2, ... and once with none failing. `check(page, result, failed)`
/// looks at each outcome. Returns how many runs met a failure.
template <typename Operation, typename Check>
int RunWithScarceMemory(const CDibImage& image, bool onlyOne, Operation&& operation,
                        Check&& check) {
    const Threads one(1);
    bool failed = true;
    for (long n = 1;; ++n) {
        CDibImage page = image;
        int result;
        {
            const FailAllocation failure(n, onlyOne);
            result = operation(page);
            failed = failure.Happened();
        }
        check(page, result, failed);
        if (!failed)
            return static_cast<int>(n - 1);
    }
}

}  // namespace velloran::test
