#pragma once

#include <memory>
#include <string>

#include "platform/Imaging.h"

namespace rt {
class EventLoop;
}

namespace platform::scanner {

// The scanner on SANE: the sources are the devices SANE finds (its own `test`
// backend among them when its configuration lists it); a scan runs on a thread
// of its own and announces the image on the loop. The image is written as a
// 24-bit or 8-bit grey BMP.
std::unique_ptr<Scanner> makeSaneScanner(rt::EventLoop &loop);

// The last image's pixels as a BMP file's bytes (8-bit grey with its palette,
// or 24-bit).
std::string bmpBytes(int width, int height, bool grey, const std::vector<uint8_t> &samples);

} // namespace platform::scanner
