#include "EventLoop.h"

namespace rt {

void EventLoop::deliver(const Handler &handler)
{
    try {
        handler();
    } catch (const RuntimeError &e) {
        if (m_fatal)
            m_fatal(e);
        else
            throw;
    } catch (const ProgramEnd &) {
        if (m_end)
            m_end();
        else
            throw;
    }
}

void EventLoop::beginWork(const std::string &what)
{
    std::lock_guard lock(m_workMutex);
    ++m_work[what];
}

void EventLoop::endWork(const std::string &what)
{
    std::lock_guard lock(m_workMutex);
    auto it = m_work.find(what);
    if (it != m_work.end() && --it->second <= 0)
        m_work.erase(it);
}

std::vector<std::string> EventLoop::workInHand() const
{
    std::lock_guard lock(m_workMutex);
    std::vector<std::string> names;
    for (const auto &[name, count] : m_work)
        names.push_back(name);
    return names;
}

void EventLoop::postEvent(std::weak_ptr<void> alive, Handler handler, std::string work)
{
    post([this, alive = std::move(alive), handler = std::move(handler), work = std::move(work)] {
        struct EndWork {
            EventLoop &loop;
            const std::string &work;
            ~EndWork()
            {
                if (!work.empty())
                    loop.endWork(work);
            }
        } end{*this, work};
        if (alive.lock())
            handler();
    });
}

} // namespace rt
