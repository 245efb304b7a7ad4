#pragma once

#include "Control.h"

namespace ui {

// A list (ctList, or a hidden list used as an array of texts). Rows are texts; a row shown in
// columns is split at ";". Indices count from 0; a read outside the list gives empty text.
class ListBox : public Control {
public:
    using Control::Control;
    const char *kind() const override { return "List"; }

    // AddItem: at the end, or at index (0..ListCount); any other index is error 5.
    void AddItem(const std::string &text, int index = -1);
    // RemoveItem: index outside the list is error 5.
    void RemoveItem(int index);
    void Clear();
    int ListCount() const { return static_cast<int>(m_rows.size()); }
    std::string List(int index) const;
    // Replace a row's text; outside the list is error 381.
    void setList(int index, const std::string &text);
    // Column c (from 1) of row i; "" outside the row or the list.
    virtual std::string Column(int index, int column) const;
    // The number the first row goes by in properties and scenarios: 0 for a list, 1 for a view.
    virtual int rowBase() const { return 0; }
    bool Selected(int index) const;
    // Outside the list is error 381.
    void setSelected(int index, bool on);
    int ListIndex() const { return m_listIndex; }
    // -1 clears the current row; other values outside the list are error 380.
    void setListIndex(int index);
    // Makes a row current without touching the selection marks of a multi-select list.
    void setListIndexOnly(int index);
    // The current row's text.
    std::string Text() const { return List(m_listIndex); }
    bool MultiSelect() const { return m_multiSelect; }
    void setMultiSelect(bool on) { m_multiSelect = on; }
    int RowImage(int index) const;
    void setRowImage(int index, int image);
    const std::vector<std::string> &ColumnHeaders() const { return m_headers; }
    // Column headers of a list shown in columns; none for a plain list.
    void setColumnHeaders(std::vector<std::string> headers);
    // Design widths of the columns in twips; none: the view shares the room out itself.
    const std::vector<int> &ColumnWidths() const { return m_columnWidths; }
    void setColumnWidths(std::vector<int> twips) { m_columnWidths = std::move(twips); }

    // A click on row `row`: it becomes the current row and selected, then Click.
    void userClickRow(int row);
    void userDblClickRow(int row);

    // Raised after every change of the rows (add, insert, remove, clear).
    std::function<void()> RowsChanged;

    std::optional<std::string> property(const std::string &name, const Args &args) const override;
    bool setProperty(const std::string &name, const Args &args, const std::string &value) override;
    std::vector<std::string> propertyNames() const override;

    // Which rows changed last, for views that update a part only.
    enum class Change { Reset, Inserted, Removed, Updated, Selection };
    Change lastChange() const { return m_lastChange; }
    int lastChangeRow() const { return m_lastChangeRow; }

protected:
    // Every row went (Clear).
    virtual void rowsCleared() {}

private:
    struct Row {
        std::string text;
        bool selected = false;
        int image = 0;
    };
    bool inRange(int index) const { return index >= 0 && index < ListCount(); }
    void rowsChanged(Change change, int row);

    std::vector<Row> m_rows;
    int m_listIndex = -1;
    bool m_multiSelect = false;
    std::vector<std::string> m_headers;
    std::vector<int> m_columnWidths;
    Change m_lastChange = Change::Reset;
    int m_lastChangeRow = -1;
};

} // namespace ui
