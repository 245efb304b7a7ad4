#pragma once

#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>

#include "EventLoop.h"

namespace rt {

// Virtual time for tests and scenarios: wait(7000) runs every timer tick and posted event due
// within those seven seconds, in time order, at once.
class VirtualEventLoop : public EventLoop {
public:
    TimerId startTimer(int intervalMs, Handler tick) override;
    void stopTimer(TimerId id) override;
    void post(Handler handler) override;
    void doEvents() override;
    bool runUntil(const std::function<bool()> &done) override;
    int64_t now() const override { return m_now; }

    // Let ms of virtual time pass.
    void wait(int64_t ms);
    // Posts and timers waiting; a horizon bounds how far runUntil looks for a timer.
    bool hasPending();
    // Events posted and not yet run.
    bool hasPosted();
    // Blocks the calling thread for at most ms of real time, less when an event is posted.
    void waitForPost(int ms);
    void setModalHorizon(int64_t ms) { m_modalHorizon = ms; }

private:
    struct TimerEntry {
        int intervalMs;
        int64_t due;
        Handler tick;
    };
    bool runPosted();
    // Runs the earliest event due at or before `limit`; false if there is none.
    bool runNextUntil(int64_t limit);

    int64_t m_now = 0;
    TimerId m_nextId = 1;
    std::map<TimerId, TimerEntry> m_timers;
    std::mutex m_postedMutex;
    std::deque<Handler> m_posted;
    std::condition_variable m_postedSignal;
    int64_t m_modalHorizon = 24LL * 3600 * 1000;
};

} // namespace rt
