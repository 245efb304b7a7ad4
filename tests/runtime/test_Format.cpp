#include <gtest/gtest.h>

#include "runtime/Format.h"

using rt::Format;

TEST(FormatNumber, ZeroPlaces)
{
    EXPECT_EQ(Format(5, "00"), "05");
    EXPECT_EQ(Format(0, "00"), "00");
    EXPECT_EQ(Format(123, "00"), "123");
    EXPECT_EQ(Format(-5, "00"), "-05");
    EXPECT_EQ(Format(9.5, "00"), "10");
    EXPECT_EQ(Format(-9.5, "00"), "-10");
    EXPECT_EQ(Format(2.5, "0"), "3") << "half away from zero, not to even";
}

TEST(FormatNumber, Decimals)
{
    EXPECT_EQ(Format(3.14159, "0.0"), "3.1");
    EXPECT_EQ(Format(0.05, "0.0"), "0.1");
    EXPECT_EQ(Format(0.04, "0.0"), "0.0");
    EXPECT_EQ(Format(0.95, "0.0"), "1.0");
    EXPECT_EQ(Format(99.95, "0.0"), "100.0");
    EXPECT_EQ(Format(2.675, "0.00"), "2.68") << "rounds the number as it reads";
    EXPECT_EQ(Format(-1.25, "0.0"), "-1.3");
    EXPECT_EQ(Format(1.5, "0.00 MB"), "1.50 MB");
    EXPECT_EQ(Format(700.0 / 1024.0, "0.00 MB"), "0.68 MB");
    EXPECT_EQ(Format(1234.5, "0.00 MB"), "1234.50 MB");
}

TEST(FormatNumber, HashPlaces)
{
    EXPECT_EQ(Format(7, "##00"), "07");
    EXPECT_EQ(Format(0, "##00"), "00");
    EXPECT_EQ(Format(12345, "##00"), "12345");
    EXPECT_EQ(Format(0, "###.0"), ".0");
    EXPECT_EQ(Format(12.34, "###.0"), "12.3");
    EXPECT_EQ(Format(2, "#.0"), "2.0");
    EXPECT_EQ(Format(0.5, "#.0"), ".5");
    EXPECT_EQ(Format(0.04, "#.0"), ".0");
    EXPECT_EQ(Format(0, "#"), "");
    EXPECT_EQ(Format(1.5, "0.##"), "1.5");
    EXPECT_EQ(Format(1, "0.##"), "1.");
    EXPECT_EQ(Format(1.25, "0.0#"), "1.25");
    EXPECT_EQ(Format(1.2, "0.0#"), "1.2");
}

TEST(FormatNumber, TrailingLiterals)
{
    EXPECT_EQ(Format(3, "0:"), "3:");
    EXPECT_EQ(Format(3, "00:"), "03:");
    EXPECT_EQ(Format(12, "00:"), "12:");
    EXPECT_EQ(Format(7, "00.wav"), "07.wav");
    EXPECT_EQ(Format(7.6, "00.wav"), "08.wav");
    EXPECT_EQ(Format(7.4, "00.wav"), "07.wav");
    EXPECT_EQ(Format(123, "00.wav"), "123.wav");
    EXPECT_EQ(Format(5, "Track 00"), "Track 05");
}

TEST(FormatNumber, LiteralsBetweenPlaces)
{
    EXPECT_EQ(Format(1234, "00:00"), "12:34");
    EXPECT_EQ(Format(5, "00:00"), "00:05");
    EXPECT_EQ(Format(12345, "00:00"), "123:45");
}

TEST(FormatNumber, QuotesEscapesPercentGroupingSections)
{
    EXPECT_EQ(Format(5, "\"#\"0"), "#5");
    EXPECT_EQ(Format(5, "\\00"), "05");
    EXPECT_EQ(Format(5, "\\#0"), "#5");
    EXPECT_EQ(Format(0.256, "0%"), "26%");
    EXPECT_EQ(Format(0.256, "0.0%"), "25.6%");
    EXPECT_EQ(Format(1234567, "#,##0"), "1,234,567");
    EXPECT_EQ(Format(12, "#,##0"), "12");
    EXPECT_EQ(Format(0, "#,##0"), "0");
    EXPECT_EQ(Format(1234567, "#,##0.00"), "1,234,567.00");
    EXPECT_EQ(Format(1234567, "0,"), "1235");
    EXPECT_EQ(Format(-5, "0;(0)"), "(5)");
    EXPECT_EQ(Format(5, "0;(0)"), "5");
    EXPECT_EQ(Format(0, "0;(0);\"none\""), "none");
}

TEST(FormatNumber, EmptyPatternIsPlainText)
{
    EXPECT_EQ(Format(2.5, ""), "2.5");
    EXPECT_EQ(Format(-3, ""), "-3");
}

TEST(FormatTime, ValidTimes)
{
    using namespace std::string_view_literals;
    EXPECT_EQ(Format("1.13.20"sv, "H:MM:SS"), "1:13:20");
    EXPECT_EQ(Format("0.0.45"sv, "H:MM:SS"), "0:00:45");
    EXPECT_EQ(Format("00.00.45"sv, "HH.MM.SS"), "00.00.45");
    EXPECT_EQ(Format("1.13.20"sv, "HH.MM.SS"), "01.13.20");
    EXPECT_EQ(Format("23:59:59"sv, "H:MM:SS"), "23:59:59");
    EXPECT_EQ(Format("12:05"sv, "H:MM:SS"), "12:05:00");
    EXPECT_EQ(Format(" 1.2.3 "sv, "HH.MM.SS"), "01.02.03");
    EXPECT_EQ(Format("13:05:00"sv, "h:nn AM/PM"), "1:05 PM");
    EXPECT_EQ(Format("0:05:00"sv, "h:nn am/pm"), "12:05 am");
}

TEST(FormatTime, InvalidTextsStayAsTheyAre)
{
    using namespace std::string_view_literals;
    EXPECT_EQ(Format("00.00.-95"sv, "H:MM:SS"), "00.00.-95");
    EXPECT_EQ(Format("abc"sv, "H:MM:SS"), "abc");
    EXPECT_EQ(Format("1.75.0"sv, "H:MM:SS"), "1.75.0");
    EXPECT_EQ(Format("1.0.60"sv, "H:MM:SS"), "1.0.60");
    EXPECT_EQ(Format("24.0.0"sv, "HH.MM.SS"), "24.0.0");
    EXPECT_EQ(Format(""sv, "H:MM:SS"), "");
    EXPECT_EQ(Format("1.2"sv, "H:MM:SS"), "1.2");
    EXPECT_EQ(Format("1.2.3.4"sv, "H:MM:SS"), "1.2.3.4");
    EXPECT_EQ(Format("1:2.3"sv, "H:MM:SS"), "1:2.3");
    EXPECT_EQ(Format("1..3"sv, "H:MM:SS"), "1..3");
    EXPECT_EQ(Format("1.2.3x"sv, "H:MM:SS"), "1.2.3x");
}

TEST(FormatText, NumbersInNumberPatterns)
{
    using namespace std::string_view_literals;
    EXPECT_EQ(Format("5"sv, "00"), "05");
    EXPECT_EQ(Format("abc"sv, "00"), "abc");
    EXPECT_EQ(Format("x"sv, ""), "x");
}
