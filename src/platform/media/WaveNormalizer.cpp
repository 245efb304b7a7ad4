#include "WaveNormalizer.h"

#include <sndfile.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "runtime/Paths.h"

namespace platform::media {

namespace {

constexpr sf_count_t BlockFrames = 16384;

struct SndfileCloser {
    void operator()(SNDFILE *f) const { sf_close(f); }
};
using Sndfile = std::unique_ptr<SNDFILE, SndfileCloser>;

// Bits of an integer PCM subformat; 0 for the others, which are scaled as floating point.
int integerBits(int format)
{
    switch (format & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_PCM_S8:
    case SF_FORMAT_PCM_U8:
        return 8;
    case SF_FORMAT_PCM_16:
        return 16;
    case SF_FORMAT_PCM_24:
        return 24;
    case SF_FORMAT_PCM_32:
        return 32;
    default:
        return 0;
    }
}

// Reports each whole percent once.
class Progress {
public:
    Progress(const std::function<void(int32_t, int32_t)> &report, int32_t phase, sf_count_t total)
        : m_report(report), m_phase(phase), m_total(std::max<sf_count_t>(total, 1))
    {
    }
    void at(sf_count_t done)
    {
        const auto percent = static_cast<int32_t>(std::min<sf_count_t>(100, done * 100 / m_total));
        if (percent != m_last && m_report) {
            m_last = percent;
            m_report(percent, m_phase);
        }
    }

private:
    const std::function<void(int32_t, int32_t)> &m_report;
    int32_t m_phase;
    sf_count_t m_total;
    int32_t m_last = -1;
};

const int stringTypes[] = {SF_STR_TITLE, SF_STR_COPYRIGHT, SF_STR_SOFTWARE, SF_STR_ARTIST, SF_STR_COMMENT,
                           SF_STR_DATE, SF_STR_ALBUM, SF_STR_LICENSE, SF_STR_TRACKNUMBER, SF_STR_GENRE};

} // namespace

bool normalizeWaveFile(const std::string &path, int32_t level, const std::function<void(int32_t, int32_t)> &progress)
{
    SF_INFO info{};
    Sndfile in(sf_open(path.c_str(), SFM_READ, &info));
    if (!in || info.channels <= 0 || info.frames <= 0)
        return false;
    const int bits = integerBits(info.format);
    const size_t block = static_cast<size_t>(BlockFrames) * static_cast<size_t>(info.channels);

    // Pass 1: the peak, as integers of the file's own size or as floating point.
    double peak = 0.0;
    {
        Progress scan(progress, 0, info.frames);
        std::vector<int> ints(bits ? block : 0);
        std::vector<double> reals(bits ? 0 : block);
        sf_count_t done = 0;
        for (;;) {
            const sf_count_t got = bits ? sf_readf_int(in.get(), ints.data(), BlockFrames)
                                        : sf_readf_double(in.get(), reals.data(), BlockFrames);
            if (got <= 0)
                break;
            const size_t n = static_cast<size_t>(got) * static_cast<size_t>(info.channels);
            for (size_t i = 0; i < n; ++i)
                peak = std::max(peak, bits ? std::fabs(static_cast<double>(ints[i])) : std::fabs(reals[i]));
            done += got;
            scan.at(done);
        }
        scan.at(info.frames);
    }
    if (peak <= 0.0)
        return false;
    // Full scale is the magnitude of the most negative sample, as the samples' own scale has it.
    const double fullScale = bits ? 2147483648.0 : 1.0;
    const double gain = (level / 100.0) * fullScale / peak;

    // Pass 2: into a new file beside the old one, in the same format with the same tags.
    std::string tmpName;
    const int fd = rt::createFileBeside(path, tmpName);
    if (fd < 0)
        return false;
    SF_INFO outInfo = info;
    Sndfile out(sf_open_fd(fd, SFM_WRITE, &outInfo, SF_TRUE));
    if (!out) {
        ::close(fd);
        ::unlink(tmpName.c_str());
        return false;
    }
    for (int type : stringTypes) {
        if (const char *text = sf_get_string(in.get(), type))
            sf_set_string(out.get(), type, text);
    }
    sf_command(out.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);
    bool ok = sf_seek(in.get(), 0, SEEK_SET) == 0;
    Progress rewrite(progress, 1, info.frames);
    std::vector<int> ints(bits ? block : 0);
    std::vector<double> reals(bits ? 0 : block);
    // Integers are rounded at the file's own bit depth, so the library's shift down is exact.
    const double step = bits ? std::ldexp(1.0, 32 - bits) : 1.0;
    const double top = bits ? (2147483648.0 - step) / step : 0.0;
    const double bottom = bits ? -2147483648.0 / step : 0.0;
    sf_count_t done = 0;
    while (ok) {
        const sf_count_t got = bits ? sf_readf_int(in.get(), ints.data(), BlockFrames)
                                    : sf_readf_double(in.get(), reals.data(), BlockFrames);
        if (got <= 0)
            break;
        const size_t n = static_cast<size_t>(got) * static_cast<size_t>(info.channels);
        if (bits) {
            for (size_t i = 0; i < n; ++i) {
                const double v = std::clamp(std::nearbyint(ints[i] * gain / step), bottom, top);
                ints[i] = static_cast<int>(v * step);
            }
            ok = sf_writef_int(out.get(), ints.data(), got) == got;
        } else {
            for (size_t i = 0; i < n; ++i)
                reals[i] *= gain;
            ok = sf_writef_double(out.get(), reals.data(), got) == got;
        }
        done += got;
        rewrite.at(done);
    }
    ok = ok && done == info.frames;
    sf_write_sync(out.get());
    ok = ok && sf_error(out.get()) == SF_ERR_NO_ERROR;
    out.reset();
    in.reset();
    if (!ok) {
        ::unlink(tmpName.c_str());
        return false;
    }
    return rt::replaceWithFile(tmpName, path);
}

} // namespace platform::media
