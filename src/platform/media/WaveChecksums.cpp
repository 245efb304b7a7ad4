#include "WaveChecksums.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <vector>

#include "TrackChecksummer.h"
#include "runtime/Paths.h"

namespace platform::media {

namespace {

uint32_t le(const unsigned char *p, int bytes)
{
    uint32_t v = 0;
    for (int i = 0; i < bytes; ++i)
        v |= static_cast<uint32_t>(p[i]) << (8 * i);
    return v;
}

} // namespace

std::optional<TrackChecksums> checksumWaveFile(const std::string &file, bool firstTrack, bool lastTrack)
{
    std::ifstream in(rt::nativePath(file), std::ios::binary);
    unsigned char head[12];
    if (!in.read(reinterpret_cast<char *>(head), sizeof head) || std::memcmp(head, "RIFF", 4) != 0 ||
        std::memcmp(head + 8, "WAVE", 4) != 0)
        return std::nullopt;
    bool cdAudio = false;
    for (int chunks = 0; chunks < 64; ++chunks) {
        unsigned char chunk[8];
        if (!in.read(reinterpret_cast<char *>(chunk), sizeof chunk))
            return std::nullopt;
        const uint32_t size = le(chunk + 4, 4);
        if (std::memcmp(chunk, "fmt ", 4) == 0 && size >= 16) {
            std::vector<unsigned char> fmt(size + (size & 1));
            if (!in.read(reinterpret_cast<char *>(fmt.data()), static_cast<std::streamsize>(fmt.size())))
                return std::nullopt;
            cdAudio = le(fmt.data(), 2) == 1 && le(fmt.data() + 2, 2) == 2 && le(fmt.data() + 4, 4) == 44100 &&
                      le(fmt.data() + 14, 2) == 16;
            continue;
        }
        if (std::memcmp(chunk, "data", 4) != 0) {
            in.seekg(static_cast<std::streamoff>(size) + (size & 1), std::ios::cur);
            continue;
        }
        // A header whose sizes were never written (a copy cut short) counts to the end of the file.
        const std::streamoff at = in.tellg();
        in.seekg(0, std::ios::end);
        const std::streamoff rest = in.tellg() - at;
        in.seekg(at);
        const int64_t bytes = size == 0 || size == 0xFFFFFFFFu ? rest : std::min<int64_t>(size, rest);
        TrackChecksummer sums(bytes / 4, cdAudio, firstTrack, lastTrack);
        std::vector<char> buffer(1 << 20);
        for (int64_t left = bytes; left > 0;) {
            const auto n = static_cast<std::streamsize>(std::min<int64_t>(left, static_cast<int64_t>(buffer.size())));
            if (!in.read(buffer.data(), n))
                return std::nullopt;
            sums.add(reinterpret_cast<const std::byte *>(buffer.data()), static_cast<size_t>(n));
            left -= n;
        }
        return sums.result();
    }
    return std::nullopt;
}

} // namespace platform::media
