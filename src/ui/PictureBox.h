#pragma once

#include "Control.h"

namespace ui {

// A picture area: shows a picture file and reports clicks and the mouse.
class PictureBox : public Control {
public:
    using Control::Control;
    const char *kind() const override { return "Picture"; }

    const std::string &Picture() const { return m_picture; }
    // A path as the logic builds it; the view loads it when it can.
    void setPicture(const std::string &path);

    std::optional<std::string> property(const std::string &name, const Args &args) const override;
    bool setProperty(const std::string &name, const Args &args, const std::string &value) override;
    std::vector<std::string> propertyNames() const override;

private:
    std::string m_picture;
};

} // namespace ui
