// The batch converter's work on one file: ten minutes of CD audio (44100 Hz, 16 bit, stereo) to
// 22050 Hz mono 16-bit PCM by the real chain (wave file, trigger, format converter, wave file,
// wired as the window wires it), against `sox in.wav -r 22050 -c 1 out.wav` on the same file.
// The ratio is ours over sox's, wall time of one run each.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <sndfile.h>

#include <benchmark/benchmark.h>

#include "platform/media/FormatConverterComponent.h"
#include "platform/media/TriggerComponent.h"
#include "platform/media/WaveFileComponent.h"
#include "RealWork.h"
#include "runtime/VirtualEventLoop.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int Rate = 44100;
constexpr int Seconds = 600;

// Music-like content: a few tones that move, over quiet noise, different on each side.
class CdWave {
public:
    CdWave()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "bench-batch-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr)
            std::abort();
        m_folder = pattern;
        SF_INFO info{};
        info.samplerate = Rate;
        info.channels = 2;
        info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
        SNDFILE *f = sf_open(input().c_str(), SFM_WRITE, &info);
        if (!f)
            std::abort();
        std::mt19937 gen(1);
        std::normal_distribution<double> noise(0.0, 0.02);
        constexpr double tau = 6.283185307179586;
        std::vector<short> block(2 * Rate);
        for (int s = 0; s < Seconds; ++s) {
            const double base = 110.0 * (1 + s % 12);
            for (int i = 0; i < Rate; ++i) {
                const double t = s + static_cast<double>(i) / Rate;
                const double left = 0.3 * std::sin(tau * base * t) + 0.1 * std::sin(tau * 3.01 * base * t) + noise(gen);
                const double right = 0.25 * std::sin(tau * 1.5 * base * t) + 0.1 * std::sin(tau * 5.3 * base * t) + noise(gen);
                block[2 * i] = static_cast<short>(std::lrint(std::clamp(left, -1.0, 1.0) * 32767));
                block[2 * i + 1] = static_cast<short>(std::lrint(std::clamp(right, -1.0, 1.0) * 32767));
            }
            if (sf_writef_short(f, block.data(), Rate) != Rate)
                std::abort();
        }
        sf_close(f);
    }
    ~CdWave()
    {
        std::error_code ec;
        std::filesystem::remove_all(m_folder, ec);
    }
    std::string input() const { return (m_folder / "in.wav").string(); }
    std::string file(const char *name) const { return (m_folder / name).string(); }

private:
    std::filesystem::path m_folder;
};

const CdWave &cdWave()
{
    static const CdWave w;
    return w;
}

double ourChain(const std::string &in, const std::string &out)
{
    const auto t0 = Clock::now();
    {
        rt::VirtualEventLoop loop;
        platform::media::WaveFileComponent SrcFile(loop);
        platform::media::TriggerComponent Trigger(loop);
        platform::media::FormatConverterComponent ACMConverter;
        platform::media::WaveFileComponent DstFile(loop);
        SrcFile.setOutput(&Trigger);
        Trigger.setInput(&SrcFile);
        Trigger.setOutput(&ACMConverter);
        Trigger.setInterval(0);
        ACMConverter.setInput(&Trigger);
        ACMConverter.setOutput(&DstFile);
        DstFile.setInput(&ACMConverter);
        DstFile.setFileMustExist(false);
        SrcFile.setFileName(in);
        DstFile.setFileName(out);
        ACMConverter.setWaveFormat(platform::WaveFormat{1, 1, 22050, 16});
        bool closed = false;
        Trigger.OnClosed = [&] { closed = true; };
        Trigger.Start();
        if (!testsupport::settleRealWork(loop, std::chrono::seconds(600)))
            std::abort();
        Trigger.Close();
        if (!testsupport::settleRealWork(loop, std::chrono::seconds(600)))
            std::abort();
        if (!closed)
            std::abort();
    }
    return std::chrono::duration<double>(Clock::now() - t0).count();
}

double soxTool(const std::string &in, const std::string &out)
{
    const std::string command = "sox '" + in + "' -r 22050 -c 1 '" + out + "'";
    const auto t0 = Clock::now();
    if (std::system(command.c_str()) != 0)
        std::abort();
    return std::chrono::duration<double>(Clock::now() - t0).count();
}

int64_t framesOf(const std::string &path)
{
    SF_INFO info{};
    SNDFILE *f = sf_open(path.c_str(), SFM_READ, &info);
    if (!f)
        return -1;
    sf_close(f);
    return info.frames;
}

void BM_BatchConvertVersusSox(benchmark::State &state)
{
    const CdWave &w = cdWave();
    double ours = 0;
    double tool = 0;
    for (auto _ : state) {
        tool += soxTool(w.input(), w.file("sox.wav"));
        ours += ourChain(w.input(), w.file("ours.wav"));
        // Both made the whole file.
        if (framesOf(w.file("ours.wav")) != int64_t{Seconds} * 22050 || framesOf(w.file("sox.wav")) != int64_t{Seconds} * 22050)
            state.SkipWithError("a conversion came out short");
        std::filesystem::remove(w.file("sox.wav"));
        std::filesystem::remove(w.file("ours.wav"));
    }
    const double n = static_cast<double>(state.iterations());
    state.counters["ours_ms"] = ours / n * 1e3;
    state.counters["sox_ms"] = tool / n * 1e3;
    state.counters["ratio"] = tool > 0 ? ours / tool : 0;
}
BENCHMARK(BM_BatchConvertVersusSox)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
