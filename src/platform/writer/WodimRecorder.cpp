#include "WodimRecorder.h"

#include <cstdlib>
#include <functional>
#include <fstream>

#include <unistd.h>

#include "ChildProcess.h"
#include "CueSheet.h"
#include "WaveSource.h"

namespace fs = std::filesystem;

namespace platform::writer {

namespace {

constexpr int scanTimeoutMs = 30000;
constexpr int probeTimeoutMs = 15000;

void put32(std::string &s, uint32_t v)
{
    for (int i = 0; i < 4; ++i)
        s.push_back(static_cast<char>((v >> (8 * i)) & 0xFF));
}

void put16(std::string &s, uint16_t v)
{
    s.push_back(static_cast<char>(v & 0xFF));
    s.push_back(static_cast<char>(v >> 8));
}

// A plain 44-byte header: wodim reads it, and swaps the samples if the drive wants them so.
std::string waveHeader(uint32_t dataBytes)
{
    std::string h = "RIFF";
    put32(h, 36 + dataBytes);
    h += "WAVEfmt ";
    put32(h, 16);
    put16(h, 1);
    put16(h, 2);
    put32(h, 44100);
    put32(h, 44100 * 4);
    put16(h, 4);
    put16(h, 16);
    h += "data";
    put32(h, dataBytes);
    return h;
}

class TempFolder {
public:
    TempFolder()
    {
        const char *tmp = std::getenv("TMPDIR");
        std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/brasswick-track-XXXXXX";
        if (::mkdtemp(pattern.data()))
            m_path = pattern;
    }
    ~TempFolder()
    {
        if (!m_path.empty()) {
            std::error_code ec;
            fs::remove_all(m_path, ec);
        }
    }
    TempFolder(const TempFolder &) = delete;
    TempFolder &operator=(const TempFolder &) = delete;
    const fs::path &path() const { return m_path; }

private:
    fs::path m_path;
};

// The private copy of the track: CD audio padded to whole sectors and at least four seconds.
int copyTrack(const fs::path &source, const fs::path &copy, const fs::path &inf, WriteContext &ctx)
{
    WaveReader wave;
    if (!wave.open(source))
        return sourceUnreadable;
    const int64_t frames = wave.info().frames;
    const int64_t bytesOut = trackSectors(frames, true) * sectorBytes;
    if (bytesOut > 0xFFFFFFFFLL - 36)
        return sourceUnreadable;
    std::ofstream out(copy, std::ios::binary | std::ios::trunc);
    const std::string header = waveHeader(static_cast<uint32_t>(bytesOut));
    out.write(header.data(), static_cast<std::streamsize>(header.size()));
    std::vector<char> bytes;
    int64_t done = 0;
    while (out && done < frames) {
        if (ctx.stopRequested())
            return writeStopped;
        bytes.clear();
        const int64_t got = wave.read(std::min<int64_t>(44100, frames - done), bytes);
        if (got <= 0)
            return sourceUnreadable;
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        done += got;
    }
    const std::vector<char> zeros(static_cast<size_t>(bytesOut - frames * 4), 0);
    out.write(zeros.data(), static_cast<std::streamsize>(zeros.size()));
    out.close();
    if (!out)
        return writeFailed;
    std::ofstream text(inf, std::ios::binary | std::ios::trunc);
    text << infFileText(cdText(wave.info().title), cdText(wave.info().artist));
    text.close();
    return text ? writeOk : writeFailed;
}

// The command as a user would type it again: arguments with blanks or quotes in single quotes.
std::string commandLine(const std::string &program, const std::vector<std::string> &args)
{
    std::string line = "$ " + program;
    for (const std::string &a : args) {
        line += ' ';
        if (!a.empty() && a.find_first_of(" \t'\"\\$") == std::string::npos) {
            line += a;
            continue;
        }
        line += '\'';
        for (char c : a)
            line += c == '\'' ? std::string("'\\''") : std::string(1, c);
        line += '\'';
    }
    return line;
}

// Runs wodim for a burn, every line it prints and its exit status in the burn log.
ChildRun runLogged(const std::string &program, const std::vector<std::string> &args, WriteContext &ctx,
                   const std::function<void(const std::string &)> &onLine, const std::function<bool()> &stop, int silenceLimitMs)
{
    ctx.log(commandLine(program, args));
    ChildRun run = runChild(
        program, args,
        [&](const std::string &line) {
            ctx.log("  " + line);
            if (onLine)
                onLine(line);
        },
        stop, 0, silenceLimitMs);
    if (!run.started)
        ctx.log("wodim could not be run");
    else if (run.stopped)
        ctx.log("Stopped (the writer was closed)");
    else if (run.timedOut)
        ctx.log("Ended: wodim printed nothing for " + std::to_string(silenceLimitMs / 1000) + " s");
    else
        ctx.log("Exit status " + std::to_string(run.exitCode));
    return run;
}

} // namespace

WodimRecorder::WodimRecorder(std::string program) : m_program(std::move(program)) {}

bool WodimRecorder::available() const
{
    return findExecutable(m_program);
}

std::vector<WodimDevice> WodimRecorder::discover() const
{
    if (!available())
        return {};
    const ChildRun list = runChild(m_program, {"--devices"}, {}, {}, scanTimeoutMs);
    auto devices = parseDeviceList(list.output);
    if (devices.empty() && list.started && !list.timedOut)
        devices = parseScanbus(runChild(m_program, {"-scanbus"}, {}, {}, scanTimeoutMs).output);
    return devices;
}

int WodimRecorder::probeDiscState(const WodimSettings &settings) const
{
    const ChildRun run = runChild(m_program, wodimAtipArguments(settings), {}, {}, probeTimeoutMs);
    if (!run.started || run.timedOut)
        return 1;
    return classifyDiscState(run.output, run.exitCode);
}

int WodimRecorder::writeTrack(const TrackOrder &order, const WodimSettings &settings, WriteContext &ctx) const
{
    TempFolder folder;
    if (folder.path().empty())
        return writeFailed;
    // The .inf is found by wodim beside the audio file, under the same name.
    const fs::path copy = folder.path() / "track.wav";
    if (const int copied = copyTrack(order.wave, copy, folder.path() / "track.inf", ctx); copied != writeOk)
        return copied;

    WodimSettings s = settings;
    s.dummy = order.testWrite;
    auto stop = [&ctx] { return ctx.stopRequested(); };
    const ChildRun write = runLogged(
        m_program, wodimWriteArguments(s, copy.string()), ctx,
        [&ctx](const std::string &line) {
            if (auto percent = parseProgressPercent(line); percent && *percent > 0)
                ctx.progress(*percent);
        },
        stop, s.silenceLimitMs);
    if (!write.started)
        return recorderProgramMissing;
    if (write.stopped)
        return writeStopped;
    if (write.timedOut)
        return recorderStalled;
    if (write.exitCode != 0)
        return write.exitCode;
    ctx.progress(100);

    if (!ctx.closeRequested())
        return writeOk;
    ctx.closing();
    const ChildRun fix = runLogged(m_program, wodimFixArguments(s), ctx, {}, stop, s.silenceLimitMs);
    if (!fix.started)
        return recorderProgramMissing;
    if (fix.stopped)
        return writeStopped;
    if (fix.timedOut)
        return recorderStalled;
    return fix.exitCode;
}

} // namespace platform::writer
