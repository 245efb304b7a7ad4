#include "ListView.h"

#include "runtime/RuntimeError.h"

namespace ui {

namespace {
constexpr int ErrIndexOutOfBounds = 35600;

Args shifted(Args args)
{
    if (!args.empty())
        --args[0];
    return args;
}
} // namespace

void ListView::AddRow(std::vector<std::string> cells)
{
    if (cells.empty())
        cells.emplace_back();
    m_cells.push_back(cells);
    AddItem(cells.front());
}

bool ListView::ItemSelected(int item) const
{
    if (item < 1 || item > Count())
        rt::raise(ErrIndexOutOfBounds);
    return Selected(item - 1);
}

void ListView::setItemSelected(int item, bool on)
{
    if (item < 1 || item > Count())
        rt::raise(ErrIndexOutOfBounds);
    setSelected(item - 1, on);
}

void ListView::setSelectedItem(int item)
{
    if (item < 1 || item > Count())
        rt::raise(ErrIndexOutOfBounds);
    setListIndexOnly(item - 1);
}

std::string ListView::Column(int index, int column) const
{
    if (index < 0 || index >= static_cast<int>(m_cells.size()))
        return {};
    const auto &cells = m_cells[index];
    return column >= 1 && column <= static_cast<int>(cells.size()) ? cells[column - 1] : std::string();
}

std::optional<std::string> ListView::property(const std::string &name, const Args &args) const
{
    if (name == "Count")
        return std::to_string(Count());
    if (name == "SelectedItem")
        return std::to_string(SelectedItem());
    if (name == "SubItems" && args.size() == 2)
        return Column(args[0] - 1, args[1] + 1);
    if ((name == "List" || name == "Selected" || name == "Column" || name == "RowImage") && !args.empty())
        return ListBox::property(name, shifted(args));
    return ListBox::property(name, args);
}

bool ListView::setProperty(const std::string &name, const Args &args, const std::string &value)
{
    if ((name == "List" || name == "Selected") && !args.empty())
        return ListBox::setProperty(name, shifted(args), value);
    return ListBox::setProperty(name, args, value);
}

} // namespace ui
