#include "batch/PreviewLoop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <new>
#include <vector>

#include "core/DibImage.h"
#include "params/ParaBlock.h"
#include "support/Images.h"

namespace velloran {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

/// A view without a window: a source, two blocks, and a record of what was run and delivered.
class Preview : public testing::Test {
 protected:
    PreviewLoop::Source SourceOf(const CDibImage& image) {
        return [&image](CDibImage& copy) {
            copy = image;
            return copy.IsValid();
        };
    }
    PreviewLoop::Deliver Recorded() {
        return [this](CDibImage& result, const RunReport& report) {
            const std::lock_guard hold(lock_);
            if (!report.IsWhole()) {
                ++notes_;
                return;
            }
            shown_.Transfer(result);
            ++delivered_;
            deliveredEvent_.Set();
        };
    }
    PreviewLoop::Run Counted() {
        return [this](CDibImage&, const Settings& settings, CancelToken) {
            EXPECT_EQ(settings, applied_.GetSettings());
            ++runs_;
            return RunReport();
        };
    }

    /// Lets the loop pass at least once: it copies a value that alters no pixels.
    void AwaitPass() {
        const std::int32_t value = wanted_.GetPara(PARA_JP2_RATE) + 1;
        wanted_.SetPara(PARA_JP2_RATE, value);
        const auto limit = Clock::now() + 60s;
        while (applied_.GetPara(PARA_JP2_RATE) != value && Clock::now() < limit)
            std::this_thread::sleep_for(2ms);
        EXPECT_EQ(applied_.GetPara(PARA_JP2_RATE), value);
    }

    CDibImage source_ = test::Filled(9, 7, 8, 10);
    CParaBlock wanted_, applied_;
    std::atomic<int> runs_{0}, delivered_{0}, notes_{0};
    CManualEvent deliveredEvent_;
    std::mutex lock_;
    CDibImage shown_;
};

TEST_F(Preview, ChangeTriggersOneRun) {
    PreviewLoop loop(SourceOf(source_), wanted_, applied_, Recorded(), Counted());
    ASSERT_TRUE(loop.Start());
    wanted_.SetPara(PARA_CONTRAST, 120);
    deliveredEvent_.Wait();
    AwaitPass();
    AwaitPass();
    loop.Stop();
    EXPECT_EQ(runs_, 1);
    EXPECT_EQ(delivered_, 1);
    EXPECT_EQ(applied_.GetPara(PARA_CONTRAST), 120);
    test::ExpectSamePixels(shown_, source_);
}

TEST_F(Preview, WithoutAChangeNothingRuns) {
    PreviewLoop loop(SourceOf(source_), wanted_, applied_, Recorded(), Counted());
    ASSERT_TRUE(loop.Start());
    AwaitPass();
    loop.Stop();
    EXPECT_EQ(runs_, 0);
    EXPECT_EQ(delivered_, 0);
}

TEST_F(Preview, ChangesOfTheWrittenFileAloneRunNothing) {
    PreviewLoop loop(SourceOf(source_), wanted_, applied_, Recorded(), Counted());
    ASSERT_TRUE(loop.Start());
    for (const int index :
         {PARA_QUALITY, JPG_RESAMPLE_TYPE, JPG_RESAMPLE_H, JPG_RESAMPLE_V, JPG_SRC_SAMPLE,
          JPG_SRC_QUALITY, JPG_SRC_CODE, JPG_OPTIMIZE, JPG_PROGRESSIVE})
        wanted_.SetPara(index, wanted_.GetPara(index) + 1);
    AwaitPass();
    AwaitPass();
    loop.Stop();
    EXPECT_EQ(runs_, 0);
    EXPECT_EQ(applied_.GetPara(PARA_QUALITY), 71);  // taken over all the same
}

TEST_F(Preview, FirstLookComesAfterTheWait) {
    wanted_.SetPara(PARA_CONTRAST, 120);
    PreviewLoop loop(SourceOf(source_), wanted_, applied_, Recorded(), Counted());
    const auto start = Clock::now();
    ASSERT_TRUE(loop.Start());
    deliveredEvent_.Wait();
    EXPECT_GE(Clock::now() - start, 100ms);
    loop.Stop();
}

TEST_F(Preview, ChangeDuringARunIsPickedUpOnTheNextPass) {
    CManualEvent goOn;
    const auto run = [&](CDibImage&, const Settings&, CancelToken) {
        if (++runs_ == 1) {
            wanted_.SetPara(PARA_GAMMA, 150);
            goOn.Wait();
        }
        return RunReport();
    };
    PreviewLoop loop(SourceOf(source_), wanted_, applied_, Recorded(), run);
    ASSERT_TRUE(loop.Start());
    wanted_.SetPara(PARA_CONTRAST, 120);
    goOn.Set();
    deliveredEvent_.Wait();
    AwaitPass();
    AwaitPass();
    loop.Stop();
    EXPECT_EQ(runs_, 2);
    EXPECT_EQ(delivered_, 2);
}

TEST_F(Preview, StopDuringARunThrowsTheCopyAway) {
    CManualEvent isRunning;
    std::atomic<int> cancelBefore{-1}, cancelAfter{-1};
    const auto run = [&](CDibImage&, const Settings&, CancelToken cancel) {
        cancelBefore = cancel.IsCancelled();
        isRunning.Set();
        const auto limit = Clock::now() + 60s;
        while (!cancel.IsCancelled() && Clock::now() < limit)
            std::this_thread::sleep_for(1ms);
        cancelAfter = cancel.IsCancelled();
        return RunReport();
    };
    PreviewLoop loop(SourceOf(source_), wanted_, applied_, Recorded(), run);
    ASSERT_TRUE(loop.Start());
    wanted_.SetPara(PARA_CONTRAST, 120);
    isRunning.Wait();
    loop.Stop();
    EXPECT_EQ(cancelBefore, 0);
    EXPECT_NE(cancelAfter, 0);
    EXPECT_EQ(delivered_, 0);
    EXPECT_FALSE(loop.IsRunning());
}

TEST_F(Preview, CanBeStoppedAndStartedForANewImage) {
    PreviewLoop loop(SourceOf(source_), wanted_, applied_, Recorded(), Counted());
    for (int round = 1; round <= 2; ++round) {
        ASSERT_TRUE(loop.Start());
        wanted_.SetPara(PARA_CONTRAST, 100 + round);
        deliveredEvent_.Wait();
        loop.Stop();
        deliveredEvent_.Reset();
    }
    EXPECT_EQ(delivered_, 2);
}

TEST_F(Preview, WithoutAnImageNothingIsDelivered) {
    const auto none = [](CDibImage&) { return false; };
    PreviewLoop loop(none, wanted_, applied_, Recorded(), Counted());
    ASSERT_TRUE(loop.Start());
    wanted_.SetPara(PARA_CONTRAST, 120);
    AwaitPass();
    AwaitPass();
    loop.Stop();
    EXPECT_EQ(runs_, 0);
    EXPECT_EQ(delivered_, 0);
}

TEST_F(Preview, RunOutOfMemoryGivesANoteInPlaceOfAPictureAndTheLoopGoesOn) {
    const auto run = [&](CDibImage&, const Settings&, CancelToken) {
        if (++runs_ == 1)
            throw std::bad_alloc();
        return RunReport();
    };
    PreviewLoop loop(SourceOf(source_), wanted_, applied_, Recorded(), run);
    ASSERT_TRUE(loop.Start());
    wanted_.SetPara(PARA_CONTRAST, 120);
    AwaitPass();
    AwaitPass();
    wanted_.SetPara(PARA_CONTRAST, 130);
    deliveredEvent_.Wait();
    loop.Stop();
    EXPECT_EQ(runs_, 2);
    EXPECT_EQ(delivered_, 1);
    EXPECT_EQ(notes_, 1);
}

TEST_F(Preview, RunsTheWholePipelineWhereNothingElseIsGiven) {
    PreviewLoop loop(SourceOf(source_), wanted_, applied_, Recorded());
    ASSERT_TRUE(loop.Start());
    wanted_.SetPara(PARA_CONTRAST, 0);
    deliveredEvent_.Wait();
    loop.Stop();
    test::ExpectSamePixels(shown_, test::Filled(9, 7, 8, 128));
    test::ExpectSamePixels(source_, test::Filled(9, 7, 8, 10));  // the document's image stays
}

}  // namespace
}  // namespace velloran
