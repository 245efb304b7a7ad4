#include "HyperLink.h"

namespace ui {

void HyperLink::setCaption(const std::string &text)
{
    if (m_caption == text)
        return;
    m_caption = text;
    changed();
}

void HyperLink::setAddress(const std::string &address)
{
    if (m_address == address)
        return;
    m_address = address;
    changed();
}

std::optional<std::string> HyperLink::property(const std::string &name, const Args &args) const
{
    if (name == "Caption")
        return m_caption;
    if (name == "Address")
        return m_address;
    return Control::property(name, args);
}

bool HyperLink::setProperty(const std::string &name, const Args &args, const std::string &value)
{
    if (name == "Caption")
        setCaption(value);
    else if (name == "Address")
        setAddress(value);
    else
        return Control::setProperty(name, args, value);
    return true;
}

std::vector<std::string> HyperLink::propertyNames() const
{
    auto names = Control::propertyNames();
    names.insert(names.begin(), {"Caption", "Address"});
    return names;
}

} // namespace ui
