#include "PlaySession.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <system_error>
#include <vector>

#include "AudioDevice.h"
#include "DecoderStream.h"
#include "FirConvolver.h"
#include "PlayedWaveFile.h"
#include "PlayerRenderer.h"
#include "PortAudioDevice.h"
#include "SampleRing.h"
#include "SilentSink.h"
#include "SoundAnalyser.h"
#include "StreamMarks.h"

namespace platform::audio {

namespace {

constexpr size_t DecodeFrames = 4096;
// The longest the decoder sleeps while the ring is full; a seek, a stop and the end wake it.
constexpr auto LongestSleep = std::chrono::milliseconds(50);
constexpr auto ShortestSleep = std::chrono::milliseconds(2);

} // namespace

PlaySession::PlaySession(PlayParts parts, std::function<void()> started, std::function<void()> ended)
    : m_parts(std::move(parts)), m_started(std::move(started)), m_ended(std::move(ended))
{
}

PlaySession::~PlaySession()
{
    requestStop();
    join();
}

bool PlaySession::start()
{
    try {
        m_thread = std::thread(&PlaySession::run, this);
    } catch (const std::system_error &) {
        return false;
    }
    return true;
}

void PlaySession::requestStop()
{
    m_stop = true;
    wake();
}

void PlaySession::wake()
{
    std::lock_guard lock(m_lock);
    m_wakeUp.notify_all();
}

void PlaySession::join()
{
    if (m_thread.joinable() && m_thread.get_id() != std::this_thread::get_id())
        m_thread.join();
}

void PlaySession::run()
{
    DecoderStream &decoder = *m_parts.decoder;
    PlayPosition &position = decoder.position();
    const size_t ringFrames = std::max(m_parts.ringFrames, DecodeFrames * 2);
    bool playedToEnd = false;
    try {
        SampleRing ring(ringFrames, 2);
        StreamMarks marks;
        const int64_t length = decoder.lengthFrames();
        const int64_t from = std::clamp<int64_t>(position.heard.load(), 0, std::max<int64_t>(length, 0));
        if (!decoder.seek(from))
            decoder.seek(0);
        position.heard.store(from);
        PlayerRenderer renderer(ring, marks, position, m_parts.equalizer, m_parts.analyser.get());
        // Made after what it reads from, so it goes first, also when something throws.
        std::unique_ptr<AudioDevice> device;

        std::vector<float> buffer(DecodeFrames * 2);
        bool fileEnded = false;
        // Until the device has taken enough for a buffer of the decoder to fit, or something
        // else needs doing.
        auto waitAWhile = [&] {
            const size_t room = ring.writable();
            const size_t missing = room >= DecodeFrames ? 0 : DecodeFrames - room;
            auto sleep = std::chrono::duration_cast<std::chrono::milliseconds>(
                std::chrono::duration<double>(static_cast<double>(missing) / std::max(decoder.sampleRate(), 1)));
            sleep = std::clamp<std::chrono::milliseconds>(sleep, ShortestSleep, LongestSleep);
            std::unique_lock lock(m_lock);
            m_wakeUp.wait_for(lock, sleep, [&] {
                return m_stop.load() || m_deviceDone.load() || position.seekTarget.load() >= 0;
            });
        };
        position.setWaker([this] { wake(); });
        struct ForgetWaker {
            PlayPosition &p;
            ~ForgetWaker() { p.setWaker(nullptr); }
        } forgetWaker{position};
        // One round of the decoder: a seek, else a buffer into the ring, else the end of the file.
        // False when it had nothing to do.
        auto decodeRound = [&] {
            const int64_t target = position.seekTarget.exchange(-1);
            if (target >= 0) {
                const uint32_t generation = position.seeksAsked.load();
                const int64_t to = std::clamp<int64_t>(target, 0, std::max<int64_t>(decoder.lengthFrames(), 0));
                decoder.seek(to);
                fileEnded = false;
                ring.setEnded(false);
                while (!marks.push({ring.written(), to, true, generation})) {
                    if (m_stop)
                        return true;
                    waitAWhile();
                }
                return true;
            }
            if (fileEnded)
                return false;
            if (ring.writable() < DecodeFrames)
                return false;
            bool end = false;
            const size_t got = decoder.decode(buffer.data(), DecodeFrames, end);
            ring.write(buffer.data(), got);
            if (!end)
                return true;
            if (m_parts.looping && decoder.seek(0)) {
                // Again from the top, seamless: the position follows at the place in the sound.
                while (!marks.push({ring.written(), 0, false, 0})) {
                    if (m_stop)
                        return true;
                    waitAWhile();
                }
                return true;
            }
            fileEnded = true;
            ring.setEnded(true);
            return true;
        };

        // The ring full before the device starts, so it never starts on an empty ring.
        while (!m_stop && !fileEnded && ring.writable() >= DecodeFrames)
            decodeRound();

        if (!m_stop) {
            DeviceSpec spec;
            spec.sampleRate = decoder.sampleRate();
            spec.channels = 2;
            spec.periodFrames = m_parts.periodFrames;
            spec.periods = m_parts.periods;
            RenderFunction render = [&renderer](float *out, size_t frames) {
                const PlayerRenderer::Result r = renderer.render(out, frames);
                return RenderResult{r.sound, r.finished};
            };
            auto finished = [this] {
                m_deviceDone = true;
                wake();
            };
            const PlayerOptions &o = m_parts.options;
            if (!o.soundFolder && !o.silentOnly)
                device = PortAudioDevice::open(spec, render, finished);
            if (device && !device->start())
                device.reset();
            if (!device) {
                PlayedWaveFile *record = nullptr;
                if (o.soundFolder && m_parts.record && m_parts.record->begin(spec.sampleRate, spec.channels))
                    record = m_parts.record.get();
                device = std::make_unique<SilentSink>(spec, render, finished, record, o.silentSpeed);
                if (!device->start())
                    device.reset();
            }
            if (device) {
                if (m_parts.analyser)
                    m_parts.analyser->setPlaying(true);
                if (m_started)
                    m_started();
                while (!m_stop && !m_deviceDone) {
                    if (!decodeRound())
                        waitAWhile();
                }
                playedToEnd = m_deviceDone;
                device->stop();
                device.reset();
            }
        }
    } catch (const std::exception &) {
        // A play that fails ends like a stopped one.
    }
    if (m_parts.analyser)
        m_parts.analyser->setPlaying(false);
    if (m_parts.record)
        m_parts.record->sync();
    // Played to its end, the file starts from the top next time; stopped, from where it stood.
    position.rest.store(playedToEnd ? 0 : position.heard.load());
    position.playing.store(false, std::memory_order_release);
    m_done = true;
    if (m_ended)
        m_ended();
}

} // namespace platform::audio
