#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "MsAdpcmWaveWriter.h"
#include "PcmConverter.h"
#include "PcmStream.h"
#include "platform/MediaChain.h"
#include "runtime/EventLoop.h"

struct sf_private_tag;

namespace platform::media {

// A wave file through libsndfile. As a sink it creates the file and writes what arrives (or
// the target format), with the track's title and artist in its INFO list; as a source it reads
// a wave file (RIFF, RF64 or Wave64) in any encoding libsndfile knows: PCM and float at their
// own depth, the compressed encodings as 16-bit PCM.
class WaveFileComponent final : public WaveFile, public PcmSource, public PcmSink {
public:
    explicit WaveFileComponent(rt::EventLoop &loop);
    ~WaveFileComponent() override;

    void setFileName(const std::string &path) override { m_fileName = path; }
    std::string FileName() const override { return m_fileName; }
    void setFileMustExist(bool on) override { m_mustExist = on; }
    void setTargetFormat(std::optional<WaveFormat> format) override { m_target = format; }
    int64_t DataPosition() override { return m_dataPosition; }
    int64_t DataSize() override { return m_dataSize; }

    StreamInfo openSource() override;
    ReadResult read(std::byte *buffer, size_t bytes) override;
    void closeSource() override;

    void openSink(const StreamInfo &info) override;
    bool write(const std::byte *data, size_t bytes) override;
    void closeSink() override;

private:
    bool writeFile(const std::byte *data, size_t bytes);
    int64_t readFrames(std::byte *buffer, int64_t frames);
    void writeFailed();
    void closeFile();

    rt::EventLoop &m_loop;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
    std::string m_fileName;
    bool m_mustExist = false;
    std::optional<WaveFormat> m_target;

    enum class Mode { Closed, Reading, Writing };
    Mode m_mode = Mode::Closed;
    sf_private_tag *m_file = nullptr;
    std::unique_ptr<MsAdpcmWaveWriter> m_msAdpcm;  // MS ADPCM files are written by our own encoder
    std::unique_ptr<PcmConverter> m_converter;
    int m_frameBytes = 4;      // of what the file is given (after conversion)
    int m_channels = 2;
    bool m_rawWrite = true;    // the file's bytes are the stream's bytes
    bool m_failed = false;
    // IMA ADPCM fills its last block with padding; the fact chunk must still count the true frames.
    bool m_blockCoded = false;
    std::vector<std::byte> m_carry;  // a part frame waiting for its rest
    WaveFormat m_readAs;             // what a source gives
    std::vector<int32_t> m_wide;     // 8, 24 and 32-bit samples on their way out of libsndfile
    std::vector<int16_t> m_samples;
    std::atomic<int64_t> m_dataPosition{0};
    std::atomic<int64_t> m_dataSize{0};
};

} // namespace platform::media
