#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "ui/BarDecay.h"
#include "ui/SpectrumBands.h"

namespace {

using ui::BarDecay;

BarDecay spectrumDesign()
{
    return BarDecay({7, 7, 7});
}

TEST(BarDecay, ALouderReadingShowsAtOnce)
{
    BarDecay d = spectrumDesign();
    d.advance({0.2, 0.9}, 33);
    ASSERT_EQ(d.count(), 2);
    EXPECT_DOUBLE_EQ(d.level(0), 0.2);
    EXPECT_DOUBLE_EQ(d.level(1), 0.9);
    EXPECT_DOUBLE_EQ(d.peak(1), 0.9);
}

TEST(BarDecay, SilentOnlyWhenEveryBarAndMarkIsDown)
{
    BarDecay d = spectrumDesign();
    EXPECT_TRUE(d.silent()); // no bars yet
    d.advance({0.0, 0.0}, 33);
    EXPECT_TRUE(d.silent());
    d.advance({0.0, 0.5}, 33);
    EXPECT_FALSE(d.silent());
    // The bar falls in 0.35 s, the peak mark holds 0.7 s and then falls 7 % a tenth: not silent
    // until the mark is down too.
    d.advance({0.0, 0.0}, 400);
    EXPECT_DOUBLE_EQ(d.level(1), 0.0);
    EXPECT_FALSE(d.silent());
    for (int i = 0; i < 100 && !d.silent(); ++i)
        d.advance({0.0, 0.0}, 100);
    EXPECT_TRUE(d.silent());
    EXPECT_DOUBLE_EQ(d.peak(1), 0.0);
    d.advance({0.0, 0.5}, 33);
    d.reset();
    EXPECT_TRUE(d.silent());
}

TEST(BarDecay, AQuieterReadingIsApproachedAtTheDecaySpeed)
{
    // Decay 7: the whole scale in 0.7 s, so 0.1 of it in 70 ms.
    BarDecay d = spectrumDesign();
    d.advance({1.0}, 0);
    d.advance({0.0}, 70);
    EXPECT_NEAR(d.level(0), 0.9, 1e-9);
    d.advance({0.0}, 350);
    EXPECT_NEAR(d.level(0), 0.4, 1e-9);
    // It never falls below the reading.
    d.advance({0.3}, 700);
    EXPECT_NEAR(d.level(0), 0.3, 1e-9);
    d.advance({0.0}, 10000);
    EXPECT_DOUBLE_EQ(d.level(0), 0.0);
}

TEST(BarDecay, TheLevelMetersFallSlower)
{
    BarDecay level({9, 7, 7});
    level.advance({1.0}, 0);
    level.advance({0.0}, 90);
    EXPECT_NEAR(level.level(0), 0.9, 1e-9);
}

TEST(BarDecay, NoDecayFollowsTheReading)
{
    BarDecay d({0, 7, 7});
    d.advance({0.8}, 10);
    d.advance({0.1}, 10);
    EXPECT_DOUBLE_EQ(d.level(0), 0.1);
}

TEST(BarDecay, APeakHoldsThenFallsAtItsSpeed)
{
    // PeakDelay 7: held 0.7 s; PeakSpeed 7: then 7 % of the scale a tenth of a second.
    BarDecay d = spectrumDesign();
    d.advance({0.8}, 0);
    d.advance({0.0}, 300);
    EXPECT_DOUBLE_EQ(d.peak(0), 0.8);
    d.advance({0.0}, 400);
    EXPECT_DOUBLE_EQ(d.peak(0), 0.8);
    // 100 ms past the hold.
    d.advance({0.0}, 100);
    EXPECT_NEAR(d.peak(0), 0.73, 1e-9);
    // The rest of a hold and the fall share one step.
    BarDecay e = spectrumDesign();
    e.advance({0.8}, 0);
    e.advance({0.0}, 900);
    EXPECT_NEAR(e.peak(0), 0.8 - 0.14, 1e-9);
}

TEST(BarDecay, APeakRidesOnItsBarAndALouderOneRestartsTheHold)
{
    BarDecay d({20, 7, 70});
    d.advance({1.0}, 0);
    // The bar falls slowly (2 s a scale); the fast peak lands on it and stays on top.
    d.advance({0.0}, 1000);
    EXPECT_NEAR(d.level(0), 0.5, 1e-9);
    EXPECT_NEAR(d.peak(0), 0.5, 1e-9);
    d.advance({0.9}, 10);
    EXPECT_DOUBLE_EQ(d.peak(0), 0.9);
    d.advance({0.0}, 600);
    EXPECT_DOUBLE_EQ(d.peak(0), 0.9);
}

TEST(BarDecay, BadReadingsAreTakenAsTheNearestEndOrSilence)
{
    BarDecay d = spectrumDesign();
    d.advance({2.5, -1.0, std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}, -50);
    EXPECT_DOUBLE_EQ(d.level(0), 1.0);
    EXPECT_DOUBLE_EQ(d.level(1), 0.0);
    EXPECT_DOUBLE_EQ(d.level(2), 0.0);
    EXPECT_DOUBLE_EQ(d.level(3), 1.0);
    EXPECT_DOUBLE_EQ(d.level(9), 0.0);
    EXPECT_DOUBLE_EQ(d.peak(-1), 0.0);
}

TEST(BarDecay, ANewBarCountKeepsTheBarsThatStay)
{
    BarDecay d = spectrumDesign();
    d.advance({0.5, 0.6}, 0);
    d.advance({0.5, 0.6, 0.0}, 0);
    ASSERT_EQ(d.count(), 3);
    EXPECT_DOUBLE_EQ(d.level(1), 0.6);
    EXPECT_DOUBLE_EQ(d.level(2), 0.0);
    d.advance({0.5}, 0);
    EXPECT_EQ(d.count(), 1);
    d.reset();
    EXPECT_DOUBLE_EQ(d.level(0), 0.0);
    EXPECT_DOUBLE_EQ(d.peak(0), 0.0);
}

TEST(SpectrumBands, TheLowestQuarterOneBinABar)
{
    // 129 bins: 0 Hz and 128 tones; frequency scale 4 shows the lowest 32.
    std::vector<float> bins(129, 0.0f);
    bins[1] = 0.25f;
    bins[32] = 0.5f;
    bins[33] = 1.0f; // above the shown part
    const auto bars = ui::spectrumBars(bins, 4, 100);
    ASSERT_EQ(bars.size(), 32u);
    EXPECT_DOUBLE_EQ(bars[0], 0.25);
    EXPECT_DOUBLE_EQ(bars[31], 0.5);
    for (int i = 1; i < 31; ++i)
        EXPECT_DOUBLE_EQ(bars[i], 0.0) << i;
}

TEST(SpectrumBands, NarrowRoomJoinsBinsAtTheirLoudest)
{
    std::vector<float> bins(129, 0.0f);
    bins[5] = 0.7f;
    bins[6] = 0.2f;
    const auto bars = ui::spectrumBars(bins, 4, 8);
    ASSERT_EQ(bars.size(), 8u);
    // Four bins a bar: tones 1-4, 5-8, ...
    EXPECT_DOUBLE_EQ(bars[0], 0.0);
    EXPECT_NEAR(bars[1], 0.7, 1e-6);
}

TEST(SpectrumBands, OddInputGivesNoBarsOrClampedBars)
{
    EXPECT_TRUE(ui::spectrumBars({}, 4, 10).empty());
    EXPECT_TRUE(ui::spectrumBars({0.5f}, 4, 10).empty());
    EXPECT_TRUE(ui::spectrumBars({0.0f, 0.5f}, 4, 0).empty());
    const auto bars = ui::spectrumBars({0.0f, 3.0f, std::nanf(""), -1.0f}, 0, 10);
    ASSERT_EQ(bars.size(), 3u);
    EXPECT_DOUBLE_EQ(bars[0], 1.0);
    EXPECT_DOUBLE_EQ(bars[1], 0.0);
    EXPECT_DOUBLE_EQ(bars[2], 0.0);
}

TEST(SpectrumBands, RoomCountsBarsOfOnePixelAndTheirSpaces)
{
    EXPECT_EQ(ui::spectrumBarRoom(0, 4), 0);
    EXPECT_EQ(ui::spectrumBarRoom(1, 4), 1);
    EXPECT_EQ(ui::spectrumBarRoom(6, 4), 2);
    EXPECT_EQ(ui::spectrumBarRoom(10, 0), 10);
    EXPECT_EQ(ui::spectrumBarRoom(10, -3), 10);
}

} // namespace
