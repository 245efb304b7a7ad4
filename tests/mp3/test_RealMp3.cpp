// Real files encoded with LAME, read by both measures. Each case states by hand what its first
// header is (checked first, so a different encoder shows up as such) and what follows from it:
// the InfoString of cIDV3, the seconds of the frame scan and the verdict the layout builder draws.
#include <cmath>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Mp3Maker.h"
#include "TempFolder.h"
#include "mp3/cIDV3.h"
#include "mp3/FrameScan.h"
#include "runtime/Conversions.h"

namespace {

using testsupport::Mp3Options;

enum class Verdict {
    Fine,             // a time and a sample rate: imported and added
    ZeroTimeAtImport, // "00:00" in the import list, but it passes at Add
    RefusedAtAdd,     // "Sample Rate: 0": the damaged-file warning at Add
};

// What cIDV3's search for FF FA / FF FB meets in the first 5000 positions.
enum class Search {
    TheFrame,  // the file's own first frame
    Nothing,   // no pair at all: version 25, Hz 0, no InfoString
    Lookalike, // a pair inside MPEG-2 audio data, read as an MPEG-1 Layer III header
};

struct RealCase {
    const char *name;
    Mp3Options options;
    std::string firstHeader; // the 4 bytes of the first frame, behind any ID3v2 tag
    Search search;
    // cIDV3 on its own frame: Kbits and the InfoString from line 3 on.
    int kbits;
    std::vector<std::string> infoTail;
    bool xingCount; // a stereo MPEG-1 Xing header, whose count cIDV3 reads
    // The frame scan: bit rate, sample rate (0 when none), padding (0 or 16), and the verdict.
    int lastBitrate;
    int sampleRate;
    int padding;
    Verdict verdict;
};

Mp3Options opts(int rate, int kbps, double seconds, int channels, bool vbr = false,
                std::optional<std::string> id3v1 = std::nullopt, int id3v2 = 0)
{
    Mp3Options o;
    o.sampleRate = rate;
    o.kbps = kbps;
    o.seconds = seconds;
    o.channels = channels;
    o.vbr = vbr;
    o.id3v1Title = std::move(id3v1);
    o.id3v2Bytes = id3v2;
    return o;
}

std::vector<std::string> tail(const char *kbitsLine, const char *hzLine)
{
    return {"MPEG 1.0 layer 3", kbitsLine, hzLine, "Private: No", "CRCs: No", "Copyrighted: No", "Original: Yes",
            "Emphasis: None"};
}

const std::string Mpeg1_44100_128_Joint("\xFF\xFB\x90\x64", 4);
const std::string Mpeg1_44100_128_Mono("\xFF\xFB\x90\xC4", 4);

std::vector<RealCase> realCases()
{
    return {
        {"Mpeg1_48000_Stereo_Cbr", opts(48000, 128, 5, 2), std::string("\xFF\xFB\x94\x64", 4), Search::TheFrame, 128,
         tail("128kbit, 0 frames", "48000hz Joint Stereo"), false, 128000, 0, 0, Verdict::RefusedAtAdd},
        {"Mpeg1_48000_Stereo_Vbr", opts(48000, 0, 10, 2, true), std::string("\xFF\xFB\x94\x64", 4), Search::TheFrame,
         128, tail("128kbit, XING frames", "48000hz Joint Stereo"), true, 128000, 0, 0, Verdict::RefusedAtAdd},
        {"Mpeg1_48000_Mono_Vbr", opts(48000, 0, 10, 1, true), std::string("\xFF\xFB\x94\xC4", 4), Search::TheFrame,
         128, tail("128kbit, 0 frames", "48000hz Single Channel"), false, 128000, 0, 0, Verdict::RefusedAtAdd},
        {"Mpeg1_44100_Stereo_Cbr", opts(44100, 128, 5, 2), Mpeg1_44100_128_Joint, Search::TheFrame, 128,
         tail("128kbit, 0 frames", "44100hz Joint Stereo"), false, 128000, 44100, 0, Verdict::Fine},
        {"Mpeg1_44100_Mono_Cbr", opts(44100, 128, 5, 1), Mpeg1_44100_128_Mono, Search::TheFrame, 128,
         tail("128kbit, 0 frames", "44100hz Single Channel"), false, 128000, 44100, 0, Verdict::Fine},
        {"Mpeg1_44100_Stereo_Cbr_192", opts(44100, 192, 5, 2), std::string("\xFF\xFB\xB0\x64", 4), Search::TheFrame,
         192, tail("192kbit, 0 frames", "44100hz Joint Stereo"), false, 192000, 44100, 0, Verdict::Fine},
        {"Mpeg1_44100_Stereo_Vbr", opts(44100, 0, 10, 2, true), Mpeg1_44100_128_Joint, Search::TheFrame, 128,
         tail("128kbit, XING frames", "44100hz Joint Stereo"), true, 128000, 44100, 0, Verdict::Fine},
        {"Mpeg1_44100_Mono_Vbr", opts(44100, 0, 10, 1, true), Mpeg1_44100_128_Mono, Search::TheFrame, 128,
         tail("128kbit, 0 frames", "44100hz Single Channel"), false, 128000, 44100, 0, Verdict::Fine},
        {"Mpeg1_44100_Id3v1", opts(44100, 128, 5, 2, false, "Tone Test"), Mpeg1_44100_128_Joint, Search::TheFrame,
         128, tail("128kbit, 0 frames", "44100hz Joint Stereo"), false, 128000, 44100, 0, Verdict::Fine},
        {"Mpeg1_44100_Id3v2_1000_Id3v1", opts(44100, 128, 5, 2, false, "Behind a tag", 1000), Mpeg1_44100_128_Joint,
         Search::TheFrame, 128, tail("128kbit, 0 frames", "44100hz Joint Stereo"), false, 128000, 44100, 0,
         Verdict::Fine},
        {"Mpeg1_44100_Id3v2_6000", opts(44100, 128, 5, 2, false, std::nullopt, 6000), Mpeg1_44100_128_Joint,
         Search::Nothing, 0, {}, false, 0, 22050, 0, Verdict::ZeroTimeAtImport},
        {"Mpeg1_32000_Stereo_Cbr", opts(32000, 128, 5, 2), std::string("\xFF\xFB\x98\x64", 4), Search::TheFrame, 128,
         tail("128kbit, 0 frames", "32000hz Joint Stereo"), false, 128000, 0, 0, Verdict::RefusedAtAdd},
        {"Mpeg1_32000_Mono_Cbr", opts(32000, 96, 5, 1), std::string("\xFF\xFB\x78\xC4", 4), Search::TheFrame, 96,
         tail("96kbit, 0 frames", "32000hz Single Channel"), false, 96000, 0, 0, Verdict::RefusedAtAdd},
        {"Mpeg2_24000_Stereo_Cbr", opts(24000, 64, 5, 2), std::string("\xFF\xF3\x84\x64", 4), Search::Nothing, 0, {},
         false, 64000, 0, 0, Verdict::RefusedAtAdd},
        {"Mpeg2_24000_Mono_Vbr", opts(24000, 0, 10, 1, true), std::string("\xFF\xF3\x84\xC4", 4), Search::Nothing, 0,
         {}, false, 64000, 0, 0, Verdict::RefusedAtAdd},
        {"Mpeg2_22050_Stereo_Vbr", opts(22050, 0, 30, 2, true), std::string("\xFF\xF3\x80\x64", 4), Search::Nothing, 0,
         {}, false, 64000, 22050, 0, Verdict::Fine},
        {"Mpeg2_22050_Stereo_Cbr", opts(22050, 64, 5, 2), std::string("\xFF\xF3\x80\x64", 4), Search::Lookalike, 0, {},
         false, 64000, 22050, 0, Verdict::Fine},
        {"Mpeg2_22050_Mono_Cbr", opts(22050, 32, 5, 1), std::string("\xFF\xF3\x40\xC4", 4), Search::Lookalike, 0, {},
         false, 32000, 22050, 0, Verdict::Fine},
        {"Mpeg2_16000_Mono_Cbr", opts(16000, 32, 5, 1), std::string("\xFF\xF3\x48\xC4", 4), Search::Lookalike, 0, {},
         false, 32000, 0, 0, Verdict::RefusedAtAdd},
        {"Mpeg2_16000_Stereo_Vbr", opts(16000, 0, 10, 2, true), std::string("\xFF\xF3\x88\x64", 4), Search::Nothing, 0,
         {}, false, 64000, 0, 0, Verdict::RefusedAtAdd},
    };
}

Verdict verdictOf(const mp3::FrameScanResult &r)
{
    if (r.sampleRateCaption() == "Sample Rate: 0")
        return Verdict::RefusedAtAdd;
    if (r.secondsText == " 0")
        return Verdict::ZeroTimeAtImport;
    return Verdict::Fine;
}

// 1-based position of the first FF FA / FF FB pair starting at 1..5000, 0 when there is none.
size_t firstMpeg1Layer3Pair(const std::string &bytes)
{
    for (size_t i = 0; i < 5000 && i + 1 < bytes.size(); ++i)
        if (static_cast<unsigned char>(bytes[i]) == 0xFF
            && (static_cast<unsigned char>(bytes[i + 1]) == 0xFA || static_cast<unsigned char>(bytes[i + 1]) == 0xFB))
            return i + 1;
    return 0;
}

uint32_t bigEndian(const std::string &bytes, size_t offset)
{
    uint32_t v = 0;
    for (size_t k = 0; k < 4; ++k)
        v = (v << 8) | static_cast<unsigned char>(bytes[offset + k]);
    return v;
}

std::string joinedCrLf(const std::vector<std::string> &lines)
{
    std::string out;
    for (size_t i = 0; i < lines.size(); ++i)
        out += (i ? "\r\n" : "") + lines[i];
    return out;
}

class RealMp3 : public testing::TestWithParam<RealCase> {
protected:
    static void SetUpTestSuite() { s_folder = std::make_unique<mp3test::TempFolder>(); }
    static void TearDownTestSuite() { s_folder.reset(); }
    static std::unique_ptr<mp3test::TempFolder> s_folder;
};

std::unique_ptr<mp3test::TempFolder> RealMp3::s_folder;

TEST_P(RealMp3, BothMeasuresAndTheVerdict)
{
    const RealCase &c = GetParam();
    const std::string path = s_folder->file(std::string(c.name) + ".mp3");
    ASSERT_TRUE(testsupport::makeMp3(path, c.options));
    const std::string bytes = mp3test::readBytes(path);
    const size_t size = bytes.size();
    const size_t frameStart = static_cast<size_t>(c.options.id3v2Bytes); // 0-based
    ASSERT_GT(size, frameStart + 4096);

    // The fixture: what LAME put at the start.
    ASSERT_EQ(bytes.substr(frameStart, 4), c.firstHeader) << "the encoder wrote another first header";
    if (c.options.id3v2Bytes > 0) {
        ASSERT_EQ(bytes.substr(0, 3), "ID3");
    }
    if (c.options.id3v1Title) {
        ASSERT_EQ(bytes.substr(size - 128, 3), "TAG");
    }

    // ---- cIDV3 ----
    mp3::cIDV3 id;
    id.setFileName(path);
    EXPECT_EQ(id.FileName(), path);
    EXPECT_EQ(id.FileBytes().value(), static_cast<int32_t>(size));
    EXPECT_EQ(id.HasTag(), c.options.id3v1Title.has_value());
    if (c.options.id3v1Title) {
        EXPECT_EQ(id.Title(), *c.options.id3v1Title);
        EXPECT_EQ(id.Artist(), "");
        EXPECT_EQ(id.Genre(), 12);
        EXPECT_EQ(mp3::cIDV3::GenreText(id.Genre()), "Other");
    }
    const size_t pair = firstMpeg1Layer3Pair(bytes);
    switch (c.search) {
    case Search::TheFrame: {
        ASSERT_EQ(pair, frameStart + 1);
        EXPECT_EQ(id.MpegVersion().value(), 1);
        EXPECT_EQ(id.LayerVersion().value(), 3);
        EXPECT_EQ(id.Kbits().value(), c.kbits);
        // The length from the size and the first frame's rate only, VBR or not.
        const int seconds = static_cast<int>(size * 8 / static_cast<size_t>(c.kbits) / 1000);
        EXPECT_EQ(id.Seconds().value(), seconds);
        std::vector<std::string> lines = {"Size: " + std::to_string(size) + " bytes",
                                          "Length: " + std::to_string(seconds) + " seconds"};
        std::string count = "0";
        if (c.xingCount) {
            ASSERT_EQ(bytes.substr(frameStart + 36, 4), "Xing");
            const uint32_t frames = bigEndian(bytes, frameStart + 44);
            // A second of audio is sampleRate / 1152 frames, give or take the encoder's delay.
            const double expected = c.options.seconds * c.options.sampleRate / 1152;
            EXPECT_NEAR(frames, expected, 5);
            EXPECT_EQ(id.Frames().value(), static_cast<int32_t>(frames));
            count = std::to_string(frames);
        } else {
            EXPECT_EQ(id.Frames().value(), 0);
        }
        for (std::string line : c.infoTail) {
            if (const size_t at = line.find("XING"); at != std::string::npos)
                line.replace(at, 4, count);
            lines.push_back(line);
        }
        EXPECT_EQ(id.InfoString(), joinedCrLf(lines));
        break;
    }
    case Search::Nothing:
        ASSERT_EQ(pair, 0u) << "a lookalike frame start in the audio data";
        EXPECT_EQ(id.MpegVersion().value(), 25);
        EXPECT_EQ(id.LayerVersion().value(), 0);
        EXPECT_EQ(id.Hz().value(), 0);
        EXPECT_EQ(id.Kbits().value(), 0);
        EXPECT_EQ(id.Seconds().value(), 0);
        EXPECT_EQ(id.InfoString(), "");
        break;
    case Search::Lookalike:
        // The file's own frames (FF F3) are passed over; a pair inside the audio is read instead.
        ASSERT_GT(pair, frameStart + 1);
        EXPECT_EQ(id.MpegVersion().value(), 1);
        EXPECT_EQ(id.LayerVersion().value(), 3);
        EXPECT_NE(id.Hz().value(), c.options.sampleRate);
        break;
    }

    // ---- The frame scan ----
    mp3::BitrateTable table;
    table.fill();
    const mp3::FrameScanResult r = mp3::scanMp3File(path, table);
    EXPECT_EQ(r.LastBitrate.value(), c.lastBitrate);
    EXPECT_EQ(r.sampleRateCaption(), "Sample Rate:" + rt::Str(c.sampleRate));
    if (c.sampleRate != 0) {
        const double frameLength = 144.0 * c.lastBitrate / c.sampleRate + c.padding;
        if (frameLength > 0) {
            const double frames = static_cast<double>(size) / frameLength;
            EXPECT_EQ(r.secondsText, " " + std::to_string(static_cast<long>(std::floor(frames / 38.5))));
            EXPECT_EQ(r.framesCaption(), "Calculated Frames: " + std::to_string(static_cast<long>(std::floor(frames))));
        } else {
            EXPECT_EQ(r.secondsText, " 0");
            EXPECT_EQ(r.framesCaption(), "Calculated Frames: 0");
        }
    } else {
        EXPECT_EQ(r.secondsText, " 0");
        EXPECT_EQ(r.framesCaption(), "Calculated Frames: 0");
        EXPECT_EQ(r.ScanErrorMark, "yes");
    }
    EXPECT_EQ(verdictOf(r), c.verdict);
}

INSTANTIATE_TEST_SUITE_P(Lame, RealMp3, testing::ValuesIn(realCases()),
                         [](const testing::TestParamInfo<RealCase> &info) { return std::string(info.param.name); });

// A CBR file's seconds, worked through: 5 s at 44100 Hz and 128 kbit/s, whatever LAME pads.
TEST(RealMp3Worked, FiveSecondsAt128KbitsMeasureFiveSeconds)
{
    mp3test::TempFolder dir;
    const std::string path = dir.file("five.mp3");
    ASSERT_TRUE(testsupport::makeMp3(path, opts(44100, 128, 5, 2)));
    mp3::cIDV3 id;
    id.setFileName(path);
    EXPECT_EQ(id.Seconds().value(), 5);
    mp3::BitrateTable table;
    table.fill();
    // About 194 frames of 417.96 bytes (the 38.28 real frames a second count as 38.5).
    const mp3::FrameScanResult r = mp3::scanMp3File(path, table);
    EXPECT_EQ(r.secondsText, " 5");
    EXPECT_NEAR(r.frames, 194, 2);
}

} // namespace
