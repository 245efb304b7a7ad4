#include "Label.h"

namespace ui {

void Label::setCaption(const std::string &text)
{
    if (m_caption == text)
        return;
    m_caption = text;
    changed();
    // Change runs inside whatever set the caption, as the platform raises it.
    if (Change)
        Change();
}

std::optional<std::string> Label::property(const std::string &name, const Args &args) const
{
    if (name == "Caption")
        return m_caption;
    return Control::property(name, args);
}

bool Label::setProperty(const std::string &name, const Args &args, const std::string &value)
{
    if (name == "Caption") {
        setCaption(value);
        return true;
    }
    return Control::setProperty(name, args, value);
}

std::vector<std::string> Label::propertyNames() const
{
    auto names = Control::propertyNames();
    names.insert(names.begin(), "Caption");
    return names;
}

} // namespace ui
