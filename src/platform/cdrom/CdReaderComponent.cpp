// The reader's devices, their state, door, transport and speeds; the disc in a device is read in
// CdReaderDisc.cpp, its audio copied in CdReaderStream.cpp.
#include "CdReaderComponent.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <mutex>
#include <system_error>

#include <cdio/cdio.h>
#include <cdio/audio.h>
#include <cdio/device.h>
#include <cdio/logging.h>
#include <cdio/mmc.h>
#include <cdio/mmc_cmds.h>
#include <cdio/track.h>

#include "CdReaderParts.h"
#include "CdTextFields.h"
#include "runtime/RuntimeError.h"

namespace platform::cdrom {

namespace fs = std::filesystem;
using namespace detail;

namespace {

// kB/s of a "1 x" audio read.
constexpr int kbsPerX = 176;
constexpr int maxBlockCount = 50;

const char *imageName = "Disc Image";

void quietLog(cdio_log_level_t, const char *) {}

// libcdio reports on stderr what the reader reports to its caller anyway.
void silenceLibcdio()
{
    static std::once_flag once;
    std::call_once(once, [] { cdio_log_set_handler(quietLog); });
}

} // namespace

void CdReaderComponent::CdioCloser::operator()(CdIo_t *p) const
{
    cdio_destroy(p);
}

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

void addRealCdReader(platform::Components &components, rt::EventLoop &loop, ReaderOptions options)
{
    components.cdReader = [&loop, options] {
        return std::unique_ptr<CdReader>(std::make_unique<CdReaderComponent>(loop, options));
    };
}

} // namespace platform::cdrom
