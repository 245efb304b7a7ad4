// The batch converter's rate conversion against sox's own: CD audio to 22050 Hz, as
// `sox in.wav -r 22050 out.wav` makes it, on tones and sweeps across the whole pass band.
#include <cmath>
#include <iostream>
#include <string>
#include <vector>

#include <sndfile.h>

#include <gtest/gtest.h>

#include "ConvertTestSupport.h"
#include "TempFolder.h"

namespace {

using converttest::BatchChain;
using converttest::Events;
using mediatest::quoted;
using mediatest::runTool;
using platform::WaveFormat;

// Four seconds: a rising sweep left, a 1 kHz tone under a falling sweep right, 50 Hz to 9 kHz.
bool writeSweepWave(const std::string &path)
{
    constexpr int rate = 44100;
    constexpr int64_t frames = 4 * rate;
    constexpr double tau = 6.283185307179586;
    constexpr double low = 50;
    constexpr double high = 9000;
    constexpr double seconds = static_cast<double>(frames) / rate;
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = 2;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE *f = sf_open(path.c_str(), SFM_WRITE, &info);
    if (!f)
        return false;
    // The phase of a linear sweep from a to b over the whole file.
    auto sweep = [&](double t, double a, double b) { return tau * (a * t + (b - a) * t * t / (2 * seconds)); };
    std::vector<short> samples(static_cast<size_t>(frames) * 2);
    for (int64_t i = 0; i < frames; ++i) {
        const double t = static_cast<double>(i) / rate;
        const double left = 0.45 * std::sin(sweep(t, low, high));
        const double right = 0.25 * std::sin(tau * 1000 * t) + 0.25 * std::sin(sweep(t, high, low));
        samples[2 * i] = static_cast<short>(std::lrint(left * 32767));
        samples[2 * i + 1] = static_cast<short>(std::lrint(right * 32767));
    }
    const bool ok = sf_writef_short(f, samples.data(), frames) == frames;
    return sf_close(f) == 0 && ok;
}

void expectLikeSox(const std::string &source, const mp3test::TempFolder &dir)
{
    const std::string soxed = dir.file("sox.wav");
    runTool("sox " + quoted(source) + " -r 22050 " + quoted(soxed));
    BatchChain chain;
    chain.convert(source, dir.file("ours.wav"), WaveFormat{1, 2, 22050, 16});
    EXPECT_EQ(chain.events, (Events{"started", "buffer", "stopped", "closed"}));

    const converttest::FloatWave in = converttest::readFloatWave(source);
    const converttest::FloatWave theirs = converttest::readFloatWave(soxed);
    const converttest::FloatWave ours = converttest::readFloatWave(dir.file("ours.wav"));
    ASSERT_TRUE(in.ok && theirs.ok && ours.ok);
    EXPECT_EQ(ours.rate, 22050);
    EXPECT_EQ(ours.channels, 2);
    EXPECT_EQ(theirs.rate, 22050);
    // Both take the resampler's delay off: the lengths agree and the sound lines up unshifted.
    EXPECT_EQ(theirs.frames(), in.frames() / 2);
    EXPECT_NEAR(static_cast<double>(ours.frames()), static_cast<double>(theirs.frames()), 1.0);
    const auto [lag, db] = converttest::bestMatch(theirs, ours, 16);
    std::cout << "[ sox match ] " << db << " dB residual below the signal, lag " << lag << "\n";
    ::testing::Test::RecordProperty("sox_match_db", std::to_string(db));
    EXPECT_EQ(lag, 0);
    EXPECT_GE(db, 60.0);
}

TEST(ResampleLikeSox, TonesAt22050)
{
    mp3test::TempFolder dir;
    ASSERT_TRUE(converttest::writeTestWave(dir.file("in.wav"), 44100, 3.0));
    expectLikeSox(dir.file("in.wav"), dir);
}

TEST(ResampleLikeSox, SweepsAt22050)
{
    mp3test::TempFolder dir;
    ASSERT_TRUE(writeSweepWave(dir.file("in.wav")));
    expectLikeSox(dir.file("in.wav"), dir);
}

} // namespace
