#include "TreeView.h"

#include "runtime/RuntimeError.h"

namespace ui {

const char *levelName(TreeView::Level level)
{
    switch (level) {
    case TreeView::Level::Root: return "root";
    case TreeView::Level::Group: return "group";
    case TreeView::Level::Item: return "item";
    }
    return "root";
}

void TreeView::AddRow(const std::string &label, Level level)
{
    m_rows.push_back(Row{label, level});
    ++m_rowsVersion;
    changed();
}

void TreeView::Clear()
{
    m_rows.clear();
    m_listIndex = -1;
    ++m_rowsVersion;
    changed();
}

std::string TreeView::List(int row) const
{
    return inRange(row) ? m_rows[row].label : std::string();
}

TreeView::Level TreeView::RowLevel(int row) const
{
    return inRange(row) ? m_rows[row].level : Level::Root;
}

int TreeView::ParentRow(int row) const
{
    if (!inRange(row) || m_rows[row].level == Level::Root)
        return -1;
    // The nearest row above that stands one level higher; a level skipped (an item under the
    // root) hangs on whatever stands higher.
    for (int above = row - 1; above >= 0; --above) {
        if (static_cast<int>(m_rows[above].level) < static_cast<int>(m_rows[row].level))
            return above;
    }
    return -1;
}

void TreeView::setListIndex(int row)
{
    if (row != -1 && !inRange(row))
        rt::raise(rt::ErrInvalidPropertyValue);
    m_listIndex = row;
    changed();
}

void TreeView::userSelectRow(int row)
{
    if (!Enabled() || !inRange(row))
        return;
    deliver([this, row] {
        setListIndex(row);
        if (RowSelected)
            RowSelected(row);
    });
}

bool TreeView::userPick(const std::string &label)
{
    for (int row = 0; row < ListCount(); ++row) {
        if (m_rows[row].label == label) {
            userSelectRow(row);
            return true;
        }
    }
    return false;
}

std::optional<std::string> TreeView::property(const std::string &name, const Args &args) const
{
    if (name == "ListCount")
        return std::to_string(ListCount());
    if (name == "ListIndex")
        return std::to_string(m_listIndex);
    if (name == "Text")
        return Text();
    if (name == "List" && args.size() == 1)
        return List(args[0]);
    if (name == "Level" && args.size() == 1)
        return inRange(args[0]) ? std::string(levelName(m_rows[args[0]].level)) : std::string();
    return Control::property(name, args);
}

bool TreeView::setProperty(const std::string &name, const Args &args, const std::string &value)
{
    if (name == "ListIndex")
        setListIndex(parseInt(value));
    else
        return Control::setProperty(name, args, value);
    return true;
}

std::vector<std::string> TreeView::propertyNames() const
{
    auto names = Control::propertyNames();
    names.insert(names.begin(), {"ListCount", "ListIndex", "Text"});
    return names;
}

} // namespace ui
