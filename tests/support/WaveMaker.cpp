#include "WaveMaker.h"

#include <cmath>
#include <numbers>
#include <vector>

#include <sndfile.h>

#include "runtime/Paths.h"

namespace testsupport {

bool makeWave(const std::string &path, const WaveOptions &o)
{
    SF_INFO info{};
    info.samplerate = o.sampleRate;
    info.channels = o.channels;
    const int subtype = o.bits == 8 ? SF_FORMAT_PCM_U8 : o.bits == 24 ? SF_FORMAT_PCM_24 : o.bits == 32 ? SF_FORMAT_PCM_32 : SF_FORMAT_PCM_16;
    info.format = SF_FORMAT_WAV | subtype;
    SNDFILE *file = sf_open(rt::nativePath(path).c_str(), SFM_WRITE, &info);
    if (!file)
        return false;
    const sf_count_t frames = static_cast<sf_count_t>(std::llround(o.seconds * o.sampleRate));
    std::vector<float> block;
    bool ok = true;
    for (sf_count_t at = 0; at < frames && ok; at += 4096) {
        const sf_count_t n = std::min<sf_count_t>(4096, frames - at);
        block.assign(static_cast<size_t>(n * o.channels), 0.0f);
        for (sf_count_t i = 0; i < n; ++i) {
            const double t = static_cast<double>(at + i) / o.sampleRate;
            for (int c = 0; c < o.channels; ++c)
                block[static_cast<size_t>(i * o.channels + c)] = static_cast<float>(0.5 * std::sin(2 * std::numbers::pi * (c == 1 ? 1000.0 : 440.0) * t));
        }
        ok = sf_writef_float(file, block.data(), n) == n;
    }
    return sf_close(file) == 0 && ok;
}

} // namespace testsupport
