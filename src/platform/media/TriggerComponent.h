#pragma once

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include "PcmStream.h"
#include "platform/MediaChain.h"
#include "runtime/EventLoop.h"

namespace platform::media {

// The pump: opens the source it finds up its Input and the sink down its Output on the UI
// thread, then one worker moves buffers from one to the other. Its work in hand ("decoder")
// runs from Start to the delivered OnStopped, and from Close to the delivered OnClosed.
class TriggerComponent final : public Trigger, private Pump {
public:
    explicit TriggerComponent(rt::EventLoop &loop);
    ~TriggerComponent() override;

    void setBufferSize(int bytes) override;
    void setInterval(int ms) override { m_interval = ms; }
    void Start() override;
    void Stop() override;
    void Close() override;
    int State() override { return m_state; }

    static constexpr const char *WorkName = "decoder";

private:
    // A flow the sink refused keeps its flowing bit until its stop is delivered, so the sink's
    // failed-write event, posted before the stop, is seen while the chain still flows.
    void flowEnded(bool sinkRefused = false);
    void nodeGoing(ChainNode *node) override;
    // The worker; the buffer size is taken at the start, later changes count from the next.
    void run(size_t bufferBytes);
    void joinWorker();
    void closeChain();
    void attachNodes();
    void postBufferDone();

    rt::EventLoop &m_loop;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
    int m_bufferSize = 32768;
    // Kept for the logic; the flow runs as fast as the sink takes it, nothing is paced.
    int m_interval = 0;

    std::atomic<int> m_state{0};
    std::atomic<bool> m_stopRequested{false};
    std::atomic<bool> m_bufferEventPending{false};
    // Counts the flows, so a late stop doesn't touch the bits of a flow begun after it.
    std::atomic<unsigned> m_flowId{0};
    // The flow a Close cut short: its stop is not told (0: none).
    unsigned m_closedFlow = 0;
    std::thread m_worker;
    PcmSource *m_source = nullptr;
    PcmSink *m_sink = nullptr;
    std::vector<ChainNode *> m_nodes;
};

} // namespace platform::media
