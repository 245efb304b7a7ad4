// The batch converter's chain on sources and targets that are not what they should be: Start
// raises the run-time error of the failure or the flow ends by itself, nothing crashes or hangs,
// and the source's bytes are never touched.
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include <unistd.h>

#include <gtest/gtest.h>

#include "ConvertTestSupport.h"
#include "SmallDisk.h"
#include "TempFolder.h"
#include "runtime/RuntimeError.h"

namespace {

namespace fs = std::filesystem;
using converttest::BatchChain;
using converttest::Events;
using mediatest::quoted;
using mediatest::runTool;
using platform::Trigger;
using platform::WaveFormat;

const WaveFormat HalfRateMono{1, 1, 22050, 16};

std::string randomBytes(size_t n, unsigned seed)
{
    std::mt19937 gen(seed);
    std::string s(n, '\0');
    for (char &c : s)
        c = static_cast<char>(gen() & 0xFF);
    return s;
}

// Start must raise `code` before anything flows: no event, the chain closed, the source as it was.
void expectStartRaises(const std::string &source, const std::string &target, int code)
{
    const bool sourceThere = fs::exists(source);
    const bool sourceFile = fs::is_regular_file(source);
    const std::string before = sourceFile ? mp3test::readBytes(source) : std::string();
    BatchChain chain;
    chain.SrcFile->setFileName(source);
    chain.DstFile->setFileName(target);
    chain.ACMConverter->setWaveFormat(HalfRateMono);
    try {
        chain.Trigger->Start();
        ADD_FAILURE() << "no error for " << source << " -> " << target;
    } catch (const rt::RuntimeError &e) {
        EXPECT_EQ(e.number(), code) << source << " -> " << target;
    }
    EXPECT_EQ(chain.Trigger->State(), 0);
    ASSERT_TRUE(mediatest::settle(chain.loop));
    EXPECT_TRUE(chain.events.empty());
    EXPECT_EQ(fs::exists(source), sourceThere);
    if (sourceFile) {
        EXPECT_EQ(mp3test::readBytes(source), before) << "the source was touched";
    }
    // The window goes on to close the chain: that must still say closed.
    chain.Trigger->Close();
    ASSERT_TRUE(mediatest::settle(chain.loop));
    EXPECT_EQ(chain.events, Events{"closed"});
}

TEST(ConvertBadInput, SourcesThatAreNoWaveRaise53)
{
    mp3test::TempFolder dir;
    mp3test::writeBytes(dir.file("text.wav"), "This is a letter, not a sound.\r\n");
    mp3test::writeBytes(dir.file("empty.wav"), "");
    mp3test::writeBytes(dir.file("noise.wav"), randomBytes(64 * 1024, 7));
    // A RIFF header that promises a wave and holds no format.
    mp3test::writeBytes(dir.file("riff.wav"), std::string("RIFF\x24\x00\x00\x00WAVEdata\x00\x00\x00\x00", 20));
    fs::create_directory(dir.path() / "folder.wav");
    // Sound, but no wave: an MP3 and an AIFF file under a wave's name.
    ASSERT_TRUE(converttest::writeTestWave(dir.file("tone.wav"), 44100, 1.0));
    runTool("lame --quiet " + quoted(dir.file("tone.wav")) + " " + quoted(dir.file("mp3.wav")));
    runTool("sox " + quoted(dir.file("tone.wav")) + " -t aiff " + quoted(dir.file("aiff.wav")));
    for (const char *name : {"text.wav", "empty.wav", "noise.wav", "riff.wav", "folder.wav", "mp3.wav", "aiff.wav"}) {
        SCOPED_TRACE(name);
        expectStartRaises(dir.file(name), dir.file("target.wav"), rt::ErrFileNotFound);
        EXPECT_FALSE(fs::exists(dir.file("target.wav")));
    }
}

TEST(ConvertBadInput, ASourceThatVanishedRaises53)
{
    mp3test::TempFolder dir;
    ASSERT_TRUE(converttest::writeTestWave(dir.file("gone.wav"), 44100, 1.0));
    BatchChain chain;
    chain.SrcFile->setFileName(dir.file("gone.wav"));
    fs::remove(dir.file("gone.wav"));
    expectStartRaises(dir.file("gone.wav"), dir.file("target.wav"), rt::ErrFileNotFound);
    expectStartRaises("", dir.file("target.wav"), rt::ErrFileNotFound);
}

TEST(ConvertBadInput, AHeaderCutShortRaises53)
{
    mp3test::TempFolder dir;
    ASSERT_TRUE(converttest::writeTestWave(dir.file("whole.wav"), 44100, 1.0));
    const std::string bytes = mp3test::readBytes(dir.file("whole.wav"));
    for (size_t keep : {4u, 12u, 30u}) {
        SCOPED_TRACE(keep);
        mp3test::writeBytes(dir.file("cut.wav"), bytes.substr(0, keep));
        expectStartRaises(dir.file("cut.wav"), dir.file("target.wav"), rt::ErrFileNotFound);
    }
}

// Sound data cut off, even inside a frame: what is there is converted, the flow ends by itself.
TEST(ConvertBadInput, DataCutShortConvertsWhatIsThere)
{
    mp3test::TempFolder dir;
    ASSERT_TRUE(converttest::writeTestWave(dir.file("whole.wav"), 44100, 2.0));
    const std::string bytes = mp3test::readBytes(dir.file("whole.wav"));
    ASSERT_EQ(bytes.size(), 44u + 88200u * 4);
    for (size_t keep : {44u + 44100u * 4, 44u + 1000u * 4 + 3, 44u}) {
        SCOPED_TRACE(keep);
        const std::string cut = bytes.substr(0, keep);
        mp3test::writeBytes(dir.file("cut.wav"), cut);
        BatchChain chain;
        chain.convert(dir.file("cut.wav"), dir.file("target.wav"), HalfRateMono);
        ASSERT_FALSE(chain.events.empty());
        EXPECT_EQ(chain.events.front(), "started");
        EXPECT_EQ(chain.events[chain.events.size() - 2], "stopped");
        EXPECT_EQ(chain.events.back(), "closed");
        EXPECT_EQ(mp3test::readBytes(dir.file("cut.wav")), cut);
        const int64_t framesIn = static_cast<int64_t>(keep - 44) / 4;
        const auto out = mediatest::readWave(dir.file("target.wav"));
        ASSERT_TRUE(out.ok);
        EXPECT_EQ(out.rate, 22050);
        EXPECT_EQ(out.channels, 1);
        EXPECT_NEAR(static_cast<double>(out.frames()), framesIn / 2.0, 1.0);
    }
}

TEST(ConvertBadInput, TargetsThatCantBeWrittenRaise75)
{
    mp3test::TempFolder dir;
    ASSERT_TRUE(converttest::writeTestWave(dir.file("song.wav"), 44100, 1.0));
    mp3test::writeBytes(dir.file("plain-file"), "x");
    fs::create_directory(dir.path() / "taken.wav");
    std::vector<std::string> targets = {dir.file("no-such-folder/song_acm.wav"), dir.file("plain-file/song_acm.wav"),
                                        dir.file("taken.wav"), ""};
    if (::geteuid() != 0) {
        // The superuser writes into a read-only folder anyway.
        fs::create_directory(dir.path() / "locked");
        fs::permissions(dir.path() / "locked", fs::perms::owner_read | fs::perms::owner_exec);
        targets.push_back(dir.file("locked/song_acm.wav"));
    }
    // A disk mounted read-only stops even the superuser.
    converttest::SmallDisk readOnly(dir.path() / "ro", 1 << 20, true);
    if (readOnly.mounted())
        targets.push_back(readOnly.file("song_acm.wav"));
    for (const std::string &target : targets) {
        SCOPED_TRACE(target);
        expectStartRaises(dir.file("song.wav"), target, rt::ErrPathFileAccess);
    }

    // The same chain converts once the target is good: the failed start let go of the source.
    BatchChain chain;
    chain.SrcFile->setFileName(dir.file("song.wav"));
    chain.DstFile->setFileName(dir.file("no-such-folder/song_acm.wav"));
    chain.ACMConverter->setWaveFormat(HalfRateMono);
    EXPECT_THROW(chain.Trigger->Start(), rt::RuntimeError);
    chain.convert(dir.file("song.wav"), dir.file("song_acm.wav"), HalfRateMono);
    EXPECT_EQ(chain.events, (Events{"started", "buffer", "stopped", "closed"}));
    EXPECT_EQ(mediatest::readWave(dir.file("song_acm.wav")).frames(), 22050);
}

// A wave with no sound at all: the flow starts and stops, and the target is an empty wave.
TEST(ConvertBadInput, AnEmptyWaveGivesAnEmptyTarget)
{
    mp3test::TempFolder dir;
    ASSERT_TRUE(converttest::writeTestWave(dir.file("silent.wav"), 44100, 0.0));
    BatchChain chain;
    chain.convert(dir.file("silent.wav"), dir.file("target.wav"), WaveFormat{0x11, 2, 22050, 4});
    EXPECT_EQ(chain.events, (Events{"started", "stopped", "closed"}));
    EXPECT_EQ(chain.SrcFile->DataSize(), 0);
    const auto out = mediatest::readWave(dir.file("target.wav"));
    ASSERT_TRUE(out.ok);
    EXPECT_EQ(out.frames(), 0);
}

// Stopped in the middle (the batch's Stop goes straight to Close): the source as it was, the
// target a readable wave of what got through.
TEST(ConvertBadInput, StoppingAndClosingMidFlowLeavesAReadableTarget)
{
    mp3test::TempFolder dir;
    ASSERT_TRUE(converttest::writeTestWave(dir.file("long.wav"), 44100, 20.0));
    const std::string before = mp3test::readBytes(dir.file("long.wav"));
    BatchChain chain;
    chain.SrcFile->setFileName(dir.file("long.wav"));
    chain.DstFile->setFileName(dir.file("long_acm.wav"));
    chain.ACMConverter->setWaveFormat(WaveFormat{2, 2, 44100, 4});
    chain.Trigger->Start();
    // The user's Stop goes straight to closing.
    chain.Trigger->Close();
    EXPECT_EQ(chain.Trigger->State(), 0);
    ASSERT_TRUE(mediatest::settle(chain.loop));
    EXPECT_EQ(chain.events.back(), "closed");
    EXPECT_EQ(mp3test::readBytes(dir.file("long.wav")), before);
    const auto out = mediatest::readWave(dir.file("long_acm.wav"));
    ASSERT_TRUE(out.ok);
    EXPECT_LE(out.frames(), 20 * 44100 + 2048);
}

} // namespace
