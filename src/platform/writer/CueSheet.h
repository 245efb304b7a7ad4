#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform::writer {

constexpr int64_t sectorBytes = 2352;
constexpr int sectorsPerSecond = 75;
constexpr int defaultPauseSectors = 150;
// A CD holds at most 99 tracks, and its last sector, counted with the two seconds before the
// first track, is at most 99:59:74: an image's BIN holds at most this many sectors.
constexpr int mostTracks = 99;
constexpr int64_t mostImageSectors = (99 * 60 + 59) * sectorsPerSecond + 74 + 1 - defaultPauseSectors;

// One track of an image, in sectors from the start of the BIN.
struct ImageTrack {
    std::string title;     // CD-Text ready (see cdText)
    std::string performer; // may be empty
    int64_t pauseStart = 0; // INDEX 00; equal to start when there is no pause
    int64_t start = 0;      // INDEX 01
    int64_t length = 0;     // sectors of audio from INDEX 01 on
};

// What the CUE sheet of an image says: the BIN, its tracks and whether the disc is closed.
struct ImageSheet {
    std::string binName;
    std::vector<ImageTrack> tracks;
    bool finalised = false;
    // Sectors of the BIN that belong to the image; anything after is a track that never ended.
    int64_t sectors() const { return tracks.empty() ? 0 : tracks.back().start + tracks.back().length; }
};

// "mm:ss:ff" of a sector count.
std::string formatMsf(int64_t sector);
std::optional<int64_t> parseMsf(std::string_view text);

// A tag turned into CD-Text: UTF-8 when it is valid UTF-8, otherwise Windows-1252 bytes; the
// result is ISO 8859-1 (CD-Text's own character code), with '?' for what it can't hold, no
// control characters, no double quotes (a CUE string can't carry them), at most 80 characters.
std::string cdText(std::string_view tag);

std::string renderCue(const ImageSheet &sheet);
// Reads back a sheet this recorder wrote; nullopt for any other or a damaged one.
std::optional<ImageSheet> parseCue(std::string_view text);

} // namespace platform::writer
