#include "FakeComponents.h"
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

class FakeWaveOut : public WaveOut, Recorder {
public:
    explicit FakeWaveOut(std::shared_ptr<FakeWorld> w) : Recorder(std::move(w), "MMWaveOutX1") {}
    void setBufferSize(int v) override { record("BufferSize", v); }
    void setCallBackMode(int v) override { record("CallBackMode", v); }
    void setLooping(bool on) override { record("Looping", truthText(on)); }
    void setNumBuffers(int v) override { record("NumBuffers", v); }
    void setTimeFormat(int v) override { record("TimeFormat", v); }
    void Stop() override { call("Stop"); }
};

class FakeRingBuffer : public RingBuffer, Recorder {
public:
    explicit FakeRingBuffer(std::shared_ptr<FakeWorld> w) : Recorder(std::move(w), "MMRingBufferX1") {}
    void setBufferSize(int v) override { record("BufferSize", v); }
    void setLoopIfEmpty(bool on) override { record("LoopIfEmpty", truthText(on)); }
    void setQueMode(int v) override { record("QueMode", v); }
    void setWaitIfFull(bool on) override { record("WaitIfFull", truthText(on)); }
};

class FakeEqualizer : public Equalizer, Recorder {
public:
    explicit FakeEqualizer(std::shared_ptr<FakeWorld> w) : Recorder(std::move(w), "eq") { world().bandGains.clear(); }
    void setChannel(int v) override { record("Channel", v); }
    void setFFTLength(int v) override { record("FFTLength", v); }
    void setSampleRate(int v) override { record("SampleRate", v); }
    void setWindow(int v) override { record("Window", v); }
    void AddBand(double f1, double f2, double gain) override
    {
        call("AddBand " + rt::numberText(f1) + " " + rt::numberText(f2) + " " + rt::numberText(gain));
        world().bandGains.push_back(gain);
    }
    int BandCount() override { return static_cast<int>(world().bandGains.size()); }
    double BandGain(int index) override
    {
        if (index < 0 || index >= BandCount())
            rt::raise(rt::ErrSubscript);
        return world().bandGains[index];
    }
    void setBandGain(int index, double gain) override
    {
        if (index < 0 || index >= BandCount())
            rt::raise(rt::ErrSubscript);
        world().bandGains[index] = gain;
    }
    void LoadFromIni(const std::string &file, const std::string &section) override
    {
        call("LoadFromIni " + file + " " + section);
        for (const auto &[index, gain] : world().iniGains) {
            if (index >= 0 && index < BandCount())
                world().bandGains[index] = gain;
        }
    }
    void SaveToIni(const std::string &file, const std::string &section) override
    {
        call("SaveToIni " + file + " " + section);
    }
};

class FakeConnector : public Connector, Recorder {
public:
    explicit FakeConnector(std::shared_ptr<FakeWorld> w) : Recorder(std::move(w), "MMConnectorX1") {}
    void setAutoConvert(bool on) override { record("AutoConvert", truthText(on)); }
    void setAutoTrigger(bool on) override { record("AutoTrigger", truthText(on)); }
    void setEnterIdle(bool on) override { record("EnterIdle", truthText(on)); }
    void setRealTime(bool on) override { record("RealTime", truthText(on)); }
    void setRefreshOnStop(bool on) override { record("RefreshOnStop", truthText(on)); }
    void setSpeed(int v) override { record("Speed", v); }
    void setTriggerLevel(int v) override { record("TriggerLevel", v); }
    void setTriggerMode(int v) override { record("TriggerMode", v); }
    void setLevels(ui::Control *left, ui::Control *right) override
    {
        record("Levels", std::string(left && right ? "connected" : "none"));
    }
};

class FakeMp3Decoder : public Mp3Decoder, Recorder {
public:
    explicit FakeMp3Decoder(std::shared_ptr<FakeWorld> w) : Recorder(std::move(w), "giveamp3") {}
    void setDecryptKey(int v) override { record("DecryptKey", v); }
    void setPanning(int v) override { record("Panning", v); }
    void setVolume(int v) override { record("Volume", v); }
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
    if (world->hasWriter)
        c.writerEngine = [world] { return makeFakeWriter(world); };
    if (world->hasDecoder) {
        c.audioFile = [world] { return makeFakeAudioFile(world); };
        c.trigger = [world] { return makeFakeTrigger(world); };
        c.waveFile = [world] { return makeFakeWaveFile(world); };
        c.formatConverter = [world] { return makeFakeFormatConverter(world); };
    }
    if (world->hasAudioChain) {
        c.waveOut = maker<FakeWaveOut, WaveOut>(world);
        c.ringBuffer = maker<FakeRingBuffer, RingBuffer>(world);
        c.equalizer = maker<FakeEqualizer, Equalizer>(world);
        c.connector = maker<FakeConnector, Connector>(world);
        c.mp3Decoder = maker<FakeMp3Decoder, Mp3Decoder>(world);
    }
    return c;
}

} // namespace platform::fake
