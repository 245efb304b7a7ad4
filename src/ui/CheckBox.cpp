#include "CheckBox.h"

#include "runtime/RuntimeError.h"

namespace ui {

void CheckBox::setCaption(const std::string &text)
{
    m_caption = text;
    changed();
}

void CheckBox::setValue(int value)
{
    if (value < 0 || value > 2)
        rt::raise(rt::ErrInvalidPropertyValue);
    if (m_value == value)
        return;
    m_value = value;
    changed();
    if (Click)
        Click();
}

void CheckBox::userClick()
{
    if (!Enabled())
        return;
    deliver([this] { setValue(m_value == 1 ? 0 : 1); });
}

std::optional<std::string> CheckBox::property(const std::string &name, const Args &args) const
{
    if (name == "Caption")
        return m_caption;
    if (name == "Value")
        return std::to_string(m_value);
    return Control::property(name, args);
}

bool CheckBox::setProperty(const std::string &name, const Args &args, const std::string &value)
{
    if (name == "Caption")
        setCaption(value);
    else if (name == "Value")
        setValue(parseInt(value));
    else
        return Control::setProperty(name, args, value);
    return true;
}

std::vector<std::string> CheckBox::propertyNames() const
{
    auto names = Control::propertyNames();
    names.insert(names.begin(), {"Caption", "Value"});
    return names;
}

} // namespace ui
