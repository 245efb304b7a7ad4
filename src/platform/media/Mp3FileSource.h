#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "PcmStream.h"
#include "platform/MediaChain.h"

namespace platform::media {

// An MP3 file decoded by libmpg123, gapless, at its own rate and channels: 16-bit PCM, as a CD
// and a wave file take it, or 32-bit float for the player, whose sound is rounded only at the end.
class Mp3FileSource final : public AudioFile, public PcmSource {
public:
    Mp3FileSource();
    ~Mp3FileSource() override;

    void setFileName(const std::string &path) override;
    std::string FileName() const override { return m_fileName; }
    int32_t Position() override;
    int32_t Length() override;
    void setMpegTrailingHeader(int value) override { m_trailingHeader = value; }
    // Float samples from the next openSource on.
    void setFloatSamples(bool on) { m_floatSamples = on; }

    StreamInfo openSource() override;
    ReadResult read(std::byte *buffer, size_t bytes) override;
    void closeSource() override;

    // False when the opened file holds no MPEG audio (reading ends at once).
    bool holdsAudio() const { return m_decoder && !m_noAudio; }
    // Moves the opened stream to a sample (per channel) of the gapless sound; false when it
    // can't. The player's seek; runs on the thread that reads.
    bool seekTo(int64_t sample);

private:
    struct Decoder;
    struct Probe {
        bool readable = false;
        // Which file it measured, so an unchanged file isn't scanned twice.
        int64_t fileSize = -1;
        int64_t fileTime = 0;
        uint64_t fileId = 0;
        int rate = 0;
        int channels = 0;
        int64_t samples = 0;
        std::string title;
        std::string artist;
    };
    static Probe probe(const std::string &nativeFile);
    static bool sameFile(const Probe &p, const std::string &nativeFile);
    void takeProbe(const Probe &p);

    std::string m_fileName;
    int m_trailingHeader = 0;
    bool m_floatSamples = false;
    std::unique_ptr<Decoder> m_decoder;
    Probe m_probe;
    StreamInfo m_info;
    // Set when the opened file holds no MPEG audio: reading ends at once (code 0: quietly).
    std::optional<SourceError> m_noAudio;
    int m_frameBytes = 4;
    // Read by the UI thread while the worker decodes.
    std::atomic<int> m_rate{0};
    std::atomic<int64_t> m_lengthSamples{0};
    std::atomic<int64_t> m_doneSamples{0};
    std::string m_title;
    std::string m_artist;
};

} // namespace platform::media
