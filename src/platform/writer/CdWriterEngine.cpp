#include "CdWriterEngine.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <system_error>

#include <pwd.h>
#include <unistd.h>

#include "DriverTypes.h"
#include "WaveSource.h"
#include "runtime/Conversions.h"
#include "runtime/Paths.h"
#include "runtime/RuntimeError.h"

namespace fs = std::filesystem;

namespace platform::writer {

namespace {

constexpr const char *workName = "writer";
// A state change of the disc shows within this time; the program's wait loop asks often.
constexpr auto discStateLife = std::chrono::milliseconds(800);
// PreGapSize beyond a minute is taken for a mistake.
constexpr int longestPause = 60 * sectorsPerSecond;
// Tracks of one burn follow each other within the decoding of the next file (and the wait for a
// disc); a WriteTracks after a longer pause starts a new burn log.
constexpr auto longestPauseInABurn = std::chrono::minutes(15);

std::string resultText(int result)
{
    switch (result) {
    case writeOk:
        return "written";
    case writeStopped:
        return "stopped: the writer was closed";
    case sourceUnreadable:
        return "the work file could not be read as CD audio";
    case imageFolderUnusable:
        return "the image folder can't be written";
    case writeFailed:
        return "writing failed (a full disk?)";
    case discFull:
        return "the disc is full: 99 tracks or 99:59:74";
    case recorderProgramMissing:
        return "wodim can't be run";
    case recorderStalled:
        return "wodim stood still and was ended";
    default:
        return "wodim's exit status";
    }
}

std::string minutesSecondsFrames(int64_t frames)
{
    const int64_t sectors = (frames + framesPerSector - 1) / framesPerSector;
    char text[32];
    std::snprintf(text, sizeof text, "%02lld:%02lld.%02lld", static_cast<long long>(sectors / (60 * sectorsPerSecond)),
                  static_cast<long long>(sectors / sectorsPerSecond % 60), static_cast<long long>(sectors % sectorsPerSecond));
    return text;
}

fs::path homeFolder()
{
    if (const char *home = std::getenv("HOME"); home && *home)
        return home;
    if (const passwd *pw = ::getpwuid(::getuid()); pw && pw->pw_dir)
        return pw->pw_dir;
    return "/";
}

// XDG_MUSIC_DIR="$HOME/Music" or an absolute path; nullopt when the file doesn't say.
std::optional<fs::path> xdgMusicFolder(const fs::path &home)
{
    const char *config = std::getenv("XDG_CONFIG_HOME");
    const fs::path configFolder = config && *config == '/' ? fs::path(config) : home / ".config";
    std::ifstream in(configFolder / "user-dirs.dirs");
    std::string line;
    std::optional<fs::path> found;
    while (std::getline(in, line)) {
        const auto start = line.find_first_not_of(" \t");
        if (start == std::string::npos || line.compare(start, 14, "XDG_MUSIC_DIR=") != 0)
            continue;
        std::string value = line.substr(start + 14);
        while (!value.empty() && (value.back() == '\r' || value.back() == ' ' || value.back() == '\t'))
            value.pop_back();
        if (value.size() < 2 || value.front() != '"' || value.back() != '"')
            continue;
        value = value.substr(1, value.size() - 2);
        fs::path folder;
        if (value.rfind("$HOME", 0) == 0) {
            std::string rest = value.substr(5);
            while (!rest.empty() && rest.front() == '/')
                rest.erase(0, 1);
            // "$HOME/" alone means the user turned the folder off.
            if (rest.empty())
                continue;
            folder = home / rest;
        } else if (!value.empty() && value.front() == '/') {
            folder = value;
        } else {
            continue;
        }
        found = folder;
    }
    return found;
}

} // namespace

fs::path defaultImageFolder()
{
    const fs::path home = homeFolder();
    return xdgMusicFolder(home).value_or(home / "Music") / "MP3 Brasswick Discs";
}

// The engine's side of a running job, seen by the backend on the worker thread.
class CdWriterEngine::JobContext : public WriteContext {
public:
    explicit JobContext(CdWriterEngine &engine) : m_engine(engine) {}
    void beginTrack(bool last)
    {
        m_lastOfJob = last;
        m_percent = 0;
        m_closed = false;
    }
    bool stopRequested() const override { return m_engine.m_stop; }
    bool pause(int ms) override
    {
        std::unique_lock lock(m_engine.m_stopMutex);
        m_engine.m_stopSignal.wait_for(lock, std::chrono::milliseconds(ms), [this] { return m_engine.m_stop.load(); });
        return !m_engine.m_stop;
    }
    void progress(int percent) override
    {
        if (percent <= m_percent || percent > 100)
            return;
        m_percent = percent;
        m_engine.post([percent](CdWriterEngine &e) {
            if (auto handler = e.OnWriteProgress)
                handler(percent);
        });
    }
    // A close applies to the last of the listed tracks: closing earlier would leave the rest
    // without a disc to go on.
    bool closeRequested() const override { return m_lastOfJob && (m_engine.m_closeDisc || m_engine.m_closeSession); }
    void log(const std::string &line) override { m_engine.m_log.line(line); }
    bool closed() const { return m_closed; }
    void closing() override
    {
        m_closed = true;
        m_engine.post([](CdWriterEngine &e) {
            if (auto handler = e.OnClosingDisc)
                handler();
        });
    }

private:
    CdWriterEngine &m_engine;
    bool m_lastOfJob = true;
    int m_percent = 0;
    bool m_closed = false;
};

CdWriterEngine::CdWriterEngine(rt::EventLoop &loop, Options options)
    : m_loop(loop)
    , m_options(std::move(options))
    , m_image(m_options.imageFolder.empty() ? defaultImageFolder() : m_options.imageFolder, m_options.setupMs)
    , m_wodim(m_options.wodimPath)
    , m_log(m_options.logFolder.empty() ? BurnLog::defaultFolder() : m_options.logFolder)
{
}

CdWriterEngine::~CdWriterEngine()
{
    {
        std::lock_guard lock(m_stopMutex);
        m_stop = true;
    }
    m_stopSignal.notify_all();
    if (m_worker.joinable())
        m_worker.join();
    // A job that ended without its OnTrackDone still has its work in hand.
    if (m_workOpen.exchange(false))
        m_loop.endWork(workName);
    m_log.end("The writer was closed at " + burnLogTime() + ".");
}

void CdWriterEngine::post(std::function<void(CdWriterEngine &)> event, std::string work)
{
    m_loop.postEvent(std::weak_ptr<void>(m_alive), [this, event = std::move(event)] { event(*this); }, std::move(work));
}

void CdWriterEngine::ensureDevices()
{
    // The list is made once: InitEngine comes between every two tracks of a burn, and the
    // indexes the program holds must keep meaning the same devices.
    if (m_scanned)
        return;
    m_scanned = true;
    if (m_options.scanSystemRecorders) {
        for (const WodimDevice &d : m_wodim.discover())
            m_devices.push_back({d.displayName(), d.dev, false, mmcDriverType});
    }
    m_devices.push_back({imageRecorderName, {}, true, mmcDriverType});
}

CdWriterEngine::Device *CdWriterEngine::currentDevice()
{
    ensureDevices();
    if (m_current < 0 || m_current >= static_cast<int>(m_devices.size()))
        return nullptr;
    return &m_devices[static_cast<size_t>(m_current)];
}

int CdWriterEngine::InitEngine()
{
    ensureDevices();
    // A fresh look at the disc next time; the open image and the track list stay as they are.
    m_discState.reset();
    return m_devices.empty() ? 1 : 0;
}

int CdWriterEngine::DeviceCount()
{
    ensureDevices();
    return static_cast<int>(m_devices.size());
}

std::string CdWriterEngine::DeviceName(int index)
{
    ensureDevices();
    if (index < 0 || index >= static_cast<int>(m_devices.size()))
        rt::raise(rt::ErrInvalidCall);
    return m_devices[static_cast<size_t>(index)].name;
}

void CdWriterEngine::SelectDevice(int index)
{
    m_current = index;
    m_discState.reset();
}

int CdWriterEngine::DeviceDriverType()
{
    const Device *d = currentDevice();
    return d ? d->driverType : 0;
}

void CdWriterEngine::SetDriverType(int type)
{
    if (Device *d = currentDevice())
        d->driverType = type;
}

WodimSettings CdWriterEngine::wodimSettings(const Device &d) const
{
    WodimSettings s;
    s.device = d.dev;
    s.driverName = wodimDriverName(d.driverType);
    s.speed = m_writeSpeed;
    s.fifoBytes = fifoSize();
    s.dummy = m_testWrite;
    s.silenceLimitMs = m_options.wodimSilenceLimitMs;
    return s;
}

int64_t CdWriterEngine::fifoSize() const
{
    return fifoBytes(m_fifoBufferCount, m_sectorsPerBuffer);
}

int CdWriterEngine::DiscState()
{
    Device *d = currentDevice();
    if (!d)
        return -1;
    if (d->image) {
        const int state = m_image.discState();
        m_discStateNote = "Disc state " + std::to_string(state) + ": the image folder " + (state == 0 ? "can" : "can't")
                          + " be written (" + m_image.folder().string() + ")";
        return state;
    }
    // The drive is busy with our own write: no disc is ready for another.
    if (m_busy)
        return 1;
    const auto now = std::chrono::steady_clock::now();
    if (m_discState && m_discState->device == m_current && now - m_discState->at < discStateLife)
        return m_discState->state;
    // The drive itself tells a closed disc from one that takes more tracks; wodim -atip can't.
    std::optional<int> read;
    if (m_options.readDriveDiscState)
        read = m_options.readDriveDiscState(d->dev);
    const int state = read ? *read : m_wodim.probeDiscState(wodimSettings(*d));
    m_discState = CachedState{m_current, state, std::chrono::steady_clock::now()};
    m_discStateNote = "Disc state " + std::to_string(state) + (read ? ", read from the drive (READ DISC INFORMATION)"
                                                                     : ", from wodim -atip (the drive told nothing)");
    return state;
}

int CdWriterEngine::AddTrack(const std::string &file, int flags)
{
    (void)flags;
    if (!currentDevice())
        return 1;
    std::error_code ec;
    const fs::path path = fs::absolute(rt::nativePath(file), ec);
    const std::optional<WaveInfo> wave = ec ? std::nullopt : inspectCdWave(path);
    if (!wave)
        return 2;
    if (currentDevice()->image) {
        // The disc in the Image Recorder refuses a 100th track, or one that ends past 99:59:74.
        std::vector<int64_t> frames;
        for (const Entry &e : m_tracks) {
            if (!e.handed)
                frames.push_back(e.frames);
        }
        frames.push_back(wave->frames);
        if (!m_image.takesTracks(frames, m_pauseSectors))
            return 6;
    }
    m_tracks.push_back({path, wave->frames, false});
    return 0;
}

void CdWriterEngine::ClearTracks()
{
    m_tracks.clear();
}

int CdWriterEngine::WriteTracks()
{
    Device *d = currentDevice();
    if (!d)
        return 1;
    if (m_busy)
        return 2;
    Job job;
    job.image = d->image;
    job.wodim = wodimSettings(*d);
    for (const Entry &e : m_tracks) {
        if (!e.handed)
            job.tracks.push_back({e.file, m_testWrite, m_pauseSectors});
    }
    if (job.tracks.empty())
        return 3;
    if (!d->image && !m_wodim.available())
        return 4;
    if (m_worker.joinable())
        m_worker.join();
    logTracks(*d, job.tracks);
    m_busy = true;
    m_workOpen = true;
    m_loop.beginWork(workName);
    try {
        m_worker = std::thread(&CdWriterEngine::run, this, std::move(job));
    } catch (const std::system_error &) {
        m_busy = false;
        m_workOpen = false;
        m_loop.endWork(workName);
        return 5;
    }
    // Each track is written once: the work file it came from is the next track's soon.
    for (Entry &e : m_tracks)
        e.handed = true;
    return 0;
}

void CdWriterEngine::run(Job job)
{
    JobContext ctx(*this);
    int result = writeOk;
    for (size_t i = 0; i < job.tracks.size() && result == writeOk; ++i) {
        ctx.beginTrack(i + 1 == job.tracks.size());
        const auto start = std::chrono::steady_clock::now();
        result = job.image ? m_image.writeTrack(job.tracks[i], ctx) : m_wodim.writeTrack(job.tracks[i], job.wodim, ctx);
        if (m_stop)
            return; // the engine is going away: no more events
        logResult(result, ctx.closed(), std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    // Not busy before the event: its handler may start the next track at once.
    m_busy = false;
    m_workOpen = false;
    post(
        [result](CdWriterEngine &e) {
            if (auto handler = e.OnTrackDone)
                handler(result);
        },
        workName);
}

void CdWriterEngine::logTracks(const Device &d, const std::vector<TrackOrder> &tracks)
{
    const auto now = std::chrono::steady_clock::now();
    if (m_log.isOpen() && (m_logDevice != m_current || now - m_lastTrackEnd > longestPauseInABurn))
        m_log.end("The log ends here: the next track begins another burn.");
    if (!m_log.isOpen()) {
        std::string heading = "MP3 Brasswick " BRASSWICK_VERSION " burn log\n";
        heading += "Started " + burnLogTime() + "\n";
        if (d.image) {
            heading += "Device: " + d.name + " (driver type " + std::to_string(d.driverType) + "), images in "
                       + m_image.folder().string() + "\n";
        } else {
            const WodimSettings s = wodimSettings(d);
            heading += "Device: " + d.name + " (dev=" + d.dev + ", driver " + s.driverName + ", driver type "
                       + std::to_string(d.driverType) + ")\n";
        }
        heading += "Settings: speed " + std::to_string(m_writeSpeed) + ", FIFO " + std::to_string(fifoSize())
                   + " bytes, pause " + std::to_string(m_pauseSectors) + " sectors, test write "
                   + (m_testWrite ? "yes" : "no");
        m_log.begin(heading);
        m_logDevice = m_current;
        m_loggedTracks = 0;
    }
    for (const TrackOrder &t : tracks) {
        const std::optional<WaveInfo> info = inspectCdWave(t.wave);
        const int64_t frames = info ? info->frames : 0;
        m_log.line("");
        m_log.line("Track " + std::to_string(++m_loggedTracks) + ": " + t.wave.string() + ", " + std::to_string(frames)
                   + " frames (" + minutesSecondsFrames(frames) + ")");
        m_log.line(m_discStateNote.empty() ? std::string("Disc state not read before the track") : m_discStateNote);
    }
}

void CdWriterEngine::logResult(int result, bool closed, double seconds)
{
    char took[32];
    std::snprintf(took, sizeof took, "%.2f", seconds);
    m_log.line("Result " + std::to_string(result) + " (" + resultText(result) + ") after " + took + " s");
    m_lastTrackEnd = std::chrono::steady_clock::now();
    if (result != writeOk)
        m_log.end("The burn failed at " + burnLogTime() + ".");
    else if (closed)
        m_log.end("The disc was closed at " + burnLogTime() + ".");
}

void CdWriterEngine::setFifoBufferCount(const std::string &value)
{
    m_fifoBufferCount = rt::CLng(value).value();
}

void CdWriterEngine::setPreGapSize(const std::string &value)
{
    const int sectors = rt::CLng(value).value();
    m_pauseSectors = sectors >= 1 && sectors <= longestPause ? sectors : defaultPauseSectors;
}

void CdWriterEngine::setSectorsPerBuffer(const std::string &value)
{
    m_sectorsPerBuffer = rt::CLng(value).value();
}

void CdWriterEngine::setSwapBytes(const std::string &value)
{
    m_swapBytes = rt::CBool(value);
}

std::function<std::unique_ptr<WriterEngine>()> realWriterMaker(rt::EventLoop &loop, Options options)
{
    return [&loop, options = std::move(options)]() -> std::unique_ptr<WriterEngine> {
        return std::make_unique<CdWriterEngine>(loop, options);
    };
}

} // namespace platform::writer
