#include "FeedPoller.h"

#include <algorithm>

namespace uiqt {

namespace {
// A loop held up for long (a modal box) resumes with one step of this size, not a leap.
constexpr qint64 LongestStepMs = 250;
} // namespace

FeedPoller::FeedPoller(std::function<void(int elapsedMs)> tick)
    : m_tick(std::move(tick))
{
    m_timer.setInterval(IntervalMs);
    QObject::connect(&m_timer, &QTimer::timeout, [this] {
        const qint64 elapsed = m_clock.restart();
        m_tick(static_cast<int>(std::clamp<qint64>(elapsed, 0, LongestStepMs)));
    });
}

FeedPoller::~FeedPoller()
{
    m_timer.stop();
}

void FeedPoller::setActive(bool on)
{
    if (on == m_timer.isActive())
        return;
    if (on) {
        m_clock.start();
        m_timer.start();
    } else {
        m_timer.stop();
    }
}

void FeedPoller::setResting(bool resting)
{
    const int interval = resting ? RestingIntervalMs : IntervalMs;
    if (m_timer.interval() != interval)
        m_timer.setInterval(interval);
}

} // namespace uiqt
