#include "PortAudioDevice.h"

#include <algorithm>
#include <cstdio>
#include <mutex>

#include <alsa/asoundlib.h>
#include <fcntl.h>
#include <portaudio.h>
#include <unistd.h>

namespace platform::audio {

namespace {

void quietAlsa(const char *, int, const char *, int, const char *, ...) {}

// PortAudio, initialised once for the process. Probing the host's sound systems makes ALSA and
// JACK print pages of complaints about devices that aren't there; they go to /dev/null.
class PortAudioLibrary {
public:
    static bool ready()
    {
        static PortAudioLibrary library;
        return library.m_ok;
    }

private:
    PortAudioLibrary()
    {
        snd_lib_error_set_handler(&quietAlsa);
        std::fflush(stderr);
        const int saved = ::dup(STDERR_FILENO);
        const int null = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
        if (saved >= 0 && null >= 0)
            ::dup2(null, STDERR_FILENO);
        m_ok = Pa_Initialize() == paNoError;
        if (saved >= 0) {
            ::dup2(saved, STDERR_FILENO);
            ::close(saved);
        }
        if (null >= 0)
            ::close(null);
    }
    ~PortAudioLibrary()
    {
        if (m_ok)
            Pa_Terminate();
    }
    bool m_ok = false;
};

} // namespace

bool portAudioReady()
{
    return PortAudioLibrary::ready();
}

// PortAudio's calls into a device, on its audio thread.
struct PortAudioCallbacks {
    static int render(const void *, void *output, unsigned long frames, const PaStreamCallbackTimeInfo *,
                      PaStreamCallbackFlags, void *self)
    {
        auto *d = static_cast<PortAudioDevice *>(self);
        const RenderResult r = d->m_render(static_cast<float *>(output), frames);
        if (r.finished) {
            d->m_completing = true;
            return paComplete; // PortAudio plays what is queued, then calls finished
        }
        return paContinue;
    }
    static void finished(void *self)
    {
        auto *d = static_cast<PortAudioDevice *>(self);
        if (!d->m_completing)
            return; // stopped, not ended
        d->m_finished = true;
        if (d->m_onFinished)
            d->m_onFinished();
    }
};

PortAudioDevice::PortAudioDevice(RenderFunction render, std::function<void()> onFinished)
    : m_render(std::move(render)), m_onFinished(std::move(onFinished))
{
}

std::unique_ptr<PortAudioDevice> PortAudioDevice::open(const DeviceSpec &spec, RenderFunction render,
                                                       std::function<void()> onFinished)
{
    if (!PortAudioLibrary::ready())
        return nullptr;
    const PaDeviceIndex device = Pa_GetDefaultOutputDevice();
    if (device == paNoDevice)
        return nullptr;
    const PaDeviceInfo *info = Pa_GetDeviceInfo(device);
    if (!info || info->maxOutputChannels < spec.channels)
        return nullptr;

    PaStreamParameters out{};
    out.device = device;
    out.channelCount = spec.channels;
    out.sampleFormat = paFloat32;
    const double wanted = static_cast<double>(spec.periodFrames) * spec.periods / std::max(spec.sampleRate, 1);
    out.suggestedLatency = std::max(std::min(wanted, MaxLatencySeconds), info->defaultLowOutputLatency);
    out.hostApiSpecificStreamInfo = nullptr;

    std::unique_ptr<PortAudioDevice> d(new PortAudioDevice(std::move(render), std::move(onFinished)));
    PaStream *stream = nullptr;
    // The chain clips its own samples.
    const PaError rc = Pa_OpenStream(&stream, nullptr, &out, spec.sampleRate,
                                     static_cast<unsigned long>(spec.periodFrames), paClipOff,
                                     &PortAudioCallbacks::render, d.get());
    if (rc != paNoError || !stream)
        return nullptr;
    d->m_stream = stream;
    Pa_SetStreamFinishedCallback(stream, &PortAudioCallbacks::finished);
    return d;
}

PortAudioDevice::~PortAudioDevice()
{
    stop();
    if (m_stream)
        Pa_CloseStream(static_cast<PaStream *>(m_stream));
    m_stream = nullptr;
}

bool PortAudioDevice::start()
{
    return m_stream && Pa_StartStream(static_cast<PaStream *>(m_stream)) == paNoError;
}

void PortAudioDevice::stop()
{
    if (m_stream && Pa_IsStreamStopped(static_cast<PaStream *>(m_stream)) == 0)
        Pa_AbortStream(static_cast<PaStream *>(m_stream));
}

} // namespace platform::audio
