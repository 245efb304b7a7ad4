#pragma once

#include "Control.h"

namespace ui {

// A hyperlink (ctHyperLink): a caption shown as a link and the address it stands for. A click
// only raises Click; the window's handler decides what to open.
class HyperLink : public Control {
public:
    using Control::Control;
    const char *kind() const override { return "HyperLink"; }

    const std::string &Caption() const { return m_caption; }
    void setCaption(const std::string &text);
    const std::string &Address() const { return m_address; }
    void setAddress(const std::string &address);

    std::optional<std::string> property(const std::string &name, const Args &args) const override;
    bool setProperty(const std::string &name, const Args &args, const std::string &value) override;
    std::vector<std::string> propertyNames() const override;

private:
    std::string m_caption;
    std::string m_address;
};

} // namespace ui
