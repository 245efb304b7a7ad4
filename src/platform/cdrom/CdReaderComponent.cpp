#include "CdReaderComponent.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <mutex>
#include <system_error>

#include <cdio/cdio.h>
#include <cdio/audio.h>
#include <cdio/cdtext.h>
#include <cdio/device.h>
#include <cdio/disc.h>
#include <cdio/logging.h>
#include <cdio/mmc.h>
#include <cdio/mmc_cmds.h>
#include <cdio/paranoia/cdda.h>
#include <cdio/paranoia/paranoia.h>
#include <cdio/read.h>
#include <cdio/track.h>
#include <stdlib.h>
#include <unistd.h>

#include "ImageSheet.h"
#include "runtime/RuntimeError.h"

namespace platform::cdrom {

namespace fs = std::filesystem;

namespace {

constexpr int sectorBytes = CDIO_CD_FRAMESIZE_RAW;
constexpr int framesPerSecond = 75;
// Between the first session's lead-out and the next session's first track of a CD-Extra.
constexpr int32_t sessionGap = 11400;
// kB/s of a "1 x" audio read.
constexpr int kbsPerX = 176;
constexpr int maxBlockCount = 50;
// A drive's commands are given this long.
constexpr unsigned mmcTimeoutMs = 10000;
// How often Normal reading tries a failing block.
constexpr int normalTries = 4;
// How often paranoia re-reads a sector before it gives up on it.
constexpr int paranoiaRetries = 20;
constexpr int errDiskNotReady = 71;

const char *imageName = "Disc Image";

void quietLog(cdio_log_level_t, const char *) {}

// libcdio reports on stderr what the reader reports to its caller anyway.
void silenceLibcdio()
{
    static std::once_flag once;
    std::call_once(once, [] { cdio_log_set_handler(quietLog); });
}

struct CdioCloser {
    void operator()(CdIo_t *p) const { cdio_destroy(p); }
};
using CdioPtr = std::unique_ptr<CdIo_t, CdioCloser>;

std::string trimmed(std::string s)
{
    while (!s.empty() && (s.back() == ' ' || s.back() == '\0'))
        s.pop_back();
    while (!s.empty() && s.front() == ' ')
        s.erase(s.begin());
    return s;
}

bool validUtf8(const std::string &s)
{
    size_t i = 0;
    while (i < s.size()) {
        const auto b = static_cast<unsigned char>(s[i]);
        int extra = b < 0x80 ? 0 : (b >= 0xC2 && b <= 0xDF) ? 1 : (b >= 0xE0 && b <= 0xEF) ? 2 : (b >= 0xF0 && b <= 0xF4) ? 3 : -1;
        if (extra < 0 || i + static_cast<size_t>(extra) >= s.size() + (extra == 0 ? 1 : 0))
            return false;
        for (int k = 1; k <= extra; ++k)
            if ((static_cast<unsigned char>(s[i + static_cast<size_t>(k)]) & 0xC0) != 0x80)
                return false;
        i += static_cast<size_t>(extra) + 1;
    }
    return true;
}

// CD-Text of a sheet comes as its bytes; ours and most others' are ISO 8859-1.
std::string asUtf8(const char *text)
{
    if (!text)
        return {};
    std::string s = text;
    if (validUtf8(s))
        return s;
    std::string out;
    for (char c : s) {
        const auto b = static_cast<unsigned char>(c);
        if (b < 0x80) {
            out += c;
        } else {
            out += static_cast<char>(0xC0 | (b >> 6));
            out += static_cast<char>(0x80 | (b & 0x3F));
        }
    }
    return out;
}

bool validIsrc(const std::string &s)
{
    return s.size() == 12 && std::all_of(s.begin(), s.end(), [](char c) { return std::isalnum(static_cast<unsigned char>(c)); });
}

int digitSum(int n)
{
    int sum = 0;
    for (; n > 0; n /= 10)
        sum += n % 10;
    return sum;
}

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

void CdReaderComponent::CdioCloser::operator()(CdIo_t *p) const
{
    cdio_destroy(p);
}

struct CdReaderComponent::JoinedImage {
    FileStamp sheetStamp;
    std::vector<std::pair<fs::path, FileStamp>> files;
    SheetFacts facts;
    fs::path cue;
    fs::path bin;
    bool readable = false;

    ~JoinedImage()
    {
        std::error_code ec;
        if (!cue.empty())
            fs::remove(cue, ec);
        if (!bin.empty())
            fs::remove(bin, ec);
    }
};

struct CdReaderComponent::Disc {
    // Before the handle: libcdio lets go of the joined files first.
    std::shared_ptr<JoinedImage> joined;
    CdioPtr cdio;
    bool readable = false;
    FileStamp sheetStamp;
    std::vector<std::pair<fs::path, FileStamp>> files;
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

CdReaderComponent::CdReaderComponent(rt::EventLoop &loop, ReaderOptions options) : m_loop(loop), m_options(std::move(options))
{
    silenceLibcdio();
    listDevices();
}

CdReaderComponent::~CdReaderComponent()
{
    leavePump();
    std::lock_guard lock(m_io);
    m_reading.reset();
    m_disc.reset();
    m_deviceCdio.reset();
    m_joined.clear();
    if (!m_joinFolder.empty()) {
        std::error_code ec;
        fs::remove_all(m_joinFolder, ec);
    }
}

// --- devices ------------------------------------------------------------------------------

void CdReaderComponent::listDevices()
{
    if (m_options.scanSystemDrives) {
        std::vector<fs::path> seen;
        if (char **list = cdio_get_devices(DRIVER_DEVICE)) {
            for (char **d = list; *d; ++d) {
                std::error_code ec;
                fs::path node = fs::canonical(*d, ec);
                if (ec)
                    node = *d;
                if (std::find(seen.begin(), seen.end(), node) != seen.end())
                    continue;
                seen.push_back(node);
                Device dev;
                dev.path = node;
                dev.drive.DriveLetter = node.string();
                dev.drive.Name = node.string();
                if (CdioPtr cd{cdio_open(node.c_str(), DRIVER_DEVICE)}) {
                    cdio_hwinfo_t hw{};
                    if (cdio_get_hwinfo(cd.get(), &hw)) {
                        const std::string name = trimmed(trimmed(hw.psz_vendor) + " " + trimmed(hw.psz_model));
                        if (!name.empty())
                            dev.drive.Name = name;
                    }
                }
                m_devices.push_back(dev);
            }
            cdio_free_device_list(list);
        }
    }
    if (!m_options.imageFolder.empty()) {
        std::vector<fs::path> images;
        std::error_code ec;
        for (fs::directory_iterator it(m_options.imageFolder, ec), end; !ec && it != end; it.increment(ec)) {
            std::string ext = it->path().extension().string();
            std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return std::tolower(c); });
            std::error_code typeError;
            if ((ext == ".cue" || ext == ".toc") && it->is_regular_file(typeError))
                images.push_back(it->path());
        }
        std::sort(images.begin(), images.end(), [](const fs::path &a, const fs::path &b) { return a.filename() < b.filename(); });
        for (const fs::path &image : images) {
            Device dev;
            dev.path = image;
            dev.image = true;
            dev.drive.DriveLetter = image.filename().string();
            dev.drive.Name = imageName;
            m_devices.push_back(dev);
        }
    }
}

int CdReaderComponent::DevicesCount()
{
    return static_cast<int>(m_devices.size());
}

CdDrive CdReaderComponent::DevicesItem(int index)
{
    if (index < 0 || index >= DevicesCount())
        rt::raise(rt::ErrSubscript);
    return m_devices[static_cast<size_t>(index)].drive;
}

void CdReaderComponent::setDevicesItemType(int index, int type)
{
    if (index < 0 || index >= DevicesCount())
        rt::raise(rt::ErrSubscript);
    m_devices[static_cast<size_t>(index)].drive.Type = type;
}

void CdReaderComponent::setDeviceID(int32_t id)
{
    if (id != m_deviceId && m_open)
        Close();
    m_deviceId = id;
}

const CdReaderComponent::Device *CdReaderComponent::openDevice() const
{
    if (m_deviceId < 0 || m_deviceId >= static_cast<int32_t>(m_devices.size()))
        return nullptr;
    return &m_devices[static_cast<size_t>(m_deviceId)];
}

bool CdReaderComponent::isImage() const
{
    const Device *d = openDevice();
    return d && d->image;
}

std::string CdReaderComponent::DeviceName()
{
    const Device *d = openDevice();
    return d ? d->drive.Name : std::string();
}

std::string CdReaderComponent::DriveLetter()
{
    const Device *d = openDevice();
    return d ? d->drive.DriveLetter : std::string();
}

void CdReaderComponent::setBlockCount(int count)
{
    if (count < 1 || count > maxBlockCount)
        rt::raise(rt::ErrInvalidPropertyValue);
    m_blockCount = count;
}

void CdReaderComponent::setCopyMode(int mode)
{
    if (mode != cmNormal && mode != cmBurst && mode != cmSectorSync)
        rt::raise(rt::ErrInvalidPropertyValue);
    m_copyMode = mode;
}

void CdReaderComponent::Open()
{
    const Device *d = openDevice();
    if (!d)
        rt::raise(rt::ErrInvalidCall);
    std::lock_guard lock(m_io);
    if (m_open)
        return;
    if (d->image) {
        if (!stampOf(d->path).exists)
            rt::raise(rt::ErrInvalidCall);
    } else {
        m_deviceCdio.reset(cdio_open(d->path.c_str(), DRIVER_DEVICE));
        if (!m_deviceCdio)
            rt::raise(57, "The drive " + d->path.string() + " can't be opened");
    }
    m_open = true;
    m_doorOpen = false;
    m_playing = false;
}

void CdReaderComponent::Close()
{
    std::lock_guard lock(m_io);
    m_reading.reset();
    dropDisc();
    m_deviceCdio.reset();
    m_open = false;
    m_playing = false;
    m_tracks.clear();
    m_cdText.clear();
    m_contentsRead = false;
    m_discId = 0;
}

// --- the disc -----------------------------------------------------------------------------

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
        // A sheet can't say more than "copy permitted"; an image is protected only when it says
        // NO COPY. A pressed disc says it in the control bits.
        if (image) {
            const auto it = disc.facts.noCopy.find(n);
            t.CopyProtected = it != disc.facts.noCopy.end() && it->second;
        } else {
            t.CopyProtected = cdio_get_track_copy_permit(cd, n) == CDIO_TRACK_FLAG_FALSE;
        }
        int32_t end = leadOut;
        if (i + 1 < count) {
            const auto next = static_cast<track_t>(n + 1);
            end = starts[static_cast<size_t>(i) + 1];
            const lsn_t pregap = cdio_get_track_pregap_lsn(cd, next);
            if (pregap != CDIO_INVALID_LSN && pregap > t.Start && pregap < end)
                end = pregap;
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

bool CdReaderComponent::DiscPresent()
{
    return currentDisc() != nullptr;
}

int CdReaderComponent::Status()
{
    std::lock_guard lock(m_io);
    const Device *d = openDevice();
    if (!m_open || !d)
        return StatusNoDrive;
    if (d->image) {
        if (m_doorOpen)
            return StatusTrayOpen;
        if (!stampOf(d->path).exists)
            return StatusNoDisc;
        updateSimulatedPlay();
        return m_playing ? StatusPlaying : StatusReady;
    }
    if (!m_deviceCdio)
        return StatusNoDrive;
    CdIo_t *cd = m_deviceCdio.get();
    if (mmc_get_tray_status(cd) == 1) {
        dropDisc();
        return StatusTrayOpen;
    }
    if (mmc_test_unit_ready(cd, mmcTimeoutMs) != DRIVER_OP_SUCCESS) {
        dropDisc();
        return StatusNoDisc;
    }
    cdio_subchannel_t sub{};
    if (cdio_audio_read_subchannel(cd, &sub) == DRIVER_OP_SUCCESS) {
        if (sub.audio_status == CDIO_MMC_READ_SUB_ST_PLAY) {
            m_playPosition = cdio_msf_to_lsn(&sub.abs_addr);
            m_currentTrack = sub.track;
            return StatusPlaying;
        }
    }
    return StatusReady;
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

// --- ISRC -------------------------------------------------------------------------------------

bool CdReaderComponent::CanReadISRC()
{
    std::lock_guard lock(m_io);
    const Device *d = openDevice();
    if (!d)
        return false;
    if (d->image)
        return true;
    if (!m_deviceCdio)
        return false;
    cdio_drive_read_cap_t read = 0;
    cdio_drive_write_cap_t write = 0;
    cdio_drive_misc_cap_t misc = 0;
    cdio_get_drive_cap(m_deviceCdio.get(), &read, &write, &misc);
    if (read & CDIO_DRIVE_CAP_ERROR)
        return mmc_get_drive_mmc_cap(m_deviceCdio.get()) != CDIO_MMC_LEVEL_NONE;
    return (read & CDIO_DRIVE_CAP_READ_ISRC) != 0;
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

// --- play and the door --------------------------------------------------------------------

void CdReaderComponent::updateSimulatedPlay()
{
    if (!m_playing)
        return;
    const int64_t elapsed = std::max<int64_t>(0, m_loop.now() - m_playStartedAt);
    const int64_t frames = elapsed * framesPerSecond / 1000;
    if (frames >= m_playLength) {
        m_playing = false;
        m_playPosition = m_playStart + m_playLength;
    } else {
        m_playPosition = m_playStart + static_cast<int32_t>(frames);
    }
    m_currentTrack = trackAt(std::min(m_playPosition, m_playStart + std::max(0, m_playLength - 1)));
}

void CdReaderComponent::Play(int32_t start, int32_t length)
{
    std::lock_guard lock(m_io);
    Disc *disc = currentDisc();
    if (!disc || !disc->readable)
        rt::raise(errDiskNotReady, "Disk not ready");
    if (start < 0 || length <= 0 || start >= disc->leadOut)
        rt::raise(rt::ErrInvalidCall);
    length = std::min(length, disc->leadOut - start);
    if (isImage()) {
        m_playing = true;
        m_playStartedAt = m_loop.now();
        m_playStart = start;
        m_playLength = length;
        m_playPosition = start;
        m_currentTrack = trackAt(start);
        return;
    }
    msf_t from{};
    msf_t to{};
    cdio_lsn_to_msf(start, &from);
    cdio_lsn_to_msf(start + length, &to);
    if (cdio_audio_play_msf(m_deviceCdio.get(), &from, &to) != DRIVER_OP_SUCCESS)
        rt::raise(57, "The drive won't play");
    m_playPosition = start;
    m_currentTrack = trackAt(start);
}

void CdReaderComponent::Stop()
{
    std::lock_guard lock(m_io);
    if (isImage()) {
        updateSimulatedPlay();
        m_playing = false;
        return;
    }
    if (m_deviceCdio)
        cdio_audio_stop(m_deviceCdio.get());
}

void CdReaderComponent::SetDoor(bool closed)
{
    std::lock_guard lock(m_io);
    if (!m_open)
        rt::raise(rt::ErrInvalidCall);
    if (isImage()) {
        if (!closed) {
            m_playing = false;
            m_reading.reset();
            dropDisc();
        }
        m_doorOpen = !closed;
        return;
    }
    if (!closed) {
        dropDisc();
        if (mmc_eject_media(m_deviceCdio.get()) != DRIVER_OP_SUCCESS)
            rt::raise(57, "The tray won't open");
    } else if (mmc_close_tray(m_deviceCdio.get()) != DRIVER_OP_SUCCESS) {
        rt::raise(57, "The tray won't close");
    }
}

int32_t CdReaderComponent::PlayPosition()
{
    std::lock_guard lock(m_io);
    if (isImage()) {
        updateSimulatedPlay();
    } else if (m_open && m_deviceCdio) {
        cdio_subchannel_t sub{};
        if (cdio_audio_read_subchannel(m_deviceCdio.get(), &sub) == DRIVER_OP_SUCCESS
            && (sub.audio_status == CDIO_MMC_READ_SUB_ST_PLAY || sub.audio_status == CDIO_MMC_READ_SUB_ST_PAUSED)) {
            m_playPosition = cdio_msf_to_lsn(&sub.abs_addr);
            m_currentTrack = sub.track;
        }
    }
    return m_playPosition;
}

int CdReaderComponent::CurrentTrack()
{
    PlayPosition();
    return m_currentTrack;
}

// --- speeds -------------------------------------------------------------------------------

void CdReaderComponent::DetectSpeeds()
{
    std::lock_guard lock(m_io);
    m_speeds.clear();
    const Device *d = openDevice();
    if (!d)
        return;
    static constexpr std::array steps{52, 48, 40, 32, 24, 20, 16, 12, 10, 8, 4, 2, 1};
    int maxKbs = 0;
    if (d->image) {
        // An image reads as fast as the disk; these are only what a user expects to pick from.
        maxKbs = 48 * kbsPerX;
    } else if (m_deviceCdio) {
        CdIo_t *cd = m_deviceCdio.get();
        // GET PERFORMANCE, nominal read performance: the fastest end speed of its descriptors.
        std::array<uint8_t, 8 + 16 * 8> perf{};
        mmc_cdb_t cdb{};
        cdb.field[0] = CDIO_MMC_GPCMD_GET_PERFORMANCE;
        cdb.field[1] = 0x00;
        cdb.field[9] = 8;     // descriptors wanted
        cdb.field[10] = 0x00; // type: performance
        if (mmc_run_cmd(cd, mmcTimeoutMs, &cdb, SCSI_MMC_DATA_READ, perf.size(), perf.data()) == DRIVER_OP_SUCCESS) {
            const uint32_t length = (uint32_t(perf[0]) << 24) | (uint32_t(perf[1]) << 16) | (uint32_t(perf[2]) << 8) | perf[3];
            const size_t descriptors = std::min<size_t>((length >= 4 ? length - 4 : 0) / 16, 8);
            for (size_t i = 0; i < descriptors; ++i) {
                const uint8_t *p = perf.data() + 8 + 16 * i;
                const int endKbs = static_cast<int>((uint32_t(p[12]) << 24) | (uint32_t(p[13]) << 16) | (uint32_t(p[14]) << 8) | p[15]);
                if (endKbs > 0 && endKbs < 100000)
                    maxKbs = std::max(maxKbs, endKbs);
            }
        }
        if (maxKbs == 0) {
            // The capabilities page's maximum read speed (bytes 8 and 9 of the page).
            std::array<uint8_t, 256> page{};
            if (mmc_mode_sense_10(cd, page.data(), page.size(), CDIO_MMC_CAPABILITIES_PAGE) == DRIVER_OP_SUCCESS) {
                const size_t at = 8 + ((size_t(page[6]) << 8) | page[7]);
                if (at + 10 < page.size() && (page[at] & 0x3F) == CDIO_MMC_CAPABILITIES_PAGE)
                    maxKbs = (page[at + 8] << 8) | page[at + 9];
            }
        }
    }
    if (maxKbs < kbsPerX)
        return;
    m_speeds.push_back(maxKbs);
    const int maxX = static_cast<int>(std::lround(double(maxKbs) / kbsPerX));
    for (int x : steps) {
        if (x < maxX)
            m_speeds.push_back(x * kbsPerX);
    }
}

std::string CdReaderComponent::SpeedsText(int index)
{
    const int kbs = SpeedValue(index);
    return std::to_string(std::max(1L, std::lround(double(kbs) / kbsPerX))) + " x";
}

int CdReaderComponent::SpeedValue(int index)
{
    if (index < 0 || index >= SpeedsCount())
        rt::raise(rt::ErrSubscript);
    return m_speeds[static_cast<size_t>(index)];
}

void CdReaderComponent::SetSpeed(int value)
{
    std::lock_guard lock(m_io);
    if (!m_open)
        rt::raise(rt::ErrInvalidCall);
    if (isImage() || !m_deviceCdio)
        return;
    // 0xFFFF asks for the drive's fastest.
    const int kbs = value <= 0 ? 0xFFFF : std::min(value, 0xFFFF);
    if (mmc_set_speed(m_deviceCdio.get(), kbs, mmcTimeoutMs) != DRIVER_OP_SUCCESS && !m_ignoreSpeed)
        rt::raise(57, "The drive won't take that speed");
}

// --- reading ------------------------------------------------------------------------------

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

void addRealCdReader(platform::Components &components, rt::EventLoop &loop, ReaderOptions options)
{
    components.cdReader = [&loop, options] {
        return std::unique_ptr<CdReader>(std::make_unique<CdReaderComponent>(loop, options));
    };
}

} // namespace platform::cdrom
