#include "TrackChecksummer.h"

#include <zlib.h>

namespace platform::media {

namespace {

constexpr int64_t FramesPerSector = 588;
constexpr int64_t SkippedFrames = 5 * FramesPerSector;

} // namespace

TrackChecksummer::TrackChecksummer(int64_t frames, bool cdAudio, bool firstTrack, bool lastTrack)
    : m_cdAudio(cdAudio)
    , m_from(firstTrack ? SkippedFrames : 1)
    , m_to(lastTrack ? frames - SkippedFrames : frames)
    , m_crc(static_cast<uint32_t>(crc32(0L, Z_NULL, 0)))
{
}

void TrackChecksummer::add(const std::byte *data, size_t bytes)
{
    m_bytes += static_cast<int64_t>(bytes);
    // zlib takes at most 4 GiB at a time, far more than any piece of a chain.
    m_crc = static_cast<uint32_t>(crc32(m_crc, reinterpret_cast<const Bytef *>(data), static_cast<uInt>(bytes)));
    if (!m_cdAudio)
        return;
    auto frame = [this](uint32_t word) {
        if (m_place >= m_from && m_place <= m_to) {
            const uint64_t product = static_cast<uint64_t>(word) * static_cast<uint64_t>(m_place);
            m_v1 += static_cast<uint32_t>(product);
            m_v2 += static_cast<uint32_t>(product) + static_cast<uint32_t>(product >> 32);
        }
        ++m_place;
    };
    const auto *p = reinterpret_cast<const unsigned char *>(data);
    size_t i = 0;
    while (m_partialBytes > 0 && i < bytes) {
        m_partial[m_partialBytes++] = p[i++];
        if (m_partialBytes == 4) {
            frame(static_cast<uint32_t>(m_partial[0]) | static_cast<uint32_t>(m_partial[1]) << 8 |
                  static_cast<uint32_t>(m_partial[2]) << 16 | static_cast<uint32_t>(m_partial[3]) << 24);
            m_partialBytes = 0;
        }
    }
    for (; i + 4 <= bytes; i += 4)
        frame(static_cast<uint32_t>(p[i]) | static_cast<uint32_t>(p[i + 1]) << 8 | static_cast<uint32_t>(p[i + 2]) << 16 |
              static_cast<uint32_t>(p[i + 3]) << 24);
    for (; i < bytes; ++i)
        m_partial[m_partialBytes++] = p[i];
}

TrackChecksums TrackChecksummer::result() const
{
    TrackChecksums r;
    r.crc32 = m_crc;
    if (m_cdAudio) {
        r.frames = m_bytes / 4;
        r.accurateRipV1 = m_v1;
        r.accurateRipV2 = m_v2;
    }
    return r;
}

} // namespace platform::media
