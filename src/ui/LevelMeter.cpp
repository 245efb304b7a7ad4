#include "LevelMeter.h"

#include <algorithm>
#include <cmath>

namespace ui {

LevelMeter::LevelMeter(Window &owner, std::string name, int index) : Control(owner, std::move(name), index) {}

const char *LevelMeter::kind() const
{
    return "LevelMeter";
}

void LevelMeter::setFeed(std::function<double()> feed)
{
    m_feed = std::move(feed);
    changed();
}

void LevelMeter::Reset()
{
    ++m_resets;
    changed();
}

double LevelMeter::readPeak() const
{
    return m_feed ? std::clamp(m_feed(), 0.0, 1.0) : 0.0;
}

std::optional<std::string> LevelMeter::property(const std::string &name, const Args &args) const
{
    if (name == "Value")
        return std::to_string(static_cast<int>(std::lround(readPeak() * 100.0)));
    if (name == "Resets")
        return std::to_string(m_resets);
    if (name == "Connected")
        return truthText(hasFeed());
    return Control::property(name, args);
}

std::vector<std::string> LevelMeter::propertyNames() const
{
    auto names = Control::propertyNames();
    names.insert(names.end(), {"Value", "Connected"});
    return names;
}

} // namespace ui
