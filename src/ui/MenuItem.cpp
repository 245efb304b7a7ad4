#include "MenuItem.h"

#include "Window.h"

namespace ui {

MenuItem::MenuItem(Window &owner, std::string name, std::string caption, MenuItem *parent)
    : Control(owner, std::move(name))
    , m_caption(std::move(caption))
    , m_parent(parent)
{
    if (m_parent)
        m_parent->m_children.push_back(this);
    else
        owner.addMenu(*this);
}

void MenuItem::setCaption(const std::string &text)
{
    m_caption = text;
    changed();
}

void MenuItem::setChecked(bool on)
{
    if (m_checked == on)
        return;
    m_checked = on;
    changed();
}

void MenuItem::userClick()
{
    if (!Enabled() || isSeparator())
        return;
    Control::userClick();
}

std::optional<std::string> MenuItem::property(const std::string &name, const Args &args) const
{
    if (name == "Caption")
        return m_caption;
    if (name == "Checked")
        return truthText(m_checked);
    return Control::property(name, args);
}

bool MenuItem::setProperty(const std::string &name, const Args &args, const std::string &value)
{
    if (name == "Caption")
        setCaption(value);
    else if (name == "Checked")
        setChecked(parseTruth(value));
    else
        return Control::setProperty(name, args, value);
    return true;
}

std::vector<std::string> MenuItem::propertyNames() const
{
    return {"Caption", "Checked", "Enabled", "Visible"};
}

} // namespace ui
