#include "batch/MemoryGate.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

#include "batch/BatchWorkers.h"
#include "batch/PageMemory.h"
#include "codecs/ImageInfo.h"
#include "params/Settings.h"

namespace velloran::test {
namespace {

TEST(MemoryGate, PagesEnterWhileTheyFit) {
    MemoryGate gate(100);
    EXPECT_TRUE(gate.MayEnter(60));
    gate.Enter(60);
    EXPECT_TRUE(gate.MayEnter(40));
    EXPECT_FALSE(gate.MayEnter(41));
    gate.Enter(40);
    gate.Leave(60);
    EXPECT_TRUE(gate.MayEnter(60));
}

TEST(MemoryGate, APageThatWouldNeverFitRunsAlone) {
    MemoryGate gate(100);
    EXPECT_TRUE(gate.MayEnter(1000));
    gate.Enter(1000);
    EXPECT_FALSE(gate.MayEnter(1)) << "nothing beside it";
    gate.Leave(1000);
    gate.Enter(1);
    EXPECT_FALSE(gate.MayEnter(1000));
}

TEST(MemoryGate, IsTightAboveHalfOfItsLimit) {
    MemoryGate gate(100);
    gate.Enter(50);
    EXPECT_FALSE(gate.IsTight());
    gate.Enter(1);
    EXPECT_TRUE(gate.IsTight());
    MemoryGate open(0);
    open.Enter(1'000'000);
    EXPECT_FALSE(open.IsTight());
}

TEST(MemoryGate, WithoutALimitAllEnter) {
    MemoryGate gate(0);
    gate.Enter(INT64_MAX / 2);
    EXPECT_TRUE(gate.MayEnter(INT64_MAX / 2));
}

/// Runs files of given needs on eight workers and watches what is inside together.
struct GatedRun {
    std::vector<std::int64_t> needs;
    std::atomic<bool> stop{false};
    std::mutex lock;
    std::int64_t inside = 0, most = 0;
    int running = 0;
    bool largeWasAlone = true;
    std::vector<std::size_t> order;

    void Run(std::int64_t memory) {
        WorkerRequest request;
        request.count = needs.size();
        request.workers = 8;
        request.stop = &stop;
        request.memory = memory;
        request.begin = [this, memory](std::size_t i) {
            return PageWork{needs[i], [this, memory, i] {
                                Count(needs[i], 1, memory);
                                std::this_thread::sleep_for(std::chrono::milliseconds(2));
                                Count(-needs[i], -1, memory);
                                FileOutcome outcome;
                                outcome.end = FileOutcome::End::kConverted;
                                return outcome;
                            }};
        };
        request.deliver = [this](std::size_t i, const FileOutcome& outcome) {
            EXPECT_EQ(outcome.end, FileOutcome::End::kConverted);
            order.push_back(i);
        };
        RunWorkers(request);
    }
    void Count(std::int64_t need, int step, std::int64_t memory) {
        const std::lock_guard hold(lock);
        inside += need;
        running += step;
        if (running > 1)
            most = std::max(most, inside);
        if (running > 1 && inside > memory)
            largeWasAlone = false;
    }
};

TEST(BatchWorkers, FilesInFlightStayWithinTheMemory) {
    GatedRun run;
    for (int i = 0; i < 60; ++i)
        run.needs.push_back(10 + 7 * (i % 9));
    run.needs[20] = 5000;  // alone
    run.Run(150);
    EXPECT_LE(run.most, 150);
    EXPECT_GT(run.most, 66) << "more than one at a time";
    EXPECT_TRUE(run.largeWasAlone);
    ASSERT_EQ(run.order.size(), 60U);
    for (std::size_t i = 0; i < 60; ++i)
        EXPECT_EQ(run.order[i], i);
}

TEST(PageMemory, GrowsWithPixelsDepthSizeAndSteps) {
    Settings plain, floats, large;
    floats.Set(PARA_LUM_CORRECT, 4);
    large.Set(PARA_RESIZE, 200);
    ImageInfo color{.width = 1000, .height = 2000, .bitsPerPixel = 24};
    ImageInfo gray = color;
    gray.bitsPerPixel = 8;
    gray.gray = true;
    const std::int64_t page = std::int64_t{1000} * 2000 * 3;
    EXPECT_GE(PageMemory(color, 500, plain), 2 * page + 500);
    EXPECT_LT(PageMemory(gray, 500, plain), PageMemory(color, 500, plain));
    EXPECT_GT(PageMemory(color, 500, floats), 8 * page);
    EXPECT_GE(PageMemory(color, 500, large), 4 * page);
}

}  // namespace
}  // namespace velloran::test
