#include <gtest/gtest.h>

#include "KitFixture.h"
#include "ui/Timer.h"

namespace {

class TimedWindow : public ui::Window {
public:
    static constexpr const char *formName = "TimedWindow";
    explicit TimedWindow(ui::AppContext &app) : Window(app, formName), fast(*this, "fast", 10, true), idle(*this, "idle", 500, false)
    {
        fast.Tick = [this] { ++fastTicks; };
        idle.Tick = [this] { ++idleTicks; };
    }
    ui::Timer fast;
    ui::Timer idle;
    int fastTicks = 0;
    int idleTicks = 0;
};

struct TimerTest : KitFixture, ::testing::Test {
    TimerTest() { app.form<TestWindow>(); }
};

TEST_F(TimerTest, EnabledTimerTicksEveryInterval)
{
    auto &w = app.form<TimedWindow>();
    loop.wait(1000);
    EXPECT_EQ(w.fastTicks, 100);
    EXPECT_EQ(w.idleTicks, 0);
}

TEST_F(TimerTest, EnablingStartsOneIntervalLater)
{
    auto &w = app.form<TimedWindow>();
    loop.wait(100);
    w.idle.setEnabled(true);
    loop.wait(499);
    EXPECT_EQ(w.idleTicks, 0);
    loop.wait(1);
    EXPECT_EQ(w.idleTicks, 1);
}

TEST_F(TimerTest, TimerCanStopItselfInItsTick)
{
    auto &w = app.form<TimedWindow>();
    w.fast.Tick = [&] {
        if (++w.fastTicks == 3)
            w.fast.setEnabled(false);
    };
    loop.wait(1000);
    EXPECT_EQ(w.fastTicks, 3);
    EXPECT_EQ(w.fast.property("Enabled", {}).value(), "0");
}

TEST_F(TimerTest, ZeroIntervalNeverTicks)
{
    auto &w = app.form<TimedWindow>();
    w.idle.setInterval(0);
    w.idle.setEnabled(true);
    loop.wait(1000);
    EXPECT_EQ(w.idleTicks, 0);
}

TEST_F(TimerTest, UnloadedWindowsTimersStop)
{
    int ticks = 0;
    {
        auto &w = app.form<TimedWindow>();
        w.fast.Tick = [&] { ++ticks; };
        loop.wait(50);
        w.Unload();
    }
    app.afterEvent();
    loop.wait(1000);
    EXPECT_EQ(ticks, 5);
}

} // namespace
