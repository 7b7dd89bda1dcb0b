#pragma once

// Steps in which one allocation after the other fails.

#include <gtest/gtest.h>

#include "core/DibImage.h"
#include "support/FailingAllocator.h"
#include "support/Images.h"

namespace velloran::test {

/// Runs `step` on copies of `before` with all allocations from the first, second, ... on failing
/// (beyond the first few not every one is tried), until it meets no failure. A refusal has to leave
/// the pixels and a run without failure to succeed. Returns the count of refusals.
template <typename Step>
int SweepRefusals(const CDibImage& before, Step step) {
    int refusals = 0;
    for (long n = 1; n < 20000; n += 1 + n / 16) {
        CDibImage image = before;
        int done = 0;
        bool happened = false;
        {
            const FailAllocation failure(n);
            done = step(image);
            happened = failure.Happened();
        }
        if (!happened) {
            EXPECT_NE(done, 0);
            return refusals;
        }
        if (done == 0) {
            ExpectSamePixels(image, before);
            ++refusals;
        }
    }
    ADD_FAILURE() << "the step never ran through";
    return refusals;
}

}  // namespace velloran::test
