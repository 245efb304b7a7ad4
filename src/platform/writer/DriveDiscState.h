#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace platform::writer {

// What a drive answered to READ DISC INFORMATION (MMC 0x51): the answer's bytes when the command
// succeeded, else the sense key, additional sense code and qualifier it reported.
struct DiscInformationAnswer {
    bool succeeded = false;
    std::vector<uint8_t> bytes;
    int senseKey = -1;
    int asc = -1;
    int ascq = -1;
};

// The disc states a drive reports, as `DiscState` gives them.
namespace disc_state {
inline constexpr int writable = 0;        // empty, or incomplete: a session left open takes more tracks
inline constexpr int noDisc = -1;         // no medium: the drive is empty or its tray is open
inline constexpr int notReady = 1;        // a disc is loading or the drive was just told of a change
inline constexpr int closed = 2;          // complete: finalised, it takes no more tracks
inline constexpr int notRecordable = 3;   // a medium the drive writes by other rules (random access)
} // namespace disc_state

// The disc state an answer tells, or nothing when the answer tells nothing (a drive that does not
// know the command, a short answer): then the caller asks another way.
//   byte 2, bits 0-1 (disc status): 0 empty, 1 incomplete -> writable; 2 complete -> closed;
//                                   3 others -> not recordable here
//   sense NOT READY (2) with ASC 3A (medium not present, tray open or closed) or 30 (incompatible
//   or unknown medium) -> no disc; NOT READY otherwise (04: becoming ready, ...) and UNIT
//   ATTENTION (6: medium changed, reset) -> not ready, asked again later
std::optional<int> discStateFromAnswer(const DiscInformationAnswer &answer);

// Asks the drive at `device` (a device node such as /dev/sr0) through libcdio's MMC interface,
// within `timeoutMs`. Nothing when the device can't be opened as a drive (a SCSI address such as
// "1,0,0", a drive without MMC): then the caller asks another way.
std::optional<int> readDriveDiscState(const std::string &device, unsigned timeoutMs = 500);

} // namespace platform::writer
