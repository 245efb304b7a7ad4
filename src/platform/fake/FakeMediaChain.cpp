#include <filesystem>

#include "FakeRecorder.h"
#include "platform/helper/WaveFormatText.h"
#include "runtime/EventLoop.h"
#include "runtime/Paths.h"
#include "runtime/RuntimeError.h"

namespace platform::fake {

namespace {

namespace fs = std::filesystem;

// An MP3 source that decodes nothing: its length is the decode time the world sets, and its
// position follows the loop's clock while its trigger runs.
class FakeAudioFile : public AudioFile, Recorder {
public:
    explicit FakeAudioFile(std::shared_ptr<FakeWorld> w) : Recorder(std::move(w), "AudioFile") {}
    void setFileName(const std::string &path) override
    {
        m_fileName = path;
        record("FileName", path);
    }
    std::string FileName() const override { return m_fileName; }
    int32_t Position() override { return m_position ? m_position() : 0; }
    int32_t Length() override { return world().decodeMs; }
    void setMpegTrailingHeader(int value) override { record("MpegTrailingHeader", value); }

    // Set by the trigger that runs this source.
    std::function<int32_t()> m_position;

private:
    std::string m_fileName;
};

class FakeWaveFile : public WaveFile, Recorder {
public:
    explicit FakeWaveFile(std::shared_ptr<FakeWorld> w) : Recorder(std::move(w), "DstFile") {}
    void setFileName(const std::string &path) override
    {
        m_fileName = path;
        record("FileName", path);
    }
    std::string FileName() const override { return m_fileName; }
    void setFileMustExist(bool on) override { record("FileMustExist", truthText(on)); }
    void setTargetFormat(std::optional<WaveFormat> f) override
    {
        record("TargetFormat", f ? std::to_string(f->sampleRate) + " Hz, " + std::to_string(f->bitsPerSample) + " bit, " +
                                       std::to_string(f->channels) + " channels"
                                 : std::string("as it comes"));
    }
    int64_t DataPosition() override { return 0; }
    int64_t DataSize() override { return 0; }

private:
    std::string m_fileName;
};

class FakeFormatConverter : public FormatConverter, Recorder {
public:
    explicit FakeFormatConverter(std::shared_ptr<FakeWorld> w) : Recorder(std::move(w), "ACMConverter") {}
    void setWaveFormat(std::optional<WaveFormat> f) override { m_format = f; }
    std::optional<WaveFormat> waveFormat() const override { return m_format; }

private:
    std::optional<WaveFormat> m_format;
};

// A trigger on the loop's time: started at once, stopped when the decode time has passed, closed
// when asked. A source that isn't on disk refuses the start, as a real chain would.
class FakeTrigger : public Trigger, Recorder {
public:
    explicit FakeTrigger(std::shared_ptr<FakeWorld> w) : Recorder(std::move(w), "Trigger") {}
    ~FakeTrigger() override { stopTimer(); }

    void setBufferSize(int bytes) override { record("BufferSize", bytes); }
    void setInterval(int ms) override { record("Interval", ms); }

    void Start() override
    {
        call("Start");
        rt::EventLoop *loop = world().loop;
        if (world().triggerStartFails || !loop)
            rt::raise(75);
        auto *source = dynamic_cast<FakeAudioFile *>(Input());
        if (source) {
            std::error_code ec;
            if (!fs::is_regular_file(rt::nativePath(source->FileName()), ec))
                rt::raise(rt::ErrFileNotFound);
        }
        if (auto *sink = dynamic_cast<FakeWaveFile *>(Output())) {
            std::error_code ec;
            if (!fs::is_directory(rt::nativePath(sink->FileName()).parent_path(), ec))
                rt::raise(75);
        }
        m_state = StateOpen | StateFlowing;
        m_startedAt = loop->now();
        if (source) {
            source->m_position = [this, loop]() -> int32_t {
                const int64_t elapsed = (m_state & StateFlowing) ? loop->now() - m_startedAt : m_stoppedAfter;
                return static_cast<int32_t>(std::min<int64_t>(elapsed, world().decodeMs));
            };
            m_source = source;
        }
        post([this] {
            if (OnStarted)
                OnStarted();
        });
        m_timer = loop->startTimer(std::max(1, world().decodeMs), [this] { stopFlow(); });
    }
    void Stop() override
    {
        call("Stop");
        if (m_state & StateFlowing)
            stopFlow();
    }
    void Close() override
    {
        call("Close");
        stopTimer();
        m_state = 0;
        if (m_source)
            m_source->m_position = nullptr;
        m_source = nullptr;
        post([this] {
            if (OnClosed)
                OnClosed();
        });
    }
    int State() override { return m_state; }

private:
    void post(std::function<void()> event)
    {
        if (world().loop)
            world().loop->postEvent(m_alive, std::move(event));
    }
    void stopTimer()
    {
        if (m_timer && world().loop)
            world().loop->stopTimer(m_timer);
        m_timer = 0;
    }
    void stopFlow()
    {
        stopTimer();
        m_stoppedAfter = world().loop ? world().loop->now() - m_startedAt : 0;
        m_state = StateOpen;
        post([this] {
            if (OnStopped)
                OnStopped();
        });
    }

    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
    FakeAudioFile *m_source = nullptr;
    int m_state = 0;
    int64_t m_startedAt = 0;
    int64_t m_stoppedAfter = 0;
    int m_timer = 0;
};

} // namespace

std::unique_ptr<AudioFile> makeFakeAudioFile(std::shared_ptr<FakeWorld> world)
{
    return std::make_unique<FakeAudioFile>(std::move(world));
}
std::unique_ptr<Trigger> makeFakeTrigger(std::shared_ptr<FakeWorld> world)
{
    return std::make_unique<FakeTrigger>(std::move(world));
}
std::unique_ptr<WaveFile> makeFakeWaveFile(std::shared_ptr<FakeWorld> world)
{
    return std::make_unique<FakeWaveFile>(std::move(world));
}
std::unique_ptr<FormatConverter> makeFakeFormatConverter(std::shared_ptr<FakeWorld> world)
{
    return std::make_unique<FakeFormatConverter>(std::move(world));
}

} // namespace platform::fake

namespace platform::fake {

std::vector<WaveFormat> fakeWaveFormats()
{
    std::vector<WaveFormat> formats;
    for (const char *text : {"PCM, 8000 Hz, 8 bit, mono", "PCM, 22050 Hz, 16 bit, mono", "PCM, 22050 Hz, 16 bit, stereo",
                             "PCM, 44100 Hz, 16 bit, stereo", "PCM, 48000 Hz, 24 bit, stereo", "IEEE float, 44100 Hz, 32 bit, stereo",
                             "A-law, 8000 Hz, 8 bit, mono", "u-law, 8000 Hz, 8 bit, mono", "IMA ADPCM, 22050 Hz, 4 bit, mono",
                             "MS ADPCM, 22050 Hz, 4 bit, stereo", "GSM 6.10, 8000 Hz, mono"}) {
        if (auto f = parseWaveFormatText(text))
            formats.push_back(*f);
    }
    return formats;
}

} // namespace platform::fake
