#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>

namespace platform::audio {

// The decoder's position in frames of the file, shared by the window (which reads and moves it),
// the decoding thread (which carries out seeks) and the device (which says what has been played).
struct PlayPosition {
    std::atomic<bool> playing{false};
    // While playing: the frame reached by what has been played.
    std::atomic<int64_t> heard{0};
    // While stopped: where the next play begins.
    std::atomic<int64_t> rest{0};
    // A seek asked while playing, for the decoding thread; -1 when none waits.
    std::atomic<int64_t> seekTarget{-1};
    // The frame last asked for, shown until the device plays from there.
    std::atomic<int64_t> asked{0};
    std::atomic<uint32_t> seeksAsked{0};
    std::atomic<uint32_t> seeksDone{0};

    int64_t current() const
    {
        if (!playing.load(std::memory_order_acquire))
            return rest.load();
        if (seeksAsked.load(std::memory_order_acquire) != seeksDone.load(std::memory_order_acquire))
            return asked.load();
        return heard.load(std::memory_order_relaxed);
    }
    void askSeek(int64_t frame)
    {
        asked.store(frame);
        seekTarget.store(frame, std::memory_order_release);
        seeksAsked.fetch_add(1, std::memory_order_acq_rel);
        std::lock_guard lock(m_wakerLock);
        if (m_waker)
            m_waker();
    }
    // The play's way to be woken for a seek; cleared when the play ends.
    void setWaker(std::function<void()> waker)
    {
        std::lock_guard lock(m_wakerLock);
        m_waker = std::move(waker);
    }

private:
    std::mutex m_wakerLock;
    std::function<void()> m_waker;
};

} // namespace platform::audio
