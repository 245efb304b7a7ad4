// A copy run of a whole disc image through the extraction windows, with the real reader and
// chain: the log beside the copies names each file, and its CRC32 and AccurateRip sums are those
// that gzip and whipper's accuraterip-checksum compute on the copied files.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "CommandOutput.h"
#include "Runner.h"

namespace fs = std::filesystem;

namespace {

std::string readAll(const fs::path &file)
{
    std::ifstream in(file, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

std::string quoted(const fs::path &p)
{
    return "'" + p.string() + "'";
}

// The value after "NAME: " in the block of the log that starts at "Track N".
std::string field(const std::string &log, int track, const std::string &name)
{
    const size_t block = log.find("\nTrack " + std::to_string(track) + "\n");
    if (block == std::string::npos)
        return "<no track " + std::to_string(track) + ">";
    const size_t at = log.find("  " + name + ": ", block);
    if (at == std::string::npos)
        return "<no " + name + ">";
    const size_t from = at + name.size() + 4;
    return log.substr(from, log.find('\n', from) - from);
}

TEST(RipLogOfARun, ChecksumsAsIndependentToolsComputeThem)
{
    const fs::path script = fs::temp_directory_path() / ("riplog-" + std::to_string(::getpid()) + ".scn");
    std::ofstream(script) << R"(use real reader
use real decoder
file "$WORK/discs/a.wav" wave 44100 2 stereo
file "$WORK/discs/b.wav" wave 44100 3 stereo
file "$WORK/discs/c.wav" wave 44100 3 stereo
file "$WORK/discs/w.cue" text "FILE ""a.wav"" WAVE"
line "  TRACK 01 AUDIO"
line "    INDEX 01 00:00:00"
line "FILE ""b.wav"" WAVE"
line "  TRACK 02 AUDIO"
line "    INDEX 01 00:00:00"
line "FILE ""c.wav"" WAVE"
line "  TRACK 03 AUDIO"
line "    INDEX 00 00:00:00"
line "    INDEX 01 00:00:30"
folder "$WORK/rip"
start
wait 7000
menu frmMain.mnucdcopy
wait 1000
expect MainForm.ListView.ListCount == "3"
select MainForm.ListView 1 on
select MainForm.ListView 2 on
select MainForm.ListView 3 on
dialog "$WORK/rip/Disc.wav"
click MainForm.btnCopy
wait 200
settle 60000
expect CopyDlg.Messages.List(3) == "Copy completed without any errors."
expect-file "$WORK/rip/Disc.log" exists
click CopyDlg.btnAbort
)";
    std::ostringstream out;
    fs::path work;
    {
        scenario::Runner runner(BRASSWICK_PROGRAM_DIR, out);
        runner.setKeep(true);
        runner.runFile(script);
        EXPECT_EQ(runner.failed(), 0) << out.str();
    }
    fs::remove(script);
    const std::string output = out.str();
    const size_t kept = output.find("kept: ");
    ASSERT_NE(kept, std::string::npos) << output;
    work = output.substr(kept + 6, output.find('\n', kept) - kept - 6);

    const std::string log = readAll(work / "rip" / "Disc.log");
    EXPECT_NE(log.find("Drive: "), std::string::npos) << log;
    EXPECT_NE(log.find("Copy mode: burst\n"), std::string::npos) << log;
    EXPECT_NE(log.find("\nResult: Copy completed without any errors.\n"), std::string::npos) << log;
    for (int track = 1; track <= 3; ++track) {
        SCOPED_TRACE(track);
        char name[16];
        std::snprintf(name, sizeof name, "Disc%02d.wav", track);
        const fs::path file = work / "rip" / name;
        EXPECT_EQ(field(log, track, "File"), file.string());
        EXPECT_EQ(field(log, track, "Result"), "copied without errors");
        for (int version : {1, 2}) {
            const std::string theirs = testsupport::runTool("accuraterip-checksum --accuraterip-v" + std::to_string(version) +
                                                            " " + quoted(file) + " " + std::to_string(track) + " 3")
                                           .line();
            EXPECT_EQ(field(log, track, "AccurateRip v" + std::to_string(version)), theirs);
        }
        const std::string crc = testsupport::runTool("sox " + quoted(file) + " -t raw - | gzip -c | tail -c 8 | head -c 4 | "
                                                     "od -An -tx4 | tr -d ' \\n' | tr a-f A-F")
                                    .line();
        EXPECT_EQ(field(log, track, "CRC32"), crc);
    }
    std::error_code ec;
    fs::remove_all(work, ec);
}

} // namespace
