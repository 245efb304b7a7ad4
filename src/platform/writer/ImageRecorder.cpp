#include "ImageRecorder.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <sstream>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "WaveSource.h"
#include "runtime/Paths.h"

namespace fs = std::filesystem;

namespace platform::writer {

namespace {

constexpr int64_t chunkFrames = 44100; // a second of audio per write
constexpr uintmax_t largestSheet = 1024 * 1024;

bool writeAll(int fd, const char *data, size_t size)
{
    while (size > 0) {
        const ssize_t n = ::write(fd, data, size);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        data += n;
        size -= static_cast<size_t>(n);
    }
    return true;
}

bool writeZeros(int fd, int64_t bytes)
{
    static const std::vector<char> zeros(64 * 1024, 0);
    while (bytes > 0) {
        const size_t n = static_cast<size_t>(std::min<int64_t>(bytes, static_cast<int64_t>(zeros.size())));
        if (!writeAll(fd, zeros.data(), n))
            return false;
        bytes -= static_cast<int64_t>(n);
    }
    return true;
}

std::string timeStamp()
{
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char buf[32];
    std::strftime(buf, sizeof buf, "%Y%m%d-%H%M%S", &local);
    return buf;
}

std::optional<std::string> readSmallFile(const fs::path &p)
{
    std::error_code ec;
    const auto size = fs::file_size(p, ec);
    if (ec || size > largestSheet)
        return std::nullopt;
    std::ifstream in(p, std::ios::binary);
    if (!in)
        return std::nullopt;
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

bool isCueName(const fs::path &p)
{
    std::string ext = p.extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ext == ".cue";
}

// Every percent from the last one passed on up to `now`, in order.
void reportUpTo(WriteContext &ctx, int &last, int now)
{
    while (last < now)
        ctx.progress(++last);
}

} // namespace

ImageRecorder::ImageRecorder(fs::path folder, int setupMs) : m_folder(std::move(folder)), m_setupMs(std::max(0, setupMs)) {}

int ImageRecorder::discState() const
{
    // The folder may not exist yet: then the nearest folder above it must take a new one.
    // Nothing is created here; only a real write makes the folder.
    std::error_code ec;
    fs::path p = m_folder;
    if (p.empty())
        return -1;
    while (true) {
        const auto st = fs::status(p, ec);
        if (fs::exists(st))
            return fs::is_directory(st) && ::access(p.c_str(), W_OK | X_OK) == 0 ? 0 : -1;
        if (!p.has_parent_path() || p.parent_path() == p)
            return -1;
        p = p.parent_path();
    }
}

std::optional<ImageRecorder::Image> ImageRecorder::findOpenImage(const fs::path &folder)
{
    std::error_code ec;
    std::optional<Image> best;
    fs::file_time_type bestTime{};
    for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
        const fs::path cue = it->path();
        if (!isCueName(cue) || !it->is_regular_file(ec))
            continue;
        const auto text = readSmallFile(cue);
        if (!text)
            continue;
        auto sheet = parseCue(*text);
        if (!sheet || sheet->finalised || sheet->binName.find('/') != std::string::npos)
            continue;
        const fs::path bin = folder / sheet->binName;
        std::error_code sizeError;
        const auto binSize = fs::file_size(bin, sizeError);
        // A BIN shorter than its sheet says has been damaged from outside: leave it alone.
        if (sizeError || static_cast<int64_t>(binSize) < sheet->sectors() * sectorBytes)
            continue;
        const auto time = fs::last_write_time(cue, sizeError);
        if (sizeError)
            continue;
        if (!best || time > bestTime || (time == bestTime && cue.filename() > best->cue.filename())) {
            best = Image{cue, bin, std::move(*sheet)};
            bestTime = time;
        }
    }
    return best;
}

namespace {

// Whether a disc that holds `sheet` takes tracks of these lengths after it.
bool sheetTakes(const ImageSheet &sheet, const std::vector<int64_t> &frames, int pauseSectors)
{
    size_t tracks = sheet.tracks.size();
    int64_t end = sheet.sectors();
    for (const int64_t f : frames) {
        const int64_t pause = tracks == 0 ? 0 : std::max(1, pauseSectors);
        ++tracks;
        end += pause + trackSectors(f, true);
        if (tracks > static_cast<size_t>(mostTracks) || end > mostImageSectors)
            return false;
    }
    return true;
}

} // namespace

bool ImageRecorder::takesTracks(const std::vector<int64_t> &frames, int pauseSectors) const
{
    const std::optional<Image> open = findOpenImage(m_folder);
    return sheetTakes(open ? open->sheet : ImageSheet{}, frames, pauseSectors);
}

int ImageRecorder::testTrack(const TrackOrder &order, WriteContext &ctx)
{
    // A test write reads the track through as a real one would, and writes nothing at all.
    WaveReader wave;
    if (!wave.open(order.wave))
        return sourceUnreadable;
    const int64_t frames = wave.info().frames;
    int64_t done = 0;
    int last = 0;
    std::vector<char> bytes;
    while (done < frames) {
        if (ctx.stopRequested())
            return writeStopped;
        bytes.clear();
        const int64_t got = wave.read(std::min(chunkFrames, frames - done), bytes);
        if (got <= 0)
            return sourceUnreadable;
        done += got;
        reportUpTo(ctx, last, static_cast<int>(done * 100 / frames));
    }
    reportUpTo(ctx, last, 100);
    if (ctx.closeRequested())
        ctx.closing();
    return writeOk;
}

int ImageRecorder::writeTrack(const TrackOrder &order, WriteContext &ctx)
{
    // The set-up of a recorder before its laser writes: the close flags may still change.
    ctx.log("Set-up (as a recorder calibrating its laser): " + std::to_string(m_setupMs) + " ms");
    if (!ctx.pause(m_setupMs))
        return writeStopped;
    if (order.testWrite)
        return testTrack(order, ctx);

    WaveReader wave;
    if (!wave.open(order.wave))
        return sourceUnreadable;
    std::error_code ec;
    fs::create_directories(m_folder, ec);
    if (!fs::is_directory(m_folder, ec))
        return imageFolderUnusable;

    // The disc in the recorder, or a blank one under a name no file has.
    bool fresh = false;
    Image image;
    if (auto open = findOpenImage(m_folder)) {
        image = std::move(*open);
    } else {
        const std::string stamp = "disc-" + timeStamp();
        for (int n = 1; n < 1000 && !fresh; ++n) {
            const std::string base = n == 1 ? stamp : stamp + "-" + std::to_string(n);
            const fs::path cue = m_folder / (base + ".cue");
            const fs::path bin = m_folder / (base + ".bin");
            if (fs::exists(cue, ec))
                continue;
            const int fd = ::open(bin.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
            if (fd < 0) {
                if (errno == EEXIST)
                    continue;
                return imageFolderUnusable;
            }
            ::close(fd);
            image.cue = cue;
            image.bin = bin;
            image.sheet.binName = bin.filename().string();
            fresh = true;
        }
        if (!fresh)
            return imageFolderUnusable;
    }

    const int fd = ::open(image.bin.c_str(), O_WRONLY | O_CLOEXEC);
    if (fd < 0) {
        if (fresh)
            ::unlink(image.bin.c_str());
        return imageFolderUnusable;
    }
    const int64_t oldEnd = image.sheet.sectors() * sectorBytes;
    // Whatever follows the last whole track is a track that never ended.
    auto undo = [&](int result) {
        if (::ftruncate(fd, oldEnd) != 0) {
            // Nothing more can be done; the sheet still ends at the last whole track.
        }
        ::close(fd);
        if (fresh)
            ::unlink(image.bin.c_str());
        return result;
    };
    if (::ftruncate(fd, oldEnd) != 0 || ::lseek(fd, oldEnd, SEEK_SET) != oldEnd)
        return undo(writeFailed);

    const WaveInfo info = wave.info();
    const int64_t frames = info.frames;
    if (!sheetTakes(image.sheet, {frames}, order.pauseSectors)) {
        ctx.log("The disc is full: " + std::to_string(image.sheet.tracks.size()) + " tracks, " + std::to_string(image.sheet.sectors())
                + " sectors");
        return undo(discFull);
    }
    // A CD track lasts four seconds at least: a shorter one ends in silence.
    const int64_t sectors = trackSectors(frames, true);
    const bool first = image.sheet.tracks.empty();
    const int64_t pause = first ? 0 : std::max(1, order.pauseSectors);
    if (!writeZeros(fd, pause * sectorBytes))
        return undo(writeFailed);

    ctx.log("Writing " + image.bin.filename().string() + " from sector " + std::to_string(oldEnd / sectorBytes) + ": "
            + std::to_string(pause) + " sectors of pause, " + std::to_string(sectors) + " sectors of audio ("
            + std::to_string(frames) + " frames and silence to " + (sectors == minimumTrackSectors ? "four seconds" : "a whole sector")
            + ")");
    const auto writeStart = std::chrono::steady_clock::now();
    int64_t done = 0;
    int last = 0;
    std::vector<char> bytes;
    while (done < frames) {
        if (ctx.stopRequested())
            return undo(writeStopped);
        bytes.clear();
        const int64_t got = wave.read(std::min(chunkFrames, frames - done), bytes);
        if (got <= 0)
            return undo(sourceUnreadable);
        if (!writeAll(fd, bytes.data(), bytes.size()))
            return undo(writeFailed);
        done += got;
        reportUpTo(ctx, last, static_cast<int>(done * 100 / frames));
    }
    // Silence up to a whole sector, or to four seconds.
    if (!writeZeros(fd, sectors * sectorBytes - frames * 4))
        return undo(writeFailed);
    const auto syncStart = std::chrono::steady_clock::now();
    if (::fdatasync(fd) != 0)
        return undo(writeFailed);
    const auto syncEnd = std::chrono::steady_clock::now();
    char timing[96];
    std::snprintf(timing, sizeof timing, "Data written in %.3f s, synced to the disk in %.3f s",
                  std::chrono::duration<double>(syncStart - writeStart).count(), std::chrono::duration<double>(syncEnd - syncStart).count());
    ctx.log(timing);
    reportUpTo(ctx, last, 100);

    ImageTrack track;
    track.title = cdText(info.title);
    if (track.title.empty()) {
        char fallback[32];
        std::snprintf(fallback, sizeof fallback, "Track %02d", static_cast<int>(image.sheet.tracks.size()) + 1);
        track.title = fallback;
    }
    track.performer = cdText(info.artist);
    track.pauseStart = image.sheet.sectors();
    track.start = track.pauseStart + pause;
    track.length = sectors;
    ImageSheet sheet = image.sheet;
    sheet.tracks.push_back(track);

    // The flags count as they stand now that the track's data has ended.
    if (ctx.closeRequested()) {
        ctx.closing();
        sheet.finalised = true;
    }
    if (!rt::writeFileAtomically(image.cue, renderCue(sheet))) {
        ctx.log("The sheet " + image.cue.filename().string() + " could not be written");
        return undo(writeFailed);
    }
    ctx.log("Sheet " + image.cue.filename().string() + " rewritten: " + std::to_string(sheet.tracks.size()) + " tracks, disc "
            + (sheet.finalised ? "finalised" : "open"));
    ::close(fd);
    return writeOk;
}

} // namespace platform::writer
