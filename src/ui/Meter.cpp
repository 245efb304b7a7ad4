#include "Meter.h"

#include "runtime/RuntimeError.h"

namespace ui {

Meter::Meter(Window &owner, std::string name, Style style, int index)
    : Control(owner, std::move(name), index)
    , m_style(style)
{
}

const char *Meter::kind() const
{
    switch (m_style) {
    case Style::ProgressBar: return "ProgressBar";
    case Style::Slider: return "Slider";
    default: return "Meter";
    }
}

void Meter::setValue(int value)
{
    if (value < m_min || value > m_max)
        rt::raise(rt::ErrInvalidPropertyValue);
    if (m_value == value)
        return;
    m_value = value;
    changed();
    if (Change)
        Change();
}

void Meter::setMin(int min)
{
    m_min = min;
    if (m_value < m_min)
        m_value = m_min;
    changed();
}

void Meter::setMax(int max)
{
    m_max = max;
    if (m_value > m_max)
        m_value = m_max;
    changed();
}

void Meter::setCaption(const std::string &text)
{
    m_caption = text;
    changed();
}

void Meter::userSlide(int value)
{
    if (Enabled())
        deliver([this, value] { setValue(value); });
}

std::optional<std::string> Meter::property(const std::string &name, const Args &args) const
{
    if (name == "Value")
        return std::to_string(m_value);
    if (name == "Min")
        return std::to_string(m_min);
    if (name == "Max")
        return std::to_string(m_max);
    if (name == "Caption")
        return m_caption;
    return Control::property(name, args);
}

bool Meter::setProperty(const std::string &name, const Args &args, const std::string &value)
{
    if (name == "Value")
        setValue(parseInt(value));
    else if (name == "Min")
        setMin(parseInt(value));
    else if (name == "Max")
        setMax(parseInt(value));
    else if (name == "Caption")
        setCaption(value);
    else
        return Control::setProperty(name, args, value);
    return true;
}

std::vector<std::string> Meter::propertyNames() const
{
    auto names = Control::propertyNames();
    names.insert(names.begin(), {"Value", "Min", "Max"});
    return names;
}

} // namespace ui
