#pragma once

#include "Control.h"

namespace ui {

// A check box: Value 0 unticked, 1 ticked, 2 greyed. A user click toggles 0 and 1 and then
// raises Click, as the platform does.
class CheckBox : public Control {
public:
    using Control::Control;
    const char *kind() const override { return "CheckBox"; }

    const std::string &Caption() const { return m_caption; }
    void setCaption(const std::string &text);
    int Value() const { return m_value; }
    // 0, 1 or 2; anything else is error 380. Setting a new value raises Click.
    void setValue(int value);

    void userClick() override;

    std::optional<std::string> property(const std::string &name, const Args &args) const override;
    bool setProperty(const std::string &name, const Args &args, const std::string &value) override;
    std::vector<std::string> propertyNames() const override;

private:
    std::string m_caption;
    int m_value = 0;
};

} // namespace ui
