#pragma once

#include <cstddef>
#include <cstdint>

namespace platform::media::msadpcm {

// Microsoft ADPCM: blocks of a fixed size, each starting with, per channel, the predictor's
// number, the first step size and the block's first two samples; then 4-bit codes, high nibble
// first, channels interleaved. A code c predicts p = (s1 * a + s2 * b) >> 8 from the last two
// samples, gives p + c * step (clipped to 16 bits), and scales the step by adaptation[c & 15] / 256
// (never below 16).
inline constexpr int PredictorCount = 7;
inline constexpr int16_t Coefficients[PredictorCount][2] = {{256, 0},   {512, -256}, {0, 0},     {192, 64},
                                                           {240, 0},   {460, -208}, {392, -232}};
inline constexpr int Adaptation[16] = {230, 230, 230, 230, 307, 409, 512, 614, 768, 614, 512, 409, 307, 230, 230, 230};
inline constexpr int HeaderBytesPerChannel = 7;

// The block size the usual writers pick: 256 bytes a channel, doubled for each doubling of the
// rate above 11025 Hz.
int blockAlignFor(int sampleRate, int channels);
// Frames a block of that size holds: the two in the header and two a byte a channel.
int framesPerBlock(int blockAlign, int channels);

// Encodes one block of `framesPerBlock` interleaved frames into `blockAlign` bytes. For each
// channel every predictor is tried, each with the first step size that suits it best, and the
// one that leaves the least error is kept.
void encodeBlock(const int16_t *frames, int channels, int framesPerBlock, std::byte *out);

// Decodes one block, as players do; for tests and for judging the encoder.
void decodeBlock(const std::byte *block, int channels, int framesPerBlock, int16_t *frames);

} // namespace platform::media::msadpcm
