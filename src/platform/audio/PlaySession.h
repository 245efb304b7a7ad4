#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include "PlayerOptions.h"

namespace platform::audio {

class DecoderStream;
class FirConvolver;
class PlayedWaveFile;
class SoundAnalyser;

// What one play uses. The shared parts stay alive for the play whoever lets go of them first.
struct PlayParts {
    std::shared_ptr<DecoderStream> decoder;
    // The equaliser's filter and the engine that owns it; null for none.
    std::shared_ptr<void> equalizerOwner;
    FirConvolver *equalizer = nullptr;
    std::shared_ptr<SoundAnalyser> analyser;
    std::shared_ptr<PlayedWaveFile> record;
    size_t ringFrames = 65536;
    int periodFrames = 1024;
    int periods = 4;
    bool looping = false;
    PlayerOptions options;
};

// One play of the decoder's open file from its position: a thread decodes into the ring and
// carries out seeks, the device pulls the sound through the equaliser, and the play ends at the
// end of the file (played out to its last sample) or at a stop. `started` is called when the
// device starts, `ended` last of all, both on the play's thread.
class PlaySession {
public:
    PlaySession(PlayParts parts, std::function<void()> started, std::function<void()> ended);
    ~PlaySession();
    PlaySession(const PlaySession &) = delete;
    PlaySession &operator=(const PlaySession &) = delete;

    // False when no thread could be made (nothing is called then).
    bool start();
    // Asks the play to stop; it ends on its own thread without delay.
    void requestStop();
    // Waits for the play's thread to be gone.
    void join();
    bool done() const { return m_done.load(); }

private:
    void run();
    void wake();

    PlayParts m_parts;
    std::function<void()> m_started;
    std::function<void()> m_ended;
    std::thread m_thread;
    std::mutex m_lock;
    std::condition_variable m_wakeUp;
    std::atomic<bool> m_stop{false};
    std::atomic<bool> m_deviceDone{false};
    std::atomic<bool> m_done{false};
};

} // namespace platform::audio
