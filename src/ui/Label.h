#pragma once

#include "Control.h"

namespace ui {

// A caption on the window; also the kit's frame (a captioned group) when `isFrame` is set.
class Label : public Control {
public:
    using Control::Control;
    const char *kind() const override { return m_frame ? "Frame" : "Label"; }

    const std::string &Caption() const { return m_caption; }
    void setCaption(const std::string &text);
    void setFrame(bool frame) { m_frame = frame; }
    bool isFrame() const { return m_frame; }

    // The caption changed.
    std::function<void()> Change;

    std::optional<std::string> property(const std::string &name, const Args &args) const override;
    bool setProperty(const std::string &name, const Args &args, const std::string &value) override;
    std::vector<std::string> propertyNames() const override;

private:
    std::string m_caption;
    bool m_frame = false;
};

} // namespace ui
