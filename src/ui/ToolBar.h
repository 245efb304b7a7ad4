#pragma once

#include "Control.h"

namespace ui {

// A toolbar (ctToolBar) of buttons numbered from 1; gaps are buttons too, with no command.
class ToolBar : public Control {
public:
    struct Item {
        std::string caption;
        std::string toolTip;
        std::string picture;
        bool gap = false;
        bool enabled = true;
    };
    using Control::Control;
    const char *kind() const override { return "ToolBar"; }

    void addItem(Item item);
    const std::vector<Item> &items() const { return m_items; }
    // A disabled button (from 1) reports no click.
    void setButtonEnabled(int index, bool on);

    // The toolbar reports button `index` (from 1).
    void userButton(int index);
    std::function<void(int index)> ButtonClick;

    std::optional<std::string> property(const std::string &name, const Args &args) const override;
    std::vector<std::string> propertyNames() const override;

private:
    std::vector<Item> m_items;
};

} // namespace ui
