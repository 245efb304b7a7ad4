// The player chain's cost: a five-minute 128 kbit/s stereo MP3 played through the whole chain
// (decoder, ring, equaliser with every band moved, output into the silent sink, the analysers
// read by a view thread 30 times a second), as a share of one core while it plays in real time.
// The file is played into the silent sink as fast as the chain runs, and the process's CPU time
// is divided by the file's length; a 20-second play in real time measures the same share with
// the device's pacing (its wake-ups) included. Beside it, `mpg123 -q -t` decoding the same file
// (decode only, no output): the ratio is ours over mpg123's CPU time.
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>

#include <sys/resource.h>

#include <benchmark/benchmark.h>

#include "Mp3Maker.h"
#include "platform/Components.h"
#include "platform/audio/ConnectorComponent.h"
#include "platform/audio/RealPlayerComponents.h"
#include "runtime/VirtualEventLoop.h"

namespace {

using Clock = std::chrono::steady_clock;

double cpuSeconds(int who)
{
    rusage u{};
    getrusage(who, &u);
    return static_cast<double>(u.ru_utime.tv_sec + u.ru_stime.tv_sec) +
           static_cast<double>(u.ru_utime.tv_usec + u.ru_stime.tv_usec) / 1e6;
}

class Files {
public:
    Files()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "bench-player-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr)
            std::abort();
        m_folder = pattern;
        make("long.mp3", 300);
        make("short.mp3", 20);
    }
    ~Files()
    {
        std::error_code ec;
        std::filesystem::remove_all(m_folder, ec);
    }
    std::string file(const char *name) const { return (m_folder / name).string(); }

private:
    void make(const char *name, double seconds)
    {
        testsupport::Mp3Options o;
        o.seconds = seconds;
        o.kbps = 128;
        if (!testsupport::makeMp3(file(name), o))
            std::abort();
    }
    std::filesystem::path m_folder;
};

const Files &files()
{
    static const Files f;
    return f;
}

// CPU seconds of one play of the file through the whole chain.
double playThroughChain(const std::string &mp3, double speed)
{
    rt::VirtualEventLoop loop;
    platform::Components makers;
    platform::audio::PlayerOptions options;
    options.silentOnly = true;
    options.silentSpeed = speed;
    platform::audio::addRealPlayerComponents(makers, loop, options);
    auto out = makers.waveOut();
    auto ring = makers.ringBuffer();
    auto eq = makers.equalizer();
    auto connector = makers.connector();
    auto decoder = makers.mp3Decoder();
    decoder->setOutput(ring.get());
    ring->setInput(decoder.get());
    ring->setOutput(eq.get());
    eq->setInput(ring.get());
    eq->setOutput(out.get());
    out->setInput(eq.get());
    out->setOutput(connector.get());
    connector->setInput(out.get());
    const double points[16] = {0, 500, 1500, 2500, 3500, 4500, 5500, 6500, 7500, 8500, 9500, 10500, 11500, 12500, 13500, 14500};
    for (int i = 1; i <= 15; ++i)
        eq->AddBand(points[i - 1], points[i], (i % 5) * 3.0 - 6.0);
    auto analyser = static_cast<platform::audio::ConnectorComponent *>(connector.get())->analyser();

    std::atomic<bool> stop{false};
    std::thread view([&] {
        while (!stop) {
            benchmark::DoNotOptimize(analyser->spectrum());
            benchmark::DoNotOptimize(analyser->takePeak(0) + analyser->takePeak(1));
            std::this_thread::sleep_for(std::chrono::milliseconds(33));
        }
    });
    const double before = cpuSeconds(RUSAGE_SELF);
    decoder->setFileName(mp3);
    out->Open();
    out->Start();
    for (;;) {
        loop.doEvents();
        if (loop.workInHand().empty())
            break;
        // About the pace of a window's event loop with nothing else to do.
        std::this_thread::sleep_for(std::chrono::milliseconds(speed > 0 ? 20 : 2));
    }
    const double used = cpuSeconds(RUSAGE_SELF) - before;
    stop = true;
    view.join();
    return used;
}

double mpg123Decode(const std::string &mp3)
{
    const double before = cpuSeconds(RUSAGE_CHILDREN);
    if (std::system(("mpg123 -q -t '" + mp3 + "'").c_str()) != 0)
        std::abort();
    return cpuSeconds(RUSAGE_CHILDREN) - before;
}

void BM_PlayerChainVersusMpg123(benchmark::State &state)
{
    const Files &f = files();
    double ours = 0;
    double tool = 0;
    double realTime = 0;
    for (auto _ : state) {
        tool += mpg123Decode(f.file("long.mp3"));
        ours += playThroughChain(f.file("long.mp3"), 0);
        realTime += playThroughChain(f.file("short.mp3"), 1.0);
    }
    const double n = static_cast<double>(state.iterations());
    state.counters["chain_cpu_s"] = ours / n;
    state.counters["mpg123_cpu_s"] = tool / n;
    state.counters["chain_core_pct"] = ours / n / 300 * 100;
    state.counters["mpg123_core_pct"] = tool / n / 300 * 100;
    state.counters["realtime_core_pct"] = realTime / n / 20 * 100;
    state.counters["ratio"] = tool > 0 ? ours / tool : 0;
}
BENCHMARK(BM_PlayerChainVersusMpg123)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
