// Analysing a folder of 1000 MP3 files the way an import does it (three frame scans and one
// cIDV3 per file), against the floor of reading the same bytes with plain system calls.
// The ratio counter says how much the analysis costs on top of the reading.
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include "Mp3Maker.h"
#include "mp3/FrameScan.h"
#include "mp3/cIDV3.h"
#include "ImportAnalysis.h"

namespace {

constexpr int FileCount = 1000;

// The folder of test files, made once for the whole run and removed at its end.
class Folder {
public:
    Folder()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "bench-mp3-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr)
            std::abort();
        m_path = pattern;
        for (int i = 0; i < FileCount; ++i) {
            testsupport::Mp3Options options;
            options.seconds = 2;
            // Some variety: every third file mono, every fourth with an ID3v1 tag, every fifth at
            // 192 kbit/s, every tenth behind an ID3v2 tag too big for the scan to see past.
            options.channels = i % 3 == 0 ? 1 : 2;
            options.kbps = i % 5 == 0 ? 192 : 128;
            if (i % 4 == 0)
                options.id3v1Title = "Track " + std::to_string(i);
            if (i % 10 == 0)
                options.id3v2Bytes = 6000;
            else if (i % 7 == 0)
                options.id3v2Bytes = 1000;
            const std::string file = (m_path / ("track" + std::to_string(i) + ".mp3")).string();
            if (!testsupport::makeMp3(file, options))
                std::abort();
            m_files.push_back(file);
        }
    }
    ~Folder()
    {
        std::error_code ec;
        std::filesystem::remove_all(m_path, ec);
    }
    const std::vector<std::string> &files() const { return m_files; }

private:
    std::filesystem::path m_path;
    std::vector<std::string> m_files;
};

const Folder &folder()
{
    static const Folder f;
    return f;
}


void readAt(const std::string &path, off_t offset, size_t count, char *buffer)
{
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        std::abort();
    benchmark::DoNotOptimize(::pread(fd, buffer, count, offset));
    ::close(fd);
}

// The same bytes read with nothing made of them: 4096 bytes three times, then what cIDV3
// reads (its size, the tag's three bytes and record, 5001 bytes for the search, Xing and header).
void floorRead(const std::string &path)
{
    static char buffer[8192];
    for (int k = 0; k < 3; ++k)
        readAt(path, 0, 4096, buffer);
    struct stat st {};
    ::stat(path.c_str(), &st);
    const off_t length = st.st_size;
    readAt(path, length - 128, 3, buffer);
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    benchmark::DoNotOptimize(::pread(fd, buffer, 125, length - 125));
    ::close(fd);
    const int header = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    benchmark::DoNotOptimize(::pread(header, buffer, 5001, 0));
    benchmark::DoNotOptimize(::pread(header, buffer, 4, 36));
    benchmark::DoNotOptimize(::pread(header, buffer, 4, 0));
    ::close(header);
}

void BM_ImportAnalysis(benchmark::State &state)
{
    const auto &files = folder().files();
    for (auto _ : state)
        for (const std::string &f : files)
            analyse(f);
    state.SetItemsProcessed(state.iterations() * FileCount);
}
BENCHMARK(BM_ImportAnalysis)->Unit(benchmark::kMillisecond);

void BM_ReadFloor(benchmark::State &state)
{
    const auto &files = folder().files();
    for (auto _ : state)
        for (const std::string &f : files)
            floorRead(f);
    state.SetItemsProcessed(state.iterations() * FileCount);
}
BENCHMARK(BM_ReadFloor)->Unit(benchmark::kMillisecond);

// Both in the same iterations, alternating, so that the ratio compares like with like.
void BM_ImportVersusFloor(benchmark::State &state)
{
    using Clock = std::chrono::steady_clock;
    const auto &files = folder().files();
    double analysisSeconds = 0;
    double floorSeconds = 0;
    for (auto _ : state) {
        const auto t0 = Clock::now();
        for (const std::string &f : files)
            floorRead(f);
        const auto t1 = Clock::now();
        for (const std::string &f : files)
            analyse(f);
        const auto t2 = Clock::now();
        floorSeconds += std::chrono::duration<double>(t1 - t0).count();
        analysisSeconds += std::chrono::duration<double>(t2 - t1).count();
    }
    const double n = static_cast<double>(state.iterations());
    state.counters["import_ms"] = analysisSeconds / n * 1e3;
    state.counters["floor_ms"] = floorSeconds / n * 1e3;
    state.counters["ratio"] = floorSeconds > 0 ? analysisSeconds / floorSeconds : 0;
    state.counters["us_per_file"] = analysisSeconds / n / FileCount * 1e6;
}
BENCHMARK(BM_ImportVersusFloor)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
