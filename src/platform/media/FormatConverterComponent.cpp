#include "FormatConverterComponent.h"

#include <algorithm>
#include <cstring>

#include "runtime/RuntimeError.h"

namespace platform::media {

FormatConverterComponent::~FormatConverterComponent()
{
    leavePump();
}

StreamInfo FormatConverterComponent::convertedInfo(const StreamInfo &in) const
{
    StreamInfo out = in;
    if (!m_format)
        return out;
    const WaveFormat &f = *m_format;
    if (f.formatTag == 1 || f.formatTag == 3) {
        out.format = f;
        out.storeAs.reset();
    } else {
        out.format = WaveFormat{1, f.channels, f.sampleRate, 16};
        out.storeAs = f;
    }
    return out;
}

void FormatConverterComponent::makeConverter(const WaveFormat &from, const WaveFormat &to)
{
    m_converter.reset();
    if (!(from == to))
        m_converter = std::make_unique<PcmConverter>(from, to);
    m_outFrameBytes = to.channels * (to.bitsPerSample / 8);
}

StreamInfo FormatConverterComponent::openSource()
{
    closeSource();
    auto *upstream = dynamic_cast<PcmSource *>(Input());
    if (!upstream || upstream == this)
        rt::raise(rt::ErrFileNotFound);
    const StreamInfo in = upstream->openSource();
    const StreamInfo out = convertedInfo(in);
    try {
        makeConverter(in.format, out.format);
    } catch (const std::exception &) {
        upstream->closeSource();
        rt::raise(rt::ErrFileNotFound);
    }
    m_upstream = upstream;
    m_pending.clear();
    m_pendingAt = 0;
    m_inputEnded = false;
    m_flushed = false;
    return out;
}

ReadResult FormatConverterComponent::read(std::byte *buffer, size_t bytes)
{
    ReadResult r;
    if (!m_upstream) {
        r.end = true;
        return r;
    }
    if (!m_converter)
        return m_upstream->read(buffer, bytes);

    const size_t frame = static_cast<size_t>(m_outFrameBytes);
    const size_t want = bytes - bytes % frame;
    const size_t inFrame = static_cast<size_t>(m_converter->from().channels * (m_converter->from().bitsPerSample / 8));
    const size_t pull = std::max(inFrame, bytes - bytes % inFrame);
    m_pullBuffer.resize(pull);
    int idle = 0;
    try {
        while (r.bytes < want) {
            if (m_pendingAt < m_pending.size()) {
                const size_t n = std::min(want - r.bytes, m_pending.size() - m_pendingAt);
                std::memcpy(buffer + r.bytes, m_pending.data() + m_pendingAt, n);
                r.bytes += n;
                m_pendingAt += n;
                continue;
            }
            m_pending.clear();
            m_pendingAt = 0;
            if (m_flushed) {
                r.end = true;
                break;
            }
            if (m_inputEnded) {
                m_pending = m_converter->flush();
                m_flushed = true;
                continue;
            }
            const ReadResult in = m_upstream->read(m_pullBuffer.data(), pull);
            if (in.bytes > 0)
                m_pending = m_converter->convert(m_pullBuffer.data(), in.bytes);
            if (in.error) {
                r.error = in.error;
                r.end = true;
                break;
            }
            if (in.end)
                m_inputEnded = true;
            else if (in.bytes == 0 && ++idle > 64)
                m_inputEnded = true;
        }
    } catch (const std::exception &e) {
        r.error = SourceError{0, e.what()};
        r.end = true;
    }
    r.bytes -= r.bytes % frame;
    return r;
}

void FormatConverterComponent::closeSource()
{
    if (m_upstream)
        m_upstream->closeSource();
    m_upstream = nullptr;
    m_converter.reset();
    m_pending.clear();
    m_pendingAt = 0;
}

void FormatConverterComponent::openSink(const StreamInfo &info)
{
    closeSink();
    auto *downstream = dynamic_cast<PcmSink *>(Output());
    if (!downstream || downstream == this)
        rt::raise(rt::ErrPathFileAccess);
    const StreamInfo out = convertedInfo(info);
    try {
        makeConverter(info.format, out.format);
    } catch (const std::exception &) {
        rt::raise(rt::ErrPathFileAccess);
    }
    downstream->openSink(out);
    m_downstream = downstream;
}

bool FormatConverterComponent::write(const std::byte *data, size_t bytes)
{
    if (!m_downstream)
        return false;
    if (!m_converter)
        return m_downstream->write(data, bytes);
    try {
        const std::vector<std::byte> &out = m_converter->convert(data, bytes);
        return out.empty() || m_downstream->write(out.data(), out.size());
    } catch (const std::exception &) {
        return false;
    }
}

void FormatConverterComponent::closeSink()
{
    if (!m_downstream)
        return;
    if (m_converter) {
        try {
            const std::vector<std::byte> &tail = m_converter->flush();
            if (!tail.empty())
                m_downstream->write(tail.data(), tail.size());
        } catch (const std::exception &) {
        }
    }
    m_downstream->closeSink();
    m_downstream = nullptr;
    m_converter.reset();
}

} // namespace platform::media
