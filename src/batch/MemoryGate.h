#pragma once

// Which pages may be in memory together: they enter in order, each as soon as what it takes fits
// beside those inside. One that would never fit runs alone.

#include <cstddef>
#include <cstdint>

namespace velloran {

class MemoryGate {
 public:
    /// Bytes for all pages together; 0 or less is no limit.
    explicit MemoryGate(std::int64_t limit) : limit_(limit) {}

    bool MayEnter(std::int64_t bytes) const {
        return inside_ == 0 || limit_ <= 0 || (bytes <= limit_ && used_ <= limit_ - bytes);
    }
    void Enter(std::int64_t bytes) {
        ++inside_;
        used_ += bytes;
    }
    void Leave(std::int64_t bytes) {
        --inside_;
        used_ -= bytes;
    }
    std::int64_t Used() const { return used_; }
    /// Whether those inside take more than half of the limit, so that others may soon wait.
    bool IsTight() const { return limit_ > 0 && used_ > limit_ / 2; }

 private:
    std::int64_t limit_ = 0, used_ = 0;
    int inside_ = 0;
};

}  // namespace velloran
