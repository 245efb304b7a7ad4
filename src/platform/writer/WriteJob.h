#pragma once

#include <filesystem>
#include <string>

namespace platform::writer {

// OnTrackDone values of the engine's own making; a wodim run passes on wodim's exit code.
enum WriteResult : int {
    writeOk = 0,
    writeStopped = 1,          // the engine went away during the write
    sourceUnreadable = 2,      // the wave file could no longer be read as CD audio
    imageFolderUnusable = 3,   // the image folder can't be created or written
    writeFailed = 4,           // writing the image (or the private copy) failed, e.g. a full disk
    discFull = 5,              // the disc holds 99 tracks, or the track would end past 99:59:74
    recorderStalled = 6,       // wodim printed nothing for too long and was ended
    recorderProgramMissing = 127,
};

// One track of a WriteTracks call, with the settings as they stood when it was called.
struct TrackOrder {
    std::filesystem::path wave;
    bool testWrite = false;
    int pauseSectors = 150; // silence before the track when it isn't the first on the disc
};

// What a backend gets from the engine while it writes, on the engine's worker thread.
class WriteContext {
public:
    virtual ~WriteContext() = default;
    virtual bool stopRequested() const = 0;
    // Waits, returning false as soon as the engine asks to stop.
    virtual bool pause(int ms) = 0;
    // The percent of the track written; each value is passed on once, in rising order.
    virtual void progress(int percent) = 0;
    // Whether the disc is to be closed after this track: the close flags as they stand now,
    // which is when a track's data has ended.
    virtual bool closeRequested() const = 0;
    // Closing starts (OnClosingDisc).
    virtual void closing() = 0;
    // A line for the burn log: a command, what the recorder printed, a result, a timing.
    virtual void log(const std::string &line) { (void)line; }
};

} // namespace platform::writer
