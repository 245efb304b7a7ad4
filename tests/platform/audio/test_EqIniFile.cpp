// The equaliser's ini file: gains read from their section, written back without disturbing the
// rest of the file.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "TempDir.h"
#include "platform/audio/EqIniFile.h"

namespace {

using platform::audio::readEqGains;
using platform::audio::writeEqGains;

void writeText(const std::filesystem::path &file, const std::string &text)
{
    std::ofstream(file, std::ios::binary) << text;
}

std::string readText(const std::filesystem::path &file)
{
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

TEST(EqIniFile, ReadsTheBandsOfItsSection)
{
    testsupport::TempDir dir;
    writeText(dir / "Eq.ini", "[Other]\nBand0=9\n[eqdata]\nBands=2\nBand0 = -3.5\r\nBand1=+6\n");
    const auto gains = readEqGains(dir / "Eq.ini", "EqData");
    ASSERT_TRUE(gains.has_value());
    EXPECT_EQ(gains->size(), 2u);
    EXPECT_EQ(gains->at(0), -3.5);
    EXPECT_EQ(gains->at(1), 6.0);
}

TEST(EqIniFile, GarbledOrMissingGivesNothing)
{
    testsupport::TempDir dir;
    EXPECT_FALSE(readEqGains(dir / "missing.ini", "EqData"));
    writeText(dir / "Eq.ini", "[EqData]\nBand0=loud\n");
    EXPECT_FALSE(readEqGains(dir / "Eq.ini", "EqData"));
    writeText(dir / "Eq.ini", "[EqData]\nno equals sign\n");
    EXPECT_FALSE(readEqGains(dir / "Eq.ini", "EqData"));
    writeText(dir / "Eq.ini", std::string("[EqData]\nBand0=1\0", 17));
    EXPECT_FALSE(readEqGains(dir / "Eq.ini", "EqData"));
}

TEST(EqIniFile, WritingKeepsOtherSectionsByteForByte)
{
    testsupport::TempDir dir;
    const std::string other = "; mine\r\n[Colours]\r\nBack=red\r\n\r\n";
    writeText(dir / "Eq.ini", other + "[EqData]\r\nBand0=1\r\n");
    ASSERT_TRUE(writeEqGains(dir / "Eq.ini", "EqData", {-1.25, 0.5}));
    EXPECT_EQ(readText(dir / "Eq.ini"), other + "[EqData]\nBands=2\nBand0=-1.25\nBand1=0.5\n");
}

// A section line ending in two carriage returns is a section line before and after a rewrite;
// dropping one of them on the way changed what the lines below it meant.
TEST(EqIniFile, ExtraCarriageReturnsMeanTheSameAfterARewrite)
{
    testsupport::TempDir dir;
    writeText(dir / "Eq.ini", "[Other]\r\r\nname\r\n[EqData]\r\r\nBand3=2\r\r\n");
    const auto before = readEqGains(dir / "Eq.ini", "EqData");
    ASSERT_TRUE(before.has_value());
    EXPECT_EQ(before->at(3), 2.0);
    ASSERT_TRUE(writeEqGains(dir / "Eq.ini", "EqData", {4, 5}));
    EXPECT_EQ(readText(dir / "Eq.ini"), "[Other]\r\r\nname\r\n[EqData]\nBands=2\nBand0=4\nBand1=5\n");
    const auto after = readEqGains(dir / "Eq.ini", "EqData");
    ASSERT_TRUE(after.has_value());
    EXPECT_EQ(after->size(), 2u);
    EXPECT_EQ(after->at(1), 5.0);
}

} // namespace
