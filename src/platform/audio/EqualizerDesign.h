#pragma once

#include <vector>

namespace platform::audio {

// A band of the equaliser: from `low` to `high` hertz, its gain in dB.
struct EqBand {
    double low = 0;
    double high = 0;
    double gainDb = 0;
};

// Gains are held to this range when the filter is built (the band keeps the value it was given).
constexpr double MinDesignGainDb = -60.0;
constexpr double MaxDesignGainDb = 24.0;

// The length of the equaliser's filter at a sample rate: long enough that, 100 Hz inside a band
// edge, the response is within 0.2 dB of the band's gain for steps of up to 24 dB between
// neighbouring bands. Always odd; the filter delays by (taps - 1) / 2 samples.
int equalizerTaps(int sampleRate);

// The linear-phase FIR of a band table: the wanted response is each band's gain across the band
// (a later band wins where two overlap) and 0 dB wherever no band lies, up to half the rate.
// Designed as the exact impulse response of that staircase under a Kaiser window. A table whose
// gains are all 0 dB gives a pure delay.
std::vector<float> designEqualizer(const std::vector<EqBand> &bands, int sampleRate, int taps);

// True when the filter of the table is a pure delay.
bool isFlat(const std::vector<EqBand> &bands);

// The magnitude response of a filter at a frequency, in dB.
double responseDb(const std::vector<float> &taps, double frequency, int sampleRate);

} // namespace platform::audio
