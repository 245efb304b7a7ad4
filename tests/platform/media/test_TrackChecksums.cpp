// A copied track's checksums against tools that compute them independently: AccurateRip v1 and
// v2 as whipper's accuraterip-checksum gives them for a first, a middle and a last track, and
// CRC32 as gzip records it for the same audio data.
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "CommandOutput.h"
#include "MediaTestSupport.h"
#include "TempFolder.h"
#include "platform/media/TrackChecksummer.h"
#include "platform/media/WaveChecksums.h"

namespace {

using mediatest::quoted;

// Noise of CD audio, `frames` long, as a plain 44-byte-header wave.
std::vector<int16_t> writeNoise(const std::string &path, int frames, unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> sample(-32768, 32767);
    std::vector<int16_t> pcm(static_cast<size_t>(frames) * 2);
    for (int16_t &s : pcm)
        s = static_cast<int16_t>(sample(random));
    SF_INFO info{};
    info.samplerate = 44100;
    info.channels = 2;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE *f = sf_open(path.c_str(), SFM_WRITE, &info);
    EXPECT_NE(f, nullptr);
    if (f) {
        sf_writef_short(f, pcm.data(), frames);
        sf_close(f);
    }
    return pcm;
}

std::string hex8(uint32_t v)
{
    char buf[16];
    std::snprintf(buf, sizeof buf, "%08X", v);
    return buf;
}

std::string accurateRip(const std::string &file, int version, int track, int tracks)
{
    return testsupport::runTool("accuraterip-checksum --accuraterip-v" + std::to_string(version) + " " + quoted(file) +
                                " " + std::to_string(track) + " " + std::to_string(tracks))
        .line();
}

TEST(TrackChecksums, AccurateRipAsWhippersToolComputesIt)
{
    mp3test::TempFolder dir;
    const std::string file = dir.file("track.wav");
    // Three seconds and a part sector.
    writeNoise(file, 3 * 44100 + 100, 7);
    for (int track : {1, 2, 3}) {
        SCOPED_TRACE(track);
        const auto sums = platform::media::checksumWaveFile(file, track == 1, track == 3);
        ASSERT_TRUE(sums.has_value());
        ASSERT_TRUE(sums->accurateRipV1 && sums->accurateRipV2);
        EXPECT_EQ(sums->frames, 3 * 44100 + 100);
        EXPECT_EQ(hex8(*sums->accurateRipV1), accurateRip(file, 1, track, 3));
        EXPECT_EQ(hex8(*sums->accurateRipV2), accurateRip(file, 2, track, 3));
    }
    // A disc of one track is its first and its last.
    const auto only = platform::media::checksumWaveFile(file, true, true);
    ASSERT_TRUE(only && only->accurateRipV2);
    EXPECT_EQ(hex8(*only->accurateRipV2), accurateRip(file, 2, 1, 1));
}

TEST(TrackChecksums, Crc32AsGzipRecordsIt)
{
    mp3test::TempFolder dir;
    const std::string file = dir.file("track.wav");
    writeNoise(file, 44100, 11);
    const std::string raw = dir.file("track.raw");
    testsupport::runTool("sox " + quoted(file) + " -t raw " + quoted(raw));
    // gzip's trailer holds the CRC32 of what it packed, little-endian.
    const std::string crc =
        testsupport::runTool("gzip -c " + quoted(raw) + " | tail -c 8 | head -c 4 | od -An -tx4 | tr -d ' \\n' | tr a-f A-F")
            .line();
    const auto sums = platform::media::checksumWaveFile(file, false, false);
    ASSERT_TRUE(sums.has_value());
    EXPECT_EQ(hex8(sums->crc32), crc);
}

TEST(TrackChecksums, PiecesOfAnySizeGiveTheSameSums)
{
    mp3test::TempFolder dir;
    const std::vector<int16_t> pcm = writeNoise(dir.file("t.wav"), 20000, 3);
    const auto *bytes = reinterpret_cast<const std::byte *>(pcm.data());
    const size_t size = pcm.size() * 2;
    platform::media::TrackChecksummer whole(20000, true, true, false);
    whole.add(bytes, size);
    platform::media::TrackChecksummer pieces(20000, true, true, false);
    for (size_t at = 0, step = 1; at < size; at += step, step = step % 7 + 1)
        pieces.add(bytes + at, std::min(step, size - at));
    EXPECT_EQ(whole.result().crc32, pieces.result().crc32);
    EXPECT_EQ(whole.result().accurateRipV1, pieces.result().accurateRipV1);
    EXPECT_EQ(whole.result().accurateRipV2, pieces.result().accurateRipV2);
    EXPECT_EQ(whole.result().accurateRipV1,
              platform::media::checksumWaveFile(dir.file("t.wav"), true, false)->accurateRipV1);
}

TEST(TrackChecksums, OtherFormatsGetACrcOnlyAndNonWavesNothing)
{
    mp3test::TempFolder dir;
    const std::string mono = dir.file("mono.wav");
    testsupport::runTool("sox -n -r 22050 -c 1 -b 16 " + quoted(mono) + " synth 0.5 sine 440");
    const auto sums = platform::media::checksumWaveFile(mono, false, false);
    ASSERT_TRUE(sums.has_value());
    EXPECT_FALSE(sums->accurateRipV1.has_value());
    EXPECT_FALSE(sums->accurateRipV2.has_value());

    mp3test::writeBytes(dir.file("junk.wav"), "not a wave at all");
    EXPECT_FALSE(platform::media::checksumWaveFile(dir.file("junk.wav"), false, false).has_value());
    EXPECT_FALSE(platform::media::checksumWaveFile(dir.file("none.wav"), false, false).has_value());
}

} // namespace
