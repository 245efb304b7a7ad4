#include "MsAdpcmWaveWriter.h"

#include <algorithm>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

#include "MsAdpcm.h"

namespace platform::media {

namespace {

constexpr int MsAdpcmTag = 2;

void le16(std::vector<std::byte> &out, unsigned v)
{
    out.push_back(static_cast<std::byte>(v & 0xFF));
    out.push_back(static_cast<std::byte>((v >> 8) & 0xFF));
}

void le32(std::vector<std::byte> &out, uint32_t v)
{
    le16(out, v & 0xFFFF);
    le16(out, v >> 16);
}

void tag(std::vector<std::byte> &out, const char *fourcc)
{
    for (int i = 0; i < 4; ++i)
        out.push_back(static_cast<std::byte>(fourcc[i]));
}

// An INFO entry: its id, its size with the closing zero, the text, and a pad byte to an even size.
void infoEntry(std::vector<std::byte> &out, const char *id, const std::string &text)
{
    tag(out, id);
    le32(out, static_cast<uint32_t>(text.size() + 1));
    for (char c : text)
        out.push_back(static_cast<std::byte>(c));
    out.push_back(std::byte{0});
    if ((text.size() + 1) % 2)
        out.push_back(std::byte{0});
}

bool writeAll(int fd, const std::byte *data, size_t bytes, off_t at)
{
    while (bytes > 0) {
        const ssize_t n = ::pwrite(fd, data, bytes, at);
        if (n <= 0)
            return false;
        data += n;
        bytes -= static_cast<size_t>(n);
        at += n;
    }
    return true;
}

} // namespace

MsAdpcmWaveWriter::~MsAdpcmWaveWriter()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

bool MsAdpcmWaveWriter::open(const std::string &path, int channels, int sampleRate, const std::string &title,
                             const std::string &artist)
{
    if (m_fd >= 0)
        ::close(m_fd);
    m_fd = -1;
    if (channels < 1 || channels > 2 || sampleRate < 1)
        return false;
    m_channels = channels;
    m_blockAlign = msadpcm::blockAlignFor(sampleRate, channels);
    m_framesPerBlock = msadpcm::framesPerBlock(m_blockAlign, channels);
    m_block.assign(static_cast<size_t>(m_framesPerBlock) * static_cast<size_t>(channels), 0);
    m_blockFrames = 0;
    m_encoded.assign(static_cast<size_t>(m_blockAlign), std::byte{0});
    m_frames = 0;
    m_dataBytes = 0;

    std::vector<std::byte> head;
    tag(head, "RIFF");
    le32(head, 0);  // set at the close
    tag(head, "WAVE");
    tag(head, "fmt ");
    le32(head, 50);
    le16(head, MsAdpcmTag);
    le16(head, static_cast<unsigned>(channels));
    le32(head, static_cast<uint32_t>(sampleRate));
    const int64_t perSecond = (static_cast<int64_t>(sampleRate) * m_blockAlign + m_framesPerBlock / 2) / m_framesPerBlock;
    le32(head, static_cast<uint32_t>(perSecond));
    le16(head, static_cast<unsigned>(m_blockAlign));
    le16(head, 4);
    le16(head, 32);  // the extra bytes that follow
    le16(head, static_cast<unsigned>(m_framesPerBlock));
    le16(head, msadpcm::PredictorCount);
    for (const auto &pair : msadpcm::Coefficients) {
        le16(head, static_cast<uint16_t>(pair[0]));
        le16(head, static_cast<uint16_t>(pair[1]));
    }
    tag(head, "fact");
    le32(head, 4);
    m_factAt = static_cast<int64_t>(head.size());
    le32(head, 0);
    if (!title.empty() || !artist.empty()) {
        std::vector<std::byte> info;
        tag(info, "INFO");
        if (!title.empty())
            infoEntry(info, "INAM", title);
        if (!artist.empty())
            infoEntry(info, "IART", artist);
        tag(head, "LIST");
        le32(head, static_cast<uint32_t>(info.size()));
        head.insert(head.end(), info.begin(), info.end());
    }
    tag(head, "data");
    m_dataSizeAt = static_cast<int64_t>(head.size());
    le32(head, 0);

    m_fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (m_fd < 0)
        return false;
    if (!writeAll(m_fd, head.data(), head.size(), 0)) {
        ::close(m_fd);
        m_fd = -1;
        return false;
    }
    return true;
}

bool MsAdpcmWaveWriter::put(const std::byte *data, size_t bytes)
{
    const off_t at = static_cast<off_t>(m_dataSizeAt + 4 + m_dataBytes);
    if (!writeAll(m_fd, data, bytes, at))
        return false;
    m_dataBytes += static_cast<int64_t>(bytes);
    return true;
}

bool MsAdpcmWaveWriter::flushBlock()
{
    // A short last block is filled up with silence.
    std::fill(m_block.begin() + static_cast<ptrdiff_t>(m_blockFrames * static_cast<size_t>(m_channels)), m_block.end(),
              int16_t{0});
    msadpcm::encodeBlock(m_block.data(), m_channels, m_framesPerBlock, m_encoded.data());
    m_blockFrames = 0;
    return put(m_encoded.data(), m_encoded.size());
}

bool MsAdpcmWaveWriter::write(const int16_t *samples, size_t frames)
{
    if (m_fd < 0)
        return false;
    const size_t perBlock = static_cast<size_t>(m_framesPerBlock);
    const size_t channels = static_cast<size_t>(m_channels);
    while (frames > 0) {
        const size_t take = std::min(frames, perBlock - m_blockFrames);
        std::memcpy(m_block.data() + m_blockFrames * channels, samples, take * channels * sizeof(int16_t));
        m_blockFrames += take;
        samples += take * channels;
        frames -= take;
        m_frames += static_cast<int64_t>(take);
        if (m_blockFrames == perBlock && !flushBlock())
            return false;
    }
    return true;
}

bool MsAdpcmWaveWriter::close()
{
    if (m_fd < 0)
        return false;
    bool ok = m_blockFrames == 0 || flushBlock();
    if (ok) {
        auto patch = [this](int64_t at, int64_t value) {
            std::vector<std::byte> bytes;
            le32(bytes, static_cast<uint32_t>(std::min<int64_t>(value, 0xFFFFFFFFLL)));
            return writeAll(m_fd, bytes.data(), bytes.size(), static_cast<off_t>(at));
        };
        const int64_t fileSize = m_dataSizeAt + 4 + m_dataBytes;
        ok = patch(4, fileSize - 8) && patch(m_factAt, m_frames) && patch(m_dataSizeAt, m_dataBytes);
    }
    if (::close(m_fd) != 0)
        ok = false;
    m_fd = -1;
    return ok;
}

} // namespace platform::media
