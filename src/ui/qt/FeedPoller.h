#pragma once

#include <functional>

#include <QElapsedTimer>
#include <QTimer>

namespace uiqt {

// The screen's pace for a meter: while active it calls back about thirty times a second with
// the milliseconds since the last call. Meters read their feed then, never when nothing shows.
class FeedPoller {
public:
    static constexpr int IntervalMs = 33;

    explicit FeedPoller(std::function<void(int elapsedMs)> tick);
    ~FeedPoller();
    FeedPoller(const FeedPoller &) = delete;
    FeedPoller &operator=(const FeedPoller &) = delete;

    void setActive(bool on);
    bool active() const { return m_timer.isActive(); }

private:
    QTimer m_timer;
    QElapsedTimer m_clock;
    std::function<void(int)> m_tick;
};

} // namespace uiqt
