#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "PcmConverter.h"
#include "PcmStream.h"
#include "platform/MediaChain.h"

namespace platform::media {

// A converter that sits before the trigger (its Input is a source; it pulls and converts) or
// after it (its Output is a sink; it converts and pushes).
class FormatConverterComponent final : public FormatConverter, public PcmSource, public PcmSink {
public:
    FormatConverterComponent() = default;
    ~FormatConverterComponent() override;

    void setWaveFormat(std::optional<WaveFormat> format) override { m_format = format; }
    std::optional<WaveFormat> waveFormat() const override { return m_format; }

    StreamInfo openSource() override;
    ReadResult read(std::byte *buffer, size_t bytes) override;
    void closeSource() override;

    void openSink(const StreamInfo &info) override;
    bool write(const std::byte *data, size_t bytes) override;
    void closeSink() override;

private:
    // What leaves: the set format as samples (PCM or float), the compressed ones as 16-bit PCM
    // that the file at the end encodes.
    StreamInfo convertedInfo(const StreamInfo &in) const;
    void makeConverter(const WaveFormat &from, const WaveFormat &to);

    std::optional<WaveFormat> m_format;
    std::unique_ptr<PcmConverter> m_converter;  // none: hands on as it comes
    PcmSource *m_upstream = nullptr;
    PcmSink *m_downstream = nullptr;
    // Pulling: converted bytes not yet handed out, and how far they were.
    std::vector<std::byte> m_pending;
    size_t m_pendingAt = 0;
    std::vector<std::byte> m_pullBuffer;
    bool m_inputEnded = false;
    bool m_flushed = false;
    int m_outFrameBytes = 4;
};

} // namespace platform::media
