#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "runtime/VirtualEventLoop.h"

using namespace rt;

TEST(VirtualEventLoop, TimerTicksOncePerIntervalOfVirtualTime)
{
    VirtualEventLoop loop;
    int ticks = 0;
    std::vector<int64_t> times;
    loop.startTimer(10, [&] {
        ++ticks;
        if (times.size() < 3)
            times.push_back(loop.now());
    });
    loop.wait(7000);
    EXPECT_EQ(ticks, 700);
    EXPECT_EQ(loop.now(), 7000);
    EXPECT_EQ(times, (std::vector<int64_t>{10, 20, 30}));
    loop.wait(5);
    EXPECT_EQ(ticks, 700);
    loop.wait(5);
    EXPECT_EQ(ticks, 701);
}

TEST(VirtualEventLoop, WaitWithoutTimersMovesTheClock)
{
    VirtualEventLoop loop;
    loop.wait(250);
    EXPECT_EQ(loop.now(), 250);
    EXPECT_FALSE(loop.hasPending());
}

TEST(VirtualEventLoop, TimersRunInOrderOfDueTime)
{
    VirtualEventLoop loop;
    std::string order;
    loop.startTimer(30, [&] { order += "C"; });
    loop.startTimer(10, [&] { order += "A"; });
    loop.startTimer(20, [&] { order += "B"; });
    loop.wait(30);
    // 10: A; 20: A and B; 30: C and A. Equal due times go in the order the timers were started.
    EXPECT_EQ(order, "AABCA");
}

TEST(VirtualEventLoop, EqualDueTimesGoInStartOrder)
{
    VirtualEventLoop loop;
    std::string order;
    loop.startTimer(50, [&] { order += "1"; });
    loop.startTimer(50, [&] { order += "2"; });
    loop.wait(50);
    EXPECT_EQ(order, "12");
}

TEST(VirtualEventLoop, DoEventsRunsOnlyWhatIsDue)
{
    VirtualEventLoop loop;
    int ticks = 0;
    loop.startTimer(100, [&] { ++ticks; });
    loop.doEvents();
    EXPECT_EQ(ticks, 0);
    EXPECT_EQ(loop.now(), 0);
    int posted = 0;
    loop.post([&] { ++posted; });
    loop.doEvents();
    EXPECT_EQ(posted, 1);
    EXPECT_EQ(ticks, 0);
}

TEST(VirtualEventLoop, PostFromAnotherThreadArrivesAtNextDoEvents)
{
    VirtualEventLoop loop;
    std::vector<int> got;
    std::thread worker([&] {
        for (int i = 0; i < 100; ++i)
            loop.post([&got, i] { got.push_back(i); });
    });
    worker.join();
    EXPECT_TRUE(got.empty()) << "nothing runs before the loop does";
    EXPECT_TRUE(loop.hasPending());
    loop.doEvents();
    ASSERT_EQ(got.size(), 100u);
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(got[static_cast<size_t>(i)], i);
    EXPECT_FALSE(loop.hasPending());
}

TEST(VirtualEventLoop, PostFromAnotherThreadArrivesDuringWait)
{
    VirtualEventLoop loop;
    bool arrived = false;
    std::thread worker([&] { loop.post([&] { arrived = true; }); });
    worker.join();
    loop.wait(1);
    EXPECT_TRUE(arrived);
}

TEST(VirtualEventLoop, TimerStoppedFromItsOwnTick)
{
    VirtualEventLoop loop;
    int ticks = 0;
    EventLoop::TimerId id = 0;
    id = loop.startTimer(10, [&] {
        if (++ticks == 3)
            loop.stopTimer(id);
    });
    loop.wait(1000);
    EXPECT_EQ(ticks, 3);
    EXPECT_FALSE(loop.hasPending());
}

TEST(VirtualEventLoop, TimerStoppingAnotherOne)
{
    VirtualEventLoop loop;
    int b = 0;
    EventLoop::TimerId idB = loop.startTimer(10, [&] { ++b; });
    loop.startTimer(25, [&] { loop.stopTimer(idB); });
    loop.wait(100);
    EXPECT_EQ(b, 2);
}

TEST(VirtualEventLoop, NestedRunUntilInsideATick)
{
    VirtualEventLoop loop;
    bool closed = false;
    int outerTicks = 0;
    int64_t returnedAt = -1;
    bool result = false;
    EventLoop::TimerId outer = 0;
    outer = loop.startTimer(10, [&] {
        if (++outerTicks > 1)
            return; // ticks again under the modal loop, as timers do
        result = loop.runUntil([&] { return closed; });
        returnedAt = loop.now();
        loop.stopTimer(outer);
    });
    loop.startTimer(100, [&] { closed = true; });
    loop.wait(200);
    EXPECT_TRUE(result);
    EXPECT_EQ(returnedAt, 100);
    // 10 (enters), then 20..100 under the modal loop.
    EXPECT_EQ(outerTicks, 10);
}

TEST(VirtualEventLoop, RunUntilGivesUpWhenNothingCanHappen)
{
    VirtualEventLoop loop;
    EXPECT_FALSE(loop.runUntil([] { return false; }));
    EXPECT_TRUE(loop.runUntil([] { return true; }));
    loop.setModalHorizon(50);
    int ticks = 0;
    loop.startTimer(30, [&] { ++ticks; });
    EXPECT_FALSE(loop.runUntil([] { return false; }));
    EXPECT_EQ(ticks, 1) << "only ticks within the horizon run";
}

TEST(VirtualEventLoop, DeliverRoutesRuntimeErrorsToTheFatalHandler)
{
    VirtualEventLoop loop;
    int fatal = 0;
    loop.setFatalErrorHandler([&](const RuntimeError &e) { fatal = e.number(); });
    loop.post([] { rt::raise(ErrDivisionByZero); });
    int after = 0;
    loop.post([&] { ++after; });
    loop.doEvents();
    EXPECT_EQ(fatal, 11);
    EXPECT_EQ(after, 1);
}

TEST(VirtualEventLoop, DeliverRoutesEndToTheEndHandler)
{
    VirtualEventLoop loop;
    bool ended = false;
    int fatal = 0;
    loop.setFatalErrorHandler([&](const RuntimeError &e) { fatal = e.number(); });
    loop.setProgramEndHandler([&] { ended = true; });
    loop.deliver([] { endProgram(); });
    EXPECT_TRUE(ended);
    EXPECT_EQ(fatal, 0);
}

TEST(VirtualEventLoop, DeliverWithoutHandlersRethrows)
{
    VirtualEventLoop loop;
    EXPECT_THROW(loop.deliver([] { rt::raise(ErrOverflow); }), RuntimeError);
    EXPECT_THROW(loop.deliver([] { endProgram(); }), ProgramEnd);
    bool ran = false;
    loop.deliver([&] { ran = true; });
    EXPECT_TRUE(ran);
}

TEST(VirtualEventLoop, TimerErrorGoesToFatalHandlerAndTimerKeepsGoing)
{
    VirtualEventLoop loop;
    int fatals = 0;
    loop.setFatalErrorHandler([&](const RuntimeError &) { ++fatals; });
    loop.startTimer(10, [] { rt::raise(ErrSubscript); });
    loop.wait(30);
    EXPECT_EQ(fatals, 3);
}
