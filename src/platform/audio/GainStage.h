#pragma once

#include <cstddef>
#include <cstdint>

namespace platform::audio {

// The decoder's gain stage. Volume runs from 0 (silent) to 16384 (as decoded, the default);
// panning from -16384 (left only) through 0 (both, the default) to 16384 (right only): the
// far side is turned down, the near side stays. Values outside are held to the range.
constexpr int UnityVolume = 16384;
constexpr int FullPan = 16384;

struct StereoGain {
    float left = 1.0f;
    float right = 1.0f;
};

StereoGain stereoGain(int volume, int panning);

// 16-bit or float samples of one or two channels into stereo float frames (-1 to 1) with the
// gain; mono goes to both sides.
void toStereo(const int16_t *samples, size_t frames, int channels, StereoGain gain, float *stereo);
void toStereo(const float *samples, size_t frames, int channels, StereoGain gain, float *stereo);

} // namespace platform::audio
