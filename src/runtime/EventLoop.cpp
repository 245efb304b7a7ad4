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

} // namespace rt
