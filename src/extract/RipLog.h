#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/CdReader.h"
#include "platform/TrackChecksums.h"

namespace extract {

// The plain-text log of a copy run, kept beside the copied files (their stem + ".log") as
// trusted rippers keep one: the disc's table of contents, the drive or image, the copy mode, and
// per track the file, its CRC32 and AccurateRip v1 and v2 sums (computed here, from the copied
// file; no database is asked), and what went wrong if anything did. It is written anew, through a
// temporary file, after every step, so a run cut short still leaves a log of what was done. A
// log that can't be written is given up in silence: the run goes on as it would without it.
class RipLog {
public:
    struct Run {
        std::string started;   // local time, "YYYY-MM-DD HH:MM:SS"
        std::string drive;     // the device node or the image file
        std::string driveName;
        int copyMode = platform::CdReader::cmBurst;
        std::optional<int32_t> discId;
        std::vector<platform::CdTrack> toc;
    };
    struct Track {
        int number = 0;        // on the disc
        std::string file;
        int32_t start = 0;
        int32_t length = 0;
        bool ended = false;
        std::vector<std::string> errors;
        std::optional<platform::TrackChecksums> sums;
    };

    void begin(std::filesystem::path file, Run run);
    bool active() const { return !m_file.empty(); }
    void trackStarted(int number, const std::string &file, int32_t start, int32_t length);
    void trackError(const std::string &what);
    // The track in hand has ended; `sums` of its file when it was copied whole.
    void trackEnded(std::optional<platform::TrackChecksums> sums);
    void runEnded(const std::string &result);

    // The log as it stands.
    std::string text() const;
    const std::filesystem::path &file() const { return m_file; }

private:
    void save() const;

    std::filesystem::path m_file;
    Run m_run;
    std::vector<Track> m_tracks;
    std::string m_result;
};

} // namespace extract
