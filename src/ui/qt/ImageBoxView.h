#pragma once

#include <memory>

#include "ControlView.h"

namespace ui {
class ImageBox;
}

namespace uiqt {

// The view of an image control: the picture at the control's zoom, moved by its
// scroll offsets, with the rubber band drawn over it.
std::unique_ptr<ControlView> makeImageBoxView(ui::ImageBox &image, WindowView &window);

} // namespace uiqt
