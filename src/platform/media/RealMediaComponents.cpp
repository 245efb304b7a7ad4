#include "RealMediaComponents.h"

#include "FormatConverterComponent.h"
#include "Mp3FileSource.h"
#include "TriggerComponent.h"
#include "WaveFileComponent.h"
#include "WritableWaveFormats.h"

namespace platform::media {

void addRealMediaComponents(platform::Components &c, rt::EventLoop &loop)
{
    c.audioFile = [] { return std::unique_ptr<AudioFile>(std::make_unique<Mp3FileSource>()); };
    c.trigger = [&loop] { return std::unique_ptr<Trigger>(std::make_unique<TriggerComponent>(loop)); };
    c.waveFile = [&loop] { return std::unique_ptr<WaveFile>(std::make_unique<WaveFileComponent>(loop)); };
    c.formatConverter = [] {
        return std::unique_ptr<FormatConverter>(std::make_unique<FormatConverterComponent>());
    };
    c.writableWaveFormats = [] { return writableWaveFormats(); };
}

} // namespace platform::media
