#pragma once

#include <filesystem>
#include <cstdint>
#include <optional>
#include <vector>

#include "CueSheet.h"
#include "WriteJob.h"

namespace platform::writer {

// The recorder that burns to files: one CUE sheet and one BIN per disc, in a folder. The open
// (not finalised) image is the disc in the recorder: it is found in the folder again for every
// track, so it outlives the engine and the program.
class ImageRecorder {
public:
    ImageRecorder(std::filesystem::path folder, int setupMs);

    const std::filesystem::path &folder() const { return m_folder; }
    // 0 when the folder exists or can be made and is writable, -1 when not.
    int discState() const;
    // Writes one track; 0 when it went well (see WriteResult).
    int writeTrack(const TrackOrder &order, WriteContext &ctx);
    // Whether the disc in the recorder takes `count` more tracks of these lengths (audio frames),
    // each padded to four seconds and whole sectors, with `pauseSectors` before each but the
    // disc's first: 99 tracks and 99:59:74 at most.
    bool takesTracks(const std::vector<int64_t> &frames, int pauseSectors) const;

    struct Image {
        std::filesystem::path cue;
        std::filesystem::path bin;
        ImageSheet sheet;
    };
    // The newest image of the folder that isn't finalised, if any.
    static std::optional<Image> findOpenImage(const std::filesystem::path &folder);

private:
    int testTrack(const TrackOrder &order, WriteContext &ctx);

    std::filesystem::path m_folder;
    int m_setupMs;
};

} // namespace platform::writer
