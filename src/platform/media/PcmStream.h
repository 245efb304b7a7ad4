#pragma once

#include <bit>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <type_traits>

#include "platform/MediaChain.h"

namespace platform::media {

// libmpg123 decodes to the host's byte order and the wave data is little-endian.
static_assert(std::endian::native == std::endian::little, "the chain assumes a little-endian host");

// What flows down a chain: interleaved samples, little-endian, as `format` says (PCM 8/16/24/32
// bit or 32-bit float), with the track's names riding along for the file at the end.
struct StreamInfo {
    WaveFormat format;
    // How a wave file at the end should store it, when that differs from `format` (a converter
    // asked for A-law, say); the samples themselves stay PCM.
    std::optional<WaveFormat> storeAs;
    std::string title;
    std::string artist;
};

struct SourceError {
    int code = 0;
    std::string message;
};

struct ReadResult {
    size_t bytes = 0;  // whole frames only
    bool end = false;  // nothing more will come (the bytes, if any, are still good)
    std::optional<SourceError> error;
};

// Calls an event handler through a copy: a handler may destroy the component whose member
// it is (a window unloading itself), and the copy keeps it alive until it returns.
template <class... Args>
void fireEvent(const std::function<void(Args...)> &event, const std::type_identity_t<Args> &...args)
{
    if (event) {
        const std::function<void(Args...)> copy = event;
        copy(args...);
    }
}

class ChainNode;

// The one that drives a chain; told when a component it uses is about to go away, so it can
// stop its worker before the component's memory does.
class Pump {
public:
    virtual void nodeGoing(ChainNode *node) = 0;

protected:
    ~Pump() = default;
};

// Base of every real component that can sit in a chain.
class ChainNode {
public:
    void attachPump(Pump *pump) { m_pump = pump; }
    void detachPump(Pump *pump)
    {
        if (m_pump == pump)
            m_pump = nullptr;
    }

protected:
    ~ChainNode() = default;
    // First thing in the most derived destructor: the worker must not touch a half-destroyed
    // component.
    void leavePump()
    {
        if (Pump *p = m_pump) {
            m_pump = nullptr;
            p->nodeGoing(this);
        }
    }

private:
    Pump *m_pump = nullptr;
};

// A component that gives sound. openSource and closeSource run on the UI thread, read on the
// trigger's worker.
class PcmSource : public virtual ChainNode {
public:
    // Raises the run-time error of the failure (53 for a file that can't be opened).
    virtual StreamInfo openSource() = 0;
    virtual ReadResult read(std::byte *buffer, size_t bytes) = 0;
    virtual void closeSource() = 0;

protected:
    ~PcmSource() = default;
};

// A component that takes sound. openSink and closeSink run on the UI thread, write on the
// trigger's worker.
class PcmSink : public virtual ChainNode {
public:
    // Raises the run-time error of the failure (75 for a file that can't be created).
    virtual void openSink(const StreamInfo &info) = 0;
    // False when the data could not be taken; the sink has reported it, the flow stops.
    virtual bool write(const std::byte *data, size_t bytes) = 0;
    virtual void closeSink() = 0;

protected:
    ~PcmSink() = default;
};

} // namespace platform::media
