#include "RingBufferComponent.h"

#include <algorithm>

namespace platform::audio {

size_t RingBufferComponent::frames(size_t minFrames) const
{
    constexpr size_t MaxFrames = size_t{4} << 20;
    const int bytes = m_bytes > 0 ? m_bytes : DefaultBytes;
    return std::clamp(static_cast<size_t>(bytes) / 4, std::min(minFrames, MaxFrames), MaxFrames);
}

} // namespace platform::audio
