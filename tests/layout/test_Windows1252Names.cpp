// Folders copied from old Windows discs: names held in Windows-1252 bytes, which are no UTF-8.
// The scenario driver writes its files under UTF-8 names, so the files are laid here with their
// raw names, and a scenario then plays the user through the builder, the session files, the
// hand-over, the playlist and a burn on the real decoding chain.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include "Mp3Maker.h"
#include "Runner.h"

namespace fs = std::filesystem;

namespace {

std::string readBytes(const fs::path &path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

std::vector<std::string> namesIn(const fs::path &folder)
{
    std::vector<std::string> names;
    std::error_code ec;
    for (const auto &e : fs::directory_iterator(folder, ec))
        names.push_back(e.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

class Windows1252Names : public ::testing::Test {
protected:
    void SetUp() override
    {
        std::random_device rd;
        scratch = fs::temp_directory_path() / ("old-names-" + std::to_string(rd()));
        fs::create_directories(scratch / "Old disc");
        // "Müsik aus alten Tagen": the folder's own name is in the old bytes as well.
        fs::create_directories(scratch / "M\xFCsik aus alten Tagen");
        lay("Old disc/caf\xE9.mp3", 4);                   // café.mp3
        lay("Old disc/\xC4rger \xFC" "ber \x80uro.mp3", 3); // Ärger über €uro.mp3
        lay("M\xFCsik aus alten Tagen/Tr\xE4ume.mp3", 2);   // Träume.mp3
    }
    void TearDown() override
    {
        std::error_code ec;
        fs::remove_all(scratch, ec);
        if (!work.empty())
            fs::remove_all(work, ec);
    }

    // A real MP3 under a name in raw bytes: made under a plain name, then renamed.
    void lay(const std::string &rawName, double seconds)
    {
        const fs::path plain = scratch / "making.mp3";
        testsupport::Mp3Options o;
        o.seconds = seconds;
        o.channels = 1;
        ASSERT_TRUE(testsupport::makeMp3(plain.string(), o));
        fs::rename(plain, scratch / rawName);
    }

    // Runs the scenario text with SCRATCH standing for the folder of the raw names.
    std::string run(std::string text)
    {
        for (size_t at; (at = text.find("SCRATCH")) != std::string::npos;)
            text.replace(at, 7, scratch.string());
        const fs::path file = scratch / "names.scn";
        std::ofstream(file) << text;
        std::ostringstream out;
        {
            scenario::Runner runner(BRASSWICK_PROGRAM_DIR, out);
            runner.setKeep(true);
            runner.runFile(file);
            EXPECT_EQ(runner.failed(), 0) << out.str();
            EXPECT_GT(runner.passed(), 0) << out.str();
        }
        fs::remove(file);
        const std::string output = out.str();
        const size_t at = output.find("kept: ");
        if (at != std::string::npos)
            work = output.substr(at + 6, output.find('\n', at) - at - 6);
        return output;
    }

    fs::path scratch;
    fs::path work;
};

} // namespace

TEST_F(Windows1252Names, ShownDecodedAndOpenedByTheirOwnBytes)
{
    const std::string output = run(R"(use real decoder
fake writer percent 10
start
wait 7000
toolbar frmMain.ctToolBar1 1
click Form2.Check1
click Form2.ctButton1
dialog "SCRATCH/Old disc"
click Form5.ctButton3
expect Form5.File1.ListCount == "2"
expect Form5.File1.List(0) == "café.mp3"
expect Form5.File1.List(1) == "Ärger über €uro.mp3"
expect Form5.List1.List(0) == "SCRATCH/Old disc\café.mp3"
expect Form5.ctList1.List(0) == ";café;00:04"
expect Form5.ctList1.List(1) == ";Ärger über €uro;00:03"
expect Form5.StatusBar1.Panel(2) == "Import Complete"
click Form5.ctList1 row 0
expect Form5.Label5.Caption == "Sample Rate: 44100"
click Form5.ctButton1
expect Form5.ctList2.List(0) == "1. café  ;00:04"
expect Form5.SecondsLeft == "4396"
dialog "SCRATCH/Müsik aus alten Tagen"
click Form5.ctButton3
expect Form5.Label7.Caption == "SCRATCH/Müsik aus alten Tagen"
expect Form5.ctList1.List(0) == ";Träume;00:02"
click Form5.ctList1 row 0
click Form5.ctButton1
expect Form5.ctList2.List(1) == "2. Träume  ;00:02"
expect Form5.SecondsLeft == "4394"
click Form5.ctButton5
expect-box "Session Data Saved" title "Velmora Works - Notification"
expect-file "$PROG/LocalJ/lastlocal.vel" line 1 == "<LastLocal>SCRATCH/Müsik aus alten Tagen</LastLocal>"
expect-file "$PROG/LocalJ/localf.dd1" line 2 == "SCRATCH/Müsik aus alten Tagen\Träume.mp3"
expect-file "$PROG/LocalJ/selections.dd1" line 3 == "2. Träume  ;00:02"
click Form5.ctButton4
expect frmMain.mainlist.List(0) == "café;00:04"
expect frmMain.filex.List(0) == "SCRATCH/Old disc\café.mp3"
expect frmMain.filex.List(1) == "SCRATCH/Müsik aus alten Tagen\Träume.mp3"
dialog "$WORK/list.m3u"
click frmMain.ctButton1
expect-no-box
expect-file "$WORK/list.m3u" line 2 == "SCRATCH/Müsik aus alten Tagen\Träume.mp3"
answer Yes
click frmMain.ctButton13
expect-box "You are about to burn a CD without closing your session!  A normal CD Player will not be able to read the data until your session is closed.  Would you like to continue?"
wait 3000
settle 60000
wait 3000
settle 60000
wait 3000
settle 60000
wait 3000
expect-box "Velmora Works has finished your CD" title "MP3 Brasswick Notification!" icon information
expect frmMain.ACDWRITE1.TracksWritten == "2"
expect-no-box
)");
    ASSERT_FALSE(work.empty()) << output;

    // What the program wrote names the files in the bytes they have on disc.
    const std::string oldDisc = scratch.string() + "/Old disc\\";
    const std::string oldFolder = scratch.string() + "/M\xFCsik aus alten Tagen";
    EXPECT_EQ(readBytes(work / "prog/LocalJ/localf.dd1"), " 1 \r\n" + oldFolder + "\\Tr\xE4ume.mp3\r\n\r\n");
    EXPECT_EQ(readBytes(work / "prog/LocalJ/lastlocal.vel"), "<LastLocal>" + oldFolder + "</LastLocal>\r\n");
    EXPECT_EQ(readBytes(work / "list.m3u"), oldDisc + "caf\xE9.mp3\r\n" + oldFolder + "\\Tr\xE4ume.mp3\r\n");

    // The real chain decoded the last track from its file: the work file holds two seconds of it.
    const auto wave = fs::file_size(work / "prog/LocalJ/velmora0.wav");
    EXPECT_GT(wave, 44u + 2 * 44100u * 4u * 9u / 10u);

    // Nothing was made under a UTF-8 twin of a name.
    EXPECT_EQ(namesIn(scratch), (std::vector<std::string>{"M\xFCsik aus alten Tagen", "Old disc"}));
    EXPECT_EQ(namesIn(scratch / "Old disc"), (std::vector<std::string>{"caf\xE9.mp3", "\xC4rger \xFC" "ber \x80uro.mp3"}));
    EXPECT_EQ(namesIn(scratch / "M\xFCsik aus alten Tagen"), std::vector<std::string>{"Tr\xE4ume.mp3"});
}
