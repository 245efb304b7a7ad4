#include "FakeComponents.h"
#include "FakeImaging.h"
#include "FakeRecorder.h"

#include "runtime/Conversions.h"
#include "runtime/RuntimeError.h"

namespace platform::fake {

namespace {

class FakeSystemInfo : public SystemInfo {
public:
    explicit FakeSystemInfo(std::shared_ptr<FakeWorld> w) : m_world(std::move(w)) {}
    int memoryusedtotal() override { return m_world->memoryUsedPercent; }

private:
    std::shared_ptr<FakeWorld> m_world;
};

// Opens nothing: logs the address (also as "Shell.LastAddress") and answers as told.
class FakeShell : public Shell, Recorder {
public:
    explicit FakeShell(std::shared_ptr<FakeWorld> w) : Recorder(std::move(w), "Shell") {}
    int openAddress(const std::string &address) override
    {
        call("openAddress " + address);
        world().properties["Shell.LastAddress"] = address;
        return world().shellResult;
    }
};

template <class Fake, class Interface>
std::function<std::unique_ptr<Interface>()> maker(const std::shared_ptr<FakeWorld> &world)
{
    return [world]() -> std::unique_ptr<Interface> { return std::make_unique<Fake>(world); };
}

} // namespace

Components makeFakeComponents(std::shared_ptr<FakeWorld> world)
{
    Components c;
    c.settingsStore = [world] { return std::make_unique<FakeSettingsStore>(world->registry); };
    c.systemInfo = maker<FakeSystemInfo, SystemInfo>(world);
    c.shell = maker<FakeShell, Shell>(world);
    c.httpDownload = [world] { return makeFakeHttp(world); };
    if (world->hasWriter)
        c.writerEngine = [world] { return makeFakeWriter(world); };
    c.writableWaveFormats = [] { return fakeWaveFormats(); };
    if (world->hasReader)
        c.cdReader = [world] { return makeFakeCdReader(world); };
    c.waveIn = [world] { return makeFakeWaveIn(world); };
    // The extraction tool's key lives in the same fake registry, under its own name.
    c.extractionStore = [world] { return std::make_unique<FakeSettingsStore>(world->registry); };
    if (world->hasDecoder) {
        c.audioFile = [world] { return makeFakeAudioFile(world); };
        c.trigger = [world] { return makeFakeTrigger(world); };
        c.waveFile = [world] { return makeFakeWaveFile(world); };
        c.formatConverter = [world] { return makeFakeFormatConverter(world); };
    }
    if (world->hasAudioChain) {
        c.waveOut = [world] { return makeFakeWaveOut(world); };
        c.ringBuffer = [world] { return makeFakeRingBuffer(world); };
        c.equalizer = [world] { return makeFakeEqualizer(world); };
        c.connector = [world] { return makeFakeConnector(world); };
        c.mp3Decoder = [world] { return makeFakeMp3Decoder(world); };
    }
    addFakeImaging(c, world);
    return c;
}

} // namespace platform::fake
