#pragma once

#include <memory>

#include "platform/Imaging.h"

namespace uiqt {

// The system clipboard's picture, through Qt.
std::shared_ptr<platform::ImageClipboard> makeQtImageClipboard();

} // namespace uiqt
