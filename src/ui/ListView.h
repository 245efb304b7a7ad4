#pragma once

#include <vector>

#include "ListBox.h"

namespace ui {

// A report-style list view (`ListView`): rows of cells under column headers, counted from 1 as
// its items are. The row's own text is its first cell; a cell may hold any text, ";" included.
// Properties by index (List, Selected, Column, RowImage) take the 1-based item number.
class ListView : public ListBox {
public:
    using ListBox::ListBox;
    const char *kind() const override { return "ListView"; }
    int rowBase() const override { return 1; }

    // Adds an item at the end; its cells are the columns' texts in order.
    void AddRow(std::vector<std::string> cells);
    int Count() const { return ListCount(); }
    // Item i (1-based): its selected mark; outside the list is error 35600, as the items' own.
    bool ItemSelected(int item) const;
    void setItemSelected(int item, bool on);
    // The current item, 0 when none.
    int SelectedItem() const { return ListIndex() + 1; }
    void setSelectedItem(int item);

    std::string Column(int index, int column) const override;
    std::optional<std::string> property(const std::string &name, const Args &args) const override;
    bool setProperty(const std::string &name, const Args &args, const std::string &value) override;

protected:
    void rowsCleared() override { m_cells.clear(); }

private:
    std::vector<std::vector<std::string>> m_cells;
};

} // namespace ui
