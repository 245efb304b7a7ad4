#include "PlayedWaveFile.h"

#include <algorithm>
#include <cmath>
#include <system_error>

namespace platform::audio {

PlayedWaveFile::PlayedWaveFile(std::filesystem::path file) : m_path(std::move(file)) {}

PlayedWaveFile::~PlayedWaveFile()
{
    close();
}

bool PlayedWaveFile::begin(int sampleRate, int channels)
{
    if (m_file && m_rate == sampleRate && m_channels == channels)
        return true;
    close();
    std::error_code ec;
    std::filesystem::create_directories(m_path.parent_path(), ec);
    SF_INFO info{};
    info.samplerate = sampleRate;
    info.channels = channels;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    m_file = sf_open(m_path.c_str(), SFM_WRITE, &info);
    if (!m_file)
        return false;
    m_rate = sampleRate;
    m_channels = channels;
    return true;
}

void PlayedWaveFile::write(const float *frames, size_t count)
{
    if (!m_file)
        return;
    const size_t ch = static_cast<size_t>(m_channels);
    const size_t perRound = sizeof m_buffer / sizeof m_buffer[0] / ch;
    while (count > 0) {
        const size_t n = std::min(count, perRound);
        // The decoder's 16-bit samples come back exactly when nothing changed them.
        for (size_t i = 0; i < n * ch; ++i)
            m_buffer[i] = static_cast<short>(std::clamp(std::lrint(frames[i] * 32768.0f), -32768L, 32767L));
        if (sf_writef_short(m_file, m_buffer, static_cast<sf_count_t>(n)) != static_cast<sf_count_t>(n)) {
            close(); // a full disk: what was written stays readable
            return;
        }
        frames += n * ch;
        count -= n;
    }
}

void PlayedWaveFile::sync()
{
    if (!m_file)
        return;
    sf_command(m_file, SFC_UPDATE_HEADER_NOW, nullptr, 0);
    sf_write_sync(m_file);
}

void PlayedWaveFile::close()
{
    if (m_file)
        sf_close(m_file);
    m_file = nullptr;
    m_rate = 0;
    m_channels = 0;
}

} // namespace platform::audio
