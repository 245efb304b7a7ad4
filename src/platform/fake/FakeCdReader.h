#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/AudioChain.h"
#include "platform/CdReader.h"

namespace platform::fake {

struct FakeWorld;

// The drives and the disc the fake reader shows, as a scenario sets them; changes made while
// the program runs are seen at the next call, as a disc taken out would be.
struct FakeReaderWorld {
    struct Track {
        CdTrack entry;
        std::string title;      // CD-Text title
        std::string textIsrc;   // CD-Text ISRC
        std::string isrc;       // what the subchannel gives
    };

    std::vector<CdDrive> drives{{0, "/dev/sr0", "FAKE CD-ROM"}};
    // The disc: in the drive, tray open, or the drive gone.
    bool discIn = true;
    bool trayOpen = false;
    bool vanished = false;
    // A Status other than the one the above give (3, say), -1 for none.
    int statusOverride = -1;
    std::vector<Track> tracks;
    std::string discTitle;
    bool cdText = false;
    // 0: an identity made from the tracks.
    int32_t discId = 0;
    bool contentsFail = false;
    bool canReadIsrc = true;
    std::vector<std::pair<std::string, int>> speeds{{"8 x", 1411}, {"4 x", 706}};
    // Frames a virtual second a copy reads (600: 8 x).
    int framesPerSecond = 600;
    // A copy that reaches this frame fails there (-1: none).
    int32_t errorFrame = -1;
    // Calls that fail with error 5 ("Open", "DetectSpeeds", ...).
    std::map<std::string, bool> failing;
    // Play: where it started, how long, and when (virtual ms); -1 while stopped.
    int64_t playStartedAt = -1;
    int32_t playStart = 0;
    int32_t playLength = 0;
    int32_t stoppedAt = 0;
    bool everPlayed = false;
    // Called after every ReadISRC with the count of calls so far (a scenario's click meanwhile).
    std::function<void(int calls)> onReadIsrc;
    int isrcReads = 0;
};

std::unique_ptr<CdReader> makeFakeCdReader(std::shared_ptr<FakeWorld> world);
std::unique_ptr<WaveIn> makeFakeWaveIn(std::shared_ptr<FakeWorld> world);

} // namespace platform::fake
