#include "TextBox.h"

namespace ui {

void TextBox::setText(const std::string &text)
{
    if (m_text == text)
        return;
    m_text = text;
    changed();
    if (Change)
        Change();
}

void TextBox::userType(const std::string &text)
{
    if (Enabled() && !m_locked)
        deliver([this, text] { setText(text); });
}

std::optional<std::string> TextBox::property(const std::string &name, const Args &args) const
{
    if (name == "Text")
        return m_text;
    if (name == "Locked")
        return truthText(m_locked);
    return Control::property(name, args);
}

bool TextBox::setProperty(const std::string &name, const Args &args, const std::string &value)
{
    if (name == "Text")
        setText(value);
    else if (name == "Locked")
        setLocked(parseTruth(value));
    else
        return Control::setProperty(name, args, value);
    return true;
}

std::vector<std::string> TextBox::propertyNames() const
{
    auto names = Control::propertyNames();
    names.insert(names.begin(), "Text");
    return names;
}

} // namespace ui
