#pragma once
// What the reader's files share: the disc a device holds, a copy under way and a joined image,
// with the constants of the CD format they are measured in. Only the reader includes this.
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <cdio/cdio.h>
#include <cdio/paranoia/cdda.h>
#include <cdio/paranoia/paranoia.h>

#include "CdReaderComponent.h"
#include "ImageSheet.h"

namespace platform::cdrom {

namespace detail {

inline constexpr int framesPerSecond = 75;
// A drive's commands are given this long.
inline constexpr unsigned mmcTimeoutMs = 10000;
inline constexpr int errDiskNotReady = 71;

struct CdioCloser {
    void operator()(CdIo_t *p) const { cdio_destroy(p); }
};
using CdioPtr = std::unique_ptr<CdIo_t, CdioCloser>;

} // namespace detail

struct CdReaderComponent::JoinedImage {
    FileStamp sheetStamp;
    std::vector<std::pair<std::filesystem::path, FileStamp>> files;
    SheetFacts facts;
    std::filesystem::path cue;
    std::filesystem::path bin;
    bool readable = false;

    ~JoinedImage()
    {
        std::error_code ec;
        if (!cue.empty())
            std::filesystem::remove(cue, ec);
        if (!bin.empty())
            std::filesystem::remove(bin, ec);
    }
};

struct CdReaderComponent::Disc {
    // Before the handle: libcdio lets go of the joined files first.
    std::shared_ptr<JoinedImage> joined;
    detail::CdioPtr cdio;
    bool readable = false;
    FileStamp sheetStamp;
    std::vector<std::pair<std::filesystem::path, FileStamp>> files;
    SheetFacts facts;
    int firstTrack = 1;
    int32_t leadOut = 0;
    std::vector<CdTrack> tracks;
    std::vector<bool> bigEndian;  // per entry of `tracks`
    std::vector<CdTextEntry> cdText;
    std::vector<std::string> performers;
    bool hasCdText = false;
    int32_t discId = 0;
};

struct CdReaderComponent::Reading {
    Disc *disc = nullptr;
    cdrom_drive_t *drive = nullptr;
    cdrom_paranoia_t *paranoia = nullptr;
    int32_t next = 0;
    int32_t end = 0;
    int mode = cmBurst;
    int blockCount = 26;
    bool image = false;
    std::vector<std::byte> block;
    size_t at = 0;

    ~Reading()
    {
        if (paranoia)
            cdio_paranoia_free(paranoia);
        if (drive)
            cdio_cddap_close_no_free_cdio(drive);
    }
};

} // namespace platform::cdrom
