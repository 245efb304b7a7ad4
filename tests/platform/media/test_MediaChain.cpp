// The real chain end to end on MP3s made here with LAME: decoding against the mpg123 tool,
// conversion against sox, names in the wave's INFO list, positions, and bad input of every kind.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <memory>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "MediaTestSupport.h"
#include "Mp3Maker.h"
#include "TempFolder.h"
#include "platform/media/FormatConverterComponent.h"
#include "platform/media/Mp3FileSource.h"
#include "platform/media/RealMediaComponents.h"
#include "platform/media/TriggerComponent.h"
#include "platform/media/WaveFileComponent.h"
#include "runtime/RuntimeError.h"

namespace {

namespace fs = std::filesystem;
using mediatest::quoted;
using mediatest::readWave;
using mediatest::runTool;
using mediatest::settle;
using mp3test::TempFolder;
using platform::Trigger;
using platform::WaveFormat;
using platform::media::FormatConverterComponent;
using platform::media::Mp3FileSource;
using platform::media::TriggerComponent;
using platform::media::WaveFileComponent;
using testsupport::Mp3Options;

Mp3Options tone(int rate, int channels, double seconds)
{
    Mp3Options o;
    o.sampleRate = rate;
    o.channels = channels;
    o.seconds = seconds;
    o.kbps = rate < 32000 ? 64 : 128;
    return o;
}

std::string makeMp3(const TempFolder &dir, const std::string &name, const Mp3Options &options)
{
    const std::string path = dir.file(name);
    EXPECT_TRUE(testsupport::makeMp3(path, options)) << path;
    return path;
}

// Consecutive buffer events count as one: the trigger may fold them when the loop is slow.
std::vector<std::string> folded(const std::vector<std::string> &events)
{
    std::vector<std::string> out;
    for (const std::string &e : events)
        if (out.empty() || e != "buffer" || out.back() != "buffer")
            out.push_back(e);
    return out;
}

using Events = std::vector<std::string>;

// MP3 file -> trigger -> wave file, wired as a window wires it.
struct Mp3Chain {
    rt::VirtualEventLoop loop;
    std::unique_ptr<Mp3FileSource> source = std::make_unique<Mp3FileSource>();
    std::unique_ptr<TriggerComponent> trigger = std::make_unique<TriggerComponent>(loop);
    std::unique_ptr<WaveFileComponent> wave = std::make_unique<WaveFileComponent>(loop);
    Events events;

    Mp3Chain(const std::string &mp3, const std::string &wav, std::optional<WaveFormat> target = {})
    {
        source->setFileName(mp3);
        wave->setFileName(wav);
        wave->setTargetFormat(target);
        trigger->setInput(source.get());
        source->setOutput(trigger.get());
        trigger->setOutput(wave.get());
        wave->setInput(trigger.get());
        trigger->setBufferSize(32768);
        hook(*trigger, events);
        wave->OnWriteFailed = [this] { events.push_back("writefailed"); };
    }

    static void hook(Trigger &t, Events &events)
    {
        t.OnStarted = [&events] { events.push_back("started"); };
        t.OnBufferDone = [&events] { events.push_back("buffer"); };
        t.OnStopped = [&events] { events.push_back("stopped"); };
        t.OnClosed = [&events] { events.push_back("closed"); };
        t.OnError = [&events](int code, const std::string &message) {
            events.push_back("error:" + std::to_string(code) + ":" + message);
        };
    }

    // Start, run to the stop, close: the whole of a burn's preparation of one track.
    void runToClosed()
    {
        trigger->Start();
        ASSERT_TRUE(settle(loop));
        ASSERT_EQ(trigger->State(), Trigger::StateOpen);
        trigger->Close();
        ASSERT_TRUE(settle(loop));
        ASSERT_EQ(trigger->State(), 0);
    }
};

void expectSamplesEqual(const std::vector<int16_t> &expected, const std::vector<int16_t> &actual)
{
    ASSERT_EQ(expected.size(), actual.size());
    for (size_t i = 0; i < expected.size(); ++i)
        if (expected[i] != actual[i]) {
            FAIL() << "first difference at sample " << i << ": " << expected[i] << " against " << actual[i];
        }
}

// --- decoding -----------------------------------------------------------------------------

struct DecodeCase {
    const char *name;
    Mp3Options options;
};

class DecodeLikeMpg123 : public ::testing::TestWithParam<DecodeCase> {};

TEST_P(DecodeLikeMpg123, SampleForSample)
{
    TempFolder dir;
    const std::string mp3 = makeMp3(dir, "track.mp3", GetParam().options);
    const std::string reference = dir.file("reference.wav");
    runTool("mpg123 -q -w " + quoted(reference) + " " + quoted(mp3));

    Mp3Chain c(mp3, dir.file("work.wav"));
    c.trigger->Start();
    const int state = c.trigger->State();
    EXPECT_TRUE(state == (Trigger::StateOpen | Trigger::StateFlowing) || state == Trigger::StateOpen) << state;
    ASSERT_TRUE(settle(c.loop));
    EXPECT_EQ(folded(c.events), (Events{"started", "buffer", "stopped"}));
    EXPECT_EQ(c.trigger->State(), Trigger::StateOpen);
    c.trigger->Close();
    ASSERT_TRUE(settle(c.loop));
    EXPECT_EQ(folded(c.events), (Events{"started", "buffer", "stopped", "closed"}));
    EXPECT_EQ(c.trigger->State(), 0);

    const auto expected = readWave(reference);
    const auto actual = readWave(dir.file("work.wav"));
    ASSERT_TRUE(expected.ok);
    ASSERT_TRUE(actual.ok);
    EXPECT_EQ(actual.format, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    EXPECT_EQ(actual.rate, GetParam().options.sampleRate);
    EXPECT_EQ(actual.channels, GetParam().options.channels);
    EXPECT_EQ(actual.rate, expected.rate);
    EXPECT_EQ(actual.channels, expected.channels);
    expectSamplesEqual(expected.samples, actual.samples);
    // Gapless: exactly the samples that went into the encoder.
    EXPECT_EQ(actual.frames(), std::llround(GetParam().options.seconds * GetParam().options.sampleRate));
    EXPECT_EQ(c.wave->DataSize(), actual.frames() * actual.channels * 2);
}

Mp3Options withId3v2(Mp3Options o)
{
    o.id3v2Bytes = 700;
    o.id3v1Title = "Tagged";
    return o;
}

Mp3Options vbr(Mp3Options o)
{
    o.vbr = true;
    return o;
}

INSTANTIATE_TEST_SUITE_P(Files, DecodeLikeMpg123,
                         ::testing::Values(DecodeCase{"Stereo44100", tone(44100, 2, 3.0)},
                                           DecodeCase{"Mono22050", tone(22050, 1, 2.5)},
                                           DecodeCase{"Vbr48000", vbr(tone(48000, 2, 2.0))},
                                           DecodeCase{"Tagged32000", withId3v2(tone(32000, 2, 1.3))}),
                         [](const auto &info) { return std::string(info.param.name); });

// --- conversion to CD audio ---------------------------------------------------------------

TEST(MediaChain, MonoHalfRateBecomesCdAudioAsSoxMakesIt)
{
    TempFolder dir;
    const std::string mp3 = makeMp3(dir, "mono.mp3", tone(22050, 1, 3.0));
    const std::string decoded = dir.file("decoded.wav");
    const std::string soxed = dir.file("soxed.wav");
    runTool("mpg123 -q -w " + quoted(decoded) + " " + quoted(mp3));
    runTool("sox " + quoted(decoded) + " -r 44100 -c 2 " + quoted(soxed));

    Mp3Chain c(mp3, dir.file("work.wav"), WaveFormat::cdAudio());
    c.runToClosed();
    EXPECT_EQ(folded(c.events), (Events{"started", "buffer", "stopped", "closed"}));

    const auto in = readWave(decoded);
    const auto reference = readWave(soxed);
    const auto out = readWave(dir.file("work.wav"));
    ASSERT_TRUE(in.ok && reference.ok && out.ok);
    EXPECT_EQ(out.format, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    EXPECT_EQ(out.rate, 44100);
    EXPECT_EQ(out.channels, 2);
    EXPECT_NEAR(static_cast<double>(out.frames()), 2.0 * static_cast<double>(in.frames()), 4.0);
    EXPECT_NEAR(static_cast<double>(out.frames()), static_cast<double>(reference.frames()), 4.0);
    for (int64_t f = 0; f < out.frames(); ++f)
        ASSERT_EQ(out.samples[2 * f], out.samples[2 * f + 1]) << "frame " << f;
    const double db = mediatest::signalToDifferenceDb(reference.samples, out.samples);
    std::cout << "[ sox match ] signal to difference " << db << " dB\n";
    RecordProperty("sox_match_db", std::to_string(db));
    EXPECT_GE(db, 60.0);
}

// --- names ----------------------------------------------------------------------------------

TEST(MediaChain, Id3v1NamesGoIntoTheInfoList)
{
    TempFolder dir;
    const std::string mp3 = makeMp3(dir, "plain.mp3", tone(44100, 2, 1.0));
    {
        std::string bytes = mp3test::readBytes(mp3);
        bytes += mp3test::id3v1("TAG", "Caf\xE9 Lights", "The Testers", "An Album", "2001", "", 12);
        mp3test::writeBytes(mp3, bytes);
    }
    Mp3Chain c(mp3, dir.file("work.wav"), WaveFormat::cdAudio());
    c.runToClosed();
    const auto out = readWave(dir.file("work.wav"));
    ASSERT_TRUE(out.ok);
    EXPECT_EQ(out.title, "Caf\xC3\xA9 Lights");
    EXPECT_EQ(out.artist, "The Testers");
    EXPECT_EQ(out.frames(), 44100);
}

TEST(MediaChain, Id3v2TitleWinsOverId3v1)
{
    TempFolder dir;
    const std::string mp3 = makeMp3(dir, "both.mp3", withId3v2(tone(44100, 2, 1.0)));
    Mp3Chain c(mp3, dir.file("work.wav"), WaveFormat::cdAudio());
    c.runToClosed();
    const auto out = readWave(dir.file("work.wav"));
    ASSERT_TRUE(out.ok);
    EXPECT_EQ(out.title, "Test tone");
    EXPECT_FALSE(out.hasArtist);
}

TEST(MediaChain, WithoutTagTheTitleIsTheFileName)
{
    TempFolder dir;
    fs::create_directory(dir.path() / "Some_Folder");
    const std::string mp3 = makeMp3(dir, "Some_Folder/My_Old_Song.mp3", tone(44100, 2, 1.0));
    // The logic's own way of writing the path.
    std::string logicPath = mp3;
    logicPath.replace(logicPath.rfind('/'), 1, "\\");
    Mp3Chain c(logicPath, dir.file("work.wav"), WaveFormat::cdAudio());
    c.runToClosed();
    const auto out = readWave(dir.file("work.wav"));
    ASSERT_TRUE(out.ok);
    EXPECT_EQ(out.title, "My Old Song");
    EXPECT_FALSE(out.hasArtist);
}

// --- position and length --------------------------------------------------------------------

TEST(MediaChain, PositionAndLengthInMilliseconds)
{
    TempFolder dir;
    const std::string mp3 = makeMp3(dir, "long.mp3", tone(44100, 2, 8.0));
    Mp3Chain c(mp3, dir.file("work.wav"), WaveFormat::cdAudio());
    EXPECT_EQ(c.source->Length(), 8000);
    EXPECT_EQ(c.source->Position(), 0);

    c.trigger->Start();
    // Read from this (the UI) thread while the worker decodes.
    std::vector<int32_t> seen;
    while (c.trigger->State() & Trigger::StateFlowing)
        seen.push_back(c.source->Position());
    ASSERT_TRUE(settle(c.loop));
    for (size_t i = 1; i < seen.size(); ++i)
        ASSERT_LE(seen[i - 1], seen[i]);
    for (int32_t p : seen)
        ASSERT_LE(p, 8000);
    EXPECT_EQ(c.source->Position(), c.source->Length());
    EXPECT_EQ(c.source->Length(), 8000);
    c.trigger->Close();
    ASSERT_TRUE(settle(c.loop));
}

TEST(MediaChain, LengthIsZeroForWhatCantBeRead)
{
    TempFolder dir;
    Mp3FileSource source;
    source.setFileName(dir.file("missing.mp3"));
    EXPECT_EQ(source.Length(), 0);
    mp3test::writeBytes(dir.file("empty.mp3"), "");
    source.setFileName(dir.file("empty.mp3"));
    EXPECT_EQ(source.Length(), 0);
    mp3test::writeBytes(dir.file("text.mp3"), std::string(5000, 'x'));
    source.setFileName(dir.file("text.mp3"));
    EXPECT_EQ(source.Length(), 0);
    EXPECT_EQ(source.Position(), 0);
}

// --- states, stop and resume ----------------------------------------------------------------

// A sink that holds the worker at its first buffer until let go, and counts what it gets.
class GateSink final : public platform::MediaComponent, public platform::media::PcmSink {
public:
    ~GateSink() override { leavePump(); }
    void openSink(const platform::media::StreamInfo &info) override
    {
        this->info = info;
        opened = true;
    }
    bool write(const std::byte *, size_t n) override
    {
        std::unique_lock lock(m_mutex);
        entered = true;
        m_cv.wait(lock, [this] { return m_open; });
        bytes += n;
        return true;
    }
    void closeSink() override { closed = true; }
    void letGo()
    {
        std::lock_guard lock(m_mutex);
        m_open = true;
        m_cv.notify_all();
    }

    platform::media::StreamInfo info;
    std::atomic<size_t> bytes{0};
    std::atomic<bool> entered{false};
    bool opened = false;
    bool closed = false;

private:
    std::mutex m_mutex;
    std::condition_variable m_cv;
    bool m_open = false;
};

// Ten seconds of MP3 into a sink that holds the worker at its first buffer until let go.
struct GatedChain {
    GatedChain()
    {
        Mp3Chain::hook(trigger, events);
        connect();
    }
    void connect()
    {
        trigger.setInput(&source);
        trigger.setOutput(&sink);
        source.setFileName(mp3);
    }
    TempFolder dir;
    const std::string mp3 = makeMp3(dir, "long.mp3", tone(44100, 2, 10.0));
    rt::VirtualEventLoop loop;
    Mp3FileSource source;
    GateSink sink;
    TriggerComponent trigger{loop};
    Events events;
};

TEST(MediaChain, StatesStopAndResume)
{
    GatedChain c;
    auto [loop, source, sink, trigger, events] = std::tie(c.loop, c.source, c.sink, c.trigger, c.events);

    EXPECT_EQ(trigger.State(), 0);
    trigger.Start();
    EXPECT_EQ(trigger.State(), Trigger::StateOpen | Trigger::StateFlowing);
    EXPECT_TRUE(sink.opened);
    EXPECT_EQ(sink.info.format, (WaveFormat{1, 2, 44100, 16}));
    EXPECT_EQ(loop.workInHand(), std::vector<std::string>{"decoder"});
    // Stopped while it is at its first buffer: that one is taken, then the flow ends.
    while (!sink.entered)
        std::this_thread::yield();
    // The buffer is let go only once the stop is asked for, so a busy machine can't let the
    // worker run on through the file first.
    std::thread releaser([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        sink.letGo();
    });
    trigger.Stop();
    releaser.join();
    EXPECT_EQ(trigger.State(), Trigger::StateOpen);
    ASSERT_TRUE(settle(loop));
    EXPECT_EQ(folded(events).back(), "stopped");
    const size_t firstRun = sink.bytes;
    EXPECT_GE(firstRun, 32768u);
    EXPECT_LT(firstRun, 441000u * 4);

    // Started again, it goes on from where it stopped.
    trigger.Start();
    ASSERT_TRUE(settle(loop));
    EXPECT_EQ(trigger.State(), Trigger::StateOpen);
    EXPECT_EQ(sink.bytes.load(), 441000u * 4);
    const Events f = folded(events);
    ASSERT_GE(f.size(), 4u);
    EXPECT_EQ(f.front(), "started");
    EXPECT_EQ(f.back(), "stopped");
    EXPECT_EQ(std::count(f.begin(), f.end(), "started"), 2);
    EXPECT_EQ(std::count(f.begin(), f.end(), "stopped"), 2);
    EXPECT_EQ(source.Position(), 10000);

    trigger.Close();
    EXPECT_EQ(trigger.State(), 0);
    EXPECT_TRUE(sink.closed);
    ASSERT_TRUE(settle(loop));
    EXPECT_EQ(events.back(), "closed");
    // Stop of a chain that isn't flowing: nothing happens.
    trigger.Stop();
    EXPECT_TRUE(settle(loop));
    EXPECT_EQ(events.back(), "closed");
}

TEST(MediaChain, CloseWhileDataFlowsSaysClosedOnly)
{
    GatedChain c;
    auto [loop, source, sink, trigger, events] = std::tie(c.loop, c.source, c.sink, c.trigger, c.events);
    trigger.Start();
    // Closed while the worker holds its first buffer: straight to closing, not through Stop.
    while (!sink.entered)
        std::this_thread::yield();
    std::thread releaser([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        sink.letGo();
    });
    trigger.Close();
    releaser.join();
    EXPECT_EQ(trigger.State(), 0);
    EXPECT_TRUE(sink.closed);
    ASSERT_TRUE(settle(loop));
    const Events f = folded(events);
    EXPECT_EQ(std::count(f.begin(), f.end(), "stopped"), 0);
    EXPECT_EQ(std::count(f.begin(), f.end(), "closed"), 1);
    EXPECT_EQ(f.back(), "closed");
    EXPECT_TRUE(loop.workInHand().empty());

    // A flow that ended by itself was told stopped; a Close after it says closed as well.
    c.connect();
    sink.letGo();
    trigger.Start();
    ASSERT_TRUE(settle(loop));
    trigger.Close();
    ASSERT_TRUE(settle(loop));
    const Events g = folded(events);
    EXPECT_EQ(std::count(g.begin(), g.end(), "stopped"), 1);
    EXPECT_EQ(g.back(), "closed");
}

TEST(MediaChain, CloseWithoutStartStillSaysClosed)
{
    rt::VirtualEventLoop loop;
    TriggerComponent trigger(loop);
    Events events;
    Mp3Chain::hook(trigger, events);
    trigger.Close();
    EXPECT_EQ(loop.workInHand(), std::vector<std::string>{"decoder"});
    ASSERT_TRUE(settle(loop));
    EXPECT_EQ(events, Events{"closed"});
    EXPECT_TRUE(loop.workInHand().empty());
}

TEST(MediaChain, WorkEndsAtTheStopWhenNobodyCloses)
{
    TempFolder dir;
    const std::string mp3 = makeMp3(dir, "t.mp3", tone(44100, 2, 1.0));
    Mp3Chain c(mp3, dir.file("work.wav"));
    c.trigger->Start();
    ASSERT_TRUE(settle(c.loop));
    EXPECT_TRUE(c.loop.workInHand().empty());
    EXPECT_EQ(c.events.back(), "stopped");
}

TEST(MediaChain, CloseInsideStoppedKeepsTheWorkGoingToClosed)
{
    TempFolder dir;
    const std::string mp3 = makeMp3(dir, "t.mp3", tone(44100, 2, 1.0));
    Mp3Chain c(mp3, dir.file("work.wav"));
    std::vector<size_t> workAtClosed;
    c.trigger->OnStopped = [&] {
        c.events.push_back("stopped");
        c.trigger->Close();
    };
    c.trigger->OnClosed = [&] {
        c.events.push_back("closed");
        workAtClosed.push_back(c.loop.workInHand().size());
    };
    c.trigger->Start();
    // The work never drops to none between the stop and the close.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!c.loop.workInHand().empty() && std::chrono::steady_clock::now() < deadline) {
        c.loop.doEvents();
        if (c.loop.workInHand().empty())
            break;
    }
    EXPECT_EQ(folded(c.events), (Events{"started", "buffer", "stopped", "closed"}));
    EXPECT_EQ(workAtClosed, std::vector<size_t>{1});
    EXPECT_TRUE(c.loop.workInHand().empty());
}

// --- bad input --------------------------------------------------------------------------------

TEST(MediaChain, MissingSourceRaises53WithoutEvents)
{
    TempFolder dir;
    Mp3Chain c(dir.file("missing.mp3"), dir.file("work.wav"), WaveFormat::cdAudio());
    try {
        c.trigger->Start();
        FAIL() << "no error";
    } catch (const rt::RuntimeError &e) {
        EXPECT_EQ(e.number(), 53);
    }
    EXPECT_EQ(c.trigger->State(), 0);
    EXPECT_TRUE(c.loop.workInHand().empty());
    ASSERT_TRUE(settle(c.loop));
    EXPECT_TRUE(c.events.empty());
    EXPECT_FALSE(fs::exists(dir.file("work.wav")));
}

TEST(MediaChain, UnwritableSinkRaises75WithoutEvents)
{
    TempFolder dir;
    const std::string mp3 = makeMp3(dir, "t.mp3", tone(44100, 2, 1.0));
    mp3test::writeBytes(dir.file("plain-file"), "x");
    std::vector<std::string> targets = {dir.file("no-such-folder/work.wav"), dir.file("plain-file/work.wav"), ""};
    // A device that takes nothing: the header can't even be written.
    if (fs::exists("/dev/full"))
        targets.push_back("/dev/full");
    if (::geteuid() != 0) {
        // The superuser writes into a read-only folder anyway.
        fs::create_directory(dir.path() / "locked");
        fs::permissions(dir.path() / "locked", fs::perms::owner_read | fs::perms::owner_exec);
        targets.push_back(dir.file("locked/work.wav"));
    }
    for (const std::string &target : targets) {
        Mp3Chain c(mp3, target, WaveFormat::cdAudio());
        try {
            c.trigger->Start();
            ADD_FAILURE() << "no error for " << target;
        } catch (const rt::RuntimeError &e) {
            EXPECT_EQ(e.number(), 75) << target;
        }
        EXPECT_EQ(c.trigger->State(), 0);
        EXPECT_TRUE(c.loop.workInHand().empty());
        ASSERT_TRUE(settle(c.loop));
        EXPECT_TRUE(c.events.empty());

        // The source was let go again: the same chain opens once the target is good.
        c.wave->setFileName(dir.file("good.wav"));
        c.runToClosed();
        EXPECT_EQ(folded(c.events), (Events{"started", "buffer", "stopped", "closed"}));
    }
}

std::string randomBytes(size_t n, unsigned seed)
{
    std::mt19937 gen(seed);
    std::string s(n, '\0');
    for (char &ch : s)
        ch = static_cast<char>(gen() & 0xFF);
    return s;
}

// Whatever the file holds: the chain opens, stops, closes, and leaves a readable wave.
void expectEndsCleanly(const std::string &mp3, const TempFolder &dir)
{
    Mp3Chain c(mp3, dir.file("work.wav"), WaveFormat::cdAudio());
    c.runToClosed();
    const Events f = folded(c.events);
    ASSERT_GE(f.size(), 3u);
    EXPECT_EQ(f.front(), "started");
    EXPECT_EQ(f[f.size() - 2], "stopped");
    EXPECT_EQ(f.back(), "closed");
    bool failed = false;
    for (size_t i = 1; i + 2 < f.size(); ++i) {
        failed = failed || f[i].rfind("error:", 0) == 0;
        EXPECT_TRUE(f[i] == "buffer" || f[i].rfind("error:", 0) == 0) << f[i];
    }
    EXPECT_TRUE(readWave(dir.file("work.wav")).ok);
    // A clean end reaches the length; a failure stops short of it.
    if (failed)
        EXPECT_LE(c.source->Position(), c.source->Length());
    else
        EXPECT_EQ(c.source->Position(), c.source->Length());
    std::cout << "[ events    ]";
    for (const std::string &e : f)
        std::cout << ' ' << e;
    std::cout << '\n';
}

TEST(MediaChain, EmptyFileEndsCleanly)
{
    TempFolder dir;
    mp3test::writeBytes(dir.file("empty.mp3"), "");
    expectEndsCleanly(dir.file("empty.mp3"), dir);
    EXPECT_EQ(readWave(dir.file("work.wav")).frames(), 0);
}

TEST(MediaChain, RandomBytesEndCleanly)
{
    TempFolder dir;
    for (unsigned seed = 1; seed <= 3; ++seed) {
        mp3test::writeBytes(dir.file("noise.mp3"), randomBytes(96 * 1024, seed));
        expectEndsCleanly(dir.file("noise.mp3"), dir);
    }
}

TEST(MediaChain, HalfAFileEndsCleanly)
{
    TempFolder dir;
    const std::string mp3 = makeMp3(dir, "whole.mp3", tone(44100, 2, 4.0));
    const std::string bytes = mp3test::readBytes(mp3);
    mp3test::writeBytes(dir.file("half.mp3"), bytes.substr(0, bytes.size() / 2));
    expectEndsCleanly(dir.file("half.mp3"), dir);
    const auto out = readWave(dir.file("work.wav"));
    EXPECT_NEAR(static_cast<double>(out.frames()), 2.0 * 44100, 0.1 * 44100);
}

TEST(MediaChain, DamagedMiddleEndsCleanly)
{
    TempFolder dir;
    const std::string mp3 = makeMp3(dir, "whole.mp3", tone(22050, 1, 4.0));
    std::string bytes = mp3test::readBytes(mp3);
    const std::string noise = randomBytes(bytes.size() / 4, 99);
    bytes.replace(bytes.size() / 3, noise.size(), noise);
    mp3test::writeBytes(dir.file("damaged.mp3"), bytes);
    expectEndsCleanly(dir.file("damaged.mp3"), dir);
}

// A source that fails after two buffers.
class FailingSource final : public platform::MediaComponent, public platform::media::PcmSource {
public:
    ~FailingSource() override { leavePump(); }
    platform::media::StreamInfo openSource() override { return {}; }
    platform::media::ReadResult read(std::byte *buffer, size_t bytes) override
    {
        platform::media::ReadResult r;
        if (++m_reads > 2) {
            r.error = platform::media::SourceError{7, "the disc went away"};
            return r;
        }
        std::fill(buffer, buffer + bytes, std::byte{0});
        r.bytes = bytes;
        return r;
    }
    void closeSource() override {}

private:
    int m_reads = 0;
};

TEST(MediaChain, SourceFailureMidStreamIsAnErrorBeforeTheStop)
{
    TempFolder dir;
    rt::VirtualEventLoop loop;
    FailingSource source;
    TriggerComponent trigger(loop);
    WaveFileComponent wave(loop);
    Events events;
    Mp3Chain::hook(trigger, events);
    trigger.setInput(&source);
    trigger.setOutput(&wave);
    wave.setFileName(dir.file("work.wav"));
    trigger.Start();
    ASSERT_TRUE(settle(loop));
    EXPECT_EQ(folded(events), (Events{"started", "buffer", "error:7:the disc went away", "stopped"}));
    trigger.Close();
    ASSERT_TRUE(settle(loop));
    EXPECT_EQ(readWave(dir.file("work.wav")).frames(), 2 * 32768 / 4);
}

// The chain in a child whose files may not grow past 200 kB: the writes fail part way.
TEST(MediaChain, WriteFailureMidStreamStopsTheFlow)
{
    TempFolder dir;
    const std::string mp3 = makeMp3(dir, "t.mp3", tone(44100, 2, 6.0));
    const std::string wav = dir.file("work.wav");
    constexpr rlim_t Limit = 200000;
    const pid_t pid = ::fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        ::signal(SIGXFSZ, SIG_IGN);
        rlimit limit{Limit, Limit};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        int code = 0;
        {
            Mp3Chain c(mp3, wav, WaveFormat::cdAudio());
            try {
                c.trigger->Start();
            } catch (...) {
                ::_exit(10);
            }
            if (!settle(c.loop))
                ::_exit(11);
            c.trigger->Close();
            if (!settle(c.loop))
                ::_exit(12);
            const Events f = folded(c.events);
            const auto failed = std::find(f.begin(), f.end(), "writefailed");
            const auto stopped = std::find(f.begin(), f.end(), "stopped");
            if (f.front() != "started" || failed == f.end() || stopped == f.end() || failed > stopped ||
                f.back() != "closed" || std::count(f.begin(), f.end(), "writefailed") != 1)
                code = 13;
            const auto out = readWave(wav);
            if (code == 0 && (!out.ok || out.frames() * 4 > static_cast<int64_t>(Limit) || out.frames() < 1000))
                code = 14;
        }
        ::_exit(code);
    }
    int status = 0;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    pid_t done = 0;
    while ((done = ::waitpid(pid, &status, WNOHANG)) == 0 && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    if (done == 0) {
        ::kill(pid, SIGKILL);
        ::waitpid(pid, &status, 0);
        FAIL() << "the chain hung";
    }
    ASSERT_TRUE(WIFEXITED(status)) << "the child died of signal " << (WIFSIGNALED(status) ? WTERMSIG(status) : 0);
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST(MediaChain, DestroyingARunningTriggerDeliversNothingMore)
{
    TempFolder dir;
    const std::string mp3 = makeMp3(dir, "long.mp3", tone(44100, 2, 10.0));
    Mp3Chain c(mp3, dir.file("work.wav"), WaveFormat::cdAudio());
    c.trigger->Start();
    c.trigger.reset();
    ASSERT_TRUE(settle(c.loop));
    EXPECT_TRUE(c.events.empty());
    EXPECT_TRUE(c.loop.workInHand().empty());
}

TEST(MediaChain, ATriggerMayBeDestroyedInItsOwnEvent)
{
    TempFolder dir;
    const std::string mp3 = makeMp3(dir, "t.mp3", tone(44100, 2, 1.0));
    Mp3Chain c(mp3, dir.file("work.wav"), WaveFormat::cdAudio());
    // A window unloading itself from the stop: the trigger goes while its handler runs.
    c.trigger->OnStopped = [&c] {
        c.events.push_back("stopped");
        c.trigger.reset();
        c.events.push_back("gone");
    };
    c.trigger->Start();
    ASSERT_TRUE(settle(c.loop));
    EXPECT_EQ(folded(c.events), (Events{"started", "buffer", "stopped", "gone"}));
    EXPECT_FALSE(c.trigger);
    EXPECT_TRUE(c.loop.workInHand().empty());
    EXPECT_EQ(readWave(dir.file("work.wav")).frames(), 44100);
}

TEST(MediaChain, DestroyingTheSourceUnderARunningChain)
{
    TempFolder dir;
    const std::string mp3 = makeMp3(dir, "long.mp3", tone(44100, 2, 10.0));
    Mp3Chain c(mp3, dir.file("work.wav"), WaveFormat::cdAudio());
    c.trigger->Start();
    c.source.reset();
    c.wave.reset();
    EXPECT_EQ(c.trigger->State(), 0);
    ASSERT_TRUE(settle(c.loop));
    EXPECT_TRUE(c.loop.workInHand().empty());
    // The trigger is usable still: closing says closed.
    c.trigger->Close();
    ASSERT_TRUE(settle(c.loop));
    EXPECT_EQ(c.events.back(), "closed");
}

// --- converters in the chain ------------------------------------------------------------------

TEST(MediaChain, ConverterBeforeTheTriggerPulls)
{
    TempFolder dir;
    const std::string mp3 = makeMp3(dir, "mono.mp3", tone(22050, 1, 2.0));
    rt::VirtualEventLoop loop;
    platform::Components components;
    platform::media::addRealMediaComponents(components, loop);
    auto source = components.audioFile();
    auto converter = components.formatConverter();
    auto trigger = components.trigger();
    auto wave = components.waveFile();
    source->setFileName(mp3);
    converter->setWaveFormat(WaveFormat::cdAudio());
    wave->setFileName(dir.file("pulled.wav"));
    converter->setInput(source.get());
    trigger->setInput(converter.get());
    trigger->setOutput(wave.get());
    Events events;
    Mp3Chain::hook(*trigger, events);
    trigger->Start();
    ASSERT_TRUE(settle(loop));
    trigger->Close();
    ASSERT_TRUE(settle(loop));
    EXPECT_EQ(folded(events), (Events{"started", "buffer", "stopped", "closed"}));

    // The same as the wave file's own target format makes it.
    Mp3Chain direct(mp3, dir.file("direct.wav"), WaveFormat::cdAudio());
    direct.runToClosed();
    const auto pulled = readWave(dir.file("pulled.wav"));
    const auto reference = readWave(dir.file("direct.wav"));
    ASSERT_TRUE(pulled.ok && reference.ok);
    EXPECT_EQ(pulled.rate, 44100);
    EXPECT_EQ(pulled.channels, 2);
    EXPECT_EQ(pulled.frames(), reference.frames());
    EXPECT_GE(mediatest::signalToDifferenceDb(reference.samples, pulled.samples), 90.0);
}

TEST(MediaChain, ConverterAfterTheTriggerPushes)
{
    TempFolder dir;
    const std::string mp3 = makeMp3(dir, "stereo.mp3", tone(44100, 2, 2.0));
    const std::string decoded = dir.file("decoded.wav");
    runTool("mpg123 -q -w " + quoted(decoded) + " " + quoted(mp3));

    // A wave file as the source, through the converter into another wave file, A-law mono.
    rt::VirtualEventLoop loop;
    WaveFileComponent source(loop);
    TriggerComponent trigger(loop);
    FormatConverterComponent converter;
    WaveFileComponent target(loop);
    source.setFileName(decoded);
    source.setFileMustExist(true);
    target.setFileName(dir.file("alaw.wav"));
    converter.setWaveFormat(WaveFormat{6, 1, 8000, 8});
    trigger.setInput(&source);
    trigger.setOutput(&converter);
    converter.setInput(&trigger);
    converter.setOutput(&target);
    Events events;
    Mp3Chain::hook(trigger, events);
    trigger.Start();
    ASSERT_TRUE(settle(loop));
    EXPECT_EQ(source.DataPosition(), source.DataSize());
    EXPECT_EQ(source.DataSize(), 88200 * 4);
    trigger.Close();
    ASSERT_TRUE(settle(loop));
    EXPECT_EQ(folded(events), (Events{"started", "buffer", "stopped", "closed"}));
    const auto out = readWave(dir.file("alaw.wav"));
    ASSERT_TRUE(out.ok);
    EXPECT_EQ(out.format, SF_FORMAT_WAV | SF_FORMAT_ALAW);
    EXPECT_EQ(out.rate, 8000);
    EXPECT_EQ(out.channels, 1);
    EXPECT_NEAR(static_cast<double>(out.frames()), 16000, 4);
}

TEST(MediaChain, UnsetConverterHandsOnAsItComes)
{
    TempFolder dir;
    const std::string mp3 = makeMp3(dir, "t.mp3", tone(44100, 2, 1.0));
    rt::VirtualEventLoop loop;
    Mp3FileSource source;
    FormatConverterComponent converter;
    TriggerComponent trigger(loop);
    WaveFileComponent wave(loop);
    source.setFileName(mp3);
    wave.setFileName(dir.file("out.wav"));
    converter.setInput(&source);
    trigger.setInput(&converter);
    trigger.setOutput(&wave);
    trigger.Start();
    ASSERT_TRUE(settle(loop));
    trigger.Close();
    ASSERT_TRUE(settle(loop));
    const std::string reference = dir.file("reference.wav");
    runTool("mpg123 -q -w " + quoted(reference) + " " + quoted(mp3));
    expectSamplesEqual(readWave(reference).samples, readWave(dir.file("out.wav")).samples);
}

} // namespace
