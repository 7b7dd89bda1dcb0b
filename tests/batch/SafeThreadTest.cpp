#include "batch/SafeThread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <new>
#include <string>

namespace velloran {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

/// Longer than any of these tests takes; only a failure waits it out.
constexpr auto kLong = 60s;

/// Tells that it has begun, then sleeps until it is asked to end.
struct Sleeper {
    CSafeThread& thread;
    CManualEvent begun{};
    std::atomic<int> runs{0};

    CSafeThread::Procedure Procedure() {
        return [this](void*) -> std::uint32_t {
            ++runs;
            begun.Set();
            return thread.WaitStop(kLong) ? 1 : 2;
        };
    }
};

TEST(ManualEvent, StaysSignalledUntilReset) {
    CManualEvent event;
    EXPECT_FALSE(event.IsSet());
    EXPECT_FALSE(event.Wait(0ms));
    event.Set();
    EXPECT_TRUE(event.Wait(0ms));
    EXPECT_TRUE(event.Wait(0ms));
    event.Reset();
    EXPECT_FALSE(event.IsSet());
}

TEST(SafeThread, StopOnANeverStartedThreadReturnsAtOnce) {
    CSafeThread thread;
    thread.Stop();
    EXPECT_FALSE(thread.IsRunning());
    EXPECT_FALSE(thread.IsStopRequested());
}

TEST(SafeThread, StartWithoutAProcedureDoesNothing) {
    CSafeThread thread;
    EXPECT_FALSE(thread.Start());
    EXPECT_FALSE(thread.IsRunning());
}

TEST(SafeThread, ProcedureGetsItsArgumentAndItsResultIsTheThreads) {
    CSafeThread thread;
    int number = 41;
    thread.SetProcedure(
        [](void* argument) { return static_cast<std::uint32_t>(++*static_cast<int*>(argument)); },
        &number);
    ASSERT_TRUE(thread.Start());
    thread.WaitFinished();
    EXPECT_EQ(thread.GetResult(), 42u);
    EXPECT_EQ(number, 42);
    EXPECT_FALSE(thread.IsRunning());
}

TEST(SafeThread, StopAsksAndWaitsForTheEnd) {
    CSafeThread thread;
    Sleeper sleeper{thread};
    thread.SetProcedure(sleeper.Procedure());
    ASSERT_TRUE(thread.Start());
    sleeper.begun.Wait();
    EXPECT_TRUE(thread.IsRunning());
    thread.Stop();
    EXPECT_FALSE(thread.IsRunning());
    EXPECT_EQ(thread.GetResult(), 1u);
}

TEST(SafeThread, CanBeStartedAgainAfterAStop) {
    CSafeThread thread;
    Sleeper sleeper{thread};
    thread.SetProcedure(sleeper.Procedure());
    for (int run = 1; run <= 3; ++run) {
        sleeper.begun.Reset();
        ASSERT_TRUE(thread.Start());
        EXPECT_FALSE(thread.IsStopRequested());
        sleeper.begun.Wait();
        thread.Stop();
        EXPECT_EQ(sleeper.runs, run);
        EXPECT_FALSE(thread.IsStopRequested());
    }
}

TEST(SafeThread, CanBeStartedAgainAfterItEndedByItself) {
    CSafeThread thread;
    std::atomic<int> runs{0};
    thread.SetProcedure([&](void*) -> std::uint32_t { return static_cast<std::uint32_t>(++runs); });
    for (int run = 1; run <= 3; ++run) {
        ASSERT_TRUE(thread.Start());
        thread.WaitFinished();
        EXPECT_EQ(runs, run);
    }
}

TEST(SafeThread, StopWaitsForTheSecondRunAfterAFirstThatEndedByItself) {
    CSafeThread thread;
    Sleeper sleeper{thread};
    thread.SetProcedure([](void*) -> std::uint32_t { return 7; });
    ASSERT_TRUE(thread.Start());
    thread.WaitFinished();
    thread.SetProcedure(sleeper.Procedure());
    ASSERT_TRUE(thread.Start());
    sleeper.begun.Wait();
    thread.Stop();
    EXPECT_EQ(thread.GetResult(), 1u);  // the second run has ended, and by the request
}

TEST(SafeThread, SetProcedureWhileRunningStopsAndTheNewOneWaitsForStart) {
    CSafeThread thread;
    Sleeper first{thread}, second{thread};
    thread.SetProcedure(first.Procedure());
    ASSERT_TRUE(thread.Start());
    first.begun.Wait();
    thread.SetProcedure(second.Procedure());
    EXPECT_FALSE(thread.IsRunning());
    EXPECT_EQ(thread.GetResult(), 1u);
    EXPECT_EQ(second.runs, 0);
    ASSERT_TRUE(thread.Start());
    second.begun.Wait();
    EXPECT_EQ(second.runs, 1);
    EXPECT_EQ(first.runs, 1);
    thread.Stop();
}

TEST(SafeThread, StartWhileRunningStopsFirst) {
    CSafeThread thread;
    std::atomic<int> atOnce{0}, most{0}, runs{0};
    CManualEvent begun;
    thread.SetProcedure([&](void*) -> std::uint32_t {
        ++runs;
        most = std::max(most.load(), ++atOnce);
        begun.Set();
        thread.WaitStop(kLong);
        --atOnce;
        return 0;
    });
    ASSERT_TRUE(thread.Start());
    begun.Wait();
    begun.Reset();
    ASSERT_TRUE(thread.Start());
    begun.Wait();
    thread.Stop();
    EXPECT_EQ(runs, 2);
    EXPECT_EQ(most, 1);
}

TEST(SafeThread, WaitStopEndsWithItsTimeWithoutARequest) {
    CSafeThread thread;
    EXPECT_FALSE(thread.WaitStop(0ms));
    EXPECT_FALSE(thread.WaitStop(1ms));
}

TEST(SafeThread, TwoThreadsHaveEachTheirOwnEvents) {
    CSafeThread one, two;
    Sleeper inOne{one}, inTwo{two};
    one.SetProcedure(inOne.Procedure());
    two.SetProcedure(inTwo.Procedure());
    ASSERT_TRUE(one.Start());
    ASSERT_TRUE(two.Start());
    inOne.begun.Wait();
    inTwo.begun.Wait();
    one.Stop();
    EXPECT_FALSE(one.IsRunning());
    EXPECT_TRUE(two.IsRunning());
    EXPECT_FALSE(two.IsStopRequested());
    two.Stop();
}

TEST(SafeThread, StopFromTheThreadItselfOnlyAsks) {
    CSafeThread thread;
    std::atomic<bool> asked{false}, started{true};
    thread.SetProcedure([&](void*) -> std::uint32_t {
        thread.Stop();
        asked = thread.IsStopRequested();
        started = thread.Start();
        thread.SetProcedure({});
        return 5;
    });
    ASSERT_TRUE(thread.Start());
    thread.WaitFinished();
    EXPECT_TRUE(asked);
    EXPECT_FALSE(started);
    EXPECT_EQ(thread.GetResult(), 5u);
    thread.Stop();
    EXPECT_FALSE(thread.IsStopRequested());
    EXPECT_TRUE(thread.Start());  // the procedure was kept
}

TEST(SafeThread, ExceptionEndsTheThreadAndNotTheProgram) {
    CSafeThread thread;
    thread.SetProcedure([](void*) -> std::uint32_t { throw std::bad_alloc(); });
    ASSERT_TRUE(thread.Start());
    thread.WaitFinished();
    EXPECT_EQ(thread.GetResult(), CSafeThread::kEndedByException);
}

TEST(SafeThread, DestructorStops) {
    std::atomic<bool> ended{false};
    CManualEvent begun;
    {
        CSafeThread thread;
        thread.SetProcedure([&](void*) -> std::uint32_t {
            begun.Set();
            ended = thread.WaitStop(kLong);
            return 0;
        });
        ASSERT_TRUE(thread.Start());
        begun.Wait();
    }
    EXPECT_TRUE(ended);
}

class RecordingThread : public CSafeThread {
 public:
    ~RecordingThread() override { Stop(); }
    std::string record;

 protected:
    void OnStopRequest() override {
        record += IsStopRequested() ? "asked after the request;" : "asked before the request;";
    }
};

TEST(SafeThread, OnStopRequestComesBeforeTheRequestAndOnlyForARunningThread) {
    RecordingThread thread;
    thread.Stop();
    EXPECT_EQ(thread.record, "");
    Sleeper sleeper{thread};
    thread.SetProcedure(sleeper.Procedure());
    ASSERT_TRUE(thread.Start());
    sleeper.begun.Wait();
    thread.Stop();
    EXPECT_EQ(thread.record, "asked before the request;");
    thread.Stop();
    EXPECT_EQ(thread.record, "asked before the request;");
}

TEST(NormalThread, StopWakesASleepingLoopAtOnce) {
    CNormalThread thread;
    CManualEvent begun;
    thread.SetProcedure([&](void*) -> std::uint32_t {
        begun.Set();
        while (!thread.IsStopRequested())
            thread.WaitWake(kLong);
        return 3;
    });
    const auto start = Clock::now();
    ASSERT_TRUE(thread.Start());
    begun.Wait();
    thread.Stop();
    EXPECT_LT(Clock::now() - start, kLong / 2);
    EXPECT_EQ(thread.GetResult(), 3u);
}

TEST(NormalThread, WakeIsQuietAgainForTheNextRun) {
    CNormalThread thread;
    Sleeper sleeper{thread};
    thread.SetProcedure(sleeper.Procedure());
    ASSERT_TRUE(thread.Start());
    sleeper.begun.Wait();
    thread.Stop();
    EXPECT_FALSE(thread.WaitWake(0ms));
}

}  // namespace
}  // namespace velloran
