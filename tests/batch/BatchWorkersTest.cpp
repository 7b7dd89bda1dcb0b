#include "batch/BatchWorkers.h"

#include <gtest/gtest.h>

#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

namespace velloran::test {
namespace {

FileOutcome Converted() {
    FileOutcome outcome;
    outcome.end = FileOutcome::End::kConverted;
    return outcome;
}

/// Runs `count` files on `workers` threads and notes what came.
struct Trial {
    std::atomic<bool> stop{false};
    std::atomic<int> running{0}, mostRunning{0};
    std::vector<std::size_t> delivered;
    std::vector<FileOutcome::End> ends;
    std::function<FileOutcome(std::size_t index)> work;
    WorkerRequest request;

    Trial(std::size_t count, int workers) {
        request.count = count;
        request.workers = workers;
        request.stop = &stop;
        work = [this](std::size_t index) {
            const int now = ++running;
            int most = mostRunning;
            while (now > most && !mostRunning.compare_exchange_weak(most, now)) {
            }
            // Early files take longest, so that they end out of order.
            std::this_thread::sleep_for(std::chrono::milliseconds(index < 4 ? 20 - 4 * index : 1));
            --running;
            return Converted();
        };
        request.begin = [this](std::size_t index) {
            return PageWork{0, [this, index] { return work(index); }};
        };
        request.deliver = [this](std::size_t index, const FileOutcome& outcome) {
            delivered.push_back(index);
            ends.push_back(outcome.end);
        };
    }
};

TEST(BatchWorkers, OutcomesComeInOrderOnTheCallersThread) {
    Trial trial(20, 4);
    const std::thread::id caller = std::this_thread::get_id();
    const auto deliver = trial.request.deliver;
    trial.request.deliver = [&](std::size_t index, FileOutcome outcome) {
        EXPECT_EQ(std::this_thread::get_id(), caller);
        deliver(index, std::move(outcome));
    };
    RunWorkers(trial.request);
    ASSERT_EQ(trial.delivered.size(), 20U);
    for (std::size_t i = 0; i < 20; ++i)
        EXPECT_EQ(trial.delivered[i], i);
    EXPECT_GT(trial.mostRunning, 1);
    EXPECT_LE(trial.mostRunning, 4);
}

TEST(BatchWorkers, WhileValuesAreToBeFoundOneFileRunsAtATime) {
    Trial trial(20, 4);
    std::atomic<int> finished{0};
    const auto work = trial.work;
    std::mutex lock;
    std::vector<std::pair<std::size_t, int>> seen;  // file, and how many ran with it
    trial.work = [&](std::size_t index) {
        FileOutcome outcome = work(index);
        const std::lock_guard hold(lock);
        seen.emplace_back(index, trial.mostRunning.load());
        ++finished;
        return outcome;
    };
    trial.request.needsAlone = [&] { return finished < 3; };
    RunWorkers(trial.request);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(seen[i].first, i);
        EXPECT_EQ(seen[i].second, 1);
    }
    EXPECT_GT(trial.mostRunning, 1) << "then several";
}

TEST(BatchWorkers, FilesBehindAStopAreToldAsStopped) {
    Trial trial(50, 2);
    const auto work = trial.work;
    trial.work = [&](std::size_t index) {
        if (index == 5)
            trial.stop = true;
        return work(index);
    };
    RunWorkers(trial.request);
    ASSERT_EQ(trial.ends.size(), 50U);
    EXPECT_EQ(trial.ends[0], FileOutcome::End::kConverted);
    EXPECT_EQ(trial.ends[5], FileOutcome::End::kConverted);
    EXPECT_EQ(trial.ends[20], FileOutcome::End::kStopped);
    EXPECT_EQ(trial.ends[49], FileOutcome::End::kStopped);
}

TEST(BatchWorkers, ThePollStopsARun) {
    Trial trial(100000, 2);
    int polls = 0;
    trial.request.poll = [&] { return ++polls > 3; };
    RunWorkers(trial.request);
    EXPECT_TRUE(trial.stop);
    EXPECT_EQ(trial.ends.back(), FileOutcome::End::kStopped);
}

TEST(BatchWorkers, NoFilesAreNoWork) {
    Trial trial(0, 3);
    RunWorkers(trial.request);
    EXPECT_TRUE(trial.delivered.empty());
}

TEST(WorkShares, RowLoopsTakeWhatFewFilesLeave) {
    EXPECT_EQ(ShareProcessors(40, 8, 8), (WorkShares{8, 1, 8}));
    EXPECT_EQ(ShareProcessors(2, 8, 8), (WorkShares{2, 4, 8}));
    EXPECT_EQ(ShareProcessors(1, 8, 8), (WorkShares{1, 8, 8}));
    EXPECT_EQ(ShareProcessors(3, 8, 8), (WorkShares{3, 2, 6}));
    EXPECT_EQ(ShareProcessors(40, 1, 8), (WorkShares{1, 1, 1})) << "one file on one thread";
    EXPECT_EQ(ShareProcessors(40, 16, 2), (WorkShares{16, 1, 2}));
    EXPECT_EQ(ShareProcessors(0, 4, 2), (WorkShares{1, 2, 2}));
}

}  // namespace
}  // namespace velloran::test
