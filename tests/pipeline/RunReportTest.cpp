// What a run tells of its steps: with tables of steps made for it, and with the real one.

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

#include "core/DibImage.h"
#include "core/Refusal.h"
#include "params/ParaBlock.h"
#include "pipeline/Run.h"
#include "pipeline/RunState.h"
#include "pipeline/StepTable.h"
#include "support/Images.h"

namespace velloran {
namespace {

bool Always(const GateInput&) {
    return true;
}
void TellNothing(const ParaValues&, std::u16string&) {}

constexpr Step StepOf(int number, StepResult (*run)(RunState&)) {
    return {number, StepLabel(Label(u"a step")), Told::kAlways, Always, run, TellNothing};
}

StepResult RunsWell(RunState&) {
    return StepResult::kRan;
}
StepResult IsLeft(RunState&) {
    return StepResult::kLeft;
}
int RefuseForMemory() {
    return RefuseWhenOutOfMemory([]() -> int { throw std::bad_alloc(); });
}
StepResult RunsShort(RunState&) {
    return ResultOf(RefuseForMemory());
}
/// Says that it ran, though a part of it did not.
StepResult RunsInPart(RunState&) {
    RefuseForMemory();
    return StepResult::kRan;
}
StepResult MakesDo(RunState&) {
    return ResultOf(TryWithinMemory([]() -> int { throw std::bad_alloc(); }) != 0 ||
                    RefuseWhenOutOfMemory([] { return 1; }) != 0);
}
StepResult Throws(RunState&) {
    throw std::runtime_error("a row too many");
}

RunReport RunOf(const std::vector<Step>& steps, CancelToken cancel = {}) {
    CDibImage image = test::Filled(20, 10, 8, 0);
    RunRequest request;
    request.image = &image;
    request.cancel = cancel;
    return RunSteps(steps, request);
}

TEST(RunReport, OfARunInWhichAllRanIsWholeAndNamesNobody) {
    const RunReport report = RunOf({StepOf(1, RunsWell), StepOf(2, RunsWell)});
    EXPECT_EQ(report.end, RunEnd::kDone);
    EXPECT_TRUE(report.IsWhole());
    EXPECT_TRUE(report.Steps().empty());
    EXPECT_EQ(report.Detail(), "");
}

TEST(RunReport, NamesAStepThatWasLeftAndIsWholeAllTheSame) {
    const RunReport report = RunOf({StepOf(1, RunsWell), StepOf(2, IsLeft)});
    EXPECT_TRUE(report.IsWhole());
    ASSERT_EQ(report.Steps().size(), 1U);
    EXPECT_EQ(report.Steps()[0].step, 2);
    EXPECT_EQ(report.Steps()[0].result, StepResult::kLeft);
}

TEST(RunReport, TellsAStepWithoutMemoryFromOneThatDidNotApply) {
    for (const auto& step : {RunsShort, RunsInPart}) {
        const RunReport report = RunOf({StepOf(1, IsLeft), StepOf(2, step), StepOf(3, RunsWell)});
        EXPECT_EQ(report.end, RunEnd::kDone);
        EXPECT_FALSE(report.IsWhole());
        EXPECT_EQ(report.Worst(), StepResult::kNoMemory);
        ASSERT_EQ(report.Steps().size(), 2U);
        EXPECT_EQ(report.Steps()[1].step, 2);
        EXPECT_EQ(report.Detail(), "out of memory in step 2");
    }
}

TEST(RunReport, AWayThatNeedsLessMemoryRan) {
    EXPECT_TRUE(RunOf({StepOf(1, MakesDo)}).Steps().empty());
}

TEST(RunReport, AnotherExceptionIsAFailureAndTheWorst) {
    const RunReport report = RunOf({StepOf(4, RunsShort), StepOf(5, Throws), StepOf(6, RunsShort)});
    EXPECT_EQ(report.Worst(), StepResult::kFailed);
    ASSERT_EQ(report.Steps().size(), 3U);
    EXPECT_EQ(report.Steps()[1].result, StepResult::kFailed);
    EXPECT_EQ(report.Steps()[1].Reason(), "a row too many");
    EXPECT_EQ(report.Detail(), "failed in step 5: a row too many");
}

TEST(RunReport, OfAnEmptyRunIsWhole) {
    RunRequest request;
    EXPECT_TRUE(velloran::Run(request).IsWhole()) << "no page";
    CDibImage image = test::Filled(20, 10, 8, 0);
    request.image = &image;
    request.stop = kStopNothing;
    EXPECT_TRUE(velloran::Run(request).IsWhole());
}

std::atomic<bool> hasBegun = false;
std::atomic<int> rowsDone = 0;

/// A kernel over a million rows, each of which takes its time: unless cancelled it takes minutes.
StepResult WorksLong(RunState&) {
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static)
    for (int y = 0; y < 1'000'000; ++y) {
        if (cancel.IsCancelled())
            continue;
        hasBegun = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        ++rowsDone;
    }
    return StepResult::kRan;
}

std::atomic<bool> cameFurther = false;
StepResult ComesFurther(RunState&) {
    cameFurther = true;
    return StepResult::kRan;
}

TEST(RunCancel, ReachesAKernelFromAnotherThread) {
    hasBegun = cameFurther = false;
    rowsDone = 0;
    std::atomic<bool> stop = false;
    std::thread user([&] {
        while (!hasBegun)
            std::this_thread::yield();
        stop = true;
    });
    const RunReport report =
        RunOf({StepOf(1, WorksLong), StepOf(2, ComesFurther)}, CancelToken(stop));
    user.join();
    EXPECT_EQ(report.end, RunEnd::kCancelled);
    EXPECT_LT(rowsDone, 500'000);
    EXPECT_FALSE(cameFurther);
}

TEST(RunCancel, IsNoticedBetweenStepsAsThePollIs) {
    std::atomic<bool> stop = true;
    cameFurther = false;
    Step unpolled = StepOf(1, RunsWell);
    unpolled.poll = Poll::kNone;
    EXPECT_EQ(RunOf({unpolled, StepOf(2, ComesFurther)}, CancelToken(stop)).end,
              RunEnd::kCancelled);
    EXPECT_TRUE(cameFurther) << "no poll stands behind the first step";
    cameFurther = false;
    RunOf({StepOf(1, RunsWell), StepOf(2, ComesFurther)}, CancelToken(stop));
    EXPECT_FALSE(cameFurther);
}

TEST(RunCancel, DuringTheWorkAtAStopCountsToo) {
    static std::atomic<bool> stop;
    stop = false;
    Step step = StepOf(5, RunsWell);
    step.stops = {kStopWhole};
    step.atStop = [](RunState&) {
        stop = true;
        return StepResult::kRan;
    };
    EXPECT_EQ(RunOf({step}, CancelToken(stop)).end, RunEnd::kCancelled);
}

StepResult FindsLines(RunState& state) {
    state.found.splitLines = {{7, 8, 9}};
    return StepResult::kRan;
}

TEST(RunFound, IsHandedBackAndTheRequestStaysAsItWas) {
    CDibImage image = test::Filled(20, 10, 8, 0);
    RunRequest request;
    request.image = &image;
    const RunReport report = RunSteps(std::vector{StepOf(2, FindsLines)}, request);
    EXPECT_EQ(report.found.splitLines, (std::array{7, 8, 9}));
    EXPECT_EQ(request.settings, Settings());
}

TEST(RunFound, ValuesReachTheBlockAndTheValuesOfTheNextPage) {
    FoundValues found;
    EXPECT_TRUE(found.IsEmpty());
    found.splitLines = {{1, 2, 3}};
    found.corners = {{4, 5, 6, 7}};
    std::array<std::int32_t, 16> points{};
    for (int i = 0; i < 16; ++i)
        points[static_cast<std::size_t>(i)] = 100 + i;
    found.curvePoints = points;
    EXPECT_FALSE(found.IsEmpty());
    Settings settings;
    CParaBlock block;
    found.ApplyTo(settings.values);
    found.ApplyTo(block);
    EXPECT_EQ(block.GetValues(), settings.values);
    EXPECT_EQ(settings[PARA_PAGE_SPLIT_LEFT], 1);
    EXPECT_EQ(settings[PARA_PAGE_SPLIT_RIGHT], 2);
    EXPECT_EQ(settings[PARA_PAGE_SPLIT_MID], 3);
    EXPECT_EQ(settings[PARA_CRT_PT_LT], 4);
    EXPECT_EQ(settings[PARA_CRT_PT_RT], 5);
    EXPECT_EQ(settings[PARA_CRT_PT_RB], 6);
    EXPECT_EQ(settings[PARA_CRT_PT_LB], 7);
    EXPECT_EQ(settings[PARA_CRT_DEWARPING_TOP_1], 100);
    EXPECT_EQ(settings[PARA_CRT_DEWARPING_TOP_8], 107);
    EXPECT_EQ(settings[PARA_CRT_DEWARPING_BTM_1], 108);
    EXPECT_EQ(settings[PARA_CRT_DEWARPING_BTM_8], 115);
}

TEST(RunFound, NothingFoundChangesNothing) {
    CParaBlock block;
    FoundValues().ApplyTo(block);
    EXPECT_TRUE(block.Equals(CParaBlock()));
}

}  // namespace
}  // namespace velloran
