#pragma once

#include <memory>
#include <string>

#include "DecoderStream.h"
#include "platform/AudioChain.h"

namespace platform::audio {

// The player's MP3 decoder (`giveamp3`) with its gain stage. The output opens and plays it.
class Mp3DecoderComponent final : public Mp3Decoder {
public:
    Mp3DecoderComponent();

    // Kept; the files it plays are plain MP3s.
    void setDecryptKey(int value) override { m_decryptKey = value; }
    void setPanning(int value) override { m_stream->setPanning(value); }
    void setVolume(int value) override { m_stream->setVolume(value); }
    // Kept; the length comes from the decoded sound whatever the file's trailing frame says.
    void setMpegTrailingHeader(int value) override { m_trailingHeader = value; }
    // A file other than the one named before starts from its beginning.
    void setFileName(const std::string &path) override;
    std::string FileName() const override { return m_stream->fileName(); }
    int32_t Position() override;
    void setPosition(int32_t ms) override;
    int32_t Length() override;

    const std::shared_ptr<DecoderStream> &stream() const { return m_stream; }

private:
    std::shared_ptr<DecoderStream> m_stream = std::make_shared<DecoderStream>();
    int m_decryptKey = 0;
    int m_trailingHeader = 0;
};

} // namespace platform::audio
