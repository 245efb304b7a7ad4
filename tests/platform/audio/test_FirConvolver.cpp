// The equaliser's fast convolution: the same output as the filter run sample by sample, an exact
// delay when the filter is flat, and a new gain faded in without a step.
#include <atomic>
#include <cmath>
#include <numbers>
#include <random>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "platform/audio/EqualizerDesign.h"
#include "platform/audio/EqualizerEngine.h"
#include "platform/audio/FirConvolver.h"

namespace {

using platform::audio::EqBand;
using platform::audio::EqualizerEngine;
using platform::audio::FirConvolver;

const double Points[16] = {0, 500, 1500, 2500, 3500, 4500, 5500, 6500, 7500, 8500, 9500, 10500, 11500, 12500, 13500, 14500};

void addBands(EqualizerEngine &e)
{
    for (int i = 1; i <= 15; ++i)
        e.addBand(Points[i - 1], Points[i], 0.0);
}

std::vector<float> noise(size_t frames, unsigned seed)
{
    std::mt19937 rng(seed);
    std::uniform_real_distribution<float> v(-0.5f, 0.5f);
    std::vector<float> s(frames * 2);
    for (float &x : s)
        x = v(rng);
    return s;
}

// Runs interleaved stereo through in uneven pieces, some longer than a block.
void runInPieces(FirConvolver &c, std::vector<float> &s)
{
    const size_t sizes[] = {1, 17, 1012, 4096, 333, 9000, 64};
    size_t at = 0;
    for (size_t i = 0; at < s.size() / 2; ++i) {
        const size_t n = std::min(sizes[i % std::size(sizes)], s.size() / 2 - at);
        c.process(s.data() + at * 2, n);
        at += n;
    }
}

TEST(FirConvolver, MatchesTheFilterRunSampleBySample)
{
    std::vector<EqBand> bands;
    for (int i = 0; i < 15; ++i)
        bands.push_back({Points[i], Points[i + 1], (i % 3 - 1) * 9.0});
    const int taps = platform::audio::equalizerTaps(44100);
    const std::vector<float> h = platform::audio::designEqualizer(bands, 44100, taps);
    FirConvolver c(taps, 2, 1012, 0, h);
    const std::vector<float> in = noise(30000, 1);
    std::vector<float> out = in;
    runInPieces(c, out);

    for (size_t n = 0; n < in.size() / 2; n += 7) {
        for (int ch = 0; ch < 2; ++ch) {
            double y = 0;
            for (size_t k = 0; k < h.size() && k <= n; ++k)
                y += h[k] * in[(n - k) * 2 + ch];
            ASSERT_NEAR(out[n * 2 + ch], y, 2e-4) << "frame " << n << " channel " << ch;
        }
    }
}

TEST(FirConvolver, AFlatFilterIsAnExactDelay)
{
    const int taps = platform::audio::equalizerTaps(48000);
    FirConvolver c(taps, 2, 1024);
    const std::vector<float> in = noise(20000, 2);
    std::vector<float> out = in;
    runInPieces(c, out);
    const size_t d = static_cast<size_t>(c.delay());
    for (size_t n = 0; n < in.size() / 2; ++n) {
        for (int ch = 0; ch < 2; ++ch)
            ASSERT_EQ(out[n * 2 + ch], n < d ? 0.0f : in[(n - d) * 2 + ch]) << n;
    }
}

TEST(FirConvolver, ResetForgetsThePast)
{
    const int taps = platform::audio::equalizerTaps(44100);
    FirConvolver c(taps, 2, 1024);
    std::vector<float> first = noise(5000, 3);
    c.process(first.data(), 5000);
    c.reset();
    std::vector<float> silence(4000 * 2, 0.0f);
    c.process(silence.data(), 4000);
    for (float v : silence)
        ASSERT_EQ(v, 0.0f);
}

// A 1 kHz sine through the equaliser while band 1 (500-1500 Hz) jumps between 0 and +12 dB:
// from sample to sample the output never moves more than the louder sine can.
TEST(FirConvolver, AGainChangeFadesInWithoutAStep)
{
    const int rate = 44100;
    EqualizerEngine engine;
    addBands(engine);
    FirConvolver *c = engine.prepare(rate, 1012);
    ASSERT_NE(c, nullptr);

    const double amplitude = 0.2;
    const double loud = amplitude * std::pow(10.0, 12.0 / 20);
    const double maxSlope = loud * 2 * std::numbers::pi * 1000 / rate;
    const size_t period = 1012;
    const size_t periods = 400;
    std::vector<float> out;
    for (size_t p = 0; p < periods; ++p) {
        // Changes at uneven places, so some fall far from a zero crossing.
        if (p == 50 || p == 123 || p == 201 || p == 277 || p == 350)
            engine.setGain(1, engine.gain(1) == 0.0 ? 12.0 : 0.0);
        std::vector<float> block(period * 2);
        for (size_t j = 0; j < period; ++j) {
            const double t = static_cast<double>(p * period + j) / rate;
            block[2 * j] = block[2 * j + 1] = static_cast<float>(amplitude * std::sin(2 * std::numbers::pi * 1000 * t));
        }
        c->process(block.data(), period);
        out.insert(out.end(), block.begin(), block.end());
    }
    double worst = 0;
    for (size_t n = 1; n < out.size() / 2; ++n)
        worst = std::max(worst, static_cast<double>(std::fabs(out[2 * n] - out[2 * (n - 1)])));
    EXPECT_LT(worst, maxSlope * 1.05);
    // And the gain did arrive: the loud stretch is 12 dB up.
    double peak = 0;
    for (size_t n = 230 * period; n < 270 * period; ++n)
        peak = std::max(peak, static_cast<double>(std::fabs(out[2 * n])));
    EXPECT_NEAR(20 * std::log10(peak / amplitude), 12.0, 0.2);
}

TEST(FirConvolver, GainsChangedWhileTheAudioRunsStayFinite)
{
    EqualizerEngine engine;
    addBands(engine);
    FirConvolver *c = engine.prepare(44100, 512);
    std::atomic<bool> stop{false};
    std::atomic<bool> bad{false};
    std::thread audio([&] {
        std::vector<float> block = noise(512, 4);
        while (!stop) {
            std::vector<float> b = block;
            c->process(b.data(), 512);
            for (float v : b)
                if (!std::isfinite(v) || std::fabs(v) > 8)
                    bad = true;
        }
    });
    for (int i = 0; i < 200; ++i)
        engine.setGain(i % 15, (i % 7) * 3.0 - 9.0);
    stop = true;
    audio.join();
    EXPECT_FALSE(bad);
}

} // namespace
