#pragma once

#include "Control.h"

namespace ui {

// A window timer: ticks every Interval ms while Enabled and Interval > 0, from the moment its
// window exists. It lives and dies with the window.
class Timer : public Control {
public:
    Timer(Window &owner, std::string name, int intervalMs, bool enabled);
    ~Timer() override;
    const char *kind() const override { return "Timer"; }

    int Interval() const { return m_interval; }
    void setInterval(int ms);
    // Enabling starts the ticks, disabling stops them.
    void setEnabled(bool on) override;

    void windowUnloaded() override;

    std::function<void()> Tick;

    std::optional<std::string> property(const std::string &name, const Args &args) const override;
    bool setProperty(const std::string &name, const Args &args, const std::string &value) override;
    std::vector<std::string> propertyNames() const override;

private:
    void restart();

    int m_interval;
    int m_timerId = 0;
};

} // namespace ui
