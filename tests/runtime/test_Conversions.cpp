#include <gtest/gtest.h>

#include "runtime/Conversions.h"

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

} // namespace

TEST(CInt, RoundsHalfToEven)
{
    EXPECT_EQ(CInt(2.5).value(), 2);
    EXPECT_EQ(CInt(3.5).value(), 4);
    EXPECT_EQ(CInt(-2.5).value(), -2);
    EXPECT_EQ(CInt(-3.5).value(), -4);
    EXPECT_EQ(CInt(0.5).value(), 0);
    EXPECT_EQ(CInt(1.5).value(), 2);
    EXPECT_EQ(CInt(2.5000001).value(), 3);
    EXPECT_EQ(CInt(2.4999999).value(), 2);
    EXPECT_EQ(CInt(-0.4).value(), 0);
}

TEST(CInt, RangeEdges)
{
    EXPECT_EQ(CInt(32767.0).value(), 32767);
    EXPECT_EQ(CInt(32767.4).value(), 32767);
    EXPECT_EQ(errorOf([] { CInt(32767.5); }), 6);
    EXPECT_EQ(CInt(-32768.5).value(), -32768);
    EXPECT_EQ(errorOf([] { CInt(-32768.6); }), 6);
    EXPECT_EQ(errorOf([] { CInt(1e10); }), 6);
}

TEST(CLng, RoundsHalfToEvenAndChecksRange)
{
    EXPECT_EQ(CLng(2.5).value(), 2);
    EXPECT_EQ(CLng(-3.5).value(), -4);
    EXPECT_EQ(CLng(100000.5).value(), 100000);
    EXPECT_EQ(CLng(2147483647.0).value(), 2147483647);
    EXPECT_EQ(errorOf([] { CLng(2147483647.5); }), 6);
    EXPECT_EQ(CLng(-2147483648.5).value(), -2147483647 - 1);
    EXPECT_EQ(errorOf([] { CLng(-2147483649.0); }), 6);
}

TEST(CInt, FromText)
{
    EXPECT_EQ(CInt("12").value(), 12);
    EXPECT_EQ(CInt(" -7 ").value(), -7);
    EXPECT_EQ(CInt("2.5").value(), 2);
    EXPECT_EQ(CInt("1e2").value(), 100);
    EXPECT_EQ(CInt("&HFFFF").value(), -1);
    EXPECT_EQ(CInt("&H7FFF").value(), 32767);
    EXPECT_EQ(errorOf([] { CInt("abc"); }), 13);
    EXPECT_EQ(errorOf([] { CInt(""); }), 13);
    EXPECT_EQ(errorOf([] { CInt("   "); }), 13);
    EXPECT_EQ(errorOf([] { CInt("12abc"); }), 13);
    EXPECT_EQ(errorOf([] { CInt("1 2"); }), 13);
    EXPECT_EQ(errorOf([] { CInt("32768"); }), 6);
    EXPECT_EQ(errorOf([] { CInt("&H10000"); }), 6) << "65536 is no Integer";
}

TEST(CLng, FromText)
{
    EXPECT_EQ(CLng("123456").value(), 123456);
    EXPECT_EQ(CLng("&H10000").value(), 65536);
    EXPECT_EQ(CLng("&HFFFFFFFF").value(), -1);
    EXPECT_EQ(errorOf([] { CLng("x1"); }), 13);
    EXPECT_EQ(errorOf([] { CLng("3000000000"); }), 6);
}

TEST(CDbl, FromText)
{
    EXPECT_DOUBLE_EQ(CDbl("2.5"), 2.5);
    EXPECT_DOUBLE_EQ(CDbl(" -.25 "), -0.25);
    EXPECT_DOUBLE_EQ(CDbl("+3"), 3.0);
    EXPECT_DOUBLE_EQ(CDbl("1.5E3"), 1500.0);
    EXPECT_DOUBLE_EQ(CDbl("&O17"), 15.0);
    EXPECT_EQ(errorOf([] { CDbl("1.2.3"); }), 13);
    EXPECT_EQ(errorOf([] { CDbl("-"); }), 13);
    EXPECT_EQ(errorOf([] { CDbl("."); }), 13);
    EXPECT_EQ(errorOf([] { CDbl(""); }), 13);
    EXPECT_EQ(errorOf([] { CDbl("1e400"); }), 6);
}

TEST(CBool, FromText)
{
    EXPECT_TRUE(CBool("True"));
    EXPECT_TRUE(CBool("TRUE"));
    EXPECT_FALSE(CBool("false"));
    EXPECT_FALSE(CBool("False"));
    EXPECT_FALSE(CBool("0"));
    EXPECT_TRUE(CBool("-1"));
    EXPECT_TRUE(CBool("5"));
    EXPECT_TRUE(CBool("0.1"));
    EXPECT_EQ(errorOf([] { CBool("abc"); }), 13);
    EXPECT_EQ(errorOf([] { CBool(""); }), 13);
    EXPECT_EQ(errorOf([] { CBool("Truee"); }), 13);
}

TEST(IsNumeric, Texts)
{
    EXPECT_TRUE(IsNumeric("12"));
    EXPECT_TRUE(IsNumeric(" 1.5 "));
    EXPECT_FALSE(IsNumeric(""));
    EXPECT_FALSE(IsNumeric("1a"));
}

TEST(IntFix, FloorAndTruncate)
{
    EXPECT_EQ(Int(-2.5), -3.0);
    EXPECT_EQ(Int(2.5), 2.0);
    EXPECT_EQ(Int(-3.0), -3.0);
    EXPECT_EQ(Int(-0.1), -1.0);
    EXPECT_EQ(Fix(-2.5), -2.0);
    EXPECT_EQ(Fix(2.9), 2.0);
    EXPECT_EQ(Fix(-0.9), 0.0);
}

TEST(Str, LeadingBlankForNonNegative)
{
    EXPECT_EQ(Str(243), " 243");
    EXPECT_EQ(Str(0), " 0");
    EXPECT_EQ(Str(-0.0), " 0");
    EXPECT_EQ(Str(-5), "-5");
    EXPECT_EQ(Str(2.5), " 2.5");
    EXPECT_EQ(Str(-2.5), "-2.5");
}

TEST(Str, NoZeroBeforeThePoint)
{
    EXPECT_EQ(Str(0.5), " .5");
    EXPECT_EQ(Str(-0.5), "-.5");
    EXPECT_EQ(Str(0.0625), " .0625");
}

TEST(NumberText, ZeroBeforeThePoint)
{
    EXPECT_EQ(numberText(0.5), "0.5");
    EXPECT_EQ(numberText(-0.5), "-0.5");
    EXPECT_EQ(numberText(243), "243");
    EXPECT_EQ(numberText(-5), "-5");
    EXPECT_EQ(numberText(0), "0");
}

TEST(NumberText, FifteenSignificantDigits)
{
    EXPECT_EQ(numberText(0.1 + 0.2), "0.3");
    EXPECT_EQ(numberText(1.0 / 3.0), "0.333333333333333");
    EXPECT_EQ(numberText(2.0 / 3.0), "0.666666666666667");
    EXPECT_EQ(numberText(123456789012345.0), "123456789012345");
    EXPECT_EQ(numberText(100000000000000.0), "100000000000000");
    EXPECT_EQ(numberText(1234.5678), "1234.5678");
    EXPECT_EQ(numberText(2147483647.0), "2147483647");
}

TEST(NumberText, ScientificForVeryLargeAndSmall)
{
    EXPECT_EQ(numberText(1e15), "1E+15");
    EXPECT_EQ(numberText(1e16), "1E+16");
    EXPECT_EQ(Str(1e16), " 1E+16");
    EXPECT_EQ(numberText(-1.5e20), "-1.5E+20");
    EXPECT_EQ(numberText(1.5e100), "1.5E+100");
    EXPECT_EQ(numberText(0.0001), "0.0001");
    EXPECT_EQ(numberText(0.00001), "1E-05");
    EXPECT_EQ(numberText(-2.5e-7), "-2.5E-07");
    EXPECT_EQ(Str(0.00001), " 1E-05");
}

TEST(Val, LeadingNumber)
{
    EXPECT_EQ(Val("  1 2 3abc"), 123.0);
    EXPECT_EQ(Val("12abc"), 12.0);
    EXPECT_EQ(Val("abc"), 0.0);
    EXPECT_EQ(Val(""), 0.0);
    EXPECT_EQ(Val("-5"), -5.0);
    EXPECT_EQ(Val(" - 5"), -5.0);
    EXPECT_EQ(Val("+7x"), 7.0);
    EXPECT_EQ(Val("2.5.3"), 2.5);
    EXPECT_EQ(Val(".5"), 0.5);
    EXPECT_EQ(Val("1,000"), 1.0);
    EXPECT_EQ(Val("--5"), 0.0);
    EXPECT_EQ(Val("-"), 0.0);
    EXPECT_EQ(Val("\t4\n2"), 42.0);
    EXPECT_EQ(Val("4\r2"), 4.0) << "a carriage return is no blank";
}

TEST(Val, Exponent)
{
    EXPECT_EQ(Val("1e3"), 1000.0);
    EXPECT_EQ(Val("1D3"), 1000.0);
    EXPECT_EQ(Val("2E-1"), 0.2);
    EXPECT_EQ(Val("1e"), 1.0);
    EXPECT_EQ(Val("1e+x"), 1.0);
    EXPECT_EQ(Val("1e-400"), 0.0);
    EXPECT_EQ(errorOf([] { Val("1e400"); }), 6);
}

TEST(Val, RadixPrefixes)
{
    EXPECT_EQ(Val("&H10"), 16.0);
    EXPECT_EQ(Val("&hff"), 255.0);
    EXPECT_EQ(Val("&HFFFF"), -1.0);
    EXPECT_EQ(Val("&H8000"), -32768.0);
    EXPECT_EQ(Val("&H10000"), 65536.0);
    EXPECT_EQ(Val("&HFFFFFFFF"), -1.0);
    EXPECT_EQ(Val("&O17"), 15.0);
    EXPECT_EQ(Val("&O9"), 0.0);
    EXPECT_EQ(Val("&H"), 0.0);
    EXPECT_EQ(Val("&HFz"), 15.0);
}

TEST(DecimalDigits, Representation)
{
    const auto d = detail::decimalDigits(-1234.5);
    EXPECT_EQ(d.digits, "12345");
    EXPECT_EQ(d.exponent, 3);
    EXPECT_TRUE(d.negative);
    const auto z = detail::decimalDigits(0.0);
    EXPECT_EQ(z.digits, "0");
    EXPECT_EQ(z.exponent, 0);
    const auto s = detail::decimalDigits(0.00125);
    EXPECT_EQ(s.digits, "125");
    EXPECT_EQ(s.exponent, -3);
}
