// The rip log's text: the run, the table of contents, each track with its checksums or what went
// wrong, and the result; written beside the copies, and given up in silence where it can't be.
#include <fstream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "TempDir.h"
#include "extract/RipLog.h"

namespace {

using extract::RipLog;

RipLog::Run sampleRun()
{
    RipLog::Run run;
    run.started = "2026-11-25 10:11:12";
    run.drive = "/dev/sr0";
    run.driveName = "PLEXTOR DVDR PX-716A";
    run.copyMode = platform::CdReader::cmSectorSync;
    run.discId = 0x14000E04;
    run.toc = {platform::CdTrack{1, 0, 300, true, true, false}, platform::CdTrack{2, 300, 250, true, false, true},
               platform::CdTrack{3, 550, 500, false, false, false}};
    return run;
}

std::string readAll(const std::filesystem::path &file)
{
    std::ifstream in(file, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

TEST(RipLog, ARunThatCopiedEverything)
{
    testsupport::TempDir dir;
    RipLog log;
    log.begin(dir / "Track.log", sampleRun());
    log.trackStarted(1, "/music/Track01.wav", 0, 300);
    platform::TrackChecksums sums;
    sums.frames = 300 * 588;
    sums.crc32 = 0x1A2B3C4D;
    sums.accurateRipV1 = 0x38E62AB0;
    sums.accurateRipV2 = 0x3D903B79;
    log.trackEnded(sums);
    log.trackStarted(2, "/music/Track02.wav", 300, 250);
    EXPECT_NE(readAll(dir / "Track.log").find("  Result: copying\n"), std::string::npos)
        << "the log is on disk after every step";
    platform::TrackChecksums mono;
    mono.crc32 = 0xDEADBEEF;
    log.trackEnded(mono);
    log.runEnded("Copy completed without any errors.");
    EXPECT_FALSE(log.active());

    EXPECT_EQ(readAll(dir / "Track.log"), "MP3 Brasswick rip log\n"
                                          "Started: 2026-11-25 10:11:12\n"
                                          "Drive: /dev/sr0 (PLEXTOR DVDR PX-716A)\n"
                                          "Copy mode: sector synchronisation\n"
                                          "Read offset correction: none\n"
                                          "Disc id (freedb): 14000E04\n"
                                          "\n"
                                          "Table of contents\n"
                                          "  Track  Start     Length    First sector  Last sector  Type\n"
                                          "      1  00:00.00  00:04.00             0          299  audio\n"
                                          "      2  00:04.00  00:03.25           300          549  audio\n"
                                          "      3  00:07.25  00:06.50           550         1049  data\n"
                                          "  Lead-out at sector 1050\n"
                                          "\n"
                                          "Track 1\n"
                                          "  File: /music/Track01.wav\n"
                                          "  Sectors: 0 to 299 (300, 00:04.00)\n"
                                          "  CRC32: 1A2B3C4D\n"
                                          "  AccurateRip v1: 38E62AB0\n"
                                          "  AccurateRip v2: 3D903B79\n"
                                          "  Result: copied without errors\n"
                                          "\n"
                                          "Track 2\n"
                                          "  File: /music/Track02.wav\n"
                                          "  Sectors: 300 to 549 (250, 00:03.25)\n"
                                          "  CRC32: DEADBEEF\n"
                                          "  AccurateRip: not computed (the file is not 44100 Hz, 16-bit stereo)\n"
                                          "  Result: copied without errors\n"
                                          "\n"
                                          "Result: Copy completed without any errors.\n");
}

TEST(RipLog, ATrackThatFailedSaysWhy)
{
    testsupport::TempDir dir;
    RipLog log;
    log.begin(dir / "x.log", sampleRun());
    log.trackStarted(2, "/music/x02.wav", 300, 250);
    log.trackError("the file could not be written (is the disk full?)");
    log.trackEnded(std::nullopt);
    // Whatever comes after the end of a track is not its business.
    log.trackError("late");
    log.runEnded("There where Errors, copy not completed.");
    const std::string text = readAll(dir / "x.log");
    EXPECT_NE(text.find("Track 2\n  File: /music/x02.wav\n  Sectors: 300 to 549 (250, 00:03.25)\n"
                        "  Error: the file could not be written (is the disk full?)\n  Result: not completed\n"),
              std::string::npos)
        << text;
    EXPECT_EQ(text.find("late"), std::string::npos);
    EXPECT_NE(text.find("\nResult: There where Errors, copy not completed.\n"), std::string::npos);
}

TEST(RipLog, ALogThatCantBeWrittenIsGivenUpQuietly)
{
    RipLog log;
    EXPECT_NO_THROW(log.begin("/nonexistent-folder/deep/Track.log", sampleRun()));
    EXPECT_NO_THROW(log.trackStarted(1, "/x.wav", 0, 300));
    EXPECT_NO_THROW(log.runEnded("Copy completed without any errors."));
    EXPECT_FALSE(std::filesystem::exists("/nonexistent-folder/deep/Track.log"));
    // Without a run, nothing is written.
    RipLog idle;
    idle.trackStarted(1, "/x.wav", 0, 300);
    EXPECT_FALSE(idle.active());
}

} // namespace
