#pragma once

#include <memory>

#include "PlayerOptions.h"
#include "platform/AudioChain.h"
#include "runtime/EventLoop.h"

namespace platform::audio {

class DecoderStream;
class PlayedWaveFile;
class PlaySession;

// The output (`MMWaveOutX1`): plays the chain wired up its Input (decoder, ring, equaliser) on
// the sound card, or the silent sink, and feeds the connector down its Output. Open checks the
// file on the window's thread; the device is opened by the play's own thread, so the window
// never waits for it. A play is work in hand ("player") from Start until its OnPlayStop has
// been delivered.
//
// BufferSize is the bytes of a device buffer (four a frame: 16-bit stereo), NumBuffers how many
// are queued; the queue asked of a card is held to 0.2 s so that Stop and a new gain are heard
// at once. Looping plays the file again from the top at its end instead of stopping.
// CallBackMode and TimeFormat are kept: the device always runs on its own thread, and positions
// are milliseconds.
class WaveOutComponent final : public WaveOut {
public:
    static constexpr const char *WorkName = "player";

    WaveOutComponent(rt::EventLoop &loop, PlayerOptions options);
    ~WaveOutComponent() override;

    void setBufferSize(int value) override { m_bufferSize = value; }
    void setCallBackMode(int value) override { m_callBackMode = value; }
    void setLooping(bool on) override { m_looping = on; }
    void setNumBuffers(int value) override { m_numBuffers = value; }
    void setTimeFormat(int value) override { m_timeFormat = value; }
    void Open() override;
    void Start() override;
    void Stop() override;
    void Close() override;
    int WaveFormatHandle() override { return m_open ? 1 : 0; }

    // Frames of a device buffer for the BufferSize set.
    int periodFrames() const;

private:
    void endSession();

    rt::EventLoop &m_loop;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
    PlayerOptions m_options;
    int m_bufferSize = 4048;
    int m_numBuffers = 100;
    int m_callBackMode = 0;
    int m_timeFormat = 0;
    bool m_looping = false;
    bool m_open = false;
    std::shared_ptr<DecoderStream> m_stream;
    std::shared_ptr<PlayedWaveFile> m_record;
    std::unique_ptr<PlaySession> m_session;
};

} // namespace platform::audio
