#include "VirtualEventLoop.h"

#include <chrono>

#include <limits>

namespace rt {

EventLoop::TimerId VirtualEventLoop::startTimer(int intervalMs, Handler tick)
{
    const TimerId id = m_nextId++;
    m_timers[id] = TimerEntry{intervalMs, m_now + intervalMs, std::move(tick)};
    return id;
}

void VirtualEventLoop::stopTimer(TimerId id)
{
    m_timers.erase(id);
}

void VirtualEventLoop::post(Handler handler)
{
    {
        std::lock_guard lock(m_postedMutex);
        m_posted.push_back(std::move(handler));
    }
    m_postedSignal.notify_all();
}

bool VirtualEventLoop::runPosted()
{
    bool ran = false;
    for (;;) {
        Handler next;
        {
            std::lock_guard lock(m_postedMutex);
            if (m_posted.empty())
                return ran;
            next = std::move(m_posted.front());
            m_posted.pop_front();
        }
        deliver(next);
        ran = true;
    }
}

bool VirtualEventLoop::runNextUntil(int64_t limit)
{
    if (runPosted())
        return true;
    // The earliest timer, ties in the order the timers were started.
    auto earliest = m_timers.end();
    for (auto it = m_timers.begin(); it != m_timers.end(); ++it) {
        if (earliest == m_timers.end() || it->second.due < earliest->second.due)
            earliest = it;
    }
    if (earliest == m_timers.end() || earliest->second.due > limit)
        return false;
    const TimerId id = earliest->first;
    TimerEntry &entry = earliest->second;
    if (entry.due > m_now)
        m_now = entry.due;
    // A zero interval would never let time move: such a timer ticks once a millisecond.
    entry.due = m_now + (entry.intervalMs > 0 ? entry.intervalMs : 1);
    Handler tick = entry.tick; // the handler may stop or restart its own timer
    deliver(tick);
    (void)id;
    return true;
}

void VirtualEventLoop::doEvents()
{
    while (runNextUntil(m_now)) {
    }
}

void VirtualEventLoop::wait(int64_t ms)
{
    const int64_t target = m_now + ms;
    while (runNextUntil(target)) {
    }
    if (m_now < target)
        m_now = target;
}

bool VirtualEventLoop::runUntil(const std::function<bool()> &done)
{
    const int64_t limit = m_now + m_modalHorizon;
    while (!done()) {
        if (!runNextUntil(limit))
            return false;
    }
    return true;
}

bool VirtualEventLoop::hasPending()
{
    std::lock_guard lock(m_postedMutex);
    return !m_posted.empty() || !m_timers.empty();
}

void VirtualEventLoop::waitForPost(int ms)
{
    std::unique_lock lock(m_postedMutex);
    m_postedSignal.wait_for(lock, std::chrono::milliseconds(ms), [this] { return !m_posted.empty(); });
}

bool VirtualEventLoop::hasPosted()
{
    std::lock_guard lock(m_postedMutex);
    return !m_posted.empty();
}

} // namespace rt
