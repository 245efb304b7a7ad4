#include "DecoderStream.h"

#include <algorithm>
#include <cstddef>

#include "runtime/RuntimeError.h"

namespace platform::audio {

namespace {

constexpr int ErrInvalidFileFormat = 321;

} // namespace

DecoderStream::DecoderStream()
{
    // The player works in float from the decoder to the sound card.
    m_source.setFloatSamples(true);
}

DecoderStream::~DecoderStream()
{
    close();
}

void DecoderStream::setFileName(const std::string &path)
{
    m_fileName = path;
    // Measured now (rate and length), so the length is known before the file plays.
    if (!m_open)
        m_source.setFileName(path);
}

void DecoderStream::open()
{
    close();
    if (m_source.FileName() != m_fileName)
        m_source.setFileName(m_fileName);
    // The file is measured again here only when it changed since it was named.
    const media::StreamInfo info = m_source.openSource(); // 53 for a missing file
    if (!m_source.holdsAudio()) {
        m_source.closeSource();
        rt::raise(ErrInvalidFileFormat, "Invalid file format");
    }
    m_rate = info.format.sampleRate;
    m_channels = info.format.channels;
    m_open = true;
}

void DecoderStream::close()
{
    if (m_open)
        m_source.closeSource();
    m_open = false;
}

int DecoderStream::knownRate() const
{
    return m_rate > 0 ? m_rate : 44100;
}

int32_t DecoderStream::lengthMs()
{
    return m_source.Length();
}

int64_t DecoderStream::lengthFrames()
{
    return framesOf(m_source.Length());
}

int64_t DecoderStream::framesOf(int64_t ms) const
{
    return ms * knownRate() / 1000;
}

int64_t DecoderStream::msOf(int64_t frames) const
{
    return frames * 1000 / knownRate();
}

size_t DecoderStream::decode(float *stereo, size_t frames, bool &end)
{
    end = false;
    if (!m_open || m_channels < 1 || m_channels > 2) {
        end = true;
        return 0;
    }
    const size_t frameBytes = static_cast<size_t>(m_channels) * sizeof(float);
    m_samples.resize(frames * static_cast<size_t>(m_channels));
    const media::ReadResult r = m_source.read(reinterpret_cast<std::byte *>(m_samples.data()), frames * frameBytes);
    const size_t got = r.bytes / frameBytes;
    toStereo(m_samples.data(), got, m_channels, stereoGain(m_volume.load(), m_panning.load()), stereo);
    end = r.end || r.error.has_value();
    return got;
}

bool DecoderStream::seek(int64_t frame)
{
    return m_source.seekTo(std::max<int64_t>(frame, 0));
}

} // namespace platform::audio
