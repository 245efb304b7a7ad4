// The texts a drive's inquiry and a disc's CD-Text give, as the reader cleans them up.
#include <gtest/gtest.h>

#include "platform/cdrom/CdTextFields.h"

using namespace platform::cdrom;

TEST(CdTextFields, TrimmedDropsPaddingBlanksAndNuls)
{
    EXPECT_EQ(trimmed("  HL-DT-ST  "), "HL-DT-ST");
    EXPECT_EQ(trimmed(std::string("DVDRAM\0\0", 8)), "DVDRAM");
    EXPECT_EQ(trimmed("GH24NSD1 "), "GH24NSD1");
    EXPECT_EQ(trimmed("   "), "");
    EXPECT_EQ(trimmed("two  words"), "two  words");
}

TEST(CdTextFields, Utf8StaysAsItIs)
{
    EXPECT_EQ(asUtf8("Plain title"), "Plain title");
    EXPECT_EQ(asUtf8("Caf\xC3\xA9 Br\xC3\xBC" "cke"), "Caf\xC3\xA9 Br\xC3\xBC" "cke");
    EXPECT_EQ(asUtf8(nullptr), "");
}

TEST(CdTextFields, Latin1BecomesUtf8)
{
    EXPECT_EQ(asUtf8("Caf\xE9"), "Caf\xC3\xA9");
    EXPECT_EQ(asUtf8("\xFC\xE9"), "\xC3\xBC\xC3\xA9");
    // A lead byte without its continuation is not UTF-8 either.
    EXPECT_EQ(asUtf8("A\xC3"), "A\xC3\x83");
}

TEST(CdTextFields, IsrcIsTwelveLettersAndDigits)
{
    EXPECT_TRUE(validIsrc("GBAYE0000351"));
    EXPECT_FALSE(validIsrc("GBAYE000035"));
    EXPECT_FALSE(validIsrc("GB-AYE-00-00351"));
    EXPECT_FALSE(validIsrc("000000000000 "));
    EXPECT_FALSE(validIsrc(""));
}
