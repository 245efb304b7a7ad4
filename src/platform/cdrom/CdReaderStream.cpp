// The reader as a source of CD audio: a range of the disc read in blocks, plainly (Burst), with
// tries (Normal) or through paranoia (Sector synchronisation), an image's big-endian audio swapped.
#include "CdReaderComponent.h"

#include <algorithm>
#include <cstring>
#include <mutex>

#include <cdio/cdio.h>
#include <cdio/paranoia/cdda.h>
#include <cdio/paranoia/paranoia.h>

#include "CdReaderParts.h"
#include "runtime/RuntimeError.h"

namespace platform::cdrom {

using namespace detail;

namespace {

constexpr int sectorBytes = CDIO_CD_FRAMESIZE_RAW;
// How often Normal reading tries a failing block.
constexpr int normalTries = 4;
// How often paranoia re-reads a sector before it gives up on it.
constexpr int paranoiaRetries = 20;

// Set by paranoia's callback on the reading thread: a sector it could not read.
thread_local bool t_paranoiaReadError = false;

void paranoiaCallback(long, paranoia_cb_mode_t mode)
{
    if (mode == PARANOIA_CB_READERR)
        t_paranoiaReadError = true;
}

void swapBytes(std::byte *data, size_t bytes)
{
    for (size_t i = 0; i + 1 < bytes; i += 2)
        std::swap(data[i], data[i + 1]);
}

} // namespace

void CdReaderComponent::SelectRange(int32_t start, int32_t length)
{
    m_rangeStart = start;
    m_rangeLength = length;
    m_readPosition = start;
}

media::StreamInfo CdReaderComponent::openSource()
{
    std::lock_guard lock(m_io);
    m_reading.reset();
    Disc *disc = currentDisc();
    if (!disc)
        rt::raise(errDiskNotReady, "Disk not ready");
    if (!disc->readable)
        rt::raise(57, "The disc's table of contents can't be read");
    const int32_t start = m_rangeStart;
    const int32_t length = m_rangeLength;
    if (start < 0 || length <= 0 || start >= disc->leadOut || length > disc->leadOut - start)
        rt::raise(rt::ErrInvalidCall);
    for (const CdTrack &t : disc->tracks) {
        const bool overlaps = t.Start < start + length && start < t.Start + t.Length;
        if (overlaps && !t.IsAudio)
            rt::raise(57, "Track " + std::to_string(t.Number) + " holds data, not audio");
    }

    auto reading = std::make_unique<Reading>();
    reading->disc = disc;
    reading->image = isImage();
    reading->drive = cdio_cddap_identify_cdio(disc->cdio.get(), CDDA_MESSAGE_FORGETIT, nullptr);
    if (!reading->drive)
        rt::raise(57, "The disc can't be read as audio");
    if (cdio_cddap_open(reading->drive) != 0)
        rt::raise(57, "The disc can't be read as audio");
    // An image's byte order is what its sheet says: libcdio hands the file's bytes on as they
    // are, and the cdda layer's guess from the sound itself must not swap them behind our back.
    if (reading->image)
        reading->drive->bigendianp = 0;
    // The cdda layer reads no more than nsectors at a time: an image takes any count, a drive
    // no more than its transfer limit.
    if (reading->image || reading->drive->nsectors <= 0 || reading->drive->nsectors > m_blockCount)
        reading->drive->nsectors = m_blockCount;
    reading->mode = m_copyMode;
    reading->blockCount = reading->drive->nsectors;
    reading->next = start;
    reading->end = start + length;
    if (m_copyMode == cmSectorSync) {
        reading->paranoia = cdio_paranoia_init(reading->drive);
        if (!reading->paranoia)
            rt::raise(57, "The disc can't be read as audio");
        // What cd-paranoia does by default: full overlap checking, skipping what can't be read.
        cdio_paranoia_modeset(reading->paranoia, PARANOIA_MODE_FULL ^ PARANOIA_MODE_NEVERSKIP);
        cdio_paranoia_seek(reading->paranoia, start, SEEK_SET);
    }
    m_readPosition = start;
    m_reading = std::move(reading);

    media::StreamInfo info;
    info.format = WaveFormat::cdAudio();
    int number = 0;
    for (const CdTrack &t : disc->tracks)
        if (start >= t.Start)
            number = t.Number;
    if (number >= 0 && static_cast<size_t>(number) < disc->cdText.size()) {
        info.title = disc->cdText[static_cast<size_t>(number)].Title;
        info.artist = disc->performers[static_cast<size_t>(number)];
        if (info.artist.empty())
            info.artist = disc->performers[0];
    }
    return info;
}

bool CdReaderComponent::readBlock(int32_t lsn, int count, std::byte *out, std::string &why)
{
    Reading &r = *m_reading;
    if (r.image) {
        // A file cut short or gone under a copy: libcdio would read what is left as if whole.
        for (const auto &[file, stamp] : r.disc->files) {
            const FileStamp now = stampOf(file);
            if (!now.exists || now.size < stamp.size) {
                why = "The disc image " + file.filename().string() + " changed or went away";
                return false;
            }
        }
    }
    if (r.mode == cmSectorSync) {
        for (int i = 0; i < count; ++i) {
            t_paranoiaReadError = false;
            const int16_t *sector = cdio_paranoia_read_limited(r.paranoia, paranoiaCallback, paranoiaRetries);
            if (!sector || t_paranoiaReadError) {
                why = "Sector " + std::to_string(lsn + i) + " can't be read";
                return false;
            }
            std::memcpy(out + static_cast<size_t>(i) * sectorBytes, sector, sectorBytes);
        }
        return true;
    }
    const int tries = r.mode == cmNormal ? normalTries : 1;
    for (int attempt = 0; attempt < tries; ++attempt) {
        if (cdio_cddap_read(r.drive, out, lsn, count) == count)
            return true;
    }
    why = "Sectors " + std::to_string(lsn) + " to " + std::to_string(lsn + count - 1) + " can't be read";
    return false;
}

media::ReadResult CdReaderComponent::read(std::byte *buffer, size_t bytes)
{
    media::ReadResult result;
    std::lock_guard lock(m_io);
    if (!m_reading) {
        result.end = true;
        return result;
    }
    Reading &r = *m_reading;
    const size_t want = bytes - bytes % 4;
    while (result.bytes < want) {
        if (r.at < r.block.size()) {
            const size_t n = std::min(want - result.bytes, r.block.size() - r.at);
            std::memcpy(buffer + result.bytes, r.block.data() + r.at, n);
            result.bytes += n;
            r.at += n;
            continue;
        }
        if (r.next >= r.end) {
            result.end = true;
            break;
        }
        const int count = std::min(r.blockCount, r.end - r.next);
        r.block.resize(static_cast<size_t>(count) * sectorBytes);
        r.at = 0;
        m_readPosition = r.next;
        std::string why;
        if (!readBlock(r.next, count, r.block.data(), why)) {
            r.block.clear();
            result.error = media::SourceError{57, "Device I/O error: " + why};
            result.end = true;
            break;
        }
        if (r.image) {
            for (int i = 0; i < count; ++i) {
                const int32_t lsn = r.next + i;
                size_t entry = 0;
                for (size_t k = 0; k < r.disc->tracks.size(); ++k)
                    if (lsn >= r.disc->tracks[k].Start)
                        entry = k;
                if (entry < r.disc->bigEndian.size() && r.disc->bigEndian[entry])
                    swapBytes(r.block.data() + static_cast<size_t>(i) * sectorBytes, sectorBytes);
            }
        }
        r.next += count;
        m_readPosition = r.next;
    }
    return result;
}

void CdReaderComponent::closeSource()
{
    std::lock_guard lock(m_io);
    m_reading.reset();
}

} // namespace platform::cdrom
