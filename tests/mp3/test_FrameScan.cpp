#include <cmath>
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "TempFolder.h"
#include "mp3/FrameScan.h"
#include "runtime/RuntimeError.h"

using mp3::BitrateTable;
using mp3::FrameScanResult;
using mp3::scanMp3Block;
using mp3::scanMp3File;
using mp3::shift_those_bits;
using mp3test::TempFolder;
using mp3test::writeBytes;
using mp3test::writeSparse;

namespace {

BitrateTable filledTable()
{
    BitrateTable table;
    table.fill();
    return table;
}

// A 4096-byte buffer with the bytes at the 1-based position, zeros elsewhere.
std::string block(std::string_view bytes, size_t at = 1)
{
    std::string b(4096, '\0');
    b.replace(at - 1, bytes.size(), bytes);
    return b;
}

std::string lines(std::initializer_list<std::string> parts)
{
    std::string out;
    for (const std::string &p : parts)
        out += (out.empty() ? "" : "\n") + p;
    return out;
}

// What Getmp3data makes of a file with no frame it can use: 0 seconds, yet a sample rate of 22050.
void expectNoFrame(const FrameScanResult &r)
{
    EXPECT_EQ(r.secondsText, " 0");
    EXPECT_TRUE(r.sampleRateSet);
    EXPECT_EQ(r.sampleRate.value(), 22050);
    EXPECT_EQ(r.sampleRateCaption(), "Sample Rate: 22050");
    EXPECT_EQ(r.framesCaption(), "Calculated Frames: 0");
    EXPECT_EQ(r.LastBitrate.value(), 0);
    EXPECT_EQ(r.ScanErrorMark, "yes");
    EXPECT_EQ(r.report, lines({"ID: MPEG-2", "Layer: ", "Bitrate:  0", "Sample rate:  22050", "Frames:  0",
                               "Duration:  0secs"}));
}

} // namespace

// ---- The bit rate table ----

TEST(BitrateTable, FilledFromItsFourteenRows)
{
    const BitrateTable table = filledTable();
    // Columns 7, 6, 5: MPEG-1 Layer I, II, III; 3, 2, 1: MPEG-2 Layer I, II, III.
    const int expected[8][16] = {
        {0},
        {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0},
        {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0},
        {0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256, 0},
        {0},
        {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 0},
        {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384, 0},
        {0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448, 0},
    };
    for (int column = 0; column < 8; ++column)
        for (int row = 0; row < 16; ++row)
            EXPECT_EQ(table.cell(column, row).value(), expected[column][row]) << column << "," << row;
}

TEST(BitrateTable, EmptyUntilFilledAndBoundedBy8x16)
{
    const BitrateTable empty;
    EXPECT_EQ(empty.cell(5, 9).value(), 0);
    const BitrateTable table = filledTable();
    EXPECT_EQ(table.cell(5, 9).value(), 128);
    for (auto [column, row] : {std::pair{8, 0}, std::pair{-1, 0}, std::pair{0, 16}, std::pair{0, -1}}) {
        try {
            (void)table.cell(column, row);
            ADD_FAILURE() << column << "," << row;
        } catch (const rt::RuntimeError &e) {
            EXPECT_EQ(e.number(), 9);
        }
    }
}

// ---- shift_those_bits ----

TEST(ShiftThoseBits, ReadsFourBitsLater)
{
    EXPECT_EQ(shift_those_bits("\xFF\xFB\x90"), "\xFF\xB9");
    EXPECT_EQ(shift_those_bits("\xFB\x90\x64"), "\xB9\x06");
    EXPECT_EQ(shift_those_bits("\x0F\xFF\xB9"), "\xFF\xFB");
    EXPECT_EQ(shift_those_bits("\x12\x34\x56\x78"), "\x23\x45");
    EXPECT_EQ(shift_those_bits(std::string("\0\0\0", 3)), std::string("\0\0", 2));
}

TEST(ShiftThoseBits, NeedsThreeCharacters)
{
    for (std::string_view s : {std::string_view(""), std::string_view("\xFF"), std::string_view("\xFF\xFB")}) {
        try {
            shift_those_bits(s);
            ADD_FAILURE() << s.size();
        } catch (const rt::RuntimeError &e) {
            EXPECT_EQ(e.number(), 5);
        }
    }
}

// ---- The measure ----

TEST(FrameScan, FourMillionBytesAt128KbitsAnd44100Hz)
{
    TempFolder dir;
    const std::string path = dir.file("common.mp3");
    writeSparse(path, "\xFF\xFB\x90\x64", 4000000);
    const FrameScanResult r = scanMp3File(path, filledTable());
    // 144 * 128000 / 44100 = 417.959..., 4000000 / that = 9570.3 frames, / 38.5 = 248.6
    EXPECT_EQ(r.secondsText, " 248");
    EXPECT_NEAR(r.seconds, 248.579, 0.001);
    EXPECT_EQ(r.frames, 9570);
    EXPECT_EQ(r.LastBitrate.value(), 128000);
    EXPECT_TRUE(r.sampleRateSet);
    EXPECT_EQ(r.sampleRate.value(), 44100);
    EXPECT_EQ(r.sampleRateCaption(), "Sample Rate: 44100");
    EXPECT_EQ(r.framesCaption(), "Calculated Frames: 9570");
    EXPECT_EQ(r.ScanErrorMark, "");
    EXPECT_EQ(r.report, lines({"ID: MPEG-1", "Layer: Layer III", "Bitrate:  128000", "Sample rate:  44100",
                               "Frames:  9570", "Duration:  248secs"}));
}

TEST(FrameScan, ThePaddingBitMakesFrames16BytesLonger)
{
    TempFolder dir;
    const std::string path = dir.file("padded.mp3");
    writeSparse(path, "\xFF\xFB\x92\x64", 4000000);
    const FrameScanResult r = scanMp3File(path, filledTable());
    // Frames of 433.96 bytes: 4000000 / 433.959... = 9217.5, / 38.5 = 239.4
    EXPECT_NEAR(4000000.0 / (r.frames + 0.5), 433.96, 0.03);
    EXPECT_EQ(r.frames, 9217);
    EXPECT_EQ(r.secondsText, " 239");
    EXPECT_EQ(r.sampleRateCaption(), "Sample Rate: 44100");
}

TEST(FrameScan, FrameLengthOf433Point96)
{
    // 144 * 128000 / 44100 + 16, with the file as long as 1000 such frames.
    const double frameLength = 144.0 * 128000 / 44100 + 16;
    EXPECT_NEAR(frameLength, 433.96, 0.005);
    const FrameScanResult r = scanMp3Block(block("\xFF\xFB\x92\x64"), 1000 * frameLength + 1, filledTable());
    EXPECT_EQ(r.frames, 1000);
    EXPECT_EQ(r.secondsText, " 25"); // 1000 / 38.5 = 25.97
}

TEST(FrameScan, Mpeg1SampleRatesBut44100AreNoneAtAll)
{
    for (const char *header : {"\xFF\xFB\x94\x64", "\xFF\xFB\x98\x64", "\xFF\xFB\x9C\x64"}) {
        const FrameScanResult r = scanMp3Block(block(header), 4000000, filledTable());
        EXPECT_FALSE(r.sampleRateSet);
        EXPECT_EQ(r.sampleRate.value(), 0);
        EXPECT_EQ(r.secondsText, " 0");
        EXPECT_EQ(r.frames, 0);
        EXPECT_EQ(r.LastBitrate.value(), 128000);
        EXPECT_EQ(r.sampleRateCaption(), "Sample Rate: 0");
        EXPECT_EQ(r.framesCaption(), "Calculated Frames: 0");
        EXPECT_EQ(r.ScanErrorMark, "yes");
        EXPECT_EQ(r.report, lines({"ID: MPEG-1", "Layer: Layer III", "Bitrate:  128000", "Sample rate:  0",
                                   "Frames:  0", "Duration:  0secs"}));
    }
}

TEST(FrameScan, Mpeg2Layer3At22050PassesWith144TimesTheRate)
{
    // FF F3 80 64: MPEG-2 Layer III, index 8 (64 kbit/s), 22050 Hz.
    const double frameLength = 144.0 * 64000 / 22050;
    const FrameScanResult r = scanMp3Block(block("\xFF\xF3\x80\x64"), 2000 * frameLength + 1, filledTable());
    EXPECT_EQ(r.LastBitrate.value(), 64000);
    EXPECT_TRUE(r.sampleRateSet);
    EXPECT_EQ(r.sampleRateCaption(), "Sample Rate: 22050");
    EXPECT_EQ(r.frames, 2000);
    EXPECT_EQ(r.secondsText, " 51"); // 2000 / 38.5 = 51.9
    EXPECT_EQ(r.ScanErrorMark, "");
    EXPECT_EQ(r.report, lines({"ID: MPEG-2", "Layer: Layer III", "Bitrate:  64000", "Sample rate:  22050",
                               "Frames:  2000", "Duration:  51secs"}));
}

TEST(FrameScan, Mpeg2At24000Or16000IsDamaged)
{
    for (const char *header : {"\xFF\xF3\x84\x64", "\xFF\xF3\x88\x64"}) {
        const FrameScanResult r = scanMp3Block(block(header), 100000, filledTable());
        EXPECT_FALSE(r.sampleRateSet);
        EXPECT_EQ(r.sampleRateCaption(), "Sample Rate: 0");
        EXPECT_EQ(r.secondsText, " 0");
        EXPECT_EQ(r.LastBitrate.value(), 64000);
    }
}

TEST(FrameScan, LayersAndVersionsInTheReport)
{
    // MPEG-1 Layer I, index 4: column 7 -> 128; MPEG-1 Layer II, index 4: column 6 -> 64;
    // MPEG-2 Layer II, index 4: column 2 -> 32.
    const FrameScanResult layer1 = scanMp3Block(block("\xFF\xFF\x40"), 100000, filledTable());
    EXPECT_EQ(layer1.LastBitrate.value(), 128000);
    EXPECT_NE(layer1.report.find("ID: MPEG-1\nLayer: Layer I\n"), std::string::npos);
    const FrameScanResult layer2 = scanMp3Block(block("\xFF\xFD\x40"), 100000, filledTable());
    EXPECT_EQ(layer2.LastBitrate.value(), 64000);
    EXPECT_NE(layer2.report.find("ID: MPEG-1\nLayer: Layer II\n"), std::string::npos);
    const FrameScanResult mpeg2 = scanMp3Block(block("\xFF\xF5\x40"), 100000, filledTable());
    EXPECT_EQ(mpeg2.LastBitrate.value(), 32000);
    EXPECT_NE(mpeg2.report.find("ID: MPEG-2\nLayer: Layer II\n"), std::string::npos);
    // Layer code 0 has no word.
    const FrameScanResult reserved = scanMp3Block(block("\xFF\xF9\x40"), 100000, filledTable());
    EXPECT_EQ(reserved.LastBitrate.value(), 0);
    EXPECT_NE(reserved.report.find("ID: MPEG-1\nLayer: \n"), std::string::npos);
}

TEST(FrameScan, ASyncHalfAByteLaterIsFoundByTheSecondBranch)
{
    // From position 5 the stream is FF FB 90 64 shifted by four bits: 0F FF B9 06 40.
    const FrameScanResult r = scanMp3Block(block("\x0F\xFF\xB9\x06\x40", 5), 4000000, filledTable());
    EXPECT_EQ(r.LastBitrate.value(), 128000);
    EXPECT_EQ(r.sampleRateCaption(), "Sample Rate: 44100");
    EXPECT_EQ(r.secondsText, " 248");
    EXPECT_EQ(r.ScanErrorMark, "");
}

TEST(FrameScan, AByteBeforeTheFrameEndingInFTakesTheNibbleBranchFirst)
{
    // 0F FF FB 90: the second branch fires one position early and reads FB 90 64 as the header:
    // MPEG-1 Layer I at index 11 (352 kbit/s) with a sample rate field of 128, so no sample rate.
    const FrameScanResult r = scanMp3Block(block("\x0F\xFF\xFB\x90\x64", 10), 4000000, filledTable());
    EXPECT_EQ(r.LastBitrate.value(), 352000);
    EXPECT_NE(r.report.find("Layer: Layer I\n"), std::string::npos);
    EXPECT_FALSE(r.sampleRateSet);
    EXPECT_EQ(r.secondsText, " 0");
}

TEST(FrameScan, BitRateIndex0Or15GivesNoTimeUnlessPadded)
{
    for (const char *header : {"\xFF\xFB\x00\x64", "\xFF\xFB\xF0\x64"}) {
        const FrameScanResult r = scanMp3Block(block(std::string_view(header, 4)), 61600, filledTable());
        EXPECT_EQ(r.LastBitrate.value(), 0);
        EXPECT_EQ(r.secondsText, " 0");
        EXPECT_EQ(r.sampleRateCaption(), "Sample Rate: 44100"); // and so it passes at Add
        EXPECT_EQ(r.ScanErrorMark, "yes");
    }
    // With the padding bit a frame counts 16 bytes: 61600 / 16 = 3850 frames, 100 seconds.
    const FrameScanResult padded = scanMp3Block(block("\xFF\xFB\x02\x64"), 61600, filledTable());
    EXPECT_EQ(padded.frames, 3850);
    EXPECT_EQ(padded.secondsText, " 100");
    EXPECT_EQ(padded.ScanErrorMark, "");
}

TEST(FrameScan, AFileShorterThan4096BytesIsNoFrame)
{
    TempFolder dir;
    const std::string path = dir.file("short.mp3");
    writeBytes(path, block("\xFF\xFB\x90\x64").substr(0, 4095));
    expectNoFrame(scanMp3File(path, filledTable()));
}

TEST(FrameScan, AFileOfExactly4096BytesIsRead)
{
    TempFolder dir;
    const std::string path = dir.file("4096.mp3");
    writeBytes(path, block("\xFF\xFB\x90\x64"));
    const FrameScanResult r = scanMp3File(path, filledTable());
    EXPECT_EQ(r.sampleRateCaption(), "Sample Rate: 44100");
    EXPECT_EQ(r.frames, 9); // 4096 / 417.96
    EXPECT_EQ(r.secondsText, " 0");
    EXPECT_EQ(r.ScanErrorMark, "");
}

TEST(FrameScan, AMissingFileIsNoFrame)
{
    TempFolder dir;
    expectNoFrame(scanMp3File(dir.file("missing.mp3"), filledTable()));
    expectNoFrame(scanMp3File("", filledTable()));
}

TEST(FrameScan, NoSyncIn4095PositionsIsNoFrame)
{
    TempFolder dir;
    const std::string path = dir.file("id3v2.mp3");
    // A 5000-byte tag hides the frame behind it.
    std::string bytes = std::string("ID3\x03\0\0\0\0\x27\x0E", 10) + std::string(4990, '\0');
    bytes += block("\xFF\xFB\x90\x64");
    writeSparse(path, bytes, 4000000);
    expectNoFrame(scanMp3File(path, filledTable()));
}

TEST(FrameScan, OnlyTheFirst4096BytesAreLookedAt)
{
    std::string bytes(5000, '\0');
    bytes.replace(4096, 4, "\xFF\xFB\x90\x64");
    expectNoFrame(scanMp3Block(std::string_view(bytes).substr(0, 4096), 4000000, filledTable()));
}

TEST(FrameScan, ASyncLookalikeInsideATagIsTakenAsTheHeader)
{
    TempFolder dir;
    const std::string path = dir.file("lookalike.mp3");
    std::string bytes = std::string("ID3\x03\0\0\0\0\x0F\x76", 10) + std::string(1990, '\0');
    bytes.replace(100, 4, "\xFF\xFB\x94\x64"); // inside the tag: a 48000 Hz header
    bytes += block("\xFF\xFB\x90\x64");
    writeSparse(path, bytes, 4000000);
    const FrameScanResult r = scanMp3File(path, filledTable());
    EXPECT_EQ(r.sampleRateCaption(), "Sample Rate: 0");
    EXPECT_EQ(r.secondsText, " 0");
}

TEST(FrameScan, ASyncAtTheLastPositionFindsNoHeader)
{
    // FF F0 at 4095: the header would need characters behind the buffer.
    expectNoFrame(scanMp3Block(block("\xFF\xF0", 4095), 4000000, filledTable()));
    // FF FB at 4094 with 90 at 4096: still one character short.
    expectNoFrame(scanMp3Block(block("\xFF\xFB\x90", 4094), 4000000, filledTable()));
    // At 4093 all three are there; the fourth header byte doesn't matter to the measure.
    const FrameScanResult r = scanMp3Block(block("\xFF\xFB\x90\x64", 4093), 4000000, filledTable());
    EXPECT_EQ(r.secondsText, " 248");
}

TEST(FrameScan, AHalfByteSyncAtTheEndLeavesAOneCharacterHeader)
{
    // 0F FF F0 at 4094: the header is the one character F0 (MPEG-1, Layer I, index 0), and its
    // second character fails and counts as 0: sample rate 44100, bit rate 0.
    const FrameScanResult r = scanMp3Block(block("\x0F\xFF\xF0", 4094), 4000000, filledTable());
    EXPECT_TRUE(r.sampleRateSet);
    EXPECT_EQ(r.sampleRateCaption(), "Sample Rate: 44100");
    EXPECT_EQ(r.LastBitrate.value(), 0);
    EXPECT_EQ(r.secondsText, " 0");
    EXPECT_EQ(r.ScanErrorMark, "yes");
    EXPECT_NE(r.report.find("ID: MPEG-1\nLayer: Layer I\n"), std::string::npos);
}

TEST(FrameScan, AnEmptyTableGivesNoBitRate)
{
    const FrameScanResult r = scanMp3Block(block("\xFF\xFB\x90\x64"), 4000000, BitrateTable());
    EXPECT_EQ(r.LastBitrate.value(), 0);
    EXPECT_EQ(r.secondsText, " 0");
}

TEST(FrameScan, ErrorsWhileReadingMarkTheScan)
{
    const FrameScanResult r = scanMp3Block(block("\xFF\xFB\x90\x64"), 4000000, filledTable(), true);
    EXPECT_EQ(r.secondsText, " 248");
    EXPECT_EQ(r.ScanErrorMark, "yes");
}

TEST(FrameScan, A200MegabyteFileAt128Kbits)
{
    TempFolder dir;
    const std::string path = dir.file("big.mp3");
    writeSparse(path, "\xFF\xFB\x90\x64", 200ull * 1024 * 1024);
    const FrameScanResult r = scanMp3File(path, filledTable());
    // 209715200 / 417.959... = 501760 frames, / 38.5 = 13032.7
    EXPECT_EQ(r.frames, 501760);
    EXPECT_EQ(r.secondsText, " 13032");
}

TEST(FrameScan, TheDirectSearchFindsWhatTheStatementByStatementOneFinds)
{
    // Random buffers with syncs planted at random places, the last positions included.
    uint32_t seed = 12345;
    auto next = [&] {
        seed = seed * 1664525u + 1013904223u;
        return seed >> 8;
    };
    const char *plants[] = {"\xFF\xFB", "\xFF\xF0", "\x0F\xFF", "\xFF\xFF", "\x3F\xFF\xF2"};
    int found = 0;
    for (int round = 0; round < 400; ++round) {
        std::string b(4096, '\0');
        for (char &c : b)
            c = static_cast<char>(next() % 0xF0); // no FF anywhere unless planted
        const std::string_view plant = plants[round % 5];
        const size_t at = round % 3 == 0 ? 4096 - plant.size() - next() % 6 : next() % (4096 - plant.size());
        b.replace(at, plant.size(), plant);
        rt::ResumeNext direct;
        rt::ResumeNext literal;
        const std::string fast = mp3::detail::frameHeaderText(b, direct, false);
        const std::string slow = mp3::detail::frameHeaderText(b, literal, true);
        EXPECT_EQ(fast, slow) << round << " at " << at;
        EXPECT_EQ(direct.lastError(), literal.lastError()) << round << " at " << at;
        found += !slow.empty();
    }
    EXPECT_GT(found, 300);
}

TEST(FrameScan, BothSearchesOnAnEmptyBuffer)
{
    rt::ResumeNext direct;
    rt::ResumeNext literal;
    EXPECT_EQ(mp3::detail::frameHeaderText("", direct, false), "");
    EXPECT_EQ(mp3::detail::frameHeaderText("", literal, true), "");
    EXPECT_EQ(direct.lastError(), 5);
    EXPECT_EQ(literal.lastError(), 5);
}
