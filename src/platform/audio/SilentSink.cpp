#include "SilentSink.h"

#include <algorithm>
#include <chrono>
#include <system_error>

#include "PlayedWaveFile.h"

namespace platform::audio {

SilentSink::SilentSink(const DeviceSpec &spec, RenderFunction render, std::function<void()> onFinished,
                       PlayedWaveFile *record, double speed)
    : m_spec(spec)
    , m_render(std::move(render))
    , m_onFinished(std::move(onFinished))
    , m_record(record)
    , m_speed(speed)
    , m_buffer(static_cast<size_t>(std::max(spec.periodFrames, 1) * std::max(spec.channels, 1)))
{
}

SilentSink::~SilentSink()
{
    stop();
}

bool SilentSink::start()
{
    if (m_thread.joinable())
        return true;
    try {
        m_thread = std::thread(&SilentSink::run, this);
    } catch (const std::system_error &) {
        return false;
    }
    return true;
}

void SilentSink::stop()
{
    {
        std::lock_guard lock(m_lock);
        m_stop = true;
    }
    m_wake.notify_all();
    if (m_thread.joinable())
        m_thread.join();
}

void SilentSink::run()
{
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    const size_t period = static_cast<size_t>(std::max(m_spec.periodFrames, 1));
    const double rate = std::max(m_spec.sampleRate, 1) * (m_speed > 0 ? m_speed : 1.0);
    uint64_t played = 0;
    for (;;) {
        const RenderResult r = m_render(m_buffer.data(), period);
        // A card plays the whole buffer; after the end, only the sound counts. Running ahead of
        // time, the sink waits for a late decoder instead of playing silence.
        const size_t frames = r.finished || m_speed <= 0 ? r.sound : period;
        if (m_speed <= 0 && frames == 0 && !r.finished)
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        if (m_record)
            m_record->write(m_buffer.data(), frames);
        played += frames;
        if (m_speed > 0) {
            // Against the clock of the start, so no error adds up over a long play.
            const auto due = start + std::chrono::duration_cast<Clock::duration>(
                                         std::chrono::duration<double>(static_cast<double>(played) / rate));
            std::unique_lock lock(m_lock);
            if (m_wake.wait_until(lock, due, [this] { return m_stop; }))
                return;
        } else {
            std::lock_guard lock(m_lock);
            if (m_stop)
                return;
        }
        if (r.finished) {
            m_finished = true;
            if (m_onFinished)
                m_onFinished();
            return;
        }
    }
}

} // namespace platform::audio
