#include "ComboBox.h"

#include "runtime/RuntimeError.h"

namespace ui {

void ComboBox::setText(const std::string &text)
{
    if (m_text == text)
        return;
    m_text = text;
    changed();
    if (Change)
        Change();
}

void ComboBox::AddItem(const std::string &text, int index)
{
    if (index < -1 || index > ListCount())
        rt::raise(rt::ErrInvalidCall);
    m_items.insert(index == -1 ? m_items.end() : m_items.begin() + index, text);
    changed();
}

void ComboBox::RemoveItem(int index)
{
    if (index < 0 || index >= ListCount())
        rt::raise(rt::ErrInvalidCall);
    m_items.erase(m_items.begin() + index);
    if (m_listIndex == index)
        m_listIndex = -1;
    else if (m_listIndex > index)
        --m_listIndex;
    changed();
}

void ComboBox::Clear()
{
    m_items.clear();
    m_listIndex = -1;
    m_text.clear();
    changed();
}

std::string ComboBox::List(int index) const
{
    return index >= 0 && index < ListCount() ? m_items[index] : std::string();
}

void ComboBox::setListIndex(int index)
{
    if (index < -1 || index >= ListCount())
        rt::raise(rt::ErrInvalidPropertyValue);
    m_listIndex = index;
    if (index >= 0)
        m_text = m_items[index];
    changed();
    if (Click)
        Click();
}

bool ComboBox::userPick(const std::string &entry)
{
    for (int i = 0; i < ListCount(); ++i) {
        if (m_items[i] == entry) {
            if (Enabled())
                deliver([this, i] { setListIndex(i); });
            return true;
        }
    }
    return false;
}

void ComboBox::userType(const std::string &text)
{
    if (Enabled())
        deliver([this, text] { setText(text); });
}

std::optional<std::string> ComboBox::property(const std::string &name, const Args &args) const
{
    if (name == "Text")
        return m_text;
    if (name == "ListCount")
        return std::to_string(ListCount());
    if (name == "ListIndex")
        return std::to_string(m_listIndex);
    if (name == "List" && args.size() == 1)
        return List(args[0]);
    return Control::property(name, args);
}

bool ComboBox::setProperty(const std::string &name, const Args &args, const std::string &value)
{
    if (name == "Text")
        setText(value);
    else if (name == "ListIndex")
        setListIndex(parseInt(value));
    else
        return Control::setProperty(name, args, value);
    return true;
}

std::vector<std::string> ComboBox::propertyNames() const
{
    auto names = Control::propertyNames();
    names.insert(names.begin(), {"Text", "ListCount", "ListIndex"});
    return names;
}

} // namespace ui
