// The connector's feeds of the level meters and the spectrum: full scale reads 1, silence 0, a
// 1 kHz tone peaks in the bin that holds 1 kHz; the feeds outlive the connector.
#include <cmath>
#include <memory>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

#include "KitFixture.h"
#include "platform/audio/ConnectorComponent.h"
#include "ui/LevelMeter.h"
#include "ui/SpectrumView.h"

namespace {

using platform::audio::ConnectorComponent;
using platform::audio::SoundAnalyser;

std::vector<float> tone(double frequency, double amplitude, int rate, size_t frames, double rightScale = 1.0)
{
    std::vector<float> s(frames * 2);
    for (size_t n = 0; n < frames; ++n) {
        const double v = amplitude * std::sin(2 * std::numbers::pi * frequency * static_cast<double>(n) / rate);
        s[2 * n] = static_cast<float>(v);
        s[2 * n + 1] = static_cast<float>(v * rightScale);
    }
    return s;
}

struct Views : KitFixture {
    TestWindow &window = app.form<TestWindow>();
    ui::LevelMeter left{window, "Level", 0};
    ui::LevelMeter right{window, "Level", 1};
    ui::SpectrumView spectrum{window, "Spectrumx1"};
};

TEST(ConnectorComponent, FullScaleReadsOneAndSilenceZero)
{
    Views v;
    ConnectorComponent c;
    c.setLevels(&v.left, &v.right);
    ASSERT_TRUE(v.left.hasFeed());
    ASSERT_TRUE(v.right.hasFeed());
    c.analyser()->setPlaying(true);

    // The loudest a 16-bit file holds.
    const std::vector<float> loud = tone(1000, 32767.0 / 32768.0, 44100, 4410);
    c.analyser()->feed(loud.data(), 4410);
    EXPECT_NEAR(v.left.readPeak(), 1.0, 1e-3);
    EXPECT_NEAR(v.right.readPeak(), 1.0, 1e-3);
    // The peak is since the last read.
    EXPECT_EQ(v.left.readPeak(), 0.0);

    const std::vector<float> silence(4410 * 2, 0.0f);
    c.analyser()->feed(silence.data(), 4410);
    EXPECT_EQ(v.left.readPeak(), 0.0);
    EXPECT_EQ(v.right.readPeak(), 0.0);
}

TEST(ConnectorComponent, LeftAndRightAreTheirOwn)
{
    Views v;
    ConnectorComponent c;
    c.setLevels(&v.left, &v.right);
    c.analyser()->setPlaying(true);
    const std::vector<float> s = tone(440, 0.5, 44100, 4410, 0.25);
    c.analyser()->feed(s.data(), 4410);
    EXPECT_NEAR(v.left.readPeak(), 0.5, 1e-3);
    EXPECT_NEAR(v.right.readPeak(), 0.125, 1e-3);
}

TEST(ConnectorComponent, AThousandHertzTonePeaksInItsBin)
{
    for (int rate : {44100, 48000}) {
        Views v;
        ConnectorComponent c;
        c.setSpectrum(&v.spectrum);
        ASSERT_TRUE(v.spectrum.hasFeed());
        c.analyser()->setPlaying(true);
        const std::vector<float> s = tone(1000, 0.5, rate, 2048);
        c.analyser()->feed(s.data(), 2048);
        const std::vector<float> bins = v.spectrum.readBins();
        ASSERT_EQ(bins.size(), static_cast<size_t>(SoundAnalyser::Bins));
        const size_t peak = static_cast<size_t>(std::max_element(bins.begin(), bins.end()) - bins.begin());
        const double binWidth = static_cast<double>(rate) / SoundAnalyser::FftPoints;
        EXPECT_EQ(peak, static_cast<size_t>(std::lround(1000 / binWidth))) << rate;
        // Half scale is 6 dB down on a 60 dB scale.
        EXPECT_NEAR(bins[peak], 1.0 - 6.02 / 60, 0.03);
        // Far from the tone, nothing.
        EXPECT_LT(bins[100], 0.05);
    }
}

TEST(ConnectorComponent, NothingPlayingShowsNothing)
{
    Views v;
    ConnectorComponent c;
    c.setLevels(&v.left, &v.right);
    c.setSpectrum(&v.spectrum);
    const std::vector<float> s = tone(1000, 0.5, 44100, 2048);
    c.analyser()->feed(s.data(), 2048);
    EXPECT_EQ(v.left.readPeak(), 0.0);
    EXPECT_TRUE(v.spectrum.readBins().empty());
}

TEST(ConnectorComponent, TheFeedsOutliveTheConnector)
{
    Views v;
    {
        ConnectorComponent c;
        c.setLevels(&v.left, &v.right);
        c.setSpectrum(&v.spectrum);
    }
    EXPECT_EQ(v.left.readPeak(), 0.0);
    EXPECT_TRUE(v.spectrum.readBins().empty());
}

TEST(ConnectorComponent, ControlsOfAnotherKindArePassedOver)
{
    Views v;
    ConnectorComponent c;
    c.setLevels(&v.spectrum, nullptr);
    c.setSpectrum(&v.left);
    EXPECT_FALSE(v.spectrum.hasFeed());
    EXPECT_FALSE(v.left.hasFeed());
}

} // namespace
