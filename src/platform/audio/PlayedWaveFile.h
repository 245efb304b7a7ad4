#pragma once

#include <filesystem>

#include <sndfile.h>

namespace platform::audio {

// The silent sink's record of what it played: a 16-bit wave file of the chain's output. Every
// play of one output goes on at its end while the format stays; a play in another format starts
// the file anew. The header is brought up to date after every play.
class PlayedWaveFile {
public:
    explicit PlayedWaveFile(std::filesystem::path file);
    ~PlayedWaveFile();
    PlayedWaveFile(const PlayedWaveFile &) = delete;
    PlayedWaveFile &operator=(const PlayedWaveFile &) = delete;

    const std::filesystem::path &path() const { return m_path; }
    // Before a play: false when the file can't be written (the play goes on without it).
    bool begin(int sampleRate, int channels);
    // Interleaved float frames, -1 to 1, rounded to 16 bits.
    void write(const float *frames, size_t count);
    // After a play: sizes in the header, data on disk.
    void sync();
    void close();

private:
    std::filesystem::path m_path;
    SNDFILE *m_file = nullptr;
    int m_rate = 0;
    int m_channels = 0;
    short m_buffer[4096];
};

} // namespace platform::audio
