#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/TrackChecksums.h"

namespace platform::media {

// Adds up a track's checksums as its audio goes by, in any pieces.
// AccurateRip: each stereo frame is read as one little-endian 32-bit word w (left in the low half)
// and multiplied by its 1-based place n; v1 is the sum of the low 32 bits of n * w, v2 the sum of
// the low and the high halves of the 64-bit product, both modulo 2^32. The first five sectors
// (but the last frame of them) of a disc's first track and the last five sectors of its last
// track are left out, since drives read them least alike.
class TrackChecksummer {
public:
    // `frames`: the track's length, needed to know where its last five sectors begin.
    // `cdAudio`: the data is 16-bit stereo at 44100 Hz, so AccurateRip applies.
    TrackChecksummer(int64_t frames, bool cdAudio, bool firstTrack, bool lastTrack);

    void add(const std::byte *data, size_t bytes);
    TrackChecksums result() const;

private:
    bool m_cdAudio;
    int64_t m_from;  // the first place counted
    int64_t m_to;    // the last place counted
    int64_t m_place = 1;
    uint32_t m_crc;
    uint32_t m_v1 = 0;
    uint32_t m_v2 = 0;
    unsigned char m_partial[4] = {};
    size_t m_partialBytes = 0;
    int64_t m_bytes = 0;
};

} // namespace platform::media
