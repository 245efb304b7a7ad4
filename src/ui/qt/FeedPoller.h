#pragma once

#include <functional>

#include <QElapsedTimer>
#include <QTimer>

namespace uiqt {

// The screen's pace for a meter: while active it calls back about thirty times a second with
// the milliseconds since the last call. Meters read their feed then, never when nothing shows.
// A meter at rest on a silent feed asks at a resting pace instead, ten times a second: it draws
// nothing then, and a desktop at rest is not woken thirty times a second for it.
class FeedPoller {
public:
    static constexpr int IntervalMs = 33;
    static constexpr int RestingIntervalMs = 100;

    explicit FeedPoller(std::function<void(int elapsedMs)> tick);
    ~FeedPoller();
    FeedPoller(const FeedPoller &) = delete;
    FeedPoller &operator=(const FeedPoller &) = delete;

    void setActive(bool on);
    bool active() const { return m_timer.isActive(); }
    // At rest: the resting pace; otherwise the screen's.
    void setResting(bool resting);
    bool resting() const { return m_timer.interval() == RestingIntervalMs; }

private:
    QTimer m_timer;
    QElapsedTimer m_clock;
    std::function<void(int)> m_tick;
};

} // namespace uiqt
