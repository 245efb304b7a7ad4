// The MP3 to wave chain (no format set) against `mpg123 -w` on the same file, sample for sample:
// MP3s from the LAME library and from the lame tool, with and without the encoder's Info frame
// that tells both decoders what to trim.
#include <cmath>
#include <string>

#include <gtest/gtest.h>

#include "ConvertTestSupport.h"
#include "Mp3Maker.h"
#include "TempFolder.h"

namespace {

using converttest::Events;
using converttest::Mp3ToWaveChain;
using mediatest::quoted;
using mediatest::readWave;
using mediatest::runTool;

void expectLikeMpg123(const std::string &mp3, const mp3test::TempFolder &dir, int64_t framesIn = -1)
{
    const std::string before = mp3test::readBytes(mp3);
    const std::string reference = dir.file("mpg123.wav");
    runTool("mpg123 -q -w " + quoted(reference) + " " + quoted(mp3));
    Mp3ToWaveChain chain;
    chain.convert(mp3, dir.file("ours.wav"));
    EXPECT_EQ(chain.events, (Events{"started", "buffer", "stopped", "closed"}));
    EXPECT_EQ(mp3test::readBytes(mp3), before);

    const mediatest::Wave theirs = readWave(reference);
    const mediatest::Wave ours = readWave(dir.file("ours.wav"));
    ASSERT_TRUE(theirs.ok && ours.ok);
    EXPECT_EQ(ours.format, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    EXPECT_EQ(ours.rate, theirs.rate);
    EXPECT_EQ(ours.channels, theirs.channels);
    ASSERT_EQ(ours.frames(), theirs.frames());
    for (size_t i = 0; i < ours.samples.size(); ++i)
        ASSERT_EQ(ours.samples[i], theirs.samples[i]) << "first difference at sample " << i;
    // Gapless: what went into the encoder, no more.
    if (framesIn >= 0) {
        EXPECT_EQ(ours.frames(), framesIn);
    }
    // The length the source reports (whole milliseconds) is the length written, and the
    // position got there: the progress ends at 100.
    EXPECT_EQ(chain.AudioFile->Length(), ours.frames() * 1000 / ours.rate);
    EXPECT_EQ(chain.AudioFile->Position(), chain.AudioFile->Length());
}

testsupport::Mp3Options tone(int rate, int channels, double seconds, bool vbr)
{
    testsupport::Mp3Options o;
    o.sampleRate = rate;
    o.channels = channels;
    o.seconds = seconds;
    o.kbps = rate < 32000 ? 64 : 128;
    o.vbr = vbr;
    return o;
}

TEST(Mp3ToWave, LibraryCbrStereo)
{
    mp3test::TempFolder dir;
    ASSERT_TRUE(testsupport::makeMp3(dir.file("t.mp3"), tone(44100, 2, 3.3, false)));
    expectLikeMpg123(dir.file("t.mp3"), dir, std::llround(3.3 * 44100));
}

TEST(Mp3ToWave, LibraryVbr48000)
{
    mp3test::TempFolder dir;
    ASSERT_TRUE(testsupport::makeMp3(dir.file("t.mp3"), tone(48000, 2, 2.2, true)));
    expectLikeMpg123(dir.file("t.mp3"), dir, std::llround(2.2 * 48000));
}

TEST(Mp3ToWave, LibraryMono22050)
{
    mp3test::TempFolder dir;
    ASSERT_TRUE(testsupport::makeMp3(dir.file("t.mp3"), tone(22050, 1, 1.7, false)));
    expectLikeMpg123(dir.file("t.mp3"), dir, std::llround(1.7 * 22050));
}

// The lame tool's own files, from the CD-quality test wave.
TEST(Mp3ToWave, LameToolDefaults)
{
    mp3test::TempFolder dir;
    ASSERT_TRUE(converttest::writeTestWave(dir.file("in.wav"), 44100, 3.0));
    runTool("lame --quiet " + quoted(dir.file("in.wav")) + " " + quoted(dir.file("t.mp3")));
    expectLikeMpg123(dir.file("t.mp3"), dir, 132300);
}

TEST(Mp3ToWave, LameToolVbrMonoAt8000)
{
    mp3test::TempFolder dir;
    ASSERT_TRUE(converttest::writeTestWave(dir.file("in.wav"), 44100, 2.0));
    runTool("lame --quiet -V 6 -m m --resample 8 " + quoted(dir.file("in.wav")) + " " + quoted(dir.file("t.mp3")));
    expectLikeMpg123(dir.file("t.mp3"), dir);
}

// Without the Info frame neither decoder knows the encoder's delay and padding: both give every
// decoded sample.
TEST(Mp3ToWave, LameToolWithoutInfoFrame)
{
    mp3test::TempFolder dir;
    ASSERT_TRUE(converttest::writeTestWave(dir.file("in.wav"), 44100, 2.0));
    runTool("lame --quiet -t " + quoted(dir.file("in.wav")) + " " + quoted(dir.file("t.mp3")));
    expectLikeMpg123(dir.file("t.mp3"), dir);
    EXPECT_EQ(readWave(dir.file("ours.wav")).frames() % 1152, 0);
}

} // namespace
