#pragma once

// Image operations refuse instead of throwing: a failed allocation inside becomes 0.

#include <new>
#include <stdexcept>
#include <utility>

namespace velloran {

/// Runs `work` and returns its int; std::bad_alloc and std::length_error inside become 0.
template <typename Work>
int RefuseWhenOutOfMemory(Work&& work) {
    try {
        return std::forward<Work>(work)();
    } catch (const std::bad_alloc&) {
        return 0;
    } catch (const std::length_error&) {
        return 0;
    }
}

}  // namespace velloran
