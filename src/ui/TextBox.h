#pragma once

#include "Control.h"

namespace ui {

// A text box. Every change of Text, by the user or by code, raises Change.
class TextBox : public Control {
public:
    using Control::Control;
    const char *kind() const override { return "TextBox"; }

    const std::string &Text() const { return m_text; }
    void setText(const std::string &text);
    bool Locked() const { return m_locked; }
    void setLocked(bool on) { m_locked = on; changed(); }
    bool MultiLine() const { return m_multiLine; }
    void setMultiLine(bool on) { m_multiLine = on; }

    void userType(const std::string &text);
    std::function<void()> Change;

    std::optional<std::string> property(const std::string &name, const Args &args) const override;
    bool setProperty(const std::string &name, const Args &args, const std::string &value) override;
    std::vector<std::string> propertyNames() const override;

private:
    std::string m_text;
    bool m_locked = false;
    bool m_multiLine = false;
};

} // namespace ui
