#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Control.h"

namespace ui {

// A tree of labelled rows (`TList`): a root, groups beneath it and items beneath each group. The
// rows come with the window's design and stand always opened; they are numbered from 0 in the
// order they stand in the opened tree, and a selection reports that number.
class TreeView : public Control {
public:
    enum class Level { Root, Group, Item };

    using Control::Control;
    const char *kind() const override { return "Tree"; }

    // Adds a row at the end. A group belongs to the root above it, an item to the group above it;
    // a row with nothing above it to belong to stands at the top.
    void AddRow(const std::string &label, Level level);
    void Clear();
    int ListCount() const { return static_cast<int>(m_rows.size()); }
    // The label of a row; "" outside the tree.
    std::string List(int row) const;
    // The level of a row; Root outside the tree.
    Level RowLevel(int row) const;
    // The row a row belongs to, -1 for a row at the top (or outside the tree).
    int ParentRow(int row) const;
    // The selected row, -1 for none.
    int ListIndex() const { return m_listIndex; }
    // Selects a row without an event; -1 clears, other values outside the tree are error 380.
    void setListIndex(int row);
    // The selected row's label.
    std::string Text() const { return List(m_listIndex); }

    // The user takes a row: it becomes the selected row, then RowSelected reports it. Every
    // click reports, also on the row already selected. Outside the tree nothing happens.
    void userSelectRow(int row);
    // The user takes the first row with this label; false when there is none.
    bool userPick(const std::string &label);

    std::function<void(int row)> RowSelected;

    // "ListCount", "ListIndex", "Text", "List(i)", "Level(i)" (root, group or item).
    std::optional<std::string> property(const std::string &name, const Args &args) const override;
    bool setProperty(const std::string &name, const Args &args, const std::string &value) override;
    std::vector<std::string> propertyNames() const override;

    // Bumped whenever the rows themselves change, so a view knows when to build them anew.
    int rowsVersion() const { return m_rowsVersion; }

private:
    struct Row {
        std::string label;
        Level level;
    };
    bool inRange(int row) const { return row >= 0 && row < ListCount(); }

    std::vector<Row> m_rows;
    int m_listIndex = -1;
    int m_rowsVersion = 0;
};

// "root", "group" or "item".
const char *levelName(TreeView::Level level);

} // namespace ui
