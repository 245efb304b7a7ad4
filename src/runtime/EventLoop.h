#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "RuntimeError.h"

namespace rt {

// The one loop all logic runs on. Closed components post their events here from their own
// threads; timers tick here; modal boxes run a nested round of it.
class EventLoop {
public:
    using TimerId = int;
    using Handler = std::function<void()>;

    virtual ~EventLoop() = default;

    // A repeating timer; the first tick comes one interval from now.
    virtual TimerId startTimer(int intervalMs, Handler tick) = 0;
    virtual void stopTimer(TimerId id) = 0;
    // Queue a handler from any thread; it runs on the loop's thread.
    virtual void post(Handler handler) = 0;
    // DoEvents: run what is pending now, then return.
    virtual void doEvents() = 0;
    // A nested loop for modal windows and boxes: runs events until done() holds.
    // Returns false when nothing could make done() hold any more.
    virtual bool runUntil(const std::function<bool()> &done) = 0;
    // Milliseconds since the loop started (timeGetTime's clock).
    virtual int64_t now() const = 0;

    // What happens when a handler ends in a run-time error no handler traps, and when the
    // End statement runs. The application context sets both.
    void setFatalErrorHandler(std::function<void(const RuntimeError &)> h) { m_fatal = std::move(h); }
    void setProgramEndHandler(std::function<void()> h) { m_end = std::move(h); }

    // Run one event handler at the top of the stack: an escaping run-time error is the
    // platform's fatal report; the End statement ends the program.
    void deliver(const Handler &handler);

    // Work that a real component has in hand, from its start until its last event has been
    // delivered; a scenario's settle waits until none is left. Callable from any thread.
    void beginWork(const std::string &what);
    void endWork(const std::string &what);
    std::vector<std::string> workInHand() const;

    // Posts an event of a component: it runs only while `alive` still exists, and the component's
    // work named `work` (if any) ends once the event has been delivered.
    void postEvent(std::weak_ptr<void> alive, Handler handler, std::string work = {});

private:
    mutable std::mutex m_workMutex;
    std::map<std::string, int> m_work;
    std::function<void(const RuntimeError &)> m_fatal;
    std::function<void()> m_end;
};

} // namespace rt
