#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace platform::cdrom {

// What libcdio doesn't take from a disc image's sheet, read from the text beside it: the byte
// order of each track's audio, sessions and the true length of the last track of one of our own
// images.
struct SheetFacts {
    // Tracks (1-based) whose audio is stored big-endian.
    std::map<int, bool> bigEndian;
    // Tracks that start a session after the first.
    std::map<int, bool> laterSession;
    // "REM SECTORS" of our Image Recorder: the last track's length; the BIN may be longer.
    std::optional<long> lastTrackSectors;
    // The files holding the sectors, as absolute paths.
    std::vector<std::filesystem::path> files;
};

// Reads the facts of a CUE sheet; nullopt when the file can't be read.
std::optional<SheetFacts> scanCue(const std::filesystem::path &cue);

// Whether libcdio reads a CUE sheet as it stands: one BINARY or MOTOROLA file, named as the sheet
// with "bin" for "cue" (libcdio reads that file, whatever name the sheet gives).
bool cueReadsAsItStands(const std::filesystem::path &cue);

// A CUE sheet of other files (a wave per track or per disc, a BIN per track, a BIN of another
// name) joined into the raw BIN `bin`: each file's sectors one after another, decoded to CD audio
// where they are sound and padded to whole sectors, the INDEX times moved to where each file now
// starts. The sheet's other lines stay as they were. Nullopt when a file is missing, can't be
// read or is shorter than its INDEX times.
struct JoinedCue {
    std::string text;
    SheetFacts facts;
};
std::optional<JoinedCue> joinCue(const std::filesystem::path &cue, const std::filesystem::path &bin);

// A cdrdao TOC file turned into one libcdio opens: file names made absolute (libcdio takes
// them from the working folder), SWAP taken off (it refuses it; the swap is noted in the facts,
// and cdrdao's raw audio is big-endian unless swapped), byte offsets and sample counts turned
// into MSF. Nullopt when the text can't be read or makes no sense.
struct RewrittenToc {
    std::string text;
    SheetFacts facts;
};
std::optional<RewrittenToc> rewriteToc(const std::filesystem::path &toc);

} // namespace platform::cdrom
