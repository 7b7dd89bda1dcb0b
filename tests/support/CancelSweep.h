#pragma once

// What every operation that takes long owes to whoever cancels it.

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

#include "core/DibImage.h"
#include "core/StepContext.h"
#include "support/CountedCancel.h"
#include "support/Threads.h"

namespace velloran::test {

/// It asks once in sixteen rows or more often, and ends, whole in memory, from whatever question
/// on the answer is yes.
template <typename Work>
void ExpectCancelled(const CDibImage& page, Work&& work) {
    CDibImage whole = page;
    const CountedCancel never;
    {
        const StepContext context(never.Token());
        work(whole);
    }
    EXPECT_GE(never.Asked(), page.GetHeight() / 16);
    for (const long from : {1L, 2L, 7L, never.Asked() / 3, never.Asked() / 2, never.Asked()}) {
        CDibImage image = page;
        const CountedCancel cancel(from);
        const StepContext context(cancel.Token());
        work(image);
        EXPECT_GE(cancel.Asked(), std::min(from, never.Asked()));
        EXPECT_FALSE(context.HasFailed());
        EXPECT_FALSE(context.IsOutOfMemory());
    }
}

/// Cancelled from the first question on it takes less than a third of its time.
template <typename Work>
void ExpectQuickCancel(const CDibImage& page, Work&& work) {
    const Threads threads(1);  // waiting for others would count
    const auto secondsFrom = [&](long from) {
        double best = 1e9;
        for (int i = 0; i < 3; ++i) {
            CDibImage image = page;
            const CountedCancel cancel(from);
            const StepContext context(cancel.Token());
            const auto start = std::chrono::steady_clock::now();
            work(image);
            const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
            best = std::min(best, taken.count());
        }
        return best;
    };
    const double whole = secondsFrom(LONG_MAX);
    EXPECT_LT(secondsFrom(1), std::max(whole / 3, 0.005)) << "of " << whole;
}

}  // namespace velloran::test
