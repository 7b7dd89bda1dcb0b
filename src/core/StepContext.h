#pragma once

// What surrounds an image operation while it works: the token that tells whether the result is
// still wanted, and the place where it is noted why an operation refused. Operations reach it by
// the thread that they were called on; without one nothing is cancelled and notes go nowhere.
//
// A loop that several threads share fetches the token once, before it begins:
//
//     const CancelToken cancel = CurrentCancel();
//     #pragma omp parallel for
//     for (int y = 0; y < height; ++y) {
//         if (cancel.IsCancelled())
//             continue;

#include <array>
#include <string_view>

#include "core/CancelToken.h"

namespace velloran {

class StepContext {
 public:
    /// Is the context of this thread until it goes; the one before it is back then.
    explicit StepContext(CancelToken cancel = {}) noexcept;
    ~StepContext();
    StepContext(const StepContext&) = delete;
    StepContext& operator=(const StepContext&) = delete;

    const CancelToken& Cancel() const { return cancel_; }
    /// Work, or a part of it, was left undone for want of memory.
    bool IsOutOfMemory() const { return outOfMemory_; }
    /// Another exception ended the work; its text is cut at 159 bytes.
    bool HasFailed() const { return failed_; }
    std::string_view FailureText() const { return failureText_.data(); }
    /// Notes a failure, though not a want of memory, in the context around this one too.
    void PassFailureOn() const noexcept;

 private:
    friend CancelToken CurrentCancel() noexcept;
    friend void NoteOutOfMemory() noexcept;
    friend void NoteFailure(std::string_view what) noexcept;

    void Note(std::string_view failure) noexcept;

    CancelToken cancel_;
    StepContext* outer_;
    bool outOfMemory_ = false, failed_ = false;
    std::array<char, 160> failureText_{};
};

/// The token of the work under way on this thread.
CancelToken CurrentCancel() noexcept;

/// To be called where memory was refused and the work stays undone.
void NoteOutOfMemory() noexcept;

/// To be called where anything else ended the work; the first text is kept.
void NoteFailure(std::string_view what) noexcept;

/// Inside a catch block: notes the exception as what it is. std::bad_alloc is want of memory, all
/// others are failures.
void NoteException() noexcept;

}  // namespace velloran
