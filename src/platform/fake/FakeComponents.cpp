#include "FakeComponents.h"

#include "runtime/Conversions.h"
#include "runtime/RuntimeError.h"

namespace platform::fake {

namespace {

std::string truth(bool on)
{
    return on ? "True" : "False";
}

class FakeSystemInfo : public SystemInfo {
public:
    explicit FakeSystemInfo(std::shared_ptr<FakeWorld> w) : m_world(std::move(w)) {}
    int memoryusedtotal() override { return m_world->memoryUsedPercent; }

private:
    std::shared_ptr<FakeWorld> m_world;
};

// The common part of the fakes: each property set is logged under the component's name.
class Recorder {
public:
    Recorder(std::shared_ptr<FakeWorld> w, std::string component) : m_world(std::move(w)), m_component(std::move(component)) {}

protected:
    void record(const std::string &property, const std::string &value)
    {
        m_world->properties[m_component + "." + property] = value;
        m_world->calls.push_back(m_component + "." + property + " = " + value);
    }
    void record(const std::string &property, int value) { record(property, std::to_string(value)); }
    void call(const std::string &what) { m_world->calls.push_back(m_component + "." + what); }
    FakeWorld &world() { return *m_world; }

private:
    std::shared_ptr<FakeWorld> m_world;
    std::string m_component;
};

class FakeWriter : public WriterEngine, Recorder {
public:
    explicit FakeWriter(std::shared_ptr<FakeWorld> w) : Recorder(std::move(w), "ACDWRITE1") {}
    int InitEngine() override
    {
        call("InitEngine");
        return world().writerInitResult;
    }
    int DeviceCount() override { return static_cast<int>(world().writerDevices.size()); }
    std::string DeviceName(int index) override
    {
        if (index < 0 || index >= DeviceCount())
            rt::raise(rt::ErrInvalidCall);
        return world().writerDevices[index].first;
    }
    void SelectDevice(int index) override
    {
        call("SelectDevice " + std::to_string(index));
        m_current = index;
    }
    int DeviceDriverType() override
    {
        return m_current >= 0 && m_current < DeviceCount() ? world().writerDevices[m_current].second : 0;
    }
    void SetDriverType(int type) override { record("DriverType", type); }
    void setCloseDiscAfterTrack(bool on) override { record("CloseDiscAfterTrack", truth(on)); }
    void setCloseSessionAfterTrack(bool on) override { record("CloseSessionAfterTrack", truth(on)); }
    void setTestWrite(bool on) override { record("TestWrite", truth(on)); }
    void setWriteSpeed(int speed) override { record("WriteSpeed", speed); }
    // The engine's own conversion of stored text: a whole number or error 13.
    void setFifoBufferCount(const std::string &v) override { record("FifoBufferCount", rt::CLng(v).value()); }
    void setPreGapSize(const std::string &v) override { record("PreGapSize", rt::CLng(v).value()); }
    void setSectorsPerBuffer(const std::string &v) override { record("SectorsPerBuffer", rt::CLng(v).value()); }
    void setSwapBytes(const std::string &v) override { record("SwapBytes", truth(rt::CBool(v))); }
    void setSwapBytes(bool on) override { record("SwapBytes", truth(on)); }
    void setFifoBufferCount(int count) override { record("FifoBufferCount", count); }
    int DiscState() override { return 0; }
    int AddTrack(const std::string &, int) override { return 0; }
    int WriteTracks() override { return 0; }
    void ClearTracks() override {}

private:
    int m_current = -1;
};

class FakeWaveOut : public WaveOut, Recorder {
public:
    explicit FakeWaveOut(std::shared_ptr<FakeWorld> w) : Recorder(std::move(w), "MMWaveOutX1") {}
    void setBufferSize(int v) override { record("BufferSize", v); }
    void setCallBackMode(int v) override { record("CallBackMode", v); }
    void setLooping(bool on) override { record("Looping", truth(on)); }
    void setNumBuffers(int v) override { record("NumBuffers", v); }
    void setTimeFormat(int v) override { record("TimeFormat", v); }
};

class FakeRingBuffer : public RingBuffer, Recorder {
public:
    explicit FakeRingBuffer(std::shared_ptr<FakeWorld> w) : Recorder(std::move(w), "MMRingBufferX1") {}
    void setBufferSize(int v) override { record("BufferSize", v); }
    void setLoopIfEmpty(bool on) override { record("LoopIfEmpty", truth(on)); }
    void setQueMode(int v) override { record("QueMode", v); }
    void setWaitIfFull(bool on) override { record("WaitIfFull", truth(on)); }
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
    void setAutoConvert(bool on) override { record("AutoConvert", truth(on)); }
    void setAutoTrigger(bool on) override { record("AutoTrigger", truth(on)); }
    void setEnterIdle(bool on) override { record("EnterIdle", truth(on)); }
    void setRealTime(bool on) override { record("RealTime", truth(on)); }
    void setRefreshOnStop(bool on) override { record("RefreshOnStop", truth(on)); }
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
        c.writerEngine = maker<FakeWriter, WriterEngine>(world);
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
