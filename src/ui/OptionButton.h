#pragma once

#include "Control.h"

namespace ui {

// An option button: of the buttons of one array (one name) in a window, one is marked. Marking
// one clears the others; a user click marks it and raises Click.
class OptionButton : public Control {
public:
    using Control::Control;
    const char *kind() const override { return "OptionButton"; }

    const std::string &Caption() const { return m_caption; }
    void setCaption(const std::string &text);
    bool Value() const { return m_value; }
    void setValue(bool on);
    void userClick() override;

    std::optional<std::string> property(const std::string &name, const Args &args) const override;
    bool setProperty(const std::string &name, const Args &args, const std::string &value) override;
    std::vector<std::string> propertyNames() const override;

private:
    std::string m_caption;
    bool m_value = false;
};

// Spin buttons (`MMSpinButtonX`): up and down arrows over a value from MinValue to MaxValue.
// Every change of Value raises Change.
class SpinButton : public Control {
public:
    using Control::Control;
    const char *kind() const override { return "SpinButton"; }

    int MinValue() const { return m_min; }
    int MaxValue() const { return m_max; }
    void setMinValue(int v) { m_min = v; changed(); }
    void setMaxValue(int v) { m_max = v; changed(); }
    int Value() const { return m_value; }
    // Taken as it stands, even outside the bounds; the arrows keep within them.
    void setValue(int value);
    // The user presses an arrow: +1 or -1, within the bounds.
    void userStep(int direction);
    std::function<void()> Change;

    std::optional<std::string> property(const std::string &name, const Args &args) const override;
    bool setProperty(const std::string &name, const Args &args, const std::string &value) override;
    std::vector<std::string> propertyNames() const override;

private:
    int m_min = 0;
    int m_max = 100;
    int m_value = 0;
};

// A tab strip: tab captions over a page; the page's controls are the window's.
class TabStrip : public Control {
public:
    using Control::Control;
    const char *kind() const override { return "TabStrip"; }
    const std::vector<std::string> &Tabs() const { return m_tabs; }
    void setTabs(std::vector<std::string> tabs);

    std::optional<std::string> property(const std::string &name, const Args &args) const override;
    std::vector<std::string> propertyNames() const override;

private:
    std::vector<std::string> m_tabs;
};

} // namespace ui
