// The equaliser component's band list and its ini file: a round trip of all 15 gains, a missing
// or garbled file that changes nothing, a failed save that is error 75.
#include <filesystem>
#include <fstream>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "TempFolder.h"
#include "platform/audio/EqualizerComponent.h"
#include "runtime/RuntimeError.h"

namespace {

using mp3test::TempFolder;
using mp3test::readBytes;
using mp3test::writeBytes;
using platform::audio::EqualizerComponent;

const double Points[16] = {0, 500, 1500, 2500, 3500, 4500, 5500, 6500, 7500, 8500, 9500, 10500, 11500, 12500, 13500, 14500};

void addBands(EqualizerComponent &eq)
{
    for (int i = 1; i <= 15; ++i)
        eq.AddBand(Points[i - 1], Points[i], 0.0);
}

int errorOf(const std::function<void()> &f)
{
    try {
        f();
    } catch (const rt::RuntimeError &e) {
        return e.number();
    }
    return 0;
}

TEST(EqualizerComponent, BandsAreIndexedFromZeroAndAMissingOneIsError9)
{
    EqualizerComponent eq;
    addBands(eq);
    EXPECT_EQ(eq.BandCount(), 15);
    eq.setBandGain(14, 7.5);
    EXPECT_EQ(eq.BandGain(14), 7.5);
    EXPECT_EQ(errorOf([&] { eq.BandGain(15); }), rt::ErrSubscript);
    EXPECT_EQ(errorOf([&] { eq.setBandGain(15, 1.0); }), rt::ErrSubscript);
    EXPECT_EQ(errorOf([&] { eq.BandGain(-1); }), rt::ErrSubscript);
}

TEST(EqualizerComponent, SaveAndLoadBringBackAllFifteenGains)
{
    TempFolder dir;
    const std::string file = dir.file("Eq.ini");
    EqualizerComponent a;
    addBands(a);
    for (int i = 0; i < 15; ++i)
        a.setBandGain(i, (i - 7) * 1.7 + 0.123);
    a.SaveToIni(file, "EqData");

    EqualizerComponent b;
    addBands(b);
    b.LoadFromIni(file, "EqData");
    for (int i = 0; i < 15; ++i)
        EXPECT_EQ(b.BandGain(i), a.BandGain(i)) << i;
    EXPECT_NE(readBytes(file).find("[EqData]"), std::string::npos);
}

TEST(EqualizerComponent, ALogicPathWithBackslashesIsAPathOfThisSystem)
{
    TempFolder dir;
    std::filesystem::create_directories(dir.path() / "prog");
    const std::string logicPath = dir.path().string() + "/prog\\Eq.ini";
    EqualizerComponent eq;
    addBands(eq);
    eq.setBandGain(2, -4.0);
    eq.SaveToIni(logicPath, "EqData");
    EXPECT_TRUE(std::filesystem::exists(dir.path() / "prog" / "Eq.ini"));
    EqualizerComponent back;
    addBands(back);
    back.LoadFromIni(logicPath, "EqData");
    EXPECT_EQ(back.BandGain(2), -4.0);
}

TEST(EqualizerComponent, AMissingFileLeavesTheGains)
{
    TempFolder dir;
    EqualizerComponent eq;
    addBands(eq);
    eq.setBandGain(3, 5.0);
    eq.LoadFromIni(dir.file("nothing.ini"), "EqData");
    eq.LoadFromIni("", "EqData");
    EXPECT_EQ(eq.BandGain(3), 5.0);
    EXPECT_EQ(eq.BandGain(4), 0.0);
}

TEST(EqualizerComponent, AGarbledFileLeavesTheGains)
{
    TempFolder dir;
    const std::string file = dir.file("Eq.ini");
    EqualizerComponent eq;
    addBands(eq);
    eq.setBandGain(0, 2.0);
    const std::string bad[] = {
        "[EqData]\nBand0=loud\nBand1=3\n",              // a gain that is no number
        "[EqData]\nBand0=1e999\n",                       // not finite
        "[EqData]\nthis line has no equals sign\n",      // not an ini section
        std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16), // not text at all
        "[Other]\nBand0=9\n",                            // no such section
        "",
    };
    for (const std::string &text : bad) {
        writeBytes(file, text);
        eq.LoadFromIni(file, "EqData");
        EXPECT_EQ(eq.BandGain(0), 2.0) << text;
        EXPECT_EQ(eq.BandGain(1), 0.0) << text;
    }
}

TEST(EqualizerComponent, LoadTakesWhatItFindsAndPassesOverBandsItHasNot)
{
    TempFolder dir;
    const std::string file = dir.file("Eq.ini");
    writeBytes(file, "; written by hand\r\n[eqdata]\r\nBands=15\r\n band2 = -6.5 \r\nBand40=3\r\n[Next]\r\nBand3=9\r\n");
    EqualizerComponent eq;
    addBands(eq);
    eq.LoadFromIni(file, "EqData");
    EXPECT_EQ(eq.BandGain(2), -6.5);
    EXPECT_EQ(eq.BandGain(3), 0.0);
}

TEST(EqualizerComponent, SavingKeepsTheOtherSections)
{
    TempFolder dir;
    const std::string file = dir.file("Eq.ini");
    writeBytes(file, "[Before]\nx=1\n[EqData]\nBand0=4\n[After]\ny=2\n");
    EqualizerComponent eq;
    addBands(eq);
    eq.setBandGain(0, -1.5);
    eq.SaveToIni(file, "EqData");
    const std::string text = readBytes(file);
    EXPECT_NE(text.find("[Before]\nx=1\n"), std::string::npos) << text;
    EXPECT_NE(text.find("[After]\ny=2\n"), std::string::npos) << text;
    EXPECT_EQ(text.find("Band0=4"), std::string::npos) << text;
    EXPECT_NE(text.find("Band0=-1.5"), std::string::npos) << text;
}

TEST(EqualizerComponent, AFailedSaveIsError75AndLeavesTheOldFile)
{
    TempFolder dir;
    EqualizerComponent eq;
    addBands(eq);
    EXPECT_EQ(errorOf([&] { eq.SaveToIni(dir.file("no-such-folder/Eq.ini"), "EqData"); }), rt::ErrPathFileAccess);
    EXPECT_EQ(errorOf([&] { eq.SaveToIni(dir.path().string(), "EqData"); }), rt::ErrPathFileAccess);

    if (::geteuid() != 0) {
        // A folder that can't be written: the old file stays as it was.
        const std::string file = dir.file("Eq.ini");
        writeBytes(file, "[EqData]\nBand0=4\n");
        ::chmod(dir.path().c_str(), 0555);
        EXPECT_EQ(errorOf([&] { eq.SaveToIni(file, "EqData"); }), rt::ErrPathFileAccess);
        ::chmod(dir.path().c_str(), 0755);
        EXPECT_EQ(readBytes(file), "[EqData]\nBand0=4\n");
    }
}

} // namespace
