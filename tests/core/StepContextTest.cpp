#include "core/StepContext.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "core/DibImage.h"
#include "core/Refusal.h"
#include "support/FailingAllocator.h"
#include "support/Images.h"

namespace velloran {
namespace {

int ThrowBadAlloc() {
    throw std::bad_alloc();
}

TEST(StepContext, WantOfMemoryIsNotedAndRefuses) {
    const StepContext context;
    EXPECT_EQ(RefuseWhenOutOfMemory([] { return 7; }), 7);
    EXPECT_FALSE(context.IsOutOfMemory());
    EXPECT_EQ(RefuseWhenOutOfMemory(ThrowBadAlloc), 0);
    EXPECT_TRUE(context.IsOutOfMemory());
    EXPECT_FALSE(context.HasFailed());
}

TEST(StepContext, AnyOtherExceptionIsAFailureWithItsText) {
    const StepContext context;
    EXPECT_EQ(RefuseWhenOutOfMemory([]() -> int { throw std::runtime_error("no such row"); }), 0);
    EXPECT_EQ(RefuseWhenOutOfMemory([]() -> int { throw std::length_error("too long"); }), 0);
    EXPECT_EQ(RefuseWhenOutOfMemory([]() -> int { throw 5; }), 0);
    EXPECT_FALSE(context.IsOutOfMemory());
    EXPECT_TRUE(context.HasFailed());
    EXPECT_EQ(context.FailureText(), "no such row") << "the first one is kept";
}

TEST(StepContext, ASizeThatNoVectorHoldsIsNoWantOfMemory) {
    const StepContext context;
    RefuseWhenOutOfMemory([] {
        std::vector<int> sizes;
        sizes.reserve(sizes.max_size() + 1);
        return 1;
    });
    EXPECT_FALSE(context.IsOutOfMemory());
    EXPECT_TRUE(context.HasFailed());
}

TEST(StepContext, LongTextsAreCut) {
    const StepContext context;
    NoteFailure(std::string(1000, 'x'));
    EXPECT_EQ(context.FailureText(), std::string(159, 'x'));
}

TEST(StepContext, WhatAnotherWayMadeGoodIsNoNews) {
    const StepContext context;
    EXPECT_EQ(TryWithinMemory(ThrowBadAlloc), 0);
    EXPECT_FALSE(context.IsOutOfMemory());
    EXPECT_EQ(TryWithinMemory([]() -> int { throw std::logic_error("broken"); }), 0);
    EXPECT_EQ(context.FailureText(), "broken") << "a failure is news all the same";
}

TEST(StepContext, BelongsToItsThreadAndEndsWithItsScope) {
    const StepContext outer;
    {
        const StepContext inner;
        NoteOutOfMemory();
        EXPECT_TRUE(inner.IsOutOfMemory());
    }
    EXPECT_FALSE(outer.IsOutOfMemory());
    std::thread([] { NoteOutOfMemory(); }).join();
    EXPECT_FALSE(outer.IsOutOfMemory());
    NoteOutOfMemory();
    EXPECT_TRUE(outer.IsOutOfMemory());
}

TEST(StepContext, WithoutOneNothingIsCancelledAndNotesAreLost) {
    NoteOutOfMemory();
    NoteFailure("nobody hears it");
    EXPECT_FALSE(CurrentCancel().IsCancelled());
}

TEST(CancelToken, AsksItsFlagOrItsQuestion) {
    std::atomic<bool> flag = false;
    const StepContext context{CancelToken(flag)};
    EXPECT_FALSE(CurrentCancel().IsCancelled());
    std::thread([&] { flag = true; }).join();
    EXPECT_TRUE(CurrentCancel().IsCancelled());
    int asked = 3;
    const CancelToken question(
        [](const void* count) { return *static_cast<const int*>(count) > 3; }, &asked);
    EXPECT_FALSE(question.IsCancelled());
    asked = 4;
    EXPECT_TRUE(question.IsCancelled());
}

TEST(StepContext, AnImageThatIsNotMadeForWantOfMemoryIsNoted) {
    const CDibImage source = test::Noise(20, 10, 24);
    for (const bool isCopy : {false, true}) {
        const StepContext context;
        CDibImage image;
        {
            const test::FailAllocation failure(1);
            if (isCopy)
                image = source;
            else
                EXPECT_EQ(image.Create(20, 10, 8), nullptr);
        }
        EXPECT_FALSE(image.IsValid());
        EXPECT_TRUE(context.IsOutOfMemory()) << isCopy;
    }
    const StepContext context;
    CDibImage image;
    EXPECT_EQ(image.Create(0, 10, 8), nullptr);
    EXPECT_FALSE(context.IsOutOfMemory()) << "a size of nothing wants no memory";
    EXPECT_EQ(image.Create(100000, 100000, 24), nullptr);
    EXPECT_TRUE(context.IsOutOfMemory()) << "more than a picture may have";
}

TEST(StepContext, AQuarterTurnWithoutMemoryIsNoted) {
    CDibImage image = test::Noise(20, 10, 24);
    image.CreateAlpha();
    for (const long n : {1L, 2L}) {
        const StepContext context;
        const test::FailAllocation failure(n);
        EXPECT_FALSE(image.Rotate90(/*left=*/true));
        EXPECT_TRUE(context.IsOutOfMemory()) << n;
    }
}

}  // namespace
}  // namespace velloran
