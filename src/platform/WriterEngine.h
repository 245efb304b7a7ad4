#pragma once

#include <string>

namespace platform {

// The CD writing engine (`ACDWRITE1`). Success is 0, failure non-zero, as the engine reports.
class WriterEngine {
public:
    virtual ~WriterEngine() = default;

    // Starts the engine and looks for recorders; above 0 when there is none or it can't start.
    virtual int InitEngine() = 0;
    virtual int DeviceCount() = 0;
    virtual std::string DeviceName(int index) = 0;
    virtual void SelectDevice(int index) = 0;
    // The command set of the current device as the engine knows it; 0 or >= 100 for unknown.
    virtual int DeviceDriverType() = 0;
    virtual void SetDriverType(int type) = 0;

    virtual void setCloseDiscAfterTrack(bool on) = 0;
    virtual void setCloseSessionAfterTrack(bool on) = 0;
    virtual void setTestWrite(bool on) = 0;
    virtual void setWriteSpeed(int speed) = 0;

    // Tuning passed on as stored text; the engine converts (error 13 for text that is no number).
    virtual void setFifoBufferCount(const std::string &value) = 0;
    virtual void setPreGapSize(const std::string &value) = 0;
    virtual void setSectorsPerBuffer(const std::string &value) = 0;
    virtual void setSwapBytes(const std::string &value) = 0;
};

} // namespace platform
