#include "WaveInComponent.h"

#include <portaudio.h>

#include <algorithm>
#include <vector>

#include "ConnectorComponent.h"
#include "PortAudioDevice.h"
#include "SoundAnalyser.h"

namespace platform::audio {

namespace {

int captureCallback(const void *input, void *, unsigned long frames, const PaStreamCallbackTimeInfo *,
                    PaStreamCallbackFlags, void *self)
{
    if (input)
        static_cast<WaveInComponent *>(self)->captured(static_cast<const float *>(input), frames);
    return paContinue;
}

} // namespace

WaveInComponent::WaveInComponent(PlayerOptions options) : m_options(std::move(options)) {}

WaveInComponent::~WaveInComponent()
{
    Stop();
}

void WaveInComponent::Start()
{
    if (m_running)
        return;
    m_running = true;
    auto *connector = dynamic_cast<ConnectorComponent *>(Output());
    m_analyser = connector ? connector->analyser() : nullptr;
    if (!m_analyser || m_options.soundFolder || m_options.silentOnly || !portAudioReady())
        return;
    const PaDeviceIndex device = Pa_GetDefaultInputDevice();
    if (device == paNoDevice)
        return;
    PaStreamParameters in{};
    in.device = device;
    in.channelCount = m_channels;
    in.sampleFormat = paFloat32;
    const PaDeviceInfo *info = Pa_GetDeviceInfo(device);
    in.suggestedLatency = info ? info->defaultLowInputLatency : 0.05;
    const unsigned long frames = static_cast<unsigned long>(std::max(64, m_bufferBytes / (2 * m_channels)));
    PaStream *stream = nullptr;
    if (Pa_OpenStream(&stream, &in, nullptr, m_rate, frames, paClipOff, &captureCallback, this) != paNoError)
        return;
    if (Pa_StartStream(stream) != paNoError) {
        Pa_CloseStream(stream);
        return;
    }
    m_stream = stream;
    m_analyser->setPlaying(true);
}

void WaveInComponent::Stop()
{
    if (!m_running)
        return;
    m_running = false;
    if (m_stream) {
        auto *stream = static_cast<PaStream *>(m_stream);
        m_stream = nullptr;
        Pa_StopStream(stream);
        Pa_CloseStream(stream);
    }
    if (m_analyser)
        m_analyser->setPlaying(false);
    m_analyser.reset();
}

void WaveInComponent::captured(const float *samples, unsigned long frames)
{
    if (!m_analyser)
        return;
    if (m_channels == 2) {
        m_analyser->feed(samples, frames);
        return;
    }
    // The meters take stereo: a mono input shows on both.
    thread_local std::vector<float> stereo;
    stereo.resize(frames * 2);
    for (unsigned long i = 0; i < frames; ++i)
        stereo[2 * i] = stereo[2 * i + 1] = samples[i];
    m_analyser->feed(stereo.data(), frames);
}

} // namespace platform::audio
