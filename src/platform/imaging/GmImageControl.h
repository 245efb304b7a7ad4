#pragma once

#include <memory>

#include "platform/Imaging.h"

namespace platform::imaging {

// The image control on GraphicsMagick: pictures are read and written by
// GraphicsMagick, the clipboard is the one given (the system's, through Qt, in
// the program).
std::unique_ptr<ImageControl> makeGmImageControl(std::shared_ptr<ImageClipboard> clipboard);

// A clipboard held in memory, for a process without a display.
std::shared_ptr<ImageClipboard> makeMemoryClipboard();

} // namespace platform::imaging
