// A user's burns on the real decoding chain and the Image Recorder, played by the scenario
// driver through the windows; the image left behind is then opened as a CD and compared,
// sample for sample, with what mpg123 decodes from the same MP3s.
#include <gtest/gtest.h>

#include <cdio/cdio.h>
#include <sndfile.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include "CommandOutput.h"
#include "Runner.h"

namespace fs = std::filesystem;

namespace {

constexpr int samplesPerSector = 588; // stereo 16-bit frames in 2352 bytes

struct Pcm {
    int rate = 0;
    int channels = 0;
    std::vector<int16_t> samples; // interleaved
};

Pcm readWave(const fs::path &path)
{
    Pcm pcm;
    SF_INFO info{};
    SNDFILE *f = sf_open(path.c_str(), SFM_READ, &info);
    if (!f)
        return pcm;
    pcm.rate = info.samplerate;
    pcm.channels = info.channels;
    pcm.samples.resize(static_cast<size_t>(info.frames) * info.channels);
    pcm.samples.resize(static_cast<size_t>(sf_read_short(f, pcm.samples.data(), static_cast<sf_count_t>(pcm.samples.size()))));
    sf_close(f);
    return pcm;
}

std::string readText(const fs::path &path)
{
    std::ifstream in(path);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}


// cdrdao, which burns such images, reads the sheet without a warning (a track shorter than four
// seconds, for one, it warns of).
void expectCdrdaoReadsCleanly(const fs::path &cue)
{
    const testsupport::CommandOutput out = testsupport::runTool("cd '" + cue.parent_path().string() + "' && cdrdao show-toc '"
                                                                + cue.filename().string() + "' 2>&1");
    EXPECT_EQ(out.text.find("WARNING"), std::string::npos) << out.text;
    EXPECT_NE(out.text.find("TOC TYPE: CD_DA"), std::string::npos) << out.text;
}

// Runs a scenario text with the driver, keeping its work folder; returns the folder.
fs::path runScenario(const std::string &name, const std::string &text, const fs::path &scratch, std::string &output)
{
    const fs::path file = scratch / (name + ".scn");
    std::ofstream(file) << text;
    std::ostringstream out;
    scenario::Runner runner(BRASSWICK_PROGRAM_DIR, out);
    runner.setKeep(true);
    runner.runFile(file);
    output = out.str();
    EXPECT_EQ(runner.failed(), 0) << output;
    const size_t at = output.find("kept: ");
    if (at == std::string::npos)
        return {};
    return fs::path(output.substr(at + 6, output.find('\n', at) - at - 6));
}

class Scratch {
public:
    Scratch()
    {
        std::random_device rd;
        m_path = fs::temp_directory_path() / ("burn-image-" + std::to_string(rd()));
        fs::create_directories(m_path);
    }
    ~Scratch()
    {
        std::error_code ec;
        for (const auto &p : m_kept)
            fs::remove_all(p, ec);
        fs::remove_all(m_path, ec);
    }
    const fs::path &path() const { return m_path; }
    void keep(const fs::path &p) { m_kept.push_back(p); }

private:
    fs::path m_path;
    std::vector<fs::path> m_kept;
};

std::vector<fs::path> filesIn(const fs::path &folder, const std::string &ext)
{
    std::vector<fs::path> found;
    std::error_code ec;
    for (const auto &e : fs::directory_iterator(folder, ec))
        if (e.path().extension() == ext)
            found.push_back(e.path());
    std::sort(found.begin(), found.end());
    return found;
}

// The PCM of a track of the image from its first sector for `sectors` sectors.
std::vector<int16_t> readSectors(CdIo_t *cd, lsn_t first, unsigned sectors)
{
    std::vector<int16_t> pcm(static_cast<size_t>(sectors) * samplesPerSector * 2);
    for (unsigned s = 0; s < sectors; ++s) {
        if (cdio_read_audio_sectors(cd, pcm.data() + static_cast<size_t>(s) * samplesPerSector * 2, first + s, 1) != DRIVER_OP_SUCCESS) {
            ADD_FAILURE() << "sector " << first + s << " can't be read";
            break;
        }
    }
    return pcm;
}

// Signal to difference, in dB, of b against a over their common length.
double signalToDifference(const std::vector<int16_t> &a, const std::vector<int16_t> &b)
{
    const size_t n = std::min(a.size(), b.size());
    double signal = 0, diff = 0;
    for (size_t i = 0; i < n; ++i) {
        signal += double(a[i]) * a[i];
        const double d = double(a[i]) - b[i];
        diff += d * d;
    }
    return diff == 0 ? 200.0 : 10 * std::log10(signal / diff);
}

const char *layoutOfFolder = R"(toolbar frmMain.ctToolBar1 1
click Form2.Check1
click Form2.ctButton1
dialog "$WORK/music"
click Form5.ctButton3
)";

} // namespace

TEST(BurnToImage, ThreeTracksThenTwoMoreThenTheClose)
{
    Scratch scratch;
    std::ostringstream scn;
    scn << "use real decoder\nuse real writer\nuse real settings\n"
        << "file \"$WORK/music/a.mp3\" mp3 44100 128 7 stereo id3v1 \"First Tone\"\n"
        << "file \"$WORK/music/b.mp3\" mp3 22050 64 5 mono\n"
        << "file \"$WORK/music/c.mp3\" mp3 44100 160 3.3 stereo\n"
        << "start\nwait 7000\n"
        << layoutOfFolder
        << "click Form5.ctList1 row 0\nclick Form5.ctList1 row 1\nclick Form5.ctList1 row 2\n"
        << "click Form5.ctButton1\nclick Form5.ctButton4\n"
        << "answer Yes\nclick frmMain.ctButton13\n"
        << "expect-box \"You are about to burn a CD without closing your session!  A normal CD Player will not be able to "
           "read the data until your session is closed.  Would you like to continue?\"\n"
        << "settle 180000\n"
        << "expect-box \"Velmora Works has finished your CD\" title \"MP3 Brasswick Notification!\" icon information\n"
        << "expect-visible frmMain\nexpect-unloaded Mainwriter\n"
        // A second open burn of two more files appends tracks 4 and 5 to the same disc.
        << "file \"$WORK/music2/d.mp3\" mp3 44100 128 2 stereo\n"
        << "file \"$WORK/music2/e.mp3\" mp3 44100 128 2.5 stereo\n"
        << "answer Yes\ntoolbar frmMain.ctToolBar1 1\n"
        << R"(click Form2.Check1
click Form2.ctButton1
dialog "$WORK/music2"
click Form5.ctButton3
click Form5.ctList1 row 0
click Form5.ctList1 row 1
click Form5.ctButton1
click Form5.ctButton4
)"
        << "expect-box \"You currently have a list loaded!  This action will erase your current list. Would you like to continue?\"\n"
        << "answer Yes\nclick frmMain.ctButton13\n"
        << "expect-box \"You are about to burn a CD without closing your session!  A normal CD Player will not be able to "
           "read the data until your session is closed.  Would you like to continue?\"\n"
        << "settle 180000\n"
        << "expect-box \"Velmora Works has finished your CD\"\n"
        << "expect-no-box\n";
    std::string output;
    const fs::path work = runScenario("open", scn.str(), scratch.path(), output);
    ASSERT_FALSE(work.empty()) << output;
    scratch.keep(work);

    const auto cues = filesIn(work / "discs", ".cue");
    ASSERT_EQ(cues.size(), 1u) << "one disc for both open burns";
    CdIo_t *cd = cdio_open_cue(cues[0].c_str());
    ASSERT_NE(cd, nullptr) << cues[0];
    ASSERT_EQ(cdio_get_num_tracks(cd), 5);

    const char *names[] = {"music/a.mp3", "music/b.mp3", "music/c.mp3", "music2/d.mp3", "music2/e.mp3"};
    for (int t = 1; t <= 5; ++t) {
        SCOPED_TRACE("track " + std::to_string(t));
        EXPECT_EQ(cdio_get_track_format(cd, t), TRACK_FORMAT_AUDIO);
        const fs::path decoded = scratch.path() / ("t" + std::to_string(t) + ".wav");
        ASSERT_TRUE(testsupport::runTool("mpg123 -q -w '" + decoded.string() + "' '" + (work / names[t - 1]).string() + "'").succeeded);
        Pcm expected = readWave(decoded);
        ASSERT_GT(expected.samples.size(), 0u);
        if (t == 2) {
            // The 22050 Hz mono file reaches the disc as CD audio: compare with sox's conversion.
            const fs::path converted = scratch.path() / "t2-cd.wav";
            ASSERT_TRUE(testsupport::runTool("sox '" + decoded.string() + "' -r 44100 -c 2 -b 16 '" + converted.string() + "'").succeeded);
            expected = readWave(converted);
        }
        ASSERT_EQ(expected.rate, 44100);
        ASSERT_EQ(expected.channels, 2);
        const size_t frames = expected.samples.size() / 2;
        // Whole sectors, four seconds (300 sectors) at least: a shorter track ends in silence.
        const unsigned sectors = std::max(300u, static_cast<unsigned>((frames + samplesPerSector - 1) / samplesPerSector));
        const lsn_t start = cdio_get_track_lsn(cd, t);
        const auto onDisc = readSectors(cd, start, sectors);
        std::vector<int16_t> audio(onDisc.begin(), onDisc.begin() + static_cast<long>(frames * 2));
        if (t == 2) {
            EXPECT_GE(signalToDifference(expected.samples, audio), 60.0);
        } else {
            EXPECT_TRUE(audio == expected.samples) << "the track differs from mpg123's decode";
        }
        // The padding to a whole sector, or to four seconds, is silence.
        for (size_t i = frames * 2; i < onDisc.size(); ++i) {
            ASSERT_EQ(onDisc[i], 0) << "padding at sample " << i;
        }
        if (t < 5) {
            // Then the pause of 150 sectors before the next track, as silence.
            const lsn_t next = cdio_get_track_lsn(cd, t + 1);
            EXPECT_EQ(next - start, static_cast<lsn_t>(sectors + 150));
            const auto pause = readSectors(cd, start + sectors, 150);
            EXPECT_TRUE(std::all_of(pause.begin(), pause.end(), [](int16_t s) { return s == 0; }));
        }
    }
    cdio_destroy(cd);
    const std::string cue = readText(cues[0]);
    expectCdrdaoReadsCleanly(cues[0]);
    EXPECT_NE(cue.find("TITLE \"First Tone\""), std::string::npos) << cue;
    EXPECT_NE(cue.find("INDEX 00"), std::string::npos) << cue;
}

TEST(BurnToImage, AClosingBurnFinalisesAndATestWriteLeavesNoImage)
{
    Scratch scratch;
    std::ostringstream scn;
    scn << "use real decoder\nuse real writer\n"
        << "file \"$WORK/music/a.mp3\" mp3 44100 128 1.5 stereo\n"
        << "start\nwait 7000\n"
        << layoutOfFolder << "click Form5.ctList1 row 0\nclick Form5.ctButton1\nclick Form5.ctButton4\n"
        // A test write of one track: every event, nothing written.
        << "click frmMain.Check2\nanswer Yes\nclick frmMain.ctButton13\n"
        << "expect-box \"You are about to burn a CD without closing your session!  A normal CD Player will not be able to "
           "read the data until your session is closed.  Would you like to continue?\"\n"
        << "settle 60000\nexpect-box \"Velmora Works has finished your CD\"\n"
        // Then a closing burn of the same short track: the four-second timer's flags count.
        // An open burn of one track ends without a reset: the test mode is still on until
        // the box is unticked.
        << "click frmMain.Check2\nclick frmMain.Check1\nanswer Yes\nclick frmMain.ctButton13\n"
        << "expect-box \"You are about to close your session!  Doing this will disable the ability to record any "
           "furthur tracks to this CD.  Would you like to continue?\"\n"
        << "settle 60000\nexpect-box \"Velmora Works has finished your CD\"\n"
        << "expect frmMain.lastTrackCloses == \"-1\"\n";
    std::string output;
    const fs::path work = runScenario("close", scn.str(), scratch.path(), output);
    ASSERT_FALSE(work.empty()) << output;
    scratch.keep(work);
    const auto cues = filesIn(work / "discs", ".cue");
    ASSERT_EQ(cues.size(), 1u) << "the test write made no image; the closing burn made one";
    const std::string cue = readText(cues[0]);
    expectCdrdaoReadsCleanly(cues[0]);
    CdIo_t *cd = cdio_open_cue(cues[0].c_str());
    ASSERT_NE(cd, nullptr);
    EXPECT_EQ(cdio_get_num_tracks(cd), 1);
    cdio_destroy(cd);
    // Had the test write left a track, the closing burn would have appended to its image;
    // the closing track finalised the disc.
    EXPECT_NE(cue.find("REM DISC FINALISED"), std::string::npos) << cue;
}
