#include "PictureBox.h"

namespace ui {

void PictureBox::setPicture(const std::string &path)
{
    m_picture = path;
    changed();
}

std::optional<std::string> PictureBox::property(const std::string &name, const Args &args) const
{
    if (name == "Picture")
        return m_picture;
    return Control::property(name, args);
}

bool PictureBox::setProperty(const std::string &name, const Args &args, const std::string &value)
{
    if (name == "Picture") {
        setPicture(value);
        return true;
    }
    return Control::setProperty(name, args, value);
}

std::vector<std::string> PictureBox::propertyNames() const
{
    auto names = Control::propertyNames();
    names.insert(names.begin(), "Picture");
    return names;
}

} // namespace ui
