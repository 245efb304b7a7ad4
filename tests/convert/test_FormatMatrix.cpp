// Every format the chooser offers, made by the batch converter's chain from sources of every PCM
// depth and of float, mono and stereo, at two rates; each target is read back with soxi and held
// against sox's own conversion of the same source:
// - same rate, PCM or float target that holds the source's precision: every sample equal;
// - same rate, a shallower target: within one step of the target's depth;
// - another rate: at least 60 dB between ours and sox's (8-bit: its own noise, 30 dB);
// - the lossy encodings: their own noise, and MS ADPCM within 1 dB of sox's encoder.
#include <algorithm>
#include <cmath>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include <sndfile.h>

#include <gtest/gtest.h>

#include "ConvertTestSupport.h"
#include "TempFolder.h"
#include "platform/helper/WaveFormatText.h"
#include "platform/media/WritableWaveFormats.h"

namespace {

using converttest::BatchChain;
using converttest::Events;
using mediatest::quoted;
using mediatest::runTool;
using platform::WaveFormat;

constexpr int Pcm = 1;
constexpr int MsAdpcm = 2;
constexpr int IeeeFloat = 3;
constexpr double SourceSeconds = 0.5;

struct Source {
    int subtype;  // libsndfile's encoding of the source
    int channels;
    int rate;
};

std::string nameOf(const Source &s)
{
    std::string depth;
    switch (s.subtype) {
    case SF_FORMAT_PCM_U8: depth = "Pcm8"; break;
    case SF_FORMAT_PCM_16: depth = "Pcm16"; break;
    case SF_FORMAT_PCM_24: depth = "Pcm24"; break;
    case SF_FORMAT_PCM_32: depth = "Pcm32"; break;
    case SF_FORMAT_FLOAT: depth = "Float32"; break;
    case SF_FORMAT_DOUBLE: depth = "Float64"; break;
    }
    return depth + (s.channels == 1 ? "Mono" : "Stereo") + std::to_string(s.rate);
}

bool isFloat(const Source &s)
{
    return s.subtype == SF_FORMAT_FLOAT || s.subtype == SF_FORMAT_DOUBLE;
}

int bitsOf(const Source &s)
{
    switch (s.subtype) {
    case SF_FORMAT_PCM_U8: return 8;
    case SF_FORMAT_PCM_16: return 16;
    case SF_FORMAT_PCM_24: return 24;
    case SF_FORMAT_PCM_32: return 32;
    case SF_FORMAT_FLOAT: return 32;
    }
    return 64;
}

// A tune with detail down to the lowest bit: two tones a channel and a quiet third far below the
// 16-bit step, so that a path through 16 bits shows in a deeper target.
bool writeSource(const std::string &path, const Source &s)
{
    SF_INFO info{};
    info.samplerate = s.rate;
    info.channels = s.channels;
    info.format = SF_FORMAT_WAV | s.subtype;
    SNDFILE *f = sf_open(path.c_str(), SFM_WRITE, &info);
    if (!f)
        return false;
    const auto frames = static_cast<int64_t>(SourceSeconds * s.rate);
    std::vector<double> samples(static_cast<size_t>(frames * s.channels));
    constexpr double tau = 6.283185307179586;
    for (int64_t i = 0; i < frames; ++i) {
        const double t = static_cast<double>(i) / s.rate;
        const double whisper = 3e-6 * std::sin(tau * 3100 * t);
        samples[static_cast<size_t>(i * s.channels)] =
            0.35 * std::sin(tau * 440 * t) + 0.15 * std::sin(tau * 2500 * t) + whisper;
        if (s.channels == 2)
            samples[static_cast<size_t>(i * 2 + 1)] =
                0.30 * std::sin(tau * 660 * t) + 0.20 * std::sin(tau * 1700 * t + 1.0) - whisper;
    }
    const bool ok = sf_writef_double(f, samples.data(), frames) == frames;
    return sf_close(f) == 0 && ok;
}

struct Samples {
    bool ok = false;
    int rate = 0;
    int channels = 0;
    std::vector<double> values;  // PCM as libsndfile scales it: a step of n bits is 2^(1-n)
    int64_t frames() const { return channels ? static_cast<int64_t>(values.size()) / channels : 0; }
};

Samples readSamples(const std::string &path)
{
    Samples w;
    SF_INFO info{};
    SNDFILE *f = sf_open(path.c_str(), SFM_READ, &info);
    if (!f)
        return w;
    w.rate = info.samplerate;
    w.channels = info.channels;
    w.values.resize(static_cast<size_t>(info.frames * info.channels));
    const sf_count_t got = sf_readf_double(f, w.values.data(), info.frames);
    w.values.resize(static_cast<size_t>(got * info.channels));
    sf_close(f);
    w.ok = true;
    return w;
}

// The largest difference of two sample sets, in steps of `bits`; -1 when their shapes differ.
double largestDifference(const Samples &a, const Samples &b, int bits)
{
    if (a.channels != b.channels || a.values.size() != b.values.size())
        return -1;
    double most = 0;
    for (size_t i = 0; i < a.values.size(); ++i)
        most = std::max(most, std::abs(a.values[i] - b.values[i]));
    return most * std::ldexp(1.0, bits - 1);
}

double snrDb(const Samples &reference, const Samples &test)
{
    converttest::FloatWave r;
    converttest::FloatWave t;
    r.channels = reference.channels;
    t.channels = test.channels;
    r.samples.assign(reference.values.begin(), reference.values.end());
    t.samples.assign(test.values.begin(), test.values.end());
    return converttest::signalToResidualDb(r, t);
}

std::string soxEncodingArguments(const WaveFormat &f)
{
    if (f.formatTag == IeeeFloat)
        return "-e floating-point -b 32";
    return std::string(f.bitsPerSample == 8 ? "-e unsigned-integer" : "-e signed-integer") + " -b " +
           std::to_string(f.bitsPerSample);
}

class FormatMatrix : public ::testing::TestWithParam<Source> {
protected:
    mp3test::TempFolder dir;
    std::map<std::string, Samples> references;

    // sox's conversion of the source to `arguments`, made once.
    const Samples &soxed(const std::string &source, const std::string &arguments)
    {
        auto it = references.find(arguments);
        if (it != references.end())
            return it->second;
        const std::string out = dir.file("sox-" + std::to_string(references.size()) + ".wav");
        runTool("sox -D " + quoted(source) + " " + arguments + " " + quoted(out));
        return references.emplace(arguments, readSamples(out)).first->second;
    }
};

TEST_P(FormatMatrix, EveryOfferedTargetAsSoxMakesIt)
{
    const Source source = GetParam();
    const std::string input = dir.file("source.wav");
    ASSERT_TRUE(writeSource(input, source));
    const Samples original = readSamples(input);
    ASSERT_TRUE(original.ok);
    const int64_t sourceFrames = original.frames();

    for (const WaveFormat &format : platform::media::writableWaveFormats()) {
        const std::string label = platform::waveFormatText(format);
        SCOPED_TRACE(nameOf(source) + " to " + label);
        const std::string target = dir.file("out.wav");
        BatchChain chain;
        chain.convert(input, target, format);
        ASSERT_EQ(chain.events, (Events{"started", "buffer", "stopped", "closed"}));

        const converttest::SoxInfo info = converttest::soxInfo(target);
        ASSERT_TRUE(info.ok) << "sox can't read the target";
        EXPECT_EQ(info.rate, format.sampleRate);
        EXPECT_EQ(info.channels, format.channels);
        const Samples ours = readSamples(target);
        ASSERT_TRUE(ours.ok);

        const bool sameRate = format.sampleRate == source.rate;
        const bool plain = format.formatTag == Pcm || format.formatTag == IeeeFloat;
        const std::string shape = " -r " + std::to_string(format.sampleRate) + " -c " + std::to_string(format.channels);
        if (plain) {
            const int64_t expected = sourceFrames * format.sampleRate / source.rate;
            EXPECT_NEAR(static_cast<double>(info.samples), static_cast<double>(expected), 1.0);
        }
        if (plain && sameRate) {
            const Samples &theirs = soxed(input, soxEncodingArguments(format) + shape);
            const bool floatTarget = format.formatTag == IeeeFloat;
            const int bits = floatTarget ? 24 : format.bitsPerSample;
            const bool fewerChannels = format.channels < source.channels;
            if (floatTarget && isFloat(source) && !fewerChannels && source.subtype == SF_FORMAT_FLOAT) {
                // Float to float at the same rate: the samples themselves.
                Samples expectedSamples = original;
                if (format.channels > source.channels) {
                    expectedSamples.channels = 2;
                    expectedSamples.values.clear();
                    for (double v : original.values)
                        expectedSamples.values.insert(expectedSamples.values.end(), {v, v});
                }
                EXPECT_EQ(largestDifference(ours, expectedSamples, 32), 0.0);
                continue;
            }
            const double difference = largestDifference(ours, theirs, bits);
            ASSERT_GE(difference, 0.0) << "the shapes differ";
            const bool keepsPrecision = !isFloat(source) && !fewerChannels &&
                                        (floatTarget ? bitsOf(source) <= 24 : format.bitsPerSample >= bitsOf(source));
            if (keepsPrecision)
                EXPECT_EQ(difference, 0.0) << "steps of " << bits << " bits apart from sox";
            else
                EXPECT_LE(difference, 1.0) << "steps of " << bits << " bits apart from sox";
            continue;
        }
        const Samples &theirs = soxed(input, "-e floating-point -b 32" + shape);
        const auto [lag, db] = [&] {
            converttest::FloatWave r;
            converttest::FloatWave t;
            r.channels = theirs.channels;
            t.channels = ours.channels;
            r.samples.assign(theirs.values.begin(), theirs.values.end());
            t.samples.assign(ours.values.begin(), ours.values.end());
            return converttest::bestMatch(r, t, 4);
        }();
        EXPECT_EQ(lag, 0);
        if (plain) {
            EXPECT_GE(db, format.bitsPerSample == 8 ? 30.0 : 60.0);
        } else if (format.formatTag == MsAdpcm && sameRate) {
            // sox's own encoder on the same source, judged the same way.
            const std::string soxAdpcm = dir.file("sox-adpcm.wav");
            runTool("sox -D " + quoted(input) + " -e ms-adpcm" + shape + " " + quoted(soxAdpcm));
            const double soxDb = snrDb(theirs, readSamples(soxAdpcm));
            std::cout << "[ ms adpcm  ] " << nameOf(source) << " " << label << ": ours " << db << " dB, sox's "
                      << soxDb << " dB\n";
            EXPECT_GE(db, soxDb - 1.0);
        } else {
            // What the encoding's own noise leaves: A-law and u-law 25 dB, ADPCM 12, GSM 6.10 6.
            const double floor = format.formatTag == 6 || format.formatTag == 7 ? 25.0 : format.formatTag == 0x31 ? 6.0 : 12.0;
            EXPECT_GE(db, floor);
        }
    }
}

std::vector<Source> sources()
{
    std::vector<Source> all;
    for (int subtype : {SF_FORMAT_PCM_U8, SF_FORMAT_PCM_16, SF_FORMAT_PCM_24, SF_FORMAT_PCM_32, SF_FORMAT_FLOAT,
                        SF_FORMAT_DOUBLE})
        for (int channels : {1, 2})
            for (int rate : {44100, 22050})
                all.push_back(Source{subtype, channels, rate});
    return all;
}

INSTANTIATE_TEST_SUITE_P(Sources, FormatMatrix, ::testing::ValuesIn(sources()),
                         [](const auto &info) { return nameOf(info.param); });

} // namespace
