#pragma once

// A question that long work asks again and again: is the result still wanted? A token is a value of
// two words; what it asks must outlive it and may be asked by several threads at once.

#include <atomic>

namespace velloran {

class CancelToken {
 public:
    /// Whether to stop; called from any thread, must not throw.
    using Question = bool (*)(const void* asked);

    /// Never cancelled.
    constexpr CancelToken() = default;
    /// Cancelled as soon as the flag is set; a flag that is set stays set.
    explicit CancelToken(const std::atomic<bool>& flag)
        : question_([](const void* asked) {
              return static_cast<const std::atomic<bool>*>(asked)->load(std::memory_order_relaxed);
          }),
          asked_(&flag) {}
    CancelToken(Question question, const void* asked) : question_(question), asked_(asked) {}

    /// Cheap enough for every row of an image.
    bool IsCancelled() const { return question_ != nullptr && question_(asked_); }

 private:
    Question question_ = nullptr;
    const void* asked_ = nullptr;
};

}  // namespace velloran
