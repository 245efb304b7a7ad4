#pragma once

#include <cstdint>
#include <optional>

namespace platform {

// The checksums of a copied track, for the rip log: CRC32 of the audio data as the file holds it,
// and AccurateRip's v1 and v2 sums when the file holds CD audio (44100 Hz, 16 bit, stereo).
struct TrackChecksums {
    int64_t frames = 0;  // sample frames of the audio data
    uint32_t crc32 = 0;
    std::optional<uint32_t> accurateRipV1;
    std::optional<uint32_t> accurateRipV2;
};

} // namespace platform
