#include "WaveFileComponent.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <sndfile.h>
#include <unistd.h>

#include "MsAdpcmWaveWriter.h"
#include "runtime/Paths.h"
#include "runtime/RuntimeError.h"

namespace platform::media {

namespace {

// The libsndfile encoding of a wave format; 0 when a wave file can't hold it.
int subtypeOf(const WaveFormat &f)
{
    switch (f.formatTag) {
    case 1:
        switch (f.bitsPerSample) {
        case 8: return SF_FORMAT_PCM_U8;
        case 16: return SF_FORMAT_PCM_16;
        case 24: return SF_FORMAT_PCM_24;
        case 32: return SF_FORMAT_PCM_32;
        }
        return 0;
    case 3: return f.bitsPerSample == 32 ? SF_FORMAT_FLOAT : f.bitsPerSample == 64 ? SF_FORMAT_DOUBLE : 0;
    case 6: return SF_FORMAT_ALAW;
    case 7: return SF_FORMAT_ULAW;
    case 2: return SF_FORMAT_MS_ADPCM;
    case 0x11: return SF_FORMAT_IMA_ADPCM;
    case 0x31: return SF_FORMAT_GSM610;
    }
    return 0;
}

// The samples a file of that format is written from: itself when it is PCM or float,
// 16-bit PCM for the compressed ones (libsndfile encodes them).
WaveFormat streamFormatFor(const WaveFormat &f)
{
    if (f.formatTag == 1 || f.formatTag == 3)
        return f;
    return WaveFormat{1, f.channels, f.sampleRate, 16};
}

// The samples a wave file is read as: PCM and float at the file's own depth, so that nothing is
// lost on the way; the compressed encodings decode to 16-bit PCM, which holds all they carry.
WaveFormat readingFormatOf(const SF_INFO &info)
{
    WaveFormat f{1, info.channels, info.samplerate, 16};
    switch (info.format & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_PCM_U8:
    case SF_FORMAT_PCM_S8: f.bitsPerSample = 8; break;
    case SF_FORMAT_PCM_24: f.bitsPerSample = 24; break;
    case SF_FORMAT_PCM_32: f.bitsPerSample = 32; break;
    case SF_FORMAT_FLOAT: f = WaveFormat{3, info.channels, info.samplerate, 32}; break;
    case SF_FORMAT_DOUBLE: f = WaveFormat{3, info.channels, info.samplerate, 64}; break;
    }
    return f;
}

std::string stringOf(SNDFILE *file, int type)
{
    const char *s = sf_get_string(file, type);
    return s ? std::string(s) : std::string();
}

} // namespace

WaveFileComponent::WaveFileComponent(rt::EventLoop &loop) : m_loop(loop) {}

WaveFileComponent::~WaveFileComponent()
{
    leavePump();
    closeFile();
}

namespace {

// Sets the sample count of a wave file's fact chunk; the file is left as it is when it has none.
void setFactFrames(const std::filesystem::path &file, int64_t frames)
{
    if (frames < 0 || frames > 0xFFFFFFFFLL)
        return;
    const int fd = ::open(file.c_str(), O_RDWR | O_CLOEXEC);
    if (fd < 0)
        return;
    auto le32 = [](const unsigned char *p) {
        return static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 | static_cast<uint32_t>(p[2]) << 16
               | static_cast<uint32_t>(p[3]) << 24;
    };
    unsigned char head[12];
    if (::pread(fd, head, sizeof head, 0) == static_cast<ssize_t>(sizeof head) && std::memcmp(head, "RIFF", 4) == 0
        && std::memcmp(head + 8, "WAVE", 4) == 0) {
        // The chunks before the audio; the fact chunk comes before "data" in every writer's files.
        off_t at = 12;
        for (int chunks = 0; chunks < 64; ++chunks) {
            unsigned char chunk[8];
            if (::pread(fd, chunk, sizeof chunk, at) != static_cast<ssize_t>(sizeof chunk) || std::memcmp(chunk, "data", 4) == 0)
                break;
            const uint32_t size = le32(chunk + 4);
            if (std::memcmp(chunk, "fact", 4) == 0 && size >= 4) {
                const uint32_t count = static_cast<uint32_t>(frames);
                const unsigned char bytes[4] = {static_cast<unsigned char>(count), static_cast<unsigned char>(count >> 8),
                                                static_cast<unsigned char>(count >> 16), static_cast<unsigned char>(count >> 24)};
                if (::pwrite(fd, bytes, sizeof bytes, at + 8) != static_cast<ssize_t>(sizeof bytes)) {
                    // The count stays as the library wrote it.
                }
                break;
            }
            at += 8 + static_cast<off_t>(size) + (size & 1);
        }
    }
    ::close(fd);
}

} // namespace

void WaveFileComponent::closeFile()
{
    if (m_msAdpcm) {
        if (!m_msAdpcm->close() && m_mode == Mode::Writing)
            writeFailed();
        m_msAdpcm.reset();
    }
    if (m_file) {
        sf_close(m_file);
        if (m_mode == Mode::Writing && m_blockCoded && m_frameBytes > 0)
            setFactFrames(rt::nativePath(m_fileName), m_dataPosition / m_frameBytes);
    }
    m_file = nullptr;
    m_mode = Mode::Closed;
    m_converter.reset();
    m_carry.clear();
}

StreamInfo WaveFileComponent::openSource()
{
    closeFile();
    // FileMustExist matters only here: a sink always creates its file.
    const std::filesystem::path file = rt::nativePath(m_fileName);
    std::error_code ec;
    if (m_fileName.empty() || !std::filesystem::is_regular_file(file, ec))
        rt::raise(rt::ErrFileNotFound);
    SF_INFO info{};
    SNDFILE *f = sf_open(file.c_str(), SFM_READ, &info);
    if (!f)
        rt::raise(rt::ErrFileNotFound);
    // libsndfile also opens AIFF, FLAC, even MP3, whatever the name says; a wave file is asked for.
    const int container = info.format & SF_FORMAT_TYPEMASK;
    const bool wave = container == SF_FORMAT_WAV || container == SF_FORMAT_WAVEX || container == SF_FORMAT_RF64 ||
                      container == SF_FORMAT_W64;
    if (!wave || info.channels < 1 || info.channels > 32 || info.samplerate < 1 || info.samplerate > 1000000) {
        sf_close(f);
        rt::raise(rt::ErrFileNotFound);
    }
    m_file = f;
    m_mode = Mode::Reading;
    m_failed = false;
    m_channels = info.channels;
    m_readAs = readingFormatOf(info);
    m_frameBytes = info.channels * (m_readAs.bitsPerSample / 8);
    m_dataPosition = 0;
    m_dataSize = info.frames > 0 ? info.frames * m_frameBytes : 0;

    StreamInfo out;
    out.format = m_readAs;
    out.title = stringOf(f, SF_STR_TITLE);
    out.artist = stringOf(f, SF_STR_ARTIST);
    return out;
}

ReadResult WaveFileComponent::read(std::byte *buffer, size_t bytes)
{
    ReadResult r;
    if (m_mode != Mode::Reading || !m_file) {
        r.end = true;
        return r;
    }
    const sf_count_t frames = static_cast<sf_count_t>(bytes / static_cast<size_t>(m_frameBytes));
    const sf_count_t got = frames > 0 ? readFrames(buffer, frames) : 0;
    if (got > 0) {
        r.bytes = static_cast<size_t>(got) * static_cast<size_t>(m_frameBytes);
        m_dataPosition += static_cast<int64_t>(r.bytes);
    }
    if (got < frames) {
        r.end = true;
        if (const int e = sf_error(m_file); e != SF_ERR_NO_ERROR)
            r.error = SourceError{e, sf_strerror(m_file)};
    }
    return r;
}

int64_t WaveFileComponent::readFrames(std::byte *buffer, int64_t frames)
{
    const size_t samples = static_cast<size_t>(frames) * static_cast<size_t>(m_channels);
    if (m_readAs.formatTag == 3 && m_readAs.bitsPerSample == 64)
        return sf_readf_double(m_file, reinterpret_cast<double *>(buffer), frames);
    if (m_readAs.formatTag == 3)
        return sf_readf_float(m_file, reinterpret_cast<float *>(buffer), frames);
    if (m_readAs.bitsPerSample == 16)
        return sf_readf_short(m_file, reinterpret_cast<short *>(buffer), frames);
    // 8, 24 and 32 bit come as ints with the sample in the top bits; they are packed back to
    // the file's own width, so every sample arrives exactly as stored.
    m_wide.resize(samples);
    const sf_count_t got = sf_readf_int(m_file, m_wide.data(), frames);
    const size_t n = got > 0 ? static_cast<size_t>(got) * static_cast<size_t>(m_channels) : 0;
    const int width = m_readAs.bitsPerSample / 8;
    for (size_t i = 0; i < n; ++i) {
        const auto v = static_cast<uint32_t>(m_wide[i]);
        std::byte *p = buffer + i * static_cast<size_t>(width);
        switch (width) {
        case 1: p[0] = static_cast<std::byte>((v >> 24) ^ 0x80); break;
        case 3:
            p[0] = static_cast<std::byte>(v >> 8);
            p[1] = static_cast<std::byte>(v >> 16);
            p[2] = static_cast<std::byte>(v >> 24);
            break;
        default: std::memcpy(p, &v, 4); break;
        }
    }
    return got;
}

void WaveFileComponent::closeSource()
{
    if (m_mode == Mode::Reading)
        closeFile();
}

void WaveFileComponent::openSink(const StreamInfo &info)
{
    closeFile();
    const WaveFormat fileFormat = m_target ? *m_target : info.storeAs ? *info.storeAs : info.format;
    const WaveFormat stream = streamFormatFor(fileFormat);
    const int subtype = subtypeOf(fileFormat);
    if (subtype == 0 || !PcmConverter::supports(stream) || !PcmConverter::supports(info.format))
        rt::raise(rt::ErrPathFileAccess);

    SF_INFO sf{};
    sf.samplerate = fileFormat.sampleRate;
    sf.channels = fileFormat.channels;
    sf.format = SF_FORMAT_WAV | subtype;
    if (!sf_format_check(&sf))
        rt::raise(rt::ErrPathFileAccess);

    std::unique_ptr<PcmConverter> converter;
    if (!(stream == info.format)) {
        try {
            converter = std::make_unique<PcmConverter>(info.format, stream);
        } catch (const std::exception &) {
            rt::raise(rt::ErrPathFileAccess);
        }
    }

    const std::filesystem::path file = rt::nativePath(m_fileName);
    SNDFILE *f = nullptr;
    if (subtype == SF_FORMAT_MS_ADPCM) {
        // libsndfile's encoder picks its predictors by rule of thumb; ours tries them all.
        auto writer = std::make_unique<MsAdpcmWaveWriter>();
        if (m_fileName.empty() || !writer->open(file, fileFormat.channels, fileFormat.sampleRate, info.title, info.artist))
            rt::raise(rt::ErrPathFileAccess);
        m_msAdpcm = std::move(writer);
    } else {
        f = m_fileName.empty() ? nullptr : sf_open(file.c_str(), SFM_WRITE, &sf);
        if (!f)
            rt::raise(rt::ErrPathFileAccess);
        // Raw writes bypass the peak figures, so a float file gets none rather than wrong ones.
        if (subtype == SF_FORMAT_FLOAT)
            sf_command(f, SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
        // Before any audio, so the names land in the header where the writing engine finds them.
        if (!info.title.empty())
            sf_set_string(f, SF_STR_TITLE, info.title.c_str());
        if (!info.artist.empty())
            sf_set_string(f, SF_STR_ARTIST, info.artist.c_str());
    }

    m_file = f;
    m_mode = Mode::Writing;
    m_failed = false;
    m_converter = std::move(converter);
    m_channels = stream.channels;
    m_frameBytes = stream.channels * (stream.bitsPerSample / 8);
    // PCM and float wave data are little-endian, as the stream is: the bytes go as they are.
    m_rawWrite = stream == fileFormat;
    m_blockCoded = subtype == SF_FORMAT_IMA_ADPCM;
    m_carry.clear();
    m_dataPosition = 0;
    m_dataSize = 0;
}

bool WaveFileComponent::writeFile(const std::byte *data, size_t bytes)
{
    if (bytes == 0)
        return true;
    sf_count_t written = 0;
    sf_count_t wanted = 0;
    if (m_msAdpcm) {
        m_samples.resize(bytes / 2);
        std::memcpy(m_samples.data(), data, m_samples.size() * 2);
        wanted = static_cast<sf_count_t>(m_samples.size());
        written = m_msAdpcm->write(m_samples.data(), m_samples.size() / static_cast<size_t>(m_channels)) ? wanted : 0;
    } else if (m_rawWrite) {
        wanted = static_cast<sf_count_t>(bytes);
        written = sf_write_raw(m_file, data, wanted);
    } else {
        m_samples.resize(bytes / 2);
        std::memcpy(m_samples.data(), data, m_samples.size() * 2);
        wanted = static_cast<sf_count_t>(m_samples.size());
        written = sf_write_short(m_file, m_samples.data(), wanted);
    }
    if (written != wanted) {
        writeFailed();
        return false;
    }
    m_dataPosition += static_cast<int64_t>(bytes);
    m_dataSize = m_dataPosition.load();
    return true;
}

void WaveFileComponent::writeFailed()
{
    if (m_failed)
        return;
    m_failed = true;
    m_loop.postEvent(m_alive, [this] {
        fireEvent(OnWriteFailed);
    });
}

bool WaveFileComponent::write(const std::byte *data, size_t bytes)
{
    if (m_mode != Mode::Writing || !(m_file || m_msAdpcm) || m_failed)
        return false;
    try {
        if (m_converter) {
            const std::vector<std::byte> &out = m_converter->convert(data, bytes);
            return writeFile(out.data(), out.size());
        }
        // Whole frames only; a part frame waits for the rest.
        const size_t frame = static_cast<size_t>(m_frameBytes);
        if (!m_carry.empty()) {
            const size_t take = std::min(frame - m_carry.size(), bytes);
            m_carry.insert(m_carry.end(), data, data + take);
            data += take;
            bytes -= take;
            if (m_carry.size() == frame) {
                if (!writeFile(m_carry.data(), frame))
                    return false;
                m_carry.clear();
            }
        }
        const size_t whole = bytes - bytes % frame;
        if (!writeFile(data, whole))
            return false;
        m_carry.assign(data + whole, data + bytes);
        return true;
    } catch (const std::exception &) {
        writeFailed();
        return false;
    }
}

void WaveFileComponent::closeSink()
{
    if (m_mode != Mode::Writing)
        return;
    if (m_converter && !m_failed) {
        try {
            const std::vector<std::byte> &tail = m_converter->flush();
            writeFile(tail.data(), tail.size());
        } catch (const std::exception &) {
            writeFailed();
        }
    }
    // The header gets its final sizes here.
    closeFile();
}

} // namespace platform::media
