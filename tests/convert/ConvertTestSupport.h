#pragma once

// The two converting chains as the conversion windows wire them, on the real components, with the
// test waves they are fed and the sox tools that judge what they write.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <sndfile.h>

#include <gtest/gtest.h>

#include "CommandOutput.h"
#include "MediaTestSupport.h"
#include "platform/Components.h"
#include "platform/media/RealMediaComponents.h"
#include "runtime/VirtualEventLoop.h"

namespace converttest {

using Events = std::vector<std::string>;

inline void hook(platform::Trigger &t, Events &events)
{
    t.OnStarted = [&events] { events.push_back("started"); };
    t.OnBufferDone = [&events] {
        if (events.empty() || events.back() != "buffer")
            events.push_back("buffer");
    };
    t.OnStopped = [&events] { events.push_back("stopped"); };
    t.OnClosed = [&events] { events.push_back("closed"); };
    t.OnError = [&events](int code, const std::string &message) {
        events.push_back("error:" + std::to_string(code) + ":" + message);
    };
}

// SrcFile -> Trigger -> ACMConverter -> DstFile, wired and set as the batch converter does it.
struct BatchChain {
    rt::VirtualEventLoop loop;
    platform::Components components;
    std::unique_ptr<platform::WaveFile> SrcFile;
    std::unique_ptr<platform::Trigger> Trigger;
    std::unique_ptr<platform::FormatConverter> ACMConverter;
    std::unique_ptr<platform::WaveFile> DstFile;
    Events events;

    BatchChain()
    {
        platform::media::addRealMediaComponents(components, loop);
        SrcFile = components.waveFile();
        Trigger = components.trigger();
        ACMConverter = components.formatConverter();
        DstFile = components.waveFile();
        SrcFile->setOutput(Trigger.get());
        Trigger->setInput(SrcFile.get());
        Trigger->setOutput(ACMConverter.get());
        Trigger->setInterval(0);
        ACMConverter->setInput(Trigger.get());
        ACMConverter->setOutput(DstFile.get());
        DstFile->setInput(ACMConverter.get());
        DstFile->setFileMustExist(false);
        hook(*Trigger, events);
        DstFile->OnWriteFailed = [this] { events.push_back("writefailed"); };
    }

    // One file as ConvertItem starts it: names, the format, Start; then run to the stop and close.
    void convert(const std::string &source, const std::string &target, const platform::WaveFormat &format)
    {
        SrcFile->setFileName(source);
        DstFile->setFileName(target);
        ACMConverter->setWaveFormat(format);
        Trigger->Start();
        ASSERT_TRUE(mediatest::settle(loop));
        Trigger->Close();
        ASSERT_TRUE(mediatest::settle(loop));
        ASSERT_EQ(Trigger->State(), 0);
    }
};

// AudioFile -> Trigger -> WaveFile with no format set, as the MP3 to wave window wires it.
struct Mp3ToWaveChain {
    rt::VirtualEventLoop loop;
    platform::Components components;
    std::unique_ptr<platform::AudioFile> AudioFile;
    std::unique_ptr<platform::Trigger> Trigger;
    std::unique_ptr<platform::WaveFile> WaveFile;
    Events events;

    Mp3ToWaveChain()
    {
        platform::media::addRealMediaComponents(components, loop);
        AudioFile = components.audioFile();
        Trigger = components.trigger();
        WaveFile = components.waveFile();
        AudioFile->setOutput(Trigger.get());
        AudioFile->setMpegTrailingHeader(0);
        Trigger->setInput(AudioFile.get());
        Trigger->setOutput(WaveFile.get());
        Trigger->setBufferSize(32768);
        Trigger->setInterval(0);
        WaveFile->setInput(Trigger.get());
        WaveFile->setFileMustExist(false);
        hook(*Trigger, events);
        WaveFile->OnWriteFailed = [this] { events.push_back("writefailed"); };
    }

    void convert(const std::string &mp3, const std::string &wav)
    {
        AudioFile->setFileName(mp3);
        WaveFile->setFileName(wav);
        Trigger->Start();
        ASSERT_TRUE(mediatest::settle(loop));
        Trigger->Close();
        ASSERT_TRUE(mediatest::settle(loop));
        ASSERT_EQ(Trigger->State(), 0);
    }
};

// A 16-bit stereo wave with different sounds left and right, all well inside the pass band of
// even an 8000 Hz target: 440 and 2500 Hz left, 660 and 1700 Hz right.
inline bool writeTestWave(const std::string &path, int rate, double seconds)
{
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = 2;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE *f = sf_open(path.c_str(), SFM_WRITE, &info);
    if (!f)
        return false;
    const auto frames = static_cast<int64_t>(std::llround(seconds * rate));
    std::vector<short> samples(static_cast<size_t>(frames) * 2);
    constexpr double tau = 6.283185307179586;
    for (int64_t i = 0; i < frames; ++i) {
        const double t = static_cast<double>(i) / rate;
        const double left = 0.35 * std::sin(tau * 440 * t) + 0.15 * std::sin(tau * 2500 * t);
        const double right = 0.30 * std::sin(tau * 660 * t) + 0.20 * std::sin(tau * 1700 * t + 1.0);
        samples[2 * i] = static_cast<short>(std::lrint(left * 32767));
        samples[2 * i + 1] = static_cast<short>(std::lrint(right * 32767));
    }
    const bool ok = sf_writef_short(f, samples.data(), frames) == frames;
    return sf_close(f) == 0 && ok;
}

// What `soxi` says of a file: "Sample Encoding", "Channels", "Sample Rate", and the sample count
// from "Duration".
struct SoxInfo {
    bool ok = false;
    std::string encoding;
    int channels = 0;
    int rate = 0;
    int64_t samples = -1;
};

inline std::string runForOutput(const std::string &command)
{
    const testsupport::CommandOutput result = testsupport::runCommand(command);
    return result.succeeded ? result.text : std::string();
}

inline SoxInfo soxInfo(const std::string &path)
{
    SoxInfo info;
    std::istringstream lines(runForOutput("soxi " + mediatest::quoted(path) + " 2>/dev/null"));
    std::map<std::string, std::string> fields;
    for (std::string line; std::getline(lines, line);) {
        const size_t colon = line.find(':');
        if (colon == std::string::npos)
            continue;
        auto trim = [](std::string s) {
            s.erase(0, s.find_first_not_of(' '));
            s.erase(s.find_last_not_of(' ') + 1);
            return s;
        };
        fields[trim(line.substr(0, colon))] = trim(line.substr(colon + 1));
    }
    if (!fields.count("Sample Encoding") || !fields.count("Duration"))
        return info;
    info.encoding = fields["Sample Encoding"];
    info.channels = std::atoi(fields["Channels"].c_str());
    info.rate = std::atoi(fields["Sample Rate"].c_str());
    // "00:00:03.00 = 132300 samples ~ 225 CDDA sectors"
    const std::string &duration = fields["Duration"];
    const size_t equals = duration.find("= ");
    if (equals != std::string::npos)
        info.samples = std::atoll(duration.c_str() + equals + 2);
    info.ok = true;
    return info;
}

// Interleaved samples as floats, through libsndfile.
struct FloatWave {
    bool ok = false;
    int rate = 0;
    int channels = 0;
    std::vector<float> samples;
    int64_t frames() const { return channels > 0 ? static_cast<int64_t>(samples.size()) / channels : 0; }
};

inline FloatWave readFloatWave(const std::string &path)
{
    FloatWave w;
    SF_INFO info{};
    SNDFILE *f = sf_open(path.c_str(), SFM_READ, &info);
    if (!f)
        return w;
    w.rate = info.samplerate;
    w.channels = info.channels;
    w.samples.resize(static_cast<size_t>(info.frames * info.channels));
    const sf_count_t got = sf_readf_float(f, w.samples.data(), info.frames);
    w.samples.resize(static_cast<size_t>(got * info.channels));
    sf_close(f);
    w.ok = true;
    return w;
}

// Signal to residual in dB over the frames both have, the test shifted by `lag` frames.
inline double signalToResidualDb(const FloatWave &reference, const FloatWave &test, int lag = 0)
{
    const int ch = reference.channels;
    if (ch != test.channels || ch == 0)
        return -999;
    double signal = 0;
    double residual = 0;
    const int64_t frames = std::min(reference.frames(), test.frames());
    for (int64_t f = 0; f < frames; ++f) {
        const int64_t g = f + lag;
        if (g < 0 || g >= test.frames())
            continue;
        for (int c = 0; c < ch; ++c) {
            const double r = reference.samples[static_cast<size_t>(f * ch + c)];
            const double d = r - test.samples[static_cast<size_t>(g * ch + c)];
            signal += r * r;
            residual += d * d;
        }
    }
    if (residual == 0)
        return 200;
    return 10 * std::log10(signal / residual);
}

// The lag in [-range, range] frames at which the test matches best, and the match there.
inline std::pair<int, double> bestMatch(const FloatWave &reference, const FloatWave &test, int range)
{
    std::pair<int, double> best{0, signalToResidualDb(reference, test, 0)};
    for (int lag = -range; lag <= range; ++lag) {
        const double db = signalToResidualDb(reference, test, lag);
        if (db > best.second)
            best = {lag, db};
    }
    return best;
}

} // namespace converttest
