#pragma once

#include <cstddef>

#include "platform/AudioChain.h"

namespace platform::audio {

// The ring between the decoder and the device (`MMRingBufferX1`). Its size is in bytes of the
// chain's output (16-bit stereo, four bytes a frame). The player never drops or repeats sound:
// a full ring makes the decoder wait, an empty one plays silence until the decoder catches up,
// whatever WaitIfFull and LoopIfEmpty say; those and QueMode are kept.
class RingBufferComponent final : public RingBuffer {
public:
    static constexpr int DefaultBytes = 262144; // about 1.5 s at 44100 Hz

    void setBufferSize(int value) override { m_bytes = value; }
    void setLoopIfEmpty(bool on) override { m_loopIfEmpty = on; }
    void setQueMode(int value) override { m_queMode = value; }
    void setWaitIfFull(bool on) override { m_waitIfFull = on; }

    // The ring's frames for a play: the size set (the default when none or nonsense), at
    // least `minFrames` and at most 4 Mi frames.
    size_t frames(size_t minFrames) const;

private:
    int m_bytes = DefaultBytes;
    bool m_loopIfEmpty = false;
    int m_queMode = 0;
    bool m_waitIfFull = true;
};

} // namespace platform::audio
