#include "GainStage.h"

#include <algorithm>

namespace platform::audio {

StereoGain stereoGain(int volume, int panning)
{
    const float v = static_cast<float>(std::clamp(volume, 0, UnityVolume)) / UnityVolume;
    const float p = static_cast<float>(std::clamp(panning, -FullPan, FullPan)) / FullPan;
    StereoGain g;
    g.left = v * (p > 0 ? 1.0f - p : 1.0f);
    g.right = v * (p < 0 ? 1.0f + p : 1.0f);
    return g;
}

namespace {

template <class Sample>
void spread(const Sample *samples, size_t frames, int channels, StereoGain gain, float scale, float *stereo)
{
    const float left = gain.left * scale;
    const float right = gain.right * scale;
    if (channels == 1) {
        for (size_t i = 0; i < frames; ++i) {
            stereo[2 * i] = samples[i] * left;
            stereo[2 * i + 1] = samples[i] * right;
        }
        return;
    }
    for (size_t i = 0; i < frames; ++i) {
        stereo[2 * i] = samples[2 * i] * left;
        stereo[2 * i + 1] = samples[2 * i + 1] * right;
    }
}

} // namespace

void toStereo(const int16_t *samples, size_t frames, int channels, StereoGain gain, float *stereo)
{
    spread(samples, frames, channels, gain, 1.0f / 32768.0f, stereo);
}

void toStereo(const float *samples, size_t frames, int channels, StereoGain gain, float *stereo)
{
    spread(samples, frames, channels, gain, 1.0f, stereo);
}

} // namespace platform::audio
