// The MS ADPCM encoder and its wave writer: block sizes as other writers choose them, blocks that
// decode (by our decoder and by libsndfile's alike) close to what went in, and files whose header,
// fact count and names sox and libsndfile read.
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "CommandOutput.h"
#include "MediaTestSupport.h"
#include "TempFolder.h"
#include "platform/media/MsAdpcm.h"
#include "platform/media/MsAdpcmWaveWriter.h"

namespace {

namespace msadpcm = platform::media::msadpcm;

std::vector<int16_t> tune(int frames, int channels, double amplitude)
{
    std::vector<int16_t> out(static_cast<size_t>(frames) * static_cast<size_t>(channels));
    constexpr double tau = 6.283185307179586;
    for (int i = 0; i < frames; ++i)
        for (int c = 0; c < channels; ++c) {
            const double t = i / 44100.0;
            const double v = amplitude * (0.6 * std::sin(tau * (440 + 220 * c) * t) + 0.4 * std::sin(tau * 3000 * t));
            out[static_cast<size_t>(i * channels + c)] = static_cast<int16_t>(std::lrint(v * 32767));
        }
    return out;
}

double snrDb(const std::vector<int16_t> &reference, const std::vector<int16_t> &test)
{
    double signal = 0;
    double noise = 0;
    for (size_t i = 0; i < reference.size() && i < test.size(); ++i) {
        const double d = static_cast<double>(reference[i]) - test[i];
        signal += static_cast<double>(reference[i]) * reference[i];
        noise += d * d;
    }
    return noise == 0 ? 200 : 10 * std::log10(signal / noise);
}

TEST(MsAdpcm, BlockSizesAsOtherWritersChooseThem)
{
    // The sizes sox and libsndfile write for these shapes.
    EXPECT_EQ(msadpcm::blockAlignFor(44100, 2), 2048);
    EXPECT_EQ(msadpcm::framesPerBlock(2048, 2), 2036);
    EXPECT_EQ(msadpcm::blockAlignFor(22050, 1), 512);
    EXPECT_EQ(msadpcm::framesPerBlock(512, 1), 1012);
    EXPECT_EQ(msadpcm::blockAlignFor(8000, 1), 256);
    EXPECT_EQ(msadpcm::framesPerBlock(256, 1), 500);
}

TEST(MsAdpcm, ABlockDecodesCloseToWhatWentIn)
{
    for (int channels : {1, 2}) {
        SCOPED_TRACE(channels);
        const int align = msadpcm::blockAlignFor(44100, channels);
        const int frames = msadpcm::framesPerBlock(align, channels);
        const std::vector<int16_t> in = tune(frames, channels, 0.5);
        std::vector<std::byte> block(static_cast<size_t>(align));
        msadpcm::encodeBlock(in.data(), channels, frames, block.data());
        std::vector<int16_t> out(in.size());
        msadpcm::decodeBlock(block.data(), channels, frames, out.data());
        // The first two frames ride in the header as they are.
        for (int i = 0; i < 2 * channels; ++i)
            EXPECT_EQ(out[static_cast<size_t>(i)], in[static_cast<size_t>(i)]);
        EXPECT_GT(snrDb(in, out), 35.0);
    }
}

TEST(MsAdpcm, SilenceStaysSilentAndFullScaleStaysInRange)
{
    const int frames = msadpcm::framesPerBlock(1024, 1);
    std::vector<std::byte> block(1024);
    std::vector<int16_t> silence(static_cast<size_t>(frames), 0);
    std::vector<int16_t> out(silence.size(), 1);
    msadpcm::encodeBlock(silence.data(), 1, frames, block.data());
    msadpcm::decodeBlock(block.data(), 1, frames, out.data());
    EXPECT_EQ(out, silence);

    // A full-scale square wave: the codes clip at the edges instead of wrapping round.
    std::vector<int16_t> square(static_cast<size_t>(frames));
    for (int i = 0; i < frames; ++i)
        square[static_cast<size_t>(i)] = (i / 50) % 2 ? 32767 : -32768;
    msadpcm::encodeBlock(square.data(), 1, frames, block.data());
    msadpcm::decodeBlock(block.data(), 1, frames, out.data());
    EXPECT_GT(snrDb(square, out), 15.0);
}

TEST(MsAdpcm, TheWrittenFileReadsBackInLibsndfileAsOurDecoderHearsIt)
{
    mp3test::TempFolder dir;
    const std::string path = dir.file("adpcm.wav");
    const int frames = 5000;  // two whole blocks and a part one
    const std::vector<int16_t> in = tune(frames, 2, 0.4);
    platform::media::MsAdpcmWaveWriter writer;
    ASSERT_TRUE(writer.open(path, 2, 44100, "A title", "An artist"));
    ASSERT_TRUE(writer.write(in.data(), 1234));
    ASSERT_TRUE(writer.write(in.data() + 2 * 1234, frames - 1234));
    ASSERT_TRUE(writer.close());

    const mediatest::Wave back = mediatest::readWave(path);
    ASSERT_TRUE(back.ok);
    EXPECT_EQ(back.format, SF_FORMAT_WAV | SF_FORMAT_MS_ADPCM);
    EXPECT_EQ(back.channels, 2);
    EXPECT_EQ(back.rate, 44100);
    // Readers go by whole blocks; the fact chunk counts the frames given, without the padding.
    const int perBlock = msadpcm::framesPerBlock(2048, 2);
    EXPECT_EQ(back.frames(), 3 * perBlock);
    const std::string bytes = mp3test::readBytes(path);
    const size_t fact = bytes.find("fact");
    ASSERT_NE(fact, std::string::npos);
    EXPECT_EQ(static_cast<unsigned char>(bytes[fact + 8]) | static_cast<unsigned char>(bytes[fact + 9]) << 8, frames);
    EXPECT_EQ(back.title, "A title");
    EXPECT_EQ(back.artist, "An artist");
    EXPECT_GT(snrDb(in, back.samples), 35.0);

    // libsndfile's decoding is ours, sample for sample.
    const size_t data = bytes.find("data");
    ASSERT_NE(data, std::string::npos);
    std::vector<int16_t> ours(static_cast<size_t>(3 * perBlock * 2));
    for (int b = 0; b < 3; ++b)
        msadpcm::decodeBlock(reinterpret_cast<const std::byte *>(bytes.data() + data + 8 + 2048 * b), 2, perBlock,
                             ours.data() + static_cast<size_t>(b * perBlock * 2));
    ours.resize(back.samples.size());
    EXPECT_EQ(ours, back.samples);
    EXPECT_EQ(bytes.size(), data + 8 + 3 * 2048);

    const testsupport::CommandOutput soxi = testsupport::runTool("soxi " + mediatest::quoted(path));
    EXPECT_NE(soxi.text.find("4-bit MS ADPCM"), std::string::npos) << soxi.text;
    EXPECT_NE(soxi.text.find("= 6108 samples"), std::string::npos) << soxi.text;
}

TEST(MsAdpcm, AFileThatCantBeMadeIsRefused)
{
    platform::media::MsAdpcmWaveWriter writer;
    EXPECT_FALSE(writer.open("/nonexistent-folder/x.wav", 2, 44100, "", ""));
    EXPECT_FALSE(writer.write(nullptr, 0) && writer.isOpen());
    EXPECT_FALSE(writer.close());
}

} // namespace
