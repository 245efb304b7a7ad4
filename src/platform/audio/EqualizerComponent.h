#pragma once

#include <memory>
#include <string>

#include "EqualizerEngine.h"
#include "platform/AudioChain.h"

namespace platform::audio {

// The 15-band equaliser (`eq`): a linear-phase FIR made from the band table, run as fast
// convolution on the sound being played. Channel, SampleRate and Window are kept: the filter
// always works on both channels, is made for the rate of the file playing, and under the window
// its accuracy needs. FFTLength is the smallest FFT of the convolution (more is slower to react,
// never less accurate).
class EqualizerComponent final : public Equalizer {
public:
    void setChannel(int value) override { m_channel = value; }
    void setFFTLength(int value) override { m_engine->setFftLength(value); }
    void setSampleRate(int value) override { m_sampleRate = value; }
    void setWindow(int value) override { m_window = value; }
    void AddBand(double f1, double f2, double gain) override { m_engine->addBand(f1, f2, gain); }
    int BandCount() override { return m_engine->bandCount(); }
    double BandGain(int index) override { return m_engine->gain(index); }
    void setBandGain(int index, double gain) override { m_engine->setGain(index, gain); }
    void LoadFromIni(const std::string &file, const std::string &section) override;
    void SaveToIni(const std::string &file, const std::string &section) override;

    const std::shared_ptr<EqualizerEngine> &engine() const { return m_engine; }

private:
    std::shared_ptr<EqualizerEngine> m_engine = std::make_shared<EqualizerEngine>();
    int m_channel = 0;
    int m_sampleRate = 44100;
    int m_window = 0;
};

} // namespace platform::audio
