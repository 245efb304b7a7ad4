#pragma once

#include "Control.h"

namespace ui {

// A push button (ctButton): caption, optional picture, click.
class Button : public Control {
public:
    using Control::Control;
    const char *kind() const override { return "Button"; }

    const std::string &Caption() const { return m_caption; }
    void setCaption(const std::string &text);
    // A picture file of the program's folder shown on the button, if any.
    const std::string &Picture() const { return m_picture; }
    void setPicture(const std::string &path);

    std::optional<std::string> property(const std::string &name, const Args &args) const override;
    bool setProperty(const std::string &name, const Args &args, const std::string &value) override;
    std::vector<std::string> propertyNames() const override;

private:
    std::string m_caption;
    std::string m_picture;
};

} // namespace ui
