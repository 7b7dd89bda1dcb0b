#pragma once

// A token that counts its questions, and says yes from a certain one on.

#include <atomic>
#include <climits>

#include "core/CancelToken.h"

namespace velloran::test {

class CountedCancel {
 public:
    explicit CountedCancel(long yesFrom = LONG_MAX) : yesFrom_(yesFrom) {}

    CancelToken Token() const {
        return CancelToken(
            [](const void* self) {
                const auto& counted = *static_cast<const CountedCancel*>(self);
                return ++counted.asked_ >= counted.yesFrom_;
            },
            this);
    }
    long Asked() const { return asked_; }

 private:
    mutable std::atomic<long> asked_ = 0;
    long yesFrom_;
};

}  // namespace velloran::test
