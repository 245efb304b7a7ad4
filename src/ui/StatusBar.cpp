#include "StatusBar.h"

#include "runtime/RuntimeError.h"

namespace ui {

namespace {
constexpr int ErrIndexOutOfBounds = 35600;
}

StatusBar::StatusBar(Window &owner, std::string name, int panelCount)
    : Control(owner, std::move(name))
    , m_panels(panelCount)
{
}

const std::string &StatusBar::Panel(int number) const
{
    if (number < 1 || number > panelCount())
        rt::raise(ErrIndexOutOfBounds, "Index out of bounds");
    return m_panels[number - 1];
}

void StatusBar::setPanel(int number, const std::string &text)
{
    if (number < 1 || number > panelCount())
        rt::raise(ErrIndexOutOfBounds, "Index out of bounds");
    if (m_panels[number - 1] == text)
        return;
    m_panels[number - 1] = text;
    changed();
}

std::optional<std::string> StatusBar::property(const std::string &name, const Args &args) const
{
    if (name == "Panel" && args.size() == 1)
        return args[0] >= 1 && args[0] <= panelCount() ? m_panels[args[0] - 1] : std::string();
    return Control::property(name, args);
}

bool StatusBar::setProperty(const std::string &name, const Args &args, const std::string &value)
{
    if (name == "Panel" && args.size() == 1) {
        setPanel(args[0], value);
        return true;
    }
    return Control::setProperty(name, args, value);
}

std::vector<std::string> StatusBar::propertyNames() const
{
    auto names = Control::propertyNames();
    for (int i = 1; i <= panelCount(); ++i)
        names.insert(names.begin() + i - 1, "Panel(" + std::to_string(i) + ")");
    return names;
}

} // namespace ui
