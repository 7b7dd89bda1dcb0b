#include "batch/ProgressModel.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "core/DibImage.h"
#include "core/MessagePump.h"
#include "params/ParaBlock.h"
#include "support/Images.h"

namespace velloran {
namespace {

TEST(ProgressModel, StepsThroughItsRangeAndStaysAtTheEnd) {
    ProgressModel progress;
    progress.SetRange(0, 2);
    EXPECT_EQ(progress.GetPos(), 0);
    progress.StepIt();
    EXPECT_EQ(progress.GetPos(), 1);
    EXPECT_DOUBLE_EQ(progress.GetFraction(), 0.5);
    progress.StepIt();
    progress.StepIt();
    EXPECT_EQ(progress.GetPos(), 2);
}

TEST(ProgressModel, PositionIsKeptInTheRange) {
    ProgressModel progress;
    progress.SetRange(10, 20);
    EXPECT_EQ(progress.GetPos(), 10);
    progress.SetPos(25);
    EXPECT_EQ(progress.GetPos(), 20);
    progress.SetPos(-3);
    EXPECT_EQ(progress.GetPos(), 10);
    progress.SetRange(7, 3);
    EXPECT_EQ(progress.GetLow(), 3);
    EXPECT_EQ(progress.GetHigh(), 7);
    EXPECT_EQ(progress.GetPos(), 7);
}

TEST(ProgressModel, WholeRangeOfIntegersDoesNotOverflow) {
    ProgressModel progress;
    progress.SetRange(std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
    progress.SetPos(std::numeric_limits<int>::max());
    progress.StepIt();
    EXPECT_DOUBLE_EQ(progress.GetFraction(), 1.0);
}

TEST(ProgressModel, EmptyRangeIsDone) {
    ProgressModel progress;
    progress.SetRange(0, 0);
    EXPECT_DOUBLE_EQ(progress.GetFraction(), 1.0);
}

TEST(ProgressModel, CancelSetsTheFlagAndCloses) {
    ProgressModel progress;
    EXPECT_FALSE(progress.IsCancelled());
    EXPECT_TRUE(progress.IsOpen());
    progress.Cancel();
    EXPECT_TRUE(progress.IsCancelled());
    EXPECT_FALSE(progress.IsOpen());
}

TEST(ProgressModel, CloseIsNoCancel) {
    ProgressModel progress;
    progress.Close();
    EXPECT_FALSE(progress.IsOpen());
    EXPECT_FALSE(progress.IsCancelled());
}

TEST(ProgressModel, EachChangeIsTold) {
    int told = 0;
    ProgressModel progress([&] { ++told; });
    progress.SetRange(0, 9);
    progress.SetPos(3);
    progress.StepIt();
    progress.ShowPath(u"a.jpg");
    EXPECT_EQ(progress.GetPath(), u"a.jpg");
    EXPECT_EQ(told, 4);
    progress.Close();
    progress.Close();
    EXPECT_EQ(told, 5);
}

TEST(ProgressModel, PressDuringAStepTakesEffectAtTheNextPoll) {
    ProgressModel progress;
    bool isPressed = false;  // waits in the window's queue until somebody pumps
    SetMessagePump([&] {
        if (isPressed)
            progress.Cancel();
    });
    std::vector<int> stepsDone;
    for (int step = 1; step <= 4; ++step) {
        if (step == 2)
            isPressed = true;
        EXPECT_FALSE(progress.IsCancelled());  // nothing interrupts a step
        stepsDone.push_back(step);
        if (CancelOfProgress(&progress) != 0)
            break;
    }
    SetMessagePump({});
    EXPECT_EQ(stepsDone, (std::vector<int>{1, 2}));
}

TEST(ProgressModel, PressDuringAStepOfARunLetsThatStepRunToItsEnd) {
    ProgressModel progress;
    CParaBlock block;
    block.SetPara(PARA_ROATE, 1);
    block.SetPara(PARA_CONTRAST, 0);
    CDibImage image = test::Filled(9, 7, 8, 10);
    std::vector<std::u16string> steps;
    const auto pressAtTheFirst = [&](std::u16string_view label) {
        steps.emplace_back(label);
        progress.Cancel();
    };
    block.RunPipeline(&image, CancelOfProgress, &progress, pressAtTheFirst, kStopWhole, nullptr);
    EXPECT_EQ(steps, std::vector<std::u16string>{u"旋转"});
    test::ExpectSamePixels(image, test::Filled(7, 9, 8, 10));  // turned, and nothing else
}

}  // namespace
}  // namespace velloran
