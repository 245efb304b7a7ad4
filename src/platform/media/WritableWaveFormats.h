#pragma once

#include <vector>

#include "platform/MediaChain.h"

namespace platform::media {

// The wave formats the converter's target file can be written in, for the format chooser: PCM
// 8/16/24/32 bit, 32-bit float, A-law, u-law, IMA and MS ADPCM at the usual rates, mono or
// stereo, and GSM 6.10 (mono, 8000 Hz), each only if libsndfile writes it. Ordered by tag, then
// rate, bits and channels.
std::vector<WaveFormat> writableWaveFormats();

} // namespace platform::media
