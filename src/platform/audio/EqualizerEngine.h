#pragma once

#include <map>
#include <memory>
#include <vector>

#include "EqualizerDesign.h"

namespace platform::audio {

class FirConvolver;

// The equaliser's band table and the filter made of it. The window changes the table; a play
// takes the filter for its rate, and every later change of a gain is designed on the window's
// thread and handed to the playing filter, which fades it in.
class EqualizerEngine {
public:
    EqualizerEngine();
    ~EqualizerEngine();

    void addBand(double low, double high, double gainDb);
    int bandCount() const { return static_cast<int>(m_bands.size()); }
    // A band that doesn't exist is error 9.
    double gain(int index) const;
    void setGain(int index, double gainDb);
    // Several gains at once (one new filter); indexes without a band are passed over.
    void setGains(const std::map<int, double> &gains);
    std::vector<double> gains() const;
    const std::vector<EqBand> &bands() const { return m_bands; }

    // The smallest FFT of the fast convolution (0: as the filter needs).
    void setFftLength(int points) { m_fftLength = points; }

    // Before a play, while nothing plays: the filter for this rate, running blocks of up to
    // `blockFrames`. It stays the engine's and is used until the next prepare.
    FirConvolver *prepare(int sampleRate, int blockFrames);

private:
    void redesign();

    std::vector<EqBand> m_bands;
    int m_fftLength = 0;
    std::unique_ptr<FirConvolver> m_convolver;
    int m_rate = 0;
    int m_block = 0;
    int m_fft = 0;
};

} // namespace platform::audio
