#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace platform::media {

// Writes a Microsoft ADPCM wave file with this program's own encoder (see MsAdpcm.h): the usual
// header with the seven standard predictors, a fact chunk with the true frame count, the names in
// a LIST INFO chunk before the audio, and whole blocks, the last one padded with silence.
class MsAdpcmWaveWriter {
public:
    MsAdpcmWaveWriter() = default;
    ~MsAdpcmWaveWriter();
    MsAdpcmWaveWriter(const MsAdpcmWaveWriter &) = delete;
    MsAdpcmWaveWriter &operator=(const MsAdpcmWaveWriter &) = delete;

    // Creates (or empties) the file; false when it can't be.
    bool open(const std::string &path, int channels, int sampleRate, const std::string &title,
              const std::string &artist);
    // Interleaved 16-bit frames; false when the file can't take them.
    bool write(const int16_t *samples, size_t frames);
    // Writes the last block and the final sizes; false when that fails. The file is closed either way.
    bool close();
    bool isOpen() const { return m_fd >= 0; }

private:
    bool flushBlock();
    bool put(const std::byte *data, size_t bytes);

    int m_fd = -1;
    int m_channels = 0;
    int m_blockAlign = 0;
    int m_framesPerBlock = 0;
    int64_t m_frames = 0;        // the frames given, without the padding
    int64_t m_dataBytes = 0;
    int64_t m_factAt = 0;        // where the fact chunk's count lies
    int64_t m_dataSizeAt = 0;    // where the data chunk's size lies
    std::vector<int16_t> m_block;  // the frames of the block being filled
    size_t m_blockFrames = 0;
    std::vector<std::byte> m_encoded;
};

} // namespace platform::media
