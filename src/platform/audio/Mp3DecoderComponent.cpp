#include "Mp3DecoderComponent.h"

#include <algorithm>

namespace platform::audio {

Mp3DecoderComponent::Mp3DecoderComponent() = default;

void Mp3DecoderComponent::setFileName(const std::string &path)
{
    PlayPosition &p = m_stream->position();
    if (path != m_stream->fileName() && !p.playing.load())
        p.rest.store(0);
    m_stream->setFileName(path);
}

int32_t Mp3DecoderComponent::Position()
{
    return static_cast<int32_t>(m_stream->msOf(m_stream->position().current()));
}

void Mp3DecoderComponent::setPosition(int32_t ms)
{
    const int64_t length = m_stream->lengthFrames();
    const int64_t frame = std::clamp<int64_t>(m_stream->framesOf(std::max(ms, 0)), 0, std::max<int64_t>(length, 0));
    PlayPosition &p = m_stream->position();
    if (p.playing.load())
        p.askSeek(frame);
    else
        p.rest.store(frame);
}

int32_t Mp3DecoderComponent::Length()
{
    return m_stream->lengthMs();
}

} // namespace platform::audio
