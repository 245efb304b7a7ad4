#pragma once

#include "PlayerOptions.h"
#include "platform/Components.h"
#include "runtime/EventLoop.h"

namespace platform::audio {

// Fills the makers of the player chain with the real components: libmpg123 decoding, the ring,
// the FFT equaliser, PortAudio output (or the silent sink) and the analysers of the connector.
// The loop must outlive every component made. Without options, they come from the environment
// (BRASSWICK_SOUND_DIR: the silent sink, recording played.wav in that folder).
void addRealPlayerComponents(platform::Components &c, rt::EventLoop &loop);
void addRealPlayerComponents(platform::Components &c, rt::EventLoop &loop, const PlayerOptions &options);

} // namespace platform::audio
