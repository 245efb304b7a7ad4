#include "WritableWaveFormats.h"

#include <algorithm>
#include <tuple>

#include <sndfile.h>

namespace platform::media {

namespace {

struct Encoding {
    int formatTag;
    int bitsPerSample;  // as the format record states it; 0 for GSM 6.10
    int subtype;
};

constexpr Encoding encodings[] = {
    {1, 8, SF_FORMAT_PCM_U8},
    {1, 16, SF_FORMAT_PCM_16},
    {1, 24, SF_FORMAT_PCM_24},
    {1, 32, SF_FORMAT_PCM_32},
    {3, 32, SF_FORMAT_FLOAT},
    {6, 8, SF_FORMAT_ALAW},
    {7, 8, SF_FORMAT_ULAW},
    {0x11, 4, SF_FORMAT_IMA_ADPCM},
    {2, 4, SF_FORMAT_MS_ADPCM},
    {0x31, 0, SF_FORMAT_GSM610},
};

constexpr int rates[] = {8000, 11025, 16000, 22050, 32000, 44100, 48000};

bool libsndfileWrites(const Encoding &e, int rate, int channels)
{
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = channels;
    info.format = SF_FORMAT_WAV | e.subtype;
    return sf_format_check(&info) != 0;
}

} // namespace

std::vector<WaveFormat> writableWaveFormats()
{
    std::vector<WaveFormat> formats;
    for (const Encoding &e : encodings) {
        // GSM 6.10 is a telephone codec: one channel at 8000 Hz.
        const bool gsm = e.subtype == SF_FORMAT_GSM610;
        for (int rate : rates) {
            for (int channels = 1; channels <= 2; ++channels) {
                if (gsm && (rate != 8000 || channels != 1))
                    continue;
                if (libsndfileWrites(e, rate, channels))
                    formats.push_back(WaveFormat{e.formatTag, channels, rate, e.bitsPerSample});
            }
        }
    }
    std::stable_sort(formats.begin(), formats.end(), [](const WaveFormat &a, const WaveFormat &b) {
        return std::tie(a.formatTag, a.sampleRate, a.bitsPerSample, a.channels) <
               std::tie(b.formatTag, b.sampleRate, b.bitsPerSample, b.channels);
    });
    return formats;
}

} // namespace platform::media
