#pragma once

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <fstream>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include <lame/lame.h>

namespace audiotest {

// Interleaved stereo float samples, -1 to 1.
using Stereo = std::vector<float>;

// A sum of sines, the same on both channels, each at `amplitude`, phases drawn from `seed`.
inline Stereo sines(const std::vector<double> &frequencies, double amplitude, int rate, double seconds,
                    unsigned seed = 7)
{
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> phase(0, 2 * std::numbers::pi);
    std::vector<double> phases;
    for (size_t i = 0; i < frequencies.size(); ++i)
        phases.push_back(phase(rng));
    const size_t frames = static_cast<size_t>(std::llround(seconds * rate));
    Stereo s(frames * 2);
    for (size_t n = 0; n < frames; ++n) {
        double v = 0;
        for (size_t i = 0; i < frequencies.size(); ++i)
            v += amplitude * std::sin(2 * std::numbers::pi * frequencies[i] * static_cast<double>(n) / rate + phases[i]);
        s[2 * n] = s[2 * n + 1] = static_cast<float>(v);
    }
    return s;
}

// An MP3 of the samples by libmp3lame, constant bit rate, with its Info tag (so the decoder
// knows the encoder's delay and padding and gives back exactly as many frames).
inline bool encodeMp3(const std::string &path, const Stereo &samples, int rate, int kbps = 320)
{
    lame_global_flags *gfp = lame_init();
    if (!gfp)
        return false;
    lame_set_in_samplerate(gfp, rate);
    lame_set_out_samplerate(gfp, rate);
    lame_set_num_channels(gfp, 2);
    lame_set_mode(gfp, JOINT_STEREO);
    lame_set_quality(gfp, 5);
    lame_set_bWriteVbrTag(gfp, 1);
    lame_set_write_id3tag_automatic(gfp, 0);
    lame_set_VBR(gfp, vbr_off);
    lame_set_brate(gfp, kbps);
    if (lame_init_params(gfp) < 0) {
        lame_close(gfp);
        return false;
    }
    const size_t frames = samples.size() / 2;
    const size_t chunk = 1152 * 8;
    std::vector<float> left(chunk);
    std::vector<float> right(chunk);
    std::vector<unsigned char> out(chunk + chunk / 4 + 7200);
    std::vector<unsigned char> stream;
    bool ok = true;
    for (size_t done = 0; done < frames && ok;) {
        const size_t n = std::min(chunk, frames - done);
        for (size_t k = 0; k < n; ++k) {
            left[k] = samples[2 * (done + k)];
            right[k] = samples[2 * (done + k) + 1];
        }
        const int bytes = lame_encode_buffer_ieee_float(gfp, left.data(), right.data(), static_cast<int>(n),
                                                         out.data(), static_cast<int>(out.size()));
        ok = bytes >= 0;
        if (ok)
            stream.insert(stream.end(), out.begin(), out.begin() + bytes);
        done += n;
    }
    const int flushed = ok ? lame_encode_flush(gfp, out.data(), static_cast<int>(out.size())) : -1;
    ok = flushed >= 0;
    if (ok) {
        stream.insert(stream.end(), out.begin(), out.begin() + flushed);
        std::vector<unsigned char> tag(2880);
        const size_t tagBytes = lame_get_lametag_frame(gfp, tag.data(), tag.size());
        ok = tagBytes <= tag.size() && tagBytes <= stream.size();
        if (ok)
            std::copy(tag.begin(), tag.begin() + static_cast<std::ptrdiff_t>(tagBytes), stream.begin());
    }
    lame_close(gfp);
    if (!ok)
        return false;
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char *>(stream.data()), static_cast<std::streamsize>(stream.size()));
    return static_cast<bool>(file);
}

// The amplitude of a sine of that frequency in one channel of interleaved samples, over `count`
// frames from `from` (Hann-weighted projection).
template <class T>
double amplitudeAt(const std::vector<T> &samples, int channels, int channel, double frequency, int rate, size_t from,
                   size_t count, double scale = 1.0)
{
    std::complex<double> sum = 0;
    double weights = 0;
    for (size_t n = 0; n < count; ++n) {
        const double w = 0.5 - 0.5 * std::cos(2 * std::numbers::pi * (static_cast<double>(n) + 0.5) / count);
        const double x = samples[(from + n) * channels + channel] * scale;
        const double phase = 2 * std::numbers::pi * frequency * static_cast<double>(n) / rate;
        sum += w * x * std::complex<double>(std::cos(phase), -std::sin(phase));
        weights += w;
    }
    return 2 * std::abs(sum) / weights;
}

inline double db(double ratio)
{
    return 20 * std::log10(std::max(ratio, 1e-30));
}

} // namespace audiotest
