#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "TempFolder.h"
#include "mp3/cIDV3.h"
#include "runtime/Paths.h"
#include "runtime/RuntimeError.h"

using mp3::cIDV3;
using mp3test::id3v1;
using mp3test::readBytes;
using mp3test::TempFolder;
using mp3test::writeBytes;
using mp3test::writeSparse;

namespace {

// A stand-in for the kit's combo box: records what FillComboGenre does to it.
struct RecordingCombo {
    std::vector<std::string> items{"left over"};
    int listIndex = -1;
    int clears = 0;
    void Clear()
    {
        items.clear();
        ++clears;
    }
    void AddItem(const std::string &text) { items.push_back(text); }
    void setListIndex(int index) { listIndex = index; }
};

// 4 header bytes, then zeros: `total` bytes in all.
std::string frameFile(std::string_view header, size_t total, size_t at = 1)
{
    std::string bytes(total, '\0');
    bytes.replace(at - 1, header.size(), header);
    return bytes;
}

std::string joined(const std::vector<std::string> &lines)
{
    std::string out;
    for (size_t i = 0; i < lines.size(); ++i)
        out += (i ? "\r\n" : "") + lines[i];
    return out;
}

void expectResetValues(const cIDV3 &id)
{
    EXPECT_EQ(id.Title(), "");
    EXPECT_EQ(id.Artist(), "");
    EXPECT_EQ(id.Album(), "");
    EXPECT_EQ(id.Year(), "");
    EXPECT_EQ(id.Comments(), "");
    EXPECT_EQ(id.Genre(), 12);
    EXPECT_EQ(id.FileBytes().value(), 0);
    EXPECT_EQ(id.Seconds().value(), 0);
    EXPECT_EQ(id.MpegVersion().value(), 0);
    EXPECT_EQ(id.LayerVersion().value(), 0);
    EXPECT_EQ(id.Kbits().value(), 0);
    EXPECT_EQ(id.Frames().value(), 0);
    EXPECT_EQ(id.Hz().value(), 0);
    EXPECT_EQ(id.Mode(), "");
    EXPECT_EQ(id.PrivateBit(), "");
    EXPECT_EQ(id.CRCs(), "");
    EXPECT_EQ(id.Copyrighted(), "");
    EXPECT_EQ(id.Original(), "");
    EXPECT_EQ(id.Emphasis(), "");
    EXPECT_EQ(id.Channels().value(), 0);
    EXPECT_EQ(id.InfoString(), "");
}

} // namespace

// ---- Genre names ----

TEST(cIDV3Genre, OutOfRangeIsUnknown)
{
    EXPECT_EQ(cIDV3::GenreText(-1), "Unknown");
    EXPECT_EQ(cIDV3::GenreText(148), "Unknown");
    EXPECT_EQ(cIDV3::GenreText(32767), "Unknown");
    EXPECT_EQ(cIDV3::GenreText(-32768), "Unknown");
}

TEST(cIDV3Genre, EndsOfTheTable)
{
    EXPECT_EQ(cIDV3::GenreText(0), "Blues");
    EXPECT_EQ(cIDV3::GenreText(12), "Other");
    EXPECT_EQ(cIDV3::GenreText(14), "R&B");
    EXPECT_EQ(cIDV3::GenreText(40), "Alt. Rock");
    EXPECT_EQ(cIDV3::GenreText(78), "Rock & Roll");
    EXPECT_EQ(cIDV3::GenreText(127), "Drum & Bass");
    EXPECT_EQ(cIDV3::GenreText(133), "Negerpunk");
    EXPECT_EQ(cIDV3::GenreText(146), "JPop");
    EXPECT_EQ(cIDV3::GenreText(147), "Synthpop");
}

TEST(cIDV3Genre, OwnSpellingsOfTheRowsTheTablesDisagreeOn)
{
    EXPECT_EQ(cIDV3::GenreText(27), "Trip-Hop");
    EXPECT_EQ(cIDV3::GenreText(59), "Gangsta");
    EXPECT_EQ(cIDV3::GenreText(62), "Pop/Funk");
    EXPECT_EQ(cIDV3::GenreText(67), "Psychadelic");
    EXPECT_EQ(cIDV3::GenreText(89), "Bluegrass");
    EXPECT_EQ(cIDV3::GenreText(90), "Avantgarde");
    EXPECT_EQ(cIDV3::GenreText(117), "Power Ballad");
    EXPECT_EQ(cIDV3::GenreText(123), "A Cappella");
    EXPECT_EQ(cIDV3::GenreText(131), "Indie");
    EXPECT_EQ(cIDV3::GenreText(132), "BritPop");
    EXPECT_EQ(cIDV3::GenreText(140), "Contemporary Christian");
    EXPECT_EQ(cIDV3::GenreText(144), "Thrash Metal");
}

TEST(cIDV3Genre, FillComboSelectsBluesForAnIndexOutOfRange)
{
    cIDV3 id;
    RecordingCombo combo;
    id.FillComboGenre(combo, 200);
    EXPECT_EQ(combo.clears, 1);
    ASSERT_EQ(combo.items.size(), 148u);
    EXPECT_EQ(combo.listIndex, 0);
    EXPECT_EQ(combo.items[static_cast<size_t>(combo.listIndex)], "Blues");
    for (int i = 0; i < 148; ++i)
        EXPECT_EQ(combo.items[static_cast<size_t>(i)], cIDV3::GenreText(i)) << i;

    id.FillComboGenre(combo, -1);
    EXPECT_EQ(combo.listIndex, 0);
    EXPECT_EQ(combo.items.size(), 148u);
    id.FillComboGenre(combo, 148);
    EXPECT_EQ(combo.listIndex, 0);
}

TEST(cIDV3Genre, FillComboKeepsASelectionInRange)
{
    cIDV3 id;
    RecordingCombo combo;
    id.FillComboGenre(combo, 147);
    EXPECT_EQ(combo.listIndex, 147);
    EXPECT_EQ(combo.items[147], "Synthpop");
    id.FillComboGenre(combo, 0);
    EXPECT_EQ(combo.listIndex, 0);
}

// ---- Object state ----

TEST(cIDV3State, ANewObjectHoldsTheResetValues)
{
    cIDV3 id;
    EXPECT_EQ(id.FileName(), "");
    expectResetValues(id);
}

TEST(cIDV3State, AMissingFileLeavesFileNameEmptyAndEverythingReset)
{
    TempFolder dir;
    const std::string tagged = dir.file("tagged.mp3");
    writeBytes(tagged, frameFile("\xFF\xFB\x90\x64", 2000) + id3v1("TAG", "Song", "Band", "Disc", "1999", "Note", 17));
    cIDV3 id;
    id.setFileName(tagged);
    ASSERT_EQ(id.FileName(), tagged);
    ASSERT_EQ(id.Title(), "Song");
    ASSERT_EQ(id.Genre(), 17);

    id.setFileName(dir.file("nothing here.mp3"));
    EXPECT_EQ(id.FileName(), "");
    expectResetValues(id);
    EXPECT_FALSE(id.HasTag());
    EXPECT_FALSE(id.WriteTag());
    EXPECT_FALSE(id.ClearTag());
}

TEST(cIDV3State, TagTextsAreCutToTheirFieldsAndTrimmedOfBlanksOnly)
{
    cIDV3 id;
    id.setTitle("A title that is longer than thirty characters");
    EXPECT_EQ(id.Title(), "A title that is longer than th");
    id.setYear("20245");
    EXPECT_EQ(id.Year(), "2024");
    id.setArtist("  Band   ");
    EXPECT_EQ(id.Artist(), "  Band");
    id.setComments(std::string("x\0\0 ", 4));
    EXPECT_EQ(id.Comments(), std::string("x\0\0", 3));
    id.setAlbum("");
    EXPECT_EQ(id.Album(), "");
}

TEST(cIDV3State, GenreIsAByte)
{
    cIDV3 id;
    id.setGenre(255);
    EXPECT_EQ(id.Genre(), 255);
    id.setGenre(0);
    EXPECT_EQ(id.Genre(), 0);
    try {
        id.setGenre(256);
        FAIL() << "no overflow";
    } catch (const rt::RuntimeError &e) {
        EXPECT_EQ(e.number(), 6);
    }
    EXPECT_THROW(id.setGenre(-1), rt::RuntimeError);
    EXPECT_EQ(id.Genre(), 0);
}

// ---- Tags ----

TEST(cIDV3Tag, ReadsTheRecordOfATaggedFile)
{
    TempFolder dir;
    const std::string path = dir.file("t.mp3");
    std::string comment = "Caf\xE9 ";
    comment += std::string("\0\0", 2);
    writeBytes(path, std::string(500, 'x') + id3v1("TAG", "Title", "Artist", "Album", "1987", comment, 144));
    cIDV3 id;
    id.setFileName(path);
    EXPECT_TRUE(id.HasTag());
    EXPECT_EQ(id.Title(), "Title");
    EXPECT_EQ(id.Artist(), "Artist");
    EXPECT_EQ(id.Album(), "Album");
    EXPECT_EQ(id.Year(), "1987");
    // Windows-1252 on disk; the NULs another writer left stay in the value.
    EXPECT_EQ(id.Comments(), std::string("Caf\xC3\xA9 \0\0", 8));
    EXPECT_EQ(id.Genre(), 144);
    EXPECT_EQ(cIDV3::GenreText(id.Genre()), "Thrash Metal");
}

TEST(cIDV3Tag, HasTagIgnoresCase)
{
    TempFolder dir;
    for (const char *magic : {"TAG", "tag", "Tag", "tAg"}) {
        const std::string path = dir.file(std::string(magic) + ".mp3");
        writeBytes(path, std::string(300, '\0') + id3v1(magic, "Mixed", "", "", "", "", 3));
        cIDV3 id;
        id.setFileName(path);
        EXPECT_TRUE(id.HasTag()) << magic;
        EXPECT_EQ(id.Title(), "Mixed") << magic;
        EXPECT_EQ(id.Genre(), 3) << magic;
    }
}

TEST(cIDV3Tag, NoTagKeepsTheResetRecord)
{
    TempFolder dir;
    const std::string path = dir.file("untagged.mp3");
    writeBytes(path, std::string(300, '\0') + id3v1("TAX", "Nope", "", "", "", "", 3));
    cIDV3 id;
    id.setFileName(path);
    EXPECT_FALSE(id.HasTag());
    EXPECT_EQ(id.Title(), "");
    EXPECT_EQ(id.Genre(), 12);
}

TEST(cIDV3Tag, AFileTooShortForATagHasNone)
{
    TempFolder dir;
    for (size_t size : {0u, 3u, 127u}) {
        const std::string path = dir.file("short" + std::to_string(size));
        writeBytes(path, std::string("TAG").substr(0, size) + std::string(size > 3 ? size - 3 : 0, ' '));
        cIDV3 id;
        id.setFileName(path);
        EXPECT_EQ(id.FileName(), path);
        EXPECT_FALSE(id.HasTag()) << size;
        EXPECT_FALSE(id.WriteTag()) << size;
        EXPECT_FALSE(id.ClearTag()) << size;
        EXPECT_EQ(std::filesystem::file_size(path), size);
    }
}

TEST(cIDV3Tag, WriteTagOnAFileWithoutTagTakesItsLast128Bytes)
{
    TempFolder dir;
    const std::string path = dir.file("audio.mp3");
    const std::string audio = frameFile("\xFF\xFB\x90\x64", 1000);
    writeBytes(path, audio);
    cIDV3 id;
    id.setFileName(path);
    ASSERT_FALSE(id.HasTag());
    id.setTitle("Caf\xC3\xA9");
    id.setArtist("Artist");
    id.setAlbum("Album");
    id.setYear("2001");
    id.setComments("Comment");
    id.setGenre(147);
    EXPECT_TRUE(id.WriteTag());

    const std::string bytes = readBytes(path);
    ASSERT_EQ(bytes.size(), 1000u);
    EXPECT_EQ(bytes.substr(0, 872), audio.substr(0, 872));
    EXPECT_EQ(bytes.substr(872), id3v1("TAG", "Caf\xE9", "Artist", "Album", "2001", "Comment", 147));
    EXPECT_TRUE(id.HasTag());

    cIDV3 again;
    again.setFileName(path);
    EXPECT_EQ(again.Title(), "Caf\xC3\xA9");
    EXPECT_EQ(again.Comments(), "Comment");
    EXPECT_EQ(again.Genre(), 147);
}

TEST(cIDV3Tag, ClearTagLeavesTheGenreByteAndTheLength)
{
    TempFolder dir;
    const std::string path = dir.file("tagged.mp3");
    const std::string audio(400, 'a');
    writeBytes(path, audio + id3v1("TAG", "Title", "Artist", "Album", "1999", "Comment", 42));
    cIDV3 id;
    id.setFileName(path);
    ASSERT_TRUE(id.HasTag());
    EXPECT_TRUE(id.ClearTag());
    const std::string bytes = readBytes(path);
    ASSERT_EQ(bytes.size(), 528u);
    EXPECT_EQ(bytes.substr(0, 400), audio);
    EXPECT_EQ(bytes.substr(400, 127), std::string(127, '\0'));
    EXPECT_EQ(static_cast<unsigned char>(bytes[527]), 42);
    EXPECT_FALSE(id.HasTag());

    // Writing again puts the tag where the old one stood.
    id.setTitle("New");
    EXPECT_TRUE(id.WriteTag());
    const std::string rewritten = readBytes(path);
    ASSERT_EQ(rewritten.size(), 528u);
    EXPECT_EQ(rewritten.substr(0, 400), audio);
    EXPECT_EQ(rewritten.substr(400), id3v1("TAG", "New", "Artist", "Album", "1999", "Comment", 42));
    EXPECT_TRUE(id.HasTag());
}

TEST(cIDV3Tag, AReadOnlyFileIsNotWritten)
{
    TempFolder dir;
    const std::string path = dir.file("locked.mp3");
    const std::string content = std::string(300, 'a') + id3v1("TAG", "Title", "", "", "", "", 1);
    writeBytes(path, content);
    cIDV3 id;
    id.setFileName(path);
    rt::setReadOnly(path, true);
    id.setTitle("Changed");
    EXPECT_FALSE(id.WriteTag());
    EXPECT_FALSE(id.ClearTag());
    EXPECT_EQ(readBytes(path), content);
    EXPECT_TRUE(id.HasTag());
}

// ---- Header analysis ----

TEST(cIDV3Header, ACommonFrameAtTheStart)
{
    TempFolder dir;
    const std::string path = dir.file("common.mp3");
    writeSparse(path, "\xFF\xFB\x90\x64", 4000000);
    cIDV3 id;
    id.setFileName(path);
    EXPECT_EQ(id.FileBytes().value(), 4000000);
    EXPECT_EQ(id.MpegVersion().value(), 1);
    EXPECT_EQ(id.LayerVersion().value(), 3);
    EXPECT_EQ(id.Kbits().value(), 128);
    EXPECT_EQ(id.Hz().value(), 44100);
    EXPECT_EQ(id.Mode(), "Joint Stereo");
    EXPECT_EQ(id.Channels().value(), 2);
    EXPECT_EQ(id.CRCs(), "No");
    EXPECT_EQ(id.PrivateBit(), "No");
    EXPECT_EQ(id.Copyrighted(), "No");
    EXPECT_EQ(id.Original(), "Yes");
    EXPECT_EQ(id.Emphasis(), "None");
    EXPECT_EQ(id.Frames().value(), 0);
    // 4000000 * 8 / 128 / 1000 = 250
    EXPECT_EQ(id.Seconds().value(), 250);
    EXPECT_EQ(id.InfoString(), joined({"Size: 4000000 bytes", "Length: 250 seconds", "MPEG 1.0 layer 3",
                                       "128kbit, 0 frames", "44100hz Joint Stereo", "Private: No", "CRCs: No",
                                       "Copyrighted: No", "Original: Yes", "Emphasis: None"}));
}

TEST(cIDV3Header, FlagsAndModesInWords)
{
    TempFolder dir;
    struct Case {
        const char *header;
        const char *mode;
        int channels;
        const char *crcs, *priv, *copyrighted, *original, *emphasis;
    } cases[] = {
        {"\xFF\xFA\x90\x00", "Stereo", 2, "Yes", "No", "No", "No", "None"},
        {"\xFF\xFB\x91\x89", "Dual Channel", 2, "No", "Yes", "Yes", "No", "50/15"},
        {"\xFF\xFB\x93\xCE", "Single Channel", 1, "No", "Yes", "Yes", "Yes", "Reserved"},
        {"\xFF\xFA\x90\x77", "Joint Stereo", 2, "Yes", "No", "No", "Yes", "CCITT J 17"},
    };
    int n = 0;
    for (const Case &c : cases) {
        const std::string path = dir.file("f" + std::to_string(n++));
        writeBytes(path, frameFile(std::string_view(c.header, 4), 16000));
        cIDV3 id;
        id.setFileName(path);
        EXPECT_EQ(id.Mode(), c.mode) << n;
        EXPECT_EQ(id.Channels().value(), c.channels) << n;
        EXPECT_EQ(id.CRCs(), c.crcs) << n;
        EXPECT_EQ(id.PrivateBit(), c.priv) << n;
        EXPECT_EQ(id.Copyrighted(), c.copyrighted) << n;
        EXPECT_EQ(id.Original(), c.original) << n;
        EXPECT_EQ(id.Emphasis(), c.emphasis) << n;
        EXPECT_EQ(id.Seconds().value(), 1) << n; // 16000 * 8 / 128 / 1000 = 1.024
    }
}

TEST(cIDV3Header, SampleRatesOfMpeg1)
{
    TempFolder dir;
    const std::pair<const char *, int> cases[] = {
        {"\xFF\xFB\x90\x64", 44100}, {"\xFF\xFB\x94\x64", 48000}, {"\xFF\xFB\x98\x64", 32000}};
    int n = 0;
    for (const auto &[header, hz] : cases) {
        const std::string path = dir.file("r" + std::to_string(n++));
        writeBytes(path, frameFile(std::string_view(header, 4), 8000));
        cIDV3 id;
        id.setFileName(path);
        EXPECT_EQ(id.Hz().value(), hz);
        EXPECT_NE(id.InfoString().find("\r\n" + std::to_string(hz) + "hz Joint Stereo\r\n"), std::string::npos);
    }
}

TEST(cIDV3Header, SampleRateIndex3LeavesHz0AndTheAnalysisGoesOn)
{
    TempFolder dir;
    const std::string path = dir.file("rate3.mp3");
    writeBytes(path, frameFile("\xFF\xFB\x9C\x64", 16000));
    cIDV3 id;
    id.setFileName(path);
    EXPECT_EQ(id.Hz().value(), 0);
    EXPECT_EQ(id.Kbits().value(), 128);
    EXPECT_EQ(id.Seconds().value(), 1);
    EXPECT_EQ(id.InfoString(), joined({"Size: 16000 bytes", "Length: 1 seconds", "MPEG 1.0 layer 3",
                                       "128kbit, 0 frames", "0hz Joint Stereo", "Private: No", "CRCs: No",
                                       "Copyrighted: No", "Original: Yes", "Emphasis: None"}));
}

TEST(cIDV3Header, BitRateIndex0GivesNoSecondsButAnInfoString)
{
    TempFolder dir;
    const std::string path = dir.file("free.mp3");
    writeBytes(path, frameFile(std::string_view("\xFF\xFB\x00\x44", 4), 16000));
    cIDV3 id;
    id.setFileName(path);
    EXPECT_EQ(id.Kbits().value(), 0);
    EXPECT_EQ(id.Seconds().value(), 0);
    EXPECT_EQ(id.Hz().value(), 44100);
    EXPECT_EQ(id.InfoString(), joined({"Size: 16000 bytes", "Length: 0 seconds", "MPEG 1.0 layer 3", "0kbit, 0 frames",
                                       "44100hz Joint Stereo", "Private: No", "CRCs: No", "Copyrighted: No",
                                       "Original: Yes", "Emphasis: None"}));
}

TEST(cIDV3Header, BitRateIndex15LeavesKbits0)
{
    TempFolder dir;
    const std::string path = dir.file("bad.mp3");
    writeBytes(path, frameFile("\xFF\xFB\xF0\x64", 16000));
    cIDV3 id;
    id.setFileName(path);
    EXPECT_EQ(id.Kbits().value(), 0);
    EXPECT_EQ(id.Seconds().value(), 0);
    EXPECT_EQ(id.Hz().value(), 44100);
    EXPECT_NE(id.InfoString().find("Length: 0 seconds\r\nMPEG 1.0 layer 3\r\n0kbit, 0 frames"), std::string::npos);
}

TEST(cIDV3Header, AllBitRatesOfMpeg1Layer3)
{
    TempFolder dir;
    const int kbits[15] = {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320};
    for (int index = 1; index < 15; ++index) {
        const std::string path = dir.file("b" + std::to_string(index));
        std::string header = "\xFF\xFB";
        header += static_cast<char>(index << 4);
        header += '\x64';
        writeBytes(path, frameFile(header, 64000));
        cIDV3 id;
        id.setFileName(path);
        EXPECT_EQ(id.Kbits().value(), kbits[index]) << index;
        EXPECT_EQ(id.Seconds().value(), 64000 * 8 / kbits[index] / 1000) << index;
    }
}

TEST(cIDV3Header, XingFrameCountOfAStereoFrame)
{
    TempFolder dir;
    const std::string path = dir.file("vbr.mp3");
    std::string bytes = frameFile("\xFF\xFB\x90\x64", 20000, 11);
    bytes.replace(10 + 36, 12, std::string("Xing\0\0\0\x0F\0\0\x04\xD2", 12)); // 1234 frames
    writeBytes(path, bytes);
    cIDV3 id;
    id.setFileName(path);
    EXPECT_EQ(id.Frames().value(), 1234);
    // The count plays no part in the length.
    EXPECT_EQ(id.Seconds().value(), 1);
    EXPECT_NE(id.InfoString().find("\r\n128kbit, 1234 frames\r\n"), std::string::npos);
}

TEST(cIDV3Header, AnInfoTagOrAMonoOffsetGivesNoFrames)
{
    TempFolder dir;
    const std::string info = dir.file("info.mp3");
    std::string bytes = frameFile("\xFF\xFB\x90\x64", 20000);
    bytes.replace(36, 12, std::string("Info\0\0\0\x0F\0\0\x04\xD2", 12));
    writeBytes(info, bytes);
    cIDV3 id;
    id.setFileName(info);
    EXPECT_EQ(id.Frames().value(), 0);

    const std::string mono = dir.file("mono.mp3");
    bytes = frameFile("\xFF\xFB\x90\xC4", 20000);
    bytes.replace(21, 12, std::string("Xing\0\0\0\x0F\0\0\x04\xD2", 12));
    writeBytes(mono, bytes);
    id.setFileName(mono);
    EXPECT_EQ(id.Frames().value(), 0);
    EXPECT_EQ(id.Mode(), "Single Channel");
}

TEST(cIDV3Header, AFrameCountBeyond32BitsLeavesFrames0)
{
    TempFolder dir;
    const std::string path = dir.file("huge count.mp3");
    std::string bytes = frameFile("\xFF\xFB\x90\x64", 20000);
    bytes.replace(36, 12, std::string("Xing\0\0\0\x0F\x80\0\0\x01", 12));
    writeBytes(path, bytes);
    cIDV3 id;
    id.setFileName(path);
    EXPECT_EQ(id.Frames().value(), 0);
    EXPECT_EQ(id.Kbits().value(), 128);
}

TEST(cIDV3Header, OtherMpegFramesArePassedOver)
{
    TempFolder dir;
    // MPEG-2 Layer III frames begin FF F3: not a frame to this search.
    const std::string path = dir.file("mpeg2.mp3");
    std::string bytes;
    for (int i = 0; i < 40; ++i)
        bytes += frameFile("\xFF\xF3\x80\x64", 209);
    writeBytes(path, bytes);
    cIDV3 id;
    id.setFileName(path);
    EXPECT_EQ(id.FileName(), path);
    EXPECT_EQ(id.FileBytes().value(), 40 * 209);
    EXPECT_EQ(id.MpegVersion().value(), 25);
    EXPECT_EQ(id.LayerVersion().value(), 0);
    EXPECT_EQ(id.Hz().value(), 0);
    EXPECT_EQ(id.Kbits().value(), 0);
    EXPECT_EQ(id.Seconds().value(), 0);
    EXPECT_EQ(id.Mode(), "");
    EXPECT_EQ(id.CRCs(), "");
    EXPECT_EQ(id.Channels().value(), 0);
    EXPECT_EQ(id.InfoString(), "");
}

TEST(cIDV3Header, AnId3v2TagLongerThan5000BytesHidesTheFrame)
{
    TempFolder dir;
    const std::string path = dir.file("id3v2.mp3");
    std::string bytes = std::string("ID3\x03\0\0\0\0\x2E\x66", 10) + std::string(5990, '\0'); // 6000 bytes
    bytes += frameFile("\xFF\xFB\x90\x64", 20000);
    writeBytes(path, bytes + id3v1("TAG", "Still read", "", "", "", "", 7));
    cIDV3 id;
    id.setFileName(path);
    EXPECT_EQ(id.Title(), "Still read");
    EXPECT_EQ(id.Genre(), 7);
    EXPECT_EQ(id.FileBytes().value(), 26128);
    EXPECT_EQ(id.MpegVersion().value(), 25);
    EXPECT_EQ(id.Hz().value(), 0);
    EXPECT_EQ(id.InfoString(), "");
}

TEST(cIDV3Header, TheSearchEndsAtPosition5000)
{
    TempFolder dir;
    const std::string at5000 = dir.file("5000.mp3");
    writeBytes(at5000, frameFile("\xFF\xFB\x90\x64", 20000, 5000));
    cIDV3 id;
    id.setFileName(at5000);
    EXPECT_EQ(id.MpegVersion().value(), 1);
    EXPECT_EQ(id.Kbits().value(), 128);
    EXPECT_EQ(id.Hz().value(), 44100);
    EXPECT_NE(id.InfoString(), "");

    const std::string at5001 = dir.file("5001.mp3");
    writeBytes(at5001, frameFile("\xFF\xFB\x90\x64", 20000, 5001));
    id.setFileName(at5001);
    EXPECT_EQ(id.MpegVersion().value(), 25);
    EXPECT_EQ(id.Kbits().value(), 0);
    EXPECT_EQ(id.InfoString(), "");
}

TEST(cIDV3Header, AFrameStartAtTheVeryEndReadsNulsBehindIt)
{
    TempFolder dir;
    const std::string path = dir.file("end.mp3");
    writeBytes(path, std::string(998, '\0') + "\xFF\xFB");
    cIDV3 id;
    id.setFileName(path);
    EXPECT_EQ(id.MpegVersion().value(), 1);
    EXPECT_EQ(id.Kbits().value(), 0);
    EXPECT_EQ(id.Hz().value(), 44100);
    EXPECT_EQ(id.Mode(), "Stereo");
    EXPECT_EQ(id.Seconds().value(), 0);
}

TEST(cIDV3Header, A200MegabyteFileAt128Kbits)
{
    TempFolder dir;
    const std::string path = dir.file("big.mp3");
    writeSparse(path, "\xFF\xFB\x90\x64", 200ull * 1024 * 1024);
    cIDV3 id;
    id.setFileName(path);
    EXPECT_EQ(id.FileBytes().value(), 209715200);
    EXPECT_EQ(id.Seconds().value(), 13107);
    EXPECT_NE(id.InfoString().find("Length: 13107 seconds"), std::string::npos);
}

TEST(cIDV3Header, SecondsAbove32767LeaveTheMember0)
{
    TempFolder dir;
    const std::string path = dir.file("long.mp3");
    // 200 MB at 32 kbit/s is 52428 seconds: too much for 16 bits.
    writeSparse(path, "\xFF\xFB\x10\x64", 200ull * 1024 * 1024);
    cIDV3 id;
    id.setFileName(path);
    EXPECT_EQ(id.Kbits().value(), 32);
    EXPECT_EQ(id.Seconds().value(), 0);
    EXPECT_NE(id.InfoString().find("Length: 0 seconds"), std::string::npos);
}

TEST(cIDV3Header, TheByteCountTimes8MustFit32Bits)
{
    TempFolder dir;
    const std::string path = dir.file("300mb.mp3");
    // 300 MB * 8 passes 2^31, though the seconds at 320 kbit/s (7864) would fit.
    writeSparse(path, "\xFF\xFB\xE0\x64", 300ull * 1024 * 1024);
    cIDV3 id;
    id.setFileName(path);
    EXPECT_EQ(id.FileBytes().value(), 314572800);
    EXPECT_EQ(id.Kbits().value(), 320);
    EXPECT_EQ(id.Seconds().value(), 0);
}

TEST(cIDV3Header, WithoutAFrameTheHeaderBufferKeepsWhatTheXingReadLeft)
{
    // No frame start: the header read at position 0 fails, and the four bytes last read (here
    // the Xing count at 44) are analysed in its place.
    TempFolder dir;
    const std::string path = dir.file("leftover.mp3");
    std::string bytes(8000, '\0');
    bytes.replace(35, 12, std::string("Xing\0\0\0\x0F\x80\x1A\x94\x64", 12));
    writeBytes(path, bytes);
    cIDV3 id;
    id.setFileName(path);
    EXPECT_EQ(id.Frames().value(), 0); // 80 1A 94 64 is beyond the 32-bit range
    EXPECT_EQ(id.MpegVersion().value(), 1);
    EXPECT_EQ(id.Hz().value(), 48000);
    EXPECT_EQ(id.Kbits().value(), 128);
}
