#include "Timer.h"

#include "AppContext.h"
#include "Window.h"

namespace ui {

Timer::Timer(Window &owner, std::string name, int intervalMs, bool enabled)
    : Control(owner, std::move(name))
    , m_interval(intervalMs)
{
    Control::setVisible(false);
    Control::setEnabled(enabled);
    restart();
}

Timer::~Timer()
{
    if (m_timerId)
        owner().app().loop().stopTimer(m_timerId);
}

void Timer::setInterval(int ms)
{
    m_interval = ms;
    restart();
    changed();
}

void Timer::setEnabled(bool on)
{
    if (on == Enabled())
        return;
    Control::setEnabled(on);
    restart();
}

void Timer::windowUnloaded()
{
    if (m_timerId)
        owner().app().loop().stopTimer(m_timerId);
    m_timerId = 0;
}

void Timer::restart()
{
    auto &loop = owner().app().loop();
    if (m_timerId) {
        loop.stopTimer(m_timerId);
        m_timerId = 0;
    }
    if (Enabled() && m_interval > 0) {
        m_timerId = loop.startTimer(m_interval, [this, &app = owner().app()] {
            // A tick that ends the program takes this timer with it: only the context is left.
            if (Tick)
                Tick();
            app.afterEvent();
        });
    }
}

std::optional<std::string> Timer::property(const std::string &name, const Args &args) const
{
    if (name == "Interval")
        return std::to_string(m_interval);
    if (name == "Enabled")
        return truthText(Enabled());
    return std::nullopt;
}

bool Timer::setProperty(const std::string &name, const Args &, const std::string &value)
{
    if (name == "Interval")
        setInterval(parseInt(value));
    else if (name == "Enabled")
        setEnabled(parseTruth(value));
    else
        return false;
    return true;
}

std::vector<std::string> Timer::propertyNames() const
{
    return {"Interval", "Enabled"};
}

} // namespace ui
