#include "MsAdpcm.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <vector>

namespace platform::media::msadpcm {

namespace {

struct Channel {
    int s1 = 0;  // the newer of the last two samples
    int s2 = 0;
    int step = 16;
    int predictor = 0;
};

inline int clip16(int v)
{
    return std::clamp(v, -32768, 32767);
}

inline int predict(const Channel &c)
{
    return (c.s1 * Coefficients[c.predictor][0] + c.s2 * Coefficients[c.predictor][1]) >> 8;
}

// Applies a code to the channel's state and gives the sample it stands for.
inline int apply(Channel &c, int code)
{
    const int sample = clip16(predict(c) + code * c.step);
    c.s2 = c.s1;
    c.s1 = sample;
    c.step = std::max(16, (Adaptation[code & 15] * c.step) >> 8);
    return sample;
}

// The code whose sample lies nearest to `sample`.
inline int nearestCode(const Channel &c, int sample)
{
    const int p = predict(c);
    const int error = sample - p;
    const int half = c.step / 2;
    int code = error >= 0 ? (error + half) / c.step : -((-error + half) / c.step);
    code = std::clamp(code, -8, 7);
    // Clipping can make the neighbour nearer at the edges of the range.
    int best = code;
    long bestMiss = std::labs(static_cast<long>(clip16(p + code * c.step)) - sample);
    for (int other : {code - 1, code + 1}) {
        if (other < -8 || other > 7)
            continue;
        const long miss = std::labs(static_cast<long>(clip16(p + other * c.step)) - sample);
        if (miss < bestMiss) {
            best = other;
            bestMiss = miss;
        }
    }
    return best;
}

// Squared error of coding `count` samples (stride `stride`) from a start state; codes are kept
// when `codes` is given.
int64_t trial(Channel c, const int16_t *samples, int stride, int count, int8_t *codes)
{
    int64_t error = 0;
    for (int i = 0; i < count; ++i) {
        const int want = samples[static_cast<ptrdiff_t>(i) * stride];
        const int code = nearestCode(c, want);
        const int got = apply(c, code);
        const int64_t miss = got - want;
        error += miss * miss;
        if (codes)
            codes[i] = static_cast<int8_t>(code);
    }
    return error;
}

// The start state of a channel's block with the least coding error.
Channel bestStart(const int16_t *samples, int stride, int count)
{
    Channel best;
    int64_t bestError = std::numeric_limits<int64_t>::max();
    const int16_t *rest = samples + 2 * stride;
    // The first step size only matters until the adaptation catches up: it is chosen on the
    // first few samples, the predictor on the whole block.
    const int head = std::min(count, 24);
    for (int predictor = 0; predictor < PredictorCount; ++predictor) {
        Channel start;
        start.predictor = predictor;
        start.s2 = samples[0];
        start.s1 = samples[stride];
        Channel chosen = start;
        int64_t headError = std::numeric_limits<int64_t>::max();
        for (int step = 16; step <= 16384; step *= 2) {
            start.step = step;
            const int64_t e = trial(start, rest, stride, head, nullptr);
            if (e < headError) {
                headError = e;
                chosen = start;
            }
        }
        const int64_t e = trial(chosen, rest, stride, count, nullptr);
        if (e < bestError) {
            bestError = e;
            best = chosen;
        }
    }
    return best;
}

void put16(std::byte *p, int v)
{
    const auto u = static_cast<uint16_t>(static_cast<int16_t>(v));
    p[0] = static_cast<std::byte>(u & 0xFF);
    p[1] = static_cast<std::byte>(u >> 8);
}

int get16(const std::byte *p)
{
    return static_cast<int16_t>(static_cast<uint16_t>(static_cast<unsigned>(p[0]) | static_cast<unsigned>(p[1]) << 8));
}

} // namespace

int blockAlignFor(int sampleRate, int channels)
{
    return 256 * channels * std::max(1, sampleRate / 11025);
}

int framesPerBlock(int blockAlign, int channels)
{
    return (blockAlign - HeaderBytesPerChannel * channels) * 2 / channels + 2;
}

void encodeBlock(const int16_t *frames, int channels, int perBlock, std::byte *out)
{
    const int coded = perBlock - 2;
    std::vector<Channel> starts(static_cast<size_t>(channels));
    std::vector<int8_t> codes(static_cast<size_t>(coded) * static_cast<size_t>(channels));
    for (int c = 0; c < channels; ++c) {
        starts[static_cast<size_t>(c)] = bestStart(frames + c, channels, coded);
        trial(starts[static_cast<size_t>(c)], frames + 2 * channels + c, channels, coded,
              codes.data() + static_cast<size_t>(c) * static_cast<size_t>(coded));
    }
    std::byte *p = out;
    for (int c = 0; c < channels; ++c)
        *p++ = static_cast<std::byte>(starts[static_cast<size_t>(c)].predictor);
    for (int c = 0; c < channels; ++c, p += 2)
        put16(p, starts[static_cast<size_t>(c)].step);
    for (int c = 0; c < channels; ++c, p += 2)
        put16(p, starts[static_cast<size_t>(c)].s1);
    for (int c = 0; c < channels; ++c, p += 2)
        put16(p, starts[static_cast<size_t>(c)].s2);
    // Codes in time order, channels interleaved, two to a byte, the first in the high nibble.
    const size_t total = static_cast<size_t>(coded) * static_cast<size_t>(channels);
    for (size_t i = 0; i < total; i += 2) {
        auto codeAt = [&](size_t k) {
            const size_t frame = k / static_cast<size_t>(channels);
            const size_t channel = k % static_cast<size_t>(channels);
            return static_cast<unsigned>(codes[channel * static_cast<size_t>(coded) + frame]) & 0x0F;
        };
        *p++ = static_cast<std::byte>(codeAt(i) << 4 | codeAt(i + 1));
    }
}

void decodeBlock(const std::byte *block, int channels, int perBlock, int16_t *frames)
{
    std::vector<Channel> state(static_cast<size_t>(channels));
    const std::byte *p = block;
    for (int c = 0; c < channels; ++c)
        state[static_cast<size_t>(c)].predictor = std::min(static_cast<int>(*p++), PredictorCount - 1);
    for (int c = 0; c < channels; ++c, p += 2)
        state[static_cast<size_t>(c)].step = get16(p);
    for (int c = 0; c < channels; ++c, p += 2)
        state[static_cast<size_t>(c)].s1 = get16(p);
    for (int c = 0; c < channels; ++c, p += 2)
        state[static_cast<size_t>(c)].s2 = get16(p);
    for (int c = 0; c < channels; ++c) {
        frames[c] = static_cast<int16_t>(state[static_cast<size_t>(c)].s2);
        frames[channels + c] = static_cast<int16_t>(state[static_cast<size_t>(c)].s1);
    }
    const size_t total = static_cast<size_t>(perBlock - 2) * static_cast<size_t>(channels);
    for (size_t k = 0; k < total; ++k) {
        const unsigned byte = static_cast<unsigned>(p[k / 2]);
        const unsigned nibble = k % 2 == 0 ? byte >> 4 : byte & 0x0F;
        const int code = nibble >= 8 ? static_cast<int>(nibble) - 16 : static_cast<int>(nibble);
        const size_t channel = k % static_cast<size_t>(channels);
        frames[2 * static_cast<size_t>(channels) + k] = static_cast<int16_t>(apply(state[channel], code));
    }
}

} // namespace platform::media::msadpcm
