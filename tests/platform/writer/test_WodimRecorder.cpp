// The system-recorder side of the engine against a stand-in for wodim (fake-wodim): the commands
// it is given, how its output and exit codes come back as events and disc states.
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

#include "WriterTestSupport.h"
#include "platform/writer/ChildProcess.h"
#include "platform/writer/CdWriterEngine.h"

using namespace writertest;
using platform::writer::CdWriterEngine;
using platform::writer::Options;

namespace {

const std::vector<std::string> fakeVariables = {"FAKE_WODIM_LOG",        "FAKE_WODIM_DEVICES",  "FAKE_WODIM_SCANBUS",
                                                "FAKE_WODIM_DISC",       "FAKE_WODIM_WRITE_EXIT", "FAKE_WODIM_FIX_EXIT",
                                                "FAKE_WODIM_MB",         "FAKE_WODIM_DELAY",      "FAKE_WODIM_WRITE",
                                                "FAKE_WODIM_NODRIVER"};

std::vector<std::string> split(const std::string &s, char sep)
{
    std::vector<std::string> out;
    size_t pos = 0;
    while (true) {
        const auto next = s.find(sep, pos);
        out.push_back(s.substr(pos, next - pos));
        if (next == std::string::npos)
            return out;
        pos = next + 1;
    }
}

class WodimRecorderTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        for (const std::string &v : fakeVariables)
            ::unsetenv(v.c_str());
        ::setenv("FAKE_WODIM_LOG", log().c_str(), 1);
        ::setenv("FAKE_WODIM_DEVICES", "/dev/sr0|HL-DT-ST|DVDRAM GH24NSD1;/dev/sr1|ASUS|DRW-24D5MT", 1);
        fs::create_directories(tmp / "LocalJ");
    }
    void TearDown() override
    {
        for (const std::string &v : fakeVariables)
            ::unsetenv(v.c_str());
    }

    int silenceLimitMs = 10 * 60 * 1000;
    std::function<std::optional<int>(const std::string &)> driveAnswer = [](const std::string &) { return std::nullopt; };

    fs::path log() const { return tmp / "wodim.log"; }
    fs::path workFile() const { return tmp / "LocalJ" / "velmora0.wav"; }

    std::unique_ptr<CdWriterEngine> makeEngine(const std::string &wodim = FAKE_WODIM)
    {
        Options o;
        o.imageFolder = tmp / "images";
        o.wodimPath = wodim;
        o.logFolder = tmp / "logs";
        o.wodimSilenceLimitMs = silenceLimitMs;
        o.setupMs = 0;
        // The stand-in's drives are not the machine's: wodim alone tells their disc state.
        o.readDriveDiscState = driveAnswer;
        auto e = std::make_unique<CdWriterEngine>(loop, o);
        EXPECT_EQ(e->InitEngine(), 0);
        e->setCloseDiscAfterTrack(false);
        e->setCloseSessionAfterTrack(false);
        e->setTestWrite(false);
        e->setWriteSpeed(8);
        rec.attach(*e);
        return e;
    }

    // The calls made of wodim so far, each as its argument list.
    std::vector<std::vector<std::string>> calls() const
    {
        std::vector<std::vector<std::string>> out;
        for (const std::string &line : split(readText(log()), '\n')) {
            if (!line.empty())
                out.push_back(split(line, '\t'));
        }
        return out;
    }
    // The calls that weren't a device scan or a disc probe.
    std::vector<std::vector<std::string>> writes() const
    {
        std::vector<std::vector<std::string>> out;
        for (const auto &c : calls()) {
            if (c.back() != "--devices" && c.back() != "-scanbus" && c.back() != "-atip")
                out.push_back(c);
        }
        return out;
    }
    int probes() const
    {
        int n = 0;
        for (const auto &c : calls())
            n += c.back() == "-atip";
        return n;
    }

    void writeOneTrack(CdWriterEngine &e, int64_t frames, const std::function<void()> &whileWriting = {})
    {
        writeWave(workFile(), frames, "Song \"A\"", "Caf\xC3\xA9 Band", 7);
        ASSERT_EQ(e.AddTrack(workFile().string(), 0), 0);
        ASSERT_EQ(e.DiscState(), 0);
        const int before = rec.doneCount;
        ASSERT_EQ(e.WriteTracks(), 0);
        if (whileWriting)
            whileWriting();
        ASSERT_TRUE(rec.waitDone(loop, before + 1));
        EXPECT_TRUE(loop.workInHand().empty());
    }

    rt::VirtualEventLoop loop;
    TempDir tmp;
    EventRecord rec;
};

TEST_F(WodimRecorderTest, SystemRecordersComeFirstThenTheImageRecorder)
{
    auto e = makeEngine();
    ASSERT_EQ(e->DeviceCount(), 3);
    EXPECT_EQ(e->DeviceName(0), "HL-DT-ST DVDRAM GH24NSD1 (/dev/sr0)");
    EXPECT_EQ(e->DeviceName(1), "ASUS DRW-24D5MT (/dev/sr1)");
    EXPECT_EQ(e->DeviceName(2), "Image Recorder");
    for (int i = 0; i < 3; ++i) {
        e->SelectDevice(i);
        EXPECT_EQ(e->DeviceDriverType(), 10);
    }
    // Later InitEngine calls (one between every two tracks) keep the list as it is.
    EXPECT_EQ(e->InitEngine(), 0);
    EXPECT_EQ(e->DeviceCount(), 3);
    EXPECT_EQ(calls().size(), 1u);
    EXPECT_EQ(calls()[0], std::vector<std::string>{"--devices"});
}

TEST_F(WodimRecorderTest, ABusScanWhenTheDeviceListIsEmpty)
{
    ::setenv("FAKE_WODIM_DEVICES", "", 1);
    ::setenv("FAKE_WODIM_SCANBUS", "1,0,0|SONY|CD-RW  CRX830E", 1);
    auto e = makeEngine();
    ASSERT_EQ(e->DeviceCount(), 2);
    EXPECT_EQ(e->DeviceName(0), "SONY CD-RW CRX830E (1,0,0)");
    EXPECT_EQ(e->DeviceName(1), "Image Recorder");

    ::setenv("FAKE_WODIM_SCANBUS", "", 1);
    auto none = makeEngine();
    ASSERT_EQ(none->DeviceCount(), 1);
    EXPECT_EQ(none->DeviceName(0), "Image Recorder");

    auto noWodim = makeEngine((tmp / "no-such-wodim").string());
    EXPECT_EQ(noWodim->DeviceCount(), 1);
}

TEST_F(WodimRecorderTest, AnOpenTrackThenAClosingOne)
{
    auto e = makeEngine();
    e->SelectDevice(0);
    writeOneTrack(*e, 190000);
    EXPECT_EQ(rec.lastResult, 0);
    EXPECT_FALSE(rec.saw("closing"));
    auto w = writes();
    ASSERT_EQ(w.size(), 1u);
    const fs::path copy = w[0].back();
    w[0].pop_back();
    EXPECT_EQ(w[0], (std::vector<std::string>{"-v", "dev=/dev/sr0", "driver=mmc_cdr", "speed=8", "fs=4064256", "-tao", "-audio", "-copy", "-pad",
                                              "-nofix", "-text", "-useinfo"}));
    // wodim got a private copy, gone again once the track is done.
    EXPECT_NE(copy, workFile());
    EXPECT_EQ(copy.extension(), ".wav");
    EXPECT_FALSE(fs::exists(copy));
    EXPECT_FALSE(fs::exists(copy.parent_path()));
    EXPECT_EQ(readText(fs::path(log().string() + ".sizes")), std::to_string(44 + 324 * 2352) + "\n");
    const std::string inf = readText(fs::path(log().string() + ".inf"));
    EXPECT_NE(inf.find("Tracktitle=\t'Song 'A''\n"), std::string::npos) << inf;
    EXPECT_NE(inf.find("Performer=\t'Caf\xE9 Band'\n"), std::string::npos) << inf;
    // Progress as the lines tell it: rising, each value once, up to 100.
    const auto &p = rec.progressPerJob.at(0);
    ASSERT_FALSE(p.empty());
    EXPECT_TRUE(std::is_sorted(p.begin(), p.end()));
    EXPECT_EQ(std::adjacent_find(p.begin(), p.end()), p.end());
    EXPECT_GE(p.front(), 1);
    EXPECT_EQ(p.back(), 100);
    EXPECT_EQ(p.size(), 40u);

    // The last track: the close flags come while wodim writes; the fixation follows the data.
    e->ClearTracks();
    e->InitEngine();
    ::setenv("FAKE_WODIM_DELAY", "0.005", 1);
    writeOneTrack(*e, 190000, [&] {
        e->setCloseSessionAfterTrack(true);
        e->setCloseDiscAfterTrack(true);
    });
    EXPECT_EQ(rec.lastResult, 0);
    EXPECT_EQ(rec.indexOf("closing"), static_cast<int>(rec.events.size()) - 2);
    w = writes();
    ASSERT_EQ(w.size(), 3u);
    EXPECT_EQ(w[2], (std::vector<std::string>{"-v", "dev=/dev/sr0", "driver=mmc_cdr", "-fix"}));
}

TEST_F(WodimRecorderTest, TestWriteAndDriverType)
{
    auto e = makeEngine();
    e->SelectDevice(1);
    e->SetDriverType(9);
    EXPECT_EQ(e->DeviceDriverType(), 9);
    e->setTestWrite(true);
    e->setCloseDiscAfterTrack(true);
    writeOneTrack(*e, 190000);
    EXPECT_EQ(rec.lastResult, 0);
    EXPECT_TRUE(rec.saw("closing"));
    auto w = writes();
    ASSERT_EQ(w.size(), 2u);
    w[0].pop_back();
    EXPECT_EQ(w[0], (std::vector<std::string>{"-v", "dev=/dev/sr1", "driver=pioneer_dws114x", "speed=8", "fs=4064256", "-tao", "-audio",
                                              "-copy", "-pad", "-nofix", "-dummy", "-text", "-useinfo"}));
    EXPECT_EQ(w[1], (std::vector<std::string>{"-v", "dev=/dev/sr1", "driver=pioneer_dws114x", "-dummy", "-fix"}));

    // A type of no model: wodim chooses the driver itself; tuning reaches fs=.
    e->ClearTracks();
    e->SetDriverType(100);
    e->setTestWrite(false);
    e->setCloseDiscAfterTrack(false);
    e->setFifoBufferCount(std::string("10"));
    e->setSectorsPerBuffer("16");
    e->setWriteSpeed(24);
    writeOneTrack(*e, 190000);
    w = writes();
    ASSERT_EQ(w.size(), 3u);
    w[2].pop_back();
    EXPECT_EQ(w[2], (std::vector<std::string>{"-v", "dev=/dev/sr1", "speed=24", "fs=376320", "-tao", "-audio", "-copy", "-pad", "-nofix", "-text",
                                              "-useinfo"}));
}

TEST_F(WodimRecorderTest, ARefusedDiscAndAFailedFixation)
{
    auto e = makeEngine();
    e->SelectDevice(0);
    e->setCloseDiscAfterTrack(true);
    ::setenv("FAKE_WODIM_WRITE_EXIT", "255", 1);
    writeOneTrack(*e, 190000);
    EXPECT_EQ(rec.lastResult, 255);
    EXPECT_FALSE(rec.saw("closing"));
    EXPECT_EQ(writes().size(), 1u); // no fixation after a failed track

    ::unsetenv("FAKE_WODIM_WRITE_EXIT");
    ::setenv("FAKE_WODIM_FIX_EXIT", "254", 1);
    e->ClearTracks();
    writeOneTrack(*e, 190000);
    EXPECT_EQ(rec.lastResult, 254);
    EXPECT_EQ(rec.events[rec.events.size() - 2], "closing");
    EXPECT_EQ(writes().size(), 3u);
}

TEST_F(WodimRecorderTest, DiscStateFromTheDrive)
{
    auto e = makeEngine();
    e->SelectDevice(0);
    const std::vector<std::pair<std::string, int>> states = {{"none", -1}, {"blank", 0}, {"appendable", 0}, {"notready", 1}, {"pressed", 1}};
    for (const auto &[disc, expected] : states) {
        ::setenv("FAKE_WODIM_DISC", disc.c_str(), 1);
        e->InitEngine(); // a fresh look
        EXPECT_EQ(e->DiscState(), expected) << disc;
    }
    // Asked again at once, the drive isn't asked again; a second later it is.
    const int before = probes();
    ::setenv("FAKE_WODIM_DISC", "none", 1);
    EXPECT_EQ(e->DiscState(), 1);
    EXPECT_EQ(e->DiscState(), 1);
    EXPECT_EQ(probes(), before);
    std::this_thread::sleep_for(std::chrono::milliseconds(900));
    EXPECT_EQ(e->DiscState(), -1);
    EXPECT_EQ(probes(), before + 1);
    EXPECT_EQ(calls().back(), (std::vector<std::string>{"-v", "dev=/dev/sr0", "driver=mmc_cdr", "-atip"}));
    // Another device is another drive.
    ::setenv("FAKE_WODIM_DISC", "blank", 1);
    e->SelectDevice(1);
    EXPECT_EQ(e->DiscState(), 0);
}

TEST_F(WodimRecorderTest, TheDriveTellsAClosedDiscThatWodimTakesForWritable)
{
    // wodim -atip shows ATIP on a finalised CD-R as on a blank one; the drive's own disc
    // information says it is complete.
    driveAnswer = [](const std::string &device) -> std::optional<int> {
        return device == "/dev/sr0" ? std::optional<int>(platform::writer::disc_state::closed) : std::nullopt;
    };
    auto e = makeEngine();
    e->SelectDevice(0);
    ::setenv("FAKE_WODIM_DISC", "blank", 1);
    const int before = probes();
    EXPECT_EQ(e->DiscState(), 2);
    EXPECT_EQ(probes(), before);
    // Where the drive tells nothing, wodim is asked.
    e->SelectDevice(1);
    EXPECT_EQ(e->DiscState(), 0);
    EXPECT_EQ(probes(), before + 1);
}

TEST_F(WodimRecorderTest, AFailedBurnLeavesALogToSend)
{
    auto e = makeEngine();
    e->SelectDevice(0);
    ::setenv("FAKE_WODIM_DISC", "blank", 1);
    EXPECT_EQ(e->DiscState(), 0);
    ::setenv("FAKE_WODIM_WRITE_EXIT", "255", 1);
    writeOneTrack(*e, 190000);
    EXPECT_EQ(rec.lastResult, 255);
    const std::string log = readText(tmp / "logs" / "last.log");
    for (const std::string &expected :
         {std::string("MP3 Brasswick 1.3 burn log\n"), std::string("Device: HL-DT-ST DVDRAM GH24NSD1 (/dev/sr0) (dev=/dev/sr0, driver mmc_cdr, driver type 10)"),
          std::string("Disc state 0, from wodim -atip (the drive told nothing)"),
          std::string("$ ") + FAKE_WODIM + " -v dev=/dev/sr0 driver=mmc_cdr speed=8 fs=4064256 -tao -audio -copy -pad -nofix -text -useinfo ",
          std::string("  wodim: No disk / Wrong disk!"), std::string("Exit status 255"),
          std::string("Result 255 (wodim's exit status) after "), std::string("The burn failed at ")}) {
        EXPECT_NE(log.find(expected), std::string::npos) << expected << "\n" << log;
    }
    // The next burn starts a log of its own.
    ::setenv("FAKE_WODIM_WRITE_EXIT", "0", 1);
    e->InitEngine();
    writeOneTrack(*e, 190000);
    EXPECT_EQ(rec.lastResult, 0);
    const std::string next = readText(tmp / "logs" / "last.log");
    EXPECT_EQ(next.find("No disk"), std::string::npos);
    EXPECT_NE(next.find("  Track 01: Total bytes read/written: "), std::string::npos) << next;
    EXPECT_NE(next.find("Exit status 0"), std::string::npos);
}

// How each of wodim's own ways of failing a write reaches the program: OnTrackDone with a result
// other than 0 (the writer's failure path), the line that told why in the burn log, no hang.
struct WodimFailure {
    const char *ending;     // FAKE_WODIM_WRITE
    const char *disc;       // FAKE_WODIM_DISC
    int result;             // what OnTrackDone gets
    const char *logLine;    // what the log shows of it
};

class WodimFailureTest : public WodimRecorderTest, public ::testing::WithParamInterface<WodimFailure> {};

TEST_P(WodimFailureTest, EndsThroughTheWritersFailurePath)
{
    const WodimFailure f = GetParam();
    silenceLimitMs = 1000;
    auto e = makeEngine();
    e->SelectDevice(0);
    ::setenv("FAKE_WODIM_WRITE", f.ending, 1);
    writeWave(workFile(), 190000, "T", "A", 1);
    ASSERT_EQ(e->AddTrack(workFile().string(), 0), 0);
    // The disc state was fine when asked; it is the write that fails.
    ASSERT_EQ(e->DiscState(), 0);
    ::setenv("FAKE_WODIM_DISC", f.disc, 1);
    const auto start = std::chrono::steady_clock::now();
    ASSERT_EQ(e->WriteTracks(), 0);
    ASSERT_TRUE(rec.waitDone(loop, 1));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20)) << "the burn hung";
    EXPECT_EQ(rec.lastResult, f.result);
    EXPECT_FALSE(rec.saw("closing"));
    EXPECT_TRUE(loop.workInHand().empty());
    // No progress from lines that aren't wodim's progress.
    ASSERT_FALSE(rec.progressPerJob.empty());
    for (int p : rec.progressPerJob.back())
        EXPECT_LE(p, 50) << f.ending;
    const std::string log = readText(tmp / "logs" / "last.log");
    EXPECT_NE(log.find(f.logLine), std::string::npos) << log;
    EXPECT_NE(log.find("The burn failed at "), std::string::npos) << log;
}

INSTANTIATE_TEST_SUITE_P(
    EveryEnding, WodimFailureTest,
    ::testing::Values(WodimFailure{"refused", "blank", 255, "  wodim: No disk / Wrong disk!"},
                      WodimFailure{"ok", "none", 255, "  Sense Code: 0x3A Qual 0x01 (medium not present - tray closed) Fru 0x0"},
                      WodimFailure{"ok", "notready", 255, "  wodim: CD/DVD-Recorder not ready."},
                      WodimFailure{"full", "blank", 255, "  wodim: WARNING: Data may not fit on current disk."},
                      WodimFailure{"underrun", "blank", 254, "  wodim: The current problem looks like a buffer underrun."},
                      WodimFailure{"writeerror", "blank", 254, "  wodim: A write error occured."},
                      WodimFailure{"reload", "blank", 255, "  wodim: Aborted by EOF on input."},
                      WodimFailure{"garbage", "blank", 3, "  @@@ 12 of 34 MB ###"},
                      WodimFailure{"hang", "blank", 6, "Ended: wodim printed nothing for 1 s"}),
    [](const ::testing::TestParamInfo<WodimFailure> &info) {
        return std::string(info.param.ending) + "_" + info.param.disc;
    });

TEST_F(WodimRecorderTest, ATransportThatCannotBeOpenedListsNoRecorder)
{
    ::setenv("FAKE_WODIM_NODRIVER", "1", 1);
    auto e = makeEngine();
    ASSERT_EQ(e->DeviceCount(), 1);
    EXPECT_EQ(e->DeviceName(0), "Image Recorder");
}

TEST_F(WodimRecorderTest, DestroyingTheEngineStopsWodim)
{
    auto e = makeEngine();
    e->SelectDevice(0);
    ::setenv("FAKE_WODIM_DELAY", "0.2", 1);
    writeWave(workFile(), 190000, "T", "A", 1);
    ASSERT_EQ(e->AddTrack(workFile().string(), 0), 0);
    ASSERT_EQ(e->WriteTracks(), 0);
    ASSERT_TRUE(pump(loop, [&] { return !rec.events.empty(); }));
    const auto start = std::chrono::steady_clock::now();
    e.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
    pump(loop, [] { return false; }, 50);
    EXPECT_TRUE(loop.workInHand().empty());
    EXPECT_EQ(rec.doneCount, 0);
}

TEST_F(WodimRecorderTest, WodimGoneMissingAfterTheScan)
{
    // The stand-in is copied, the drives found with it, and then it disappears.
    const fs::path copy = tmp / "wodim-copy";
    fs::copy_file(FAKE_WODIM, copy);
    auto e = makeEngine(copy.string());
    ASSERT_EQ(e->DeviceCount(), 3);
    fs::remove(copy);
    e->SelectDevice(0);
    EXPECT_EQ(e->DiscState(), 1);
    writeWave(workFile(), 190000, "T", "A", 1);
    ASSERT_EQ(e->AddTrack(workFile().string(), 0), 0);
    EXPECT_NE(e->WriteTracks(), 0);
    EXPECT_TRUE(loop.workInHand().empty());
}

TEST(WriterChildProcess, LinesExitCodesAndTimeouts)
{
    using platform::writer::runChild;
    std::vector<std::string> lines;
    auto run = runChild("printf", {"one\rtwo\nthree"}, [&](const std::string &l) { lines.push_back(l); });
    EXPECT_TRUE(run.started);
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(lines, (std::vector<std::string>{"one", "two", "three"}));
    // No shell: the argument is one argument, metacharacters and all.
    lines.clear();
    run = runChild("printf", {"%s|", "a b", "$(echo no)"}, [&](const std::string &l) { lines.push_back(l); });
    EXPECT_EQ(lines, (std::vector<std::string>{"a b|$(echo no)|"}));
    EXPECT_EQ(runChild("false", {}).exitCode, 1);
    EXPECT_FALSE(runChild("/no/such/program", {}).started);
    const auto start = std::chrono::steady_clock::now();
    run = runChild("sleep", {"10"}, {}, {}, 200);
    EXPECT_TRUE(run.timedOut);
    EXPECT_EQ(run.exitCode, 128 + SIGTERM);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
    bool stop = false;
    run = runChild("sleep", {"10"}, {}, [&] { return stop = true; });
    EXPECT_TRUE(run.stopped);
    EXPECT_TRUE(platform::writer::findExecutable("sh"));
    EXPECT_FALSE(platform::writer::findExecutable("no-such-program-here"));
}

} // namespace
