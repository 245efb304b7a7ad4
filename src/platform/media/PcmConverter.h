#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "platform/MediaChain.h"

namespace platform::media {

// Turns a stream of one PCM shape into another: sample rate (libsoxr, high quality), channels
// (mono to many copies, many to mono averages) and sample format (8/16/24/32-bit PCM, 32 or
// 64-bit float). It works in double precision and rounds once, at the target's depth. Used by the format converter and by the wave file's target format alike.
class PcmConverter {
public:
    // Throws std::runtime_error for a shape it can't handle (see `supports`).
    PcmConverter(const WaveFormat &from, const WaveFormat &to);
    ~PcmConverter();
    PcmConverter(const PcmConverter &) = delete;
    PcmConverter &operator=(const PcmConverter &) = delete;

    // PCM 8/16/24/32 bit or 32/64-bit float, 1 to 32 channels, 1 Hz to 1 MHz.
    static bool supports(const WaveFormat &format);
    // The samples stay as they are: no work at all.
    bool passThrough() const { return m_passThrough; }
    const WaveFormat &from() const { return m_from; }
    const WaveFormat &to() const { return m_to; }

    // Converts whole frames of `bytes`; a part frame is kept for the next call. The result is
    // valid until the next call.
    const std::vector<std::byte> &convert(const std::byte *data, size_t bytes);
    // The end of the input: what the resampler still holds.
    const std::vector<std::byte> &flush();

private:
    void toFloat(const std::byte *data, size_t frames);
    void mapChannels(const std::vector<double> &in, int inChannels, std::vector<double> &out, int outChannels,
                     size_t frames) const;
    void resample(const double *in, size_t frames, bool last);
    void fromFloat(const double *in, size_t frames);
    void finishChunk(size_t frames);

    WaveFormat m_from;
    WaveFormat m_to;
    bool m_passThrough = false;
    int m_inFrameBytes = 0;
    int m_outFrameBytes = 0;
    // Resampling runs on the smaller channel count; mapping happens before or after it.
    int m_rateChannels = 0;
    struct Resampler;
    std::unique_ptr<Resampler> m_resampler;

    std::vector<std::byte> m_partial;
    std::vector<double> m_float;
    std::vector<double> m_mapped;
    std::vector<double> m_resampled;
    std::vector<double> m_expanded;
    std::vector<std::byte> m_out;
};

} // namespace platform::media
