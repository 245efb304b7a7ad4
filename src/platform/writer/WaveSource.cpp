#include "WaveSource.h"

#include <system_error>

#include <sndfile.h>

namespace platform::writer {

namespace {

std::string tag(SNDFILE *f, int which)
{
    const char *s = sf_get_string(f, which);
    return s ? std::string(s) : std::string();
}

// Opens the file when it is CD audio; the caller closes it.
SNDFILE *openCdWave(const std::filesystem::path &file, WaveInfo &info, std::string *why)
{
    auto fail = [&](const char *reason) -> SNDFILE * {
        if (why)
            *why = reason;
        return nullptr;
    };
    std::error_code ec;
    if (file.empty() || !std::filesystem::is_regular_file(file, ec))
        return fail("no such file");
    SF_INFO sfi{};
    SNDFILE *f = sf_open(file.c_str(), SFM_READ, &sfi);
    if (!f)
        return fail("not a sound file");
    const int major = sfi.format & SF_FORMAT_TYPEMASK;
    const int minor = sfi.format & SF_FORMAT_SUBMASK;
    const char *reason = nullptr;
    if (major != SF_FORMAT_WAV && major != SF_FORMAT_WAVEX)
        reason = "not a wave file";
    else if (minor != SF_FORMAT_PCM_16 || sfi.channels != 2 || sfi.samplerate != 44100)
        reason = "not 44100 Hz 16-bit stereo";
    else if (sfi.frames <= 0)
        reason = "no audio";
    if (reason) {
        sf_close(f);
        return fail(reason);
    }
    info.frames = sfi.frames;
    info.title = tag(f, SF_STR_TITLE);
    info.artist = tag(f, SF_STR_ARTIST);
    return f;
}

} // namespace

std::optional<WaveInfo> inspectCdWave(const std::filesystem::path &file, std::string *why)
{
    WaveInfo info;
    SNDFILE *f = openCdWave(file, info, why);
    if (!f)
        return std::nullopt;
    sf_close(f);
    return info;
}

int64_t trackSectors(int64_t frames, bool atLeastFourSeconds)
{
    const int64_t sectors = (frames + framesPerSector - 1) / framesPerSector;
    return atLeastFourSeconds && sectors < minimumTrackSectors ? minimumTrackSectors : sectors;
}

WaveReader::~WaveReader()
{
    if (m_file)
        sf_close(m_file);
}

bool WaveReader::open(const std::filesystem::path &file)
{
    if (m_file) {
        sf_close(m_file);
        m_file = nullptr;
    }
    m_info = {};
    m_file = openCdWave(file, m_info, nullptr);
    return m_file != nullptr;
}

int64_t WaveReader::read(int64_t frames, std::vector<char> &out)
{
    if (!m_file)
        return -1;
    m_buffer.resize(static_cast<size_t>(frames) * 2);
    const sf_count_t got = sf_readf_short(m_file, m_buffer.data(), frames);
    if (got < 0)
        return -1;
    if (got == 0 && sf_error(m_file) != SF_ERR_NO_ERROR)
        return -1;
    const size_t samples = static_cast<size_t>(got) * 2;
    const size_t at = out.size();
    out.resize(at + samples * 2);
    for (size_t i = 0; i < samples; ++i) {
        const auto v = static_cast<uint16_t>(m_buffer[i]);
        out[at + 2 * i] = static_cast<char>(v & 0xFF);
        out[at + 2 * i + 1] = static_cast<char>(v >> 8);
    }
    return got;
}

} // namespace platform::writer
