// A batch of three files whose second one fills the disk: the target file reports the failed
// write while the trigger still says it flows (the batch window's test before it shows its box),
// the flow stops, the first target is whole, the second stays as written, the third is not
// begun, and no source is touched. On a real full disk (a small tmpfs) where one can be mounted,
// and always under a file size limit in a child process.
#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "ConvertTestSupport.h"
#include "SmallDisk.h"
#include "TempFolder.h"

namespace {

namespace fs = std::filesystem;
using converttest::BatchChain;
using converttest::Events;
using platform::Trigger;
using platform::WaveFormat;

const WaveFormat Target{1, 2, 48000, 16};
// Seconds of the three sources: the second is the long one.
const double Seconds[3] = {1.0, 3.0, 1.0};

int64_t targetBytes(double seconds)
{
    return 44 + static_cast<int64_t>(seconds * Target.sampleRate) * 4;
}

// What happened to each file the run began.
struct BatchRun {
    std::vector<Events> events;
    std::vector<int> statesAtFailedWrite;
};

// The batch's loop over its list: a failed write seen while flowing asks for a stop and no
// further file is begun.
BatchRun runBatch(const std::vector<std::string> &sources)
{
    BatchRun run;
    BatchChain chain;
    bool stopRequested = false;
    chain.DstFile->OnWriteFailed = [&] {
        chain.events.push_back("writefailed");
        const int state = chain.Trigger->State();
        run.statesAtFailedWrite.push_back(state);
        if (state & Trigger::StateFlowing) {
            stopRequested = true;
            chain.Trigger->Stop();
        }
    };
    for (const std::string &source : sources) {
        if (stopRequested)
            break;
        chain.events.clear();
        const std::string target = source.substr(0, source.size() - 4) + "_acm.wav";
        std::error_code ec;
        fs::remove(target, ec);
        chain.convert(source, target, Target);
        run.events.push_back(chain.events);
    }
    return run;
}

std::vector<std::string> makeSources(const std::string &folder)
{
    std::vector<std::string> sources;
    for (int i = 0; i < 3; ++i) {
        sources.push_back((fs::path(folder) / ("track" + std::to_string(i + 1) + ".wav")).string());
        EXPECT_TRUE(converttest::writeTestWave(sources.back(), 44100, Seconds[i])) << sources.back();
    }
    return sources;
}

std::string targetOf(const std::string &source)
{
    return source.substr(0, source.size() - 4) + "_acm.wav";
}

void expectSecondOfThreeFailed(const BatchRun &run, const std::vector<std::string> &sources,
                               const std::vector<std::string> &sourceBytes)
{
    ASSERT_EQ(run.events.size(), 2u) << "the third file was begun";
    EXPECT_EQ(run.events[0], (Events{"started", "buffer", "stopped", "closed"}));
    const Events &second = run.events[1];
    const Events expected = {"started", "buffer", "writefailed", "stopped", "closed"};
    EXPECT_EQ(second, expected);
    ASSERT_EQ(run.statesAtFailedWrite.size(), 1u);
    EXPECT_EQ(run.statesAtFailedWrite[0], Trigger::StateOpen | Trigger::StateFlowing);

    const auto first = mediatest::readWave(targetOf(sources[0]));
    ASSERT_TRUE(first.ok);
    EXPECT_EQ(first.frames(), 48000);
    // Left as written: a readable wave, cut short.
    const auto cut = mediatest::readWave(targetOf(sources[1]));
    ASSERT_TRUE(cut.ok);
    EXPECT_GT(cut.frames(), 0);
    EXPECT_LT(cut.frames(), 144000);
    std::cout << "[ full disk ] the second target holds " << cut.frames() << " of 144000 frames\n";
    EXPECT_FALSE(fs::exists(targetOf(sources[2])));
    for (size_t i = 0; i < sources.size(); ++i)
        EXPECT_EQ(mp3test::readBytes(sources[i]), sourceBytes[i]) << sources[i] << " was touched";
}

TEST(DiskFull, SecondOfThreeFailsOnAFullTmpfs)
{
    mp3test::TempFolder dir;
    // The sources lie on the small disk, as the batch writes each target beside its source; after
    // them there is room for the first target and half of the second.
    const std::vector<std::string> outside = makeSources(dir.path().string());
    auto pages = [](int64_t bytes) { return (bytes + 4095) / 4096 * 4096; };
    int64_t size = 0;
    for (const std::string &s : outside)
        size += pages(static_cast<int64_t>(fs::file_size(s)));
    size += pages(targetBytes(Seconds[0])) + targetBytes(Seconds[1]) / 2;
    converttest::SmallDisk disk(dir.path() / "disk", static_cast<unsigned long>(pages(size)));
    if (!disk.mounted())
        GTEST_SKIP() << "no tmpfs can be mounted here (" << disk.whyNot() << "); the file size limit test stands in";

    std::vector<std::string> sources;
    std::vector<std::string> bytes;
    for (const std::string &s : outside) {
        sources.push_back(disk.file(fs::path(s).filename().string()));
        fs::copy_file(s, sources.back());
        bytes.push_back(mp3test::readBytes(sources.back()));
    }
    const BatchRun run = runBatch(sources);
    expectSecondOfThreeFailed(run, sources, bytes);
}

TEST(DiskFull, SecondOfThreeFailsAtTheFileSizeLimit)
{
    mp3test::TempFolder dir;
    const std::vector<std::string> sources = makeSources(dir.path().string());
    std::vector<std::string> bytes;
    for (const std::string &s : sources)
        bytes.push_back(mp3test::readBytes(s));
    const std::string report = dir.file("report.txt");
    // Files may grow to two seconds of the target: the first fits, the second doesn't.
    const auto limit = static_cast<rlim_t>(targetBytes(2.0));

    const pid_t pid = ::fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        ::signal(SIGXFSZ, SIG_IGN);
        rlimit fileSize{limit, limit};
        if (::setrlimit(RLIMIT_FSIZE, &fileSize) != 0)
            ::_exit(20);
        const BatchRun run = runBatch(sources);
        std::ostringstream out;
        for (const Events &events : run.events) {
            out << "file";
            for (const std::string &e : events)
                out << ' ' << e;
            out << '\n';
        }
        for (int state : run.statesAtFailedWrite)
            out << "state " << state << '\n';
        // The report itself is far under the limit.
        std::ofstream(report) << out.str();
        ::_exit(0);
    }
    int status = 0;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    pid_t done = 0;
    while ((done = ::waitpid(pid, &status, WNOHANG)) == 0 && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    if (done == 0) {
        ::kill(pid, SIGKILL);
        ::waitpid(pid, &status, 0);
        FAIL() << "the batch hung";
    }
    ASSERT_TRUE(WIFEXITED(status)) << "the child died of signal " << (WIFSIGNALED(status) ? WTERMSIG(status) : 0);
    ASSERT_EQ(WEXITSTATUS(status), 0);

    BatchRun run;
    std::istringstream lines(mp3test::readBytes(report));
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string word;
        words >> word;
        if (word == "file") {
            run.events.emplace_back();
            while (words >> word)
                run.events.back().push_back(word);
        } else if (word == "state") {
            int state = 0;
            words >> state;
            run.statesAtFailedWrite.push_back(state);
        }
    }
    expectSecondOfThreeFailed(run, sources, bytes);
}

} // namespace
