#include "QtEventLoop.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QEventLoop>
#include <QObject>
#include <QTimer>

namespace uiqt {

QtEventLoop::QtEventLoop()
    : m_context(std::make_unique<QObject>())
{
    m_clock.start();
}

QtEventLoop::~QtEventLoop()
{
    // The timers are children of the context and go with it.
    m_timers.clear();
}

rt::EventLoop::TimerId QtEventLoop::startTimer(int intervalMs, Handler tick)
{
    const TimerId id = m_nextId++;
    auto *timer = new QTimer(m_context.get());
    timer->setTimerType(Qt::PreciseTimer);
    // A zero interval would tick whenever the loop is idle and starve it; one millisecond
    // is the finest the platform's timers went anyway.
    timer->setInterval(intervalMs > 0 ? intervalMs : 1);
    QObject::connect(timer, &QTimer::timeout, m_context.get(), [this, id] { this->tick(id); });
    m_timers[id] = Entry{timer, std::move(tick)};
    timer->start();
    return id;
}

void QtEventLoop::stopTimer(TimerId id)
{
    auto it = m_timers.find(id);
    if (it == m_timers.end())
        return;
    it->second.timer->stop();
    // The timer may be stopping itself from its own tick.
    it->second.timer->deleteLater();
    m_timers.erase(it);
}

void QtEventLoop::tick(TimerId id)
{
    auto it = m_timers.find(id);
    if (it == m_timers.end())
        return;
    // A copy: the tick may stop or restart its own timer.
    const Handler handler = it->second.tick;
    deliver(handler);
}

void QtEventLoop::post(Handler handler)
{
    QMetaObject::invokeMethod(
        m_context.get(), [this, handler = std::move(handler)] { deliver(handler); }, Qt::QueuedConnection);
}

void QtEventLoop::doEvents()
{
    QCoreApplication::processEvents(QEventLoop::AllEvents);
}

bool QtEventLoop::runUntil(const std::function<bool()> &done)
{
    if (done())
        return true;
    QEventLoop nested;
    const auto check = [&] {
        if (done())
            nested.quit();
    };
    // Checked each time the loop has run what was pending, and on a short poll for a change
    // that comes with no event of its own.
    QMetaObject::Connection afterEvents;
    if (auto *dispatcher = QAbstractEventDispatcher::instance())
        afterEvents = QObject::connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, &nested, check);
    QTimer poll;
    poll.setInterval(10);
    QObject::connect(&poll, &QTimer::timeout, &nested, check);
    poll.start();
    nested.exec();
    QObject::disconnect(afterEvents);
    return done();
}

int64_t QtEventLoop::now() const
{
    return m_clock.elapsed();
}

} // namespace uiqt
