#pragma once

#include <optional>
#include <string>

#include "platform/TrackChecksums.h"

namespace platform::media {

// The checksums of a wave file's audio data (its "data" chunk as it lies in the file); empty when
// the file can't be read or isn't a RIFF wave file. `firstTrack` and `lastTrack` say where the
// track lies on its disc, for AccurateRip.
std::optional<TrackChecksums> checksumWaveFile(const std::string &file, bool firstTrack, bool lastTrack);

} // namespace platform::media
