#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "AudioDevice.h"

namespace platform::audio {

class PlayedWaveFile;

// A device with no sound card: it asks for the sound at the pace a card would, one buffer at a
// time, and drops it, or writes it to a wave file so that what a listener would hear can be
// measured. `speed` 1 keeps real time; 0 runs as fast as the chain can (for measurements), and
// then waits for the decoder rather than play silence.
class SilentSink final : public AudioDevice {
public:
    SilentSink(const DeviceSpec &spec, RenderFunction render, std::function<void()> onFinished,
               PlayedWaveFile *record = nullptr, double speed = 1.0);
    ~SilentSink() override;

    bool start() override;
    void stop() override;
    bool finished() const override { return m_finished.load(); }

private:
    void run();

    DeviceSpec m_spec;
    RenderFunction m_render;
    std::function<void()> m_onFinished;
    PlayedWaveFile *m_record;
    double m_speed;
    std::vector<float> m_buffer;
    std::thread m_thread;
    std::mutex m_lock;
    std::condition_variable m_wake;
    bool m_stop = false;
    std::atomic<bool> m_finished{false};
};

} // namespace platform::audio
