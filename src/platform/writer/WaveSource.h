#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

typedef struct sf_private_tag SNDFILE;

namespace platform::writer {

// A pressed CD's track is at least four seconds (Red Book): a recorder's track is padded to that.
constexpr int64_t minimumTrackSectors = 4 * 75;
constexpr int64_t framesPerSector = 588; // 2352 bytes of 16-bit stereo

// What a wave file holds, when it is CD audio (44100 Hz, 16 bit, stereo PCM).
struct WaveInfo {
    int64_t frames = 0;
    std::string title;
    std::string artist;
};

// Nullopt when the file is missing, no wave, not CD audio or empty; `why` says which.
std::optional<WaveInfo> inspectCdWave(const std::filesystem::path &file, std::string *why = nullptr);

// Sectors a track of that many frames fills: whole sectors, and with `atLeastFourSeconds` no
// fewer than a recorder takes. An image keeps a short track as short as it is.
int64_t trackSectors(int64_t frames, bool atLeastFourSeconds);

// Reads the PCM of a CD wave as little-endian bytes, the order of a BIN and of a WAV.
class WaveReader {
public:
    WaveReader() = default;
    ~WaveReader();
    WaveReader(const WaveReader &) = delete;
    WaveReader &operator=(const WaveReader &) = delete;

    bool open(const std::filesystem::path &file);
    const WaveInfo &info() const { return m_info; }
    // Up to `frames` frames appended to `out` (4 bytes each); 0 at the end, -1 on a read error.
    int64_t read(int64_t frames, std::vector<char> &out);

private:
    SNDFILE *m_file = nullptr;
    WaveInfo m_info;
    std::vector<short> m_buffer;
};

} // namespace platform::writer
