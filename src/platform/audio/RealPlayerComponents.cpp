#include "RealPlayerComponents.h"

#include "ConnectorComponent.h"
#include "EqualizerComponent.h"
#include "Mp3DecoderComponent.h"
#include "RingBufferComponent.h"
#include "WaveInComponent.h"
#include "WaveOutComponent.h"

namespace platform::audio {

void addRealPlayerComponents(platform::Components &c, rt::EventLoop &loop)
{
    addRealPlayerComponents(c, loop, PlayerOptions::fromEnvironment());
}

void addRealPlayerComponents(platform::Components &c, rt::EventLoop &loop, const PlayerOptions &options)
{
    c.waveOut = [&loop, options] { return std::unique_ptr<WaveOut>(std::make_unique<WaveOutComponent>(loop, options)); };
    c.ringBuffer = [] { return std::unique_ptr<RingBuffer>(std::make_unique<RingBufferComponent>()); };
    c.equalizer = [] { return std::unique_ptr<Equalizer>(std::make_unique<EqualizerComponent>()); };
    c.connector = [] { return std::unique_ptr<Connector>(std::make_unique<ConnectorComponent>()); };
    c.mp3Decoder = [] { return std::unique_ptr<Mp3Decoder>(std::make_unique<Mp3DecoderComponent>()); };
    c.waveIn = [options] { return std::unique_ptr<WaveIn>(std::make_unique<WaveInComponent>(options)); };
}

} // namespace platform::audio
