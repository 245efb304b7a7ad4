// The equaliser's filter against its band table: every band's gain held within 0.2 dB from
// 100 Hz inside its edges, 0 dB above the last band, at the two rates MP3s mostly have.
#include <cmath>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "platform/audio/EqualizerDesign.h"

namespace {

using platform::audio::EqBand;
using platform::audio::designEqualizer;
using platform::audio::equalizerTaps;
using platform::audio::responseDb;

const double Points[16] = {0, 500, 1500, 2500, 3500, 4500, 5500, 6500, 7500, 8500, 9500, 10500, 11500, 12500, 13500, 14500};

std::vector<EqBand> table(const std::vector<double> &gains)
{
    std::vector<EqBand> bands;
    for (int i = 0; i < 15; ++i)
        bands.push_back({Points[i], Points[i + 1], gains[static_cast<size_t>(i)]});
    return bands;
}

// The largest error over every band (100 Hz inside its edges, every 10 Hz) and above the last.
double worstError(const std::vector<EqBand> &bands, int rate)
{
    const std::vector<float> h = designEqualizer(bands, rate, equalizerTaps(rate));
    double worst = 0;
    for (int i = 0; i < 15; ++i) {
        const double from = i == 0 ? 0 : Points[i] + 100;
        for (double f = from; f <= Points[i + 1] - 100 + 1e-9; f += 10)
            worst = std::max(worst, std::fabs(responseDb(h, f, rate) - bands[static_cast<size_t>(i)].gainDb));
    }
    for (double f = 14600; f < rate / 2.0 - 100; f += 25)
        worst = std::max(worst, std::fabs(responseDb(h, f, rate)));
    return worst;
}

class EqualizerDesign : public ::testing::TestWithParam<int> {};

TEST_P(EqualizerDesign, AlternatingExtremeGainsHoldEveryBand)
{
    const int rate = GetParam();
    std::vector<double> up;
    std::vector<double> down;
    for (int i = 0; i < 15; ++i) {
        up.push_back(i % 2 ? 12.0 : -12.0);
        down.push_back(i % 2 ? -12.0 : 12.0);
    }
    EXPECT_LT(worstError(table(up), rate), 0.2);
    EXPECT_LT(worstError(table(down), rate), 0.2);
}

TEST_P(EqualizerDesign, RandomGainsHoldEveryBand)
{
    const int rate = GetParam();
    std::mt19937 rng(static_cast<unsigned>(rate));
    std::uniform_real_distribution<double> gain(-12, 12);
    for (int round = 0; round < 5; ++round) {
        std::vector<double> g;
        for (int i = 0; i < 15; ++i)
            g.push_back(gain(rng));
        EXPECT_LT(worstError(table(g), rate), 0.2) << "round " << round;
    }
}

TEST_P(EqualizerDesign, OneBandUpOnlyMovesThatBand)
{
    const int rate = GetParam();
    for (int band = 0; band < 15; ++band) {
        std::vector<double> g(15, 0.0);
        g[static_cast<size_t>(band)] = 12.0;
        EXPECT_LT(worstError(table(g), rate), 0.2) << "band " << band;
    }
}

INSTANTIATE_TEST_SUITE_P(Rates, EqualizerDesign, ::testing::Values(44100, 48000));

TEST(EqualizerDesignFlat, AllZeroIsAPureDelay)
{
    const int taps = equalizerTaps(44100);
    const std::vector<float> h = designEqualizer(table(std::vector<double>(15, 0.0)), 44100, taps);
    ASSERT_EQ(h.size(), static_cast<size_t>(taps));
    for (int k = 0; k < taps; ++k)
        EXPECT_EQ(h[static_cast<size_t>(k)], k == (taps - 1) / 2 ? 1.0f : 0.0f);
}

TEST(EqualizerDesignFlat, TapsAreOddAndGrowWithTheRate)
{
    EXPECT_EQ(equalizerTaps(44100) % 2, 1);
    EXPECT_EQ(equalizerTaps(48000) % 2, 1);
    EXPECT_GT(equalizerTaps(48000), equalizerTaps(44100));
    EXPECT_LT(equalizerTaps(22050), equalizerTaps(44100));
}

TEST(EqualizerDesignFlat, BandsAboveHalfTheRateAreCut)
{
    // An 8 kHz file: only the bands below 4 kHz exist for it.
    std::vector<double> g(15, 6.0);
    const std::vector<EqBand> bands = table(g);
    const std::vector<float> h = designEqualizer(bands, 8000, equalizerTaps(8000));
    EXPECT_NEAR(responseDb(h, 1000, 8000), 6.0, 0.2);
    EXPECT_NEAR(responseDb(h, 3000, 8000), 6.0, 0.2);
}

TEST(EqualizerDesignFlat, NonsenseGainsStayInRange)
{
    std::vector<double> g(15, 0.0);
    g[3] = std::nan("");
    g[4] = 1e9;
    g[5] = -1e9;
    const std::vector<float> h = designEqualizer(table(g), 44100, equalizerTaps(44100));
    for (float v : h)
        ASSERT_TRUE(std::isfinite(v));
    EXPECT_NEAR(responseDb(h, 3000, 44100), 0.0, 0.2);  // NaN: as 0 dB
    EXPECT_NEAR(responseDb(h, 4000, 44100), 24.0, 0.3); // held to +24
}

} // namespace
