#include "NumberEdit.h"

#include <cstdlib>

namespace ui {

int NumberEdit::Value() const
{
    // Leading digits count, as Val() reads them; a text of no digits is 0.
    return static_cast<int>(std::strtol(Text().c_str(), nullptr, 10));
}

std::optional<std::string> NumberEdit::property(const std::string &name, const Args &args) const
{
    if (name == "Value")
        return std::to_string(Value());
    if (name == "MinValue")
        return std::to_string(m_min);
    if (name == "MaxValue")
        return std::to_string(m_max);
    if (name == "MaxLength")
        return std::to_string(m_maxLength);
    return TextBox::property(name, args);
}

bool NumberEdit::setProperty(const std::string &name, const Args &args, const std::string &value)
{
    if (name == "Value") {
        setValue(parseInt(value));
        return true;
    }
    return TextBox::setProperty(name, args, value);
}

} // namespace ui
