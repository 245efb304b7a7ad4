#pragma once

#include <functional>
#include <string>

namespace platform {

// The CD writing engine (`ACDWRITE1`). Success is 0, failure non-zero, as the engine reports.
// Events are posted to the loop; InitEngine may be called from inside one of them.
class WriterEngine {
public:
    virtual ~WriterEngine() = default;

    // Starts the engine and looks for recorders; above 0 when there is none or it can't start.
    virtual int InitEngine() = 0;
    virtual int DeviceCount() = 0;
    virtual std::string DeviceName(int index) = 0;
    // Makes a device current; an index beyond the devices is kept as given.
    virtual void SelectDevice(int index) = 0;
    // The command set of the current device as the engine knows it; 0 or >= 100 for unknown.
    virtual int DeviceDriverType() = 0;
    virtual void SetDriverType(int type) = 0;

    // 0 when a writable disc is ready, below 0 with no disc, above 0 when it isn't ready.
    virtual int DiscState() = 0;
    // Puts a wave file on the list of tracks; non-zero when it is refused.
    virtual int AddTrack(const std::string &file, int flags) = 0;
    // Starts writing the listed tracks not yet written and returns at once; non-zero when it
    // can't start. The close flags count as they stand when a track's data ends.
    virtual int WriteTracks() = 0;
    virtual void ClearTracks() = 0;

    virtual void setCloseDiscAfterTrack(bool on) = 0;
    virtual void setCloseSessionAfterTrack(bool on) = 0;
    virtual void setTestWrite(bool on) = 0;
    virtual void setWriteSpeed(int speed) = 0;
    virtual void setSwapBytes(bool on) = 0;
    virtual void setFifoBufferCount(int count) = 0;

    // Tuning passed on as stored text; the engine converts (error 13 for text that is no number).
    virtual void setFifoBufferCount(const std::string &value) = 0;
    virtual void setPreGapSize(const std::string &value) = 0;
    virtual void setSectorsPerBuffer(const std::string &value) = 0;
    virtual void setSwapBytes(const std::string &value) = 0;

    // Percent of the track in hand, repeatedly while it is written.
    std::function<void(int percent)> OnWriteProgress;
    // Closing starts, after the last data of a track that closes the session.
    std::function<void()> OnClosingDisc;
    // The writing of the listed tracks has ended, closing included; the value is 0 when all
    // went well.
    std::function<void(int result)> OnTrackDone;
};

} // namespace platform
