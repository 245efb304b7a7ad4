#include <gtest/gtest.h>

#include "platform/helper/WaveFormatText.h"

namespace {

using platform::WaveFormat;

TEST(WaveFormatText, NamesEachTagAsTheChooserShowsIt)
{
    EXPECT_EQ(platform::waveFormatText({1, 1, 22050, 16}), "PCM, 22050 Hz, 16 bit, mono");
    EXPECT_EQ(platform::waveFormatText({3, 2, 44100, 32}), "IEEE float, 44100 Hz, 32 bit, stereo");
    EXPECT_EQ(platform::waveFormatText({6, 1, 8000, 8}), "A-law, 8000 Hz, 8 bit, mono");
    EXPECT_EQ(platform::waveFormatText({0x31, 1, 8000, 0}), "GSM 6.10, 8000 Hz, mono");
}

TEST(WaveFormatText, ReadsBackWhatItWrites)
{
    for (const WaveFormat f : {WaveFormat{1, 2, 48000, 24}, WaveFormat{7, 1, 8000, 8}, WaveFormat{0x11, 2, 22050, 4},
                               WaveFormat{2, 1, 11025, 4}, WaveFormat{0x31, 1, 8000, 0}}) {
        const auto back = platform::parseWaveFormatText(platform::waveFormatText(f));
        ASSERT_TRUE(back.has_value()) << platform::waveFormatText(f);
        EXPECT_EQ(*back, f);
    }
}

TEST(WaveFormatText, RefusesTextsThatNameNoFormat)
{
    for (const char *text : {"", "PCM", "PCM, 22050 Hz, mono", "GSM 6.10, 8000 Hz, 16 bit, mono", "MP3, 44100 Hz, 16 bit, stereo",
                             "PCM, 22050 Hz, 16 bit, quad", "PCM,22050 Hz, 16 bit, mono", "PCM, 9999999 Hz, 16 bit, mono"})
        EXPECT_FALSE(platform::parseWaveFormatText(text).has_value()) << text;
}

TEST(WaveFormatRecord, PcmIsTheEighteenByteRecord)
{
    const std::string r = platform::waveFormatRecord({1, 2, 44100, 16});
    ASSERT_EQ(r.size(), 18u);
    const std::string expected("\x01\x00\x02\x00\x44\xac\x00\x00\x10\xb1\x02\x00\x04\x00\x10\x00\x00\x00", 18);
    EXPECT_EQ(r, expected);
    EXPECT_EQ(platform::parseWaveFormatRecord(r), (WaveFormat{1, 2, 44100, 16}));
}

TEST(WaveFormatRecord, CompressedFormatsCarryTheirBlockLayout)
{
    // IMA ADPCM, 44100 Hz mono: blocks of 2048 bytes, 4089 samples each, 2 bytes of extra.
    const std::string ima = platform::waveFormatRecord({0x11, 1, 44100, 4});
    ASSERT_EQ(ima.size(), 20u);
    EXPECT_EQ(static_cast<unsigned char>(ima[12]) | static_cast<unsigned char>(ima[13]) << 8, 2048);
    EXPECT_EQ(static_cast<unsigned char>(ima[18]) | static_cast<unsigned char>(ima[19]) << 8, 4089);
    // MS ADPCM: samples a block, the count of coefficient pairs and the seven pairs.
    EXPECT_EQ(platform::waveFormatRecord({2, 2, 22050, 4}).size(), 18u + 32u);
    // GSM 6.10: 320 samples in 65 bytes.
    const std::string gsm = platform::waveFormatRecord({0x31, 1, 8000, 0});
    EXPECT_EQ(static_cast<unsigned char>(gsm[12]), 65);
    EXPECT_EQ(platform::parseWaveFormatRecord(gsm), (WaveFormat{0x31, 1, 8000, 0}));
}

TEST(WaveFormatRecord, ShortOrNonsenseRecordsGiveNothing)
{
    EXPECT_FALSE(platform::parseWaveFormatRecord("").has_value());
    EXPECT_FALSE(platform::parseWaveFormatRecord(std::string(15, '\x01')).has_value());
    EXPECT_FALSE(platform::parseWaveFormatRecord(std::string(18, '\0')).has_value());
    EXPECT_FALSE(platform::parseWaveFormatRecord(std::string("\x01\x00\x09\x00\x44\xac\x00\x00", 8) + std::string(10, '\0')).has_value());
}

} // namespace
