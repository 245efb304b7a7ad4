#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace platform::audio {

// Where the file position of the sound in a ring changes: at frame `at` of the ring the sound
// is at `position` of the file. A seek drops what lies before it; a loop back to the top does not.
struct StreamMark {
    uint64_t at = 0;
    int64_t position = 0;
    bool dropBefore = false;
    // For a seek: the number of seeks asked when it was carried out.
    uint32_t generation = 0;
};

// Marks from the decoder (one writer) to the device (one reader), in order, without locks.
class StreamMarks {
public:
    static constexpr size_t Capacity = 16;

    // Writer side: false when full.
    bool push(const StreamMark &m)
    {
        const uint64_t t = m_tail.load(std::memory_order_relaxed);
        if (t - m_head.load(std::memory_order_acquire) >= Capacity)
            return false;
        m_marks[t % Capacity] = m;
        m_tail.store(t + 1, std::memory_order_release);
        return true;
    }
    bool full() const
    {
        return m_tail.load(std::memory_order_relaxed) - m_head.load(std::memory_order_acquire) >= Capacity;
    }

    // Reader side: the marks waiting, oldest first.
    size_t size() const
    {
        return static_cast<size_t>(m_tail.load(std::memory_order_acquire) - m_head.load(std::memory_order_relaxed));
    }
    const StreamMark &peek(size_t i) const { return m_marks[(m_head.load(std::memory_order_relaxed) + i) % Capacity]; }
    void pop(size_t n) { m_head.store(m_head.load(std::memory_order_relaxed) + n, std::memory_order_release); }

private:
    std::array<StreamMark, Capacity> m_marks{};
    alignas(64) std::atomic<uint64_t> m_head{0};
    alignas(64) std::atomic<uint64_t> m_tail{0};
};

} // namespace platform::audio
