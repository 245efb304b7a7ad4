#pragma once

#include "Control.h"

namespace ui {

// A combo (ctCombo): an editable text above a drop-down list. The text stays what it was set
// to until the user picks an entry, which puts the entry's text there and raises Click.
class ComboBox : public Control {
public:
    using Control::Control;
    const char *kind() const override { return "Combo"; }

    const std::string &Text() const { return m_text; }
    void setText(const std::string &text);
    void AddItem(const std::string &text, int index = -1);
    void RemoveItem(int index);
    void Clear();
    int ListCount() const { return static_cast<int>(m_items.size()); }
    std::string List(int index) const;
    int ListIndex() const { return m_listIndex; }
    // -1 clears; other values outside the list are error 380. A valid index shows its text.
    void setListIndex(int index);

    // The user picks the entry with this text; false when the list has none.
    bool userPick(const std::string &entry);
    // The user types into the combo's text.
    void userType(const std::string &text);

    std::function<void()> Change;

    std::optional<std::string> property(const std::string &name, const Args &args) const override;
    bool setProperty(const std::string &name, const Args &args, const std::string &value) override;
    std::vector<std::string> propertyNames() const override;

private:
    std::string m_text;
    std::vector<std::string> m_items;
    int m_listIndex = -1;
};

} // namespace ui
