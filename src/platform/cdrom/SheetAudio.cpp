#include "SheetAudio.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <vector>

#include <sndfile.h>

#include "platform/media/PcmConverter.h"

namespace platform::cdrom {

namespace fs = std::filesystem;

namespace {

constexpr int cdRate = 44100;
constexpr int cdFrameBytes = 4;

struct SndCloser {
    void operator()(SNDFILE *f) const { sf_close(f); }
};

uint32_t le32(const unsigned char *p)
{
    return uint32_t(p[0]) | (uint32_t(p[1]) << 8) | (uint32_t(p[2]) << 16) | (uint32_t(p[3]) << 24);
}

// libsndfile reads a wave cut short as a shorter one; a data chunk running past the file's end
// is such a wave. (A streamed header's size of 0 or all ones says nothing.)
bool waveCutShort(const fs::path &file, std::uintmax_t size)
{
    std::ifstream in(file, std::ios::binary);
    unsigned char head[12];
    if (!in.read(reinterpret_cast<char *>(head), sizeof head))
        return false;
    if (std::memcmp(head, "RIFF", 4) != 0 || std::memcmp(head + 8, "WAVE", 4) != 0)
        return false;
    std::uintmax_t at = sizeof head;
    for (int chunks = 0; chunks < 1000 && at + 8 <= size; ++chunks) {
        unsigned char chunk[8];
        in.seekg(static_cast<std::streamoff>(at));
        if (!in.read(reinterpret_cast<char *>(chunk), sizeof chunk))
            return false;
        const uint32_t n = le32(chunk + 4);
        if (std::memcmp(chunk, "data", 4) == 0)
            return n != 0xFFFFFFFFu && at + 8 + n > size;
        at += 8 + std::uintmax_t(n) + (n & 1);
    }
    return false;
}

// Keeps `out` to `limit` bytes and counts what went in.
struct Sink {
    std::ostream &out;
    std::uint64_t limit;
    std::uint64_t written = 0;

    bool put(const std::byte *data, size_t bytes)
    {
        if (written + bytes > limit)
            return false;
        out.write(reinterpret_cast<const char *>(data), static_cast<std::streamsize>(bytes));
        written += bytes;
        return static_cast<bool>(out);
    }
};

} // namespace

std::optional<std::uint64_t> appendSoundFile(const fs::path &file, std::ostream &out, std::uint64_t limit)
{
    std::error_code ec;
    // A FIFO or a device would block or never end.
    if (!fs::is_regular_file(file, ec))
        return std::nullopt;
    const auto size = fs::file_size(file, ec);
    if (ec || waveCutShort(file, size))
        return std::nullopt;
    SF_INFO info{};
    std::unique_ptr<SNDFILE, SndCloser> f(sf_open(file.c_str(), SFM_READ, &info));
    if (!f || info.channels < 1 || info.samplerate < 1 || info.frames < 0)
        return std::nullopt;
    std::unique_ptr<media::PcmConverter> converter;
    try {
        converter = std::make_unique<media::PcmConverter>(WaveFormat{1, info.channels, info.samplerate, 16},
                                                          WaveFormat::cdAudio());
    } catch (const std::exception &) {
        return std::nullopt;
    }
    // The length the rate's ratio gives; the resampler may be a few samples off either way.
    const std::uint64_t want =
        static_cast<std::uint64_t>(std::llround(static_cast<double>(info.frames) * cdRate / info.samplerate)) * cdFrameBytes;
    if (want > limit)
        return std::nullopt;
    Sink sink{out, want};
    constexpr sf_count_t chunkFrames = 8192;
    const auto channels = static_cast<size_t>(info.channels);
    std::vector<short> samples(static_cast<size_t>(chunkFrames) * channels);
    std::vector<std::byte> bytes;
    sf_count_t framesIn = 0;
    try {
        for (;;) {
            const sf_count_t got = sf_readf_short(f.get(), samples.data(), chunkFrames);
            if (got <= 0)
                break;
            framesIn += got;
            const size_t n = static_cast<size_t>(got) * channels;
            bytes.resize(n * 2);
            for (size_t i = 0; i < n; ++i) {
                const auto u = static_cast<uint16_t>(samples[i]);
                bytes[2 * i] = static_cast<std::byte>(u & 0xFF);
                bytes[2 * i + 1] = static_cast<std::byte>(u >> 8);
            }
            const auto &converted = converter->convert(bytes.data(), bytes.size());
            const size_t take = static_cast<size_t>(std::min<std::uint64_t>(converted.size(), sink.limit - sink.written));
            if (!sink.put(converted.data(), take))
                return std::nullopt;
        }
        if (sf_error(f.get()) != SF_ERR_NO_ERROR || framesIn < info.frames)
            return std::nullopt;
        if (!converter->passThrough()) {
            const auto &rest = converter->flush();
            const size_t take = static_cast<size_t>(std::min<std::uint64_t>(rest.size(), sink.limit - sink.written));
            if (!sink.put(rest.data(), take))
                return std::nullopt;
        }
    } catch (const std::exception &) {
        return std::nullopt;
    }
    const std::vector<std::byte> silence(static_cast<size_t>(want - sink.written));
    if (!sink.put(silence.data(), silence.size()))
        return std::nullopt;
    return sink.written;
}

std::optional<std::uint64_t> appendRawFile(const fs::path &file, std::ostream &out, std::uint64_t limit, bool bigEndian)
{
    std::error_code ec;
    if (!fs::is_regular_file(file, ec))
        return std::nullopt;
    const auto size = fs::file_size(file, ec);
    if (ec || size > limit)
        return std::nullopt;
    std::ifstream in(file, std::ios::binary);
    if (!in)
        return std::nullopt;
    Sink sink{out, limit};
    // A megabyte at a time, but no more than the file holds: sheets often name many small BINs.
    std::vector<char> buffer(static_cast<size_t>(std::clamp<std::uintmax_t>(size, 1, 1 << 20)));
    while (in) {
        in.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        const auto got = static_cast<size_t>(in.gcount());
        if (got == 0)
            break;
        // Big-endian audio (a MOTOROLA file) goes in little-endian, as the rest of the BIN.
        if (bigEndian) {
            for (size_t i = 0; i + 1 < got; i += 2)
                std::swap(buffer[i], buffer[i + 1]);
        }
        if (!sink.put(reinterpret_cast<const std::byte *>(buffer.data()), got))
            return std::nullopt;
    }
    if (in.bad() || sink.written != size)
        return std::nullopt;
    return sink.written;
}

} // namespace platform::cdrom
