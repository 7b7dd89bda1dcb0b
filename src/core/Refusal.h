#pragma once

// Image operations refuse instead of throwing: an exception inside becomes 0, and a note of its
// cause for whoever runs the operation (core/StepContext.h).

#include <string_view>
#include <utility>

#include "core/StepContext.h"

namespace velloran {

/// Runs `work` and returns its int; any exception inside becomes 0. std::bad_alloc is noted as want
/// of memory, every other one (std::length_error too: a size that no memory could hold was worked
/// out wrongly) as a failure with its text.
template <typename Work>
int RefuseWhenOutOfMemory(Work&& work) {
    try {
        return std::forward<Work>(work)();
    } catch (...) {
        NoteException();
        return 0;
    }
}

/// The same for work that has another way behind it, which needs less memory and makes the same:
/// want of memory inside, noted by whomever, is no news then. Other failures are noted.
template <typename Work>
int TryWithinMemory(Work&& work) {
    const StepContext apart(CurrentCancel());
    const int done = RefuseWhenOutOfMemory(std::forward<Work>(work));
    apart.PassFailureOn();
    return done;
}

}  // namespace velloran
