#pragma once

// Memory that runs out on purpose: every allocation of the test binary goes through a counter.

#include <functional>

namespace velloran::test {

/// While it lives, the n-th allocation of this thread from now (1 is the next) and, unless
/// `onlyOne`, all later ones fail.
class FailAllocation {
 public:
    explicit FailAllocation(long n, bool onlyOne = false);
    ~FailAllocation();
    FailAllocation(const FailAllocation&) = delete;
    FailAllocation& operator=(const FailAllocation&) = delete;
    /// Whether an allocation was refused.
    bool Happened() const;
};

/// Calls `trial(n)` with the n-th allocation failing, for n = 1, 2, ... until a trial meets no
/// failure. Returns the count of trials that failed an allocation; at most `limit`.
int SweepFailingAllocations(const std::function<void(long)>& trial, int limit = 10000);

}  // namespace velloran::test
