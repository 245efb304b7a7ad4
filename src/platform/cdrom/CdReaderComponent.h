#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/CdReader.h"
#include "platform/Components.h"
#include "platform/media/PcmStream.h"
#include "runtime/EventLoop.h"

// libcdio's handle, as its device.h names it.
typedef struct _CdIo CdIo_t;

namespace platform::cdrom {

struct ReaderOptions {
    // Every *.cue and *.toc in it is listed as a drive with that disc in it.
    std::filesystem::path imageFolder;
    bool scanSystemDrives = true;
};

// The CD reader on libcdio: the machine's drives through MMC, disc images through libcdio's own
// image drivers, the audio through its cdda layer and paranoia, so a copy is what cd-paranoia
// reads of the same disc. Positions are frames (LSN); speeds are kB/s (176 to a "1 x").
class CdReaderComponent final : public CdReader, public media::PcmSource {
public:
    CdReaderComponent(rt::EventLoop &loop, ReaderOptions options);
    ~CdReaderComponent() override;

    int DevicesCount() override;
    CdDrive DevicesItem(int index) override;
    void setDevicesItemType(int index, int type) override;

    int32_t DeviceID() override { return m_deviceId; }
    void setDeviceID(int32_t id) override;
    std::string DeviceName() override;
    std::string DriveLetter() override;
    int DeviceType() override { return m_deviceType; }
    void setDeviceType(int type) override { m_deviceType = type; }
    int BlockCount() override { return m_blockCount; }
    void setBlockCount(int count) override;
    int CopyMode() override { return m_copyMode; }
    void setCopyMode(int mode) override;
    bool IgnoreSpeed() override { return m_ignoreSpeed; }
    void setIgnoreSpeed(bool on) override { m_ignoreSpeed = on; }

    void Open() override;
    void Close() override;
    bool DiscPresent() override;
    int Status() override;

    bool ReadContents() override;
    int32_t DiscId() override;
    bool HasCDText() override;
    std::vector<CdTextEntry> CDText() override;
    int TracksCount() override;
    CdTrack TracksItem(int index) override;
    int32_t FramesOf(int32_t position) override { return position; }

    int32_t PlayPosition() override;
    int CurrentTrack() override;

    void DetectSpeeds() override;
    int SpeedsCount() override { return static_cast<int>(m_speeds.size()); }
    std::string SpeedsText(int index) override;
    int SpeedValue(int index) override;
    void SetSpeed(int value) override;

    bool CanReadISRC() override;
    std::string ReadISRC(int number) override;

    void SelectRange(int32_t start, int32_t length) override;
    int32_t RangeStart() override { return m_rangeStart; }
    int32_t ReadPosition() override { return m_readPosition; }

    void Play(int32_t start, int32_t length) override;
    void Stop() override;
    void SetDoor(bool closed) override;

    media::StreamInfo openSource() override;
    media::ReadResult read(std::byte *buffer, size_t bytes) override;
    void closeSource() override;

private:
    struct Device {
        CdDrive drive;
        std::filesystem::path path;  // the device node or the image's sheet
        bool image = false;
    };
    struct Disc;
    struct Reading;
    struct FileStamp {
        bool exists = false;
        std::uintmax_t size = 0;
        int64_t time = 0;
        bool operator==(const FileStamp &) const = default;
    };
    // A CUE sheet libcdio can't read as it stands, joined into a temporary sheet and BIN; kept
    // while the sheet and its files stay as they were, removed with the last disc using it.
    struct JoinedImage;

    void listDevices();
    const Device *openDevice() const;
    bool isImage() const;
    static FileStamp stampOf(const std::filesystem::path &file);
    // Loads the disc in the open device when it changed; the loaded one, if any.
    Disc *currentDisc();
    void dropDisc();
    std::unique_ptr<Disc> loadImage(const Device &d);
    std::shared_ptr<JoinedImage> joinedImage(const Device &d);
    std::unique_ptr<Disc> loadDrive(const Device &d);
    void fillContents(Disc &disc);
    int32_t presentButUnreadableId() const;
    void updateSimulatedPlay();
    int trackAt(int32_t lsn) const;
    bool readBlock(int32_t lsn, int count, std::byte *out, std::string &why);

    rt::EventLoop &m_loop;
    ReaderOptions m_options;
    std::vector<Device> m_devices;
    // Per sheet; their files live in a folder of our own under the system's temporary folder.
    std::map<std::filesystem::path, std::shared_ptr<JoinedImage>> m_joined;
    std::filesystem::path m_joinFolder;
    int m_joinCount = 0;

    int32_t m_deviceId = 0;
    int m_deviceType = 0;
    int m_blockCount = 26;
    int m_copyMode = cmBurst;
    bool m_ignoreSpeed = false;

    bool m_open = false;
    // Serialises libcdio between the UI thread and the trigger's worker.
    mutable std::recursive_mutex m_io;
    struct CdioCloser {
        void operator()(CdIo_t *p) const;
    };
    // The open drive, for its state, door, transport and speed; each disc has its own handle.
    std::unique_ptr<CdIo_t, CdioCloser> m_deviceCdio;
    std::unique_ptr<Disc> m_disc;
    // The table shown: from the last ReadContents.
    std::vector<CdTrack> m_tracks;
    std::vector<CdTextEntry> m_cdText;
    int32_t m_discId = 0;
    bool m_contentsRead = false;

    // An image's door and its simulated transport.
    bool m_doorOpen = false;
    bool m_playing = false;
    int64_t m_playStartedAt = 0;
    int32_t m_playStart = 0;
    int32_t m_playLength = 0;
    int32_t m_playPosition = 0;
    int m_currentTrack = 0;

    std::vector<int> m_speeds;  // kB/s

    std::atomic<int32_t> m_rangeStart{0};
    std::atomic<int32_t> m_rangeLength{0};
    std::atomic<int32_t> m_readPosition{0};
    std::unique_ptr<Reading> m_reading;
};

// Fills `components.cdReader` with the real reader.
void addRealCdReader(platform::Components &components, rt::EventLoop &loop, ReaderOptions options);

} // namespace platform::cdrom
