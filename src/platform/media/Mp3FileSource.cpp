#include "Mp3FileSource.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <mpg123.h>

#include "runtime/Paths.h"
#include "runtime/RuntimeError.h"
#include "runtime/Strings.h"

namespace platform::media {

namespace {

void initLibrary()
{
    // Needed by libmpg123 before 1.27; harmless after.
    static const int once = mpg123_init();
    (void)once;
}

// The file as libmpg123 reads it: through one large buffer. The decoder asks for a frame at a
// time and the scan skips from header to header; straight to the system, that is two calls
// per frame, most of the time a scan takes.
struct BufferedFile {
    static constexpr size_t Capacity = 256 * 1024;

    int fd = -1;
    std::vector<unsigned char> buffer = std::vector<unsigned char>(Capacity);
    int64_t bufferStart = 0;
    size_t bufferLength = 0;
    int64_t position = 0;

    explicit BufferedFile(int descriptor) : fd(descriptor) {}
    ~BufferedFile()
    {
        if (fd >= 0)
            ::close(fd);
    }
    BufferedFile(const BufferedFile &) = delete;
    BufferedFile &operator=(const BufferedFile &) = delete;

    ssize_t readAt(void *to, size_t bytes, int64_t at)
    {
        for (;;) {
            const ssize_t n = ::pread(fd, to, bytes, static_cast<off_t>(at));
            if (n >= 0 || errno != EINTR)
                return n;
        }
    }

    static mpg123_ssize_t read(void *handle, void *to, size_t bytes)
    {
        auto *f = static_cast<BufferedFile *>(handle);
        auto *out = static_cast<unsigned char *>(to);
        size_t done = 0;
        while (done < bytes) {
            const int64_t offset = f->position - f->bufferStart;
            if (offset >= 0 && offset < static_cast<int64_t>(f->bufferLength)) {
                const size_t n = std::min(bytes - done, f->bufferLength - static_cast<size_t>(offset));
                std::memcpy(out + done, f->buffer.data() + offset, n);
                done += n;
                f->position += static_cast<int64_t>(n);
                continue;
            }
            if (bytes - done >= Capacity) {
                // Large reads go straight through.
                const ssize_t n = f->readAt(out + done, bytes - done, f->position);
                if (n < 0)
                    return done > 0 ? static_cast<mpg123_ssize_t>(done) : -1;
                done += static_cast<size_t>(n);
                f->position += n;
                if (n == 0)
                    break;
                continue;
            }
            const ssize_t n = f->readAt(f->buffer.data(), Capacity, f->position);
            if (n < 0)
                return done > 0 ? static_cast<mpg123_ssize_t>(done) : -1;
            f->bufferStart = f->position;
            f->bufferLength = static_cast<size_t>(n);
            if (n == 0)
                break; // the end of the file
        }
        return static_cast<mpg123_ssize_t>(done);
    }

    static off_t seek(void *handle, off_t offset, int whence)
    {
        auto *f = static_cast<BufferedFile *>(handle);
        int64_t base = 0;
        if (whence == SEEK_CUR) {
            base = f->position;
        } else if (whence == SEEK_END) {
            struct stat st {};
            if (::fstat(f->fd, &st) != 0)
                return -1;
            base = st.st_size;
        } else if (whence != SEEK_SET) {
            errno = EINVAL;
            return -1;
        }
        const int64_t target = base + offset;
        if (target < 0) {
            errno = EINVAL;
            return -1;
        }
        f->position = target;
        return static_cast<off_t>(target);
    }
};

} // namespace

// One libmpg123 stream on one file.
struct Mp3FileSource::Decoder {
    mpg123_handle *h = nullptr;
    std::unique_ptr<BufferedFile> file;

    explicit Decoder(bool floats)
    {
        initLibrary();
        h = mpg123_new(nullptr, nullptr);
        if (!h)
            return;
        // Gapless: the encoder's delay and padding come off, as the mpg123 tool does it.
        mpg123_param(h, MPG123_ADD_FLAGS, MPG123_GAPLESS | MPG123_QUIET, 0);
        // 16-bit or float at the file's own rate and channels, nothing resampled.
        mpg123_format_none(h);
        const long *rates = nullptr;
        size_t count = 0;
        mpg123_rates(&rates, &count);
        for (size_t i = 0; i < count; ++i)
            mpg123_format(h, rates[i], MPG123_MONO | MPG123_STEREO, floats ? MPG123_ENC_FLOAT_32 : MPG123_ENC_SIGNED_16);
    }
    ~Decoder()
    {
        if (h) {
            mpg123_close(h);
            mpg123_delete(h);
        }
    }
    Decoder(const Decoder &) = delete;
    Decoder &operator=(const Decoder &) = delete;

    bool open(const std::string &path)
    {
        if (!h)
            return false;
        const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (fd < 0)
            return false;
        mpg123_close(h);
        file = std::make_unique<BufferedFile>(fd);
        // The file stays ours: no clean-up callback, it goes after the stream is closed.
        if (mpg123_replace_reader_handle(h, &BufferedFile::read, &BufferedFile::seek, nullptr) != MPG123_OK)
            return false;
        return mpg123_open_handle(h, file.get()) == MPG123_OK;
    }
};

namespace {

std::string v1Field(const char *field, size_t width)
{
    std::string s(field, strnlen(field, width));
    while (!s.empty() && (s.back() == ' ' || s.back() == '\0'))
        s.pop_back();
    return rt::fromAnsi(s);
}

std::string v2Field(const mpg123_string *s)
{
    if (!s || !s->p || s->fill == 0)
        return {};
    return rt::Trim(std::string(s->p, strnlen(s->p, s->fill)));
}

// The track's name when its tag has none: the file's name, no folder or extension, "_" blank.
std::string titleFromFileName(const std::filesystem::path &file)
{
    // A name from an old Windows disc is shown as Windows-1252, as the file lists show it.
    std::string name = rt::nameText(file.stem().string());
    std::replace(name.begin(), name.end(), '_', ' ');
    return name;
}

} // namespace

Mp3FileSource::Mp3FileSource() = default;

Mp3FileSource::~Mp3FileSource()
{
    leavePump();
    closeSource();
}

bool Mp3FileSource::sameFile(const Probe &p, const std::string &nativeFile)
{
    struct stat st {};
    if (::stat(nativeFile.c_str(), &st) != 0)
        return false;
    return p.fileSize == static_cast<int64_t>(st.st_size) &&
           p.fileTime == static_cast<int64_t>(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec &&
           p.fileId == static_cast<uint64_t>(st.st_ino);
}

Mp3FileSource::Probe Mp3FileSource::probe(const std::string &nativeFile)
{
    Probe p;
    struct stat st {};
    if (::stat(nativeFile.c_str(), &st) != 0 || !S_ISREG(st.st_mode))
        return p;
    p.fileSize = static_cast<int64_t>(st.st_size);
    p.fileTime = static_cast<int64_t>(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
    p.fileId = static_cast<uint64_t>(st.st_ino);
    Decoder decoder(false);
    if (!decoder.open(nativeFile))
        return p;
    mpg123_handle *h = decoder.h;
    // The full scan: an exact length also for a file without an Info/Xing header.
    long rate = 0;
    int channels = 0;
    int encoding = 0;
    if (mpg123_scan(h) == MPG123_OK && mpg123_getformat(h, &rate, &channels, &encoding) == MPG123_OK &&
        rate > 0 && channels > 0) {
        const off_t samples = mpg123_length(h);
        p.readable = true;
        p.rate = static_cast<int>(rate);
        p.channels = channels;
        p.samples = samples > 0 ? static_cast<int64_t>(samples) : 0;
    }
    mpg123_id3v1 *v1 = nullptr;
    mpg123_id3v2 *v2 = nullptr;
    if (mpg123_id3(h, &v1, &v2) == MPG123_OK) {
        if (v2) {
            p.title = v2Field(v2->title);
            p.artist = v2Field(v2->artist);
        }
        if (v1 && p.title.empty())
            p.title = v1Field(v1->title, sizeof v1->title);
        if (v1 && p.artist.empty())
            p.artist = v1Field(v1->artist, sizeof v1->artist);
    }
    return p;
}

void Mp3FileSource::takeProbe(const Probe &p)
{
    m_probe = p;
    m_rate = p.rate;
    m_lengthSamples = p.samples;
    m_title = p.title.empty() ? titleFromFileName(rt::nativePath(m_fileName)) : p.title;
    m_artist = p.artist;
}

void Mp3FileSource::setFileName(const std::string &path)
{
    m_fileName = path;
    m_doneSamples = 0;
    takeProbe(probe(rt::nativePath(path).string()));
}

int32_t Mp3FileSource::Position()
{
    const int rate = m_rate;
    return rate > 0 ? static_cast<int32_t>(m_doneSamples * 1000 / rate) : 0;
}

int32_t Mp3FileSource::Length()
{
    const int rate = m_rate;
    return rate > 0 ? static_cast<int32_t>(m_lengthSamples * 1000 / rate) : 0;
}

StreamInfo Mp3FileSource::openSource()
{
    closeSource();
    const std::string file = rt::nativePath(m_fileName).string();
    struct stat st {};
    if (m_fileName.empty() || ::stat(file.c_str(), &st) != 0 || !S_ISREG(st.st_mode))
        rt::raise(rt::ErrFileNotFound);
    // Measured again only when the file has changed since it was named.
    if (!sameFile(m_probe, file))
        takeProbe(probe(file));
    else
        takeProbe(m_probe);
    m_doneSamples = 0;

    auto decoder = std::make_unique<Decoder>(m_floatSamples);
    if (!decoder->open(file))
        rt::raise(rt::ErrFileNotFound);

    m_info = StreamInfo{};
    m_info.title = m_title;
    m_info.artist = m_artist;
    long rate = 0;
    int channels = 0;
    int encoding = 0;
    const int rc = mpg123_getformat(decoder->h, &rate, &channels, &encoding);
    const int wanted = m_floatSamples ? MPG123_ENC_FLOAT_32 : MPG123_ENC_SIGNED_16;
    if (rc == MPG123_OK && rate > 0 && (channels == 1 || channels == 2) && encoding == wanted) {
        m_info.format = m_floatSamples ? WaveFormat{3, channels, static_cast<int>(rate), 32}
                                       : WaveFormat{1, channels, static_cast<int>(rate), 16};
        m_rate = static_cast<int>(rate);
        m_noAudio.reset();
    } else {
        // No MPEG audio in it: the chain still opens (the file is there); reading ends at once,
        // with an error unless the file is simply empty.
        m_info.format = WaveFormat::cdAudio();
        m_lengthSamples = 0;
        const bool empty = st.st_size == 0 || rc == MPG123_DONE;
        m_noAudio = empty ? SourceError{}
                          : SourceError{rc == MPG123_ERR ? mpg123_errcode(decoder->h) : rc,
                                        "The file holds no MPEG audio"};
    }
    m_frameBytes = m_info.format.channels * (m_info.format.bitsPerSample / 8);
    m_decoder = std::move(decoder);
    return m_info;
}

ReadResult Mp3FileSource::read(std::byte *buffer, size_t bytes)
{
    ReadResult r;
    if (!m_decoder || m_noAudio) {
        r.end = true;
        if (m_noAudio && m_noAudio->code != 0)
            r.error = m_noAudio;
        return r;
    }
    mpg123_handle *h = m_decoder->h;
    const size_t frame = static_cast<size_t>(m_frameBytes);
    const size_t want = bytes - bytes % frame;
    auto *out = reinterpret_cast<unsigned char *>(buffer);
    size_t got = 0;
    int idle = 0;
    while (got < want) {
        size_t done = 0;
        const int rc = mpg123_read(h, out + got, want - got, &done);
        got += done;
        if (rc == MPG123_OK) {
            // A decoder that gives nothing again and again has nothing more to give.
            if (done == 0 && ++idle > 64) {
                r.end = true;
                break;
            }
            continue;
        }
        if (rc == MPG123_DONE) {
            r.end = true;
            break;
        }
        if (rc == MPG123_NEW_FORMAT) {
            long rate = 0;
            int channels = 0;
            int encoding = 0;
            mpg123_getformat(h, &rate, &channels, &encoding);
            if (rate == m_info.format.sampleRate && channels == m_info.format.channels)
                continue;
            // The sink has been opened for the first shape; a damaged file is the usual cause.
            r.error = SourceError{MPG123_NEW_FORMAT, "The sound changes its format inside the file"};
            break;
        }
        const int code = rc == MPG123_ERR ? mpg123_errcode(h) : rc;
        r.error = SourceError{code, mpg123_strerror(h)};
        break;
    }
    got -= got % frame;
    r.bytes = got;
    m_doneSamples += static_cast<int64_t>(got / frame);
    if (r.end && !r.error)
        m_lengthSamples = m_doneSamples.load(); // the decoded length is the truth
    return r;
}

bool Mp3FileSource::seekTo(int64_t sample)
{
    if (!m_decoder || m_noAudio || sample < 0)
        return false;
    // Sample-exact: libmpg123 decodes up to the place from the frame before it.
    const off_t at = mpg123_seek(m_decoder->h, static_cast<off_t>(sample), SEEK_SET);
    if (at < 0)
        return false;
    m_doneSamples = static_cast<int64_t>(at);
    return true;
}

void Mp3FileSource::closeSource()
{
    m_decoder.reset();
}

} // namespace platform::media
