#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "layout/LayoutText.h"
#include "runtime/RuntimeError.h"

using layout::convertTimeText;
using layout::FormatTrackTime;
using layout::pFormatSongTitle;
using layout::pMilliToMinutes;
using layout::TimeLeftState;
using layout::timeLeftState;

// ---- pFormatSongTitle ----

TEST(pFormatSongTitle, StripsFolderExtensionNumberAndUnderscores)
{
    EXPECT_EQ(pFormatSongTitle("C:\\mp3\\01-My_Song.mp3"), "My Song");
    EXPECT_EQ(pFormatSongTitle("C:\\mp3\\07 - Mr.Big.mp3"), "Mr Big");
}

TEST(pFormatSongTitle, NumberZeroIsKept)
{
    EXPECT_EQ(pFormatSongTitle("00-Intro.mp3"), "00-Intro");
    EXPECT_EQ(pFormatSongTitle("C:\\mp3\\00 - Intro.mp3"), "00 - Intro");
}

TEST(pFormatSongTitle, OnlyTwoDigitNumbersAreStripped)
{
    EXPECT_EQ(pFormatSongTitle("123-x.mp3"), "123-x");
    EXPECT_EQ(pFormatSongTitle("C:\\mp3\\123 - x.mp3"), "123 - x");
    EXPECT_EQ(pFormatSongTitle("C:\\mp3\\5-x.mp3"), "5-x");
}

TEST(pFormatSongTitle, WithoutBackslashStartsAtTheFirstCharacter)
{
    EXPECT_EQ(pFormatSongTitle("05-Song.mp3"), "Song");
    EXPECT_EQ(pFormatSongTitle("My Song.mp3"), "My Song");
    // A forward slash is no separator here.
    EXPECT_EQ(pFormatSongTitle("/home/u/Song.mp3"), "/home/u/Song");
}

TEST(pFormatSongTitle, WithoutDotRunsToTheEnd)
{
    EXPECT_EQ(pFormatSongTitle("C:\\mp3\\My_Song"), "My Song");
    EXPECT_EQ(pFormatSongTitle("Song"), "Song");
}

TEST(pFormatSongTitle, OnlyADotAmongTheLastFiveCharactersEndsTheTitle)
{
    EXPECT_EQ(pFormatSongTitle("name.mpeg3"), "name mpeg3");
    EXPECT_EQ(pFormatSongTitle("ab.cdefg"), "ab cdefg"); // dot sixth from the end
    EXPECT_EQ(pFormatSongTitle("ab.cdef"), "ab");        // dot fifth from the end
    EXPECT_EQ(pFormatSongTitle("C:\\mp3\\a.b.c.mp3"), "a b c");
}

TEST(pFormatSongTitle, TheLastDotNearTheEndWins)
{
    EXPECT_EQ(pFormatSongTitle("C:\\x\\ab.c.d"), "ab c");
    EXPECT_EQ(pFormatSongTitle("C:\\x\\song.a.mp3"), "song a");
}

TEST(pFormatSongTitle, BothNumberTestsLookAtTheTitleAsItThenIs)
{
    // "01-" goes first, then " -" stands at position 3 of what is left.
    EXPECT_EQ(pFormatSongTitle("C:\\x\\01-ab -cd.mp3"), "cd");
    EXPECT_EQ(pFormatSongTitle("C:\\x\\01--x.mp3"), "-x");
    EXPECT_EQ(pFormatSongTitle("C:\\x\\12 -- x.mp3"), "- x");
}

TEST(pFormatSongTitle, NumberValueIgnoresBlanks)
{
    // Val reads "1 2 - y" as 12, but position 3 holds "2": nothing is stripped.
    EXPECT_EQ(pFormatSongTitle("C:\\x\\1 2 - y.mp3"), "1 2 - y");
    EXPECT_EQ(pFormatSongTitle("C:\\x\\ 1-y.mp3"), "y");
}

TEST(pFormatSongTitle, OnlyLeadingBlanksAreTrimmed)
{
    EXPECT_EQ(pFormatSongTitle("C:\\x\\  Song.mp3"), "Song");
    EXPECT_EQ(pFormatSongTitle("C:\\x\\song_.mp3"), "song ");
    EXPECT_EQ(pFormatSongTitle("C:\\x\\_song_.mp3"), "song ");
}

TEST(pFormatSongTitle, EndBeforeStartGivesAnEmptyTitle)
{
    // The dot of the folder ends the title before the last "\" starts it: the cut fails.
    EXPECT_EQ(pFormatSongTitle("C:\\a.b\\c"), "");
    EXPECT_EQ(pFormatSongTitle("x.\\"), "");
}

TEST(pFormatSongTitle, EmptyAndFolderOnly)
{
    EXPECT_EQ(pFormatSongTitle(""), "");
    EXPECT_EQ(pFormatSongTitle("C:\\mp3\\"), "");
    EXPECT_EQ(pFormatSongTitle(".mp3"), "");
}

TEST(pFormatSongTitle, OverflowingValueStillRunsTheNumberTests)
{
    // Val("  -1e999") overflows; the failing condition carries on inside the If.
    EXPECT_EQ(pFormatSongTitle("C:\\x\\  -1e999.mp3"), "1e999");
}

TEST(pFormatSongTitle, PositionsCountCharacters)
{
    EXPECT_EQ(pFormatSongTitle("C:\\mp3\\01-Gr\xC3\xBC\xC3\x9F" "e.mp3"), "Gr\xC3\xBC\xC3\x9F" "e");
    // The dot is fifth from the end in characters, though not in bytes.
    EXPECT_EQ(pFormatSongTitle("a.\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9"), "a");
    EXPECT_EQ(pFormatSongTitle("a.\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9"), "a \xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9");
    // "-" is the third character, not the third byte.
    EXPECT_EQ(pFormatSongTitle("C:\\1\xC3\xA9-x.mp3"), "x");
}

// ---- FormatTrackTime ----

TEST(FormatTrackTime, MinutesAndSeconds)
{
    EXPECT_EQ(FormatTrackTime(243), "04:03");
    EXPECT_EQ(FormatTrackTime(0), "00:00");
    EXPECT_EQ(FormatTrackTime(59), "00:59");
    EXPECT_EQ(FormatTrackTime(60), "01:00");
    EXPECT_EQ(FormatTrackTime(3599), "59:59");
}

TEST(FormatTrackTime, HoursBeforeADash)
{
    EXPECT_EQ(FormatTrackTime(3725), "01-02:05");
    EXPECT_EQ(FormatTrackTime(3600), "01-00:00");
    EXPECT_EQ(FormatTrackTime(35999), "09-59:59");
}

TEST(FormatTrackTime, FractionsAreCutDown)
{
    EXPECT_EQ(FormatTrackTime(243.9), "04:03");
    EXPECT_EQ(FormatTrackTime(59.5), "00:59");
}

TEST(FormatTrackTime, TenHoursOverflowLeavesMinutesAndSecondsAtZero)
{
    EXPECT_EQ(FormatTrackTime(36000), "10-00:00");
    EXPECT_EQ(FormatTrackTime(39599), "10-00:00");
    EXPECT_EQ(FormatTrackTime(90061), "25-00:00");
}

TEST(FormatTrackTime, HoursBeyondSixteenBitsLeaveEverythingAtZero)
{
    EXPECT_EQ(FormatTrackTime(1e9), "00:00");
}

TEST(FormatTrackTime, NegativeSecondsCountFromTheHourBelow)
{
    // h is -1 and not shown; the rest is worked out from -5 + 3600.
    EXPECT_EQ(FormatTrackTime(-5), "59:55");
}

TEST(FormatTrackTime, TakesTheArgumentAsASingle)
{
    // 3599.9999 is 3600 at single precision.
    EXPECT_EQ(FormatTrackTime(3599.9999), "01-00:00");
}

TEST(FormatTrackTime, AValueNoSingleHoldsFailsTheCall)
{
    try {
        FormatTrackTime(1e40);
        FAIL() << "no error";
    } catch (const rt::RuntimeError &e) {
        EXPECT_EQ(e.number(), 6);
    }
}

// ---- pMilliToMinutes ----

TEST(pMilliToMinutes, MinutesAndSeconds)
{
    EXPECT_EQ(pMilliToMinutes("61500", false), "01:01");
    EXPECT_EQ(pMilliToMinutes("243000", false), "04:03");
    EXPECT_EQ(pMilliToMinutes("0", false), "00:00");
    EXPECT_EQ(pMilliToMinutes("999", false), "00:00");
    EXPECT_EQ(pMilliToMinutes("600000", false), "10:00");
    EXPECT_EQ(pMilliToMinutes("6000000", false), "100:00");
    EXPECT_EQ(pMilliToMinutes(" 61500", false), "01:01");
}

TEST(pMilliToMinutes, HundredthsDropTheLastDecimal)
{
    // "61.5": nothing is left behind the dot once its last character goes.
    EXPECT_EQ(pMilliToMinutes("61500", true), "01:01:");
    // "61.25": "2", and a "0" after a single character.
    EXPECT_EQ(pMilliToMinutes("61250", true), "01:01:20");
    // "61.234": "23".
    EXPECT_EQ(pMilliToMinutes("61234", true), "01:01:23");
    EXPECT_EQ(pMilliToMinutes("1234", true), "00:01:23");
    EXPECT_EQ(pMilliToMinutes("3599999", true), "59:59:99");
    // "0.005": "00".
    EXPECT_EQ(pMilliToMinutes("5", true), "00:00:00");
}

TEST(pMilliToMinutes, WithoutADotTheWholeTextLessItsLastCharacter)
{
    // "61" has no ".": from position 1, one character, then the "0".
    EXPECT_EQ(pMilliToMinutes("61000", true), "01:01:60");
    EXPECT_EQ(pMilliToMinutes("600000", true), "10:00:60");
    EXPECT_EQ(pMilliToMinutes("0", true), "00:00:");
    EXPECT_EQ(pMilliToMinutes("1000", true), "00:01:");
}

TEST(pMilliToMinutes, SecondsAreWholeMillisecondsOverAThousand)
{
    // The fraction comes from the double, the seconds from the rounded long.
    EXPECT_EQ(pMilliToMinutes("61500.6", true), "01:01:500");
    EXPECT_EQ(pMilliToMinutes("59999.5", false), "01:00");
}

TEST(pMilliToMinutes, NegativeTextsKeepTheirSigns)
{
    EXPECT_EQ(pMilliToMinutes("-61500", false), "-1:-1");
    EXPECT_EQ(pMilliToMinutes("-61500", true), "-1:-1:");
    EXPECT_EQ(pMilliToMinutes("-5000", false), "00:-5");
}

TEST(pMilliToMinutes, ATextThatIsNoNumberGivesZero)
{
    EXPECT_EQ(pMilliToMinutes("abc", false), "00:00");
    EXPECT_EQ(pMilliToMinutes("abc", true), "00:00:");
    EXPECT_EQ(pMilliToMinutes("", true), "00:00:");
    EXPECT_EQ(pMilliToMinutes("1e400", true), "00:00:");
}

// ---- ConvertTime ----

TEST(ConvertTime, MoreThanSixtyIsHoursMinutesSeconds)
{
    EXPECT_EQ(convertTimeText(4400), std::optional<std::string>("1:13:20"));
    EXPECT_EQ(convertTimeText(4800), std::optional<std::string>("1:20:00"));
    EXPECT_EQ(convertTimeText(4340), std::optional<std::string>("1:12:20"));
    EXPECT_EQ(convertTimeText(4740), std::optional<std::string>("1:19:00"));
    EXPECT_EQ(convertTimeText(61), std::optional<std::string>("0:01:01"));
    EXPECT_EQ(convertTimeText(120), std::optional<std::string>("0:02:00"));
    EXPECT_EQ(convertTimeText(3600), std::optional<std::string>("1:00:00"));
    EXPECT_EQ(convertTimeText(32767), std::optional<std::string>("9:06:07"));
}

TEST(ConvertTime, ExactlySixtyGivesNothing)
{
    EXPECT_EQ(convertTimeText(60), std::nullopt);
    EXPECT_EQ(timeLeftState(60), TimeLeftState::ExactlySixty);
}

TEST(ConvertTime, BelowSixtyIsTheSecondsBehindZeroHoursAndMinutes)
{
    EXPECT_EQ(convertTimeText(59), std::optional<std::string>("00.00.59"));
    EXPECT_EQ(convertTimeText(45), std::optional<std::string>("00.00.45"));
    // A valid time is shown in two digits.
    EXPECT_EQ(convertTimeText(5), std::optional<std::string>("00.00.05"));
    EXPECT_EQ(convertTimeText(0), std::optional<std::string>("00.00.00"));
}

TEST(ConvertTime, NegativeTimeLeftStaysAsItIs)
{
    EXPECT_EQ(convertTimeText(-95), std::optional<std::string>("00.00.-95"));
    EXPECT_EQ(convertTimeText(-1), std::optional<std::string>("00.00.-1"));
    EXPECT_EQ(convertTimeText(-32768), std::optional<std::string>("00.00.-32768"));
}

TEST(ConvertTime, States)
{
    EXPECT_EQ(timeLeftState(4400), TimeLeftState::Plenty);
    EXPECT_EQ(timeLeftState(61), TimeLeftState::Plenty);
    EXPECT_EQ(timeLeftState(59), TimeLeftState::Overtime);
    EXPECT_EQ(timeLeftState(0), TimeLeftState::Overtime);
    EXPECT_EQ(timeLeftState(-95), TimeLeftState::Overtime);
    EXPECT_EQ(timeLeftState(-32768), TimeLeftState::Overtime);
}

TEST(ConvertTime, UsableTimeIsSixtySecondsShortOfTheDisc)
{
    // 4341 s of music on the 74 minute disc is over time; 4340 s is not and shows no time.
    EXPECT_EQ(timeLeftState(rt::Integer(4400) - rt::Integer(4341)), TimeLeftState::Overtime);
    EXPECT_EQ(timeLeftState(rt::Integer(4400) - rt::Integer(4340)), TimeLeftState::ExactlySixty);
    EXPECT_EQ(convertTimeText(rt::Integer(4400) - rt::Integer(4340)), std::nullopt);
    EXPECT_EQ(timeLeftState(rt::Integer(4800) - rt::Integer(4741)), TimeLeftState::Overtime);
    EXPECT_EQ(timeLeftState(rt::Integer(4800) - rt::Integer(4740)), TimeLeftState::ExactlySixty);
    EXPECT_EQ(timeLeftState(rt::Integer(4800) - rt::Integer(4739)), TimeLeftState::Plenty);
}
