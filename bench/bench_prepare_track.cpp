// Preparing one track for the burn: a five-minute 128 kbit/s stereo MP3 decoded by the real
// chain (MP3 file, trigger with 32768-byte buffers, wave file with the CD target) into its work
// file, against `mpg123 -q -w` writing the same file. The ratio is ours over mpg123's.
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>

#include "Mp3Maker.h"
#include "platform/media/Mp3FileSource.h"
#include "platform/media/TriggerComponent.h"
#include "platform/media/WaveFileComponent.h"
#include "RealWork.h"
#include "runtime/VirtualEventLoop.h"

namespace {

using Clock = std::chrono::steady_clock;

class Track {
public:
    Track()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "bench-track-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr)
            std::abort();
        m_folder = pattern;
        testsupport::Mp3Options options;
        options.sampleRate = 44100;
        options.channels = 2;
        options.kbps = 128;
        options.seconds = 300;
        if (!testsupport::makeMp3(mp3(), options))
            std::abort();
    }
    ~Track()
    {
        std::error_code ec;
        std::filesystem::remove_all(m_folder, ec);
    }
    std::string mp3() const { return (m_folder / "track.mp3").string(); }
    std::string file(const char *name) const { return (m_folder / name).string(); }

private:
    std::filesystem::path m_folder;
};

const Track &track()
{
    static const Track t;
    return t;
}

double ourChain(const std::string &mp3, const std::string &wav)
{
    const auto t0 = Clock::now();
    {
        rt::VirtualEventLoop loop;
        platform::media::Mp3FileSource source;
        platform::media::TriggerComponent trigger(loop);
        platform::media::WaveFileComponent wave(loop);
        source.setFileName(mp3);
        wave.setFileName(wav);
        wave.setTargetFormat(platform::WaveFormat::cdAudio());
        trigger.setInput(&source);
        trigger.setOutput(&wave);
        trigger.setBufferSize(32768);
        bool closed = false;
        trigger.OnClosed = [&] { closed = true; };
        trigger.Start();
        if (!testsupport::settleRealWork(loop, std::chrono::seconds(600)))
            std::abort();
        trigger.Close();
        if (!testsupport::settleRealWork(loop, std::chrono::seconds(600)))
            std::abort();
        if (!closed)
            std::abort();
    }
    return std::chrono::duration<double>(Clock::now() - t0).count();
}

double mpg123Tool(const std::string &mp3, const std::string &wav)
{
    const std::string command = "mpg123 -q -w '" + wav + "' '" + mp3 + "'";
    const auto t0 = Clock::now();
    if (std::system(command.c_str()) != 0)
        std::abort();
    return std::chrono::duration<double>(Clock::now() - t0).count();
}

void BM_PrepareTrackVersusMpg123(benchmark::State &state)
{
    const Track &t = track();
    double ours = 0;
    double tool = 0;
    for (auto _ : state) {
        tool += mpg123Tool(t.mp3(), t.file("mpg123.wav"));
        ours += ourChain(t.mp3(), t.file("work.wav"));
        std::filesystem::remove(t.file("mpg123.wav"));
        std::filesystem::remove(t.file("work.wav"));
    }
    const double n = static_cast<double>(state.iterations());
    state.counters["ours_ms"] = ours / n * 1e3;
    state.counters["mpg123_ms"] = tool / n * 1e3;
    state.counters["ratio"] = tool > 0 ? ours / tool : 0;
}
BENCHMARK(BM_PrepareTrackVersusMpg123)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
