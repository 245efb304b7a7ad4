// The real player chain (decoder, ring, equaliser, output, connector) wired as the main window
// wires it, playing into the silent sink, with what it played measured in played.wav: the time
// between start and stop, the samples against the mpg123 tool's decode, seeks, stops, the
// equaliser's response band by band, the gain stage, errors and teardown.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "AudioTestSupport.h"
#include "KitFixture.h"
#include "MediaTestSupport.h"
#include "Mp3Maker.h"
#include "TempFolder.h"
#include "platform/Components.h"
#include "platform/audio/ConnectorComponent.h"
#include "platform/audio/EqualizerComponent.h"
#include "platform/audio/Mp3DecoderComponent.h"
#include "platform/audio/RealPlayerComponents.h"
#include "platform/audio/RingBufferComponent.h"
#include "platform/audio/WaveOutComponent.h"
#include "runtime/RuntimeError.h"
#include "ui/LevelMeter.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using audiotest::amplitudeAt;
using audiotest::db;
using mediatest::quoted;
using mediatest::readWave;
using mediatest::runTool;
using mediatest::Wave;
using mp3test::TempFolder;
using platform::audio::PlayerOptions;

const double Points[16] = {0, 500, 1500, 2500, 3500, 4500, 5500, 6500, 7500, 8500, 9500, 10500, 11500, 12500, 13500, 14500};

// The chain from the component makers, wired as the main window's design wires it; the output
// is made first, as the main window holds it first.
struct Player {
    rt::VirtualEventLoop loop;
    platform::Components makers;
    std::unique_ptr<platform::WaveOut> out;
    std::unique_ptr<platform::RingBuffer> ring;
    std::unique_ptr<platform::Equalizer> eq;
    std::unique_ptr<platform::Connector> connector;
    std::unique_ptr<platform::Mp3Decoder> giveamp3;
    std::vector<std::string> events;
    std::vector<Clock::time_point> times;

    explicit Player(const std::optional<PlayerOptions> &options = {})
    {
        if (options)
            platform::audio::addRealPlayerComponents(makers, loop, *options);
        else
            platform::audio::addRealPlayerComponents(makers, loop);
        out = makers.waveOut();
        ring = makers.ringBuffer();
        eq = makers.equalizer();
        connector = makers.connector();
        giveamp3 = makers.mp3Decoder();
        giveamp3->setOutput(ring.get());
        ring->setInput(giveamp3.get());
        ring->setOutput(eq.get());
        eq->setInput(ring.get());
        eq->setOutput(out.get());
        out->setInput(eq.get());
        out->setOutput(connector.get());
        connector->setInput(out.get());
        out->setBufferSize(4048);
        out->setNumBuffers(100);
        for (int i = 1; i <= 15; ++i)
            eq->AddBand(Points[i - 1], Points[i], 0.0);
        out->OnPlayStart = [this] { note("start"); };
        out->OnPlayStop = [this] { note("stop"); };
    }
    void note(const std::string &e)
    {
        events.push_back(e);
        times.push_back(Clock::now());
    }
    void play(const std::string &mp3)
    {
        giveamp3->setFileName(mp3);
        out->Open();
        out->Start();
    }
    // Events delivered until the play's work is done.
    bool settle(int seconds = 60) { return mediatest::settle(loop, std::chrono::seconds(seconds)); }
    // Events delivered until the condition holds (real time passes).
    bool runUntil(const std::function<bool()> &done, int seconds = 30)
    {
        const auto end = Clock::now() + std::chrono::seconds(seconds);
        while (!done()) {
            loop.doEvents();
            if (Clock::now() > end)
                return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return true;
    }
};

PlayerOptions silentInto(const fs::path &folder, double speed)
{
    PlayerOptions o;
    o.soundFolder = folder;
    o.silentSpeed = speed;
    return o;
}

std::string makeTone(const TempFolder &dir, const std::string &name, double seconds, int rate = 44100)
{
    testsupport::Mp3Options o;
    o.sampleRate = rate;
    o.seconds = seconds;
    const std::string path = dir.file(name);
    EXPECT_TRUE(testsupport::makeMp3(path, o));
    return path;
}

// Sines at the middle of every band and one above the last, each small enough that no gain of
// the test can make their sum clip.
const std::vector<double> &probeFrequencies()
{
    static const std::vector<double> f = {250, 1000, 2000, 3000, 4000, 5000, 6000, 7000, 8000,
                                          9000, 10000, 11000, 12000, 13000, 14000, 16000};
    return f;
}

std::string makeProbe(const TempFolder &dir, const std::string &name, double seconds, int rate)
{
    const std::string path = dir.file(name);
    EXPECT_TRUE(audiotest::encodeMp3(path, audiotest::sines(probeFrequencies(), 0.025, rate, seconds), rate));
    return path;
}

Wave reference(const TempFolder &dir, const std::string &mp3)
{
    const std::string wav = dir.file(fs::path(mp3).stem().string() + "-mpg123.wav");
    runTool("mpg123 -q -w " + quoted(wav) + " " + quoted(mp3));
    return readWave(wav);
}

// Index of the first frame where two waves differ (the shorter's length when none).
size_t firstDifference(const Wave &a, const Wave &b)
{
    const size_t n = std::min(a.samples.size(), b.samples.size()) / 2;
    for (size_t i = 0; i < n; ++i) {
        if (a.samples[2 * i] != b.samples[2 * i] || a.samples[2 * i + 1] != b.samples[2 * i + 1])
            return i;
    }
    return n;
}

int errorOf(const std::function<void()> &f)
{
    try {
        f();
    } catch (const rt::RuntimeError &e) {
        return e.number();
    }
    return 0;
}

// The contract with the scenario driver: BRASSWICK_SOUND_DIR alone sends the sound to the
// silent sink and records it there. The play lasts the file's length, in real time.
TEST(PlayerChain, PlaysAFileToItsEndInRealTimeIntoPlayedWav)
{
    TempFolder dir;
    const std::string mp3 = makeTone(dir, "tone.mp3", 2.0);
    const fs::path sound = dir.path() / "sound";
    ::setenv("BRASSWICK_SOUND_DIR", sound.c_str(), 1);
    Player p;
    ::unsetenv("BRASSWICK_SOUND_DIR");
    p.play(mp3);
    EXPECT_EQ(p.out->WaveFormatHandle() != 0, true);
    ASSERT_TRUE(p.settle());
    ASSERT_EQ(p.events, (std::vector<std::string>{"start", "stop"}));
    const double playedMs = std::chrono::duration<double, std::milli>(p.times[1] - p.times[0]).count();
    // Never shorter than the file; later only by how long a busy machine takes to wake the sink.
    EXPECT_GE(playedMs, p.giveamp3->Length() - 20.0);
    EXPECT_LT(playedMs, p.giveamp3->Length() * 1.25);
    EXPECT_EQ(p.giveamp3->Position(), 0) << "played to its end, the file starts from the top next time";

    const Wave played = readWave((sound / "played.wav").string());
    const Wave ref = reference(dir, mp3);
    ASSERT_TRUE(played.ok);
    ASSERT_TRUE(ref.ok);
    EXPECT_EQ(played.rate, 44100);
    EXPECT_EQ(played.channels, 2);
    EXPECT_EQ(played.frames(), ref.frames());
    // Flat equaliser, full volume: every sample as the decoder gave it.
    EXPECT_EQ(firstDifference(played, ref), static_cast<size_t>(ref.frames()));
}

TEST(PlayerChain, ASeekWhilePlayingLandsWhereAsked)
{
    TempFolder dir;
    const std::string mp3 = makeProbe(dir, "probe.mp3", 4.0, 44100);
    Player p(silentInto(dir.path() / "sound", 1.0));
    p.play(mp3);
    ASSERT_TRUE(p.runUntil([&] { return p.giveamp3->Position() >= 500; }));
    p.giveamp3->setPosition(2500);
    EXPECT_GE(p.giveamp3->Position(), 2500) << "the new place shows at once";
    ASSERT_TRUE(p.runUntil([&] { return p.giveamp3->Position() >= 2600 || p.events.size() == 2; }));
    EXPECT_LT(p.giveamp3->Position(), 3500);
    ASSERT_TRUE(p.settle());
    EXPECT_EQ(p.events, (std::vector<std::string>{"start", "stop"}));

    const Wave played = readWave((dir.path() / "sound" / "played.wav").string());
    const Wave ref = reference(dir, mp3);
    ASSERT_TRUE(played.ok && ref.ok);
    // The file from the top, then from 2.5 s exactly, to the end.
    const size_t jump = firstDifference(played, ref);
    EXPECT_GE(jump, 44100u / 2);
    EXPECT_LT(jump, 44100u * 2);
    const size_t target = 2500 * 44100 / 1000;
    ASSERT_EQ(played.frames(), static_cast<int64_t>(jump + (ref.frames() - target)));
    for (size_t i = 0; i < ref.frames() - target; ++i) {
        ASSERT_EQ(played.samples[2 * (jump + i)], ref.samples[2 * (target + i)]) << i;
        ASSERT_EQ(played.samples[2 * (jump + i) + 1], ref.samples[2 * (target + i) + 1]) << i;
    }
}

TEST(PlayerChain, StopAndStartAgainLosesAndRepeatsNothing)
{
    TempFolder dir;
    const std::string mp3 = makeProbe(dir, "probe.mp3", 2.0, 44100);
    Player p(silentInto(dir.path() / "sound", 1.0));
    p.play(mp3);
    ASSERT_TRUE(p.runUntil([&] { return p.giveamp3->Position() >= 700; }));
    p.out->Stop();
    ASSERT_TRUE(p.settle());
    ASSERT_EQ(p.events, (std::vector<std::string>{"start", "stop"}));
    const int32_t stoppedAt = p.giveamp3->Position();
    EXPECT_GE(stoppedAt, 700);
    EXPECT_LT(stoppedAt, 1500);

    p.out->Start();
    EXPECT_EQ(p.giveamp3->Position(), stoppedAt);
    ASSERT_TRUE(p.settle());
    EXPECT_EQ(p.events, (std::vector<std::string>{"start", "stop", "start", "stop"}));
    const Wave played = readWave((dir.path() / "sound" / "played.wav").string());
    const Wave ref = reference(dir, mp3);
    EXPECT_EQ(played.frames(), ref.frames());
    EXPECT_EQ(firstDifference(played, ref), static_cast<size_t>(ref.frames()));
}

TEST(PlayerChain, APositionSetWhileStoppedIsWhereThePlayBegins)
{
    TempFolder dir;
    const std::string mp3 = makeProbe(dir, "probe.mp3", 2.0, 44100);
    Player p(silentInto(dir.path() / "sound", 0));
    p.giveamp3->setFileName(mp3);
    p.giveamp3->setPosition(1500);
    EXPECT_EQ(p.giveamp3->Position(), 1500);
    p.out->Open();
    p.out->Start();
    ASSERT_TRUE(p.settle());
    const Wave played = readWave((dir.path() / "sound" / "played.wav").string());
    const Wave ref = reference(dir, mp3);
    const size_t from = 1500 * 44100 / 1000;
    ASSERT_EQ(played.frames(), static_cast<int64_t>(ref.frames() - from));
    EXPECT_TRUE(std::equal(played.samples.begin(), played.samples.end(), ref.samples.begin() + 2 * from));
}

// A tone in the middle of every band and one above the last, played flat and then with gains:
// the level of each changes by its band's gain.
class EqualizerThroughTheChain : public ::testing::TestWithParam<int> {};

TEST_P(EqualizerThroughTheChain, EveryBandHasItsGain)
{
    const int rate = GetParam();
    TempFolder dir;
    const std::string mp3 = makeProbe(dir, "probe.mp3", 1.5, rate);
    const std::vector<std::vector<double>> settings = {
        {12, -12, 12, -12, 12, -12, 12, -12, 12, -12, 12, -12, 12, -12, 12},
        {-12, 12, -12, 12, -12, 12, -12, 12, -12, 12, -12, 12, -12, 12, -12},
        {0, 3, -3, 6, -6, 9, -9, 1.5, -1.5, 4.5, -4.5, 7.5, -7.5, 10.5, -10.5},
    };
    Player flat(silentInto(dir.path() / "flat", 0));
    flat.play(mp3);
    ASSERT_TRUE(flat.settle());
    const Wave before = readWave((dir.path() / "flat" / "played.wav").string());
    ASSERT_TRUE(before.ok);
    const size_t from = static_cast<size_t>(rate) / 4;
    const size_t count = static_cast<size_t>(rate) / 2;

    for (size_t s = 0; s < settings.size(); ++s) {
        const fs::path folder = dir.path() / ("eq" + std::to_string(s));
        Player p(silentInto(folder, 0));
        for (int i = 0; i < 15; ++i)
            p.eq->setBandGain(i, settings[s][static_cast<size_t>(i)]);
        p.play(mp3);
        ASSERT_TRUE(p.settle());
        const Wave after = readWave((folder / "played.wav").string());
        ASSERT_EQ(after.frames(), before.frames());
        for (size_t k = 0; k < probeFrequencies().size(); ++k) {
            const double f = probeFrequencies()[k];
            const double want = k < 15 ? settings[s][k] : 0.0;
            for (int ch = 0; ch < 2; ++ch) {
                const double a = amplitudeAt(before.samples, 2, ch, f, rate, from, count);
                const double b = amplitudeAt(after.samples, 2, ch, f, rate, from, count);
                EXPECT_NEAR(db(b / a), want, 0.2) << f << " Hz, setting " << s << ", channel " << ch;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Rates, EqualizerThroughTheChain, ::testing::Values(44100, 48000));

TEST(PlayerChain, VolumeAndPanningAreTheGainStage)
{
    TempFolder dir;
    const std::string mp3 = makeTone(dir, "tone.mp3", 1.0);
    const Wave ref = reference(dir, mp3);
    const size_t from = 4410;
    const size_t count = 22050;
    const double full = amplitudeAt(ref.samples, 2, 0, 440, 44100, from, count);

    Player half(silentInto(dir.path() / "half", 0));
    half.giveamp3->setVolume(8192);
    half.play(mp3);
    ASSERT_TRUE(half.settle());
    const Wave h = readWave((dir.path() / "half" / "played.wav").string());
    EXPECT_NEAR(db(amplitudeAt(h.samples, 2, 0, 440, 44100, from, count) / full), -6.02, 0.05);
    EXPECT_NEAR(db(amplitudeAt(h.samples, 2, 1, 440, 44100, from, count) / full), -6.02, 0.05);
    // The decoder's float sound, halved, is rounded once at the end: every sample is what
    // mpg123's float decode gives halved and rounded, not a 16-bit sample halved and rounded again.
    const std::string f32 = dir.file("tone-f32.wav");
    runTool("mpg123 -q -e f32 -w " + quoted(f32) + " " + quoted(mp3));
    SF_INFO info{};
    SNDFILE *file = sf_open(f32.c_str(), SFM_READ, &info);
    ASSERT_NE(file, nullptr);
    std::vector<float> decoded(static_cast<size_t>(info.frames * info.channels));
    sf_readf_float(file, decoded.data(), info.frames);
    sf_close(file);
    ASSERT_EQ(h.samples.size(), decoded.size());
    size_t apart = 0;
    for (size_t i = 0; i < decoded.size(); ++i)
        apart += h.samples[i] != std::clamp(std::lrint(decoded[i] * 0.5f * 32768.0f), -32768L, 32767L);
    EXPECT_EQ(apart, 0u) << "samples rounded twice";

    Player right(silentInto(dir.path() / "right", 0));
    right.giveamp3->setPanning(16384);
    right.play(mp3);
    ASSERT_TRUE(right.settle());
    const Wave r = readWave((dir.path() / "right" / "played.wav").string());
    EXPECT_LT(amplitudeAt(r.samples, 2, 0, 440, 44100, from, count), 1e-4);
    EXPECT_NEAR(db(amplitudeAt(r.samples, 2, 1, 440, 44100, from, count) / full), 0.0, 0.05);
}

TEST(PlayerChain, LoopingPlaysAgainFromTheTop)
{
    TempFolder dir;
    const std::string mp3 = makeProbe(dir, "probe.mp3", 0.5, 44100);
    Player p(silentInto(dir.path() / "sound", 1.0));
    p.out->setLooping(true);
    p.play(mp3);
    ASSERT_TRUE(p.runUntil([&] { return p.giveamp3->Position() >= 300; }));
    // Past the end once: the position has gone round.
    ASSERT_TRUE(p.runUntil([&] { return p.giveamp3->Position() < 300; }));
    ASSERT_TRUE(p.runUntil([&] { return p.giveamp3->Position() >= 200; }));
    EXPECT_EQ(p.events, (std::vector<std::string>{"start"}));
    p.out->Stop();
    ASSERT_TRUE(p.settle());
    const Wave played = readWave((dir.path() / "sound" / "played.wav").string());
    const Wave ref = reference(dir, mp3);
    ASSERT_GT(played.frames(), ref.frames());
    // The file, then the file again from its first sample.
    const size_t n = static_cast<size_t>(ref.frames());
    EXPECT_EQ(firstDifference(played, ref), n);
    EXPECT_TRUE(std::equal(ref.samples.begin(), ref.samples.begin() + 2 * 4410, played.samples.begin() + 2 * n));
}

TEST(PlayerChain, TheMetersShowWhatPlays)
{
    TempFolder dir;
    const std::string mp3 = makeTone(dir, "tone.mp3", 1.0);
    KitFixture kit;
    TestWindow &room = kit.app.form<TestWindow>();
    ui::LevelMeter left(room, "Level", 0);
    ui::LevelMeter right(room, "Level", 1);
    Player p(silentInto(dir.path() / "sound", 1.0));
    p.connector->setLevels(&left, &right);
    p.play(mp3);
    ASSERT_TRUE(p.runUntil([&] { return p.giveamp3->Position() >= 300; }));
    EXPECT_NEAR(left.readPeak(), 0.5, 0.05);
    EXPECT_NEAR(right.readPeak(), 0.5, 0.05);
    ASSERT_TRUE(p.settle());
    EXPECT_EQ(left.readPeak(), 0.0);
}

TEST(PlayerChain, OpenRaisesTheErrorsOfTheFile)
{
    TempFolder dir;
    Player p(silentInto(dir.path() / "sound", 0));
    p.giveamp3->setFileName(dir.file("missing.mp3"));
    EXPECT_EQ(errorOf([&] { p.out->Open(); }), rt::ErrFileNotFound);
    EXPECT_EQ(errorOf([&] { p.out->Start(); }), rt::ErrFileNotFound);
    EXPECT_EQ(p.out->WaveFormatHandle(), 0);

    mp3test::writeBytes(dir.file("text.mp3"), std::string(5000, 'x'));
    p.giveamp3->setFileName(dir.file("text.mp3"));
    EXPECT_EQ(errorOf([&] { p.out->Open(); }), 321);
    mp3test::writeBytes(dir.file("empty.mp3"), "");
    p.giveamp3->setFileName(dir.file("empty.mp3"));
    EXPECT_EQ(errorOf([&] { p.out->Open(); }), 321);
    p.loop.doEvents();
    EXPECT_TRUE(p.events.empty());
    EXPECT_TRUE(p.loop.workInHand().empty());

    platform::audio::WaveOutComponent alone(p.loop, silentInto(dir.path() / "sound", 0));
    EXPECT_EQ(errorOf([&] { alone.Open(); }), rt::ErrObjectVariableNotSet);
}

TEST(PlayerChain, StopWhenNothingPlaysDoesNothing)
{
    TempFolder dir;
    Player p(silentInto(dir.path() / "sound", 0));
    p.out->Stop();
    p.out->Close();
    p.loop.doEvents();
    EXPECT_TRUE(p.events.empty());
}

TEST(PlayerChain, CloseStopsThePlay)
{
    TempFolder dir;
    const std::string mp3 = makeTone(dir, "tone.mp3", 3.0);
    Player p(silentInto(dir.path() / "sound", 1.0));
    p.play(mp3);
    ASSERT_TRUE(p.runUntil([&] { return p.events.size() == 1; }));
    const auto t0 = Clock::now();
    p.out->Close();
    ASSERT_TRUE(p.settle());
    EXPECT_LT(Clock::now() - t0, std::chrono::seconds(2));
    EXPECT_EQ(p.events, (std::vector<std::string>{"start", "stop"}));
    EXPECT_EQ(p.out->WaveFormatHandle(), 0);
}

// With no sound folder the sound goes to the card: here ALSA's null device through PortAudio,
// which takes the sound as fast as it comes (the card's path without a card).
TEST(PlayerChain, PlaysThroughTheSoundCard)
{
    const fs::path alsaConf = "/usr/share/alsa/alsa.conf";
    if (!fs::exists(alsaConf))
        GTEST_SKIP() << "no ALSA configuration";
    TempFolder dir;
    mp3test::writeBytes(dir.file("asound.conf"), "<" + alsaConf.string() + ">\npcm.!default { type null }\n");
    ::setenv("ALSA_CONFIG_PATH", dir.file("asound.conf").c_str(), 1);
    const std::string mp3 = makeTone(dir, "tone.mp3", 1.0);
    PlayerOptions card;
    Player p(card);
    p.play(mp3);
    ASSERT_TRUE(p.settle());
    EXPECT_EQ(p.events, (std::vector<std::string>{"start", "stop"}));
    EXPECT_EQ(p.giveamp3->Position(), 0);
    EXPECT_FALSE(fs::exists(dir.path() / "sound"));
    // Looping, it plays until stopped.
    p.out->setLooping(true);
    p.play(mp3);
    ASSERT_TRUE(p.runUntil([&] { return p.events.size() == 3; }));
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    p.out->Stop();
    ASSERT_TRUE(p.settle());
    EXPECT_EQ(p.events, (std::vector<std::string>{"start", "stop", "start", "stop"}));
    ::unsetenv("ALSA_CONFIG_PATH");
}

// The main window lets go of its components in the reverse of their order: the decoder first,
// the output last, with the sound still playing.
TEST(PlayerChain, ComponentsMayGoWhilePlaying)
{
    TempFolder dir;
    const std::string mp3 = makeTone(dir, "tone.mp3", 3.0);
    auto p = std::make_unique<Player>(silentInto(dir.path() / "sound", 1.0));
    p->play(mp3);
    ASSERT_TRUE(p->runUntil([&] { return p->giveamp3->Position() >= 200; }));
    p->giveamp3.reset();
    p->connector.reset();
    p->eq.reset();
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    p->ring.reset();
    const auto t0 = Clock::now();
    p->out.reset();
    EXPECT_LT(Clock::now() - t0, std::chrono::seconds(2));
    p.reset();
}

} // namespace
