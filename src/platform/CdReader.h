#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "MediaChain.h"

namespace platform {

// One track of the table of contents. Start and Length are positions: on every reader of this
// program a position is a count of frames (1/75 second, 2352 bytes of CD audio), Start counted
// from the first track's first frame (LBA, without the 2 second lead-in).
struct CdTrack {
    int Number = 0;
    int32_t Start = 0;
    int32_t Length = 0;
    bool IsAudio = true;
    // The digital copy permitted bit is clear.
    bool CopyProtected = false;
    bool PreEmphasis = false;
};

// One drive: the type the program stored for it, where it is and what it is called.
struct CdDrive {
    int Type = 0;
    // The device node ("/dev/sr0") of a drive, the file name of a disc image.
    std::string DriveLetter;
    std::string Name;
};

// CD-Text of a disc: entry 0 stands for the disc, entry n for track n.
struct CdTextEntry {
    std::string Title;
    std::string ISRC;
};

// The CD reader (`MMCDReaderX`): drives, the disc in the open one, its table of contents,
// CD-Text and ISRC codes, play through the drive's own audio output, the door, and as the
// source of a chain the frames of the selected range. Every member that fails raises the
// run-time error of the failure; the extraction windows pass such errors over.
class CdReader : public MediaComponent {
public:
    // Status values.
    static constexpr int StatusNoDrive = 0;
    static constexpr int StatusReady = 1;
    static constexpr int StatusPlaying = 2;
    static constexpr int StatusNotReady = 3;  // a disc that can't be used just now
    static constexpr int StatusNoDisc = 4;    // the tray is shut and empty
    static constexpr int StatusTrayOpen = 5;

    // Copy modes.
    static constexpr int cmNormal = 0;
    static constexpr int cmBurst = 1;
    static constexpr int cmSectorSync = 2;

    // The drives: the machine's drives, then the disc images the reader was told about.
    virtual int DevicesCount() = 0;
    // Error 9 for an index outside the list.
    virtual CdDrive DevicesItem(int index) = 0;
    virtual void setDevicesItemType(int index, int type) = 0;

    // Settings of the reader; they stay across Close and Open.
    virtual int32_t DeviceID() = 0;
    virtual void setDeviceID(int32_t id) = 0;
    virtual std::string DeviceName() = 0;
    virtual std::string DriveLetter() = 0;
    // The drive's command set (0 autodetect); kept, not passed on to the drive entries.
    virtual int DeviceType() = 0;
    virtual void setDeviceType(int type) = 0;
    // Sectors read at a time.
    virtual int BlockCount() = 0;
    virtual void setBlockCount(int count) = 0;
    virtual int CopyMode() = 0;
    virtual void setCopyMode(int mode) = 0;
    virtual bool IgnoreSpeed() = 0;
    virtual void setIgnoreSpeed(bool on) = 0;

    // The device named by DeviceID.
    virtual void Open() = 0;
    virtual void Close() = 0;
    virtual bool DiscPresent() = 0;
    virtual int Status() = 0;

    // Reads the table of contents of the disc in the open drive; false when that failed.
    virtual bool ReadContents() = 0;
    // The identity of the disc in the drive (the freedb id of its table of contents), whether or
    // not ReadContents ran; a disc whose contents can't be read still has one, never 0 or -1.
    virtual int32_t DiscId() = 0;
    virtual bool HasCDText() = 0;
    // Entry 0 the disc, entry n track n; empty without CD-Text.
    virtual std::vector<CdTextEntry> CDText() = 0;
    virtual int TracksCount() = 0;
    // Error 9 for an index outside the list.
    virtual CdTrack TracksItem(int index) = 0;
    virtual int32_t FramesOf(int32_t position) = 0;

    // The playing head and the number of the track it is in (0 when nothing was played).
    virtual int32_t PlayPosition() = 0;
    virtual int CurrentTrack() = 0;

    // Read speeds: probed from the drive, each with its text and its value (kB/s).
    virtual void DetectSpeeds() = 0;
    virtual int SpeedsCount() = 0;
    virtual std::string SpeedsText(int index) = 0;
    virtual int SpeedValue(int index) = 0;
    virtual void SetSpeed(int value) = 0;

    virtual bool CanReadISRC() = 0;
    // The ISRC of track `number` (1-based) from the subchannel; "" when it has none.
    virtual std::string ReadISRC(int number) = 0;

    // What a chain reads: `length` frames from `start`.
    virtual void SelectRange(int32_t start, int32_t length) = 0;
    virtual int32_t RangeStart() = 0;
    // The frame being read.
    virtual int32_t ReadPosition() = 0;

    // Plays through the drive's own audio output.
    virtual void Play(int32_t start, int32_t length) = 0;
    virtual void Stop() = 0;
    // True closes the tray, false opens it.
    virtual void SetDoor(bool closed) = 0;
};

} // namespace platform
