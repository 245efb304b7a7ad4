#pragma once

#include "Control.h"

namespace ui {

// A status bar of panels, numbered from 1 as the platform numbers them.
class StatusBar : public Control {
public:
    StatusBar(Window &owner, std::string name, int panelCount = 1);
    const char *kind() const override { return "StatusBar"; }

    int panelCount() const { return static_cast<int>(m_panels.size()); }
    // A panel outside 1..count is error 35600 ("Index out of bounds").
    const std::string &Panel(int number) const;
    void setPanel(int number, const std::string &text);

    std::optional<std::string> property(const std::string &name, const Args &args) const override;
    bool setProperty(const std::string &name, const Args &args, const std::string &value) override;
    std::vector<std::string> propertyNames() const override;

private:
    std::vector<std::string> m_panels;
};

} // namespace ui
