// The disc in the open device: loaded when it changed, from a drive or from an image's sheet
// (a sheet libcdio can't read as it stands joined into one of ours first), and its contents.
#include "CdReaderComponent.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <functional>
#include <system_error>

#include <cdio/cdio.h>
#include <cdio/cdtext.h>
#include <cdio/disc.h>
#include <cdio/mmc.h>
#include <cdio/mmc_cmds.h>
#include <cdio/track.h>
#include <stdlib.h>
#include <unistd.h>

#include "CdReaderParts.h"
#include "CdTextFields.h"

namespace platform::cdrom {

namespace fs = std::filesystem;
using namespace detail;

namespace {

// Between the first session's lead-out and the next session's first track of a CD-Extra.
constexpr int32_t sessionGap = 11400;

int digitSum(int n)
{
    int sum = 0;
    for (; n > 0; n /= 10)
        sum += n % 10;
    return sum;
}

} // namespace

CdReaderComponent::FileStamp CdReaderComponent::stampOf(const fs::path &file)
{
    FileStamp s;
    std::error_code ec;
    s.size = fs::file_size(file, ec);
    if (ec)
        return {};
    const auto time = fs::last_write_time(file, ec);
    if (ec)
        return {};
    s.exists = true;
    s.time = static_cast<int64_t>(time.time_since_epoch().count());
    return s;
}

void CdReaderComponent::dropDisc()
{
    m_reading.reset();
    m_disc.reset();
}

CdReaderComponent::Disc *CdReaderComponent::currentDisc()
{
    std::lock_guard lock(m_io);
    const Device *d = openDevice();
    if (!m_open || !d)
        return nullptr;
    // A copy under way keeps the disc it started on.
    if (m_reading)
        return m_disc.get();
    if (d->image) {
        if (m_doorOpen) {
            dropDisc();
            return nullptr;
        }
        const FileStamp sheet = stampOf(d->path);
        if (!sheet.exists) {
            dropDisc();
            return nullptr;
        }
        bool same = m_disc && m_disc->sheetStamp == sheet;
        if (same) {
            for (const auto &[file, stamp] : m_disc->files)
                same = same && stampOf(file) == stamp;
        }
        if (!same)
            m_disc = loadImage(*d);
        return m_disc.get();
    }
    if (!m_deviceCdio)
        return nullptr;
    if (mmc_test_unit_ready(m_deviceCdio.get(), mmcTimeoutMs) != DRIVER_OP_SUCCESS) {
        dropDisc();
        return nullptr;
    }
    if (cdio_get_media_changed(m_deviceCdio.get()) == 1)
        dropDisc();
    if (!m_disc)
        m_disc = loadDrive(*d);
    return m_disc.get();
}

std::unique_ptr<CdReaderComponent::Disc> CdReaderComponent::loadImage(const Device &d)
{
    auto disc = std::make_unique<Disc>();
    disc->sheetStamp = stampOf(d.path);
    std::string ext = d.path.extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return std::tolower(c); });
    if (ext == ".toc") {
        const auto toc = rewriteToc(d.path);
        if (toc) {
            disc->facts = toc->facts;
            // libcdio takes a TOC only from a file; ours lives just long enough to be parsed.
            std::string name = (fs::temp_directory_path() / "cdreader-XXXXXX.toc").string();
            const int fd = ::mkstemps(name.data(), 4);
            if (fd >= 0) {
                const bool written = ::write(fd, toc->text.data(), toc->text.size()) == static_cast<ssize_t>(toc->text.size());
                ::close(fd);
                if (written)
                    disc->cdio.reset(cdio_open_cdrdao(name.c_str()));
                ::unlink(name.c_str());
            }
        }
    } else if (cueReadsAsItStands(d.path)) {
        if (auto facts = scanCue(d.path)) {
            disc->facts = *facts;
            disc->cdio.reset(cdio_open_cue(d.path.c_str()));
        }
    } else {
        disc->joined = joinedImage(d);
        disc->sheetStamp = disc->joined->sheetStamp;
        disc->facts = disc->joined->facts;
        disc->files = disc->joined->files;
        if (disc->joined->readable)
            disc->cdio.reset(cdio_open_cue(disc->joined->cue.c_str()));
    }
    if (!disc->joined) {
        for (const fs::path &file : disc->facts.files)
            disc->files.emplace_back(file, stampOf(file));
    }
    if (disc->cdio)
        fillContents(*disc);
    return disc;
}

std::shared_ptr<CdReaderComponent::JoinedImage> CdReaderComponent::joinedImage(const Device &d)
{
    // Stamps taken before the work: a file that changes meanwhile is joined again next time.
    const FileStamp sheet = stampOf(d.path);
    std::shared_ptr<JoinedImage> &entry = m_joined[d.path];
    if (entry && entry->sheetStamp == sheet) {
        bool same = true;
        for (const auto &[file, stamp] : entry->files)
            same = same && stampOf(file) == stamp;
        if (same)
            return entry;
    }
    auto joined = std::make_shared<JoinedImage>();
    joined->sheetStamp = sheet;
    if (const auto facts = scanCue(d.path)) {
        joined->facts = *facts;
        for (const fs::path &file : facts->files)
            joined->files.emplace_back(file, stampOf(file));
    }
    if (m_joinFolder.empty()) {
        std::error_code ec;
        std::string folder = (fs::temp_directory_path(ec) / "cdreader-XXXXXX").string();
        if (!ec && ::mkdtemp(folder.data()))
            m_joinFolder = folder;
    }
    if (!m_joinFolder.empty() && !joined->facts.files.empty()) {
        // libcdio reads the BIN named as its sheet, whatever the sheet says.
        const std::string stem = std::to_string(++m_joinCount);
        joined->cue = m_joinFolder / (stem + ".cue");
        joined->bin = m_joinFolder / (stem + ".bin");
        if (const auto sheetText = joinCue(d.path, joined->bin)) {
            // Little-endian throughout, as the join wrote it.
            joined->facts.bigEndian = sheetText->facts.bigEndian;
            std::ofstream out(joined->cue, std::ios::binary | std::ios::trunc);
            out << sheetText->text;
            out.close();
            joined->readable = static_cast<bool>(out);
        }
        if (!joined->readable) {
            std::error_code ec;
            fs::remove(joined->bin, ec);
        }
    }
    entry = joined;
    // Joined BINs are as big as discs: keep a few, and none a disc no longer uses beyond them.
    constexpr size_t kept = 3;
    for (auto it = m_joined.begin(); it != m_joined.end() && m_joined.size() > kept;) {
        if (it->second != joined && it->second.use_count() == 1)
            it = m_joined.erase(it);
        else
            ++it;
    }
    return joined;
}

std::unique_ptr<CdReaderComponent::Disc> CdReaderComponent::loadDrive(const Device &d)
{
    auto disc = std::make_unique<Disc>();
    disc->cdio.reset(cdio_open(d.path.c_str(), DRIVER_DEVICE));
    if (disc->cdio)
        fillContents(*disc);
    return disc;
}

void CdReaderComponent::fillContents(Disc &disc)
{
    CdIo_t *cd = disc.cdio.get();
    disc.readable = false;
    const track_t first = cdio_get_first_track_num(cd);
    const track_t count = cdio_get_num_tracks(cd);
    if (first == CDIO_INVALID_TRACK || count == CDIO_INVALID_TRACK || count == 0 || first + count - 1 > CDIO_CD_MAX_TRACKS)
        return;
    const lsn_t leadOut = cdio_get_track_lsn(cd, CDIO_CDROM_LEADOUT_TRACK);
    if (leadOut == CDIO_INVALID_LSN || leadOut <= 0)
        return;
    const bool image = isImage();
    lsn_t lastSession = 0;
    if (!image && cdio_get_last_session(cd, &lastSession) != DRIVER_OP_SUCCESS)
        lastSession = 0;

    std::vector<lsn_t> starts;
    for (int i = 0; i < count; ++i) {
        const lsn_t lsn = cdio_get_track_lsn(cd, static_cast<track_t>(first + i));
        if (lsn == CDIO_INVALID_LSN || lsn < 0 || lsn >= leadOut || (!starts.empty() && lsn <= starts.back()))
            return;
        starts.push_back(lsn);
    }
    disc.firstTrack = first;
    disc.leadOut = leadOut;
    int sum = 0;
    for (int i = 0; i < count; ++i) {
        const auto n = static_cast<track_t>(first + i);
        CdTrack t;
        t.Number = n;
        t.Start = starts[static_cast<size_t>(i)];
        t.IsAudio = cdio_get_track_format(cd, n) == TRACK_FORMAT_AUDIO;
        t.PreEmphasis = cdio_get_track_preemphasis(cd, n) == CDIO_TRACK_FLAG_TRUE;
        // The copy bit as a drive reports it: a disc's control bits; a CUE track is permitted
        // only with FLAGS DCP, a TOC track only with COPY, as the disc burned from it would be.
        t.CopyProtected = cdio_get_track_copy_permit(cd, n) == CDIO_TRACK_FLAG_FALSE;
        // A track runs to the next one's start (INDEX 01): the pause before a track belongs to
        // the track before it, as a drive's table of contents and cd-paranoia have it.
        int32_t end = leadOut;
        if (i + 1 < count) {
            const auto next = static_cast<track_t>(n + 1);
            end = starts[static_cast<size_t>(i) + 1];
            const bool nextIsData = cdio_get_track_format(cd, next) != TRACK_FORMAT_AUDIO;
            bool laterSession = false;
            if (image) {
                const auto it = disc.facts.laterSession.find(next);
                laterSession = it != disc.facts.laterSession.end() && it->second;
            } else {
                laterSession = lastSession > 0 && starts[static_cast<size_t>(i) + 1] >= lastSession;
            }
            // The lead-out and lead-in between the sessions of a CD-Extra hold no audio.
            if (t.IsAudio && nextIsData && laterSession && end - sessionGap > t.Start)
                end -= sessionGap;
        } else if (image && disc.facts.lastTrackSectors) {
            end = static_cast<int32_t>(std::min<long>(end, t.Start + *disc.facts.lastTrackSectors));
        }
        t.Length = end - t.Start;
        if (t.Length <= 0)
            return;
        disc.tracks.push_back(t);
        const auto be = disc.facts.bigEndian.find(n);
        disc.bigEndian.push_back(image && be != disc.facts.bigEndian.end() && be->second);
        sum += digitSum((t.Start + CDIO_PREGAP_SECTORS) / framesPerSecond);
    }
    const int seconds = (leadOut + CDIO_PREGAP_SECTORS) / framesPerSecond - (starts[0] + CDIO_PREGAP_SECTORS) / framesPerSecond;
    disc.discId = static_cast<int32_t>((static_cast<uint32_t>(sum % 0xFF) << 24) | (static_cast<uint32_t>(seconds) << 8)
                                       | static_cast<uint32_t>(count));

    disc.cdText.assign(static_cast<size_t>(first + count), {});
    disc.performers.assign(disc.cdText.size(), {});
    if (cdtext_t *text = cdio_get_cdtext(cd)) {
        for (size_t n = 0; n < disc.cdText.size(); ++n) {
            if (n > 0 && n < static_cast<size_t>(first))
                continue;
            const auto track = static_cast<track_t>(n);
            disc.cdText[n].Title = asUtf8(cdtext_get_const(text, CDTEXT_FIELD_TITLE, track));
            std::string isrc = asUtf8(cdtext_get_const(text, CDTEXT_FIELD_ISRC, track));
            disc.cdText[n].ISRC = validIsrc(isrc) ? isrc : std::string();
            disc.performers[n] = asUtf8(cdtext_get_const(text, CDTEXT_FIELD_PERFORMER, track));
            disc.hasCdText = disc.hasCdText || !disc.cdText[n].Title.empty() || !disc.cdText[n].ISRC.empty();
        }
    }
    if (!disc.hasCdText)
        disc.cdText.clear();
    disc.readable = true;
}

int32_t CdReaderComponent::presentButUnreadableId() const
{
    const Device *d = openDevice();
    std::size_t h = std::hash<std::string>{}(d ? d->path.string() : std::string());
    if (m_disc) {
        h ^= std::hash<std::uintmax_t>{}(m_disc->sheetStamp.size) * 31;
        h ^= std::hash<int64_t>{}(m_disc->sheetStamp.time) * 131;
    }
    // Positive and non-zero: 0 is "none yet" and -1 "the disc left" to the windows.
    return static_cast<int32_t>((h & 0x7FFFFFFF) | 1);
}

bool CdReaderComponent::ReadContents()
{
    std::lock_guard lock(m_io);
    Disc *disc = currentDisc();
    m_contentsRead = false;
    if (!disc || !disc->readable) {
        m_tracks.clear();
        m_cdText.clear();
        m_discId = disc ? presentButUnreadableId() : 0;
        return false;
    }
    m_tracks = disc->tracks;
    m_cdText = disc->cdText;
    m_discId = disc->discId;
    m_contentsRead = true;
    return true;
}

int32_t CdReaderComponent::DiscId()
{
    std::lock_guard lock(m_io);
    Disc *disc = currentDisc();
    if (!disc)
        return 0;
    return disc->readable ? disc->discId : presentButUnreadableId();
}

bool CdReaderComponent::HasCDText()
{
    return !m_cdText.empty();
}

std::vector<CdTextEntry> CdReaderComponent::CDText()
{
    return m_cdText;
}

int CdReaderComponent::TracksCount()
{
    return static_cast<int>(m_tracks.size());
}

CdTrack CdReaderComponent::TracksItem(int index)
{
    if (index < 0 || index >= TracksCount())
        rt::raise(rt::ErrSubscript);
    return m_tracks[static_cast<size_t>(index)];
}

int CdReaderComponent::trackAt(int32_t lsn) const
{
    int number = 0;
    for (const CdTrack &t : m_tracks) {
        if (lsn >= t.Start)
            number = t.Number;
    }
    return number;
}

std::string CdReaderComponent::ReadISRC(int number)
{
    std::lock_guard lock(m_io);
    Disc *disc = currentDisc();
    if (!disc || !disc->readable || number < disc->firstTrack
        || number >= disc->firstTrack + static_cast<int>(disc->tracks.size()))
        return {};
    char *raw = cdio_get_track_isrc(disc->cdio.get(), static_cast<track_t>(number));
    std::string isrc = raw ? trimmed(raw) : std::string();
    cdio_free(raw);
    return validIsrc(isrc) ? isrc : std::string();
}


} // namespace platform::cdrom
