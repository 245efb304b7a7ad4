#include "PcmConverter.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <stdexcept>

#include <soxr.h>

namespace platform::media {

namespace {

constexpr int TagPcm = 1;
constexpr int TagFloat = 3;

int frameBytes(const WaveFormat &f)
{
    return f.channels * (f.bitsPerSample / 8);
}

inline int32_t readLe(const std::byte *p, int bytes)
{
    uint32_t v = 0;
    for (int i = 0; i < bytes; ++i)
        v |= static_cast<uint32_t>(p[i]) << (8 * i);
    return static_cast<int32_t>(v);
}

inline void writeLe(std::byte *p, uint32_t v, int bytes)
{
    for (int i = 0; i < bytes; ++i)
        p[i] = static_cast<std::byte>((v >> (8 * i)) & 0xFF);
}

} // namespace

struct PcmConverter::Resampler {
    soxr_t handle = nullptr;
    double ratio = 1.0;
    ~Resampler()
    {
        if (handle)
            soxr_delete(handle);
    }
};

bool PcmConverter::supports(const WaveFormat &f)
{
    if (f.channels < 1 || f.channels > 32 || f.sampleRate < 1 || f.sampleRate > 1000000)
        return false;
    if (f.formatTag == TagPcm)
        return f.bitsPerSample == 8 || f.bitsPerSample == 16 || f.bitsPerSample == 24 || f.bitsPerSample == 32;
    if (f.formatTag == TagFloat)
        return f.bitsPerSample == 32 || f.bitsPerSample == 64;
    return false;
}

PcmConverter::PcmConverter(const WaveFormat &from, const WaveFormat &to) : m_from(from), m_to(to)
{
    if (!supports(from) || !supports(to))
        throw std::runtime_error("The sound format can't be converted");
    m_passThrough = from == to;
    m_inFrameBytes = frameBytes(from);
    m_outFrameBytes = frameBytes(to);
    m_rateChannels = std::min(from.channels, to.channels);
    if (from.sampleRate != to.sampleRate) {
        m_resampler = std::make_unique<Resampler>();
        m_resampler->ratio = static_cast<double>(to.sampleRate) / from.sampleRate;
        const soxr_io_spec_t io = soxr_io_spec(SOXR_FLOAT64_I, SOXR_FLOAT64_I);
        // 20-bit precision is beyond 16-bit targets; deeper ones get the 28-bit filter.
        const bool deep = to.formatTag == TagFloat || to.bitsPerSample > 16;
        const soxr_quality_spec_t quality = soxr_quality_spec(deep ? SOXR_VHQ : SOXR_HQ, 0);
        // One thread: the chain already has its own worker, and the machine may be small.
        const soxr_runtime_spec_t runtime = soxr_runtime_spec(1);
        soxr_error_t error = nullptr;
        m_resampler->handle = soxr_create(from.sampleRate, to.sampleRate, static_cast<unsigned>(m_rateChannels),
                                          &error, &io, &quality, &runtime);
        if (error || !m_resampler->handle)
            throw std::runtime_error(std::string("The resampler can't start: ") + (error ? error : "?"));
    }
}

PcmConverter::~PcmConverter() = default;

void PcmConverter::toFloat(const std::byte *data, size_t frames)
{
    // Every depth fits a double's 53-bit mantissa: nothing is lost on the way in.
    const size_t n = frames * static_cast<size_t>(m_from.channels);
    m_float.resize(n);
    double *out = m_float.data();
    switch (m_from.formatTag == TagFloat ? -m_from.bitsPerSample : m_from.bitsPerSample) {
    case -32:
        for (size_t i = 0; i < n; ++i) {
            const uint32_t bits = static_cast<uint32_t>(readLe(data + 4 * i, 4));
            float v;
            std::memcpy(&v, &bits, sizeof v);
            out[i] = std::isfinite(v) ? v : 0.0;
        }
        break;
    case -64:
        for (size_t i = 0; i < n; ++i) {
            double v;
            std::memcpy(&v, data + 8 * i, sizeof v);
            out[i] = std::isfinite(v) ? v : 0.0;
        }
        break;
    case 8:
        for (size_t i = 0; i < n; ++i)
            out[i] = (static_cast<double>(static_cast<uint8_t>(data[i])) - 128.0) / 128.0;
        break;
    case 16:
        for (size_t i = 0; i < n; ++i) {
            const auto s = static_cast<int16_t>(static_cast<uint16_t>(readLe(data + 2 * i, 2)));
            out[i] = static_cast<double>(s) / 32768.0;
        }
        break;
    case 24:
        for (size_t i = 0; i < n; ++i) {
            int32_t s = readLe(data + 3 * i, 3);
            if (s & 0x800000)
                s -= 0x1000000;
            out[i] = static_cast<double>(s) / 8388608.0;
        }
        break;
    case 32:
        for (size_t i = 0; i < n; ++i)
            out[i] = static_cast<double>(readLe(data + 4 * i, 4)) / 2147483648.0;
        break;
    }
}

void PcmConverter::mapChannels(const std::vector<double> &in, int inChannels, std::vector<double> &out, int outChannels,
                               size_t frames) const
{
    out.resize(frames * static_cast<size_t>(outChannels));
    const double *src = in.data();
    double *dst = out.data();
    if (outChannels == 1) {
        // Many to one: the average, so that a full-scale stereo sound can't clip.
        const double scale = 1.0 / static_cast<double>(inChannels);
        for (size_t f = 0; f < frames; ++f) {
            double sum = 0;
            for (int c = 0; c < inChannels; ++c)
                sum += src[f * inChannels + c];
            dst[f] = sum * scale;
        }
    } else {
        // One to many copies it; otherwise channels are taken in order, repeating if short.
        for (size_t f = 0; f < frames; ++f)
            for (int c = 0; c < outChannels; ++c)
                dst[f * outChannels + c] = src[f * inChannels + (c % inChannels)];
    }
}

void PcmConverter::resample(const double *in, size_t frames, bool last)
{
    const size_t ch = static_cast<size_t>(m_rateChannels);
    size_t capacity = static_cast<size_t>(std::ceil(static_cast<double>(frames) * m_resampler->ratio)) + 256;
    m_resampled.resize(capacity * ch);
    size_t used = 0;
    size_t made = 0;
    for (;;) {
        size_t idone = 0;
        size_t odone = 0;
        const size_t room = capacity - made;
        const soxr_error_t error =
            soxr_process(m_resampler->handle, last ? nullptr : in + used * ch, last ? 0 : frames - used, &idone,
                         m_resampled.data() + made * ch, room, &odone);
        if (error)
            throw std::runtime_error(std::string("The resampler failed: ") + error);
        used += idone;
        made += odone;
        if (odone == room) {
            // Out of room: there may be more to come.
            capacity += capacity / 2 + 256;
            m_resampled.resize(capacity * ch);
            continue;
        }
        if (last ? odone == 0 : used >= frames)
            break;
        if (idone == 0 && odone == 0)
            break; // no progress: never spin
    }
    m_resampled.resize(made * ch);
}

namespace {

// The one rounding of a conversion: to the nearest step of the target's depth, clipped to its range.
inline int64_t quantise(double v, double scale, int64_t low, int64_t high)
{
    const double scaled = std::nearbyint(v * scale);
    if (!(scaled > static_cast<double>(low)))
        return low;
    if (scaled > static_cast<double>(high))
        return high;
    return static_cast<int64_t>(scaled);
}

} // namespace

void PcmConverter::fromFloat(const double *in, size_t frames)
{
    const size_t n = frames * static_cast<size_t>(m_to.channels);
    const size_t start = m_out.size();
    m_out.resize(start + n * static_cast<size_t>(m_to.bitsPerSample / 8));
    std::byte *out = m_out.data() + start;
    switch (m_to.formatTag == TagFloat ? -m_to.bitsPerSample : m_to.bitsPerSample) {
    case -32:
        for (size_t i = 0; i < n; ++i) {
            const float f = static_cast<float>(in[i]);
            uint32_t bits;
            std::memcpy(&bits, &f, sizeof bits);
            writeLe(out + 4 * i, bits, 4);
        }
        break;
    case -64:
        std::memcpy(out, in, n * sizeof(double));
        break;
    case 8:
        for (size_t i = 0; i < n; ++i)
            out[i] = static_cast<std::byte>(quantise(in[i], 128.0, -128, 127) + 128);
        break;
    case 16:
        for (size_t i = 0; i < n; ++i)
            writeLe(out + 2 * i, static_cast<uint32_t>(quantise(in[i], 32768.0, -32768, 32767)), 2);
        break;
    case 24:
        for (size_t i = 0; i < n; ++i)
            writeLe(out + 3 * i, static_cast<uint32_t>(quantise(in[i], 8388608.0, -8388608, 8388607)), 3);
        break;
    case 32:
        for (size_t i = 0; i < n; ++i)
            writeLe(out + 4 * i, static_cast<uint32_t>(quantise(in[i], 2147483648.0, -2147483648LL, 2147483647LL)), 4);
        break;
    }
}

void PcmConverter::finishChunk(size_t frames)
{
    // m_float holds `frames` frames at the input's channels (or the resampled ones when called
    // from flush, already in m_resampled).
    const std::vector<double> *cur = &m_float;
    int channels = m_from.channels;
    if (m_to.channels < channels) {
        mapChannels(*cur, channels, m_mapped, m_to.channels, frames);
        cur = &m_mapped;
        channels = m_to.channels;
    }
    if (m_resampler) {
        resample(cur->data(), frames, false);
        cur = &m_resampled;
        frames = m_resampled.size() / static_cast<size_t>(channels);
    }
    if (m_to.channels > channels) {
        mapChannels(*cur, channels, m_expanded, m_to.channels, frames);
        cur = &m_expanded;
    }
    fromFloat(cur->data(), frames);
}

const std::vector<std::byte> &PcmConverter::convert(const std::byte *data, size_t bytes)
{
    m_out.clear();
    if (m_passThrough) {
        m_out.assign(data, data + bytes);
        return m_out;
    }
    const size_t frame = static_cast<size_t>(m_inFrameBytes);
    if (!m_partial.empty()) {
        const size_t take = std::min(frame - m_partial.size(), bytes);
        m_partial.insert(m_partial.end(), data, data + take);
        data += take;
        bytes -= take;
        if (m_partial.size() < frame)
            return m_out;
        toFloat(m_partial.data(), 1);
        m_partial.clear();
        finishChunk(1);
    }
    const size_t frames = bytes / frame;
    if (frames > 0) {
        toFloat(data, frames);
        finishChunk(frames);
    }
    m_partial.assign(data + frames * frame, data + bytes);
    return m_out;
}

const std::vector<std::byte> &PcmConverter::flush()
{
    m_out.clear();
    m_partial.clear();
    if (!m_resampler || m_passThrough)
        return m_out;
    resample(nullptr, 0, true);
    size_t frames = m_resampled.size() / static_cast<size_t>(m_rateChannels);
    const std::vector<double> *cur = &m_resampled;
    if (m_to.channels > m_rateChannels) {
        mapChannels(*cur, m_rateChannels, m_expanded, m_to.channels, frames);
        cur = &m_expanded;
    }
    fromFloat(cur->data(), frames);
    return m_out;
}

} // namespace platform::media
