#include "ListBox.h"

#include "runtime/RuntimeError.h"

namespace ui {

namespace {
constexpr int ErrInvalidPropertyArrayIndex = 381;
}

void ListBox::AddItem(const std::string &text, int index)
{
    if (index < -1 || index > ListCount())
        rt::raise(rt::ErrInvalidCall);
    const int at = index == -1 ? ListCount() : index;
    m_rows.insert(m_rows.begin() + at, Row{text});
    if (m_listIndex >= at && index != -1)
        ++m_listIndex;
    rowsChanged(Change::Inserted, at);
}

void ListBox::RemoveItem(int index)
{
    if (!inRange(index))
        rt::raise(rt::ErrInvalidCall);
    m_rows.erase(m_rows.begin() + index);
    if (m_listIndex == index)
        m_listIndex = -1;
    else if (m_listIndex > index)
        --m_listIndex;
    rowsChanged(Change::Removed, index);
}

void ListBox::Clear()
{
    m_rows.clear();
    rowsCleared();
    m_listIndex = -1;
    rowsChanged(Change::Reset, -1);
}

std::string ListBox::List(int index) const
{
    return inRange(index) ? m_rows[index].text : std::string();
}

void ListBox::setList(int index, const std::string &text)
{
    if (!inRange(index))
        rt::raise(ErrInvalidPropertyArrayIndex);
    m_rows[index].text = text;
    m_lastChange = Change::Updated;
    m_lastChangeRow = index;
    changed();
}

std::string ListBox::Column(int index, int column) const
{
    const std::string text = List(index);
    int current = 1;
    size_t start = 0;
    for (;;) {
        const size_t end = text.find(';', start);
        if (current == column)
            return text.substr(start, end == std::string::npos ? std::string::npos : end - start);
        if (end == std::string::npos)
            return {};
        start = end + 1;
        ++current;
    }
}

bool ListBox::Selected(int index) const
{
    if (!inRange(index))
        rt::raise(ErrInvalidPropertyArrayIndex);
    return m_rows[index].selected;
}

void ListBox::setSelected(int index, bool on)
{
    if (!inRange(index))
        rt::raise(ErrInvalidPropertyArrayIndex);
    if (on && !m_multiSelect) {
        for (auto &row : m_rows)
            row.selected = false;
    }
    m_rows[index].selected = on;
    if (on && !m_multiSelect)
        m_listIndex = index;
    m_lastChange = Change::Selection;
    m_lastChangeRow = index;
    changed();
}

void ListBox::setListIndex(int index)
{
    if (index == -1) {
        m_listIndex = -1;
        if (!m_multiSelect) {
            for (auto &row : m_rows)
                row.selected = false;
        }
    } else if (!inRange(index)) {
        rt::raise(rt::ErrInvalidPropertyValue);
    } else {
        m_listIndex = index;
        if (!m_multiSelect) {
            for (auto &row : m_rows)
                row.selected = false;
            m_rows[index].selected = true;
        }
    }
    m_lastChange = Change::Selection;
    m_lastChangeRow = index;
    changed();
}

void ListBox::setListIndexOnly(int index)
{
    if (!inRange(index))
        rt::raise(rt::ErrInvalidPropertyValue);
    m_listIndex = index;
    m_lastChange = Change::Selection;
    m_lastChangeRow = index;
    changed();
}

int ListBox::RowImage(int index) const
{
    return inRange(index) ? m_rows[index].image : 0;
}

void ListBox::setRowImage(int index, int image)
{
    if (!inRange(index))
        rt::raise(ErrInvalidPropertyArrayIndex);
    m_rows[index].image = image;
    m_lastChange = Change::Updated;
    m_lastChangeRow = index;
    changed();
}

void ListBox::setColumnHeaders(std::vector<std::string> headers)
{
    m_headers = std::move(headers);
    m_lastChange = Change::Reset;
    changed();
}

void ListBox::userClickRow(int row)
{
    if (!Enabled())
        return;
    deliver([this, row] {
        if (inRange(row)) {
            if (m_multiSelect) {
                m_rows[row].selected = !m_rows[row].selected;
                m_listIndex = row;
                m_lastChange = Change::Selection;
                m_lastChangeRow = row;
                changed();
            } else {
                setListIndex(row);
            }
        }
        if (Click)
            Click();
    });
}

void ListBox::userDblClickRow(int row)
{
    if (!Enabled())
        return;
    deliver([this, row] {
        if (inRange(row) && !m_rows[row].selected) {
            if (m_multiSelect)
                setSelected(row, true);
            else
                setListIndex(row);
        }
        if (DblClick)
            DblClick();
    });
}

void ListBox::rowsChanged(Change change, int row)
{
    m_lastChange = change;
    m_lastChangeRow = row;
    changed();
    if (RowsChanged)
        RowsChanged();
}

std::optional<std::string> ListBox::property(const std::string &name, const Args &args) const
{
    if (name == "ListCount")
        return std::to_string(ListCount());
    if (name == "ListIndex")
        return std::to_string(m_listIndex);
    if (name == "Text")
        return Text();
    if (name == "List" && args.size() == 1)
        return List(args[0]);
    if (name == "Selected" && args.size() == 1)
        return inRange(args[0]) ? truthText(m_rows[args[0]].selected) : std::string("0");
    if (name == "Column" && args.size() == 2)
        return Column(args[0], args[1]);
    if (name == "RowImage" && args.size() == 1)
        return std::to_string(RowImage(args[0]));
    if (name == "MultiSelect")
        return truthText(m_multiSelect);
    if (name == "ColumnHeader" && args.size() == 1)
        return args[0] >= 1 && args[0] <= static_cast<int>(m_headers.size()) ? m_headers[args[0] - 1] : std::string();
    return Control::property(name, args);
}

bool ListBox::setProperty(const std::string &name, const Args &args, const std::string &value)
{
    if (name == "ListIndex")
        setListIndex(parseInt(value));
    else if (name == "List" && args.size() == 1)
        setList(args[0], value);
    else if (name == "Selected" && args.size() == 1)
        setSelected(args[0], parseTruth(value));
    else
        return Control::setProperty(name, args, value);
    return true;
}

std::vector<std::string> ListBox::propertyNames() const
{
    auto names = Control::propertyNames();
    names.insert(names.begin(), {"ListCount", "ListIndex", "Text"});
    return names;
}

} // namespace ui
