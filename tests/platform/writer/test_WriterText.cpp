// What the writer reads and writes as text: wodim's output and arguments, the driver table, CUE sheets,
// the default image folder.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "WriterTestSupport.h"
#include "platform/writer/CdWriterEngine.h"
#include "platform/writer/CueSheet.h"
#include "platform/writer/DriverTypes.h"
#include "platform/writer/Wodim.h"

using namespace platform::writer;

namespace {

TEST(WriterDriverTypes, EveryTypeOfTheModelTableHasAWodimDriver)
{
    const std::vector<std::string> expected = {"teac_cdr50",     "yamaha_cdr100",  "philips_cdd521_old", "philips_dumb",
                                               "philips_cdd521", "philips_cdd522", "plasmon_rf4100",     "ricoh_ro1420c",
                                               "pioneer_dws114x", "mmc_cdr",       "mmc_cdr",            "sony_cdu924"};
    for (int type = 1; type <= 12; ++type)
        EXPECT_EQ(wodimDriverName(type), expected[static_cast<size_t>(type - 1)]) << type;
    for (int type : {0, -1, 13, 99, 100})
        EXPECT_EQ(wodimDriverName(type), "") << type;
}

TEST(WodimOutput, ProgressLines)
{
    EXPECT_EQ(parseProgressPercent("Track 01:   12 of   40 MB written (fifo 100%) [buf  99%]  10.0x."), 30);
    EXPECT_EQ(parseProgressPercent("Track 01:   40 of   40 MB written (fifo 100%) [buf  99%]  10.0x."), 100);
    EXPECT_EQ(parseProgressPercent("Track 03:    1 of  700 MB written (fifo  98%) [buf  97%]  48.1x."), 0);
    EXPECT_EQ(parseProgressPercent("Track 01:    0 of   40 MB written."), 0);
    EXPECT_EQ(parseProgressPercent("Track 12:  339 of  678 MB written"), 50);
    EXPECT_FALSE(parseProgressPercent("Track 01:    0 of    1 MB pad written."));
    EXPECT_FALSE(parseProgressPercent("Track 01: audio   40 MB (04:00.00) no preemp pad"));
    EXPECT_FALSE(parseProgressPercent("Track 01:    0 of    0 MB written."));
    EXPECT_FALSE(parseProgressPercent("Fixating..."));
    EXPECT_FALSE(parseProgressPercent(""));
}

TEST(WodimOutput, DiscStateFromAtip)
{
    const std::string drive = "Device type    : Removable CD-ROM\nUsing generic SCSI-3/mmc   CD-R/CD-RW driver (mmc_cdr).\n";
    EXPECT_EQ(classifyDiscState(drive + "ATIP info from disk:\n  Indicated writing power: 5\n", 0), 0);
    EXPECT_EQ(classifyDiscState(drive + "Sense Key: 0x2 Not Ready, Segment 0\n"
                                        "Sense Code: 0x3A Qual 0x01 (medium not present - tray closed) Fru 0x0\n"
                                        "wodim: No disk / Wrong disk!\n",
                                255),
              -1);
    EXPECT_EQ(classifyDiscState(drive + "wodim: Cannot load media.\n", 255), -1);
    EXPECT_EQ(classifyDiscState(drive + "Sense Code: 0x04 Qual 0x01 (logical unit is in process of becoming ready) Fru 0x0\n", 255), 1);
    EXPECT_EQ(classifyDiscState(drive + "wodim: CD/DVD-Recorder not ready.\n", 255), 1);
    EXPECT_EQ(classifyDiscState(drive + "Current: CD-ROM\n", 0), 1); // pressed: nothing to write on
    EXPECT_EQ(classifyDiscState("wodim: No such file or directory.\nCannot open SCSI driver!\n", 255), 1);
    EXPECT_EQ(classifyDiscState("", 0), 1);
}

TEST(WodimOutput, DeviceLists)
{
    const auto devices = parseDeviceList("wodim: Overview of accessible drives (2 found) :\n"
                                         "-------------------------------------------------------------------------\n"
                                         " 0  dev='/dev/sr0'\trwrw-- : 'HL-DT-ST' 'DVDRAM GH24NSD1'\n"
                                         " 1  dev='/dev/sg1'\trwrw-- : 'SONY' 'CD-RW  CRX830E'\n"
                                         "-------------------------------------------------------------------------\n");
    ASSERT_EQ(devices.size(), 2u);
    EXPECT_EQ(devices[0].dev, "/dev/sr0");
    EXPECT_EQ(devices[0].displayName(), "HL-DT-ST DVDRAM GH24NSD1 (/dev/sr0)");
    EXPECT_EQ(devices[1].displayName(), "SONY CD-RW CRX830E (/dev/sg1)");
    EXPECT_TRUE(parseDeviceList("wodim: No such file or directory.\nCannot open SCSI driver!\n").empty());

    const auto bus = parseScanbus("scsibus2:\n"
                                  "\t2,0,0\t200) 'PLEXTOR ' 'DVDR   PX-760A  ' '1.03' Removable CD-ROM\n"
                                  "\t2,1,0\t201) *\n"
                                  "\t2,2,0\t202) 'ATA     ' 'ST500DM002      ' 'HP73' Disk\n");
    ASSERT_EQ(bus.size(), 1u);
    EXPECT_EQ(bus[0].dev, "2,0,0");
    EXPECT_EQ(bus[0].displayName(), "PLEXTOR DVDR PX-760A (2,0,0)");
    EXPECT_EQ((WodimDevice{"/dev/sr9", "", ""}).displayName(), "/dev/sr9");
}

TEST(WodimArguments, TrackFixAndProbe)
{
    WodimSettings s;
    s.device = "/dev/sr0";
    s.driverName = "mmc_cdr";
    s.speed = 8;
    s.fifoBytes = fifoBytes(0, 0);
    EXPECT_EQ(wodimWriteArguments(s, "/tmp/x/track.wav"),
              (std::vector<std::string>{"-v", "dev=/dev/sr0", "driver=mmc_cdr", "speed=8", "fs=4064256", "-tao", "-audio", "-copy", "-pad",
                                        "-nofix", "-text", "-useinfo", "/tmp/x/track.wav"}));
    EXPECT_EQ(wodimFixArguments(s), (std::vector<std::string>{"-v", "dev=/dev/sr0", "driver=mmc_cdr", "-fix"}));
    EXPECT_EQ(wodimAtipArguments(s), (std::vector<std::string>{"-v", "dev=/dev/sr0", "driver=mmc_cdr", "-atip"}));
    s.dummy = true;
    s.driverName.clear();
    s.speed = 0;
    s.fifoBytes = 0;
    EXPECT_EQ(wodimWriteArguments(s, "t.wav"), (std::vector<std::string>{"-v", "dev=/dev/sr0", "-tao", "-audio", "-copy", "-pad", "-nofix",
                                                                          "-dummy", "-text", "-useinfo", "t.wav"}));
    EXPECT_EQ(wodimFixArguments(s), (std::vector<std::string>{"-v", "dev=/dev/sr0", "-dummy", "-fix"}));
}

TEST(WodimArguments, FifoSize)
{
    EXPECT_EQ(fifoBytes(0, 0), 64 * 27 * 2352);
    EXPECT_EQ(fifoBytes(-5, 10), 64 * 10 * 2352);
    EXPECT_EQ(fifoBytes(8, 16), 8 * 16 * 2352);
    EXPECT_EQ(fifoBytes(2147483647, 2147483647), 128LL * 1024 * 1024);
}

TEST(WodimArguments, InfFile)
{
    EXPECT_EQ(infFileText("It's \"Loud\"", "Band"),
              "# written for wodim -useinfo\nTracktitle=\t'It's \"Loud\"'\nPerformer=\t'Band'\nCopy_permitted=\tyes\n");
}

TEST(CueSheetText, Msf)
{
    EXPECT_EQ(formatMsf(0), "00:00:00");
    EXPECT_EQ(formatMsf(338), "00:04:38");
    EXPECT_EQ(formatMsf(75 * 60 * 74 + 75 * 59 + 74), "74:59:74");
    EXPECT_EQ(parseMsf("00:04:38"), 338);
    EXPECT_EQ(parseMsf("74:59:74"), 75 * 60 * 74 + 75 * 59 + 74);
    EXPECT_FALSE(parseMsf("00:60:00"));
    EXPECT_FALSE(parseMsf("00:00:75"));
    EXPECT_FALSE(parseMsf("0000"));
    EXPECT_FALSE(parseMsf("a:b:c"));
}

TEST(CueSheetText, CdText)
{
    EXPECT_EQ(cdText("Plain"), "Plain");
    EXPECT_EQ(cdText("Caf\xC3\xA9"), "Caf\xE9");          // UTF-8 to ISO 8859-1
    EXPECT_EQ(cdText("Caf\xE9"), "Caf\xE9");              // already 8859-1 / Windows-1252
    EXPECT_EQ(cdText("\xE2\x82\xAC 5"), "? 5");            // no euro sign in 8859-1
    EXPECT_EQ(cdText("\x80 5"), "? 5");                    // nor in its Windows-1252 form
    EXPECT_EQ(cdText("Say \"Hi\""), "Say 'Hi'");
    EXPECT_EQ(cdText("  line\r\nbreak\t "), "line  break");
    EXPECT_EQ(cdText(std::string(100, 'x')).size(), 80u);
    EXPECT_EQ(cdText(""), "");
}

TEST(CueSheetText, RoundTripAndForeignSheets)
{
    ImageSheet sheet;
    sheet.binName = "disc-20240101-101010.bin";
    sheet.tracks = {{"One", "A", 0, 0, 338}, {"Two", "", 338, 488, 300}, {"Three", "C", 788, 938, 376}};
    const std::string text = renderCue(sheet);
    auto back = parseCue(text);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->binName, sheet.binName);
    EXPECT_FALSE(back->finalised);
    ASSERT_EQ(back->tracks.size(), 3u);
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(back->tracks[i].title, sheet.tracks[i].title);
        EXPECT_EQ(back->tracks[i].performer, sheet.tracks[i].performer);
        EXPECT_EQ(back->tracks[i].pauseStart, sheet.tracks[i].pauseStart);
        EXPECT_EQ(back->tracks[i].start, sheet.tracks[i].start);
        EXPECT_EQ(back->tracks[i].length, sheet.tracks[i].length);
    }
    EXPECT_EQ(back->sectors(), 1314);
    sheet.finalised = true;
    EXPECT_TRUE(parseCue(renderCue(sheet))->finalised);
    EXPECT_EQ(renderCue(*parseCue(renderCue(sheet))), renderCue(sheet));

    // Sheets of other programs, and damaged ones, are not taken for an open disc.
    EXPECT_FALSE(parseCue("FILE \"x.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n"));
    std::string noLength = text;
    noLength.erase(noLength.find("    REM SECTORS"));
    EXPECT_FALSE(parseCue(noLength));
    std::string dataTrack = text;
    dataTrack.replace(dataTrack.find("TRACK 02 AUDIO"), 14, "TRACK 02 MODE1/2352");
    EXPECT_FALSE(parseCue(dataTrack));
    std::string backwards = text;
    backwards.replace(backwards.find("INDEX 01 00:12:38"), 17, "INDEX 01 00:01:00");
    EXPECT_FALSE(parseCue(backwards));
    EXPECT_FALSE(parseCue(""));
    EXPECT_FALSE(parseCue(std::string(5000, '\0')));
}

class DefaultImageFolder : public ::testing::Test {
protected:
    void SetUp() override
    {
        saveEnv("HOME");
        saveEnv("XDG_CONFIG_HOME");
        ::setenv("HOME", (tmp / "home").c_str(), 1);
        ::unsetenv("XDG_CONFIG_HOME");
    }
    void TearDown() override
    {
        for (const auto &[name, value] : saved) {
            if (value)
                ::setenv(name.c_str(), value->c_str(), 1);
            else
                ::unsetenv(name.c_str());
        }
    }
    void saveEnv(const std::string &name)
    {
        const char *v = std::getenv(name.c_str());
        saved.emplace_back(name, v ? std::optional<std::string>(v) : std::nullopt);
    }
    void userDirs(const std::filesystem::path &config, const std::string &text)
    {
        std::filesystem::create_directories(config);
        std::ofstream(config / "user-dirs.dirs") << text;
    }
    writertest::TempDir tmp;
    std::vector<std::pair<std::string, std::optional<std::string>>> saved;
};

TEST_F(DefaultImageFolder, MusicFolderOfTheUser)
{
    const auto home = tmp / "home";
    EXPECT_EQ(defaultImageFolder(), home / "Music" / "MP3 Brasswick Discs");
    userDirs(home / ".config", "# comment\nXDG_DESKTOP_DIR=\"$HOME/Desktop\"\nXDG_MUSIC_DIR=\"$HOME/Musik\"\n");
    EXPECT_EQ(defaultImageFolder(), home / "Musik" / "MP3 Brasswick Discs");
    userDirs(home / ".config", "XDG_MUSIC_DIR=\"/srv/audio\"\n");
    EXPECT_EQ(defaultImageFolder(), std::filesystem::path("/srv/audio/MP3 Brasswick Discs"));
    userDirs(home / ".config", "XDG_MUSIC_DIR=\"$HOME/\"\n"); // turned off
    EXPECT_EQ(defaultImageFolder(), home / "Music" / "MP3 Brasswick Discs");
    userDirs(tmp / "xdg", "XDG_MUSIC_DIR=\"$HOME/Elsewhere\"\n");
    ::setenv("XDG_CONFIG_HOME", (tmp / "xdg").c_str(), 1);
    EXPECT_EQ(defaultImageFolder(), home / "Elsewhere" / "MP3 Brasswick Discs");
}

TEST(WriterEngineOptions, TheImageFolderComesFromTheOptions)
{
    rt::VirtualEventLoop loop;
    Options o;
    o.imageFolder = "/some/where";
    o.logFolder = "/some/where/logs";
    o.scanSystemRecorders = false;
    auto maker = realWriterMaker(loop, o);
    auto engine = maker();
    ASSERT_TRUE(engine);
    EXPECT_EQ(static_cast<CdWriterEngine &>(*engine).imageFolder(), std::filesystem::path("/some/where"));
    EXPECT_EQ(engine->InitEngine(), 0);
    EXPECT_EQ(engine->DeviceCount(), 1);
}

} // namespace
