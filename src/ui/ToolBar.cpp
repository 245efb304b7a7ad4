#include "ToolBar.h"

namespace ui {

void ToolBar::addItem(Item item)
{
    m_items.push_back(std::move(item));
    changed();
}

void ToolBar::setButtonEnabled(int index, bool on)
{
    if (index < 1 || index > static_cast<int>(m_items.size()))
        return;
    m_items[index - 1].enabled = on;
    changed();
}

void ToolBar::userButton(int index)
{
    if (!Enabled())
        return;
    if (index >= 1 && index <= static_cast<int>(m_items.size()) && !m_items[index - 1].enabled)
        return;
    deliver([this, index] {
        if (ButtonClick)
            ButtonClick(index);
    });
}

std::optional<std::string> ToolBar::property(const std::string &name, const Args &args) const
{
    if (name == "ButtonCount")
        return std::to_string(m_items.size());
    if (name == "ButtonCaption" && args.size() == 1)
        return args[0] >= 1 && args[0] <= static_cast<int>(m_items.size()) ? m_items[args[0] - 1].caption : std::string();
    if (name == "ButtonEnabled" && args.size() == 1)
        return truthText(args[0] >= 1 && args[0] <= static_cast<int>(m_items.size()) && m_items[args[0] - 1].enabled);
    return Control::property(name, args);
}

std::vector<std::string> ToolBar::propertyNames() const
{
    auto names = Control::propertyNames();
    names.insert(names.begin(), "ButtonCount");
    return names;
}

} // namespace ui
