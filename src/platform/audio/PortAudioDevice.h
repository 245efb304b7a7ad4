#pragma once

#include <atomic>
#include <functional>
#include <memory>

#include "AudioDevice.h"

namespace platform::audio {

// PortAudio initialised for the process (once, quietly); false when it can't be.
bool portAudioReady();

// The sound card through PortAudio (ALSA, and through it PulseAudio or PipeWire): the default
// output, 32-bit float stereo, asked for by PortAudio's callback.
class PortAudioDevice final : public AudioDevice {
public:
    // Null when there is no card or it refuses the format.
    static std::unique_ptr<PortAudioDevice> open(const DeviceSpec &spec, RenderFunction render,
                                                 std::function<void()> onFinished);
    ~PortAudioDevice() override;

    bool start() override;
    void stop() override;
    bool finished() const override { return m_finished.load(); }

    // The longest queue asked of a card, whatever the buffers add up to: Stop and a new gain are
    // heard within it.
    static constexpr double MaxLatencySeconds = 0.2;

private:
    friend struct PortAudioCallbacks;
    PortAudioDevice(RenderFunction render, std::function<void()> onFinished);

    RenderFunction m_render;
    std::function<void()> m_onFinished;
    void *m_stream = nullptr;
    std::atomic<bool> m_completing{false};
    std::atomic<bool> m_finished{false};
};

} // namespace platform::audio
