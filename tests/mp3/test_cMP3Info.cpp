#include <filesystem>
#include <functional>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "TempFolder.h"
#include "mp3/cIDV3.h"
#include "mp3/cMP3Info.h"
#include "runtime/Paths.h"
#include "runtime/RuntimeError.h"

using mp3::cMP3Info;
using mp3test::id3v1;
using mp3test::readBytes;
using mp3test::TempFolder;
using mp3test::writeBytes;

namespace {

int errorOf(const std::function<void()> &statement)
{
    try {
        statement();
    } catch (const rt::RuntimeError &e) {
        return e.number();
    }
    return 0;
}

const std::map<int, std::string> OwnSpellings = {
    {27, "Trip Hop"},    {59, "Gangsta Rap"},  {62, "Pop/Punk"},   {67, "Phychedelic"},
    {89, "Blue Grass"},  {90, "Avantegarde"},  {117, "power Ballad"}, {123, "A Capella"},
    {131, "indie"},      {132, "Brit Pop"},    {140, "Comteporary Christian"}, {144, "Trash Metal"},
    {147, "Synth Pop"},
};

} // namespace

TEST(cMP3InfoGenre, ItsOwnSpellingOf147)
{
    cMP3Info info;
    EXPECT_EQ(info.pGetGenre(147), "Synth Pop");
    EXPECT_EQ(mp3::cIDV3::GenreText(147), "Synthpop");
}

TEST(cMP3InfoGenre, ThirteenRowsDifferFromTheOtherTableAndNoMore)
{
    cMP3Info info;
    for (int i = 0; i <= 147; ++i) {
        const auto own = OwnSpellings.find(i);
        if (own != OwnSpellings.end()) {
            EXPECT_EQ(info.pGetGenre(i), own->second) << i;
            EXPECT_NE(info.pGetGenre(i), mp3::cIDV3::GenreText(i)) << i;
        } else {
            EXPECT_EQ(info.pGetGenre(i), mp3::cIDV3::GenreText(i)) << i;
        }
    }
}

TEST(cMP3InfoGenre, AnIndexOutsideTheTableIsTheCallersError9)
{
    cMP3Info info;
    EXPECT_EQ(errorOf([&] { info.pGetGenre(148); }), 9);
    EXPECT_EQ(errorOf([&] { info.pGetGenre(-1); }), 9);
    EXPECT_EQ(info.pGetGenre(0), "Blues");
}

TEST(cMP3InfoTag, ReadsAnExactTag)
{
    TempFolder dir;
    const std::string path = dir.file("tagged.mp3");
    writeBytes(path, std::string(1000, 'x') + id3v1("TAG", "Title", "Artist", "Album", "99", "Caf\xE9", 255));
    cMP3Info info;
    info.setFileName(path);
    EXPECT_EQ(info.FileName(), path);
    EXPECT_EQ(info.Title(), "Title");
    EXPECT_EQ(info.Artist(), "Artist");
    EXPECT_EQ(info.Album(), "Album");
    EXPECT_EQ(info.Year(), "99  "); // as it stands
    EXPECT_EQ(info.Comment(), "Caf\xC3\xA9");
    EXPECT_EQ(info.Genre().value(), 255);
}

TEST(cMP3InfoTag, OnlyUpperCaseTagCounts)
{
    TempFolder dir;
    const std::string path = dir.file("mixed.mp3");
    writeBytes(path, std::string(1000, 'x') + id3v1("Tag", "Title", "Artist", "Album", "1999", "C", 3));
    cMP3Info info;
    info.setGenre(77);
    info.setFileName(path);
    EXPECT_EQ(info.Title(), "");
    EXPECT_EQ(info.Artist(), "");
    EXPECT_EQ(info.Album(), "");
    EXPECT_EQ(info.Year(), "    ");
    EXPECT_EQ(info.Comment(), "");
    EXPECT_EQ(info.Genre().value(), 77); // not cleared

    // The other class takes it as a tag.
    mp3::cIDV3 id;
    id.setFileName(path);
    EXPECT_TRUE(id.HasTag());
    EXPECT_EQ(id.Title(), "Title");
}

TEST(cMP3InfoTag, ASecondFileWithoutTagClearsTheTextsButNotTheGenre)
{
    TempFolder dir;
    const std::string tagged = dir.file("a.mp3");
    const std::string plain = dir.file("b.mp3");
    writeBytes(tagged, std::string(200, 'x') + id3v1("TAG", "Title", "Artist", "Album", "1999", "C", 8));
    writeBytes(plain, std::string(400, 'x'));
    cMP3Info info;
    info.setFileName(tagged);
    ASSERT_EQ(info.Title(), "Title");
    info.setFileName(plain);
    EXPECT_EQ(info.FileName(), plain);
    EXPECT_EQ(info.Title(), "");
    EXPECT_EQ(info.Year(), "    ");
    EXPECT_EQ(info.Genre().value(), 8);
}

TEST(cMP3InfoTag, AMissingFileIsNoError)
{
    TempFolder dir;
    cMP3Info info;
    info.setTitle("Old");
    info.setFileName(dir.file("missing.mp3"));
    EXPECT_EQ(info.FileName(), dir.file("missing.mp3"));
    EXPECT_EQ(info.Title(), "");
    EXPECT_EQ(info.Year(), "    ");
}

TEST(cMP3InfoTag, AFileTooShortForATagIsARunTimeError)
{
    TempFolder dir;
    const std::string path = dir.file("short.mp3");
    writeBytes(path, std::string(100, 'x'));
    cMP3Info info;
    EXPECT_NE(errorOf([&] { info.setFileName(path); }), 0);
    writeBytes(path, "");
    EXPECT_NE(errorOf([&] { info.setFileName(path); }), 0);
}

TEST(cMP3InfoTag, TextsAreCutToTheirFields)
{
    cMP3Info info;
    info.setTitle("123456789012345678901234567890EXTRA");
    EXPECT_EQ(info.Title(), "123456789012345678901234567890");
    info.setYear("19999");
    EXPECT_EQ(info.Year(), "1999");
    info.setComment("  lead ");
    EXPECT_EQ(info.Comment(), "  lead");
}

TEST(cMP3InfoWrite, WritesTheTagAndLeavesTheFileReadOnly)
{
    TempFolder dir;
    const std::string path = dir.file("w.mp3");
    const std::string audio(500, 'a');
    writeBytes(path, audio);
    cMP3Info info;
    info.setFileName(path);
    info.setTitle("123456789012345678901234567890"); // exactly 30: no blanks
    info.setArtist("Art\xC3\xA9");
    info.setAlbum("Alb");
    info.setYear("12");
    info.setComment("Com");
    info.setGenre(13);
    info.pWriteId3Tag();

    const std::string bytes = readBytes(path);
    ASSERT_EQ(bytes.size(), 500u);
    EXPECT_EQ(bytes.substr(0, 372), audio.substr(0, 372));
    EXPECT_EQ(bytes.substr(372), id3v1("TAG", "123456789012345678901234567890", "Art\xE9", "Alb", "12", "Com", 13));
    EXPECT_TRUE(rt::isReadOnly(path));

    // Only this routine can write it again: it lifts the attribute first.
    info.setTitle("Second");
    info.setGenre(-1);
    info.pWriteId3Tag();
    const std::string again = readBytes(path);
    ASSERT_EQ(again.size(), 500u);
    EXPECT_EQ(again.substr(372), id3v1("TAG", "Second", "Art\xE9", "Alb", "12", "Com", 255));
    EXPECT_TRUE(rt::isReadOnly(path));

    cMP3Info reader;
    reader.setFileName(path);
    EXPECT_EQ(reader.Title(), "Second");
    EXPECT_EQ(reader.Artist(), "Art\xC3\xA9");
    EXPECT_EQ(reader.Year(), "12  ");
    EXPECT_EQ(reader.Genre().value(), 255);
}

TEST(cMP3InfoWrite, GenreIsWrittenAsItsLowByte)
{
    TempFolder dir;
    const std::string path = dir.file("g.mp3");
    writeBytes(path, std::string(300, 'a'));
    cMP3Info info;
    info.setFileName(path);
    info.setGenre(300);
    info.pWriteId3Tag();
    EXPECT_EQ(static_cast<unsigned char>(readBytes(path)[299]), 300 & 255);
    info.setGenre(-2);
    info.pWriteId3Tag();
    EXPECT_EQ(static_cast<unsigned char>(readBytes(path)[299]), 254);
}

TEST(cMP3InfoWrite, AMissingFileIsError53)
{
    TempFolder dir;
    cMP3Info info;
    info.setFileName(dir.file("missing.mp3"));
    EXPECT_EQ(errorOf([&] { info.pWriteId3Tag(); }), 53);
    EXPECT_FALSE(std::filesystem::exists(dir.file("missing.mp3")));
}

TEST(cMP3InfoWrite, AFileTooShortForATagIsARunTimeErrorAndStaysWritable)
{
    TempFolder dir;
    const std::string path = dir.file("tiny.mp3");
    writeBytes(path, "tiny");
    cMP3Info info;
    EXPECT_NE(errorOf([&] { info.setFileName(path); }), 0);
    EXPECT_NE(errorOf([&] { info.pWriteId3Tag(); }), 0);
    EXPECT_FALSE(rt::isReadOnly(path));
    EXPECT_EQ(readBytes(path), "tiny");
}
