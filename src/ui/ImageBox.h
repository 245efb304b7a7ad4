#pragma once

#include <memory>

#include "Control.h"
#include "platform/Imaging.h"

namespace ui {

// The place of an image control (`ImagXpress`) on a window: the closed
// component does the pixel work, this control gives it a place, the mouse and
// the properties scenarios read.
class ImageBox : public Control {
public:
    ImageBox(Window &owner, std::string name, std::unique_ptr<platform::ImageControl> image);
    ~ImageBox() override;
    const char *kind() const override { return "ImagXpress"; }

    // The component; use through -> is error 91 when the program has none.
    platform::ImageControl *operator->() const;
    platform::ImageControl *image() const { return m_image.get(); }

    // Width and height in screen pixels (15 twips to a pixel).
    int pixelWidth() const { return Width() / 15; }
    int pixelHeight() const { return Height() / 15; }

    std::optional<std::string> property(const std::string &name, const Args &args) const override;
    std::vector<std::string> propertyNames() const override;

private:
    std::unique_ptr<platform::ImageControl> m_image;
};

} // namespace ui
