#include <algorithm>
#include <filesystem>

#include "FakeRecorder.h"
#include "runtime/Conversions.h"
#include "runtime/EventLoop.h"
#include "runtime/Paths.h"
#include "runtime/RuntimeError.h"

namespace platform::fake {

namespace {

namespace fs = std::filesystem;

// The decoder of the fake player: every file lasts the world's play time; while its output plays,
// the position follows the loop's clock from where the play began.
class FakeMp3Decoder : public Mp3Decoder, Recorder {
public:
    explicit FakeMp3Decoder(std::shared_ptr<FakeWorld> w) : Recorder(std::move(w), "giveamp3") {}
    void setDecryptKey(int v) override { record("DecryptKey", v); }
    void setPanning(int v) override { record("Panning", v); }
    void setVolume(int v) override { record("Volume", v); }
    void setMpegTrailingHeader(int v) override { record("MpegTrailingHeader", v); }
    void setFileName(const std::string &path) override
    {
        m_fileName = path;
        record("FileName", path);
    }
    std::string FileName() const override { return m_fileName; }
    int32_t Position() override
    {
        if (m_playingSince >= 0 && world().loop) {
            const int64_t at = m_startPosition + (world().loop->now() - m_playingSince);
            return static_cast<int32_t>(std::min<int64_t>(at, Length()));
        }
        return m_startPosition;
    }
    void setPosition(int32_t ms) override
    {
        record("Position", ms);
        m_startPosition = std::clamp<int32_t>(ms, 0, Length());
        if (m_playingSince >= 0 && world().loop)
            m_playingSince = world().loop->now();
        if (PositionMoved)
            PositionMoved();
    }
    int32_t Length() override { return world().playMs; }

    // Kept by the output that plays this decoder.
    void playFromHere()
    {
        m_playingSince = world().loop ? world().loop->now() : 0;
    }
    void stopHere()
    {
        m_startPosition = Position();
        m_playingSince = -1;
    }
    // The output re-times its end when a seek moves the position under it.
    std::function<void()> PositionMoved;
    // Gone with the decoder: a window may drop its decoder before its output.
    std::weak_ptr<int> aliveToken() const { return m_alive; }

private:
    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
    std::string m_fileName;
    int32_t m_startPosition = 0;
    int64_t m_playingSince = -1;
};

// An output on the loop's time: it plays the decoder from its position to the file's end,
// raising OnPlayStart at once and OnPlayStop at the end or at Stop.
class FakeWaveOut : public WaveOut, Recorder {
public:
    explicit FakeWaveOut(std::shared_ptr<FakeWorld> w) : Recorder(std::move(w), "MMWaveOutX1") {}
    ~FakeWaveOut() override
    {
        stopTimer();
        if (m_decoder && !m_decoderAlive.expired())
            m_decoder->PositionMoved = nullptr;
    }
    void setBufferSize(int v) override { record("BufferSize", v); }
    void setCallBackMode(int v) override { record("CallBackMode", v); }
    void setLooping(bool on) override { record("Looping", truthText(on)); }
    void setNumBuffers(int v) override { record("NumBuffers", v); }
    void setTimeFormat(int v) override { record("TimeFormat", v); }

    void Open() override
    {
        call("Open");
        FakeMp3Decoder *decoder = findDecoder();
        if (!decoder)
            rt::raise(rt::ErrObjectVariableNotSet);
        std::error_code ec;
        if (!fs::is_regular_file(rt::nativePath(decoder->FileName()), ec))
            rt::raise(rt::ErrFileNotFound);
        m_decoder = decoder;
        m_decoderAlive = decoder->aliveToken();
        m_open = true;
    }
    void Start() override
    {
        call("Start");
        if (!m_open)
            Open();
        if (m_playing)
            return;
        m_playing = true;
        m_decoder->playFromHere();
        m_decoder->PositionMoved = [this] { scheduleEnd(); };
        post([this] {
            if (OnPlayStart)
                OnPlayStart();
        });
        scheduleEnd();
    }
    void Stop() override
    {
        call("Stop");
        if (m_playing)
            endPlay();
    }
    void Close() override
    {
        call("Close");
        if (m_playing)
            endPlay();
        m_open = false;
    }
    int WaveFormatHandle() override { return m_open ? 1 : 0; }

private:
    FakeMp3Decoder *findDecoder()
    {
        for (MediaComponent *c = Input(); c; c = c->Input()) {
            if (auto *d = dynamic_cast<FakeMp3Decoder *>(c))
                return d;
        }
        return nullptr;
    }
    void scheduleEnd()
    {
        stopTimer();
        if (!m_playing || !world().loop)
            return;
        const int left = std::max(1, m_decoder->Length() - m_decoder->Position());
        m_timer = world().loop->startTimer(left, [this] { endPlay(); });
    }
    void endPlay()
    {
        stopTimer();
        m_playing = false;
        m_decoder->stopHere();
        m_decoder->PositionMoved = nullptr;
        // A file played to its end starts again from the top next time.
        if (m_decoder->Position() >= m_decoder->Length())
            m_decoder->setPosition(0);
        post([this] {
            if (OnPlayStop)
                OnPlayStop();
        });
    }
    void stopTimer()
    {
        if (m_timer && world().loop)
            world().loop->stopTimer(m_timer);
        m_timer = 0;
    }
    void post(std::function<void()> event)
    {
        if (world().loop)
            world().loop->postEvent(m_alive, std::move(event));
    }

    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
    FakeMp3Decoder *m_decoder = nullptr;
    std::weak_ptr<int> m_decoderAlive;
    bool m_open = false;
    bool m_playing = false;
    int m_timer = 0;
};

class FakeRingBuffer : public RingBuffer, Recorder {
public:
    explicit FakeRingBuffer(std::shared_ptr<FakeWorld> w) : Recorder(std::move(w), "MMRingBufferX1") {}
    void setBufferSize(int v) override { record("BufferSize", v); }
    void setLoopIfEmpty(bool on) override { record("LoopIfEmpty", truthText(on)); }
    void setQueMode(int v) override { record("QueMode", v); }
    void setWaitIfFull(bool on) override { record("WaitIfFull", truthText(on)); }
};

// Holds the band gains in the world; the "ini file" is the world's table, so a save is what the
// next load of the same run brings back.
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
        record("BandGain(" + std::to_string(index) + ")", rt::numberText(gain));
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
        world().iniGains.clear();
        for (int i = 0; i < BandCount(); ++i)
            world().iniGains[i] = world().bandGains[i];
        record("Saved", std::to_string(world().iniGains.size()) + " bands");
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
    void setSpectrum(ui::Control *spectrum) override { record("Spectrum", std::string(spectrum ? "connected" : "none")); }
};

} // namespace

std::unique_ptr<WaveOut> makeFakeWaveOut(std::shared_ptr<FakeWorld> world)
{
    return std::make_unique<FakeWaveOut>(std::move(world));
}
std::unique_ptr<RingBuffer> makeFakeRingBuffer(std::shared_ptr<FakeWorld> world)
{
    return std::make_unique<FakeRingBuffer>(std::move(world));
}
std::unique_ptr<Equalizer> makeFakeEqualizer(std::shared_ptr<FakeWorld> world)
{
    return std::make_unique<FakeEqualizer>(std::move(world));
}
std::unique_ptr<Connector> makeFakeConnector(std::shared_ptr<FakeWorld> world)
{
    return std::make_unique<FakeConnector>(std::move(world));
}
std::unique_ptr<Mp3Decoder> makeFakeMp3Decoder(std::shared_ptr<FakeWorld> world)
{
    return std::make_unique<FakeMp3Decoder>(std::move(world));
}

} // namespace platform::fake
