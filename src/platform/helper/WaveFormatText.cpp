#include "WaveFormatText.h"

#include <array>
#include <cstdint>
#include <regex>

namespace platform {

namespace {

struct TagName {
    int tag;
    const char *name;
};

constexpr std::array<TagName, 7> tagNames{{
    {1, "PCM"},
    {3, "IEEE float"},
    {6, "A-law"},
    {7, "u-law"},
    {0x11, "IMA ADPCM"},
    {2, "MS ADPCM"},
    {0x31, "GSM 6.10"},
}};

constexpr int gsmTag = 0x31;
constexpr int imaTag = 0x11;
constexpr int msAdpcmTag = 2;

// Block layout of the compressed formats, as libsndfile writes them: the block grows with the
// samples a second of all channels.
int adpcmBlockAlign(const WaveFormat &f)
{
    const int perSecond = f.sampleRate * f.channels;
    return perSecond < 12000 ? 256 : perSecond < 23000 ? 512 : perSecond < 44000 ? 1024 : 2048;
}

void put16(std::string &out, int v)
{
    out.push_back(static_cast<char>(v & 0xff));
    out.push_back(static_cast<char>((v >> 8) & 0xff));
}

void put32(std::string &out, uint32_t v)
{
    for (int i = 0; i < 4; ++i)
        out.push_back(static_cast<char>((v >> (8 * i)) & 0xff));
}

uint32_t get(const std::string &b, size_t at, int bytes)
{
    uint32_t v = 0;
    for (int i = 0; i < bytes; ++i)
        v |= static_cast<uint32_t>(static_cast<unsigned char>(b[at + i])) << (8 * i);
    return v;
}

} // namespace

std::string waveFormatTagName(int formatTag)
{
    for (const TagName &t : tagNames) {
        if (t.tag == formatTag)
            return t.name;
    }
    return {};
}

std::string waveFormatText(const WaveFormat &f)
{
    std::string text = waveFormatTagName(f.formatTag) + ", " + std::to_string(f.sampleRate) + " Hz, ";
    if (f.formatTag != gsmTag)
        text += std::to_string(f.bitsPerSample) + " bit, ";
    text += f.channels == 1 ? "mono" : "stereo";
    return text;
}

std::optional<WaveFormat> parseWaveFormatText(const std::string &text)
{
    static const std::regex shape(R"(^(.+?), (\d{1,6}) Hz, (?:(\d{1,2}) bit, )?(mono|stereo)$)");
    std::smatch m;
    // No name is that long, and the match recurses once a character: a long text overflows the stack.
    if (text.size() > 64 || !std::regex_match(text, m, shape))
        return std::nullopt;
    WaveFormat f;
    f.formatTag = 0;
    for (const TagName &t : tagNames) {
        if (m[1].str() == t.name)
            f.formatTag = t.tag;
    }
    if (f.formatTag == 0)
        return std::nullopt;
    const bool hasBits = m[3].matched;
    if (hasBits == (f.formatTag == gsmTag))
        return std::nullopt;
    f.sampleRate = std::stoi(m[2].str());
    f.bitsPerSample = hasBits ? std::stoi(m[3].str()) : 0;
    f.channels = m[4].str() == "mono" ? 1 : 2;
    return f;
}

std::string waveFormatRecord(const WaveFormat &f)
{
    int blockAlign = f.channels * f.bitsPerSample / 8;
    uint32_t bytesPerSecond = static_cast<uint32_t>(f.sampleRate) * static_cast<uint32_t>(blockAlign);
    int bits = f.bitsPerSample;
    std::string extra;
    if (f.formatTag == imaTag || f.formatTag == msAdpcmTag) {
        blockAlign = adpcmBlockAlign(f);
        const int headerBytes = (f.formatTag == imaTag ? 4 : 7) * f.channels;
        const int samplesPerBlock = (blockAlign - headerBytes) * 8 / (4 * f.channels) + (f.formatTag == imaTag ? 1 : 2);
        bytesPerSecond = static_cast<uint32_t>(static_cast<int64_t>(f.sampleRate) * blockAlign / samplesPerBlock);
        bits = 4;
        put16(extra, samplesPerBlock);
        if (f.formatTag == msAdpcmTag) {
            // The seven standard coefficient pairs.
            static constexpr int coefficients[7][2] = {{256, 0}, {512, -256}, {0, 0}, {192, 64}, {240, 0}, {460, -208}, {392, -232}};
            put16(extra, 7);
            for (const auto &pair : coefficients) {
                put16(extra, pair[0]);
                put16(extra, pair[1]);
            }
        }
    } else if (f.formatTag == gsmTag) {
        // 320 samples in 65 bytes.
        blockAlign = 65;
        bytesPerSecond = static_cast<uint32_t>(f.sampleRate) * 65 / 320;
        bits = 0;
        put16(extra, 320);
    }
    std::string out;
    put16(out, f.formatTag);
    put16(out, f.channels);
    put32(out, static_cast<uint32_t>(f.sampleRate));
    put32(out, bytesPerSecond);
    put16(out, blockAlign);
    put16(out, bits);
    put16(out, static_cast<int>(extra.size()));
    return out + extra;
}

std::optional<WaveFormat> parseWaveFormatRecord(const std::string &bytes)
{
    if (bytes.size() < 16)
        return std::nullopt;
    WaveFormat f;
    f.formatTag = static_cast<int>(get(bytes, 0, 2));
    f.channels = static_cast<int>(get(bytes, 2, 2));
    f.sampleRate = static_cast<int>(get(bytes, 4, 4));
    f.bitsPerSample = static_cast<int>(get(bytes, 14, 2));
    if (waveFormatTagName(f.formatTag).empty() || f.channels < 1 || f.channels > 2 || f.sampleRate < 1000 || f.sampleRate > 192000)
        return std::nullopt;
    return f;
}

} // namespace platform
