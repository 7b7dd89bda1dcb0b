#include "core/MessagePump.h"

#include <gtest/gtest.h>

#include <thread>

namespace velloran {
namespace {

class MessagePump : public testing::Test {
 protected:
    ~MessagePump() override { SetMessagePump({}); }
};

TEST_F(MessagePump, WithoutAFrontEndNothingIsPumped) {
    SetMessagePump({});
    PumpMessages();
}

TEST_F(MessagePump, EachCallPumpsOnce) {
    int pumped = 0;
    SetMessagePump([&] { ++pumped; });
    PumpMessages();
    PumpMessages();
    EXPECT_EQ(pumped, 2);
}

TEST_F(MessagePump, AnotherThreadDoesNotHandleTheWindowsMessages) {
    int pumped = 0;
    SetMessagePump([&] { ++pumped; });
    std::thread(PumpMessages).join();
    EXPECT_EQ(pumped, 0);
    PumpMessages();
    EXPECT_EQ(pumped, 1);
}

TEST_F(MessagePump, PumpMayTakeItselfAwayWhileItRuns) {
    int pumped = 0;
    SetMessagePump([&] {
        SetMessagePump({});
        ++pumped;  // the function still stands
    });
    PumpMessages();
    PumpMessages();
    EXPECT_EQ(pumped, 1);
}

}  // namespace
}  // namespace velloran
