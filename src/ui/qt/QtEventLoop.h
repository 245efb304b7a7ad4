#pragma once

#include <map>
#include <memory>

#include <QElapsedTimer>

#include "runtime/EventLoop.h"

class QObject;
class QTimer;

namespace uiqt {

// The program's loop on Qt's: timers are QTimers, posted handlers are queued calls, a modal
// wait is a nested QEventLoop. Make it on the GUI thread, after the QApplication; components
// that post from their own threads must have stopped before it goes.
class QtEventLoop : public rt::EventLoop {
public:
    QtEventLoop();
    ~QtEventLoop() override;

    TimerId startTimer(int intervalMs, Handler tick) override;
    void stopTimer(TimerId id) override;
    void post(Handler handler) override;
    void doEvents() override;
    // Returns false only when the application is quitting and done() still doesn't hold.
    bool runUntil(const std::function<bool()> &done) override;
    int64_t now() const override;

    // Timers running now, for tests.
    int timerCount() const { return static_cast<int>(m_timers.size()); }

private:
    struct Entry {
        QTimer *timer;
        Handler tick;
    };
    void tick(TimerId id);

    // Receiver of posted handlers and parent of the timers: deleting it drops what is pending.
    std::unique_ptr<QObject> m_context;
    std::map<TimerId, Entry> m_timers;
    TimerId m_nextId = 1;
    QElapsedTimer m_clock;
};

} // namespace uiqt
