#pragma once

#include <filesystem>
#include <optional>

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
