#pragma once

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include <sndfile.h>

#include <gtest/gtest.h>

#include "RealWork.h"
#include "runtime/VirtualEventLoop.h"

namespace mediatest {

// A wave file as libsndfile reads it back.
struct Wave {
    bool ok = false;
    int rate = 0;
    int channels = 0;
    int format = 0;
    std::vector<int16_t> samples;  // interleaved
    std::string title;
    std::string artist;
    bool hasTitle = false;
    bool hasArtist = false;
    int64_t frames() const { return channels > 0 ? static_cast<int64_t>(samples.size()) / channels : 0; }
};

inline Wave readWave(const std::string &path)
{
    Wave w;
    SF_INFO info{};
    SNDFILE *f = sf_open(path.c_str(), SFM_READ, &info);
    if (!f)
        return w;
    w.ok = true;
    w.rate = info.samplerate;
    w.channels = info.channels;
    w.format = info.format;
    w.samples.resize(static_cast<size_t>(info.frames * info.channels));
    const sf_count_t got = sf_readf_short(f, w.samples.data(), info.frames);
    w.samples.resize(static_cast<size_t>(got * info.channels));
    if (const char *t = sf_get_string(f, SF_STR_TITLE)) {
        w.hasTitle = true;
        w.title = t;
    }
    if (const char *a = sf_get_string(f, SF_STR_ARTIST)) {
        w.hasArtist = true;
        w.artist = a;
    }
    sf_close(f);
    return w;
}

// Runs a tool of the field; the test fails when it is missing or fails.
inline void runTool(const std::string &command)
{
    const int rc = std::system(command.c_str());
    ASSERT_EQ(rc, 0) << command;
}

inline std::string quoted(const std::string &path)
{
    std::string q = "'";
    for (char c : path) {
        if (c == '\'')
            q += "'\\''";
        else
            q += c;
    }
    return q + "'";
}

// Delivers posted events until the real components are done; false past the bound.
inline bool settle(rt::VirtualEventLoop &loop, std::chrono::seconds bound = std::chrono::seconds(30))
{
    return testsupport::settleRealWork(loop, bound);
}

// Signal to difference in dB between two equally long runs of samples.
inline double signalToDifferenceDb(const std::vector<int16_t> &reference, const std::vector<int16_t> &test,
                                   size_t from = 0, size_t to = SIZE_MAX)
{
    to = std::min({to, reference.size(), test.size()});
    double signal = 0;
    double noise = 0;
    for (size_t i = from; i < to; ++i) {
        const double r = reference[i];
        const double d = r - test[i];
        signal += r * r;
        noise += d * d;
    }
    if (noise == 0)
        return 200;
    return 10 * std::log10(signal / noise);
}

} // namespace mediatest
