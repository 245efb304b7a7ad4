#pragma once

#include <cstddef>
#include <functional>

namespace platform::audio {

// How a device asks for sound: fill `frames` interleaved stereo float frames; say how many of
// them are sound and whether the sound has ended with them.
struct RenderResult {
    size_t sound = 0;
    bool finished = false;
};
using RenderFunction = std::function<RenderResult(float *out, size_t frames)>;

struct DeviceSpec {
    int sampleRate = 44100;
    int channels = 2;
    // Frames the device asks for at a time, and how many such buffers it keeps queued.
    int periodFrames = 1024;
    int periods = 4;
};

// Where the player's sound goes: the sound card, or the silent sink that keeps its time.
class AudioDevice {
public:
    virtual ~AudioDevice() = default;
    // Starts asking for sound; false when the device can't play.
    virtual bool start() = 0;
    // Stops at once; what is queued is dropped. Callable after the end too.
    virtual void stop() = 0;
    // The sound has ended and its last frame has been played.
    virtual bool finished() const = 0;
};

} // namespace platform::audio
