#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "BurnLog.h"
#include "DriveDiscState.h"
#include "ImageRecorder.h"
#include "WodimRecorder.h"
#include "platform/WriterEngine.h"
#include "runtime/EventLoop.h"

namespace platform::writer {

struct Options {
    // Where the Image Recorder keeps its discs; empty: defaultImageFolder().
    std::filesystem::path imageFolder;
    // The wodim the system recorders are driven with (a name looked up in PATH, or a path).
    std::string wodimPath = "wodim";
    // The Image Recorder's set-up before each track, as a recorder calibrating its laser.
    int setupMs = 5000;
    // A wodim that prints nothing for this long during a burn is ended, and the track fails.
    int wodimSilenceLimitMs = 10 * 60 * 1000;
    // Where the burn logs go; empty: BurnLog::defaultFolder().
    std::filesystem::path logFolder;
    // Whether to look for the system's recorders at all (the Image Recorder is always there).
    bool scanSystemRecorders = true;
    // How a recorder's disc state is read from the drive itself (READ DISC INFORMATION); where it
    // tells nothing, `wodim -atip` is asked instead.
    std::function<std::optional<int>(const std::string &device)> readDriveDiscState =
        [](const std::string &device) { return platform::writer::readDriveDiscState(device); };
};

// The XDG music folder of the user (XDG_MUSIC_DIR of user-dirs.dirs, else ~/Music) and in it
// "MP3 Brasswick Discs".
std::filesystem::path defaultImageFolder();

// The real writing engine: the system's recorders through wodim, then the Image Recorder.
// Events come from a worker thread through the loop; they are dropped once the engine is gone.
class CdWriterEngine final : public WriterEngine {
public:
    static constexpr const char *imageRecorderName = "Image Recorder";

    CdWriterEngine(rt::EventLoop &loop, Options options);
    ~CdWriterEngine() override;
    CdWriterEngine(const CdWriterEngine &) = delete;
    CdWriterEngine &operator=(const CdWriterEngine &) = delete;

    int InitEngine() override;
    int DeviceCount() override;
    std::string DeviceName(int index) override;
    void SelectDevice(int index) override;
    int DeviceDriverType() override;
    void SetDriverType(int type) override;

    int DiscState() override;
    int AddTrack(const std::string &file, int flags) override;
    int WriteTracks() override;
    void ClearTracks() override;

    void setCloseDiscAfterTrack(bool on) override { m_closeDisc = on; }
    void setCloseSessionAfterTrack(bool on) override { m_closeSession = on; }
    void setTestWrite(bool on) override { m_testWrite = on; }
    void setWriteSpeed(int speed) override { m_writeSpeed = speed; }
    void setSwapBytes(bool on) override { m_swapBytes = on; }
    void setFifoBufferCount(int count) override { m_fifoBufferCount = count; }
    void setFifoBufferCount(const std::string &value) override;
    void setPreGapSize(const std::string &value) override;
    void setSectorsPerBuffer(const std::string &value) override;
    void setSwapBytes(const std::string &value) override;

    const std::filesystem::path &imageFolder() const { return m_image.folder(); }
    // The pause before each track but the first, in sectors, as PreGapSize left it.
    int pauseSectors() const { return m_pauseSectors; }
    bool swapBytes() const { return m_swapBytes; }
    int writeSpeed() const { return m_writeSpeed; }
    // The fs= size a wodim write gets from FifoBufferCount and SectorsPerBuffer.
    int64_t fifoSize() const;

private:
    struct Device {
        std::string name;
        std::string dev; // wodim's dev=; empty for the Image Recorder
        bool image = false;
        int driverType = 0;
    };
    struct Entry {
        std::filesystem::path file;
        int64_t frames = 0;
        bool handed = false; // given to a WriteTracks already
    };
    struct Job {
        std::vector<TrackOrder> tracks;
        bool image = false;
        WodimSettings wodim;
    };
    class JobContext;

    void ensureDevices();
    Device *currentDevice();
    WodimSettings wodimSettings(const Device &d) const;
    void run(Job job);
    void post(std::function<void(CdWriterEngine &)> event, std::string work = {});

    rt::EventLoop &m_loop;
    Options m_options;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
    ImageRecorder m_image;
    WodimRecorder m_wodim;

    bool m_scanned = false;
    std::vector<Device> m_devices;
    int m_current = -1;
    std::vector<Entry> m_tracks;

    std::atomic<bool> m_closeDisc{false};
    std::atomic<bool> m_closeSession{false};
    bool m_testWrite = false;
    int m_writeSpeed = 0;
    bool m_swapBytes = false;
    int m_fifoBufferCount = 0;
    int m_sectorsPerBuffer = 0;
    int m_pauseSectors = defaultPauseSectors;

    struct CachedState {
        int device = -1;
        int state = 0;
        std::chrono::steady_clock::time_point at;
    };
    std::optional<CachedState> m_discState;

    // The burn log: opened by the first WriteTracks of a burn, ended by a failed or closing
    // track, another device, a long pause between tracks, or the engine's end.
    void logTracks(const Device &d, const std::vector<TrackOrder> &tracks);
    void logResult(int result, bool closed, double seconds);
    BurnLog m_log;
    int m_logDevice = -1;
    int m_loggedTracks = 0;
    std::string m_discStateNote; // how the last disc state was read, for the log
    std::chrono::steady_clock::time_point m_lastTrackEnd;

    std::thread m_worker;
    std::atomic<bool> m_busy{false};
    std::atomic<bool> m_workOpen{false};
    std::mutex m_stopMutex;
    std::condition_variable m_stopSignal;
    std::atomic<bool> m_stop{false};
};

// The maker the program's components take.
std::function<std::unique_ptr<WriterEngine>()> realWriterMaker(rt::EventLoop &loop, Options options);

} // namespace platform::writer
