#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace platform {

// The shape of sampled sound as a wave file's format record states it.
struct WaveFormat {
    // 1 PCM, 3 IEEE float, 6 A-law, 7 u-law, 2 MS ADPCM, 0x11 IMA ADPCM, 0x31 GSM 6.10.
    int formatTag = 1;
    int channels = 2;
    int sampleRate = 44100;
    int bitsPerSample = 16;

    bool operator==(const WaveFormat &) const = default;
    // What a CD holds and a recorder takes: 44100 Hz, 16 bit, stereo PCM.
    static WaveFormat cdAudio() { return {}; }
};

// A component of a media chain. Windows wire their chains by `Input` and `Output`, as their
// design stores them; a real trigger finds its source and sink by following that wiring, so only
// components of one family (all real or all fake) are wired together.
class MediaComponent {
public:
    virtual ~MediaComponent() = default;
    MediaComponent *Input() const { return m_input; }
    MediaComponent *Output() const { return m_output; }
    virtual void setInput(MediaComponent *c) { m_input = c; }
    virtual void setOutput(MediaComponent *c) { m_output = c; }

private:
    MediaComponent *m_input = nullptr;
    MediaComponent *m_output = nullptr;
};

// An MP3 file as a source (`MMAudioFileX`): decoded at the file's own rate and channels, with
// the encoder's delay and padding taken off, so a track has its true length.
class AudioFile : public MediaComponent {
public:
    // Names the file; it is opened when the chain opens.
    virtual void setFileName(const std::string &path) = 0;
    virtual std::string FileName() const = 0;
    // Position and length of the decoded sound, both in milliseconds. Length is 0 for a file
    // that can't be read; Position moves while the chain runs.
    virtual int32_t Position() = 0;
    virtual int32_t Length() = 0;
    virtual void setMpegTrailingHeader(int value) = 0;
};

// A wave file as a sink or a source (`MMWaveFileX`); `Wave.FileName` and `Wave.FileMustExist`.
class WaveFile : public MediaComponent {
public:
    virtual void setFileName(const std::string &path) = 0;
    virtual std::string FileName() const = 0;
    virtual void setFileMustExist(bool on) = 0;
    // When set, whatever arrives is converted to this format before it is written; unset, the
    // file takes the format of what arrives.
    virtual void setTargetFormat(std::optional<WaveFormat> format) = 0;
    // The wave's position and total in bytes of its data (`Wave` position and total).
    virtual int64_t DataPosition() = 0;
    virtual int64_t DataSize() = 0;

    // A write failed (the disk is full, the file went away): posted to the loop; the flow stops.
    std::function<void()> OnWriteFailed;
};

// A format converter (`MMACMConverterX`): rate, channels and sample format. Without a format
// it hands the sound on as it comes.
class FormatConverter : public MediaComponent {
public:
    virtual void setWaveFormat(std::optional<WaveFormat> format) = 0;
    virtual std::optional<WaveFormat> waveFormat() const = 0;
};

// The pump of a chain (`MMTriggerX`): one worker moves buffers from the source through the
// filters into the sink. Every event is posted to the loop, in the order started, buffer done...,
// stopped, closed; an event of a trigger that is gone is dropped.
class Trigger : public MediaComponent {
public:
    static constexpr int StateOpen = 2;
    static constexpr int StateFlowing = 4;

    virtual void setBufferSize(int bytes) = 0;
    virtual void setInterval(int ms) = 0;
    // Opens the chain and starts the flow. A chain that can't open raises the run-time error of
    // the failure (53 for a missing source, 75 for a sink that can't be written) and no event comes.
    virtual void Start() = 0;
    // Stops the flow; `OnStopped` follows. The end of the source stops it the same way.
    virtual void Stop() = 0;
    // Closes the chain (stopping it first); `OnClosed` follows, also for a chain that wasn't open.
    virtual void Close() = 0;
    virtual int State() = 0;

    std::function<void()> OnStarted;
    std::function<void()> OnBufferDone;
    std::function<void()> OnStopped;
    std::function<void()> OnClosed;
    // A source that fails while flowing (a damaged file, a file that went away): posted before
    // the stop.
    std::function<void(int code, const std::string &message)> OnError;
};

} // namespace platform
