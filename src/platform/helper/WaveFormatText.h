#pragma once

#include <optional>
#include <string>

#include "platform/MediaChain.h"

namespace platform {

// A wave format as the format chooser names it: "PCM, 22050 Hz, 16 bit, mono". The tag is one of
// PCM, IEEE float, A-law, u-law, IMA ADPCM, MS ADPCM, GSM 6.10; GSM 6.10 has no bit count.
std::string waveFormatText(const WaveFormat &format);
// nullopt for a text that names no format.
std::optional<WaveFormat> parseWaveFormatText(const std::string &text);
// The tag's name alone ("IMA ADPCM"); "" for a tag without one.
std::string waveFormatTagName(int formatTag);

// The wave format record of a wave file's "fmt " chunk (WAVEFORMATEX, little-endian: tag,
// channels, rate, bytes a second, block size, bits, extra size, extra bytes), as the extraction
// tool keeps it in its settings.
std::string waveFormatRecord(const WaveFormat &format);
// Reads the first 16 bytes of a record; nullopt when fewer came or the values make no format.
std::optional<WaveFormat> parseWaveFormatRecord(const std::string &bytes);

} // namespace platform
