#include <algorithm>
#include <filesystem>
#include <fstream>

#include "FakeChainSource.h"
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

// A wave file as the fake chains use it: at the end of a chain it takes nothing and can be told to
// fail (a full disk); at the start it is a source whose data runs at CD rate for the world's
// decode time. It reads back as "DstFile" at the end of a chain and as "SrcFile" at its start,
// whatever the window calls it.
class FakeWaveFile : public WaveFile, Recorder {
public:
    explicit FakeWaveFile(std::shared_ptr<FakeWorld> w) : Recorder(std::move(w), "DstFile") {}
    void setInput(MediaComponent *c) override
    {
        MediaComponent::setInput(c);
        rename(Input() == nullptr && Output() != nullptr ? "SrcFile" : "DstFile");
    }
    void setOutput(MediaComponent *c) override
    {
        MediaComponent::setOutput(c);
        rename(Input() == nullptr && Output() != nullptr ? "SrcFile" : "DstFile");
    }
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
    int64_t DataPosition() override { return m_position ? m_position() * bytesPerMs : 0; }
    int64_t DataSize() override { return m_position ? int64_t{world().decodeMs} * bytesPerMs : 0; }

    // CD audio: 176.4 bytes a millisecond, near enough.
    static constexpr int64_t bytesPerMs = 176;
    // Set by the trigger that reads this file.
    std::function<int32_t()> m_position;


private:
    std::string m_fileName;
};

class FakeFormatConverter : public FormatConverter, Recorder {
public:
    explicit FakeFormatConverter(std::shared_ptr<FakeWorld> w) : Recorder(std::move(w), "ACMConverter") {}
    void setWaveFormat(std::optional<WaveFormat> f) override
    {
        m_format = f;
        record("WaveFormat", f ? waveFormatText(*f) : std::string("as it comes"));
    }
    std::optional<WaveFormat> waveFormat() const override { return m_format; }

private:
    std::optional<WaveFormat> m_format;
};

// Follows a chain through its converters, the way the real trigger finds its ends.
MediaComponent *chainEnd(MediaComponent *c, bool upstream)
{
    for (int depth = 0; c && dynamic_cast<FakeFormatConverter *>(c) && depth < 8; ++depth)
        c = upstream ? c->Input() : c->Output();
    return c;
}

bool isWaveFile(const fs::path &path)
{
    std::ifstream in(path, std::ios::binary);
    char head[12] = {};
    in.read(head, sizeof head);
    return in.gcount() == sizeof head && std::string(head, 4) == "RIFF" && std::string(head + 8, 4) == "WAVE";
}

// A trigger on the loop's time: started at once, a buffer done every 100 ms, stopped when the
// decode time has passed, closed when asked. A source that isn't on disk (or, for a wave
// source, is no wave file) refuses the start, as a real chain would; so does a sink whose folder
// is missing. The flowing bit stays until the stop is delivered, as with the real trigger.
class FakeTrigger : public Trigger, Recorder {
public:
    explicit FakeTrigger(std::shared_ptr<FakeWorld> w) : Recorder(std::move(w), "Trigger") {}
    ~FakeTrigger() override
    {
        stopTimer();
        detachSource();
    }

    void setBufferSize(int bytes) override { record("BufferSize", bytes); }
    void setInterval(int ms) override { record("Interval", ms); }

    void Start() override
    {
        call("Start");
        rt::EventLoop *loop = world().loop;
        if (world().triggerStartFails || !loop)
            rt::raise(75);
        if (m_state & StateFlowing)
            return;
        MediaComponent *source = chainEnd(Input(), true);
        auto *audioSource = dynamic_cast<FakeAudioFile *>(source);
        auto *waveSource = dynamic_cast<FakeWaveFile *>(source);
        std::error_code ec;
        if (audioSource && !fs::is_regular_file(rt::nativePath(audioSource->FileName()), ec))
            rt::raise(rt::ErrFileNotFound);
        if (waveSource && !isWaveFile(rt::nativePath(waveSource->FileName())))
            rt::raise(rt::ErrFileNotFound);
        auto *pacedSource = dynamic_cast<FakeChainSource *>(source);
        m_sink = dynamic_cast<FakeWaveFile *>(chainEnd(Output(), false));
        if (m_sink && !fs::is_directory(rt::nativePath(m_sink->FileName()).parent_path(), ec))
            rt::raise(75);
        m_state = StateOpen | StateFlowing;
        m_startedAt = loop->now();
        auto position = [this, loop]() -> int32_t {
            const int64_t elapsed = m_flowing ? loop->now() - m_startedAt : m_stoppedAfter;
            return static_cast<int32_t>(std::min<int64_t>(elapsed, world().decodeMs));
        };
        m_flowing = true;
        if (audioSource) {
            audioSource->m_position = position;
            m_audioSource = audioSource;
        }
        if (waveSource) {
            waveSource->m_position = position;
            m_waveSource = waveSource;
        }
        post([this] {
            if (OnStarted)
                OnStarted();
        });
        m_timer = loop->startTimer(bufferMs, [this] { tick(); });
        if (pacedSource) {
            // A source of its own pace: the flow lasts as long as it says, or fails on the way.
            m_pacedSource = pacedSource;
            pacedSource->setClock([this, loop]() -> int64_t { return loop->now() - m_startedAt; });
            const auto failure = pacedSource->failure();
            const int64_t ms = failure ? failure->afterMs : pacedSource->flowMs();
            m_endTimer = loop->startTimer(static_cast<int>(std::max<int64_t>(1, ms)), [this, failure] {
                if (failure) {
                    post([this, failure] {
                        if (OnError)
                            OnError(failure->code, failure->message);
                    });
                }
                endFlow();
            });
        } else {
            m_endTimer = loop->startTimer(std::max(1, world().decodeMs), [this] { endFlow(); });
        }
    }
    void Stop() override
    {
        call("Stop");
        if (m_flowing)
            endFlow();
    }
    void Close() override
    {
        call("Close");
        // Closed while data flows: straight to closing, with no stopped event first.
        if (m_flowing)
            endFlow(false);
        m_state = 0;
        detachSource();
        post([this] {
            if (OnClosed)
                OnClosed();
        });
    }
    int State() override { return m_state; }

private:
    static constexpr int bufferMs = 100;

    void tick()
    {
        FakeWorld &w = world();
        ++w.buffersWritten;
        if (m_sink && w.diskFullAfterBuffers > 0 && w.buffersWritten >= w.diskFullAfterBuffers) {
            FakeWaveFile *sink = m_sink;
            post([sink] {
                if (sink->OnWriteFailed)
                    sink->OnWriteFailed();
            });
            endFlow();
            return;
        }
        post([this] {
            if (OnBufferDone)
                OnBufferDone();
        });
    }
    void post(std::function<void()> event)
    {
        if (world().loop)
            world().loop->postEvent(m_alive, std::move(event));
    }
    void stopTimer()
    {
        if (world().loop) {
            if (m_timer)
                world().loop->stopTimer(m_timer);
            if (m_endTimer)
                world().loop->stopTimer(m_endTimer);
        }
        m_timer = 0;
        m_endTimer = 0;
    }
    void detachSource()
    {
        if (m_audioSource)
            m_audioSource->m_position = nullptr;
        if (m_waveSource)
            m_waveSource->m_position = nullptr;
        m_audioSource = nullptr;
        m_waveSource = nullptr;
        m_sink = nullptr;
        if (m_pacedSource)
            m_pacedSource->setClock(nullptr);
        m_pacedSource = nullptr;
    }
    void endFlow(bool tellStopped = true)
    {
        stopTimer();
        if (m_pacedSource)
            m_pacedSource->setClock(nullptr);
        m_flowing = false;
        m_stoppedAfter = world().loop ? std::min<int64_t>(world().loop->now() - m_startedAt, world().decodeMs) : 0;
        if (!tellStopped)
            return;
        post([this] {
            m_state &= ~StateFlowing;
            if (OnStopped)
                OnStopped();
        });
    }

    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
    FakeAudioFile *m_audioSource = nullptr;
    FakeWaveFile *m_waveSource = nullptr;
    FakeWaveFile *m_sink = nullptr;
    FakeChainSource *m_pacedSource = nullptr;
    int m_state = 0;
    bool m_flowing = false;
    int64_t m_startedAt = 0;
    int64_t m_stoppedAfter = 0;
    int m_timer = 0;
    int m_endTimer = 0;
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
