#include "WaveOutComponent.h"

#include <algorithm>

#include "ConnectorComponent.h"
#include "DecoderStream.h"
#include "EqualizerComponent.h"
#include "Mp3DecoderComponent.h"
#include "PlaySession.h"
#include "PlayedWaveFile.h"
#include "RingBufferComponent.h"
#include "platform/media/PcmStream.h"
#include "runtime/RuntimeError.h"

namespace platform::audio {

namespace {

// Deeper than any real chain; a wiring loop stops here.
constexpr int MaxChainDepth = 16;

template <class T>
T *upTheChain(MediaComponent *from)
{
    for (int depth = 0; from && depth < MaxChainDepth; ++depth, from = from->Input()) {
        if (auto *c = dynamic_cast<T *>(from))
            return c;
    }
    return nullptr;
}

template <class T>
T *downTheChain(MediaComponent *from)
{
    for (int depth = 0; from && depth < MaxChainDepth; ++depth, from = from->Output()) {
        if (auto *c = dynamic_cast<T *>(from))
            return c;
    }
    return nullptr;
}

} // namespace

WaveOutComponent::WaveOutComponent(rt::EventLoop &loop, PlayerOptions options)
    : m_loop(loop), m_options(std::move(options))
{
    if (m_options.soundFolder)
        m_record = std::make_shared<PlayedWaveFile>(*m_options.soundFolder / "played.wav");
}

WaveOutComponent::~WaveOutComponent()
{
    // Events still queued go nowhere; the play's work still ends when they are delivered.
    m_alive.reset();
    endSession();
    if (m_stream)
        m_stream->close();
}

int WaveOutComponent::periodFrames() const
{
    const int bytes = m_bufferSize > 0 ? m_bufferSize : 4048;
    return std::clamp(bytes / 4, 64, 16384);
}

void WaveOutComponent::endSession()
{
    if (m_session) {
        m_session->requestStop();
        m_session->join();
        m_session.reset();
    }
}

void WaveOutComponent::Open()
{
    auto *decoder = upTheChain<Mp3DecoderComponent>(Input());
    if (!decoder)
        rt::raise(rt::ErrObjectVariableNotSet);
    endSession();
    if (m_stream && m_stream != decoder->stream())
        m_stream->close();
    m_open = false;
    m_stream = decoder->stream();
    m_stream->open(); // 53 or 321
    m_open = true;
}

void WaveOutComponent::Start()
{
    if (m_session && !m_session->done())
        return; // playing
    if (!m_open)
        Open();
    endSession();

    PlayParts parts;
    parts.decoder = m_stream;
    parts.periodFrames = periodFrames();
    parts.periods = std::clamp(m_numBuffers, 2, 1000);
    parts.looping = m_looping;
    parts.options = m_options;
    parts.record = m_record;
    const size_t minRing = static_cast<size_t>(parts.periodFrames) * 4;
    if (auto *ring = upTheChain<RingBufferComponent>(Input()))
        parts.ringFrames = ring->frames(minRing);
    else
        parts.ringFrames = std::max<size_t>(RingBufferComponent::DefaultBytes / 4, minRing);
    if (auto *eq = upTheChain<EqualizerComponent>(Input())) {
        parts.equalizerOwner = eq->engine();
        parts.equalizer = eq->engine()->prepare(m_stream->sampleRate(), parts.periodFrames);
    }
    if (auto *connector = downTheChain<ConnectorComponent>(Output()))
        parts.analyser = connector->analyser();

    PlayPosition &position = m_stream->position();
    position.seekTarget.store(-1);
    position.seeksDone.store(position.seeksAsked.load());
    position.heard.store(position.rest.load());
    position.playing.store(true);

    m_loop.beginWork(WorkName);
    auto started = [this, alive = std::weak_ptr<int>(m_alive)] {
        m_loop.postEvent(alive, [this] { media::fireEvent(OnPlayStart); });
    };
    auto ended = [this, alive = std::weak_ptr<int>(m_alive)] {
        m_loop.postEvent(alive, [this] { media::fireEvent(OnPlayStop); }, WorkName);
    };
    m_session = std::make_unique<PlaySession>(std::move(parts), started, ended);
    if (!m_session->start()) {
        // No thread, no play: it stops at once.
        m_session.reset();
        position.playing.store(false);
        m_loop.postEvent(m_alive, [this] { media::fireEvent(OnPlayStop); }, WorkName);
    }
}

void WaveOutComponent::Stop()
{
    if (m_session)
        m_session->requestStop();
}

void WaveOutComponent::Close()
{
    endSession();
    if (m_stream)
        m_stream->close();
    m_open = false;
    if (m_record)
        m_record->sync();
}

} // namespace platform::audio
