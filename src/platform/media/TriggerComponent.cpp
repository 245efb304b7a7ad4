#include "TriggerComponent.h"

#include <algorithm>
#include <exception>
#include <string>
#include <system_error>

#include "runtime/RuntimeError.h"

namespace platform::media {

namespace {

constexpr int MinBufferBytes = 1024;
constexpr int MaxBufferBytes = 16 * 1024 * 1024;
// Deeper than any real chain; a wiring loop stops here.
constexpr int MaxChainDepth = 16;

} // namespace

TriggerComponent::TriggerComponent(rt::EventLoop &loop) : m_loop(loop) {}

TriggerComponent::~TriggerComponent()
{
    // Events still queued go nowhere; the work they carry still ends when they are delivered.
    m_alive.reset();
    joinWorker();
    closeChain();
}

void TriggerComponent::setBufferSize(int bytes)
{
    m_bufferSize = bytes <= 0 ? 32768 : std::clamp(bytes, MinBufferBytes, MaxBufferBytes);
}

void TriggerComponent::attachNodes()
{
    m_nodes.clear();
    auto walk = [this](MediaComponent *c, bool up) {
        for (int depth = 0; c && c != this && depth < MaxChainDepth; ++depth) {
            if (auto *node = dynamic_cast<ChainNode *>(c)) {
                if (std::find(m_nodes.begin(), m_nodes.end(), node) != m_nodes.end())
                    break;
                node->attachPump(this);
                m_nodes.push_back(node);
            }
            if (!dynamic_cast<FormatConverter *>(c))
                break;
            c = up ? c->Input() : c->Output();
        }
    };
    walk(Input(), true);
    walk(Output(), false);
}

void TriggerComponent::Start()
{
    if (m_state & StateFlowing)
        return;
    if (m_state == 0) {
        auto *source = dynamic_cast<PcmSource *>(Input());
        auto *sink = dynamic_cast<PcmSink *>(Output());
        if (!source)
            rt::raise(rt::ErrFileNotFound);
        if (!sink)
            rt::raise(rt::ErrPathFileAccess);
        attachNodes();
        StreamInfo info;
        try {
            info = source->openSource();
        } catch (const rt::RuntimeError &) {
            closeChain();
            throw;
        } catch (...) {
            closeChain();
            rt::raise(rt::ErrFileNotFound);
        }
        try {
            sink->openSink(info);
        } catch (const rt::RuntimeError &) {
            m_source = source; // open by now: closed again with the rest
            closeChain();
            throw;
        } catch (...) {
            m_source = source;
            closeChain();
            rt::raise(rt::ErrPathFileAccess);
        }
        m_source = source;
        m_sink = sink;
        m_state = StateOpen;
    }

    joinWorker();
    m_stopRequested = false;
    ++m_flowId;
    m_state = StateOpen | StateFlowing;
    m_loop.beginWork(WorkName);
    m_loop.postEvent(m_alive, [this] {
        fireEvent(OnStarted);
    });
    try {
        m_worker = std::thread(&TriggerComponent::run, this, static_cast<size_t>(m_bufferSize));
    } catch (const std::system_error &) {
        // No thread, no flow: it stops at once.
        flowEnded();
    }
}

void TriggerComponent::postBufferDone()
{
    // One waiting at a time: a slow loop sees fewer, never a backlog.
    if (m_bufferEventPending.exchange(true))
        return;
    m_loop.postEvent(m_alive, [this] {
        m_bufferEventPending = false;
        fireEvent(OnBufferDone);
    });
}

void TriggerComponent::run(size_t bufferBytes)
{
    bool sinkRefused = false;
    try {
        std::vector<std::byte> buffer(bufferBytes);
        int idle = 0;
        while (!m_stopRequested) {
            const ReadResult r = m_source->read(buffer.data(), buffer.size());
            if (r.bytes > 0) {
                idle = 0;
                // A sink that can't take it has reported why; the flow just stops.
                if (!m_sink->write(buffer.data(), r.bytes)) {
                    sinkRefused = true;
                    break;
                }
                postBufferDone();
            }
            if (r.error) {
                const SourceError e = *r.error;
                m_loop.postEvent(m_alive, [this, e] {
                    fireEvent(OnError, e.code, e.message);
                });
                break;
            }
            if (r.end)
                break;
            if (r.bytes == 0 && ++idle > 64)
                break; // a source that gives nothing and never ends
        }
    } catch (const std::exception &ex) {
        const std::string message = ex.what();
        m_loop.postEvent(m_alive, [this, message] {
            fireEvent(OnError, 0, message);
        });
    } catch (...) {
        m_loop.postEvent(m_alive, [this] {
            fireEvent(OnError, 0, std::string("The sound could not be read"));
        });
    }
    flowEnded(sinkRefused);
}

void TriggerComponent::flowEnded(bool sinkRefused)
{
    // Open but still: the stop is the last event of the flow's work.
    if (!sinkRefused)
        m_state = StateOpen;
    const unsigned flow = m_flowId;
    m_loop.postEvent(
        m_alive,
        [this, sinkRefused, flow] {
            if (flow == m_closedFlow)
                return;
            if (sinkRefused && flow == m_flowId)
                m_state &= ~StateFlowing;
            fireEvent(OnStopped);
        },
        WorkName);
}

void TriggerComponent::joinWorker()
{
    if (m_worker.joinable()) {
        m_stopRequested = true;
        m_worker.join();
    }
}

void TriggerComponent::Stop()
{
    joinWorker();
    // Nothing flows once the worker is gone, whatever bit a refused flow left for its stop.
    m_state &= ~StateFlowing;
}

void TriggerComponent::closeChain()
{
    // The sink first: it may still take the converter's tail, and its header gets the sizes.
    if (m_sink) {
        try {
            m_sink->closeSink();
        } catch (...) {
        }
    }
    if (m_source) {
        try {
            m_source->closeSource();
        } catch (...) {
        }
    }
    m_sink = nullptr;
    m_source = nullptr;
    for (ChainNode *node : m_nodes)
        node->detachPump(this);
    m_nodes.clear();
}

void TriggerComponent::Close()
{
    // Closed while data flows: straight to closing, with no stopped event first.
    if (m_state & StateFlowing)
        m_closedFlow = m_flowId;
    joinWorker();
    closeChain();
    m_state = 0;
    m_loop.beginWork(WorkName);
    m_loop.postEvent(
        m_alive,
        [this] {
            fireEvent(OnClosed);
        },
        WorkName);
}

void TriggerComponent::nodeGoing(ChainNode *)
{
    // A component of the chain is being destroyed under it: stop and let go of all of them.
    joinWorker();
    closeChain();
    m_state = 0;
}

} // namespace platform::media
