#include "FakeCdReader.h"

#include <algorithm>

#include "FakeChainSource.h"
#include "FakeRecorder.h"
#include "runtime/EventLoop.h"
#include "runtime/RuntimeError.h"

namespace platform::fake {

namespace {

// The reader on the world's disc. What ReadContents read stays until the next read; the disc's
// presence, status and identity are asked of the world each time, as a drive is.
class FakeCdReader : public CdReader, public FakeChainSource, Recorder {
public:
    explicit FakeCdReader(std::shared_ptr<FakeWorld> w) : Recorder(std::move(w), "CDReader") {}

    int DevicesCount() override { return static_cast<int>(disc().drives.size()); }
    CdDrive DevicesItem(int index) override
    {
        if (index < 0 || index >= DevicesCount())
            rt::raise(rt::ErrSubscript);
        return disc().drives[index];
    }
    void setDevicesItemType(int index, int type) override
    {
        if (index < 0 || index >= DevicesCount())
            rt::raise(rt::ErrSubscript);
        disc().drives[index].Type = type;
        record("Devices(" + std::to_string(index) + ").Type", type);
    }

    int32_t DeviceID() override { return m_deviceId; }
    void setDeviceID(int32_t id) override
    {
        m_deviceId = id;
        record("DeviceID", id);
    }
    std::string DeviceName() override { return drive() ? drive()->Name : std::string(); }
    std::string DriveLetter() override { return drive() ? drive()->DriveLetter : std::string(); }
    int DeviceType() override { return m_deviceType; }
    void setDeviceType(int type) override
    {
        m_deviceType = type;
        record("DeviceType", type);
    }
    int BlockCount() override { return m_blockCount; }
    void setBlockCount(int count) override
    {
        m_blockCount = count;
        record("BlockCount", count);
    }
    int CopyMode() override { return m_copyMode; }
    void setCopyMode(int mode) override
    {
        m_copyMode = mode;
        record("CopyMode", mode);
    }
    bool IgnoreSpeed() override { return m_ignoreSpeed; }
    void setIgnoreSpeed(bool on) override
    {
        m_ignoreSpeed = on;
        record("IgnoreSpeed", truthText(on));
    }

    void Open() override
    {
        call("Open");
        failIfTold("Open");
        if (!drive() || disc().vanished)
            rt::raise(rt::ErrInvalidCall);
        m_open = true;
    }
    void Close() override
    {
        call("Close");
        m_open = false;
    }
    bool DiscPresent() override
    {
        const FakeReaderWorld &d = disc();
        return m_open && !d.vanished && d.discIn && !d.trayOpen;
    }
    int Status() override
    {
        FakeReaderWorld &d = disc();
        if (!m_open || d.vanished)
            return StatusNoDrive;
        if (d.statusOverride >= 0)
            return d.statusOverride;
        if (d.trayOpen)
            return StatusTrayOpen;
        if (!d.discIn)
            return StatusNoDisc;
        return playing() ? StatusPlaying : StatusReady;
    }

    bool ReadContents() override
    {
        call("ReadContents");
        m_tracks.clear();
        m_text.clear();
        if (!DiscPresent() || disc().contentsFail)
            return false;
        const FakeReaderWorld &d = disc();
        for (const auto &t : d.tracks)
            m_tracks.push_back(t.entry);
        if (d.cdText) {
            m_text.push_back({d.discTitle, ""});
            for (const auto &t : d.tracks)
                m_text.push_back({t.title, t.textIsrc});
        }
        return true;
    }
    int32_t DiscId() override
    {
        const FakeReaderWorld &d = disc();
        if (!DiscPresent())
            return 0;
        if (d.discId != 0)
            return d.discId;
        // Made from the table of contents, as the freedb identity is.
        uint32_t id = 0x1000u + static_cast<uint32_t>(d.tracks.size());
        for (const auto &t : d.tracks)
            id = id * 31u + static_cast<uint32_t>(t.entry.Start) * 7u + static_cast<uint32_t>(t.entry.Length);
        id &= 0x7fffffffu;
        return static_cast<int32_t>(id == 0 ? 1 : id);
    }
    bool HasCDText() override { return !m_text.empty(); }
    std::vector<CdTextEntry> CDText() override { return m_text; }
    int TracksCount() override { return static_cast<int>(m_tracks.size()); }
    CdTrack TracksItem(int index) override
    {
        if (index < 0 || index >= TracksCount())
            rt::raise(rt::ErrSubscript);
        return m_tracks[index];
    }
    int32_t FramesOf(int32_t position) override { return position; }

    int32_t PlayPosition() override
    {
        FakeReaderWorld &d = disc();
        if (!playing())
            return d.stoppedAt;
        return d.playStart + static_cast<int32_t>(elapsedPlayMs() * 75 / 1000);
    }
    int CurrentTrack() override
    {
        // As a drive that was never told to play: no track yet.
        if (!disc().everPlayed)
            return 0;
        const int32_t at = PlayPosition();
        int number = 0;
        for (const auto &t : disc().tracks) {
            if (number == 0 || t.entry.Start <= at)
                number = t.entry.Number;
        }
        return number;
    }

    void DetectSpeeds() override
    {
        call("DetectSpeeds");
        failIfTold("DetectSpeeds");
        m_speeds = disc().speeds;
    }
    int SpeedsCount() override { return static_cast<int>(m_speeds.size()); }
    std::string SpeedsText(int index) override
    {
        if (index < 0 || index >= SpeedsCount())
            rt::raise(rt::ErrSubscript);
        return m_speeds[index].first;
    }
    int SpeedValue(int index) override
    {
        if (index < 0 || index >= SpeedsCount())
            rt::raise(rt::ErrSubscript);
        return m_speeds[index].second;
    }
    void SetSpeed(int value) override
    {
        failIfTold("SetSpeed");
        record("Speed", value);
    }

    bool CanReadISRC() override { return disc().canReadIsrc; }
    std::string ReadISRC(int number) override
    {
        call("ReadISRC " + std::to_string(number));
        failIfTold("ReadISRC");
        std::optional<std::string> code;
        for (const auto &t : disc().tracks) {
            if (t.entry.Number == number && !code)
                code = t.isrc;
        }
        FakeReaderWorld &d = disc();
        ++d.isrcReads;
        if (d.onReadIsrc)
            d.onReadIsrc(d.isrcReads);
        if (!code)
            rt::raise(rt::ErrSubscript);
        return *code;
    }

    void SelectRange(int32_t start, int32_t length) override
    {
        m_rangeStart = start;
        m_rangeLength = length;
        record("Range", std::to_string(start) + " " + std::to_string(length));
    }
    int32_t RangeStart() override { return m_rangeStart; }
    int32_t ReadPosition() override
    {
        const int64_t ms = m_clock ? m_clock() : m_lastElapsed;
        int64_t frames = std::min<int64_t>(ms * disc().framesPerSecond / 1000, m_rangeLength);
        if (const auto f = failure())
            frames = std::min<int64_t>(frames, disc().errorFrame - m_rangeStart);
        return m_rangeStart + static_cast<int32_t>(std::max<int64_t>(frames, 0));
    }

    void Play(int32_t start, int32_t length) override
    {
        failIfTold("Play");
        FakeReaderWorld &d = disc();
        record("Play", std::to_string(start) + " " + std::to_string(length));
        d.playStart = start;
        d.playLength = length;
        d.playStartedAt = now();
        d.everPlayed = true;
    }
    void Stop() override
    {
        call("Stop");
        FakeReaderWorld &d = disc();
        if (playing())
            d.stoppedAt = PlayPosition();
        d.playStartedAt = -1;
    }
    void SetDoor(bool closed) override
    {
        record("Door", closed ? "closed" : "open");
        FakeReaderWorld &d = disc();
        d.trayOpen = !closed;
        if (!closed)
            d.playStartedAt = -1;
    }

    // As the source of a chain: the range at the world's pace, failing at its error frame.
    int64_t flowMs() override
    {
        const int fps = std::max(1, disc().framesPerSecond);
        return std::max<int64_t>(1, (static_cast<int64_t>(m_rangeLength) * 1000 + fps - 1) / fps);
    }
    std::optional<Failure> failure() override
    {
        const FakeReaderWorld &d = disc();
        if (d.vanished)
            return Failure{0, 57, "Device I/O error"};
        if (d.errorFrame < m_rangeStart || d.errorFrame >= m_rangeStart + m_rangeLength)
            return std::nullopt;
        const int fps = std::max(1, d.framesPerSecond);
        return Failure{static_cast<int64_t>(d.errorFrame - m_rangeStart) * 1000 / fps, 57, "Device I/O error"};
    }
    void setClock(std::function<int64_t()> elapsedMs) override
    {
        if (!elapsedMs && m_clock)
            m_lastElapsed = m_clock();
        m_clock = std::move(elapsedMs);
    }

private:
    FakeReaderWorld &disc() { return *world().reader; }
    const CdDrive *drive()
    {
        const auto &drives = disc().drives;
        return m_deviceId >= 0 && m_deviceId < static_cast<int>(drives.size()) ? &drives[m_deviceId] : nullptr;
    }
    void failIfTold(const std::string &member)
    {
        const auto &failing = disc().failing;
        if (auto it = failing.find(member); it != failing.end() && it->second)
            rt::raise(rt::ErrInvalidCall);
    }
    int64_t now() { return world().loop ? world().loop->now() : 0; }
    int64_t elapsedPlayMs() { return now() - disc().playStartedAt; }
    bool playing()
    {
        FakeReaderWorld &d = disc();
        if (d.playStartedAt < 0)
            return false;
        if (elapsedPlayMs() * 75 / 1000 >= d.playLength) {
            // The drive stops by itself at the end of what it was asked to play.
            d.stoppedAt = d.playStart + d.playLength;
            d.playStartedAt = -1;
            return false;
        }
        return true;
    }

    int32_t m_deviceId = 0;
    int m_deviceType = 0;
    int m_blockCount = 26;
    int m_copyMode = cmBurst;
    bool m_ignoreSpeed = false;
    bool m_open = false;
    std::vector<CdTrack> m_tracks;
    std::vector<CdTextEntry> m_text;
    std::vector<std::pair<std::string, int>> m_speeds;
    int32_t m_rangeStart = 0;
    int32_t m_rangeLength = 0;
    std::function<int64_t()> m_clock;
    int64_t m_lastElapsed = 0;
};

// The sound card's input: records its starts and stops; a running one has the bit of value 4.
class FakeWaveIn : public WaveIn, Recorder {
public:
    explicit FakeWaveIn(std::shared_ptr<FakeWorld> w) : Recorder(std::move(w), "WaveIn") {}
    void setBufferSize(int bytes) override { record("BufferSize", bytes); }
    void setCallBackMode(int value) override { record("CallBackMode", value); }
    void setDeviceID(int id) override { record("DeviceID", id); }
    void setChannels(int channels) override { record("Channels", channels); }
    void setBitLength(int bits) override { record("BitLength", bits); }
    void setSampleRate(int rate) override { record("SampleRate", rate); }
    void Start() override
    {
        call("Start");
        m_running = true;
        record("Running", truthText(true));
    }
    void Stop() override
    {
        call("Stop");
        m_running = false;
        record("Running", truthText(false));
    }
    int State() override { return m_running ? StateRunning : 0; }

private:
    bool m_running = false;
};

} // namespace

std::unique_ptr<CdReader> makeFakeCdReader(std::shared_ptr<FakeWorld> world)
{
    return std::make_unique<FakeCdReader>(std::move(world));
}

std::unique_ptr<WaveIn> makeFakeWaveIn(std::shared_ptr<FakeWorld> world)
{
    return std::make_unique<FakeWaveIn>(std::move(world));
}

} // namespace platform::fake
