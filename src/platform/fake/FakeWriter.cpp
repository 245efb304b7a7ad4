#include <algorithm>

#include "FakeRecorder.h"
#include "runtime/Conversions.h"
#include "runtime/EventLoop.h"
#include "runtime/RuntimeError.h"

namespace platform::fake {

namespace {

// A writer on the loop's time: one percent every `msPerPercent`, then the closing when the close
// flags stand at the end of the data, then the track is done. It records what it would have
// written, with the speed, test mode and close flags each track had.
class FakeWriter : public WriterEngine, Recorder {
public:
    explicit FakeWriter(std::shared_ptr<FakeWorld> w) : Recorder(std::move(w), "ACDWRITE1") {}
    ~FakeWriter() override { stopTimer(); }

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
        record("SelectedDevice", index);
        m_current = index;
    }
    int DeviceDriverType() override
    {
        return m_current >= 0 && m_current < DeviceCount() ? world().writerDevices[m_current].second : 0;
    }
    void SetDriverType(int type) override { record("DriverType", type); }

    int DiscState() override
    {
        auto &states = world().discStates;
        if (states.empty())
            return 0;
        const size_t at = std::min(world().discStateReads, states.size() - 1);
        ++world().discStateReads;
        return states[at];
    }
    int AddTrack(const std::string &file, int flags) override
    {
        call("AddTrack " + file + " " + std::to_string(flags));
        if (world().addTrackResult != 0)
            return world().addTrackResult;
        m_tracks.push_back({file, false});
        record("ListedTracks", static_cast<int>(m_tracks.size()));
        return 0;
    }
    int WriteTracks() override
    {
        call("WriteTracks");
        if (world().writeTracksResult != 0)
            return world().writeTracksResult;
        if (!world().loop)
            return 1;
        m_percent = 0;
        m_speedAtStart = m_speed;
        m_testAtStart = m_test;
        stopTimer();
        m_timer = world().loop->startTimer(std::max(1, world().msPerPercent), [this] { writingTick(); });
        return 0;
    }
    void ClearTracks() override
    {
        call("ClearTracks");
        m_tracks.clear();
        record("ListedTracks", 0);
    }

    void setCloseDiscAfterTrack(bool on) override
    {
        m_closeDisc = on;
        record("CloseDiscAfterTrack", truthText(on));
    }
    void setCloseSessionAfterTrack(bool on) override
    {
        m_closeSession = on;
        record("CloseSessionAfterTrack", truthText(on));
    }
    void setTestWrite(bool on) override
    {
        m_test = on;
        record("TestWrite", truthText(on));
    }
    void setWriteSpeed(int speed) override
    {
        m_speed = speed;
        record("WriteSpeed", speed);
    }
    void setSwapBytes(bool on) override { record("SwapBytes", truthText(on)); }
    void setFifoBufferCount(int count) override { record("FifoBufferCount", count); }
    // The engine's own conversion of stored text: a whole number or error 13.
    void setFifoBufferCount(const std::string &v) override { record("FifoBufferCount", rt::CLng(v).value()); }
    void setPreGapSize(const std::string &v) override { record("PreGapSize", rt::CLng(v).value()); }
    void setSectorsPerBuffer(const std::string &v) override { record("SectorsPerBuffer", rt::CLng(v).value()); }
    void setSwapBytes(const std::string &v) override { record("SwapBytes", truthText(rt::CBool(v))); }

private:
    struct Track {
        std::string file;
        bool written;
    };

    void stopTimer()
    {
        if (m_timer && world().loop)
            world().loop->stopTimer(m_timer);
        m_timer = 0;
    }

    void writingTick()
    {
        if (m_percent < 100) {
            ++m_percent;
            if (OnWriteProgress)
                OnWriteProgress(m_percent);
            return;
        }
        // The data has ended: the flags as they stand now decide the closing.
        stopTimer();
        const bool closes = m_closeSession || m_closeDisc;
        for (auto &t : m_tracks) {
            if (t.written)
                continue;
            t.written = true;
            world().writtenTracks.push_back("speed " + std::to_string(m_speedAtStart) + ", test " + truthText(m_testAtStart) +
                                            ", closes " + truthText(closes));
            const int n = static_cast<int>(world().writtenTracks.size());
            world().properties["ACDWRITE1.Written(" + std::to_string(n) + ")"] = world().writtenTracks.back();
            world().properties["ACDWRITE1.TracksWritten"] = std::to_string(n);
        }
        if (closes) {
            call("Closing");
            m_timer = world().loop->startTimer(std::max(1, world().closingMs), [this] { trackDone(); });
            if (OnClosingDisc)
                OnClosingDisc();
            return;
        }
        trackDone();
    }

    void trackDone()
    {
        stopTimer();
        call("TrackDone");
        if (OnTrackDone)
            OnTrackDone(0);
    }

    int m_current = -1;
    std::vector<Track> m_tracks;
    bool m_closeDisc = false;
    bool m_closeSession = false;
    bool m_test = false;
    int m_speed = 0;
    int m_speedAtStart = 0;
    bool m_testAtStart = false;
    int m_percent = 0;
    int m_timer = 0;
};

} // namespace

std::unique_ptr<WriterEngine> makeFakeWriter(std::shared_ptr<FakeWorld> world)
{
    return std::make_unique<FakeWriter>(std::move(world));
}

} // namespace platform::fake
