// The conversion on its own: channel mapping, sample formats, rate change.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

#include "platform/media/PcmConverter.h"

namespace {

using platform::WaveFormat;
using platform::media::PcmConverter;

std::vector<std::byte> bytesOf(const std::vector<int16_t> &samples)
{
    std::vector<std::byte> b(samples.size() * 2);
    std::memcpy(b.data(), samples.data(), b.size());
    return b;
}

std::vector<int16_t> samplesOf(const std::vector<std::byte> &bytes)
{
    std::vector<int16_t> s(bytes.size() / 2);
    std::memcpy(s.data(), bytes.data(), s.size() * 2);
    return s;
}

std::vector<int16_t> sine(double hz, int rate, size_t frames, int channels = 1, double amplitude = 0.5)
{
    std::vector<int16_t> s(frames * channels);
    for (size_t f = 0; f < frames; ++f) {
        const double v = amplitude * std::sin(2 * std::numbers::pi * hz * static_cast<double>(f) / rate);
        for (int c = 0; c < channels; ++c)
            s[f * channels + c] = static_cast<int16_t>(std::lrint(v * 32767));
    }
    return s;
}

// Everything through the converter in chunks of `chunk` bytes, then the flush.
std::vector<int16_t> run(PcmConverter &conv, const std::vector<int16_t> &in, size_t chunk)
{
    const std::vector<std::byte> bytes = bytesOf(in);
    std::vector<std::byte> out;
    for (size_t at = 0; at < bytes.size(); at += chunk) {
        const size_t n = std::min(chunk, bytes.size() - at);
        const auto &part = conv.convert(bytes.data() + at, n);
        out.insert(out.end(), part.begin(), part.end());
    }
    const auto &tail = conv.flush();
    out.insert(out.end(), tail.begin(), tail.end());
    return samplesOf(out);
}

// The frequency of a mono tone from its upward zero crossings.
double frequencyOf(const std::vector<int16_t> &s, int rate, size_t from, size_t to)
{
    double first = -1;
    double last = -1;
    int crossings = 0;
    for (size_t i = from + 1; i < to; ++i) {
        if (s[i - 1] < 0 && s[i] >= 0) {
            const double at = static_cast<double>(i - 1) + static_cast<double>(-s[i - 1]) / (s[i] - s[i - 1]);
            if (first < 0)
                first = at;
            else
                ++crossings;
            last = at;
        }
    }
    return crossings > 0 ? crossings * rate / (last - first) : 0;
}

TEST(PcmConverter, MonoToStereoCopiesTheChannel)
{
    PcmConverter conv(WaveFormat{1, 1, 44100, 16}, WaveFormat{1, 2, 44100, 16});
    const std::vector<int16_t> in = {0, 1, -1, 32767, -32768, 1234};
    const auto out = run(conv, in, 3); // odd chunks: part frames carried over
    ASSERT_EQ(out.size(), in.size() * 2);
    for (size_t i = 0; i < in.size(); ++i) {
        EXPECT_EQ(out[2 * i], in[i]);
        EXPECT_EQ(out[2 * i + 1], in[i]);
    }
}

TEST(PcmConverter, StereoToMonoAverages)
{
    PcmConverter conv(WaveFormat{1, 2, 44100, 16}, WaveFormat{1, 1, 44100, 16});
    const std::vector<int16_t> in = {100, 300, -32768, -32768, 32767, 32767, 32767, -32768, 1, 2, -5, 6};
    const auto out = run(conv, in, 7);
    ASSERT_EQ(out.size(), in.size() / 2);
    for (size_t i = 0; i < out.size(); ++i) {
        const double mean = (in[2 * i] + in[2 * i + 1]) / 2.0;
        EXPECT_LE(std::abs(out[i] - mean), 0.5) << i;
    }
}

TEST(PcmConverter, SameFormatPassesThrough)
{
    PcmConverter conv(WaveFormat::cdAudio(), WaveFormat::cdAudio());
    EXPECT_TRUE(conv.passThrough());
    const auto in = sine(440, 44100, 1000, 2);
    EXPECT_EQ(run(conv, in, 4096), in);
}

TEST(PcmConverter, SampleFormatsRoundTrip)
{
    const auto in = sine(440, 44100, 2000, 2, 0.9);
    for (const WaveFormat mid : {WaveFormat{1, 2, 44100, 24}, WaveFormat{1, 2, 44100, 32}, WaveFormat{3, 2, 44100, 32}}) {
        PcmConverter there(WaveFormat::cdAudio(), mid);
        const std::vector<std::byte> bytes = bytesOf(in);
        std::vector<std::byte> wide = there.convert(bytes.data(), bytes.size());
        EXPECT_EQ(wide.size(), in.size() * static_cast<size_t>(mid.bitsPerSample / 8));
        PcmConverter back(mid, WaveFormat::cdAudio());
        EXPECT_EQ(samplesOf(back.convert(wide.data(), wide.size())), in) << mid.bitsPerSample;
    }
    // Eight bits keep the top eight.
    PcmConverter narrow(WaveFormat::cdAudio(), WaveFormat{1, 2, 44100, 8});
    const std::vector<std::byte> bytes = bytesOf(in);
    const std::vector<std::byte> small = narrow.convert(bytes.data(), bytes.size());
    ASSERT_EQ(small.size(), in.size());
    for (size_t i = 0; i < in.size(); ++i)
        EXPECT_NEAR((static_cast<int>(small[i]) - 128) * 256, in[i], 128) << i;
}

TEST(PcmConverter, DeepSamplesKeepEveryBit)
{
    // 32-bit samples whose lowest bits are all set: a single-precision path would lose them.
    const std::vector<int32_t> in = {2147483647, -2147483647 - 1, 0x12345679, -0x0ABCDEF1, 1, -1, 0x7FFFFF01};
    std::vector<std::byte> bytes(in.size() * 4);
    std::memcpy(bytes.data(), in.data(), bytes.size());
    PcmConverter spread(WaveFormat{1, 1, 44100, 32}, WaveFormat{1, 2, 44100, 32});
    const std::vector<std::byte> out = spread.convert(bytes.data(), bytes.size());
    ASSERT_EQ(out.size(), bytes.size() * 2);
    for (size_t i = 0; i < in.size(); ++i) {
        int32_t left;
        int32_t right;
        std::memcpy(&left, out.data() + 8 * i, 4);
        std::memcpy(&right, out.data() + 8 * i + 4, 4);
        EXPECT_EQ(left, in[i]);
        EXPECT_EQ(right, in[i]);
    }

    // 64-bit float to 32-bit: the nearest float, as a cast makes it.
    const std::vector<double> fine = {0.1, -0.333333333333, 1e-9, 0.999999999};
    std::vector<std::byte> doubles(fine.size() * 8);
    std::memcpy(doubles.data(), fine.data(), doubles.size());
    PcmConverter narrow(WaveFormat{3, 1, 44100, 64}, WaveFormat{3, 1, 44100, 32});
    const std::vector<std::byte> floats = narrow.convert(doubles.data(), doubles.size());
    ASSERT_EQ(floats.size(), fine.size() * 4);
    for (size_t i = 0; i < fine.size(); ++i) {
        float f;
        std::memcpy(&f, floats.data() + 4 * i, 4);
        EXPECT_EQ(f, static_cast<float>(fine[i]));
    }
}

TEST(PcmConverter, DoublingTheRateDoublesTheLengthAndKeepsThePitch)
{
    constexpr size_t Frames = 22050 * 2;
    PcmConverter conv(WaveFormat{1, 1, 22050, 16}, WaveFormat{1, 1, 44100, 16});
    const auto out = run(conv, sine(1000, 22050, Frames), 32768);
    EXPECT_NEAR(static_cast<double>(out.size()), 2.0 * Frames, 2);
    EXPECT_NEAR(frequencyOf(out, 44100, 1000, out.size() - 1000), 1000.0, 0.5);
    // The level stays: half scale in, half scale out.
    int peak = 0;
    for (size_t i = 1000; i < out.size() - 1000; ++i)
        peak = std::max(peak, std::abs(static_cast<int>(out[i])));
    EXPECT_NEAR(peak, 16384, 200);
}

TEST(PcmConverter, OtherRatesKeepThePitch)
{
    struct Case {
        int from;
        int to;
        int channelsIn;
        int channelsOut;
    };
    for (const Case c : {Case{44100, 48000, 2, 2}, Case{48000, 22050, 2, 1}, Case{32000, 44100, 1, 2},
                         Case{44100, 8000, 1, 1}}) {
        const size_t frames = static_cast<size_t>(c.from) * 3 / 2;
        PcmConverter conv(WaveFormat{1, c.channelsIn, c.from, 16}, WaveFormat{1, c.channelsOut, c.to, 16});
        const auto out = run(conv, sine(1000, c.from, frames, c.channelsIn), 10000);
        const double expected = static_cast<double>(frames) * c.to / c.from;
        ASSERT_NEAR(static_cast<double>(out.size() / c.channelsOut), expected, 2) << c.from << "->" << c.to;
        std::vector<int16_t> first(out.size() / c.channelsOut);
        for (size_t f = 0; f < first.size(); ++f)
            first[f] = out[f * c.channelsOut];
        EXPECT_NEAR(frequencyOf(first, c.to, 500, first.size() - 500), 1000.0, 0.5) << c.from << "->" << c.to;
    }
}

TEST(PcmConverter, ChunkingDoesNotChangeTheResult)
{
    const auto in = sine(1000, 22050, 20000, 1);
    PcmConverter a(WaveFormat{1, 1, 22050, 16}, WaveFormat::cdAudio());
    PcmConverter b(WaveFormat{1, 1, 22050, 16}, WaveFormat::cdAudio());
    EXPECT_EQ(run(a, in, 40000), run(b, in, 333));
}

TEST(PcmConverter, RefusesWhatItCantHandle)
{
    EXPECT_THROW(PcmConverter(WaveFormat{6, 1, 8000, 8}, WaveFormat::cdAudio()), std::runtime_error);
    EXPECT_THROW(PcmConverter(WaveFormat::cdAudio(), WaveFormat{1, 0, 44100, 16}), std::runtime_error);
    EXPECT_THROW(PcmConverter(WaveFormat::cdAudio(), WaveFormat{1, 2, 0, 16}), std::runtime_error);
    EXPECT_THROW(PcmConverter(WaveFormat::cdAudio(), WaveFormat{1, 2, 44100, 12}), std::runtime_error);
}

} // namespace
