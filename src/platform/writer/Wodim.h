#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform::writer {

// What wodim says and what it is told: pure functions, so that they can be tested without it.

struct WodimDevice {
    std::string dev; // what dev= takes: "/dev/sr0", or "1,0,0" from a bus scan
    std::string vendor;
    std::string model;
    // "VENDOR MODEL (/dev/sr0)", the name the device list shows.
    std::string displayName() const;
};

// The drives of `wodim --devices`.
std::vector<WodimDevice> parseDeviceList(std::string_view output);
// The CD drives of `wodim -scanbus`, for systems where --devices finds none.
std::vector<WodimDevice> parseScanbus(std::string_view output);

// The percent of a track a progress line reports ("Track 01:   12 of   40 MB written ...").
std::optional<int> parseProgressPercent(std::string_view line);

// DiscState from the output and exit code of `wodim -v dev=... -atip`: -1 no disc, 1 not ready
// or no recordable disc, 0 a recordable disc.
int classifyDiscState(std::string_view output, int exitCode);

// The fifo wodim is given: FifoBufferCount buffers of SectorsPerBuffer sectors each, values of
// 0 or less taking the defaults (about wodim's own 4 MB); at most 128 MB.
constexpr int defaultFifoBufferCount = 64;
constexpr int defaultSectorsPerBuffer = 27; // 63504 bytes, wodim's usual transfer size
int64_t fifoBytes(int fifoBufferCount, int sectorsPerBuffer);

struct WodimSettings {
    std::string device;     // dev=
    std::string driverName; // driver=, none when empty
    int speed = 0;          // speed=, none when 0 or less
    int64_t fifoBytes = 0;  // fs=, none when 0 or less
    bool dummy = false;     // -dummy: the laser stays off
    // A wodim that prints nothing for this long is taken for stuck and ended (a write prints a
    // line a megabyte; a fixation is silent for a few minutes at most).
    int silenceLimitMs = 10 * 60 * 1000;
};

// One track, track at once, the session left open; CD-Text from the .inf beside the file.
std::vector<std::string> wodimWriteArguments(const WodimSettings &s, const std::string &waveFile);
// Closes the session and the disc: writes the TOC.
std::vector<std::string> wodimFixArguments(const WodimSettings &s);
std::vector<std::string> wodimAtipArguments(const WodimSettings &s);

// The .inf that wodim reads with -useinfo: the track's title and performer, ISO 8859-1.
std::string infFileText(const std::string &title, const std::string &performer);

} // namespace platform::writer
