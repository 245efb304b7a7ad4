#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "platform/helper/MMHelper.h"

using platform::MMHelper;

TEST(MMHelper, ExtensionWithItsDotFromTheLastPartOfThePath)
{
    MMHelper h;
    EXPECT_EQ(h.ExtractExt("/music/song.mp3"), ".mp3");
    EXPECT_EQ(h.ExtractExt("C:\\music\\a.b.MP3"), ".MP3");
    EXPECT_EQ(h.ExtractExt("/music.d/song"), "");
    EXPECT_EQ(h.ExtractExt(""), "");
}

TEST(MMHelper, PosTextFindsTheFirstPlace)
{
    MMHelper h;
    EXPECT_EQ(h.PosText(".mp3", "/x.mp3dir/song.mp3"), 3);
    EXPECT_EQ(h.PosText(".wav", "/x/song.mp3"), 0);
    EXPECT_EQ(h.PosText("", "/x"), 0);
}

TEST(MMHelper, CopyTextLeavesOutWhatLiesOutside)
{
    MMHelper h;
    EXPECT_EQ(h.CopyText("abcdef", 1, 3), "abc");
    EXPECT_EQ(h.CopyText("abcdef", 4, 10), "def");
    EXPECT_EQ(h.CopyText("abcdef", 1, 0), "");
    EXPECT_EQ(h.CopyText("abcdef", 1, -1), "");
    EXPECT_EQ(h.CopyText("abcdef", 9, 2), "");
}

TEST(MMHelper, DeleteTargetRemovesAFileAndNothingElse)
{
    namespace fs = std::filesystem;
    const fs::path dir = fs::temp_directory_path() / "mmhelper-test";
    fs::remove_all(dir);
    fs::create_directories(dir / "folder_vel.wav");
    std::ofstream(dir / "a_vel.wav") << "x";
    MMHelper h;
    h.DeleteTarget((dir / "a_vel.wav").string());
    EXPECT_FALSE(fs::exists(dir / "a_vel.wav"));
    h.DeleteTarget((dir / "folder_vel.wav").string());
    EXPECT_TRUE(fs::is_directory(dir / "folder_vel.wav"));
    h.DeleteTarget((dir / "missing_vel.wav").string());
    h.DeleteTarget("");
    fs::remove_all(dir);
}

namespace {

TEST(MMHelperFormatPosition, MinutesSecondsAndMilliseconds)
{
    platform::MMHelper h;
    EXPECT_EQ(h.FormatPosition(0, 1, true), "0:00.000");
    EXPECT_EQ(h.FormatPosition(1500, 1, true), "0:01.500");
    EXPECT_EQ(h.FormatPosition(754567, 1, true), "12:34.567");
    EXPECT_EQ(h.FormatPosition(754567, 1, false), "12:34");
    EXPECT_EQ(h.FormatPosition(-20, 1, true), "0:00.000");
}

} // namespace

namespace {

TEST(MMHelperTimeText, HoursMinutesSecondsCutOff)
{
    platform::MMHelper h;
    EXPECT_EQ(h.TimeText(0), "00:00:00");
    EXPECT_EQ(h.TimeText(999), "00:00:00");
    EXPECT_EQ(h.TimeText(3723400), "01:02:03");
    EXPECT_EQ(h.TimeText(-1), "-00:00:00");
    EXPECT_EQ(h.TimeText(-61000), "-00:01:01");
}

TEST(MulDiv, RoundsHalfAwayFromZeroAndGivesMinusOne)
{
    EXPECT_EQ(platform::MulDiv(10, 3, 4), 8);     // 7.5
    EXPECT_EQ(platform::MulDiv(-10, 3, 4), -8);   // -7.5
    EXPECT_EQ(platform::MulDiv(7, 1, 3), 2);
    EXPECT_EQ(platform::MulDiv(2000000000, 2000000000, 2000000000), 2000000000);
    EXPECT_EQ(platform::MulDiv(5, 5, 0), -1);
    EXPECT_EQ(platform::MulDiv(2000000000, 4, 1), -1);
}

TEST(MMWaveHelperFormatSize, TheRecordsOwnSize)
{
    platform::MMWaveHelper w;
    EXPECT_EQ(w.FormatSize(platform::WaveFormat::cdAudio()), 18);
}

} // namespace
