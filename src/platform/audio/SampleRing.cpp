#include "SampleRing.h"

#include <algorithm>
#include <cstring>

namespace platform::audio {

SampleRing::SampleRing(size_t frames, int channels)
    : m_capacity(std::max<size_t>(frames, 1))
    , m_channels(std::max(channels, 1))
    , m_samples(m_capacity * static_cast<size_t>(m_channels), 0.0f)
{
}

size_t SampleRing::writable() const
{
    const uint64_t w = m_write.load(std::memory_order_relaxed);
    const uint64_t r = m_read.load(std::memory_order_acquire);
    return m_capacity - static_cast<size_t>(w - r);
}

size_t SampleRing::write(const float *frames, size_t count)
{
    const uint64_t w = m_write.load(std::memory_order_relaxed);
    const uint64_t r = m_read.load(std::memory_order_acquire);
    count = std::min(count, m_capacity - static_cast<size_t>(w - r));
    const size_t ch = static_cast<size_t>(m_channels);
    const size_t at = static_cast<size_t>(w % m_capacity);
    const size_t first = std::min(count, m_capacity - at);
    std::memcpy(m_samples.data() + at * ch, frames, first * ch * sizeof(float));
    std::memcpy(m_samples.data(), frames + first * ch, (count - first) * ch * sizeof(float));
    m_write.store(w + count, std::memory_order_release);
    return count;
}

size_t SampleRing::readable() const
{
    const uint64_t w = m_write.load(std::memory_order_acquire);
    const uint64_t r = m_read.load(std::memory_order_relaxed);
    return static_cast<size_t>(w - r);
}

size_t SampleRing::read(float *to, size_t count)
{
    const uint64_t w = m_write.load(std::memory_order_acquire);
    const uint64_t r = m_read.load(std::memory_order_relaxed);
    count = std::min(count, static_cast<size_t>(w - r));
    const size_t ch = static_cast<size_t>(m_channels);
    const size_t at = static_cast<size_t>(r % m_capacity);
    const size_t first = std::min(count, m_capacity - at);
    std::memcpy(to, m_samples.data() + at * ch, first * ch * sizeof(float));
    std::memcpy(to + first * ch, m_samples.data(), (count - first) * ch * sizeof(float));
    m_read.store(r + count, std::memory_order_release);
    return count;
}

void SampleRing::skipTo(uint64_t position)
{
    const uint64_t w = m_write.load(std::memory_order_acquire);
    const uint64_t r = m_read.load(std::memory_order_relaxed);
    const uint64_t to = std::clamp(position, r, w);
    m_read.store(to, std::memory_order_release);
}

bool SampleRing::drained() const
{
    if (!m_ended.load(std::memory_order_acquire))
        return false;
    return readable() == 0;
}

} // namespace platform::audio
