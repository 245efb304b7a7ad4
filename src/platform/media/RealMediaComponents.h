#pragma once

#include "platform/Components.h"
#include "runtime/EventLoop.h"

namespace platform::media {

// Fills the makers of the decoding and converting chains with the real components: MP3 files
// through libmpg123, wave files through libsndfile, conversion through libsoxr. The loop must
// outlive every component made.
void addRealMediaComponents(platform::Components &c, rt::EventLoop &loop);

} // namespace platform::media
