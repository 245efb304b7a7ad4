#include <gtest/gtest.h>

#include "runtime/RuntimeError.h"
#include "runtime/Strings.h"

using namespace rt;

namespace {

int errorOf(auto &&f)
{
    try {
        f();
    } catch (const RuntimeError &e) {
        return e.number();
    }
    return 0;
}

// "Grüße €" : 7 characters, 11 bytes.
const std::string kMixed = "Gr\xC3\xBC\xC3\x9F" "e \xE2\x82\xAC";

} // namespace

TEST(Len, CountsCharacters)
{
    EXPECT_EQ(Len(""), 0);
    EXPECT_EQ(Len("abc"), 3);
    EXPECT_EQ(kMixed.size(), 11u);
    EXPECT_EQ(Len(kMixed), 7);
    EXPECT_EQ(Len("\xF0\x9F\x8E\xB5"), 1) << "a character outside the BMP is one character";
    EXPECT_EQ(Len("a\xFF" "b"), 3) << "a stray byte still counts as one";
}

TEST(Mid, Basics)
{
    EXPECT_EQ(Mid("abcdef", 2, 3), "bcd");
    EXPECT_EQ(Mid("abcdef", 4), "def");
    EXPECT_EQ(Mid("abcdef", 6, 10), "f");
    EXPECT_EQ(Mid("abcdef", 7), "");
    EXPECT_EQ(Mid("abcdef", 100, 2), "");
    EXPECT_EQ(Mid("abcdef", 1, 0), "");
    EXPECT_EQ(Mid(kMixed, 3, 2), "\xC3\xBC\xC3\x9F");
    EXPECT_EQ(Mid(kMixed, 7), "\xE2\x82\xAC");
}

TEST(Mid, InvalidArguments)
{
    EXPECT_EQ(errorOf([] { Mid("abc", 0); }), 5);
    EXPECT_EQ(errorOf([] { Mid("abc", -1, 1); }), 5);
    EXPECT_EQ(errorOf([] { Mid("abc", 1, -2); }), 5);
    // A computed length of -1 is as wrong as any other negative one, not "to the end".
    EXPECT_EQ(errorOf([] { Mid("abc", 1, -1); }), 5);
    EXPECT_EQ(errorOf([] { Mid("", 1, -1); }), 5);
    EXPECT_EQ(errorOf([] { Mid("", 0); }), 5);
}

TEST(LeftRight, Basics)
{
    EXPECT_EQ(Left("abcdef", 2), "ab");
    EXPECT_EQ(Left("abcdef", 0), "");
    EXPECT_EQ(Left("abc", 10), "abc");
    EXPECT_EQ(Right("abcdef", 2), "ef");
    EXPECT_EQ(Right("abcdef", 0), "");
    EXPECT_EQ(Right("abc", 10), "abc");
    EXPECT_EQ(Left(kMixed, 3), "Gr\xC3\xBC");
    EXPECT_EQ(Right(kMixed, 3), "e \xE2\x82\xAC");
    EXPECT_EQ(errorOf([] { Left("abc", -1); }), 5);
    EXPECT_EQ(errorOf([] { Right("abc", -1); }), 5);
}

TEST(InStr, Positions)
{
    EXPECT_EQ(InStr("abcabc", "c"), 3);
    EXPECT_EQ(InStr(4, "abcabc", "c"), 6);
    EXPECT_EQ(InStr(3, "abcabc", "c"), 3);
    EXPECT_EQ(InStr(7, "abcabc", "c"), 0);
    EXPECT_EQ(InStr("abc", "x"), 0);
    EXPECT_EQ(InStr("abc", "C"), 0) << "comparison is binary";
    EXPECT_EQ(InStr("abc", "abcd"), 0);
    EXPECT_EQ(InStr(kMixed, "\xE2\x82\xAC"), 7);
    EXPECT_EQ(InStr(kMixed, "e"), 5);
}

TEST(InStr, EmptyNeedleAndBadStart)
{
    EXPECT_EQ(InStr("abc", ""), 1);
    EXPECT_EQ(InStr(3, "abc", ""), 3);
    EXPECT_EQ(InStr(4, "abc", ""), 4);
    EXPECT_EQ(InStr(5, "abc", ""), 0);
    EXPECT_EQ(InStr("", "a"), 0);
    EXPECT_EQ(InStr("", ""), 0);
    EXPECT_EQ(errorOf([] { InStr(0, "abc", "a"); }), 5);
    EXPECT_EQ(errorOf([] { InStr(-3, "abc", ""); }), 5);
}

TEST(Trim, OnlyBlanks)
{
    EXPECT_EQ(Trim("  a b  "), "a b");
    EXPECT_EQ(LTrim("  a b  "), "a b  ");
    EXPECT_EQ(RTrim("  a b  "), "  a b");
    EXPECT_EQ(Trim("\ta\t"), "\ta\t");
    EXPECT_EQ(Trim(std::string("a\0 ", 3)), std::string("a\0", 2));
    EXPECT_EQ(Trim("    "), "");
    EXPECT_EQ(Trim(""), "");
}

TEST(Case, AsciiAndLatin)
{
    EXPECT_EQ(UCase("abc-XyZ 1"), "ABC-XYZ 1");
    EXPECT_EQ(LCase("ABC-XyZ 1"), "abc-xyz 1");
    EXPECT_EQ(UCase("\xC3\xA9t\xC3\xA9"), "\xC3\x89T\xC3\x89");                // été -> ÉTÉ
    EXPECT_EQ(LCase("\xC3\x89T\xC3\x89"), "\xC3\xA9t\xC3\xA9");
    EXPECT_EQ(UCase("\xC3\xB7"), "\xC3\xB7") << "the division sign has no case";
    EXPECT_EQ(UCase("\xC3\xBF"), "\xC5\xB8");                                  // ÿ -> Ÿ
    EXPECT_EQ(UCase("\xC5\xA1"), "\xC5\xA0");                                  // š -> Š
    EXPECT_EQ(LCase("\xC5\xBD"), "\xC5\xBE");                                  // Ž -> ž
    EXPECT_EQ(UCase("\xC3\x9F"), "\xC3\x9F") << "sharp s stays";
    EXPECT_EQ(UCase("a\xFF" "b"), "A\xFF" "B") << "stray bytes pass through";
}

TEST(Space, Blanks)
{
    EXPECT_EQ(Space(3), "   ");
    EXPECT_EQ(Space(0), "");
    EXPECT_EQ(errorOf([] { Space(-1); }), 5);
}

TEST(ChrAsc, Windows1252)
{
    EXPECT_EQ(Chr(65), "A");
    EXPECT_EQ(Chr(0), std::string(1, '\0'));
    EXPECT_EQ(Chr(0x80), "\xE2\x82\xAC");
    EXPECT_EQ(Chr(0x99), "\xE2\x84\xA2");
    EXPECT_EQ(Chr(0x81), "\xC2\x81");
    EXPECT_EQ(Chr(0xE9), "\xC3\xA9");
    EXPECT_EQ(Chr(0xFF), "\xC3\xBF");
    EXPECT_EQ(errorOf([] { Chr(256); }), 5);
    EXPECT_EQ(errorOf([] { Chr(-1); }), 5);

    EXPECT_EQ(Asc("A"), 65);
    EXPECT_EQ(Asc("Abc"), 65);
    EXPECT_EQ(Asc("\xE2\x82\xAC"), 0x80);
    EXPECT_EQ(Asc("\xC3\xA9"), 0xE9);
    EXPECT_EQ(Asc("\xC2\x8D"), 0x8D);
    EXPECT_EQ(Asc("\xE2\x82\xBD"), '?') << "the rouble sign has no code";
    EXPECT_EQ(errorOf([] { Asc(""); }), 5);
    for (int code = 0; code < 256; ++code)
        EXPECT_EQ(Asc(Chr(code)), code) << code;
}

TEST(Replace, AllOccurrences)
{
    EXPECT_EQ(Replace("a\\b\\c", "\\", "/"), "a/b/c");
    EXPECT_EQ(Replace("aaa", "aa", "b"), "ba");
    EXPECT_EQ(Replace("abc", "", "x"), "abc");
    EXPECT_EQ(Replace("abc", "b", ""), "ac");
    EXPECT_EQ(Replace("", "a", "b"), "");
}

TEST(Ansi, RoundTrip)
{
    std::string all;
    for (int b = 0; b < 256; ++b)
        all += static_cast<char>(b);
    const std::string utf8 = fromAnsi(all);
    EXPECT_EQ(Len(utf8), 256);
    EXPECT_EQ(toAnsi(utf8), all);
}

TEST(Ansi, Conversions)
{
    EXPECT_EQ(fromAnsi("\x80"), "\xE2\x82\xAC");
    EXPECT_EQ(fromAnsi("\x9F"), "\xC5\xB8");
    EXPECT_EQ(fromAnsi("\x90"), "\xC2\x90");
    EXPECT_EQ(fromAnsi("caf\xE9"), "caf\xC3\xA9");
    EXPECT_EQ(toAnsi("caf\xC3\xA9"), "caf\xE9");
    EXPECT_EQ(toAnsi("\xE2\x80\x94"), "\x97");                      // em dash
    EXPECT_EQ(toAnsi("a\xE4\xB8\xAD" "b"), "a?b");                  // a CJK character
    EXPECT_EQ(toAnsi("\xF0\x9F\x8E\xB5"), "?");
    EXPECT_EQ(toAnsi("\xC2\x80"), "?") << "U+0080 is not code 0x80";
    EXPECT_EQ(toAnsi("x\xFFy"), "x?y");
}

TEST(Utf8, WellFormedOrNot)
{
    EXPECT_TRUE(isUtf8(""));
    EXPECT_TRUE(isUtf8("plain"));
    EXPECT_TRUE(isUtf8("caf\xC3\xA9"));
    EXPECT_TRUE(isUtf8("\xF0\x9F\x8E\xB5"));
    EXPECT_FALSE(isUtf8("caf\xE9"));
    EXPECT_FALSE(isUtf8("\xC3"));          // cut short
    EXPECT_FALSE(isUtf8("\xC0\xAF"));      // overlong
    EXPECT_FALSE(isUtf8("\xED\xA0\x80"));  // a surrogate
}
