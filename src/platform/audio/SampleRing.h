#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace platform::audio {

// Frames of float samples between one writer thread (the decoder) and one reader thread (the
// sound device). Neither side ever waits on the other: a full ring writes nothing, an empty
// one reads nothing. Counts are frames since the ring was made, never wrapping.
class SampleRing {
public:
    SampleRing(size_t frames, int channels);

    size_t capacity() const { return m_capacity; }
    int channels() const { return m_channels; }

    // Writer side.
    size_t writable() const;
    size_t write(const float *frames, size_t count);
    uint64_t written() const { return m_write.load(std::memory_order_relaxed); }
    // Nothing more will be written (until cleared, when a seek brings more).
    void setEnded(bool ended) { m_ended.store(ended, std::memory_order_release); }

    // Reader side.
    size_t readable() const;
    size_t read(float *to, size_t count);
    uint64_t readCount() const { return m_read.load(std::memory_order_relaxed); }
    // What the writer has written so far, as the reader sees it.
    uint64_t writtenSeen() const { return m_write.load(std::memory_order_acquire); }
    bool ended() const { return m_ended.load(std::memory_order_acquire); }
    // Drops everything written before `position` (a count of written frames).
    void skipTo(uint64_t position);
    // True when the writer has ended and all it wrote has been read.
    bool drained() const;

private:
    const size_t m_capacity;
    const int m_channels;
    std::vector<float> m_samples;
    alignas(64) std::atomic<uint64_t> m_write{0};
    alignas(64) std::atomic<uint64_t> m_read{0};
    std::atomic<bool> m_ended{false};
};

} // namespace platform::audio
