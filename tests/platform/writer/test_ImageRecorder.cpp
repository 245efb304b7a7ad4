// The Image Recorder driven as the program drives a recorder: one track at a time, the close
// flags set late, the work file reused; the images checked with libcdio.
#include <gtest/gtest.h>

#include <csignal>
#include <memory>

#include <cdio/cdio.h>
#include <cdio/device.h>
#include <cdio/disc.h>
#include <cdio/read.h>
#include <cdio/track.h>
#include <sys/resource.h>

#include "CommandOutput.h"
#include "WriterTestSupport.h"
#include "platform/writer/CdWriterEngine.h"
#include "platform/writer/CueSheet.h"
#include "runtime/RuntimeError.h"

using namespace writertest;
using platform::writer::CdWriterEngine;
using platform::writer::Options;

namespace {

constexpr int64_t sector = 2352;

struct Track {
    int64_t frames;
    std::string title;
    std::string artist;
    std::vector<char> pcm;
};

// Whole sectors, and four seconds (300 sectors) at least: the shortest track a CD holds.
int64_t sectorsOf(int64_t frames)
{
    return std::max<int64_t>((frames + 587) / 588, 300);
}

struct CdioCloser {
    void operator()(CdIo_t *p) const { cdio_destroy(p); }
};
using Cdio = std::unique_ptr<CdIo_t, CdioCloser>;

class ImageRecorderTest : public ::testing::Test {
protected:
    void SetUp() override { fs::create_directories(tmp / "LocalJ"); }

    fs::path images() const { return tmp / "MP3 Brasswick Discs"; }
    fs::path logs() const { return tmp / "state" / "brasswick"; }
    fs::path workFile() const { return tmp / "LocalJ" / "velmora0.wav"; }

    std::unique_ptr<CdWriterEngine> makeEngine(int setupMs = 20, fs::path folder = {})
    {
        Options o;
        o.imageFolder = folder.empty() ? images() : folder;
        o.logFolder = logs();
        o.setupMs = setupMs;
        o.scanSystemRecorders = false;
        auto e = std::make_unique<CdWriterEngine>(loop, o);
        // As the program starts it: the first device with a known driver type is taken.
        EXPECT_EQ(e->InitEngine(), 0);
        const int count = e->DeviceCount();
        for (int i = 0; i < count; ++i) {
            e->SelectDevice(i);
            const int type = e->DeviceDriverType();
            if (type >= 1 && type < 100) {
                e->SetDriverType(type);
                break;
            }
        }
        e->setCloseDiscAfterTrack(false);
        e->setCloseSessionAfterTrack(false);
        e->setTestWrite(false);
        e->setWriteSpeed(8);
        rec.attach(*e);
        return e;
    }

    // What the program does after a track when the burn goes on.
    void resetForNextTrack(CdWriterEngine &e)
    {
        e.ClearTracks();
        EXPECT_EQ(e.InitEngine(), 0);
        e.setCloseDiscAfterTrack(false);
        e.setCloseSessionAfterTrack(false);
        e.setTestWrite(false);
        e.setWriteSpeed(8);
    }

    // One track as the program writes it: decoded into the work file, added, the disc waited
    // for, written; `whileWriting` runs right after WriteTracks (the close flags come late).
    Track burnTrack(CdWriterEngine &e, int64_t frames, const std::string &title, const std::string &artist,
                    const std::function<void()> &whileWriting = {}, int expectResult = 0)
    {
        Track t{frames, title, artist, writeWave(workFile(), frames, title, artist, ++seed)};
        EXPECT_EQ(e.AddTrack(workFile().string(), 0), 0);
        EXPECT_TRUE(pump(loop, [&] { return e.DiscState() == 0; }, 2000));
        const int before = rec.doneCount;
        EXPECT_EQ(e.WriteTracks(), 0);
        if (whileWriting)
            whileWriting();
        EXPECT_TRUE(rec.waitDone(loop, before + 1));
        EXPECT_EQ(rec.lastResult, expectResult);
        EXPECT_TRUE(loop.workInHand().empty());
        return t;
    }

    std::vector<fs::path> filesWith(const std::string &ext) const
    {
        std::vector<fs::path> out;
        std::error_code ec;
        for (fs::directory_iterator it(images(), ec), end; !ec && it != end; it.increment(ec)) {
            if (it->path().extension() == ext)
                out.push_back(it->path());
        }
        std::sort(out.begin(), out.end());
        return out;
    }

    // Checks an image against the tracks written to it, through libcdio.
    void expectImage(const fs::path &cue, const std::vector<Track> &tracks, int pause = 150)
    {
        Cdio cd(cdio_open_cue(cue.c_str()));
        ASSERT_TRUE(cd) << readText(cue);
        ASSERT_EQ(cdio_get_num_tracks(cd.get()), tracks.size());
        ASSERT_EQ(cdio_get_first_track_num(cd.get()), 1);
        int64_t at = 0;
        for (size_t i = 0; i < tracks.size(); ++i) {
            const auto n = static_cast<track_t>(i + 1);
            if (i > 0) {
                EXPECT_EQ(cdio_get_track_pregap_lsn(cd.get(), n), at) << "track " << n;
                at += pause;
            }
            EXPECT_EQ(cdio_get_track_format(cd.get(), n), TRACK_FORMAT_AUDIO);
            ASSERT_EQ(cdio_get_track_lsn(cd.get(), n), at) << "track " << n;
            const int64_t sectors = sectorsOf(tracks[i].frames);
            std::vector<char> data(static_cast<size_t>(sectors * sector));
            ASSERT_EQ(cdio_read_audio_sectors(cd.get(), data.data(), static_cast<lsn_t>(at), static_cast<uint32_t>(sectors)),
                      DRIVER_OP_SUCCESS);
            const std::vector<char> head(data.begin(), data.begin() + static_cast<long>(tracks[i].pcm.size()));
            EXPECT_TRUE(head == tracks[i].pcm) << "track " << n << " audio differs";
            EXPECT_TRUE(std::all_of(data.begin() + static_cast<long>(tracks[i].pcm.size()), data.end(), [](char c) { return c == 0; }));
            at += sectors;
        }
        EXPECT_EQ(cdio_get_track_lsn(cd.get(), CDIO_CDROM_LEADOUT_TRACK), at);
        fs::path bin = cue;
        bin.replace_extension(".bin");
        EXPECT_EQ(static_cast<int64_t>(fs::file_size(bin)), at * sector);
        expectCdrdaoReadsCleanly(cue);
    }

    // cdrdao, which burns such images, reads the sheet without a warning (it warns of a track
    // shorter than four seconds, for one).
    static void expectCdrdaoReadsCleanly(const fs::path &cue)
    {
        // cdrdao finds the BIN beside the sheet only from the sheet's own folder.
        const testsupport::CommandOutput out = testsupport::runTool("cd '" + cue.parent_path().string() + "' && cdrdao show-toc '"
                                                                    + cue.filename().string() + "' 2>&1");
        EXPECT_EQ(out.text.find("WARNING"), std::string::npos) << out.text;
        EXPECT_NE(out.text.find("TOC TYPE: CD_DA"), std::string::npos) << out.text;
    }

    rt::VirtualEventLoop loop;
    TempDir tmp;
    EventRecord rec;
    unsigned seed = 0;
};

TEST_F(ImageRecorderTest, ThreeTracksOneAtATimeMakeAnImageLibcdioReads)
{
    auto e = makeEngine();
    ASSERT_EQ(e->DeviceName(e->DeviceCount() - 1), "Image Recorder");
    EXPECT_FALSE(fs::exists(images())); // nothing made before the first write
    std::vector<Track> tracks;
    tracks.push_back(burnTrack(*e, 198450, "First Song", "Band A")); // 337.5 sectors
    resetForNextTrack(*e);
    tracks.push_back(burnTrack(*e, 44100, "Say \"Hi\"", "")); // a second, padded to four with silence
    resetForNextTrack(*e);
    tracks.push_back(burnTrack(*e, 220623, "Caf\xC3\xA9", "Zo\xC3\xAB"));

    ASSERT_EQ(rec.progressPerJob.size(), 3u);
    for (const auto &p : rec.progressPerJob)
        EXPECT_EQ(p, oneToHundred());
    EXPECT_FALSE(rec.saw("closing"));

    const auto cues = filesWith(".cue");
    ASSERT_EQ(cues.size(), 1u);
    const auto bins = filesWith(".bin");
    ASSERT_EQ(bins.size(), 1u);
    EXPECT_EQ(static_cast<int64_t>(fs::file_size(bins[0])), (338 + 150 + 300 + 150 + 376) * sector);
    const std::string name = cues[0].stem().string();
    EXPECT_EQ(name.rfind("disc-", 0), 0u);
    const std::string expected = "REM COMMENT \"MP3 Brasswick Image Recorder\"\n"
                                 "REM DISC OPEN\n"
                                 "FILE \"" + name + ".bin\" BINARY\n"
                                 "  TRACK 01 AUDIO\n"
                                 "    FLAGS DCP\n"
                                 "    TITLE \"First Song\"\n"
                                 "    PERFORMER \"Band A\"\n"
                                 "    INDEX 01 00:00:00\n"
                                 "  TRACK 02 AUDIO\n"
                                 "    FLAGS DCP\n"
                                 "    TITLE \"Say 'Hi'\"\n"
                                 "    INDEX 00 00:04:38\n"
                                 "    INDEX 01 00:06:38\n"
                                 "  TRACK 03 AUDIO\n"
                                 "    FLAGS DCP\n"
                                 "    TITLE \"Caf\xE9\"\n"
                                 "    PERFORMER \"Zo\xEB\"\n"
                                 "    INDEX 00 00:10:38\n"
                                 "    INDEX 01 00:12:38\n"
                                 "    REM SECTORS 376\n";
    EXPECT_EQ(readText(cues[0]), expected);
    expectImage(cues[0], tracks);
}

TEST_F(ImageRecorderTest, OpenBurnThenAnotherAppendsAndAClosingTrackFinalises)
{
    auto e = makeEngine(300);
    std::vector<Track> tracks;
    // First burn, left open: the last track stays on the list.
    tracks.push_back(burnTrack(*e, 190000, "One", "A"));
    resetForNextTrack(*e);
    tracks.push_back(burnTrack(*e, 200000, "Two", "A"));
    tracks.push_back(burnTrack(*e, 180000, "Three", "B"));
    resetForNextTrack(*e);
    // Second burn: the list still holds the last track of the first; only the new one is written.
    tracks.push_back(burnTrack(*e, 176400, "Four", "B"));
    ASSERT_EQ(filesWith(".cue").size(), 1u);
    expectImage(filesWith(".cue")[0], tracks);
    resetForNextTrack(*e);
    // The last track: the close flags come while the recorder is still setting up.
    tracks.push_back(burnTrack(*e, 199999, "Five", "C", [&] {
        e->setCloseSessionAfterTrack(true);
        e->setCloseDiscAfterTrack(true);
    }));
    const int closing = rec.indexOf("closing");
    ASSERT_GE(closing, 0);
    EXPECT_EQ(rec.events.back(), "done 0");
    EXPECT_EQ(closing, static_cast<int>(rec.events.size()) - 2);
    const auto cues = filesWith(".cue");
    ASSERT_EQ(cues.size(), 1u);
    const fs::path cue = cues[0];
    fs::path bin = cue;
    bin.replace_extension(".bin");
    const std::string cueText = readText(cue);
    EXPECT_NE(cueText.find("REM DISC FINALISED\n"), std::string::npos);
    expectImage(cue, tracks);
    const std::string binBytes = readText(bin);
    const auto cueTime = fs::last_write_time(cue);
    const auto binTime = fs::last_write_time(bin);

    // The next burn gets a new disc; the finalised one is never touched again.
    resetForNextTrack(*e);
    std::vector<Track> second;
    second.push_back(burnTrack(*e, 190000, "New disc", "D"));
    resetForNextTrack(*e);
    second.push_back(burnTrack(*e, 190000, "New disc 2", "D"));
    const auto all = filesWith(".cue");
    ASSERT_EQ(all.size(), 2u);
    const fs::path newCue = all[0] == cue ? all[1] : all[0];
    expectImage(newCue, second);
    EXPECT_EQ(readText(cue), cueText);
    EXPECT_EQ(readText(bin), binBytes);
    EXPECT_EQ(fs::last_write_time(cue), cueTime);
    EXPECT_EQ(fs::last_write_time(bin), binTime);
}

TEST_F(ImageRecorderTest, TheOpenImageOutlivesTheEngine)
{
    std::vector<Track> tracks;
    {
        auto e = makeEngine();
        tracks.push_back(burnTrack(*e, 190000, "Before", "A"));
    }
    // The program starts again: the open image is the disc in the recorder.
    auto e = makeEngine();
    tracks.push_back(burnTrack(*e, 190000, "After", "A"));
    ASSERT_EQ(filesWith(".cue").size(), 1u);
    expectImage(filesWith(".cue")[0], tracks);
}

TEST_F(ImageRecorderTest, WriteTracksWritesOnlyWhatIsNotWrittenYet)
{
    auto e = makeEngine();
    const auto a = writeWave(tmp / "a.wav", 180000, "A", "X", 1);
    const auto b = writeWave(tmp / "b.wav", 185000, "B", "X", 2);
    ASSERT_EQ(e->AddTrack((tmp / "a.wav").string(), 0), 0);
    ASSERT_EQ(e->AddTrack((tmp / "b.wav").string(), 0), 0);
    ASSERT_EQ(e->WriteTracks(), 0);
    EXPECT_NE(e->WriteTracks(), 0); // busy
    ASSERT_TRUE(rec.waitDone(loop, 1));
    EXPECT_EQ(rec.lastResult, 0);
    // Both tracks in one go: one OnTrackDone, the percents of each in turn.
    std::vector<int> twice = oneToHundred();
    twice.insert(twice.end(), twice.begin(), twice.end());
    ASSERT_EQ(rec.progressPerJob.size(), 1u);
    EXPECT_EQ(rec.progressPerJob[0], twice);
    EXPECT_NE(e->WriteTracks(), 0); // nothing new on the list
    EXPECT_EQ(rec.doneCount, 1);
    expectImage(filesWith(".cue")[0], {{180000, "A", "X", a}, {185000, "B", "X", b}});
}

TEST_F(ImageRecorderTest, TestWriteSendsEveryEventAndWritesNothing)
{
    auto e = makeEngine();
    e->setTestWrite(true);
    burnTrack(*e, 190000, "Test", "T", [&] { e->setCloseDiscAfterTrack(true); });
    EXPECT_EQ(rec.progressPerJob.at(0), oneToHundred());
    EXPECT_TRUE(rec.saw("closing"));
    EXPECT_FALSE(fs::exists(images()));

    // With an open disc in the recorder, a test write leaves it as it was, open.
    resetForNextTrack(*e);
    std::vector<Track> tracks{burnTrack(*e, 190000, "Real", "R")};
    const std::string before = readText(filesWith(".cue").at(0));
    resetForNextTrack(*e);
    e->setTestWrite(true);
    burnTrack(*e, 190000, "Test", "T", [&] { e->setCloseDiscAfterTrack(true); });
    EXPECT_EQ(readText(filesWith(".cue").at(0)), before);
    expectImage(filesWith(".cue").at(0), tracks);
    // The test track counts as written: the next real write doesn't bring it back.
    e->setTestWrite(false);
    EXPECT_NE(e->WriteTracks(), 0);
}

TEST_F(ImageRecorderTest, AFolderThatCannotBeWrittenIsNoDisc)
{
    // A file where a folder should be: no folder can be made below it, root or not.
    std::ofstream(tmp / "plain-file") << "x";
    auto e = makeEngine(20, tmp / "plain-file" / "images");
    EXPECT_EQ(e->DiscState(), -1);
    writeWave(workFile(), 180000, "T", "A", 1);
    ASSERT_EQ(e->AddTrack(workFile().string(), 0), 0);
    ASSERT_EQ(e->WriteTracks(), 0);
    ASSERT_TRUE(rec.waitDone(loop, 1));
    EXPECT_NE(rec.lastResult, 0);
    EXPECT_TRUE(loop.workInHand().empty());

    // A folder that isn't there yet but can be made is a disc; asking doesn't make it.
    auto other = makeEngine(20, tmp / "not" / "yet");
    EXPECT_EQ(other->DiscState(), 0);
    EXPECT_FALSE(fs::exists(tmp / "not"));
}

TEST_F(ImageRecorderTest, AFailedWriteLeavesTheImageValidUpToItsLastWholeTrack)
{
    auto e = makeEngine();
    std::vector<Track> tracks{burnTrack(*e, 190000, "Kept", "A")};
    const fs::path cue = filesWith(".cue").at(0);
    const std::string cueBefore = readText(cue);
    fs::path bin = cue;
    bin.replace_extension(".bin");
    const auto binSize = fs::file_size(bin);

    // The next track hits a full disk (a file size limit stands in for it) half way.
    resetForNextTrack(*e);
    writeWave(workFile(), 400000, "Lost", "A", 99);
    ASSERT_EQ(e->AddTrack(workFile().string(), 0), 0);
    rlimit old{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
    auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = old;
    small.rlim_cur = binSize + 500000;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    ASSERT_EQ(e->WriteTracks(), 0);
    const bool done = rec.waitDone(loop, 2);
    setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, oldHandler);
    ASSERT_TRUE(done);
    EXPECT_NE(rec.lastResult, 0);
    EXPECT_EQ(readText(cue), cueBefore);
    EXPECT_EQ(fs::file_size(bin), binSize);
    expectImage(cue, tracks);

    // The disc is still open and takes the next track where the last whole one ended.
    resetForNextTrack(*e);
    tracks.push_back(burnTrack(*e, 190000, "Next", "A"));
    expectImage(cue, tracks);
}

TEST_F(ImageRecorderTest, ATrackCutShortByACrashIsCutOffTheImage)
{
    auto e = makeEngine();
    std::vector<Track> tracks{burnTrack(*e, 190000, "Whole", "A")};
    const fs::path cue = filesWith(".cue").at(0);
    fs::path bin = cue;
    bin.replace_extension(".bin");
    // What a crash in the middle of the next track leaves behind.
    std::ofstream(bin, std::ios::binary | std::ios::app) << std::string(123457, '\x55');
    resetForNextTrack(*e);
    tracks.push_back(burnTrack(*e, 190000, "After the crash", "A"));
    expectImage(cue, tracks);
}

TEST_F(ImageRecorderTest, InitEngineAndTheNextTrackFromInsideOnTrackDone)
{
    auto e = makeEngine();
    std::vector<Track> tracks;
    int written = 0;
    auto next = [&] {
        const int64_t frames = 180000 + 1000 * written;
        tracks.push_back({frames, "Chained", "C", writeWave(workFile(), frames, "Chained", "C", 50u + static_cast<unsigned>(written))});
        ASSERT_EQ(e->AddTrack(workFile().string(), 0), 0);
        ASSERT_EQ(e->DiscState(), 0);
        ASSERT_EQ(e->WriteTracks(), 0);
        ++written;
    };
    rec.afterDone = [&](int result) {
        ASSERT_EQ(result, 0);
        if (written == 3)
            return;
        e->ClearTracks();
        ASSERT_EQ(e->InitEngine(), 0);
        e->setCloseDiscAfterTrack(false);
        e->setCloseSessionAfterTrack(false);
        next();
    };
    next();
    ASSERT_TRUE(rec.waitDone(loop, 3));
    EXPECT_TRUE(loop.workInHand().empty());
    expectImage(filesWith(".cue").at(0), tracks);
}

TEST_F(ImageRecorderTest, DestroyingTheEngineMidWriteIsSafe)
{
    {
        // During the set-up.
        auto e = makeEngine(5000);
        writeWave(workFile(), 180000, "T", "A", 1);
        ASSERT_EQ(e->AddTrack(workFile().string(), 0), 0);
        ASSERT_EQ(e->WriteTracks(), 0);
        EXPECT_FALSE(loop.workInHand().empty());
        const auto start = std::chrono::steady_clock::now();
        e.reset();
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
        EXPECT_TRUE(loop.workInHand().empty());
    }
    {
        // From inside its own progress event, while the data goes out.
        auto e = makeEngine(0);
        writeWave(workFile(), 44100 * 60, "Long", "A", 2);
        ASSERT_EQ(e->AddTrack(workFile().string(), 0), 0);
        e->OnWriteProgress = [&](int) { e.reset(); };
        ASSERT_EQ(e->WriteTracks(), 0);
        EXPECT_TRUE(pump(loop, [&] { return !e; }));
        pump(loop, [] { return false; }, 50);
        EXPECT_TRUE(loop.workInHand().empty());
    }
    // Whatever got written is a valid image, or none at all.
    for (const fs::path &cue : filesWith(".cue")) {
        Cdio cd(cdio_open_cue(cue.c_str()));
        EXPECT_TRUE(cd);
    }
}

TEST_F(ImageRecorderTest, RefusedTracksAndNoDevice)
{
    auto e = makeEngine();
    EXPECT_NE(e->AddTrack((tmp / "missing.wav").string(), 0), 0);
    writeWave(tmp / "mono.wav", 44100, "", "", 1, 1);
    EXPECT_NE(e->AddTrack((tmp / "mono.wav").string(), 0), 0);
    writeWave(tmp / "48k.wav", 44100, "", "", 1, 2, 48000);
    EXPECT_NE(e->AddTrack((tmp / "48k.wav").string(), 0), 0);
    writeWave(tmp / "8bit.wav", 44100, "", "", 1, 2, 44100, SF_FORMAT_WAV | SF_FORMAT_PCM_U8);
    EXPECT_NE(e->AddTrack((tmp / "8bit.wav").string(), 0), 0);
    writeWave(tmp / "empty.wav", 0, "", "", 1);
    EXPECT_NE(e->AddTrack((tmp / "empty.wav").string(), 0), 0);
    std::ofstream(tmp / "text.wav") << "RIFF but not really";
    EXPECT_NE(e->AddTrack((tmp / "text.wav").string(), 0), 0);
    EXPECT_NE(e->WriteTracks(), 0); // nothing on the list

    // A path as the program builds it, "\" for a separator.
    writeWave(tmp / "ok.wav", 44100, "", "", 1);
    std::string logicPath = (tmp / "ok.wav").string();
    logicPath.replace(logicPath.rfind('/'), 1, "\\");
    EXPECT_EQ(e->AddTrack(logicPath, 0), 0);

    // An index beyond the devices is kept: no current device.
    e->SelectDevice(7);
    EXPECT_EQ(e->DeviceDriverType(), 0);
    EXPECT_LT(e->DiscState(), 0);
    EXPECT_NE(e->AddTrack((tmp / "ok.wav").string(), 0), 0);
    EXPECT_NE(e->WriteTracks(), 0);
    EXPECT_EQ(rec.doneCount, 0);
}

TEST_F(ImageRecorderTest, DevicesAndSettings)
{
    auto e = makeEngine();
    ASSERT_EQ(e->DeviceCount(), 1);
    EXPECT_EQ(e->DeviceName(0), "Image Recorder");
    EXPECT_EQ(e->DeviceDriverType(), 10);
    e->SetDriverType(3);
    EXPECT_EQ(e->DeviceDriverType(), 3);
    try {
        e->DeviceName(1);
        ADD_FAILURE() << "no error";
    } catch (const rt::RuntimeError &err) {
        EXPECT_EQ(err.number(), rt::ErrInvalidCall);
    }

    EXPECT_EQ(e->pauseSectors(), 150);
    e->setPreGapSize("75");
    EXPECT_EQ(e->pauseSectors(), 75);
    e->setPreGapSize("0");
    EXPECT_EQ(e->pauseSectors(), 150);
    e->setPreGapSize("-3");
    EXPECT_EQ(e->pauseSectors(), 150);
    for (auto setter : std::vector<std::function<void()>>{[&] { e->setPreGapSize("abc"); }, [&] { e->setFifoBufferCount(std::string("x")); },
                                                         [&] { e->setSectorsPerBuffer(""); }, [&] { e->setSwapBytes(std::string("maybe")); }}) {
        try {
            setter();
            ADD_FAILURE() << "no error";
        } catch (const rt::RuntimeError &err) {
            EXPECT_EQ(err.number(), rt::ErrTypeMismatch);
        }
    }
    e->setSwapBytes(std::string("True"));
    EXPECT_TRUE(e->swapBytes());
    e->setFifoBufferCount(std::string("10"));
    e->setSectorsPerBuffer("20");
    EXPECT_EQ(e->fifoSize(), 10 * 20 * 2352);

    // The pause set is the pause written.
    e->setPreGapSize("75");
    std::vector<Track> tracks{burnTrack(*e, 180000, "P1", "A")};
    resetForNextTrack(*e);
    tracks.push_back(burnTrack(*e, 180000, "P2", "A"));
    expectImage(filesWith(".cue").at(0), tracks, 75);
}

} // namespace

TEST_F(ImageRecorderTest, AHundredthTrackIsRefusedAndTheImageKeepsItsNinetyNine)
{
    auto e = makeEngine(0);
    std::vector<Track> tracks;
    // Short tracks, each padded with silence to four seconds.
    for (int i = 0; i < 99; ++i) {
        tracks.push_back(burnTrack(*e, 100 + i, "T" + std::to_string(i + 1), ""));
        resetForNextTrack(*e);
    }
    const auto cues = filesWith(".cue");
    ASSERT_EQ(cues.size(), 1u);
    const std::string before = readText(cues[0]);
    // The hundredth goes the way of any refused track: AddTrack says no, nothing is written.
    writeWave(workFile(), 100, "T100", "", ++seed);
    EXPECT_NE(e->AddTrack(workFile().string(), 0), 0);
    EXPECT_NE(e->WriteTracks(), 0); // nothing listed to write
    EXPECT_EQ(readText(cues[0]), before);
    expectImage(cues[0], tracks);
}

TEST_F(ImageRecorderTest, ADiscEndsAt99Minutes59Seconds74Frames)
{
    platform::writer::ImageRecorder recorder(images(), 0);
    constexpr int64_t framesPerSector = 588;
    // An empty disc: 449850 sectors after the two seconds before track 1 end at 99:59:74.
    EXPECT_TRUE(recorder.takesTracks({449850 * framesPerSector}, 150));
    EXPECT_FALSE(recorder.takesTracks({449850 * framesPerSector + 1}, 150));
    // The pauses count: two tracks and the 150 sectors between them.
    EXPECT_TRUE(recorder.takesTracks({200000 * framesPerSector, 249700 * framesPerSector}, 150));
    EXPECT_FALSE(recorder.takesTracks({200000 * framesPerSector, 249701 * framesPerSector}, 150));
    // 99 tracks of four seconds fit; a hundredth of any length does not.
    EXPECT_TRUE(recorder.takesTracks(std::vector<int64_t>(99, 1), 150));
    EXPECT_FALSE(recorder.takesTracks(std::vector<int64_t>(100, 1), 150));
}

TEST_F(ImageRecorderTest, EveryBurnLeavesALog)
{
    auto e = makeEngine(0);
    EXPECT_FALSE(fs::exists(logs())); // nothing before the first write
    burnTrack(*e, 190000, "One", "A");
    resetForNextTrack(*e);
    e->setCloseDiscAfterTrack(true);
    burnTrack(*e, 100, "Two", "");
    ASSERT_TRUE(fs::is_symlink(logs() / "last.log"));
    const std::string log = readText(logs() / "last.log");
    std::istringstream lines(log);
    std::string first;
    std::getline(lines, first);
    EXPECT_EQ(first, "MP3 Brasswick 1.3 burn log");
    for (const std::string &expected :
         {std::string("Device: Image Recorder (driver type 10), images in ") + images().string(),
          std::string("Settings: speed 8, FIFO 4064256 bytes, pause 150 sectors, test write no"),
          "Track 1: " + workFile().string() + ", 190000 frames (00:04.24)",
          std::string("Disc state 0: the image folder can be written (") + images().string() + ")",
          std::string("Set-up (as a recorder calibrating its laser): 0 ms"),
          std::string("sectors of pause, 324 sectors of audio (190000 frames and silence to a whole sector)"),
          "Track 2: " + workFile().string() + ", 100 frames (00:00.01)",
          std::string(": 150 sectors of pause, 300 sectors of audio (100 frames and silence to four seconds)"),
          std::string("rewritten: 2 tracks, disc finalised"), std::string("Result 0 (written) after "),
          std::string("The disc was closed at ")}) {
        EXPECT_NE(log.find(expected), std::string::npos) << expected << "\n" << log;
    }
    EXPECT_NE(log.find("Data written in "), std::string::npos);
    // One log for the burn, ended by the closing track; the next burn has a log of its own.
    resetForNextTrack(*e);
    burnTrack(*e, 1000, "Three", "");
    int logsMade = 0;
    for (const auto &entry : fs::directory_iterator(logs()))
        logsMade += entry.path().filename().string().rfind("burn-", 0) == 0;
    EXPECT_EQ(logsMade, 2);
    EXPECT_NE(readText(logs() / "last.log").find("Track 1: "), std::string::npos);
}
