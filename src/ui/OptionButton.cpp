#include "OptionButton.h"

#include "Window.h"

namespace ui {

void OptionButton::setCaption(const std::string &text)
{
    m_caption = text;
    changed();
}

void OptionButton::setValue(bool on)
{
    if (on) {
        for (Control *c : owner().controls()) {
            auto *other = dynamic_cast<OptionButton *>(c);
            if (other && other != this && other->name() == name() && other->m_value) {
                other->m_value = false;
                other->changed();
            }
        }
    }
    if (m_value == on)
        return;
    m_value = on;
    changed();
}

void OptionButton::userClick()
{
    if (!Enabled())
        return;
    deliver([this] {
        setValue(true);
        if (Click)
            Click();
    });
}

std::optional<std::string> OptionButton::property(const std::string &name, const Args &args) const
{
    if (name == "Caption")
        return m_caption;
    if (name == "Value")
        return truthText(m_value);
    return Control::property(name, args);
}

bool OptionButton::setProperty(const std::string &name, const Args &args, const std::string &value)
{
    if (name == "Caption")
        setCaption(value);
    else if (name == "Value")
        setValue(parseTruth(value));
    else
        return Control::setProperty(name, args, value);
    return true;
}

std::vector<std::string> OptionButton::propertyNames() const
{
    auto names = Control::propertyNames();
    names.insert(names.begin(), {"Caption", "Value"});
    return names;
}

void SpinButton::setValue(int value)
{
    if (m_value == value)
        return;
    m_value = value;
    changed();
    if (Change)
        Change();
}

void SpinButton::userStep(int direction)
{
    if (!Enabled())
        return;
    deliver([this, direction] {
        int v = m_value + (direction > 0 ? 1 : -1);
        v = v > m_max ? m_max : v < m_min ? m_min : v;
        setValue(v);
    });
}

std::optional<std::string> SpinButton::property(const std::string &name, const Args &args) const
{
    if (name == "Value")
        return std::to_string(m_value);
    if (name == "MinValue" || name == "Min")
        return std::to_string(m_min);
    if (name == "MaxValue" || name == "Max")
        return std::to_string(m_max);
    return Control::property(name, args);
}

bool SpinButton::setProperty(const std::string &name, const Args &args, const std::string &value)
{
    if (name == "Value")
        setValue(parseInt(value));
    else
        return Control::setProperty(name, args, value);
    return true;
}

std::vector<std::string> SpinButton::propertyNames() const
{
    auto names = Control::propertyNames();
    names.insert(names.begin(), {"Value", "MinValue", "MaxValue"});
    return names;
}

void TabStrip::setTabs(std::vector<std::string> tabs)
{
    m_tabs = std::move(tabs);
    changed();
}

std::optional<std::string> TabStrip::property(const std::string &name, const Args &args) const
{
    if (name == "Tabs" && args.empty())
        return std::to_string(m_tabs.size());
    if (name == "Tab" && args.size() == 1)
        return args[0] >= 1 && args[0] <= static_cast<int>(m_tabs.size()) ? m_tabs[args[0] - 1] : std::string();
    return Control::property(name, args);
}

std::vector<std::string> TabStrip::propertyNames() const
{
    auto names = Control::propertyNames();
    names.insert(names.begin(), "Tabs");
    return names;
}

} // namespace ui
