#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <sndfile.h>
#include <unistd.h>

#include "TempDir.h"

#include "platform/WriterEngine.h"
#include "runtime/VirtualEventLoop.h"

namespace writertest {

namespace fs = std::filesystem;

// A fresh folder for one test, removed with everything in it.
class TempDir : public testsupport::TempDir {
public:
    TempDir() : testsupport::TempDir("writer-test") {}
};

// A wave file of `frames` frames of noise with the title and artist in its INFO chunk; returns
// the PCM as little-endian bytes, as a BIN holds it.
inline std::vector<char> writeWave(const fs::path &file, int64_t frames, const std::string &title, const std::string &artist,
                                   unsigned seed, int channels = 2, int rate = 44100, int format = SF_FORMAT_WAV | SF_FORMAT_PCM_16)
{
    SF_INFO info{};
    info.channels = channels;
    info.samplerate = rate;
    info.format = format;
    SNDFILE *f = sf_open(file.c_str(), SFM_WRITE, &info);
    if (!f)
        return {};
    if (!title.empty())
        sf_set_string(f, SF_STR_TITLE, title.c_str());
    if (!artist.empty())
        sf_set_string(f, SF_STR_ARTIST, artist.c_str());
    std::mt19937 gen(seed);
    std::uniform_int_distribution<int> dist(-32768, 32767);
    std::vector<short> samples(static_cast<size_t>(frames * channels));
    for (short &s : samples)
        s = static_cast<short>(dist(gen));
    sf_writef_short(f, samples.data(), frames);
    sf_close(f);
    std::vector<char> bytes;
    bytes.reserve(samples.size() * 2);
    for (short s : samples) {
        const auto v = static_cast<uint16_t>(s);
        bytes.push_back(static_cast<char>(v & 0xFF));
        bytes.push_back(static_cast<char>(v >> 8));
    }
    return bytes;
}

inline std::string readText(const fs::path &file)
{
    std::ifstream in(file, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

// Runs the loop's events as they come from the engine's thread until `done` holds.
inline bool pump(rt::VirtualEventLoop &loop, const std::function<bool()> &done, int timeoutMs = 10000)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (std::chrono::steady_clock::now() < end) {
        loop.doEvents();
        if (done())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    loop.doEvents();
    return done();
}

// The events of an engine, in the order they came.
struct EventRecord {
    std::vector<std::string> events;  // "progress 5", "closing", "done 0"
    std::vector<int> progress;        // of the track in hand
    std::vector<std::vector<int>> progressPerJob;
    int doneCount = 0;
    int lastResult = -999;
    std::function<void(int)> afterDone; // runs inside OnTrackDone

    void attach(platform::WriterEngine &e)
    {
        e.OnWriteProgress = [this](int p) {
            events.push_back("progress " + std::to_string(p));
            progress.push_back(p);
        };
        e.OnClosingDisc = [this] { events.push_back("closing"); };
        e.OnTrackDone = [this](int r) {
            events.push_back("done " + std::to_string(r));
            progressPerJob.push_back(progress);
            progress.clear();
            lastResult = r;
            ++doneCount;
            if (afterDone)
                afterDone(r);
        };
    }
    bool waitDone(rt::VirtualEventLoop &loop, int count, int timeoutMs = 10000)
    {
        return pump(loop, [&] { return doneCount >= count; }, timeoutMs);
    }
    bool saw(const std::string &event) const
    {
        for (const std::string &e : events) {
            if (e == event)
                return true;
        }
        return false;
    }
    // Index of the first event equal to `event`, -1 if none.
    int indexOf(const std::string &event) const
    {
        for (size_t i = 0; i < events.size(); ++i) {
            if (events[i] == event)
                return static_cast<int>(i);
        }
        return -1;
    }
};

inline std::vector<int> oneToHundred()
{
    std::vector<int> v;
    for (int i = 1; i <= 100; ++i)
        v.push_back(i);
    return v;
}

} // namespace writertest
