#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "GainStage.h"
#include "PlayPosition.h"
#include "platform/media/Mp3FileSource.h"

namespace platform::audio {

// The player's MP3 stream: libmpg123 through the media chain's MP3 source (gapless), the gain
// stage, and the position. Shared by the decoder component (window thread) and the play that
// decodes it (its own thread); the window opens and closes it only while nothing plays.
class DecoderStream {
public:
    DecoderStream();
    ~DecoderStream();
    DecoderStream(const DecoderStream &) = delete;
    DecoderStream &operator=(const DecoderStream &) = delete;

    // Window side.
    void setFileName(const std::string &path);
    std::string fileName() const { return m_fileName; }
    void setVolume(int volume) { m_volume.store(volume); }
    void setPanning(int panning) { m_panning.store(panning); }
    // Opens the named file at its start: error 53 when it is missing, 321 when it holds no MPEG
    // audio.
    void open();
    void close();
    bool isOpen() const { return m_open; }
    int sampleRate() const { return m_rate; }
    int channels() const { return m_channels; }
    int32_t lengthMs();
    int64_t lengthFrames();
    // Frames and milliseconds at the file's rate (44100 before a file is known).
    int64_t framesOf(int64_t ms) const;
    int64_t msOf(int64_t frames) const;

    PlayPosition &position() { return m_position; }

    // Decoding thread: up to `frames` stereo float frames with the gain applied; `end` when the
    // file has no more (also for a damaged file, whose sound stops there).
    size_t decode(float *stereo, size_t frames, bool &end);
    // To a frame of the file; false when the stream can't move.
    bool seek(int64_t frame);

private:
    int knownRate() const;

    media::Mp3FileSource m_source;
    std::string m_fileName;
    bool m_open = false;
    int m_rate = 0;
    int m_channels = 0;
    std::atomic<int> m_volume{UnityVolume};
    std::atomic<int> m_panning{0};
    std::vector<float> m_samples;  // as the decoder gives them: rounded only at the sink
    PlayPosition m_position;
};

} // namespace platform::audio
