#include "Button.h"

namespace ui {

void Button::setCaption(const std::string &text)
{
    if (m_caption == text)
        return;
    m_caption = text;
    changed();
}

void Button::setPicture(const std::string &path)
{
    m_picture = path;
    changed();
}

std::optional<std::string> Button::property(const std::string &name, const Args &args) const
{
    if (name == "Caption")
        return m_caption;
    if (name == "Picture")
        return m_picture;
    return Control::property(name, args);
}

bool Button::setProperty(const std::string &name, const Args &args, const std::string &value)
{
    if (name == "Caption")
        setCaption(value);
    else if (name == "Picture")
        setPicture(value);
    else
        return Control::setProperty(name, args, value);
    return true;
}

std::vector<std::string> Button::propertyNames() const
{
    auto names = Control::propertyNames();
    names.insert(names.begin(), "Caption");
    return names;
}

} // namespace ui
