#pragma once

#include <memory>

#include "PlayerOptions.h"
#include "platform/AudioChain.h"

namespace platform::audio {

class SoundAnalyser;

// The sound card's input (`MMWaveInX`) through PortAudio: while it runs, what the default input
// device hears goes to the analyser of the connector at its `Output`, whose level meters show it.
// Without an input device, or with a sound folder set (tests), it runs silent: its state says
// running and the meters read nothing.
class WaveInComponent final : public WaveIn {
public:
    explicit WaveInComponent(PlayerOptions options);
    ~WaveInComponent() override;

    void setBufferSize(int bytes) override { m_bufferBytes = bytes; }
    void setCallBackMode(int) override {}
    void setDeviceID(int) override {}
    void setChannels(int channels) override { m_channels = channels == 1 ? 1 : 2; }
    void setBitLength(int) override {}
    void setSampleRate(int rate) override { m_rate = rate > 0 ? rate : 44100; }
    void Start() override;
    void Stop() override;
    int State() override { return m_running ? StateRunning : 0; }

    // Called on PortAudio's thread with interleaved frames of m_channels.
    void captured(const float *samples, unsigned long frames);

private:
    PlayerOptions m_options;
    int m_bufferBytes = 4096;
    int m_channels = 2;
    int m_rate = 44100;
    bool m_running = false;
    void *m_stream = nullptr;
    std::shared_ptr<SoundAnalyser> m_analyser;
};

} // namespace platform::audio
