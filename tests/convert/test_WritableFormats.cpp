// Every format the chooser offers, written by the batch converter's chain from a CD-quality test
// wave and read back by sox: the header's encoding, rate and channels, the length, and the sound
// itself against sox's own conversion to the same rate and channels.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "ConvertTestSupport.h"
#include "TempFolder.h"
#include "platform/helper/WaveFormatText.h"
#include "platform/media/WritableWaveFormats.h"

namespace {

using converttest::BatchChain;
using converttest::Events;
using mediatest::quoted;
using mediatest::runTool;
using platform::WaveFormat;

constexpr int SourceRate = 44100;
constexpr double SourceSeconds = 3.0;
constexpr int64_t SourceFrames = 132300;

constexpr int Pcm = 1;
constexpr int MsAdpcm = 2;
constexpr int IeeeFloat = 3;
constexpr int ALaw = 6;
constexpr int ULaw = 7;
constexpr int ImaAdpcm = 0x11;
constexpr int Gsm = 0x31;

// --- the list ---------------------------------------------------------------------------------

TEST(WritableFormats, TheOldPickersFormatsInOrder)
{
    const std::vector<WaveFormat> formats = platform::media::writableWaveFormats();
    const std::vector<int> rates = {8000, 11025, 16000, 22050, 32000, 44100, 48000};
    std::map<int, int> perTag;
    for (const WaveFormat &f : formats)
        ++perTag[f.formatTag];
    // libsndfile writes all of these into a wave file.
    EXPECT_EQ(perTag[Pcm], 4 * 7 * 2);
    EXPECT_EQ(perTag[IeeeFloat], 7 * 2);
    EXPECT_EQ(perTag[ALaw], 7 * 2);
    EXPECT_EQ(perTag[ULaw], 7 * 2);
    EXPECT_EQ(perTag[ImaAdpcm], 7 * 2);
    EXPECT_EQ(perTag[MsAdpcm], 7 * 2);
    EXPECT_EQ(perTag[Gsm], 1);
    EXPECT_EQ(perTag.size(), 7u);
    ASSERT_FALSE(formats.empty());
    EXPECT_EQ(formats.front(), (WaveFormat{Pcm, 1, 8000, 8}));
    EXPECT_EQ(formats.back(), (WaveFormat{Gsm, 1, 8000, 0}));

    std::set<std::string> texts;
    for (size_t i = 0; i < formats.size(); ++i) {
        const WaveFormat &f = formats[i];
        EXPECT_TRUE(std::find(rates.begin(), rates.end(), f.sampleRate) != rates.end()) << f.sampleRate;
        EXPECT_TRUE(f.channels == 1 || f.channels == 2);
        switch (f.formatTag) {
        case Pcm: EXPECT_TRUE(f.bitsPerSample == 8 || f.bitsPerSample == 16 || f.bitsPerSample == 24 || f.bitsPerSample == 32); break;
        case IeeeFloat: EXPECT_EQ(f.bitsPerSample, 32); break;
        case ALaw:
        case ULaw: EXPECT_EQ(f.bitsPerSample, 8); break;
        case ImaAdpcm:
        case MsAdpcm: EXPECT_EQ(f.bitsPerSample, 4); break;
        case Gsm: EXPECT_EQ(f, (WaveFormat{Gsm, 1, 8000, 0})); break;
        }
        // Each one named once, and the name reads back as the same format.
        const std::string text = platform::waveFormatText(f);
        EXPECT_TRUE(texts.insert(text).second) << text;
        EXPECT_EQ(platform::parseWaveFormatText(text), f) << text;
        if (i > 0) {
            const WaveFormat &p = formats[i - 1];
            EXPECT_LT(std::tie(p.formatTag, p.sampleRate, p.bitsPerSample, p.channels),
                      std::tie(f.formatTag, f.sampleRate, f.bitsPerSample, f.channels))
                << platform::waveFormatText(p) << " before " << text;
        }
    }
    EXPECT_TRUE(texts.count("PCM, 22050 Hz, 16 bit, mono"));
    EXPECT_TRUE(texts.count("GSM 6.10, 8000 Hz, mono"));
    EXPECT_TRUE(texts.count("IMA ADPCM, 44100 Hz, 4 bit, stereo"));
}

TEST(WritableFormats, TheProgramsMakerGivesTheSameList)
{
    rt::VirtualEventLoop loop;
    platform::Components components;
    platform::media::addRealMediaComponents(components, loop);
    ASSERT_TRUE(components.writableWaveFormats);
    EXPECT_EQ(components.writableWaveFormats(), platform::media::writableWaveFormats());
}

// --- each format written --------------------------------------------------------------------------

// The test wave and sox's conversions of it, made once for all formats.
class SourceWave {
public:
    static SourceWave &get()
    {
        static SourceWave wave;
        return wave;
    }
    std::string path() const { return m_folder.file("source.wav"); }
    std::string file(const std::string &name) const { return m_folder.file(name); }

    // sox's own conversion to rate and channels, as 32-bit float so that nothing is dithered.
    const converttest::FloatWave &reference(int rate, int channels)
    {
        const int key = rate * 10 + channels;
        auto it = m_references.find(key);
        if (it != m_references.end())
            return it->second;
        const std::string out = file("sox-" + std::to_string(rate) + "-" + std::to_string(channels) + ".wav");
        runTool("sox " + quoted(path()) + " -e floating-point -b 32 -r " + std::to_string(rate) + " -c " +
                std::to_string(channels) + " " + quoted(out));
        return m_references.emplace(key, converttest::readFloatWave(out)).first->second;
    }

private:
    SourceWave()
    {
        if (!converttest::writeTestWave(path(), SourceRate, SourceSeconds))
            ADD_FAILURE() << "no test wave";
    }
    mp3test::TempFolder m_folder;
    std::map<int, converttest::FloatWave> m_references;
};

// What sox calls each encoding.
std::string soxEncoding(const WaveFormat &f)
{
    switch (f.formatTag) {
    case Pcm: return std::to_string(f.bitsPerSample) + (f.bitsPerSample == 8 ? "-bit Unsigned Integer PCM" : "-bit Signed Integer PCM");
    case IeeeFloat: return "32-bit Floating Point PCM";
    case ALaw: return "8-bit A-law";
    case ULaw: return "8-bit u-law";
    case ImaAdpcm: return "4-bit IMA ADPCM";
    case MsAdpcm: return "4-bit MS ADPCM";
    case Gsm: return "GSM";
    }
    return "?";
}

// The "fmt " chunk of a wave file as it lies on disk.
struct FormatChunk {
    bool found = false;
    int tag = 0;
    int channels = 0;
    int rate = 0;
    int bits = 0;
    int samplesPerBlock = 1;  // of the compressed formats, from the extra bytes
};

FormatChunk formatChunkOf(const std::string &bytes)
{
    auto get = [&bytes](size_t at, int n) {
        uint32_t v = 0;
        for (int i = 0; i < n; ++i)
            v |= static_cast<uint32_t>(static_cast<unsigned char>(bytes[at + i])) << (8 * i);
        return v;
    };
    FormatChunk f;
    if (bytes.size() < 12 || bytes.compare(0, 4, "RIFF") != 0 || bytes.compare(8, 4, "WAVE") != 0)
        return f;
    for (size_t at = 12; at + 8 <= bytes.size();) {
        const uint32_t size = get(at + 4, 4);
        if (bytes.compare(at, 4, "fmt ") == 0 && size >= 16 && at + 8 + size <= bytes.size()) {
            f.found = true;
            f.tag = static_cast<int>(get(at + 8, 2));
            f.channels = static_cast<int>(get(at + 10, 2));
            f.rate = static_cast<int>(get(at + 12, 4));
            f.bits = static_cast<int>(get(at + 22, 2));
            if (size >= 20 && get(at + 24, 2) >= 2)
                f.samplesPerBlock = static_cast<int>(get(at + 26, 2));
            return f;
        }
        at += 8 + size + (size & 1);
    }
    return f;
}

// The sample count of the "fact" chunk; -1 when there is none.
int64_t factFramesOf(const std::string &bytes)
{
    auto get = [&bytes](size_t at) {
        uint32_t v = 0;
        for (int i = 0; i < 4; ++i)
            v |= static_cast<uint32_t>(static_cast<unsigned char>(bytes[at + i])) << (8 * i);
        return v;
    };
    for (size_t at = 12; at + 8 <= bytes.size();) {
        const uint32_t size = get(at + 4);
        if (bytes.compare(at, 4, "fact") == 0 && size >= 4 && at + 12 <= bytes.size())
            return get(at + 8);
        at += 8 + size + (size & 1);
    }
    return -1;
}

// The least match of the decoded sound to sox's conversion: what the encoding's own noise leaves.
double matchFloorDb(const WaveFormat &f)
{
    switch (f.formatTag) {
    case Pcm: return f.bitsPerSample == 8 ? 30 : 60;
    case IeeeFloat: return 60;
    case ALaw:
    case ULaw: return 25;
    case ImaAdpcm:
    case MsAdpcm: return 12;
    case Gsm: return 6;
    }
    return 999;
}

std::string testName(const WaveFormat &f)
{
    std::string name = platform::waveFormatText(f);
    for (char &c : name)
        if (!std::isalnum(static_cast<unsigned char>(c)))
            c = '_';
    name.erase(std::unique(name.begin(), name.end(), [](char a, char b) { return a == '_' && b == '_'; }), name.end());
    return name;
}

class EachOfferedFormat : public ::testing::TestWithParam<WaveFormat> {};

TEST_P(EachOfferedFormat, IsWrittenAsSoxReadsIt)
{
    const WaveFormat format = GetParam();
    SourceWave &source = SourceWave::get();
    const std::string before = mp3test::readBytes(source.path());
    ASSERT_FALSE(before.empty());
    const std::string target = source.file("out-" + testName(format) + ".wav");

    BatchChain chain;
    chain.convert(source.path(), target, format);
    EXPECT_EQ(chain.events, (Events{"started", "buffer", "stopped", "closed"}));
    EXPECT_EQ(chain.SrcFile->DataPosition(), SourceFrames * 4);
    EXPECT_EQ(mp3test::readBytes(source.path()), before) << "the source was touched";

    const FormatChunk chunk = formatChunkOf(mp3test::readBytes(target));
    ASSERT_TRUE(chunk.found);
    EXPECT_EQ(chunk.tag, format.formatTag);
    EXPECT_EQ(chunk.channels, format.channels);
    EXPECT_EQ(chunk.rate, format.sampleRate);
    EXPECT_EQ(chunk.bits, format.bitsPerSample);
    const bool blocks = format.formatTag == ImaAdpcm || format.formatTag == MsAdpcm || format.formatTag == Gsm;
    EXPECT_EQ(chunk.samplesPerBlock > 1, blocks);
    // ADPCM is padded to whole blocks, but its fact chunk counts the frames the source had (at
    // the target's rate), as sox and the system's codecs write it; players stop there.
    if (format.formatTag == ImaAdpcm || format.formatTag == MsAdpcm) {
        const int64_t frames = factFramesOf(mp3test::readBytes(target));
        const int64_t expected = SourceFrames * format.sampleRate / SourceRate;
        EXPECT_NEAR(static_cast<double>(frames), static_cast<double>(expected), 1.0);
    }

    const converttest::SoxInfo info = converttest::soxInfo(target);
    ASSERT_TRUE(info.ok) << "sox can't read " << target;
    EXPECT_EQ(info.encoding, soxEncoding(format));
    EXPECT_EQ(info.rate, format.sampleRate);
    EXPECT_EQ(info.channels, format.channels);
    const int64_t expected = SourceFrames * format.sampleRate / SourceRate;
    // Whole blocks of the compressed formats: the last one is filled up.
    const int64_t least = blocks ? expected : expected - 1;
    const int64_t most = blocks ? expected + chunk.samplesPerBlock - 1 : expected + 1;
    EXPECT_GE(info.samples, least) << "sox counts " << info.samples << ", " << expected << " went in";
    EXPECT_LE(info.samples, most) << "sox counts " << info.samples << ", " << expected << " went in";

    // The sound as sox decodes it, against sox's own conversion of the source.
    const std::string decoded = target + ".float.wav";
    runTool("sox " + quoted(target) + " -e floating-point -b 32 " + quoted(decoded));
    const converttest::FloatWave ours = converttest::readFloatWave(decoded);
    const converttest::FloatWave &theirs = source.reference(format.sampleRate, format.channels);
    ASSERT_TRUE(ours.ok && theirs.ok);
    const auto [lag, db] = converttest::bestMatch(theirs, ours, 4);
    std::cout << "[ format    ] " << platform::waveFormatText(format) << ": " << info.samples << " samples, "
              << db << " dB against sox" << (lag ? " at a lag of " + std::to_string(lag) : std::string()) << "\n";
    EXPECT_EQ(lag, 0);
    EXPECT_GE(db, matchFloorDb(format));
}

INSTANTIATE_TEST_SUITE_P(Offered, EachOfferedFormat, ::testing::ValuesIn(platform::media::writableWaveFormats()),
                         [](const auto &info) { return testName(info.param); });

} // namespace
