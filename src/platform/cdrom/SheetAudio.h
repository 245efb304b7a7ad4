#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <ostream>

namespace platform::cdrom {

// Appends a sound file's audio (wave, AIFF, FLAC, what libsndfile reads) to `out` as CD audio:
// 16-bit stereo 44100 Hz little-endian, other shapes converted. The bytes written; nullopt when
// the file isn't a regular file, can't be read whole (a wave cut short included) or would pass
// `limit` bytes.
std::optional<std::uint64_t> appendSoundFile(const std::filesystem::path &file, std::ostream &out, std::uint64_t limit);

// Appends a raw file's bytes as they are; nullopt as above.
std::optional<std::uint64_t> appendRawFile(const std::filesystem::path &file, std::ostream &out, std::uint64_t limit,
                                          bool bigEndian = false);

} // namespace platform::cdrom
