#pragma once

#include "Control.h"

namespace ui {

// A menu entry: a head with entries below it, an entry with a command, or a separator ("-").
class MenuItem : public Control {
public:
    MenuItem(Window &owner, std::string name, std::string caption, MenuItem *parent = nullptr);
    const char *kind() const override { return "Menu"; }

    const std::string &Caption() const { return m_caption; }
    void setCaption(const std::string &text);
    bool Checked() const { return m_checked; }
    void setChecked(bool on);
    bool isSeparator() const { return m_caption == "-"; }
    MenuItem *parentItem() const { return m_parent; }
    const std::vector<MenuItem *> &children() const { return m_children; }

    void userClick() override;

    std::optional<std::string> property(const std::string &name, const Args &args) const override;
    bool setProperty(const std::string &name, const Args &args, const std::string &value) override;
    std::vector<std::string> propertyNames() const override;

private:
    std::string m_caption;
    bool m_checked = false;
    MenuItem *m_parent;
    std::vector<MenuItem *> m_children;
};

} // namespace ui
